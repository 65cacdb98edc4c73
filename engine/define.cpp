#include "engine/class_detail.h"
#include "engine/entry_detail.h"
#include "engine/js_script.h"
#include "engine/js_value.h"
#include "engine/native_call_detail.h"
#include "engine/property_detail.h"
#include "engine/words_detail.h"

// Making objects and classes, and what is defined on them.
namespace qxjs
{

namespace
{

constexpr uintN kAttributes = JSPROP_ENUMERATE | JSPROP_READONLY | JSPROP_PERMANENT;

} // namespace

bool DefineAccessor(Entry& entry, JS::HandleObject obj, JS::HandleId name, const AccessorOps& ops, uintN attrs)
{
    ThreadState& t = entry.Thread();
    JS::RootedObject getter(t.engine);
    JS::RootedObject setter(t.engine);
    if (ops.getter && !(getter = AccessorFunction(t, ops, false)))
        return false;
    const bool writable = ops.setter && !(attrs & JSPROP_READONLY);
    if (writable && !(setter = AccessorFunction(t, ops, true)))
        return false;
    return ::JS_DefinePropertyById(t.engine, obj, name, getter, setter, attrs & (JSPROP_ENUMERATE | JSPROP_PERMANENT));
}

bool DefineData(Entry& entry, JS::HandleObject obj, JS::HandleId name, jsval value, uintN attrs)
{
    JS::RootedValue data(entry.Engine(), ToEngine(value));
    return ::JS_DefinePropertyById(entry.Engine(), obj, name, data, attrs & kAttributes);
}

namespace
{

bool DefineSpecs(Entry& entry, JS::HandleObject obj, const JSPropertySpec* ps)
{
    JS::RootedId name(entry.Engine());
    for (; ps && ps->name; ++ps) {
        if (!NarrowId(entry, ps->name, &name))
            return false;
        const bool accessor = ps->getter || ps->setter;
        const AccessorOps ops{ps->getter, ps->setter, ps->field, INT_TO_JSVAL(ps->tinyid)};
        if (!(accessor ? DefineAccessor(entry, obj, name, ops, ps->flags)
                       : DefineData(entry, obj, name, JSVAL_VOID, ps->flags)))
            return false;
    }
    return true;
}

::JSFunction* DefineNative(Entry& entry, JS::HandleObject obj, const JSFunctionSpec& fs)
{
    JS::RootedFunction fun(entry.Engine(), NewNativeFunction(entry.Thread(), fs.call, fs.nargs, fs.name, fs.number));
    if (!fun)
        return nullptr;
    JS::RootedObject value(entry.Engine(), ::JS_GetFunctionObject(fun));
    return ::JS_DefineProperty(entry.Engine(), obj, fs.name, value, fs.flags & kAttributes) ? fun.get() : nullptr;
}

bool DefineSpecs(Entry& entry, JS::HandleObject obj, const JSFunctionSpec* fs)
{
    for (; fs && fs->name; ++fs) {
        if (!DefineNative(entry, obj, *fs))
            return false;
    }
    return true;
}

// The prototype JS_InitClass gave the class in the current realm, or null.
::JSObject* KnownPrototype(Entry& entry, const HostClass* host_class)
{
    const auto& prototypes = DataOfGlobal(JS::CurrentGlobalOrNull(entry.Engine())).prototypes;
    const auto known = prototypes.find(host_class);
    return known == prototypes.end() ? nullptr : known->second;
}

::JSObject* MakePlain(Entry& entry, JSObject* proto)
{
    if (!proto)
        return ::JS_NewPlainObject(entry.Engine());
    JS::RootedObject prototype(entry.Engine(), Inner(proto));
    return ::JS_NewObjectWithGivenProto(entry.Engine(), nullptr, prototype);
}

::JSObject* MakeObject(Entry& entry, const JSClass* clasp, JSObject* proto, JSObject* parent)
{
    if (!clasp)
        return MakePlain(entry, proto);
    ThreadState& t = entry.Thread();
    HostClass* host_class = FindClass(t, *clasp, false);
    if (!host_class)
        return nullptr;
    JS::RootedObject prototype(t.engine, proto ? Inner(proto) : KnownPrototype(entry, host_class));
    ::JSObject* made = prototype ? ::JS_NewObjectWithGivenProto(t.engine, &host_class->engine_class, prototype)
                                 : ::JS_NewObject(t.engine, &host_class->engine_class);
    if (made)
        InitHostObject(t, made, parent ? Inner(parent) : GlobalOf(t, entry.Context()));
    return made;
}

JSObject* Kept(Entry& entry, ::JSObject* obj)
{
    if (!obj) {
        entry.Fail();
        return nullptr;
    }
    return JSVAL_TO_OBJECT(entry.Thread().Keep(OBJECT_TO_JSVAL(Outer(obj))));
}

// What script finds under the class's name: the constructor, or the prototype when there is none.
::JSObject* MakeNamed(Entry& entry, const JSClass& clasp, const HostClass* host_class, JS::HandleObject prototype,
                      JSNative constructor, uintN nargs)
{
    if (!constructor)
        return prototype;
    JS::RootedFunction fun(entry.Engine(), NewConstructor(entry.Thread(), constructor, nargs, clasp.name, host_class));
    if (!fun)
        return nullptr;
    JS::RootedObject named(entry.Engine(), ::JS_GetFunctionObject(fun));
    return ::JS_LinkConstructorAndPrototype(entry.Engine(), named, prototype) ? named.get() : nullptr;
}

// What makes an instance print as "[object Name]".
bool DefineTag(Entry& entry, JS::HandleObject prototype, const char* name)
{
    JS::RootedString tag(entry.Engine(), ::JS_AtomizeString(entry.Engine(), name));
    JS::RootedId id(entry.Engine(), JS::GetWellKnownSymbolKey(entry.Engine(), JS::SymbolCode::toStringTag));
    return tag && ::JS_DefinePropertyById(entry.Engine(), prototype, id, tag, JSPROP_READONLY);
}

} // namespace

JSObject* JS_NewObject(JSContext* cx, const JSClass* clasp, JSObject* proto, JSObject* parent)
{
    Entry entry(cx, __func__);
    return entry ? Kept(entry, MakeObject(entry, clasp, proto, parent)) : nullptr;
}

JSObject* JS_DefineObject(JSContext* cx, JSObject* obj, const char* name, const JSClass* clasp, JSObject* proto,
                          uintN attrs)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    JS::RootedObject owner(entry.Engine(), Inner(obj));
    JS::RootedObject made(entry.Engine(), MakeObject(entry, clasp, proto, obj));
    JS::RootedId id(entry.Engine());
    if (!made || !NarrowId(entry, name, &id) || !DefineData(entry, owner, id, OBJECT_TO_JSVAL(Outer(made)), attrs)) {
        entry.Fail();
        return nullptr;
    }
    return Kept(entry, made);
}

JSObject* JS_InitClass(JSContext* cx, JSObject* obj, JSObject* parent_proto, const JSClass* clasp, JSNative constructor,
                       uintN nargs, const JSPropertySpec* ps, const JSFunctionSpec* fs, const JSPropertySpec* static_ps,
                       const JSFunctionSpec* static_fs)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    ::JSContext* engine = entry.Engine();
    JS::RootedObject owner(engine, Inner(obj));
    HostClass* host_class = FindClass(entry.Thread(), *clasp, false);
    JS::RootedObject plain(engine, JS::GetRealmObjectPrototype(engine));
    JS::RootedObject prototype(engine);
    if (host_class && plain)
        prototype = MakeObject(entry, clasp, parent_proto ? parent_proto : Outer(plain), obj);
    JS::RootedObject named(engine);
    if (prototype)
        named = MakeNamed(entry, *clasp, host_class, prototype, constructor, nargs);
    if (!named || !DefineTag(entry, prototype, clasp->name) ||
        !::JS_DefineProperty(engine, owner, clasp->name, named, 0) || !DefineSpecs(entry, prototype, ps) ||
        !DefineSpecs(entry, prototype, fs) || !DefineSpecs(entry, named, static_ps) ||
        !DefineSpecs(entry, named, static_fs)) {
        entry.Fail();
        return nullptr;
    }
    DataOfGlobal(JS::CurrentGlobalOrNull(engine)).prototypes[host_class] = prototype;
    return Kept(entry, prototype);
}

JSBool JS_DefineProperties(JSContext* cx, JSObject* obj, const JSPropertySpec* ps)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject owner(entry.Engine(), Inner(obj));
    return DefineSpecs(entry, owner, ps) ? JS_TRUE : entry.Fail();
}

JSBool JS_DefineFunctions(JSContext* cx, JSObject* obj, const JSFunctionSpec* fs)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject owner(entry.Engine(), Inner(obj));
    return DefineSpecs(entry, owner, fs) ? JS_TRUE : entry.Fail();
}

JSFunction* JS_DefineFunction(JSContext* cx, JSObject* obj, const char* name, JSNative call, uintN nargs, uintN attrs)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    JS::RootedObject owner(entry.Engine(), Inner(obj));
    ::JSFunction* fun = DefineNative(entry, owner, {name, call, nargs, attrs, 0});
    return reinterpret_cast<JSFunction*>(Kept(entry, fun ? ::JS_GetFunctionObject(fun) : nullptr));
}

JSFunction* JS_NewFunction(JSContext* cx, JSNative native, uintN nargs, uintN, JSObject*, const char* name)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    ::JSFunction* fun = NewNativeFunction(entry.Thread(), native, nargs, name);
    return reinterpret_cast<JSFunction*>(Kept(entry, fun ? ::JS_GetFunctionObject(fun) : nullptr));
}

} // namespace qxjs
