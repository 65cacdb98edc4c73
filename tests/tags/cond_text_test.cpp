#include "tests/tags/cond_test_support.h"

namespace
{

using CondTextTest = CondTest;

TEST_F(CondTextTest, TextOutsideOfExpressionsIsKept)
{
    EXPECT_EQ("a [b] % ] c%]", Line("a [b] % ] c%]"));
}

TEST_F(CondTextTest, AnOpeningWithoutClosingIsKept)
{
    EXPECT_EQ("7 [%id and more", Line("[%id%] [%id and more", "<r id='7'/>"));
}

TEST_F(CondTextTest, AnExpressionEndsAtTheFirstClosing)
{
    EXPECT_EQ("7%]", Line("[%id%]%]", "<r id='7'/>"));
}

TEST_F(CondTextTest, AnExpressionMayRunOverLines)
{
    EXPECT_EQ("ra||", Expand("<%keep%>\n[%(GetName() +\n'a')%]\n<%/keep%>\n"));
}

TEST_F(CondTextTest, ValuesAreNotReplacedAgain)
{
    EXPECT_EQ("[%id%]", Line("[%a%]", "<r id='7' a='[%id%]'/>"));
}

TEST_F(CondTextTest, ANameGivesTheAttribute)
{
    EXPECT_EQ("7-x", Line("[%id%]-[%name%]", "<r id='7' name='x'/>"));
}

TEST_F(CondTextTest, ANameWithoutAttributeGivesNothing)
{
    EXPECT_EQ("<>", Line("<[%none%]>"));
    EXPECT_EQ("<>", Line("<[%%]>"));
}

TEST_F(CondTextTest, AttributeNamesAreComparedWithCase)
{
    EXPECT_EQ("none 1", Line("[%A|none%] [%a|none%]", "<r a='1'/>"));
}

TEST_F(CondTextTest, BlanksBelongToNames)
{
    EXPECT_EQ("<>", Line("<[% id %]>", "<r id='7'/>"));
}

TEST_F(CondTextTest, OfSeveralNamesTheFirstThatExistsCounts)
{
    const wxString xml = "<r a='1' b='2'/>";
    EXPECT_EQ("1", Line("[%a|b|none%]", xml));
    EXPECT_EQ("2", Line("[%b|a|none%]", xml));
    EXPECT_EQ("2", Line("[%x|b|none%]", xml));
    EXPECT_EQ("none", Line("[%x|y|none%]", xml));
}

TEST_F(CondTextTest, WhatIsBehindTheLastBarIsTheDefault)
{
    EXPECT_EQ("a", Line("[%x|a%]", "<r a='1'/>"));
    EXPECT_EQ("<>", Line("<[%x|%]>", "<r/>"));
    EXPECT_EQ("d", Line("[%|d%]", "<r/>"));
}

TEST_F(CondTextTest, AnEmptyAttributeExists)
{
    EXPECT_EQ("<>", Line("<[%a|none%]>", "<r a=''/>"));
}

TEST_F(CondTextTest, QuotesPutTheValueInQuotes)
{
    EXPECT_EQ("\"ab\" 'ab'", Line("[%\"id\"%] [%'id'%]", "<r id='ab'/>"));
    EXPECT_EQ("\"d\" '' '2'", Line("[%\"x|d\"%] [%'x'%] [%'(1 + 1)'%]"));
}

TEST_F(CondTextTest, QuotesWithUTurnTheValueToUpperCase)
{
    EXPECT_EQ("\"AB\" 'AB'", Line("[%U\"id\"%] [%U'id'%]", "<r id='ab'/>"));
    EXPECT_EQ("'DEF' '1A'", Line("[%U'x|def'%] [%U'(1 + \"a\")'%]"));
}

TEST_F(CondTextTest, UWithoutQuotesIsAName)
{
    EXPECT_EQ("7 8", Line("[%U%] [%Uid%]", "<r U='7' Uid='8'/>"));
}

TEST_F(CondTextTest, TrailingQuotesAreAllTakenOff)
{
    EXPECT_EQ("\"7\"", Line("[%\"id\"\"\"%]", "<r id='7'/>"));
}

TEST_F(CondTextTest, QuotesMustBeTheSameOnBothSides)
{
    EXPECT_EQ("<>", Line("<[%\"id'%]>", "<r id='7'/>"));
    EXPECT_EQ("<>", Line("<[%\"id%]>", "<r id='7'/>"));
    EXPECT_EQ("<>", Line("<[%id\"%]>", "<r id='7'/>"));
}

TEST_F(CondTextTest, QuotesAroundNothingAreQuotesAroundNothing)
{
    EXPECT_EQ("\"\" \"\" ''", Line("[%\"\"%] [%\"%] [%U''%]"));
}

TEST_F(CondTextTest, QuotesEscapeNothing)
{
    EXPECT_EQ("\"a\"b\"", Line("[%\"id\"%]", "<r id='a\"b'/>"));
}

TEST_F(CondTextTest, ParenthesesEvaluateAScript)
{
    EXPECT_EQ("3 ab true 2.5 null", Line("[%(1 + 2)%] [%('a' + 'b')%] [%(1 < 2)%] [%(5 / 2)%] [%(null)%]"));
}

TEST_F(CondTextTest, AScriptSeesTheNodesMethodsAndThoseOfItsDocument)
{
    EXPECT_EQ("r 8 UP true", Line("[%(GetName())%] [%(+GetProp('id') + 1)%] [%(StrToUpper('up'))%] "
                                  "[%(GetRoot() === this)%]",
                                  "<r id='7'/>"));
}

TEST_F(CondTextTest, AScriptSeesTheGlobalObjectAndTheDocument)
{
    EXPECT_TRUE(script.Evaluate("function twice(n) { return 2 * n; }", nullptr));
    EXPECT_EQ("14 r", Line("[%(Global.twice(7))%] [%(Document.GetRoot().GetName())%]"));
}

TEST_F(CondTextTest, AScriptMayBeStatements)
{
    EXPECT_EQ("3", Line("[%(var a = 1; a + 2)%]"));
}

TEST_F(CondTextTest, ResultsAreTextsAsInJavaScript)
{
    EXPECT_EQ("undefined undefined 1,2 [object Object] 1e+21",
              Line("[%()%] [%(undefined)%] [%([1,2])%] [%(({}))%] [%(1e21)%]"));
}

TEST_F(CondTextTest, AScriptThatFailsIsLoggedAndGivesNothing)
{
    EXPECT_EQ("<> \"\"", Line("<[%(nix)%]> [%\"(1 +)\"%]"));
    EXPECT_EQ("Xml parse : bad script nix; Xml parse : bad script 1 +", Errors());
}

TEST_F(CondTextTest, AScriptWithoutItsClosingParenthesisIsAName)
{
    EXPECT_EQ("none", Line("[%(1 + 1|none%]"));
    EXPECT_EQ("", Errors());
}

TEST_F(CondTextTest, WithoutScriptOnlyWhatNeedsOneFails)
{
    Read("<%keep%>\n[%id%] [%(1 + 1)%] [%(GetName())%] [%(GetIndex())%]\n<%/keep%>\n<%if cond='GetIndex()'/%>\n");
    CXmlDocument plain;
    plain.SetContent("<r id='7'/>");
    wxString out;
    EXPECT_FALSE(parser.Process(plain.GetRawRoot(), out, nullptr));
    EXPECT_EQ("7 2 r \n\n", out);
    EXPECT_EQ(CondFailure("Xml parse : bad condition GetIndex() in \nif="), "false" + LastFailure(parser, 0).substr(1));
    EXPECT_EQ("Xml parse : bad script GetIndex()", Errors());
}

TEST_F(CondTextTest, ACounterThatIsNoNumberIsLoggedAndGivesNothing)
{
    EXPECT_EQ("<>", Line("<[%++x%]>"));
    EXPECT_EQ("Xml parse : bad ++ counter level x", Errors());
}

TEST_F(CondTextTest, ACounterOutsideOfAllRepeatsIsLoggedAndGivesNothing)
{
    EXPECT_EQ("<0> <>||", Expand("<%repeat count='1'%>\n<[%++%]> <[%++1%]>\n<%/repeat%>\n"));
    EXPECT_EQ("Xml parse : bad ++ counter level: request 1 has 0", Errors());
}

TEST_F(CondTextTest, ANegativeCounterIsLoggedAndGivesNothing)
{
    EXPECT_EQ("<>||", Expand("<%repeat count='1'%>\n<[%++-1%]>\n<%/repeat%>\n"));
    EXPECT_EQ("Xml parse : bad ++ counter level: request -1 has 0", Errors());
}

TEST_F(CondTextTest, ACounterPastTheIntegersIsNoNumber)
{
    EXPECT_EQ("", Line("[%++99999999999%]"));
    EXPECT_EQ("Xml parse : bad ++ counter level 99999999999", Errors());
}

TEST_F(CondTextTest, ACounterCanStandInQuotes)
{
    EXPECT_EQ("\"0\"||\"1\"||", Expand("<%repeat count='2'%>\n[%\"++\"%]\n<%/repeat%>\n"));
}

TEST_F(CondTextTest, ALongValueIsWrittenWhole)
{
    document.SetContent("<r/>");
    const wxString value('x', 10'000'000);
    document.GetRawRoot()->AddProp("big", value);
    Read("<%keep%>\n[%big%]|[%('y'.repeat(10000000))%]\n<%/keep%>\n");
    wxString out;
    EXPECT_TRUE(parser.Process(document.GetRawRoot(), out, &script));
    EXPECT_TRUE(out == value + "|" + wxString('y', 10'000'000) + "\n\n");
}

TEST_F(CondTextTest, AMillionChildrenAreNoMatter)
{
    wxString xml = "<r>";
    for (int i = 0; i < 1'000'000; ++i)
        xml += "<i/>";
    Read("<%repeat filter='i'%>\n[%++%]\n<%/repeat%>\n");
    EXPECT_TRUE(document.SetContent(xml + "</r>"));
    parser.SetCompact(true);
    wxString out;
    EXPECT_TRUE(parser.Process(document.GetRawRoot(), out, &script));
    EXPECT_TRUE(out.EndsWith("\n999998\n999999\n"));
    EXPECT_EQ(6'888'890u, out.length());
}

} // namespace
