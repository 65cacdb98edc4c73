#include "engine/property_detail.h"

#include <cstring>

#include "engine/text_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

// A name as the caller has it.
struct Name
{
    const char* narrow = nullptr;
    const jschar* units = nullptr;
    const wchar_t* wide = nullptr;
    std::size_t length = 0;
};

Name Narrow(const char* name)
{
    return {name, nullptr, nullptr, std::strlen(name)};
}
Name Units(const jschar* name, std::size_t length)
{
    return {nullptr, name, nullptr, length};
}
Name Wide(const wchar_t* name, std::size_t length)
{
    return {nullptr, nullptr, name, length};
}

::JSString* Intern(::JSContext* engine, const Name& name)
{
    if (name.narrow)
        return ::JS_AtomizeStringN(engine, name.narrow, name.length);
    if (name.units)
        return ::JS_AtomizeUCStringN(engine, name.units, name.length);
    const std::u16string units = ToUtf16({name.wide, name.length});
    return ::JS_AtomizeUCStringN(engine, units.data(), units.size());
}

bool ToId(Entry& entry, const Name& name, JS::MutableHandleId id)
{
    JS::RootedString atom(entry.Engine(), Intern(entry.Engine(), name));
    return atom && ::JS_StringToId(entry.Engine(), atom, id);
}

JSBool Get(JSContext* cx, JSObject* object, const Name& name, jsval* vp)
{
    Entry entry(cx, "JS_GetProperty");
    if (!entry)
        return JS_FALSE;
    JS::RootedObject obj(entry.Engine(), Inner(object));
    JS::RootedId id(entry.Engine());
    JS::RootedValue value(entry.Engine());
    if (!ToId(entry, name, &id) || !::JS_GetPropertyById(entry.Engine(), obj, id, &value))
        return entry.Fail();
    *vp = ToWord(entry.Thread(), value);
    return JS_TRUE;
}

JSBool Set(JSContext* cx, JSObject* object, const Name& name, const jsval* vp)
{
    Entry entry(cx, "JS_SetProperty");
    if (!entry)
        return JS_FALSE;
    JS::RootedObject obj(entry.Engine(), Inner(object));
    JS::RootedValue value(entry.Engine(), ToEngine(*vp));
    JS::RootedId id(entry.Engine());
    if (!ToId(entry, name, &id) || !::JS_SetPropertyById(entry.Engine(), obj, id, value))
        return entry.Fail();
    return JS_TRUE;
}

JSBool Has(JSContext* cx, JSObject* object, const Name& name, JSBool* found)
{
    Entry entry(cx, "JS_HasProperty");
    if (!entry)
        return JS_FALSE;
    JS::RootedObject obj(entry.Engine(), Inner(object));
    JS::RootedId id(entry.Engine());
    bool has = false;
    if (!ToId(entry, name, &id) || !::JS_HasPropertyById(entry.Engine(), obj, id, &has))
        return entry.Fail();
    *found = has;
    return JS_TRUE;
}

JSBool Delete(JSContext* cx, JSObject* object, const Name& name, jsval* rval)
{
    Entry entry(cx, "JS_DeleteProperty2");
    if (!entry)
        return JS_FALSE;
    JS::RootedObject obj(entry.Engine(), Inner(object));
    JS::RootedId id(entry.Engine());
    JS::ObjectOpResult result;
    if (!ToId(entry, name, &id) || !::JS_DeletePropertyById(entry.Engine(), obj, id, result))
        return entry.Fail();
    *rval = BOOLEAN_TO_JSVAL(result.ok());
    return JS_TRUE;
}

struct Definition
{
    jsval value;
    JSPropertyOp getter;
    JSPropertyOp setter;
    uintN attrs;
};

JSBool Define(JSContext* cx, JSObject* object, const Name& name, const Definition& definition,
              jsval tinyid = JSVAL_VOID)
{
    Entry entry(cx, "JS_DefineProperty");
    if (!entry)
        return JS_FALSE;
    JS::RootedObject obj(entry.Engine(), Inner(object));
    JS::RootedId id(entry.Engine());
    if (!ToId(entry, name, &id))
        return entry.Fail();
    bool done = false;
    if (definition.getter || definition.setter) {
        // The name serves as id; the accessor outlives this call, so it must too.
        if (JSVAL_IS_VOID(tinyid))
            tinyid = STRING_TO_JSVAL(Outer(InternForever(entry.Thread(), Intern(entry.Engine(), name))));
        done =
            DefineAccessor(entry, obj, id, {definition.getter, definition.setter, nullptr, tinyid}, definition.attrs);
    } else {
        done = DefineData(entry, obj, id, definition.value, definition.attrs);
    }
    return done ? JS_TRUE : entry.Fail();
}

} // namespace

bool NarrowId(Entry& entry, const char* name, JS::MutableHandleId id)
{
    return ToId(entry, Narrow(name), id);
}

JSBool JS_GetProperty(JSContext* cx, JSObject* obj, const char* name, jsval* vp)
{
    return Get(cx, obj, Narrow(name), vp);
}

JSBool JS_GetUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length, jsval* vp)
{
    return Get(cx, obj, Units(name, length), vp);
}

JSBool JS_GetWideProperty(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length, jsval* vp)
{
    return Get(cx, obj, Wide(name, length), vp);
}

JSBool JS_SetProperty(JSContext* cx, JSObject* obj, const char* name, jsval* vp)
{
    return Set(cx, obj, Narrow(name), vp);
}

JSBool JS_SetUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length, jsval* vp)
{
    return Set(cx, obj, Units(name, length), vp);
}

JSBool JS_SetWideProperty(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length, jsval* vp)
{
    return Set(cx, obj, Wide(name, length), vp);
}

JSBool JS_HasProperty(JSContext* cx, JSObject* obj, const char* name, JSBool* found)
{
    return Has(cx, obj, Narrow(name), found);
}

JSBool JS_HasUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length, JSBool* found)
{
    return Has(cx, obj, Units(name, length), found);
}

JSBool JS_DeleteProperty2(JSContext* cx, JSObject* obj, const char* name, jsval* rval)
{
    return Delete(cx, obj, Narrow(name), rval);
}

JSBool JS_DeleteUCProperty2(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length, jsval* rval)
{
    return Delete(cx, obj, Units(name, length), rval);
}

JSBool JS_DeleteWideProperty2(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length, jsval* rval)
{
    return Delete(cx, obj, Wide(name, length), rval);
}

JSBool JS_DefineProperty(JSContext* cx, JSObject* obj, const char* name, jsval value, JSPropertyOp getter,
                         JSPropertyOp setter, uintN attrs)
{
    return Define(cx, obj, Narrow(name), {value, getter, setter, attrs});
}

JSBool JS_DefineUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length, jsval value,
                           JSPropertyOp getter, JSPropertyOp setter, uintN attrs)
{
    return Define(cx, obj, Units(name, length), {value, getter, setter, attrs});
}

JSBool JS_DefineWideProperty(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length, jsval value,
                             JSPropertyOp getter, JSPropertyOp setter, uintN attrs)
{
    return Define(cx, obj, Wide(name, length), {value, getter, setter, attrs});
}

JSBool JS_DefinePropertyWithTinyId(JSContext* cx, JSObject* obj, const char* name, jsint tinyid, jsval value,
                                   JSPropertyOp getter, JSPropertyOp setter, uintN attrs)
{
    return Define(cx, obj, Narrow(name), {value, getter, setter, attrs}, INT_TO_JSVAL(tinyid));
}

} // namespace qxjs
