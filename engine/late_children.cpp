#include "engine/late_children_detail.h"

#include <algorithm>
#include <iterator>

#include "engine/entry_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

constexpr char kAddressPrefix[] = {'P', '0', 'x'};

// A ring of the children that wait, through `head`, in the order of their properties.
struct LateParent
{
    LateParent() { head.previous = head.next = &head; }
    bool IsEmpty() const { return head.next == &head; }

    JSLateChild head;
    bool defining = false; // what is added meanwhile is ours
    bool at_once = false;  // script has a name of its own that looks like one of ours
};

LateParent* LateParentOf(::JSObject* obj)
{
    return JS::GetMaybePtrFromReservedSlot<LateParent>(obj, kLateSlot);
}

LateParent& MakeLateParent(::JSObject* obj)
{
    LateParent* parent = LateParentOf(obj);
    if (!parent) {
        parent = new LateParent;
        JS::SetReservedSlot(obj, kLateSlot, JS::PrivateValue(parent));
    }
    return *parent;
}

bool Define(::JSContext* engine, JS::HandleObject obj, const JSLateChild& child)
{
    const std::string name = JS_AddressName(child.address);
    JS::RootedString atom(engine, ::JS_AtomizeStringN(engine, name.data(), name.size()));
    JS::RootedId id(engine);
    JS::RootedObject object(engine, Inner(child.object));
    return atom && ::JS_StringToId(engine, atom, &id) &&
           ::JS_DefinePropertyById(engine, obj, id, object, JSPROP_ENUMERATE);
}

bool DefineLateChildren(::JSContext* engine, JS::HandleObject obj)
{
    LateParent* parent = LateParentOf(obj);
    if (!parent)
        return true;
    parent->defining = true;
    bool done = true;
    while (done && !parent->IsEmpty()) {
        done = Define(engine, obj, *parent->head.next);
        if (done)
            JS_DropLateChild(parent->head.next);
    }
    parent->defining = false;
    return done;
}

template <typename Char> bool StartsLikeAddress(const Char* chars, std::size_t length)
{
    return length > std::size(kAddressPrefix) &&
           std::equal(std::begin(kAddressPrefix), std::end(kAddressPrefix), chars);
}

// Whether the name could be that of a late child. Neither allocates nor fails.
bool LooksLikeAddress(JS::PropertyKey id)
{
    if (!id.isString())
        return false;
    JSLinearString* name = JS_ASSERT_STRING_IS_LINEAR(id.toString());
    const std::size_t length = JS::GetLinearStringLength(name);
    const JS::AutoCheckCannotGC none;
    return JS::LinearStringHasLatin1Chars(name)
               ? StartsLikeAddress(JS::GetLatin1LinearStringChars(none, name), length)
               : StartsLikeAddress(JS::GetTwoByteLinearStringChars(none, name), length);
}

// Puts a property that script has added behind those that were to be there before. One that cannot be deleted stays
// where it is.
bool MoveBehindLateChildren(::JSContext* engine, JS::HandleObject obj, JS::HandleId id)
{
    JS::Rooted<mozilla::Maybe<JS::PropertyDescriptor>> property(engine);
    if (!::JS_GetOwnPropertyDescriptorById(engine, obj, id, &property))
        return false;
    if (!property.isSome() || !property->configurable())
        return DefineLateChildren(engine, obj);
    JS::Rooted<JS::PropertyDescriptor> again(engine, *property);
    JS::ObjectOpResult deleted;
    return ::JS_DeletePropertyById(engine, obj, id, deleted) && DefineLateChildren(engine, obj) &&
           ::JS_DefinePropertyById(engine, obj, id, again);
}

bool NoteAddedProperty(::JSContext* engine, JS::HandleObject obj, JS::HandleId id, JS::HandleValue)
{
    LateParent* parent = LateParentOf(obj);
    if (parent && parent->defining)
        return true;
    if (LooksLikeAddress(id))
        MakeLateParent(obj).at_once = true;
    // Indices and symbols are listed apart from names.
    return !parent || parent->IsEmpty() || !id.isString() || MoveBehindLateChildren(engine, obj, id);
}

// What the prototypes have is mostly a method that is being called; nothing is said of the children by that.
bool IsInherited(::JSContext* engine, JS::HandleObject obj, JS::HandleId id, bool& inherited)
{
    JS::RootedObject prototype(engine);
    inherited = false;
    return ::JS_GetPrototype(engine, obj, &prototype) &&
           (!prototype || ::JS_HasPropertyById(engine, prototype, id, &inherited));
}

bool ResolveLateChild(::JSContext* engine, JS::HandleObject obj, JS::HandleId id, bool* resolved)
{
    *resolved = false;
    const LateParent* parent = LateParentOf(obj);
    if (!parent || parent->IsEmpty() || parent->defining || !id.isString())
        return true;
    if (LooksLikeAddress(id))
        return DefineLateChildren(engine, obj) && ::JS_AlreadyHasOwnPropertyById(engine, obj, id, resolved);
    // The name may be asked for because it is about to be added, which is to be behind the children.
    bool inherited = false;
    return IsInherited(engine, obj, id, inherited) && (inherited || DefineLateChildren(engine, obj));
}

bool MayResolveLateChild(const JSAtomState&, JS::PropertyKey id, ::JSObject*)
{
    return LooksLikeAddress(id);
}

void TraceLateChildren(JSTracer* trc, ::JSObject* obj)
{
    LateParent* parent = LateParentOf(obj);
    if (!parent)
        return;
    for (const JSLateChild* child = parent->head.next; child != &parent->head; child = child->next)
        TraceWord(trc, OBJECT_TO_JSVAL(child->object));
}

// The way for objects that take no late children (now).
JSBool DefineAtOnce(JSContext* cx, JSObject* obj, const JSLateChild& child)
{
    Entry entry(cx, "JS_AddLateChild");
    if (!entry)
        return JS_FALSE;
    JS::RootedObject parent(entry.Engine(), Inner(obj));
    return Define(entry.Engine(), parent, child) ? JS_TRUE : entry.Fail();
}

bool IsLateParent(::JSObject* obj)
{
    return JS::GetClass(obj)->cOps == &kLateParentOps;
}

bool TakesLateChildren(ThreadState& t, ::JSObject* obj)
{
    JS::RootedObject parent(t.engine, obj);
    bool extensible = false;
    return IsLateParent(parent) && ::JS_IsExtensible(t.engine, parent, &extensible) && extensible;
}

} // namespace

const ::JSClassOps kLateParentOps = {
    NoteAddedProperty, nullptr, DefineLateChildren, nullptr, ResolveLateChild, MayResolveLateChild, FinalizeHostObject,
    nullptr,           nullptr, TraceLateChildren};

void ForgetLateChildren(::JSObject* obj)
{
    if (!IsLateParent(obj))
        return;
    LateParent* parent = LateParentOf(obj);
    while (parent && !parent->IsEmpty())
        JS_DropLateChild(parent->head.next);
    delete parent;
}

bool DefineAllLateChildren(ThreadState& t)
{
    JS::RootedObjectVector parents(t.engine);
    bool done = true;
    t.host_objects.ForEach([&](void* p) {
        auto* obj = static_cast<::JSObject*>(p);
        const LateParent* parent = IsLateParent(obj) ? LateParentOf(obj) : nullptr;
        if (parent && !parent->IsEmpty())
            done = parents.append(obj) && done;
    });
    for (std::size_t i = 0; done && i < parents.length(); ++i) {
        const JSAutoRealm realm(t.engine, parents[i]);
        done = DefineLateChildren(t.engine, parents[i]);
    }
    return done;
}

std::string JS_AddressName(const void* address)
{
    constexpr char digits[] = "0123456789abcdef";
    char buffer[2 * sizeof address];
    char* const end = std::end(buffer);
    char* start = end;
    for (auto rest = reinterpret_cast<std::uintptr_t>(address); rest; rest >>= 4)
        *--start = digits[rest & 0xf];
    return std::string(std::begin(kAddressPrefix), std::end(kAddressPrefix)).append(start, end);
}

JSBool JS_AddLateChild(JSContext* cx, JSObject* obj, JSObject* child, const void* address, JSLateChild* late)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return JS_FALSE;
    late->object = child;
    late->address = address;
    if (!TakesLateChildren(*t, Inner(obj)))
        return DefineAtOnce(cx, obj, *late);
    LateParent& parent = MakeLateParent(Inner(obj));
    if (parent.at_once)
        return DefineAtOnce(cx, obj, *late);
    late->next = &parent.head;
    late->previous = parent.head.previous;
    late->next->previous = late->previous->next = late;
    return JS_TRUE;
}

void JS_DropLateChild(JSLateChild* late)
{
    if (!late->IsWaiting())
        return;
    late->previous->next = late->next;
    late->next->previous = late->previous;
    late->previous = late->next = nullptr;
}

} // namespace qxjs
