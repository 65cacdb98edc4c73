#pragma once

#include "engine/thread_state_detail.h"

// Between this interface's words and pointers and the engine's. Nothing moves in this engine (see Start in
// thread_state.cpp), so an address is as good as a handle while its thing lives.
namespace qxjs
{

inline ::JSObject* Inner(const JSObject* obj)
{
    return reinterpret_cast<::JSObject*>(const_cast<JSObject*>(obj));
}
inline ::JSString* Inner(const JSString* str)
{
    return reinterpret_cast<::JSString*>(const_cast<JSString*>(str));
}
inline ::JSObject* Inner(const JSFunction* fun)
{
    return reinterpret_cast<::JSObject*>(const_cast<JSFunction*>(fun));
}
inline JSObject* Outer(::JSObject* obj)
{
    return reinterpret_cast<JSObject*>(obj);
}
inline JSString* Outer(::JSString* str)
{
    return reinterpret_cast<JSString*>(str);
}

// As JS::NumberValue, for what most numbers are; that asks for infinities, NaN and minus zero before it compares.
inline JS::Value NumberToEngine(double d)
{
    if (d >= JSVAL_INT_MIN && d <= JSVAL_INT_MAX && d != 0) {
        const auto whole = static_cast<jsint>(d);
        if (whole == d)
            return JS::Int32Value(whole);
    }
    // A host's NaN may have any bits, and most of them would be another value of the engine's, such as an object.
    return JS::NumberValue(JS::CanonicalizeNaN(d));
}

inline JS::Value ToEngine(jsval v)
{
    if (JSVAL_IS_INT_TAGGED(v))
        return JSVAL_IS_VOID(v) ? JS::UndefinedValue() : JS::Int32Value(JSVAL_TO_INT(v));
    switch (JSVAL_TAG(v)) {
    case JSVAL_OBJECT:
        return JS::ObjectOrNullValue(Inner(JSVAL_TO_OBJECT(v)));
    case JSVAL_DOUBLE:
        return NumberToEngine(*JSVAL_TO_DOUBLE(v));
    case JSVAL_STRING:
        return JSVAL_TO_STRING(v) ? JS::StringValue(Inner(JSVAL_TO_STRING(v))) : JS::NullValue();
    default:
        return JS::BooleanValue(JSVAL_TO_BOOLEAN(v));
    }
}

inline jsval KeptDouble(ThreadState& t, double d)
{
    // Room first: making it could drop old words, and a new cell must be among the words before the next sweep.
    double* cell = t.doubles.New(d);
    return t.Keep(DOUBLE_TO_JSVAL(cell));
}

// The word for a value, kept alive as results are. Symbols and big integers have no word: they become JSVAL_VOID.
inline jsval ToWord(ThreadState& t, const JS::Value& value)
{
    if (value.isInt32()) {
        const jsint i = value.toInt32();
        return INT_FITS_IN_JSVAL(i) ? INT_TO_JSVAL(i) : KeptDouble(t, i);
    }
    if (value.isDouble())
        return KeptDouble(t, value.toDouble());
    if (value.isObject())
        return t.Keep(OBJECT_TO_JSVAL(Outer(&value.toObject())));
    if (value.isString())
        return t.Keep(STRING_TO_JSVAL(Outer(value.toString())));
    if (value.isBoolean())
        return BOOLEAN_TO_JSVAL(value.toBoolean());
    return value.isNull() ? JSVAL_NULL : JSVAL_VOID;
}

// The word for a function's argument. The engine keeps the argument itself alive; only doubles get a cell of ours.
[[gnu::noinline]] inline jsval ToOtherArgument(ThreadState& t, JS::Value value)
{
    return value.isString() ? STRING_TO_JSVAL(Outer(value.toString())) : ToWord(t, value);
}
inline jsval ToArgument(ThreadState& t, JS::Value value)
{
    if (__builtin_expect(value.isInt32() && INT_FITS_IN_JSVAL(value.toInt32()), true))
        return INT_TO_JSVAL(value.toInt32());
    return value.isObject() ? OBJECT_TO_JSVAL(Outer(&value.toObject())) : ToOtherArgument(t, value);
}

} // namespace qxjs
