#pragma once

#include "script/native_function.h"
#include "script/value_conversion.h"

#include <wx/string.h>

#include <cmath>

namespace xml_detail
{

/// An argument that script makes a number of. Where others take 0 for what is none, this one fails.
struct NumberArgument
{
    int value = 0;
};

/// An argument that script makes a text of. Where others take an empty text when that throws, this one fails.
struct TextArgument
{
    wxString value;
};

} // namespace xml_detail

template <> struct JSConversion<xml_detail::NumberArgument>
{
    static constexpr const wchar_t* name = JSConversion<int>::name;
    static bool From(JSContext* cx, jsval v, xml_detail::NumberArgument& out)
    {
        double number = 0;
        if (!jsval_to_double(cx, v, number) || std::isnan(number))
            return false;
        out.value = TruncateToInt(number);
        return true;
    }
};

template <> struct JSConversion<xml_detail::TextArgument>
{
    static constexpr const wchar_t* name = JSConversion<wxString>::name;
    static bool From(JSContext* cx, jsval v, xml_detail::TextArgument& out)
    {
        JSString* const string = JS_ValueToString(cx, v);
        return string && JS_StringToWide(cx, string, out.value);
    }
};
