#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"

#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace
{

bool IsHigh(wchar_t character)
{
    return character >= 0xD800 && character < 0xDC00;
}

bool IsLow(wchar_t character)
{
    return character >= 0xDC00 && character < 0xE000;
}

/// Any code there is, those that take one byte, two, or a pair each as often, surrogates too.
rc::Gen<wchar_t> AnyCharacter()
{
    return rc::gen::oneOf(rc::gen::inRange<wchar_t>(0, 0x80), rc::gen::inRange<wchar_t>(0x80, 0x100),
                          rc::gen::inRange<wchar_t>(0x100, 0x10000), rc::gen::inRange<wchar_t>(0xD800, 0xE000),
                          rc::gen::inRange<wchar_t>(0x10000, 0x110000));
}

/// A text in which no lone surrogate stands before one that it would make a pair with.
wxString PickText()
{
    const auto characters = *rc::gen::container<std::wstring>(AnyCharacter());
    std::wstring text;
    for (const wchar_t character : characters)
        if (text.empty() || !IsHigh(text.back()) || !IsLow(character))
            text += character;
    return wxString(text);
}

/// Any bit pattern of a double, and whole numbers as often.
double PickDouble()
{
    if (*rc::gen::arbitrary<bool>())
        return *rc::gen::arbitrary<int>();
    const auto bits = *rc::gen::arbitrary<std::uint64_t>();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

class ValueConversionProperties : public ScriptTest
{
protected:
    /// What comes back when script hands a value on.
    jsval ThroughScript(jsval value)
    {
        RC_ASSERT(script.Evaluate("function same(v) { return v; }", nullptr));
        jsval result = JSVAL_VOID;
        RC_ASSERT(script.CallWithRet("same", Global(), &result, 1, &value));
        return result;
    }
};

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, ATextComesBackAsItWas, ())
{
    const wxString text = PickText();
    wxString out("before");
    RC_ASSERT(jsval_to_wxString(Context(), ThroughScript(wxString_to_jsval(Context(), text)), out));
    RC_ASSERT(out == text);
    RC_ASSERT(out.length() == text.length());
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, ATextHasItsUtf16LengthInScript, ())
{
    const wxString text = PickText();
    size_t units = 0;
    for (const wchar_t character : text.ToStdWstring())
        units += character > 0xFFFF ? 2 : 1;
    RC_ASSERT(JS_GetStringLength(JSVAL_TO_STRING(wxString_to_jsval(Context(), text))) == units);
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, ADoubleComesBackAsItWas, ())
{
    const double number = PickDouble();
    double out = 0;
    RC_ASSERT(jsval_to_double(Context(), ThroughScript(double_to_jsval(Context(), number)), out));
    const bool same = out == number && std::signbit(out) == std::signbit(number);
    RC_ASSERT(same || (std::isnan(number) && std::isnan(out)));
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, AnIntegerComesBackAsItWas, (int number))
{
    int out = 0;
    RC_ASSERT(jsval_to_int(Context(), ThroughScript(int_to_jsval(Context(), number)), out));
    RC_ASSERT(out == number);
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, AnEvaluatedIntegerIsTheNumberWritten, (int number))
{
    int out = 0;
    RC_ASSERT(script.Evaluate(std::to_string(number), nullptr, out));
    RC_ASSERT(out == number);
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, ATruthValueComesBackAsItWas, (bool truth))
{
    bool out = !truth;
    RC_ASSERT(jsval_to_bool(Context(), ThroughScript(bool_to_jsval(Context(), truth)), out));
    RC_ASSERT(out == truth);
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, AnArrayOfIntegersComesBackAsItWas, (std::vector<int> numbers))
{
    wxArrayInt array;
    for (const int number : numbers)
        array.push_back(number);
    wxArrayInt out;
    RC_ASSERT(jsval_to_wxArrayInt(Context(), ThroughScript(wxArrayInt_to_jsval(Context(), array)), out));
    RC_ASSERT(std::vector<int>(out.begin(), out.end()) == numbers);
}

RC_GTEST_FIXTURE_PROP(ValueConversionProperties, AnArrayOfTextsComesBackAsItWas, ())
{
    wxArrayString array;
    for (int left = *rc::gen::inRange(0, 20); left > 0; --left)
        array.push_back(PickText());
    wxArrayString out;
    RC_ASSERT(jsval_to_wxArrayString(Context(), ThroughScript(wxArrayString_to_jsval(Context(), array)), out));
    RC_ASSERT(out == array);
}

} // namespace
