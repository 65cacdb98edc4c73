#include "engine/class_detail.h"
#include "engine/entry_detail.h"
#include "engine/id_array_detail.h"
#include "engine/words_detail.h"

// Parents, prototypes, scopes, ids.
namespace qxjs
{

JSObject* JS_GetParent(JSContext* cx, JSObject* obj)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t || !obj || ::JS_IsGlobalObject(Inner(obj)))
        return nullptr;
    if (!ClassOf(Inner(obj)))
        return Outer(cx->global);
    return Outer(JS::GetReservedSlot(Inner(obj), kParentSlot).toObjectOrNull());
}

JSBool JS_SetParent(JSContext* cx, JSObject* obj, JSObject* parent)
{
    if (!Usable(cx, __func__) || !obj || !ClassOf(Inner(obj)) || ::JS_IsGlobalObject(Inner(obj)))
        return JS_FALSE;
    JS::SetReservedSlot(Inner(obj), kParentSlot, JS::ObjectOrNullValue(Inner(parent)));
    return JS_TRUE;
}

namespace
{

// The array that keeps what an object holds, under a symbol of its own: a slot for it would cost every object memory.
bool FindHeld(Entry& entry, JS::HandleObject holder, JS::MutableHandleObject held)
{
    ThreadState& t = entry.Thread();
    if (!t.held_symbol && !(t.held_symbol = JS::NewSymbol(t.engine, nullptr)))
        return false;
    JS::RootedId id(t.engine, JS::PropertyKey::Symbol(t.held_symbol));
    JS::RootedValue value(t.engine);
    bool has = false;
    if (!::JS_HasOwnPropertyById(t.engine, holder, id, &has) ||
        (has && !::JS_GetPropertyById(t.engine, holder, id, &value)))
        return false;
    if (value.isObject()) {
        held.set(&value.toObject());
        return true;
    }
    held.set(JS::NewArrayObject(t.engine, 0));
    return held && ::JS_DefinePropertyById(t.engine, holder, id, held, JSPROP_READONLY);
}

} // namespace

JSBool JS_HoldObject(JSContext* cx, JSObject* holder, jsint index, JSObject* held)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(holder));
    JS::RootedObject element(entry.Engine(), Inner(held));
    JS::RootedObject all(entry.Engine());
    const bool done = FindHeld(entry, object, &all) &&
                      ::JS_DefineElement(entry.Engine(), all, static_cast<std::uint32_t>(index), element, 0);
    return done ? JS_TRUE : entry.Fail();
}

JSObject* JS_GetPrototype(JSContext* cx, JSObject* obj)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    JS::RootedObject proto(entry.Engine());
    if (!::JS_GetPrototype(entry.Engine(), object, &proto)) {
        entry.Fail();
        return nullptr;
    }
    return JSVAL_TO_OBJECT(entry.Thread().Keep(OBJECT_TO_JSVAL(Outer(proto))));
}

JSBool JS_SetPrototype(JSContext* cx, JSObject* obj, JSObject* proto)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    JS::RootedObject prototype(entry.Engine(), Inner(proto));
    return ::JS_SetPrototype(entry.Engine(), object, prototype) ? JS_TRUE : entry.Fail();
}

namespace
{

// Standard names of a global are resolved once and for all: deleted ones would not come back.
bool CollectStandardNames(Entry& entry, JS::HandleObject obj, PointerSet& names)
{
    if (!::JS_IsGlobalObject(obj))
        return true;
    JS::RootedIdVector ids(entry.Engine());
    if (!::JS_NewEnumerateStandardClassesIncludingResolved(entry.Engine(), obj, &ids, false))
        return false;
    for (std::size_t i = 0; i < ids.length(); ++i) {
        if (ids[i].isString())
            names.Insert(ids[i].toString());
    }
    return true;
}

bool ClearProperty(Entry& entry, JS::HandleObject obj, JS::HandleId id)
{
    JS::ObjectOpResult result;
    if (!::JS_DeletePropertyById(entry.Engine(), obj, id, result))
        return false;
    if (result.ok())
        return true;
    JS::RootedValue undefined(entry.Engine());
    JS::RootedValue receiver(entry.Engine(), JS::ObjectValue(*obj));
    JS::ObjectOpResult ignored; // one that is read-only as well stays what it is
    return ::JS_ForwardSetPropertyTo(entry.Engine(), obj, id, undefined, receiver, ignored);
}

} // namespace

void JS_ClearScope(JSContext* cx, JSObject* obj)
{
    Entry entry(cx, __func__);
    if (!entry || !obj)
        return;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    JS::RootedIdVector ids(entry.Engine());
    JS::RootedId id(entry.Engine());
    PointerSet standard_names;
    bool done = CollectStandardNames(entry, object, standard_names) &&
                js::GetPropertyKeys(entry.Engine(), object, JSITER_OWNONLY | JSITER_HIDDEN | JSITER_SYMBOLS, &ids);
    for (std::size_t i = 0; done && i < ids.length(); ++i) {
        id = ids[i];
        if (!id.isString() || !standard_names.Contains(id.toString()))
            done = ClearProperty(entry, object, id);
    }
    if (!done)
        entry.Fail();
}

static bool FillIds(Entry& entry, const JS::Rooted<JS::IdVector>& ids, IdArray& out)
{
    out.words.reserve(ids.length());
    for (std::size_t i = 0; i < ids.length(); ++i) {
        const JS::PropertyKey id = ids[i];
        if (id.isSymbol())
            continue;
        if (id.isInt() && INT_FITS_IN_JSVAL(id.toInt())) {
            out.words.push_back(INT_TO_JSVAL(id.toInt()));
            continue;
        }
        JS::RootedValue value(entry.Engine());
        if (!::JS_IdToValue(entry.Engine(), id, &value))
            return false;
        ::JSString* str = JS::ToString(entry.Engine(), value);
        if (!str)
            return false;
        out.words.push_back(STRING_TO_JSVAL(Outer(str)));
    }
    return true;
}

JSIdArray* JS_Enumerate(JSContext* cx, JSObject* obj)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    ThreadState& t = entry.Thread();
    JS::RootedObject object(t.engine, Inner(obj));
    JS::Rooted<JS::IdVector> ids(t.engine, JS::IdVector(t.engine));
    auto array = std::make_unique<IdArray>();
    t.id_arrays.push_back(array.get()); // traced while it is being filled
    if (!::JS_Enumerate(t.engine, object, &ids) || !FillIds(entry, ids, *array)) {
        t.id_arrays.pop_back();
        entry.Fail();
        return nullptr;
    }
    array->length = static_cast<jsint>(array->words.size());
    array->vector = array->words.data();
    return array.release();
}

void JS_DestroyIdArray(JSContext*, JSIdArray* ida)
{
    auto* array = static_cast<IdArray*>(ida);
    if (ThreadState* t = t_state)
        t->id_arrays.erase(std::remove(t->id_arrays.begin(), t->id_arrays.end(), array), t->id_arrays.end());
    delete array;
}

JSBool JS_IdToValue(JSContext* cx, jsid id, jsval* vp)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return JS_FALSE;
    *vp = JSVAL_IS_STRING(id) ? t->Keep(id) : id;
    return JS_TRUE;
}

} // namespace qxjs
