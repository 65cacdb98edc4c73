#include "engine/entry_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

static ::JSObject* MakeArray(Entry& entry, std::size_t length, const jsval* vector)
{
    if (!vector)
        return JS::NewArrayObject(entry.Engine(), length);
    JS::RootedValueVector values(entry.Engine());
    if (!values.reserve(length))
        return nullptr;
    for (std::size_t i = 0; i < length; ++i)
        values.infallibleAppend(ToEngine(vector[i]));
    return JS::NewArrayObject(entry.Engine(), values);
}

JSObject* JS_NewArrayObject(JSContext* cx, jsint length, const jsval* vector)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    ::JSObject* array = length < 0 ? nullptr : MakeArray(entry, static_cast<std::size_t>(length), vector);
    if (!array) {
        entry.Fail();
        return nullptr;
    }
    return JSVAL_TO_OBJECT(entry.Thread().Keep(OBJECT_TO_JSVAL(Outer(array))));
}

JSBool JS_IsArrayObject(JSContext* cx, JSObject* obj)
{
    Entry entry(cx, __func__);
    if (!entry || !obj)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    bool is_array = false;
    if (!JS::IsArrayObject(entry.Engine(), object, &is_array))
        return entry.Fail();
    return is_array;
}

JSBool JS_GetArrayLength(JSContext* cx, JSObject* obj, jsuint* length)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    std::uint32_t found = 0;
    if (!JS::GetArrayLength(entry.Engine(), object, &found))
        return entry.Fail();
    *length = found;
    return JS_TRUE;
}

JSBool JS_SetArrayLength(JSContext* cx, JSObject* obj, jsuint length)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    return JS::SetArrayLength(entry.Engine(), object, length) ? JS_TRUE : entry.Fail();
}

JSBool JS_GetElement(JSContext* cx, JSObject* obj, jsint index, jsval* vp)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    JS::RootedValue value(entry.Engine());
    if (!::JS_GetElement(entry.Engine(), object, static_cast<std::uint32_t>(index), &value))
        return entry.Fail();
    *vp = ToWord(entry.Thread(), value);
    return JS_TRUE;
}

JSBool JS_SetElement(JSContext* cx, JSObject* obj, jsint index, jsval* vp)
{
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject object(entry.Engine(), Inner(obj));
    JS::RootedValue value(entry.Engine(), ToEngine(*vp));
    return ::JS_SetElement(entry.Engine(), object, static_cast<std::uint32_t>(index), value) ? JS_TRUE : entry.Fail();
}

} // namespace qxjs
