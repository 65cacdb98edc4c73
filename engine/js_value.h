#pragma once

#include <string>

#include <wx/string.h>

#include "base/api.h"
#include "engine/js_types.h"

/// @file
/// Conversions of values, and strings.
///
/// Values returned by these functions live as js_gc.h says: until the native that called returns, or, outside natives,
/// while they are recent. The engine's strings are UTF-16; wchar_t here holds a whole code point. Going out, surrogate
/// pairs join and lone surrogates keep their code; coming in, codes above 0xFFFF become pairs and codes above 0x10FFFF
/// become U+FFFD. NULs are characters like others.
namespace qxjs
{

///@{
/// Conversions as script makes them. They may run script (valueOf, toString) and then fail; false leaves the output
/// untouched. Symbols and big integers reach the host as JSVAL_VOID wherever a jsval is made of them.
VC_QXPARSER_API JSBool JS_ValueToNumber(JSContext* cx, jsval v, jsdouble* dp);
VC_QXPARSER_API JSBool JS_ValueToInt32(JSContext* cx, jsval v, jsint* ip); ///< modulo 2^32, as script's `v | 0`
VC_QXPARSER_API JSBool JS_ValueToBoolean(JSContext* cx, jsval v, JSBool* bp);
VC_QXPARSER_API JSString* JS_ValueToString(JSContext* cx, jsval v); ///< null after an error
///@}

/// Null for null and void with success; a wrapper object for other primitives.
VC_QXPARSER_API JSBool JS_ValueToObject(JSContext* cx, jsval v, JSObject** objp);

/// Never runs script. JSTYPE_OBJECT for null; JSTYPE_FUNCTION for callable objects.
VC_QXPARSER_API JSType JS_TypeOfValue(JSContext* cx, jsval v);

/// A new double for DOUBLE_TO_JSVAL. Null only when refused.
VC_QXPARSER_API jsdouble* JS_NewDouble(JSContext* cx, jsdouble d);
/// *rval is a double word, always.
VC_QXPARSER_API JSBool JS_NewDoubleValue(JSContext* cx, jsdouble d, jsval* rval);
/// *rval is an integer word when the number is whole and fits, else a double word.
VC_QXPARSER_API JSBool JS_NewNumberValue(JSContext* cx, jsdouble d, jsval* rval);

///@{
/// New strings; the characters are copied. Null when refused or out of memory.
VC_QXPARSER_API JSString* JS_NewUCStringCopyN(JSContext* cx, const jschar* chars, std::size_t length);
VC_QXPARSER_API JSString* JS_NewUCStringCopyZ(JSContext* cx, const jschar* chars);
VC_QXPARSER_API JSString* JS_NewStringCopyN(JSContext* cx, const char* latin1, std::size_t length);
VC_QXPARSER_API JSString* JS_NewStringCopyZ(JSContext* cx, const char* latin1);
VC_QXPARSER_API JSString* JS_NewStringFromWide(JSContext* cx, const wchar_t* chars, std::size_t length);
///@}

///@{
/// The one string with these characters that lives as long as the thread's engine: no root needed, but never freed.
VC_QXPARSER_API JSString* JS_InternUCString(JSContext* cx, const jschar* chars);
VC_QXPARSER_API JSString* JS_InternUCStringN(JSContext* cx, const jschar* chars, std::size_t length);
VC_QXPARSER_API JSString* JS_InternString(JSContext* cx, const char* latin1);
///@}

/// In UTF-16 units. 0 for null.
VC_QXPARSER_API std::size_t JS_GetStringLength(JSString* str);
/// The characters with a NUL behind them: a copy made on the first call, valid while the string is rooted or was
/// returned to the running native. JS_StringToWide is faster. Null when refused.
VC_QXPARSER_API const jschar* JS_GetStringChars(JSString* str);

///@{
/// Replaces `out` with the string's text. False leaves it as it was.
VC_QXPARSER_API bool JS_StringToWide(JSContext* cx, JSString* str, std::wstring& out);
VC_QXPARSER_API bool JS_StringToWide(JSContext* cx, JSString* str, wxString& out);
///@}

/// The string as UTF-8, lone surrogates replaced by U+FFFD: for messages and file names.
VC_QXPARSER_API std::string JS_StringToUtf8(JSContext* cx, JSString* str);

} // namespace qxjs
