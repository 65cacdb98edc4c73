#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"

#include <climits>
#include <string>

namespace
{

/// A text between "|" for each element.
wxString Joined(const wxArrayInt& array)
{
    wxString text;
    for (const int value : array)
        text += wxString::Format("%d|", value);
    return text;
}

wxString Joined(const wxArrayString& array)
{
    wxString text;
    for (const wxString& value : array)
        text += value + "|";
    return text;
}

class ArrayConversionTest : public ScriptTest
{
protected:
    /// The text `String(expression)` gives when `value` stands in for `v` in the expression.
    wxString ShowValue(jsval value, const wxString& expression)
    {
        EXPECT_TRUE(script.Evaluate("function show(v) { return String(" + expression + "); }", nullptr));
        jsval result = JSVAL_VOID;
        EXPECT_TRUE(script.CallWithRet("show", Global(), &result, 1, &value));
        return script.JSValToString(result);
    }
};

const char* const NoArrays[] = {"undefined",
                                "null",
                                "true",
                                "5",
                                "0.5",
                                "'text'",
                                "({})",
                                "({ length: 2, 0: 1, 1: 2 })",
                                "(function(a, b) {})",
                                "new Int32Array(2)"};

struct ArrayRow
{
    const char* name;
    const char* text;
    const char* integers;
    const char* texts;
};

class ArrayElementsTest : public ArrayConversionTest, public ::testing::WithParamInterface<ArrayRow>
{};

TEST_P(ArrayElementsTest, BecomeIntegers)
{
    wxArrayInt out;
    out.push_back(4711);
    EXPECT_TRUE(jsval_to_wxArrayInt(Context(), Value(GetParam().text), out));
    EXPECT_EQ(Joined(out), GetParam().integers);
}

TEST_P(ArrayElementsTest, BecomeTexts)
{
    wxArrayString out;
    out.push_back("before");
    EXPECT_TRUE(jsval_to_wxArrayString(Context(), Value(GetParam().text), out));
    EXPECT_EQ(Joined(out), GetParam().texts);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ArrayElementsTest,
    ::testing::Values(ArrayRow{"Empty", "[]", "", ""}, ArrayRow{"Integers", "[1, -2, 3]", "1|-2|3|", "1|-2|3|"},
                      ArrayRow{"Fractions", "[2.9, -2.9]", "2|-2|", "2.9|-2.9|"},
                      ArrayRow{"Texts", "['12', 'ab', '']", "12|0|0|", "12|ab||"},
                      ArrayRow{"Mixed", "[true, null, undefined]", "1|0|0|", "true|null|undefined|"},
                      ArrayRow{"Holes", "[1, , 3]", "1|0|3|", "1|undefined|3|"},
                      ArrayRow{"Nested", "[[1], [2, 3]]", "1|0|", "1|2,3|"},
                      ArrayRow{"LengthAlone", "new Array(2)", "0|0|", "undefined|undefined|"},
                      ArrayRow{"Limits", "[2147483648, -1e10]", "2147483647|-2147483648|", "2147483648|-10000000000|"}),
    NameOfRow<ArrayRow>);

TEST_F(ArrayConversionTest, WhatIsNoArrayFailsAndLeavesTheIntegers)
{
    for (const char* text : NoArrays) {
        wxArrayInt out;
        out.push_back(4711);
        EXPECT_FALSE(jsval_to_wxArrayInt(Context(), Value(text), out)) << text;
        EXPECT_EQ(Joined(out), "4711|") << text;
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ArrayConversionTest, WhatIsNoArrayFailsAndLeavesTheTexts)
{
    for (const char* text : NoArrays) {
        wxArrayString out;
        out.push_back("before");
        EXPECT_FALSE(jsval_to_wxArrayString(Context(), Value(text), out)) << text;
        EXPECT_EQ(Joined(out), "before|") << text;
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ArrayConversionTest, WhatIsNoArrayFailsAndLeavesTheLinks)
{
    for (const char* text : NoArrays) {
        wxArraypCJScriptLink out;
        out.push_back(Global());
        EXPECT_FALSE(jsval_to_wxArraypCJScriptLink(Context(), Value(text), out)) << text;
        ASSERT_EQ(out.size(), 1u) << text;
        EXPECT_EQ(out[0], Global()) << text;
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ArrayConversionTest, AnElementThatIsNoNumberEndsTheIntegersBehindThoseBefore)
{
    wxArrayInt out;
    EXPECT_FALSE(jsval_to_wxArrayInt(Context(), Value("[7, 8, { valueOf: function() { throw 1; } }, 9]"), out));
    EXPECT_EQ(Joined(out), "7|8|0|0|");
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ArrayConversionTest, AnElementThatCannotBeReadEndsTheTextsBehindThoseBefore)
{
    wxArrayString out;
    EXPECT_FALSE(jsval_to_wxArrayString(
        Context(), Value("var a = ['x', 'y', 'z']; Object.defineProperty(a, 1, { get: function() { throw 1; } }); a"),
        out));
    EXPECT_EQ(Joined(out), "x|||");
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ArrayConversionTest, AnElementThatIsNoObjectEndsTheLinksBehindThoseBefore)
{
    for (const char* text :
         {"[this, 5, this]", "[this, 'x', 1]", "[this, undefined, null]", "[this, true, this]", "[this, , this]"}) {
        wxArraypCJScriptLink out;
        EXPECT_FALSE(jsval_to_wxArraypCJScriptLink(Context(), Value(text), out)) << text;
        ASSERT_EQ(out.size(), 3u) << text;
        EXPECT_EQ(out[0], Global()) << text;
        EXPECT_EQ(out[1], nullptr) << text;
        EXPECT_EQ(out[2], nullptr) << text;
    }
}

TEST_F(ArrayConversionTest, AnArrayThatShrinksWhileItIsReadGivesItsOldLength)
{
    wxArrayInt out;
    EXPECT_TRUE(
        jsval_to_wxArrayInt(Context(), Value("var b = [{ valueOf() { b.length = 1; return 7; } }, 8, 9]; b"), out));
    EXPECT_EQ(Joined(out), "7|0|0|");
}

TEST_F(ArrayConversionTest, ManyElementsAreReadAndMade)
{
    wxArrayInt integers;
    EXPECT_TRUE(jsval_to_wxArrayInt(Context(), Value("Array.from({ length: 100000 }, (x, i) => i)"), integers));
    ASSERT_EQ(integers.size(), 100000u);
    EXPECT_EQ(integers[99999], 99999);
    EXPECT_EQ(ShowValue(wxArrayInt_to_jsval(Context(), integers), "v.length + ' ' + v.every((x, i) => x === i)"),
              "100000 true");
    wxArrayString texts;
    for (const int value : integers)
        texts.push_back(std::to_string(value));
    EXPECT_EQ(ShowValue(wxArrayString_to_jsval(Context(), texts), "v.length + ' ' + v.every((x, i) => x === '' + i)"),
              "100000 true");
}

TEST_F(ArrayConversionTest, MoreElementsThanThereAreRecentResultsAreMade)
{
    constexpr std::size_t count = 1'200'000;
    wxArrayInt numbers;
    numbers.SetCount(count, 7);
    const jsval array = wxArrayInt_to_jsval(Context(), numbers);
    jsuint length = 0;
    ASSERT_TRUE(JS_GetArrayLength(Context(), JSVAL_TO_OBJECT(array), &length));
    EXPECT_EQ(length, count);
    wxArrayInt back;
    ASSERT_TRUE(jsval_to_wxArrayInt(Context(), array, back));
    EXPECT_EQ(back.size(), count);
}

TEST_F(ArrayConversionTest, LinksAreThoseOfTheObjects)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    wxArraypCJScriptLink out;
    out.push_back(Global());
    EXPECT_TRUE(jsval_to_wxArraypCJScriptLink(Context(), Value("[child, null, this, {}]"), out));
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0], child.GetJSLink());
    EXPECT_EQ(out[1], nullptr);
    EXPECT_EQ(out[2], Global());
    EXPECT_EQ(out[3], nullptr);
}

TEST_F(ArrayConversionTest, IntegersBecomeAnArrayOfDoubleWords)
{
    wxArrayInt array;
    for (const int value : {1, -2, INT_MAX, INT_MIN})
        array.push_back(value);
    const jsval word = wxArrayInt_to_jsval(Context(), array);
    EXPECT_EQ(ShowValue(word, "Array.isArray(v) + ': ' + v.join()"), "true: 1,-2,2147483647,-2147483648");
    EXPECT_EQ(ShowValue(wxArrayInt_to_jsval(Context(), wxArrayInt()), "Array.isArray(v) + ': ' + v.length"), "true: 0");
}

TEST_F(ArrayConversionTest, TextsBecomeAnArrayOfStrings)
{
    wxArrayString array;
    array.push_back("a");
    array.push_back("");
    array.push_back(L"\u0416\U0001F600");
    EXPECT_EQ(ShowValue(wxArrayString_to_jsval(Context(), array),
                        "[Array.isArray(v), v.length, typeof v[1], v.join('|')].join()"),
              L"true,3,string,a||\u0416\U0001F600");
    EXPECT_EQ(ShowValue(wxArrayString_to_jsval(Context(), wxArrayString()), "Array.isArray(v) + ': ' + v.length"),
              "true: 0");
}

TEST_F(ArrayConversionTest, LinksBecomeAnArrayOfTheirObjects)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    wxArraypCJScriptLink array;
    array.push_back(child.GetJSLink());
    array.push_back(nullptr);
    array.push_back(Global());
    EXPECT_EQ(ShowValue(wxArraypCJScriptLink_to_jsval(Context(), array),
                        "[Array.isArray(v), v.length, v[0] === child, v[1] === null, v[2] === this].join()"),
              "true,3,true,true,true");
}

TEST_F(ArrayConversionTest, ConversionsSurviveACollectionAtEveryCall)
{
    const bool before = JS_SetStress(true);
    wxArrayString texts;
    for (int value = 0; value < 20; ++value)
        texts.push_back("text" + std::to_string(value));
    jsval word = wxArrayString_to_jsval(Context(), texts);
    wxArrayString back;
    EXPECT_TRUE(jsval_to_wxArrayString(Context(), word, back));
    JS_SetStress(before);
    EXPECT_EQ(Joined(back), Joined(texts));
}

} // namespace
