#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"

#include <climits>
#include <cmath>
#include <limits>
#include <string>

using namespace std::string_literals;

namespace
{

/// Tables give values as script text.
class ValueConversionTest : public ScriptTest
{
protected:
    template <typename T> using FromValue = bool (*)(JSContext*, jsval, T&);

    /// Converts the value of a script text into `out`.
    template <typename T> bool Read(FromValue<T> convert, const wxString& text, T& out)
    {
        return convert(Context(), Value(text), out);
    }

    /// The text `String(expression)` gives when `value` stands in for `v` in the expression.
    wxString ShowValue(jsval value, const wxString& expression)
    {
        EXPECT_TRUE(script.Evaluate("function show(v) { return String(" + expression + "); }", nullptr));
        jsval result = JSVAL_VOID;
        EXPECT_TRUE(script.CallWithRet("show", Global(), &result, 1, &value));
        return script.JSValToString(result);
    }
};

// Any value.

TEST_F(ValueConversionTest, AnyValueStaysItself)
{
    for (const char* text : {"undefined", "null", "true", "5", "0.5", "'text'", "({})", "(function() {})"}) {
        const jsval value = Value(text);
        jsval out = INT_TO_JSVAL(4711);
        EXPECT_TRUE(jsval_to_jsval(Context(), value, out)) << text;
        EXPECT_EQ(out, value) << text;
        EXPECT_EQ(jsval_to_jsval(Context(), value), value) << text;
    }
}

// Numbers.

struct NumberRow
{
    const char* name;
    const char* text;
    double number;
    int integer;
};

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

class NumberConversionTest : public ValueConversionTest, public ::testing::WithParamInterface<NumberRow>
{};

TEST_P(NumberConversionTest, ToAnIntegerTruncatesTowardZero)
{
    int out = 4711;
    EXPECT_TRUE(Read<int>(jsval_to_int, GetParam().text, out));
    EXPECT_EQ(out, GetParam().integer);
}

TEST_P(NumberConversionTest, ToADoubleIsExact)
{
    double out = 4711;
    EXPECT_TRUE(Read<double>(jsval_to_double, GetParam().text, out));
    if (std::isnan(GetParam().number))
        EXPECT_TRUE(std::isnan(out));
    else
        EXPECT_EQ(out, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Of, NumberConversionTest,
    ::testing::Values(NumberRow{"Fraction", "2.9", 2.9, 2}, NumberRow{"NegativeFraction", "-2.9", -2.9, -2},
                      NumberRow{"TextOfANumber", "'12'", 12, 12}, NumberRow{"TextOfAFraction", "' -1.5 '", -1.5, -1},
                      NumberRow{"HexadecimalText", "'0x10'", 16, 16}, NumberRow{"EmptyText", "''", 0, 0},
                      NumberRow{"OtherText", "'abc'", NotANumber, 0}, NumberRow{"Zero", "0", 0, 0},
                      NumberRow{"SmallFraction", "0.999999", 0.999999, 0}, NumberRow{"True", "true", 1, 1},
                      NumberRow{"False", "false", 0, 0}, NumberRow{"Null", "null", 0, 0},
                      NumberRow{"Undefined", "undefined", NotANumber, 0}, NumberRow{"ArrayOfOne", "[7]", 7, 7},
                      NumberRow{"Object", "({})", NotANumber, 0},
                      NumberRow{"ObjectWithANumber", "({ valueOf: () => 3.5 })", 3.5, 3},
                      NumberRow{"LargestInt", "2147483647", 2147483647.0, INT_MAX},
                      NumberRow{"SmallestInt", "-2147483648", -2147483648.0, INT_MIN},
                      NumberRow{"PastTheLargestInt", "2147483648", 2147483648.0, INT_MAX},
                      NumberRow{"PastTheSmallestInt", "-2147483649", -2147483649.0, INT_MIN},
                      NumberRow{"LargestIntAndABit", "2147483647.9", 2147483647.9, INT_MAX},
                      NumberRow{"Infinity", "Infinity", Infinity, INT_MAX},
                      NumberRow{"MinusInfinity", "-Infinity", -Infinity, INT_MIN},
                      NumberRow{"Huge", "1e300", 1e300, INT_MAX}, NumberRow{"NotANumber", "NaN", NotANumber, 0}),
    NameOfRow<NumberRow>);

TEST_F(ValueConversionTest, AValueThatRefusesToBecomeANumberFailsAndLeavesTheOutput)
{
    for (const char* text : {"({ valueOf: function() { throw new Error('no'); } })", "({ valueOf: () => Symbol() })",
                             "Object.create(null)"}) {
        int integer = 4711;
        double number = 4711;
        EXPECT_FALSE(Read<int>(jsval_to_int, text, integer)) << text;
        EXPECT_FALSE(Read<double>(jsval_to_double, text, number)) << text;
        EXPECT_EQ(integer, 4711) << text;
        EXPECT_EQ(number, 4711) << text;
    }
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ValueConversionTest, AnIntegerIsAlwaysADoubleWord)
{
    for (const int value : {5, 0, -1, 1 << 30, INT_MAX, INT_MIN}) {
        const jsval word = int_to_jsval(Context(), value);
        ASSERT_EQ(JSVAL_TAG(word), JSVAL_DOUBLE) << value;
        EXPECT_EQ(*JSVAL_TO_DOUBLE(word), value);
        EXPECT_EQ(ShowValue(word, "v"), std::to_string(value));
        EXPECT_EQ(ShowValue(word, "typeof v"), "number");
    }
}

TEST_F(ValueConversionTest, ADoubleIsAlwaysADoubleWord)
{
    for (const double value : {5.0, 0.0, -0.5, 1e300, Infinity}) {
        const jsval word = double_to_jsval(Context(), value);
        ASSERT_EQ(JSVAL_TAG(word), JSVAL_DOUBLE) << value;
        EXPECT_EQ(*JSVAL_TO_DOUBLE(word), value);
    }
    EXPECT_EQ(ShowValue(double_to_jsval(Context(), 0.1), "v === 0.1"), "true");
    EXPECT_EQ(ShowValue(double_to_jsval(Context(), -0.0), "1 / v"), "-Infinity");
    EXPECT_EQ(ShowValue(double_to_jsval(Context(), NotANumber), "v"), "NaN");
}

TEST_F(ValueConversionTest, ANumberInScriptStaysUsableAsAnIndex)
{
    EXPECT_EQ(ShowValue(int_to_jsval(Context(), 1), "['a', 'b'][v]"), "b");
}

// Truth values.

struct TruthRow
{
    const char* name;
    const char* text;
    bool truth;
};

class TruthConversionTest : public ValueConversionTest, public ::testing::WithParamInterface<TruthRow>
{};

TEST_P(TruthConversionTest, IsScripts)
{
    bool out = !GetParam().truth;
    EXPECT_TRUE(Read<bool>(jsval_to_bool, GetParam().text, out));
    EXPECT_EQ(out, GetParam().truth);
}

INSTANTIATE_TEST_SUITE_P(Of, TruthConversionTest,
                         ::testing::Values(TruthRow{"True", "true", true}, TruthRow{"False", "false", false},
                                           TruthRow{"Zero", "0", false}, TruthRow{"Fraction", "0.5", true},
                                           TruthRow{"NotANumber", "NaN", false}, TruthRow{"EmptyText", "''", false},
                                           TruthRow{"TextFalse", "'false'", true}, TruthRow{"Null", "null", false},
                                           TruthRow{"Undefined", "undefined", false},
                                           TruthRow{"Object", "new Boolean(false)", true}),
                         NameOfRow<TruthRow>);

TEST_F(ValueConversionTest, ATruthValueIsItsWord)
{
    EXPECT_EQ(bool_to_jsval(Context(), true), (jsval(1) << 3) | JSVAL_BOOLEAN);
    EXPECT_EQ(bool_to_jsval(Context(), false), JSVAL_BOOLEAN);
    EXPECT_EQ(ShowValue(bool_to_jsval(Context(), true), "v === true"), "true");
    EXPECT_EQ(ShowValue(bool_to_jsval(Context(), false), "v === false"), "true");
}

// Texts.

struct TextRow
{
    const char* name;
    std::wstring source;
    std::wstring text;
};

class TextConversionTest : public ValueConversionTest, public ::testing::WithParamInterface<TextRow>
{};

TEST_P(TextConversionTest, IsScripts)
{
    wxString out("before");
    EXPECT_TRUE(Read<wxString>(jsval_to_wxString, wxString(GetParam().source), out));
    EXPECT_EQ(out, wxString(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Of, TextConversionTest,
    ::testing::Values(TextRow{"Text", L"'abc'", L"abc"}, TextRow{"EmptyText", L"''", L""},
                      TextRow{"Integer", L"-5", L"-5"}, TextRow{"Fraction", L"0.5", L"0.5"},
                      TextRow{"WholeDouble", L"5.0", L"5"}, TextRow{"Large", L"1e21", L"1e+21"},
                      TextRow{"True", L"true", L"true"}, TextRow{"Null", L"null", L"null"},
                      TextRow{"Undefined", L"undefined", L"undefined"}, TextRow{"Array", L"[1, 2]", L"1,2"},
                      TextRow{"Object", L"({})", L"[object Object]"},
                      TextRow{"NonAscii", L"'\u00e9\u0416\U0001F600'", L"\u00e9\u0416\U0001F600"},
                      TextRow{"LoneSurrogate", L"'\\uDE00x'", std::wstring(1, wchar_t(0xDE00)) + L"x"},
                      TextRow{"Nul", L"'a\\0b'", L"a\0b"s}),
    NameOfRow<TextRow>);

TEST_F(ValueConversionTest, AnObjectWhoseTextThrowsGivesAnEmptyTextAndTrue)
{
    wxString out("before");
    EXPECT_TRUE(Read<wxString>(jsval_to_wxString, "({ toString: function() { throw 1; } })", out));
    EXPECT_EQ(out, "");
}

TEST_F(ValueConversionTest, ATextIsAStringOfItsUnits)
{
    const jsval word = wxString_to_jsval(Context(), L"\u00e9\u0416\U0001F600");
    EXPECT_EQ(JSVAL_TAG(word), JSVAL_STRING);
    EXPECT_EQ(ShowValue(word, "typeof v + v.length"), "string4");
    EXPECT_EQ(ShowValue(word, "v === '\\u00e9\\u0416\\ud83d\\ude00'"), "true");
    EXPECT_EQ(ShowValue(wxString_to_jsval(Context(), wxString(L"a\0b", 3)), "v === 'a\\0b'"), "true");
    EXPECT_EQ(ShowValue(wxString_to_jsval(Context(), ""), "v === ''"), "true");
    EXPECT_EQ(ShowValue(wxString_to_jsval(Context(), wxString(wchar_t(0xD83D), 1)), "v === '\\ud83d'"), "true");
}

// Functions.

TEST_F(ValueConversionTest, TheWordZeroIsTheNullFunction)
{
    JSFunction* out = JS_ValueToFunction(Context(), Value("(function() {})"));
    EXPECT_TRUE(jsval_to_pJSFunction(Context(), 0, out));
    EXPECT_EQ(out, nullptr);
}

TEST_F(ValueConversionTest, AFunctionIsItself)
{
    for (const char* text : {"(function() {})", "(() => 1)", "parseInt", "(class {})"}) {
        const jsval value = Value(text);
        JSFunction* out = nullptr;
        EXPECT_TRUE(jsval_to_pJSFunction(Context(), value, out)) << text;
        ASSERT_NE(out, nullptr) << text;
        EXPECT_EQ(OBJECT_TO_JSVAL(JS_GetFunctionObject(out)), value) << text;
    }
}

TEST_F(ValueConversionTest, WhatIsNoFunctionFailsAndLeavesTheOutput)
{
    JSFunction* const before = JS_ValueToFunction(Context(), Value("parseInt"));
    for (const char* text : {"undefined", "true", "5", "0.5", "'text'", "({})", "[]", "/x/"}) {
        JSFunction* out = before;
        EXPECT_FALSE(Read<JSFunction*>(jsval_to_pJSFunction, text, out)) << text;
        EXPECT_EQ(out, before) << text;
    }
    EXPECT_TRUE(log.Errors().empty());
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ValueConversionTest, ANativeCanTurnANonFunctionDownAndGoOn)
{
    bool converted = true;
    Define("take", [&](JSContext* cx, uintN, jsval* argv, jsval*) {
        JSFunction* out = nullptr;
        converted = jsval_to_pJSFunction(cx, argv[0], out);
        return JS_TRUE;
    });
    EXPECT_EQ(Show("take(5); 'went on'"), "went on");
    EXPECT_FALSE(converted);
    EXPECT_TRUE(log.Records().empty());
}

} // namespace
