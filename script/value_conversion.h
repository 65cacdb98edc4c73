#pragma once

#include "base/api.h"
#include "engine/jsapi.h"

#include <wx/arrstr.h>
#include <wx/dynarray.h>
#include <wx/object.h>
#include <wx/string.h>

#include <cstdint>
#include <vector>

class CJScriptLink;

WX_DEFINE_ARRAY_PTR(CJScriptLink*, wxArraypCJScriptLink);

/// @file
/// Values between host and script. The engine lock must be held (it is, inside natives).
///
/// jsval_to_TYPE reads an engine value into `out`; false when it cannot, and `out` is then untouched unless stated
/// otherwise. TYPE_to_jsval makes an engine value, which lives as engine/js_gc.h says.

/// A number truncated toward 0; past the range of int its nearest limit, 0 for NaN.
VC_QXPARSER_API int TruncateToInt(double number);

/// The value itself; always true.
VC_QXPARSER_API bool jsval_to_jsval(JSContext* cx, jsval v, jsval& out);
/// The number script makes of the value, as TruncateToInt says.
VC_QXPARSER_API bool jsval_to_int(JSContext* cx, jsval v, int& out);
/// The number script makes of the value.
VC_QXPARSER_API bool jsval_to_double(JSContext* cx, jsval v, double& out);
/// Whether script takes the value for true.
VC_QXPARSER_API bool jsval_to_bool(JSContext* cx, jsval v, bool& out);
/// The text script makes of the value. Always true: an object whose conversion throws gives an empty text.
VC_QXPARSER_API bool jsval_to_wxString(JSContext* cx, jsval v, wxString& out);
/// Objects only: the link of a native object's script object, null for the null object and for other objects.
VC_QXPARSER_API bool jsval_to_pCJScriptLink(JSContext* cx, jsval v, CJScriptLink*& out);
/// Objects only: the native object itself, null for the null object. An object without one (its native object is gone)
/// is logged and gives null with true.
VC_QXPARSER_API bool jsval_to_pCJScriptLinkRoot(JSContext* cx, jsval v, wxObject*& out);
/// Objects made by pwxObject_to_jsval: the pointer they carry. Anything but an object is logged and gives null with
/// false; an object without a native object is logged and gives null with true, as does the null object, unlogged. An
/// object of another class gives null with false.
VC_QXPARSER_API bool jsval_to_pwxObject(JSContext* cx, jsval v, wxObject*& out);
/// Functions, and the null object (null).
VC_QXPARSER_API bool jsval_to_pJSFunction(JSContext* cx, jsval v, JSFunction*& out);

/// Longer arrays are refused like what is no array: script can make one of any length without filling it.
constexpr jsuint MostArrayElements = 10'000'000;

///@{
/// Arrays only, of at most MostArrayElements. `out` is cleared and filled. An element that cannot be read or converted
/// ends it with false: `out` then has the array's length, the elements before that one, and 0 or the empty text for it
/// and those behind.
VC_QXPARSER_API bool jsval_to_wxArrayInt(JSContext* cx, jsval v, wxArrayInt& out);
VC_QXPARSER_API bool jsval_to_wxArrayString(JSContext* cx, jsval v, wxArrayString& out);
///@}

/// As above, with null links behind; every element must be an object.
VC_QXPARSER_API bool jsval_to_wxArraypCJScriptLink(JSContext* cx, jsval v, wxArraypCJScriptLink& out);

///@{
/// The same in two steps, for when script may run in between and delete native objects: the elements, and later their
/// links.
VC_QXPARSER_API bool jsval_to_objects(JSContext* cx, jsval v, std::vector<jsval>& out);
VC_QXPARSER_API wxArraypCJScriptLink LinksOf(JSContext* cx, const std::vector<jsval>& objects);
///@}

/// The value itself.
VC_QXPARSER_API jsval jsval_to_jsval(JSContext* cx, jsval v);

///@{
/// Always a double word, also for whole numbers.
VC_QXPARSER_API jsval int_to_jsval(JSContext* cx, int value);
VC_QXPARSER_API jsval double_to_jsval(JSContext* cx, double value);
///@}

/// A truth value.
VC_QXPARSER_API jsval bool_to_jsval(JSContext* cx, bool value);
/// A string with the characters of the text.
VC_QXPARSER_API jsval wxString_to_jsval(JSContext* cx, const wxString& value);
/// The link's script object; the null object for a null link.
VC_QXPARSER_API jsval pCJScriptLink_to_jsval(JSContext* cx, CJScriptLink* value);
/// A new object that carries the size; needs a CJScript on the context. The null object, logged, on failure.
VC_QXPARSER_API jsval size_t_to_jsval(JSContext* cx, std::uint32_t value);
/// A new object that carries the pointer, which stays the host's; as above.
VC_QXPARSER_API jsval pwxObject_to_jsval(JSContext* cx, wxObject* value);

///@{
/// A new array of what the conversions above make of the elements.
VC_QXPARSER_API jsval wxArrayInt_to_jsval(JSContext* cx, wxArrayInt value);
VC_QXPARSER_API jsval wxArrayString_to_jsval(JSContext* cx, wxArrayString value);
VC_QXPARSER_API jsval wxArraypCJScriptLink_to_jsval(JSContext* cx, wxArraypCJScriptLink value);
///@}
