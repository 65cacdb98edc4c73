#include "preprocessor/plain_expression_detail.h"

#include "script/script.h"
#include "script/script_minimal.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <wx/log.h>

#include <string>
#include <vector>

namespace
{

/// What the engine says, the judge of every plain answer.
class Engine
{
public:
    Engine() : m_script(nullptr) { m_script.SetGlobal(m_global.GetJSLink(), wxString()); }

    template <typename Result> bool Evaluate(const wxString& text, Result& result)
    {
        const wxLogNull quiet;
        return m_script.Evaluate(text, nullptr, result);
    }

private:
    qxjsMinimal m_global;
    CJScript m_script;
};

Engine& TheEngine()
{
    static thread_local Engine engine;
    return engine;
}

template <typename Result> testing::AssertionResult AgreesWithEngine(const wxString& text, const PlainValue& value)
{
    Result plain{};
    if (!ConvertPlain(value, plain))
        return testing::AssertionSuccess();
    Result judged{};
    if (!TheEngine().Evaluate(text, judged))
        return testing::AssertionFailure() << text.utf8_string() << " is decided, but no script";
    if (plain == judged)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << text.utf8_string() << " gives " << testing::PrintToString(plain) << ", not "
                                       << testing::PrintToString(judged);
}

void ExpectEngineAgrees(const wxString& text)
{
    const std::optional<PlainValue> value = EvaluatePlain(text);
    if (!value)
        return;
    EXPECT_TRUE(AgreesWithEngine<bool>(text, *value));
    EXPECT_TRUE(AgreesWithEngine<int>(text, *value));
    EXPECT_TRUE(AgreesWithEngine<wxString>(text, *value));
}

struct DecidedCase
{
    const wchar_t* text;
    const wchar_t* result;
};

const std::vector<std::string> Tokens{
    "0",     "1",    "2",    "7",   "10", "2.5", "0.1",     "08",  "1.", ".5", "1e3", "1073741824",
    "\"a\"", "'b'",  "\"\"", "'1'", "!",  "-",   "+",       "*",   "/",  "%",  "(",   ")",
    "<",     ">",    "<=",   ">=",  "==", "!=",  "===",     "!==", " ",  "&&", "||",  "true",
    "false", "null", "$",    "&",   "|",  "=",   "?",       ":",   ",",  ";",  "--",  "++",
    "**",    "<<",   "\t",   "//",  "/*", "é",   "\"\\n\"", "x",   ".",  "{",  "}",   "\n"};

/// A well-formed expression of the plain kind, most of the time.
std::string RandomExpression(int depth)
{
    static const std::vector<std::string> operands{"0",          "1",    "2",       "3",     "42",     "2.5",   "0.25",
                                                   "100000",     "true", "false",   "\"\"",  "\"ab\"", "'ab'",  "'b c'",
                                                   "1000000007", "'1'",  "\"2.5\"", "'-3'",  "'0'",    "'010'", "'-'",
                                                   "'.5'",       "'1.'", "' 1'",    "'1e3'", "'-0'"};
    static const std::vector<std::string> operators{"+",  "-",  "*",  "/",   "%",   "<",  "<=", ">",
                                                    ">=", "==", "!=", "===", "!==", "&&", "||"};
    if (depth == 0)
        return *rc::gen::elementOf(operands);
    switch (*rc::gen::inRange(0, 6)) {
    case 0:
        return *rc::gen::elementOf(operands);
    case 1:
        return *rc::gen::elementOf(std::vector<std::string>{"!", "-", "+", "! "}) + RandomExpression(depth - 1);
    case 2:
        return "(" + RandomExpression(depth - 1) + ")";
    default: {
        const std::string blank = *rc::gen::elementOf(std::vector<std::string>{"", " ", "  "});
        return RandomExpression(depth - 1) + blank + *rc::gen::elementOf(operators) + blank +
               RandomExpression(depth - 1);
    }
    }
}

} // namespace

TEST(PlainExpressionTest, LongChainsOfTextsAreDecidedInOneGo)
{
    const size_t count = 200000;
    wxString sum = wxS("\"\"");
    wxString choice = wxS("\"") + wxString(wxS('x'), count) + wxS("\"");
    for (size_t i = 0; i < count; ++i) {
        sum += wxS("+\"xx\"");
        choice += wxS("||1");
    }
    EXPECT_EQ(PlainValue(wxString(wxS('x'), 2 * count)), EvaluatePlain(sum));
    EXPECT_EQ(PlainValue(wxString(wxS('x'), count)), EvaluatePlain(choice));
}

TEST(PlainExpressionTest, NumbersTruthValuesAndStringsAreDecidedWithoutTheEngine)
{
    const DecidedCase cases[] = {
        {L"1", L"1"},
        {L" 2 + 3 * 4 ", L"14"},
        {L"(2 + 3) * 4", L"20"},
        {L"10 - 4 - 3", L"3"},
        {L"7 % 3", L"1"},
        {L"-7 % 3", L"-1"},
        {L"- -5", L"5"},
        {L"2 - -2", L"4"},
        {L"0.5 * 4", L"2"},
        {L"-0", L"0"},
        {L"true", L"true"},
        {L"!true", L"false"},
        {L"true + true", L"2"},
        {L"1 < 2", L"true"},
        {L"1 < 2 < 3", L"true"},
        {L"3 > 2 > 1", L"false"},
        {L"1 == true", L"true"},
        {L"1 === true", L"false"},
        {L"\"1\" !== 1", L"true"},
        {L"\"a\" + 'b'", L"ab"},
        {L"\"a\" < \"b\"", L"true"},
        {L"\"abc\" == 'abc'", L"true"},
        {L"0 || \"\" || 'x'", L"x"},
        {L"1 && 2 && 3", L"3"},
        {L"!\"\" && !0", L"true"},
        {L"1 == 2 || 3 == 3 && 4 >= 4", L"true"},
        {L"\"1\" + 1", L"11"},
        {L"1 + 1 + \"1\"", L"21"},
        {L"\"is \" + true", L"is true"},
        {L"\"1\" == 1", L"true"},
        {L"\"10\" > 9", L"true"},
        {L"\"10\" > \"9\"", L"false"},
        {L"-\"2.5\" * \"2\"", L"-5"},
        {L"+\"\" + 1", L"1"},
        {L"+\"007\"", L"7"},
    };
    for (const DecidedCase& test : cases) {
        const std::optional<PlainValue> value = EvaluatePlain(test.text);
        ASSERT_TRUE(value) << wxString(test.text).utf8_string();
        wxString text;
        EXPECT_TRUE(ConvertPlain(*value, text)) << wxString(test.text).utf8_string();
        EXPECT_EQ(text, wxString(test.result)) << wxString(test.text).utf8_string();
    }
}

TEST(PlainExpressionTest, EverythingElseIsLeftToTheEngine)
{
    for (const wchar_t* text :
         {L"",           L" ",         L"x",         L"1 2",    L"1 +",          L"(1",      L"1)",
          L"--1",        L"1--2",      L"1++2",      L"2 ** 3", L"1 << 2",       L"1 & 2",   L"1 | 2",
          L"1 ^ 2",      L"~1",        L"1 ? 2 : 3", L"1, 2",   L"1;",           L"010",     L"0x10",
          L"1e3",        L".5",        L"1.5.2",     L"1n",     L"1_0",          L"1a",      L"1$",
          L"true1",      L"true$",     L"trueé",     L"null",   L"undefined",    L"NaN",     L"\"a\\n\"",
          L"\"a",        L"'a\"",      L"`a`",       L"1 // c", L"1 /* c */",    L"1 <!--2", L"\"a\" == 1",
          L"\" 1\" * 1", L"\"a\" - 1", L"-\"1e3\"",  L"1 = 1",  L"1 ?? 2",       L"1\n+2",   L"{}",
          L"[]",         L"/a/",       L"typeof 1",  L"true.x", L"\"a\".length", L"1 <= = 2"}) {
        const std::optional<PlainValue> value = EvaluatePlain(text);
        wxString result;
        EXPECT_FALSE(value && ConvertPlain(*value, result)) << wxString(text).utf8_string();
    }
}

TEST(PlainExpressionTest, NumbersThatNeedTheEnginesNotationAreNotWritten)
{
    for (const wchar_t* text : {L"1 / 3", L"1 / 0", L"0 / 0", L"1000000000000000 * 10"}) {
        const std::optional<PlainValue> value = EvaluatePlain(text);
        wxString result = wxS("untouched");
        ASSERT_TRUE(value);
        EXPECT_FALSE(ConvertPlain(*value, result));
        EXPECT_EQ(result, wxS("untouched"));
    }
}

TEST(PlainExpressionTest, OnlyNumbersAreIntegers)
{
    int result = 5;
    EXPECT_FALSE(ConvertPlain(true, result));
    EXPECT_FALSE(ConvertPlain(wxString(wxS("1")), result));
    EXPECT_EQ(result, 5);
    EXPECT_TRUE(ConvertPlain(-2.9, result));
    EXPECT_EQ(result, -2);
}

TEST(PlainExpressionTest, NestingPastTheReadersDepthIsLeftToTheEngine)
{
    const auto nested = [](size_t depth) { return wxString(wxS('('), depth) + wxS("1") + wxString(wxS(')'), depth); };
    EXPECT_TRUE(EvaluatePlain(nested(64)));
    EXPECT_FALSE(EvaluatePlain(nested(65)));
    EXPECT_FALSE(EvaluatePlain(nested(1000000)));
    EXPECT_FALSE(EvaluatePlain(wxString(wxS('!'), 1000000) + wxS("1")));
}

TEST(PlainExpressionTest, ALongChainOfOperatorsIsDecided)
{
    wxString text = wxS("0");
    for (int i = 0; i < 100000; ++i)
        text += wxS("+1");
    const std::optional<PlainValue> value = EvaluatePlain(text);
    int result = 0;
    ASSERT_TRUE(value && ConvertPlain(*value, result));
    EXPECT_EQ(result, 100000);
}

RC_GTEST_PROP(PlainExpressionProperties, AnExpressionGivesWhatTheEngineGives, ())
{
    ExpectEngineAgrees(wxString::FromUTF8(RandomExpression(*rc::gen::inRange(1, 5))));
    RC_ASSERT(!testing::Test::HasFailure());
}

RC_GTEST_PROP(PlainExpressionProperties, AnySequenceOfTokensThatIsDecidedGivesWhatTheEngineGives, ())
{
    const auto tokens = *rc::gen::resize(12, rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(Tokens)));
    std::string text;
    for (const std::string& token : tokens)
        text += token;
    ExpectEngineAgrees(wxString::FromUTF8(text));
    RC_ASSERT(!testing::Test::HasFailure());
}

RC_GTEST_PROP(PlainExpressionProperties, AnExpressionWithOneTokenTooManyGivesWhatTheEngineGives, ())
{
    std::string text = RandomExpression(*rc::gen::inRange(1, 4));
    const auto at = *rc::gen::inRange<size_t>(0, text.size() + 1);
    text.insert(at, *rc::gen::elementOf(Tokens));
    ExpectEngineAgrees(wxString::FromUTF8(text));
    RC_ASSERT(!testing::Test::HasFailure());
}
