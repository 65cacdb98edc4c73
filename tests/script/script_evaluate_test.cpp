#include "tests/script/script_fixture.h"

#include <climits>
#include <string>

using namespace std::string_literals;

namespace
{

using ScriptEvaluateTest = ScriptTest;

// To a truth value.

struct TruthRow
{
    const char* name;
    const char* text;
    bool truth;
};

class ScriptEvaluateTruthTest : public ScriptTest, public ::testing::WithParamInterface<TruthRow>
{};

TEST_P(ScriptEvaluateTruthTest, OfTheResultIsTheOutput)
{
    bool out = !GetParam().truth;
    EXPECT_TRUE(script.Evaluate(GetParam().text, nullptr, out));
    EXPECT_EQ(out, GetParam().truth);
}

INSTANTIATE_TEST_SUITE_P(Row, ScriptEvaluateTruthTest,
                         ::testing::Values(TruthRow{"True", "true", true}, TruthRow{"False", "false", false},
                                           TruthRow{"Zero", "0", false}, TruthRow{"MinusZero", "-0.0", false},
                                           TruthRow{"One", "1", true}, TruthRow{"Fraction", "0.1", true},
                                           TruthRow{"NotANumber", "NaN", false}, TruthRow{"EmptyText", "''", false},
                                           TruthRow{"Text", "'no'", true}, TruthRow{"TextZero", "'0'", true},
                                           TruthRow{"Null", "null", false}, TruthRow{"Undefined", "undefined", false},
                                           TruthRow{"Object", "({})", true}, TruthRow{"Array", "[]", true},
                                           TruthRow{"NoValue", "var x", false}, TruthRow{"EmptyScript", "", false}),
                         NameOfRow<TruthRow>);

TEST_F(ScriptEvaluateTest, TheTruthOfAFailingScriptIsFalse)
{
    bool out = true;
    EXPECT_FALSE(script.Evaluate("missing", nullptr, out));
    EXPECT_FALSE(out);
}

// To an integer.

struct IntegerRow
{
    const char* name;
    const char* text;
    int value;
};

class ScriptEvaluateIntegerTest : public ScriptTest, public ::testing::WithParamInterface<IntegerRow>
{};

TEST_P(ScriptEvaluateIntegerTest, OfTheResultIsTheOutput)
{
    int out = 4711;
    EXPECT_TRUE(script.Evaluate(GetParam().text, nullptr, out));
    EXPECT_EQ(out, GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Number, ScriptEvaluateIntegerTest,
                         ::testing::Values(IntegerRow{"Sum", "1+1", 2}, IntegerRow{"Zero", "0", 0},
                                           IntegerRow{"Negative", "-7", -7},
                                           IntegerRow{"LargestWord", "1073741823", 1073741823},
                                           IntegerRow{"SmallestWord", "-1073741823", -1073741823},
                                           IntegerRow{"PastTheLargestWord", "1073741824", 1073741824},
                                           IntegerRow{"PastTheSmallestWord", "-1073741824", -1073741824},
                                           IntegerRow{"LargestInt", "2147483647", INT_MAX},
                                           IntegerRow{"SmallestInt", "-2147483648", INT_MIN},
                                           IntegerRow{"PastTheLargestInt", "2147483648", INT_MAX},
                                           IntegerRow{"PastTheSmallestInt", "-1e12", INT_MIN},
                                           IntegerRow{"Infinity", "1/0", INT_MAX}, IntegerRow{"NotANumber", "NaN", 0},
                                           IntegerRow{"Fraction", "2.9", 2}, IntegerRow{"NegativeFraction", "-2.9", -2},
                                           IntegerRow{"WholeQuotient", "9/3", 3},
                                           IntegerRow{"WholeProductOfFractions", "1.5*2", 3}),
                         NameOfRow<IntegerRow>);

// What is no number gives the payload behind its tag bit: a truth value has its bit three places up, undefined is the
// smallest integer word of all.
INSTANTIATE_TEST_SUITE_P(Word, ScriptEvaluateIntegerTest,
                         ::testing::Values(IntegerRow{"True", "true", 7}, IntegerRow{"False", "false", 3},
                                           IntegerRow{"Null", "null", 0},
                                           IntegerRow{"Undefined", "undefined", -(1 << 30)},
                                           IntegerRow{"NoValue", "var x", -(1 << 30)},
                                           IntegerRow{"EmptyScript", "", -(1 << 30)}),
                         NameOfRow<IntegerRow>);

TEST_F(ScriptEvaluateTest, TheIntegerOfOnePlusOneIsTwo)
{
    int out = 0;
    EXPECT_TRUE(script.Evaluate("1+1", nullptr, out));
    EXPECT_EQ(out, 2);
}

TEST_F(ScriptEvaluateTest, TheIntegerOfAFailingScriptIsMinusOne)
{
    int out = 4711;
    EXPECT_FALSE(script.Evaluate("missing", nullptr, out));
    EXPECT_EQ(out, -1);
}

TEST_F(ScriptEvaluateTest, TheIntegerOfATextIsNotItsNumber)
{
    int out = 12;
    EXPECT_TRUE(script.Evaluate("'12'", nullptr, out));
    EXPECT_NE(out, 12);
}

// To a text.

struct TextRow
{
    const char* name;
    std::wstring source;
    std::wstring value;
};

class ScriptEvaluateTextTest : public ScriptTest, public ::testing::WithParamInterface<TextRow>
{};

TEST_P(ScriptEvaluateTextTest, OfTheResultIsTheOutput)
{
    wxString out("before");
    EXPECT_TRUE(script.Evaluate(wxString(GetParam().source), nullptr, out));
    EXPECT_EQ(out, wxString(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Of, ScriptEvaluateTextTest,
    ::testing::Values(TextRow{"Text", L"'ab' + 'c'", L"abc"}, TextRow{"EmptyText", L"''", L""},
                      TextRow{"Integer", L"12", L"12"}, TextRow{"Fraction", L"0.5", L"0.5"},
                      TextRow{"Truth", L"1 < 2", L"true"}, TextRow{"Null", L"null", L"null"},
                      TextRow{"Undefined", L"undefined", L"undefined"}, TextRow{"EmptyScript", L"", L"undefined"},
                      TextRow{"Array", L"[1, 2, [3]]", L"1,2,3"}, TextRow{"Object", L"({})", L"[object Object]"},
                      TextRow{"ObjectWithAText", L"({ toString: () => 'own' })", L"own"},
                      TextRow{"Latin1", L"'na\u00efve'", L"na\u00efve"},
                      TextRow{"BasicPlane", L"'\u0416\u4e2d\uffff'", L"\u0416\u4e2d\uffff"},
                      TextRow{"AstralCharacter", L"'x\U0001F600y'", L"x\U0001F600y"},
                      TextRow{"EscapedPair", L"'\\uD83D\\uDE00'", L"\U0001F600"},
                      TextRow{"EscapedLoneHigh", L"'a\\uD83Db'", L"a"s + wchar_t(0xD83D) + L"b"},
                      TextRow{"EscapedLoneLow", L"'\\uDE00'", std::wstring(1, wchar_t(0xDE00))},
                      TextRow{"LoneHighInTheSource", L"'"s + wchar_t(0xD83D) + L"'", std::wstring(1, wchar_t(0xD83D))},
                      TextRow{"EscapedNul", L"'a\\0b'", L"a\0b"s}, TextRow{"NulInTheSource", L"'a\0b'"s, L"a\0b"s},
                      TextRow{"LengthOfAnAstralCharacter", L"'\U0001F600'.length", L"2"},
                      TextRow{"LongText", L"'ab'.repeat(2)", L"abab"}),
    NameOfRow<TextRow>);

TEST_F(ScriptEvaluateTest, TheTextOfAFailingScriptIsEmpty)
{
    wxString out("before");
    EXPECT_FALSE(script.Evaluate("missing", nullptr, out));
    EXPECT_EQ(out, "");
}

TEST_F(ScriptEvaluateTest, TheTextOfAnObjectThatRefusesToBecomeOneIsAFailure)
{
    wxString out("before");
    EXPECT_FALSE(script.Evaluate("({ toString: function() { throw new Error('no'); } })", nullptr, out));
    EXPECT_EQ(out, "");
    EXPECT_EQ(Reports(), Texts{"CJScript ({ toString: function() { throw new Error('no'); } })\n==> Error: no\n"});
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ScriptEvaluateTest, AMegabyteOfTextComesBackWhole)
{
    wxString out;
    EXPECT_TRUE(script.Evaluate(L"'\u0416'.repeat(1 << 20)", nullptr, out));
    EXPECT_EQ(out, wxString(wchar_t(0x416), 1 << 20));
}

// To a link.

TEST_F(ScriptEvaluateTest, TheLinkOfANativeObjectIsItsOwn)
{
    CJScriptLink* out = nullptr;
    EXPECT_TRUE(script.Evaluate("this", nullptr, out));
    EXPECT_EQ(out, Global());
}

TEST_F(ScriptEvaluateTest, TheLinkOfNullIsNull)
{
    CJScriptLink* out = Global();
    EXPECT_TRUE(script.Evaluate("null", nullptr, out));
    EXPECT_EQ(out, nullptr);
}

TEST_F(ScriptEvaluateTest, TheLinkOfAnObjectWithoutOneIsNull)
{
    for (const char* text : {"({})", "[]", "(function() {})", "/x/", "new Date()", "new Proxy({}, {})"}) {
        CJScriptLink* out = Global();
        EXPECT_TRUE(script.Evaluate(text, nullptr, out)) << text;
        EXPECT_EQ(out, nullptr) << text;
    }
}

TEST_F(ScriptEvaluateTest, TheLinkOfAnAssignedNumberIsRefusedUnreportedAndUntouched)
{
    CJScriptLink* out = Global();
    EXPECT_FALSE(script.Evaluate("x = 5", nullptr, out));
    EXPECT_EQ(out, Global());
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(Show("x"), "5");
}

TEST_F(ScriptEvaluateTest, TheLinkOfAnythingButAnObjectIsRefusedUnreportedAndUntouched)
{
    for (const char* text : {"1", "0.5", "'text'", "true", "false", "undefined", ""}) {
        CJScriptLink* out = Global();
        EXPECT_FALSE(script.Evaluate(text, nullptr, out)) << text;
        EXPECT_EQ(out, Global()) << text;
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptEvaluateTest, TheLinkOfAFailingScriptIsNull)
{
    CJScriptLink* out = Global();
    EXPECT_FALSE(script.Evaluate("missing", nullptr, out));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(Reports().size(), 1u);
}

// What every evaluation does.

TEST_F(ScriptEvaluateTest, ATextThatRunsIsTrueAndLogsNothing)
{
    EXPECT_TRUE(script.Evaluate("var x = 1;", nullptr));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptEvaluateTest, AFailureIsLoggedOnceAndRecorded)
{
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(Reports(), Texts{"CJScript missing\n==> ReferenceError: missing is not defined\n"});
    EXPECT_EQ(log.Records().size(), 1u);
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "ReferenceError: missing is not defined");
    EXPECT_EQ(script.GetError(0)->line, 0);
    EXPECT_EQ(script.GetError(0)->column, 0);
    EXPECT_EQ(script.GetError(0)->type, 2);
}

TEST_F(ScriptEvaluateTest, EveryOverloadLogsAFailureOnce)
{
    bool truth = true;
    int integer = 0;
    wxString text;
    CJScriptLink* link = nullptr;
    EXPECT_FALSE(script.Evaluate("missing", nullptr, truth));
    EXPECT_FALSE(script.Evaluate("missing", nullptr, integer));
    EXPECT_FALSE(script.Evaluate("missing", nullptr, text));
    EXPECT_FALSE(script.Evaluate("missing", nullptr, link));
    EXPECT_EQ(Reports(), Texts(4, "CJScript missing\n==> ReferenceError: missing is not defined\n"));
}

TEST_F(ScriptEvaluateTest, TheNextEvaluationForgetsTheErrorsOfTheLast)
{
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 1);
    EXPECT_FALSE(script.Evaluate("absent", nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "ReferenceError: absent is not defined");
    EXPECT_TRUE(script.Evaluate("1", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptEvaluateTest, TheFirstLineIsLineZeroOfTheFileLocal)
{
    EXPECT_EQ(Show("new Error().lineNumber"), "0");
    EXPECT_EQ(Show("\n\nnew Error().lineNumber"), "2");
    EXPECT_EQ(Show("new Error().fileName"), "local");
}

TEST_F(ScriptEvaluateTest, VariablesStayFromOneTextToTheNext)
{
    EXPECT_TRUE(script.Evaluate("var x = 20; function twice(n) { return 2 * n; }", nullptr));
    int out = 0;
    EXPECT_TRUE(script.Evaluate("twice(x) + 2", nullptr, out));
    EXPECT_EQ(out, 42);
}

TEST_F(ScriptEvaluateTest, OnALinkTheTextSeesItsObjectFirst)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    ASSERT_TRUE(script.Evaluate("var where = 'global', above = 'seen'", nullptr));
    ASSERT_TRUE(script.Evaluate("var where = 'child'", child.GetJSLink()));

    wxString out;
    EXPECT_TRUE(script.Evaluate("where + ', ' + above", child.GetJSLink(), out));
    EXPECT_EQ(out, "child, seen");
    EXPECT_EQ(Show("where + ', ' + child.where"), "global, child");
    CJScriptLink* self = nullptr;
    EXPECT_TRUE(script.Evaluate("this", child.GetJSLink(), self));
    EXPECT_EQ(self, child.GetJSLink());
}

TEST_F(ScriptEvaluateTest, OnALinkWithoutObjectTheTextRunsOnTheGlobal)
{
    qxjsMinimal unborn;
    CJScriptLink* self = nullptr;
    EXPECT_TRUE(script.Evaluate("this", unborn.GetJSLink(), self));
    EXPECT_EQ(self, Global());
}

TEST_F(ScriptEvaluateTest, TheSameTextGivesANewResultEachTime)
{
    for (int count = 1; count <= 20; ++count) {
        int out = 0;
        ASSERT_TRUE(script.Evaluate("this.n = (this.n || 0) + 1", nullptr, out));
        ASSERT_EQ(out, count);
    }
}

TEST_F(ScriptEvaluateTest, TheSameFailingTextReportsTheSameEachTime)
{
    for (int count = 0; count < 5; ++count)
        EXPECT_FALSE(script.Evaluate("\n missing;", nullptr));
    EXPECT_EQ(Reports(), Texts(5, "CJScript  missing;\n==> ReferenceError: missing is not defined\n"));
    EXPECT_EQ(script.GetError(0)->line, 1);
}

TEST(ScriptWithoutGlobalTest, EvaluationFails)
{
    const LogCapture log;
    CJScript script(nullptr);
    bool truth = true;
    int integer = 0;
    wxString text("before");
    CJScriptLink* link = nullptr;
    EXPECT_FALSE(script.Evaluate("1", nullptr));
    EXPECT_FALSE(script.Evaluate("1", nullptr, truth));
    EXPECT_FALSE(script.Evaluate("1", nullptr, integer));
    EXPECT_FALSE(script.Evaluate("1", nullptr, text));
    EXPECT_FALSE(script.Evaluate("null", nullptr, link));
    EXPECT_FALSE(truth);
    EXPECT_EQ(integer, -1);
    EXPECT_EQ(text, "");
}

} // namespace
