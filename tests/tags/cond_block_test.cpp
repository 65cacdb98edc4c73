#include "tests/tags/cond_test_support.h"

namespace
{

using CondBlockTest = CondTest;

TEST_F(CondBlockTest, TextOutsideOfTagsIsWrittenOnce)
{
    EXPECT_EQ("a|b||", Expand("a\nb\n"));
}

TEST_F(CondBlockTest, AnEmptyTemplateWritesNothing)
{
    EXPECT_EQ("", Expand(""));
}

TEST_F(CondBlockTest, KeepWritesItsContentOnce)
{
    EXPECT_EQ("a||", Expand("<%keep%>\na\n<%/keep%>\n"));
}

TEST_F(CondBlockTest, TypesAreComparedWithoutCase)
{
    EXPECT_EQ("a||0||1||b||", Expand("<%KEEP%>\na\n<%/KEEP%>\n<%Repeat count='2'%>\n[%++%]\n<%/Repeat%>\n"
                                     "<%IF cond='true'%>\nb\n<%/IF%>\n<%ElseIf cond='true'%>\nc\n<%/ElseIf%>\n"
                                     "<%ELSE%>\nd\n<%/ELSE%>\n"));
}

TEST_F(CondBlockTest, EachOwnTextIsFollowedByALineFeed)
{
    EXPECT_EQ("a||b||", Expand("<%keep%>\na\n<%/keep%>\n<%keep%>\nb\n<%/keep%>\n"));
}

TEST_F(CondBlockTest, CompactLeavesThatLineFeedOut)
{
    parser.SetCompact(true);
    EXPECT_EQ("a|b|", Expand("<%keep%>\na\n<%/keep%>\n<%keep%>\nb\n<%/keep%>\n"));
}

TEST_F(CondBlockTest, ABlockWithoutTextWritesNoLineFeed)
{
    EXPECT_EQ("", Expand("<%keep%>\n<%/keep%>\n<%keep/%>\n"));
}

TEST_F(CondBlockTest, TextThatBecomesEmptyIsStillAText)
{
    EXPECT_EQ("||", Expand("<%keep%>\n[%none%]\n<%/keep%>\n"));
}

TEST_F(CondBlockTest, ABlocksOwnTextComesBeforeItsNestedBlocks)
{
    EXPECT_EQ("a|c||b||d||", Expand("<%keep%>\na\n<%keep%>\nb\n<%/keep%>\nc\n<%keep%>\nd\n<%/keep%>\n<%/keep%>\n"));
}

TEST_F(CondBlockTest, TextWithNestedBlocksIsNotedVerbosely)
{
    const bool before = wxLog::GetVerbose();
    wxLog::SetVerbose(true);
    Expand("<%keep name='x'%>\na\n<%keep%>\nb\n<%/keep%>\n<%/keep%>\n");
    wxLog::SetVerbose(before);
    EXPECT_EQ(std::vector<wxString>{"Caution : both content & object in \nkeep=x\n\tkeep="}, log.Texts(wxLOG_Info));
}

TEST_F(CondBlockTest, UnknownTypesAreLoggedAndLeftOut)
{
    EXPECT_EQ("a||", Expand("<%nix name='n'%>\nx\n<%keep%>\ny\n<%/keep%>\n<%/nix%>\n<%keep%>\na\n<%/keep%>\n"));
    EXPECT_EQ("Xml parse : unknown tag (nix) in \nnix=n\n\tkeep=", Errors());
}

TEST_F(CondBlockTest, UnknownTypesLeaveTheChainAlone)
{
    EXPECT_EQ("b||", Expand("<%if cond='false'%>\na\n<%/if%>\n<%nix/%>\n<%else%>\nb\n<%/else%>\n"));
}

TEST_F(CondBlockTest, SingleTagsInADoubleTagAreContent)
{
    EXPECT_EQ("<%if%>|7||", Expand("<%<%keep%>%>\n<%if%>\n[%id%]\n<%<%/keep%>%>\n", "<r id='7'/>"));
}

TEST_F(CondBlockTest, EveryBlockOfTheParserIsExpanded)
{
    Read("<%keep%>\na\n<%/keep%>\n");
    parser.Parse("<%keep%>\nb\n<%/keep%>\n", "more.tpl", nullptr, false);
    ASSERT_EQ(0, parser.ParseBlock(parser.GetLastBlock(0)));
    EXPECT_TRUE(document.SetContent("<r/>"));
    EXPECT_EQ("a||b||", Process());
}

TEST_F(CondBlockTest, OtherTagsCanBeChosen)
{
    CCondTagParser other(&pp, L"{{", L"}}");
    other.Parse("{{keep}}\n<%if%>[%id%]\n{{/keep}}\n", "main.tpl", nullptr, false);
    ASSERT_EQ(0, other.ParseBlock(other.GetLastBlock(0)));
    document.SetContent("<r id='7'/>");
    wxString out;
    EXPECT_TRUE(other.Process(document.GetRawRoot(), out, nullptr));
    EXPECT_EQ("<%if%>7\n\n", out);
}

TEST_F(CondBlockTest, TheDefaultTagsAreThoseOfTemplates)
{
    const CCondTagParser plain;
    EXPECT_EQ("<%", plain.GetBeginTag());
    EXPECT_EQ("%>", plain.GetEndTag());
    EXPECT_EQ("<%<%", plain.GetDoubleBeginTag());
    EXPECT_EQ("%>%>", plain.GetDoubleEndTag());
}

TEST_F(CondBlockTest, ProcessEmptiesTheOutputFirst)
{
    Read("<%keep%>\na\n<%/keep%>\n");
    wxString out = "old";
    EXPECT_TRUE(parser.Process(document.GetEmptyNode(), out, &script));
    EXPECT_EQ("a\n\n", out);
}

TEST_F(CondBlockTest, ANullNodeIsAnEmptyOne)
{
    Read(
        "<%keep%>\n[%id|none%] [%(1 + x)%]\n<%/keep%>\n<%repeat%>\nb\n<%/repeat%>\n<%keep node='/a'%>\nc\n<%/keep%>\n");
    EXPECT_TRUE(script.Evaluate("var x = 2", nullptr));
    wxString out;
    EXPECT_TRUE(parser.Process(nullptr, out, &script));
    EXPECT_EQ("none 3\n\n", out);
}

TEST_F(CondBlockTest, RepeatCountRepeatsItsContent)
{
    EXPECT_EQ("0||1||2||", Expand("<%repeat count='3'%>\n[%++%]\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatCountIsSubstitutedAndEvaluated)
{
    EXPECT_EQ("x||x||x||x||", Expand("<%repeat count='[%n%] * 2'%>\nx\n<%/repeat%>\n", "<r n='2'/>"));
}

TEST_F(CondBlockTest, RepeatCountStaysAtItsNode)
{
    EXPECT_EQ("7||7||", Expand("<%repeat count='2'%>\n[%id%]\n<%/repeat%>\n", "<r id='7'><a id='1'/></r>"));
}

TEST_F(CondBlockTest, RepeatCountMayBeTextThatIsANumber)
{
    EXPECT_EQ("0||1||", Expand("<%repeat count=\"'2'\"%>\n[%++%]\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatCountsBelowOneRepeatNothing)
{
    EXPECT_EQ("", Expand("<%repeat count='0'%>\nx\n<%/repeat%>\n<%repeat count='-3'%>\nx\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatCountsThatAreNoWholeNumberAreRefused)
{
    EXPECT_EQ(CondFailure("Xml parse : bad count 5 / 2 (2.5) in \nrepeat=r"),
              Expand("<%repeat name='r' count='5 / 2'%>\nx\n<%/repeat%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : bad count 'x' (x) in \nrepeat="),
              Expand("<%repeat count=\"'x'\"%>\nx\n<%/repeat%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : bad count  (undefined) in \nrepeat="),
              Expand("<%repeat count=''%>\nx\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatCountsPastTheIntegersAreRefused)
{
    EXPECT_EQ("", Expand("<%repeat count='2147483647'%>\n<%/repeat%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : bad count 2147483648 (2147483648) in \nrepeat="),
              Expand("<%repeat count='2147483648'%>\n<%/repeat%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : bad count 1e30 (1e+30) in \nrepeat="),
              Expand("<%repeat count='1e30'%>\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatCountsThatFailAreRefused)
{
    EXPECT_EQ(CondFailure("Xml parse : can not evaluate 1 + in \nrepeat="),
              Expand("<%repeat count='1 +'%>\nx\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatRunsOverTheChildren)
{
    EXPECT_EQ("0 1||1 2||", Expand("<%repeat%>\n[%++%] [%k%]\n<%/repeat%>\n", "<r><a k='1'/><b k='2'/></r>"));
}

TEST_F(CondBlockTest, RepeatCountsTextsAndComments)
{
    EXPECT_EQ("text||comment||a||", Expand("<%repeat%>\n[%(GetName())%]\n<%/repeat%>\n", "<r>text<!--note--><a/></r>"));
}

TEST_F(CondBlockTest, AFilterLowersTheCountAndKeepsTheIndex)
{
    EXPECT_EQ("0 1||1 3||", Expand("<%repeat filter='item'%>\n[%++%] [%k%]\n<%/repeat%>\n",
                                   "<r><item k='1'/><x k='2'/><item k='3'/><x k='4'/></r>"));
}

TEST_F(CondBlockTest, AFilterIsSubstitutedOnceBeforeTheRepetition)
{
    EXPECT_EQ("1||2||", Expand("<%repeat filter='[%f%]'%>\n[%k%]\n<%/repeat%>\n",
                               "<r f='a'><a k='1' f='b'/><b k='x'/><a k='2'/></r>"));
}

TEST_F(CondBlockTest, AFilterIsComparedWithCase)
{
    EXPECT_EQ("", Expand("<%repeat filter='A'%>\nx\n<%/repeat%>\n", "<r><a/></r>"));
}

TEST_F(CondBlockTest, AnEmptyFilterTakesAllChildren)
{
    EXPECT_EQ("x||x||", Expand("<%repeat filter=''%>\nx\n<%/repeat%>\n", "<r><a/><b/></r>"));
}

TEST_F(CondBlockTest, AFilterCountsForChildrenOnly)
{
    EXPECT_EQ("x||x||", Expand("<%repeat count='2' filter='nix'%>\nx\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, RepeatsNestAlongTheTree)
{
    EXPECT_EQ("A||1||2||B||3||",
              Expand("<%repeat filter='g'%>\n[%n%]\n<%repeat filter='i'%>\n[%n%]\n<%/repeat%>\n<%/repeat%>\n",
                     "<r><g n='A'><i n='1'/><i n='2'/></g><h/><g n='B'><i n='3'/></g></r>"));
}

TEST_F(CondBlockTest, ARepeatWithoutChildrenWritesNothing)
{
    EXPECT_EQ("", Expand("<%repeat%>\nx\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, ALongRepetitionOfNothingIsDoneAtOnce)
{
    EXPECT_EQ("", Expand("<%repeat count='2147483647'%>\n<%keep%>\n<%/keep%>\n<%else/%>\n"
                         "<%repeat count='2147483647'%>\n<%/repeat%>\n<%/repeat%>\n"
                         "<%repeat count='2147483647'%>\n<%repeat filter='a'%>\n<%/repeat%>\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, TheHostCanLimitThePassesOfARun)
{
    const wxString text = "<%repeat count='2'%>\n<%repeat name='in' count='2'%>\nx\n<%/repeat%>\n<%/repeat%>\n";
    parser.SetPassLimit(7);
    EXPECT_EQ("x||x||x||x||", Expand(text));
    parser.SetPassLimit(6);
    EXPECT_EQ("x||x||x||x||", Expand(text));
    parser.SetPassLimit(5);
    EXPECT_EQ(CondFailure("Xml parse : more than 5 passes in \nrepeat=in"), Expand(text));
}

TEST_F(CondBlockTest, CountersAreCountedFromTheInnermostRepeatOut)
{
    EXPECT_EQ("000||001||010||011||100||101||110||111||",
              Expand("<%repeat count='2'%>\n<%repeat count='2'%>\n<%repeat count='2'%>\n[%++2%][%++1%][%++%]\n"
                     "<%/repeat%>\n<%/repeat%>\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, OnlyRepeatsHaveCounters)
{
    EXPECT_EQ("0||1||", Expand("<%repeat count='2'%>\n<%if cond='true'%>\n<%keep%>\n[%++0%]\n<%/keep%>\n<%/if%>\n"
                               "<%/repeat%>\n"));
}

TEST_F(CondBlockTest, ACounterEndsWithItsRepeat)
{
    EXPECT_EQ("x||0||", Expand("<%repeat count='1'%>\n<%repeat count='1'%>\nx\n<%/repeat%>\n<%keep%>\n[%++%]\n"
                               "<%/keep%>\n<%/repeat%>\n"));
    EXPECT_EQ("||", Expand("<%repeat count='1'/%>\n<%keep%>\n[%++%]\n<%/keep%>\n"));
    EXPECT_EQ("Xml parse : bad ++ counter level: request 0 has -1", Errors());
}

TEST_F(CondBlockTest, CountersStandInOptions)
{
    EXPECT_EQ("0||2||", Expand("<%repeat count='3'%>\n<%if cond='[%++%] != 1'%>\n[%++%]\n<%/if%>\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, IfWritesItsContentWhenTheConditionIsTrue)
{
    EXPECT_EQ("a||", Expand("<%if cond='1 < 2'%>\na\n<%/if%>\n<%if cond='1 > 2'%>\nb\n<%/if%>\n"));
}

TEST_F(CondBlockTest, AConditionIsTrueAsInJavaScript)
{
    EXPECT_EQ("text||object||", Expand("<%if cond='0'%>\nzero\n<%/if%>\n<%if cond=\"'x'\"%>\ntext\n<%/if%>\n"
                                       "<%if cond=\"''\"%>\nempty\n<%/if%>\n<%if cond='({})'%>\nobject\n<%/if%>\n"
                                       "<%if cond='null'%>\nnull\n<%/if%>\n<%if cond=''%>\nnothing\n<%/if%>\n"));
}

TEST_F(CondBlockTest, AConditionIsSubstituted)
{
    EXPECT_EQ("a||", Expand("<%if cond=\"[%'n'%] == 'x'\"%>\na\n<%/if%>\n", "<r n='x'/>"));
}

TEST_F(CondBlockTest, AConditionSeesTheNodesMethods)
{
    EXPECT_EQ("a||", Expand("<%if cond=\"HasProp('n') && GetName() == 'r'\"%>\na\n<%/if%>\n", "<r n='x'/>"));
}

TEST_F(CondBlockTest, AConditionIsRequired)
{
    EXPECT_EQ(CondFailure("Xml parse : if missing cond[ition] in \nif=a\n\tkeep="),
              Expand("<%if name='a'%>\n<%keep/%>\n<%/if%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : elseif missing cond[ition] in \nelseif="),
              Expand("<%if cond='false'/%>\n<%elseif%>\n<%/elseif%>\n"));
}

TEST_F(CondBlockTest, OptionNamesAreComparedWithCase)
{
    EXPECT_EQ(CondFailure("Xml parse : if missing cond[ition] in \nif="), Expand("<%if Cond='true'/%>\n"));
}

TEST_F(CondBlockTest, AConditionThatFailsIsRefused)
{
    EXPECT_EQ(CondFailure("Xml parse : bad condition nix > 1 in \nif="), Expand("<%if cond='nix > 1'/%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : bad condition 1 + in \nelseif="),
              Expand("<%if cond='false'/%>\n<%elseif cond='1 +'/%>\n"));
}

TEST_F(CondBlockTest, AFailureEndsTheExpansion)
{
    Read("<%keep%>\na\n<%repeat count='2'%>\nb\n<%if/%>\n<%/repeat%>\n<%/keep%>\n<%keep%>\nc\n<%/keep%>\n");
    document.SetContent("<r/>");
    wxString out;
    EXPECT_FALSE(parser.Process(document.GetRawRoot(), out, &script));
    EXPECT_EQ("a\n\nb\n\n", out);
}

TEST_F(CondBlockTest, AFailureOfAnEarlierRunIsForgotten)
{
    Expand("<%if/%>\n");
    EXPECT_EQ("a||", Expand("<%keep%>\na\n<%/keep%>\n"));
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

/// A chain whose branches have these conditions, each writing its number, and an "else".
wxString Chain(const std::vector<wxString>& conditions)
{
    wxString text;
    for (size_t i = 0; i < conditions.size(); ++i) {
        const wxString type = i == 0 ? "if" : "elseif";
        text << "<%" << type << " cond='" << conditions[i] << "'%>\n" << i << "\n<%/" << type << "%>\n";
    }
    return text + "<%else%>\nelse\n<%/else%>\n";
}

TEST_F(CondBlockTest, OfAChainTheFirstTrueBranchIsWritten)
{
    EXPECT_EQ("0||", Expand(Chain({"true", "true", "true"})));
    EXPECT_EQ("1||", Expand(Chain({"false", "true", "true"})));
    EXPECT_EQ("2||", Expand(Chain({"false", "false", "true"})));
    EXPECT_EQ("else||", Expand(Chain({"false", "false", "false"})));
}

TEST_F(CondBlockTest, BehindATakenBranchConditionsAreNotEvaluated)
{
    EXPECT_EQ("0||", Expand(Chain({"true", "nix"})));
}

TEST_F(CondBlockTest, ElseWithoutIfIsLeftOut)
{
    EXPECT_EQ("b||", Expand("<%keep%>\n<%else%>\na\n<%/else%>\n<%/keep%>\n<%keep%>\nb\n<%/keep%>\n"));
}

TEST_F(CondBlockTest, ElseifWithoutIfIsLeftOut)
{
    EXPECT_EQ("", Expand("<%elseif cond='true'%>\na\n<%/elseif%>\n"));
}

TEST_F(CondBlockTest, ElseInvertsTheChain)
{
    EXPECT_EQ("b||d||", Expand("<%if cond='false'/%>\n<%else%>\nb\n<%/else%>\n<%else%>\nc\n<%/else%>\n"
                               "<%else%>\nd\n<%/else%>\n"));
}

TEST_F(CondBlockTest, ARepeatOpensAChainThatWasNotTaken)
{
    EXPECT_EQ("x||e||", Expand("<%repeat count='1'%>\nx\n<%/repeat%>\n<%else%>\ne\n<%/else%>\n"));
    EXPECT_EQ("e||", Expand("<%repeat%>\nx\n<%/repeat%>\n<%else%>\ne\n<%/else%>\n"));
}

TEST_F(CondBlockTest, KeepLeavesTheChainAlone)
{
    EXPECT_EQ("k||b||", Expand("<%if cond='false'/%>\n<%keep%>\nk\n<%/keep%>\n<%else%>\nb\n<%/else%>\n"));
}

TEST_F(CondBlockTest, ABlockThatItsNodeSkipsLeavesTheChainAlone)
{
    EXPECT_EQ("", Expand("<%if cond='true' node='nix'/%>\n<%else%>\na\n<%/else%>\n"));
    EXPECT_EQ("a||", Expand("<%if cond='false'/%>\n<%if cond='true' node='nix'/%>\n<%else%>\na\n<%/else%>\n"));
}

TEST_F(CondBlockTest, AChainIsItsListsOwn)
{
    EXPECT_EQ("in||else||", Expand("<%if cond='false'%>\n<%/if%>\n<%keep%>\n<%if cond='true'%>\nin\n<%/if%>\n"
                                   "<%/keep%>\n<%else%>\nelse\n<%/else%>\n"));
}

TEST_F(CondBlockTest, AChainBeginsAnewInEachPass)
{
    EXPECT_EQ("odd 0||even||odd 2||even||",
              Expand("<%repeat count='4'%>\n<%if cond='[%++%] % 2 == 0'%>\nodd [%++%]\n<%/if%>\n"
                     "<%else%>\neven\n<%/else%>\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, ChainsRunThroughNestedRepeats)
{
    EXPECT_EQ("00 if||01 else||10 elseif||11 else||",
              Expand("<%repeat count='2'%>\n<%repeat count='2'%>\n"
                     "<%if cond='[%++1%] == 0 && [%++%] == 0'%>\n[%++1%][%++%] if\n<%/if%>\n"
                     "<%elseif cond='[%++%] == 0'%>\n[%++1%][%++%] elseif\n<%/elseif%>\n"
                     "<%else%>\n[%++1%][%++%] else\n<%/else%>\n<%/repeat%>\n<%/repeat%>\n"));
}

TEST_F(CondBlockTest, TheCurrentBlockIsTheOneThatFailed)
{
    const auto typeOfCurrent = [this] {
        return parser.GetCurrentBlock() ? parser.GetCurrentBlock()->GetType().utf8_string() : "none";
    };
    EXPECT_EQ("none", typeOfCurrent());
    Expand("<%repeat count='2'%>\n<%keep%>\n<%/keep%>\n<%if cond='nosuch'%>\n<%/if%>\n<%/repeat%>\n");
    EXPECT_EQ("if", typeOfCurrent());
    Expand("<%repeat count='nosuch'%>\n<%keep%>\n<%/keep%>\n<%/repeat%>\n");
    EXPECT_EQ("repeat", typeOfCurrent());
    Expand("<%keep%>\nx\n<%/keep%>\n");
    EXPECT_EQ("none", typeOfCurrent());
}

TEST_F(CondBlockTest, ABlockIsTheCurrentOneAgainBehindItsNestedBlocks)
{
    parser.SetPassLimit(3);
    Expand("<%repeat count='9'%>\n<%keep%>\nx\n<%/keep%>\n<%/repeat%>\n");
    ASSERT_NE(nullptr, parser.GetCurrentBlock());
    EXPECT_EQ("repeat", parser.GetCurrentBlock()->GetType());
}

constexpr const char* Tree = "<r id='0'><a id='1'><b id='2'><c id='3'/></b></a><!--n--><a id='4'><b id='5'/></a></r>";

/// The attribute "id" of the node at a path from the root.
class CondPathTest : public CondTest
{
protected:
    std::string At(const wxString& path, const wxString& xml = Tree)
    {
        const std::string out = Expand("<%keep node=\"" + path + "\"%>\n[%id%]\n<%/keep%>\n", xml);
        return out.empty() ? "skipped" : out.substr(0, out.find('|'));
    }
};

TEST_F(CondPathTest, NodeGoesToTheFirstChildOfAName)
{
    EXPECT_EQ("1", At("a"));
    EXPECT_EQ("3", At("a.b.c"));
    EXPECT_EQ("skipped", At("A"));
}

TEST_F(CondPathTest, NodeGoesToAChildByItsPosition)
{
    EXPECT_EQ("1", At("Item(0)"));
    EXPECT_EQ("4", At("Item(2)"));
    EXPECT_EQ("5", At("Item(2).Item(0)"));
    EXPECT_EQ("", At("Item(1)")); // the comment
    EXPECT_EQ("skipped", At("Item(3)"));
    EXPECT_EQ("skipped", At("Item(-1)"));
    EXPECT_EQ("skipped", At("Item(x)"));
    EXPECT_EQ("skipped", At("Item(0"));
}

TEST_F(CondPathTest, NodeGoesToTheFirstChildWithAnAttribute)
{
    EXPECT_EQ("4", At("a[id=4]"));
    EXPECT_EQ("5", At("a[id=4].b"));
    EXPECT_EQ("skipped", At("a[id=9]"));
    EXPECT_EQ("skipped", At("b[id=4]"));
    EXPECT_EQ("skipped", At("a[id]"));
    EXPECT_EQ("skipped", At("a[id=4"));
    EXPECT_EQ("7", At("a[k=x=y]", "<r><a k='x' id='6'/><a k='x=y' id='7'/></r>"));
    EXPECT_EQ("8", At("a[k=]", "<r><a k='x'/><a k='' id='8'/></r>"));
}

TEST_F(CondPathTest, ASlashClimbsToTheTop)
{
    EXPECT_EQ("4||0||", Expand("<%keep node='a.b.c'%>\n<%keep node='/a[id=4]'%>\n[%id%]\n<%/keep%>\n"
                               "<%keep node='/'%>\n[%id%]\n<%/keep%>\n<%/keep%>\n",
                               Tree));
}

TEST_F(CondPathTest, NoPathGoesNowhere)
{
    EXPECT_EQ("0", At(""));
    EXPECT_EQ("skipped", At("."));
    EXPECT_EQ("skipped", At("a."));
    EXPECT_EQ("skipped", At("a..b"));
}

TEST_F(CondPathTest, NodeIsSubstituted)
{
    EXPECT_EQ("2||", Expand("<%keep node='[%go%].Item([%n%])'%>\n[%id%]\n<%/keep%>\n",
                            "<r go='list' n='1'><list><i id='1'/><i id='2'/></list></r>"));
}

TEST_F(CondPathTest, NodeMovesBeforeTheTypeIsLookedAt)
{
    EXPECT_EQ("x||x||", Expand("<%repeat count='[%n%]' node='list'%>\nx\n<%/repeat%>\n", "<r><list n='2'/></r>"));
    EXPECT_EQ("y||", Expand("<%if cond='[%n%] == 2' node='list'%>\ny\n<%/if%>\n", "<r><list n='2'/></r>"));
}

TEST_F(CondPathTest, NodeHoldsForNestedBlocksOnly)
{
    EXPECT_EQ("2||0||", Expand("<%keep node='a'%>\n<%keep node='b'%>\n[%id%]\n<%/keep%>\n<%/keep%>\n"
                               "<%keep%>\n[%id%]\n<%/keep%>\n",
                               Tree));
}

TEST_F(CondPathTest, ASkippedBlockIsTraced)
{
    wxLog::AddTraceMask("TavoliJscriptTrace");
    EXPECT_EQ("skipped", At("a.nix"));
    wxLog::RemoveTraceMask("TavoliJscriptTrace");
    const std::vector<wxString> traces = log.Texts(wxLOG_Trace);
    ASSERT_EQ(1u, traces.size());
    EXPECT_TRUE(traces[0].EndsWith(" *** Skipping node a.nix")) << traces[0];
}

TEST_F(CondPathTest, InARepeatEachPassGoesItsOwnWay)
{
    EXPECT_EQ("2||5||", Expand("<%repeat%>\n<%keep node='b'%>\n[%id%]\n<%/keep%>\n<%/repeat%>\n", Tree));
}

} // namespace
