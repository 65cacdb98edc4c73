#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

wxArrayString Array(const std::vector<wxString>& texts)
{
    wxArrayString array;
    for (const wxString& text : texts)
        array.Add(text);
    return array;
}

struct Case
{
    const char* text;
    const char* outcome;
};

class ReplaceDefinesTest : public PreprocessTest<>
{
protected:
    ReplaceDefinesTest()
    {
        pp.SetParser(&parser);
        Define("A=1");
        Define("E=");
        pp.AddDefine("F", "<#a>", Array({"a"}));
        m_block.CreateUnit(wxSharedPtr<CParserFile>(), "the line", 3);
    }

    _BlockPosition Here() { return {&m_block, 0, m_block.GetUnit(0), false}; }

    /// The text with its defines replaced and, when that did not give 0, the result and the error behind it.
    std::string Replace(const wxString& text, const wxArrayString& params = wxArrayString())
    {
        parser.ClearError();
        wxString result;
        const long code = pp.DirectiveReplaceDefines(text, result, Here(), params);
        const std::string failure = LastFailure(parser, code);
        return failure == "0, no unit: " ? result.utf8_string() : failure;
    }

    /// What GetParams reads from a text: "[a][b]rest".
    std::string Params(const std::wstring& text, bool replacing)
    {
        parser.ClearError();
        const wchar_t* at = text.c_str();
        const wchar_t* const end = at + text.size();
        wxArrayString params;
        const _BlockPosition here = Here();
        const long code = pp.GetParams("F", at, end, params, &parser, replacing ? &here : nullptr);
        if (code != 0)
            return LastFailure(parser, code);
        wxString read;
        for (const wxString& param : params)
            read += "[" + param + "]";
        return (read + wxString(at, end)).utf8_string();
    }

    CParserBlock m_block{nullptr};
};

TEST_F(ReplaceDefinesTest, DefinesAreReplacedEverywhereInAText)
{
    const Case cases[] = {
        {"", ""},          {"x A y", "x A y"},      {"#A", "1"},        {"x#A#A y", "x11 y"},
        {"##A", "\"1\""},  {"#E|##E", "|\"\""},     {"#F(x)", "<x>"},   {"##F(#A)", "\"<1>\""},
        {"#A.b", "1.b"},   {"#A (1)", "1 (1)"},     {"#A()b", "1b"},    {" \t#A ", " \t1 "},
        {"// #A", "// 1"}, {"/* #A */", "/* 1 */"}, {"#A\n#A", "1\n1"},
    };
    for (const auto& [text, outcome] : cases)
        EXPECT_EQ(outcome, Replace(text)) << text;
}

TEST_F(ReplaceDefinesTest, StringsAreCopiedUnchanged)
{
    for (const std::string text : {"'#A'", "\"#A ##A\"", "\"it's #A\"", "'\\'#A'", "\"\\\\\" '#NOPE'", "'//' \"/*\""})
        EXPECT_EQ(text, Replace(text));
    EXPECT_EQ("'#A'1\"#A\"", Replace("'#A'#A\"#A\""));
}

TEST_F(ReplaceDefinesTest, AStringMustBeTerminated)
{
    for (const char* const text : {"'", "\"a", "#A 'x", "'\\'", "\"a' #A"})
        EXPECT_EQ("-1, file \"\" line 3: String not terminated !", Replace(text)) << text;
}

TEST_F(ReplaceDefinesTest, ANumberSignBeforeABraceABlankOrAParenthesisIsText)
{
    for (const std::string text : {"#{ 1 }", "##{ 1 }", "a # b", "#(1?2:3)", "# (", "#{#{"})
        EXPECT_EQ(text, Replace(text));
    EXPECT_EQ("#{ 1 } #(1", Replace("#{ #A } #(#A"));
}

TEST_F(ReplaceDefinesTest, TheNamesOfParametersAreLeftAlone)
{
    Define("A2=2");
    EXPECT_EQ("#A 2 ##A #ab", Replace("#A #A2 ##A #ab", Array({"A", "ab"})));
}

TEST_F(ReplaceDefinesTest, TheNamesOfParametersAreLeftAloneInArgumentsToo)
{
    EXPECT_EQ("<#p>", Replace("#F(#p)", Array({"p"})));
}

TEST_F(ReplaceDefinesTest, AnUnknownNameGives1AndTheMessage)
{
    EXPECT_EQ("1, file \"\" line 3: \"U\" is not defined !", Replace("x #U y"));
    EXPECT_EQ("1, file \"\" line 3: \"U\" is not defined !", Replace("##U"));
}

TEST_F(ReplaceDefinesTest, PartialModeKeepsAnUnknownNameAndGives1WithoutAMessage)
{
    pp.SetPartialMode(true);
    wxString result;
    EXPECT_EQ(1, pp.DirectiveReplaceDefines("x #U ##U(#A) #A", result, Here(), wxArrayString()));
    EXPECT_EQ("x #U ##U(1) 1", result);
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

TEST_F(ReplaceDefinesTest, TheWrongNumberOfArgumentsFails)
{
    EXPECT_EQ("-1, file \"\" line 3: \"F\" requires 1 parameters, but only 0 given !", Replace("#F"));
    EXPECT_EQ("-1, file \"\" line 3: \"F\" requires 1 parameters, but only 2 given !", Replace("#F(1,2)"));
}

TEST_F(ReplaceDefinesTest, GetParamsReadsAListAndMovesBehindIt)
{
    const struct
    {
        const wchar_t* text;
        const char* outcome;
    } cases[] = {
        {L"", ""},
        {L"x(1)", "x(1)"},
        {L" (1)", " (1)"},
        {L"()", ""},
        {L"() x", " x"},
        {L"(1)", "[1]"},
        {L"( 1 ,\t2 )x", "[1][2]x"},
        {L"(a b,c)(d)", "[a b][c](d)"},
        {L"(f(1,2),3)", "[f(1,2)][3]"},
        {L"('a,)(',\"b\\\",\")", "['a,)('][\"b\\\",\"]"},
        {L"(,)", "[][]"},
    };
    for (const auto& [text, outcome] : cases)
        for (const bool replacing : {false, true})
            EXPECT_EQ(outcome, Params(text, replacing)) << outcome;
}

TEST_F(ReplaceDefinesTest, GetParamsReplacesDefinesOnlyWithAPosition)
{
    EXPECT_EQ("[1][x 1]", Params(L"(#A,x #A)", true));
    EXPECT_EQ("[#A][x #U]", Params(L"(#A,x #U)", false));
}

TEST_F(ReplaceDefinesTest, GetParamsFailsWithTheUnitOfThePosition)
{
    const std::string message = "CPreprocessor::GetParams multiple nested parenthesis not supported";
    EXPECT_EQ("-1, file \"\" line 3: " + message, Params(L"(((1)))", true));
    EXPECT_EQ("-1, no unit: " + message, Params(L"(((1)))", false));
}

TEST_F(ReplaceDefinesTest, ReplaceParamsAppendsTheValue)
{
    _DefineInfo define;
    define.params = Array({"a", "b"});
    define.value = "#a-##b-'#a'-#(#a?x:y)";
    wxString result = "so far ";
    const _BlockPosition here = Here();
    EXPECT_EQ(0, pp.ReplaceParams("F", result, define, Array({"1", "z"}), &parser, &here));
    EXPECT_EQ("so far 1-\"z\"-'#a'-x", result);
}

} // namespace
