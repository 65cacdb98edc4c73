#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// The script engine's values as hosts see them: one tagged machine word, a jsval.
///
/// | low bits | meaning | payload                                              |
/// | -------- | ------- | ---------------------------------------------------- |
/// | 000      | object  | address of the object; the word 0 is the null object |
/// | xx1      | integer | 31 bits, shifted left by one                         |
/// | 010      | double  | address of a double owned by the engine              |
/// | 100      | string  | address of the string                                |
/// | 110      | boolean | 0 or 1, shifted left by three                        |
///
/// A word protects nothing: what it refers to lives only as long as something roots it (see js_gc.h).
namespace qxjs
{

struct JSRuntime;    ///< what contexts are made from (js_runtime.h)
struct JSContext;    ///< one script environment of one thread (js_runtime.h)
struct JSObject;     ///< an object; also an array or a function (js_object.h)
struct JSString;     ///< a text of script's, which never changes (js_value.h)
struct JSFunction;   ///< an object that can be called (js_script.h)
struct JSScript;     ///< a compiled text (js_script.h)
struct JSStackFrame; ///< a call in progress (js_script.h)

using JSBool = int;               ///< JS_TRUE or JS_FALSE; for results, whether it worked
using jsint = std::int32_t;       ///< an integer as script numbers hold it
using jsuint = std::uint32_t;     ///< the same without sign: the lengths of arrays
using uintN = unsigned int;       ///< a small number, of arguments or a line
using intN = int;                 ///< a small number with a sign
using jsdouble = double;          ///< a number as script has it
using jschar = char16_t;          ///< one UTF-16 unit; the engine's strings are sequences of these
using jsbytecode = unsigned char; ///< a place in a compiled script (js_script.h)
using jsval = std::intptr_t;      ///< a value, as the table above says
using jsid = jsval;               ///< a property's name: a string word, or an integer word for an index

constexpr JSBool JS_TRUE = 1;  ///< yes, or success
constexpr JSBool JS_FALSE = 0; ///< no, or failure

///@{
/// The tags, and the mask of the bits that hold them.
constexpr jsval JSVAL_OBJECT = 0x0;
constexpr jsval JSVAL_INT = 0x1;
constexpr jsval JSVAL_DOUBLE = 0x2;
constexpr jsval JSVAL_STRING = 0x4;
constexpr jsval JSVAL_BOOLEAN = 0x6;
constexpr jsval JSVAL_TAGMASK = 0x7;
///@}

///@{
/// The integers that fit a word; other numbers travel as doubles. The value below the smallest one marks "void".
constexpr jsint JSVAL_INT_MAX = (1 << 30) - 1;
constexpr jsint JSVAL_INT_MIN = -JSVAL_INT_MAX;
///@}

/// The word of an integer, which must be one that fits (INT_FITS_IN_JSVAL).
constexpr jsval INT_TO_JSVAL(jsint i)
{
    return static_cast<jsval>(static_cast<std::uintptr_t>(static_cast<jsval>(i)) << 1) | JSVAL_INT;
}

/// The word of a truth value.
constexpr jsval BOOLEAN_TO_JSVAL(bool b)
{
    return (static_cast<jsval>(b) << 3) | JSVAL_BOOLEAN;
}

constexpr jsval JSVAL_VOID = INT_TO_JSVAL(JSVAL_INT_MIN - 1); ///< script's undefined
constexpr jsval JSVAL_NULL = 0;                               ///< script's null: the null object
constexpr jsval JSVAL_ZERO = INT_TO_JSVAL(0);                 ///< the integer 0
constexpr jsval JSVAL_ONE = INT_TO_JSVAL(1);                  ///< the integer 1
constexpr jsval JSVAL_FALSE = BOOLEAN_TO_JSVAL(false);        ///< script's false
constexpr jsval JSVAL_TRUE = BOOLEAN_TO_JSVAL(true);          ///< script's true

/// The tag alone; that of an integer has bits of its payload in it.
constexpr jsval JSVAL_TAG(jsval v)
{
    return v & JSVAL_TAGMASK;
}
/// True for the null object too, whose tag is that of objects.
constexpr bool JSVAL_IS_OBJECT(jsval v)
{
    return JSVAL_TAG(v) == JSVAL_OBJECT;
}
/// True for JSVAL_VOID as well: it has the integer tag. Ask JSVAL_IS_VOID first where it matters.
constexpr bool JSVAL_IS_INT_TAGGED(jsval v)
{
    return (v & JSVAL_INT) != 0;
}
/// True for script's undefined.
constexpr bool JSVAL_IS_VOID(jsval v)
{
    return v == JSVAL_VOID;
}
/// True for an integer word; other whole numbers may be doubles.
constexpr bool JSVAL_IS_INT(jsval v)
{
    return JSVAL_IS_INT_TAGGED(v) && !JSVAL_IS_VOID(v);
}
/// True for a double word, whole numbers included.
constexpr bool JSVAL_IS_DOUBLE(jsval v)
{
    return JSVAL_TAG(v) == JSVAL_DOUBLE;
}
/// True for both kinds of numbers.
constexpr bool JSVAL_IS_NUMBER(jsval v)
{
    return JSVAL_IS_INT(v) || JSVAL_IS_DOUBLE(v);
}
/// True for a string word.
constexpr bool JSVAL_IS_STRING(jsval v)
{
    return JSVAL_TAG(v) == JSVAL_STRING;
}
/// True for a truth value.
constexpr bool JSVAL_IS_BOOLEAN(jsval v)
{
    return JSVAL_TAG(v) == JSVAL_BOOLEAN;
}
/// True for the null object.
constexpr bool JSVAL_IS_NULL(jsval v)
{
    return v == JSVAL_NULL;
}
/// Everything but a real object: null is a primitive.
constexpr bool JSVAL_IS_PRIMITIVE(jsval v)
{
    return !JSVAL_IS_OBJECT(v) || JSVAL_IS_NULL(v);
}
/// True when the word refers to something the collector owns.
constexpr bool JSVAL_IS_GCTHING(jsval v)
{
    return !JSVAL_IS_INT_TAGGED(v) && !JSVAL_IS_BOOLEAN(v);
}

/// The payloads. None of them tests the tag.
/// The payload of an integer word. Neither this nor what follows tests the tag.
constexpr jsint JSVAL_TO_INT(jsval v)
{
    return static_cast<jsint>(v >> 1);
}
/// The payload of a truth value.
constexpr bool JSVAL_TO_BOOLEAN(jsval v)
{
    return (v >> 3) != 0;
}
/// The address in a word that refers to something of the collector's.
inline void* JSVAL_TO_GCTHING(jsval v)
{
    return reinterpret_cast<void*>(v & ~JSVAL_TAGMASK);
}
/// The object of an object word; null for the null object.
inline JSObject* JSVAL_TO_OBJECT(jsval v)
{
    return static_cast<JSObject*>(JSVAL_TO_GCTHING(v));
}
/// The string of a string word.
inline JSString* JSVAL_TO_STRING(jsval v)
{
    return static_cast<JSString*>(JSVAL_TO_GCTHING(v));
}
/// Where the number of a double word is; to be read only.
inline jsdouble* JSVAL_TO_DOUBLE(jsval v)
{
    return static_cast<jsdouble*>(JSVAL_TO_GCTHING(v));
}

/// The word of an object; JSVAL_NULL for null.
inline jsval OBJECT_TO_JSVAL(const JSObject* obj)
{
    return reinterpret_cast<jsval>(obj);
}
/// A null string becomes a string word without a string; the engine's functions return null only for failure.
inline jsval STRING_TO_JSVAL(const JSString* str)
{
    return reinterpret_cast<jsval>(str) | JSVAL_STRING;
}
/// The word of a double that the engine has made (JS_NewDouble in js_value.h).
inline jsval DOUBLE_TO_JSVAL(const jsdouble* d)
{
    return reinterpret_cast<jsval>(d) | JSVAL_DOUBLE;
}

/// Whether an integer fits an integer word.
constexpr bool INT_FITS_IN_JSVAL(std::int64_t i)
{
    return i >= JSVAL_INT_MIN && i <= JSVAL_INT_MAX;
}

/// Attributes of properties, and flags of functions. Other bits are accepted and ignored.
constexpr uintN JSPROP_ENUMERATE = 0x01; ///< listed by for-in and JS_Enumerate
constexpr uintN JSPROP_READONLY = 0x02;  ///< assignments change nothing
constexpr uintN JSPROP_PERMANENT = 0x04; ///< cannot be deleted
constexpr uintN JSPROP_SHARED = 0x40;    ///< accepted and ignored: accessors have no value of their own

/// What a native function looks like: `obj` is script's `this`, argv[0] to argv[argc - 1] the arguments; where fewer
/// were given than the function declares, the missing ones read as JSVAL_VOID. argv[-2] is the running function and
/// argv[-1] its `this`. All of it stays alive until the native returns. *rval is JSVAL_VOID on entry.
/// Returning JS_FALSE with an exception pending throws it; with none pending it ends the script, uncatchably.
using JSNative = JSBool (*)(JSContext* cx, JSObject* obj, uintN argc, jsval* argv, jsval* rval);

/// A property's getter or setter. `id` is the tinyid as an integer word, or the name as a string word when the property
/// has none. *vp is where a getter puts the value and where a setter finds it.
using JSPropertyOp = JSBool (*)(JSContext* cx, JSObject* obj, jsval id, jsval* vp);

/// Where the number that a property stands for is kept.
struct JSNumberField
{
    /// What stands there.
    enum Type
    {
        None,  ///< no number
        Int32, ///< an int
        Double ///< a double
    };
    void* address; ///< of the number; null for none
    Type type;     ///< what it is
};

/// Finds the number behind an accessor of an object: `data` is the object's private pointer, never null, `id` as above.
/// With None the getter or setter is called as if there were no such operation; else script reads and writes the number
/// itself, writing what is of the type without conversion. It makes no other call of this interface.
using JSNumberFieldOp = JSNumberField (*)(void* data, jsval id);

/// A number that is handed over as it is, without a word: those of most numbers have to be kept somewhere.
struct JSNumber
{
    JSNumberField::Type type; ///< which of the two below it is, if any
    jsint whole = 0;          ///< for JSNumberField::Int32
    jsdouble real = 0;        ///< for JSNumberField::Double
};

/// Does for a native that returns a number what that does, where it can. `data` is the private pointer of script's
/// `this`, never null, `argc` and `argv` are the native's own. With JSNumberField::None it has done nothing, and the
/// native is called.
using JSNumberNative = JSNumber (*)(void* data, uintN argc, const jsval* argv);

/// A hook of JSClass for enumerating: never called.
using JSEnumerateOp = JSBool (*)(JSContext* cx, JSObject* obj);
/// A hook of JSClass for names that are not there: never called.
using JSResolveOp = JSBool (*)(JSContext* cx, JSObject* obj, jsval id);
/// The kinds of values that script tells apart.
enum JSType
{
    JSTYPE_VOID,     ///< undefined
    JSTYPE_OBJECT,   ///< an object, or null
    JSTYPE_FUNCTION, ///< an object that can be called
    JSTYPE_STRING,   ///< a text
    JSTYPE_NUMBER,   ///< a number
    JSTYPE_BOOLEAN   ///< a truth value
};
/// A hook of JSClass for conversions: never called.
using JSConvertOp = JSBool (*)(JSContext* cx, JSObject* obj, JSType type, jsval* vp);

/// Called exactly once for each object of the class, by the collection that found it dead or when its thread's engine
/// goes away. `cx` is the context that was running or collecting, not necessarily the object's own; when the engine
/// goes away it is one that no host made, whose private pointer is null. A finalizer may read and set the private data
/// of `obj`, change roots, use JS_CallAtSafePoint and JS_CallAfterNative. Everything else is refused: no other object
/// may be looked at, none made, no script run.
using JSFinalizeOp = void (*)(JSContext* cx, JSObject* obj);

/// The function that runs, from a native's `argv`.
inline jsval JS_ARGV_CALLEE(const jsval* argv)
{
    return argv[-2];
}
/// Its `this`, from a native's `argv`.
inline jsval JS_ARGV_THIS(const jsval* argv)
{
    return argv[-1];
}

} // namespace qxjs
