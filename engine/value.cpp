#include "engine/js_value.h"

#include <cmath>

#include "engine/entry_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

JSBool JS_ValueToNumber(JSContext* cx, jsval v, jsdouble* dp)
{
    if (JSVAL_IS_NUMBER(v)) {
        if (!UsableQuietly(cx, __func__))
            return JS_FALSE;
        *dp = JSVAL_IS_INT(v) ? JSVAL_TO_INT(v) : *JSVAL_TO_DOUBLE(v);
        return JS_TRUE;
    }
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedValue value(entry.Engine(), ToEngine(v));
    double number = 0;
    if (!JS::ToNumber(entry.Engine(), value, &number))
        return entry.Fail();
    *dp = number;
    return JS_TRUE;
}

JSBool JS_ValueToInt32(JSContext* cx, jsval v, jsint* ip)
{
    double number = 0;
    if (!JS_ValueToNumber(cx, v, &number))
        return JS_FALSE;
    *ip = JS::ToInt32(number);
    return JS_TRUE;
}

JSBool JS_ValueToBoolean(JSContext* cx, jsval v, JSBool* bp)
{
    ThreadState* t = UsableQuietly(cx, __func__);
    if (!t)
        return JS_FALSE;
    JS::RootedValue value(t->engine, ToEngine(v));
    *bp = JS::ToBoolean(value);
    return JS_TRUE;
}

JSString* JS_ValueToString(JSContext* cx, jsval v)
{
    if (JSVAL_IS_STRING(v) && JSVAL_TO_STRING(v)) {
        ThreadState* t = UsableQuietly(cx, __func__);
        return t ? JSVAL_TO_STRING(t->Keep(v)) : nullptr;
    }
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    JS::RootedValue value(entry.Engine(), ToEngine(v));
    ::JSString* str = JS::ToString(entry.Engine(), value);
    if (!str) {
        entry.Fail();
        return nullptr;
    }
    return JSVAL_TO_STRING(entry.Thread().Keep(STRING_TO_JSVAL(Outer(str))));
}

JSBool JS_ValueToObject(JSContext* cx, jsval v, JSObject** objp)
{
    if (JSVAL_IS_NULL(v) || JSVAL_IS_VOID(v)) {
        *objp = nullptr;
        return Usable(cx, __func__) != nullptr;
    }
    Entry entry(cx, __func__);
    if (!entry)
        return JS_FALSE;
    JS::RootedValue value(entry.Engine(), ToEngine(v));
    ::JSObject* obj = JS::ToObject(entry.Engine(), value);
    if (!obj)
        return entry.Fail();
    *objp = Outer(obj);
    entry.Thread().Keep(OBJECT_TO_JSVAL(*objp));
    return JS_TRUE;
}

JSType JS_TypeOfValue(JSContext* cx, jsval v)
{
    if (!UsableQuietly(cx, __func__) || JSVAL_IS_VOID(v))
        return JSTYPE_VOID;
    if (JSVAL_IS_NUMBER(v))
        return JSTYPE_NUMBER;
    if (JSVAL_IS_STRING(v))
        return JSTYPE_STRING;
    if (JSVAL_IS_BOOLEAN(v))
        return JSTYPE_BOOLEAN;
    return !JSVAL_IS_NULL(v) && JS::IsCallable(Inner(JSVAL_TO_OBJECT(v))) ? JSTYPE_FUNCTION : JSTYPE_OBJECT;
}

jsdouble* JS_NewDouble(JSContext* cx, jsdouble d)
{
    ThreadState* t = UsableQuietly(cx, __func__);
    if (!t)
        return nullptr;
    return JSVAL_TO_DOUBLE(KeptDouble(*t, d));
}

JSBool JS_NewDoubleValue(JSContext* cx, jsdouble d, jsval* rval)
{
    ThreadState* t = UsableQuietly(cx, __func__);
    if (!t)
        return JS_FALSE;
    *rval = KeptDouble(*t, d);
    return JS_TRUE;
}

JSBool JS_NewNumberValue(JSContext* cx, jsdouble d, jsval* rval)
{
    ThreadState* t = UsableQuietly(cx, __func__);
    if (!t)
        return JS_FALSE;
    // Minus zero is whole but no integer word.
    if (d >= JSVAL_INT_MIN && d <= JSVAL_INT_MAX && d == std::trunc(d) && !(d == 0 && std::signbit(d)))
        *rval = INT_TO_JSVAL(static_cast<jsint>(d));
    else
        *rval = KeptDouble(*t, d);
    return JS_TRUE;
}

} // namespace qxjs
