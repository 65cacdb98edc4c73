#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using LoopTest = PreprocessTest<>;
using PartialLoopTest = PreprocessTest<>;
using Texts = std::vector<std::string>;

struct Case
{
    const char* text;
    const char* output;
};

TEST_F(LoopTest, TheBodyIsRepeatedForEveryValue)
{
    EXPECT_EQ("a\nrow 1\nrow 2\nrow 3\nb\n", Run("a\n#for i 1;3;1\nrow #i\n#endfor\nb"));
    const std::string label = "main.txt (LOOP l.2):1:row ";
    EXPECT_EQ((Texts{"main.txt:1:a", label + "1", label + "2", label + "3", "main.txt:5:b"}), Units());
    EXPECT_FALSE(pp.HasDefine("i"));
}

TEST_F(LoopTest, LinesOfABodyAreCountedFromItsStart)
{
    Run("#for i 1;1;1\n\na\n// c\nb\n#endfor");
    EXPECT_EQ((Texts{"main.txt (LOOP l.1):1:a", "main.txt (LOOP l.1):3:b"}), Units());
}

TEST_F(LoopTest, TheBoundsAreScripts)
{
    const Case cases[] = {
        {"i 1;3;1", "1\n2\n3\n"},        {"i 3;3;1", "3\n"},           {"i 1;6;2", "1\n3\n5\n"},
        {"i -1;1;1", "-1\n0\n1\n"},      {"i -5;-4;1", "-5\n-4\n"},    {"i 1 + 1;2*2;1", "2\n3\n4\n"},
        {"  i   1 ; 2 ; 1  ", "1\n2\n"}, {"i #N;#N+2;#N-1", "3\n5\n"}, {"i 1;'abc'.length;1", "1\n2\n3\n"},
        {"i defined(N)?1:2;1;1", "1\n"}, {"i 1;10;100", "1\n"},
    };
    Define("N=3");
    for (const auto& [arguments, output] : cases)
        EXPECT_EQ(output, Run(wxString("#for ") + arguments + "\n#i\n#endfor")) << arguments;
}

TEST_F(LoopTest, TheNameIsWhatStandsBeforeTheFirstBlank)
{
    EXPECT_EQ("1 x\n2 x\n", Run("#for some_Name9 1;2;1\n#some_Name9 x\n#endfor"));
}

TEST_F(LoopTest, AStartAboveTheEndInsertsNothingAndConsumesTheLoop)
{
    EXPECT_EQ("a\nb\n", Run("a\n#for i 3;1;1\nrow #i #UNKNOWN it's\n#include \"no.txt\"\n#endfor\nb"));
    EXPECT_EQ("a\nb\n", Run("a\n#for i 1;0;0\nx\n#endfor\nb"));
    EXPECT_EQ("a\nb\n", Run("a\n#for i 1;0;-1\nx\n#endfor\nb"));
    EXPECT_FALSE(pp.HasDefine("i"));
}

TEST_F(LoopTest, AnEmptyBodyInsertsNothing)
{
    EXPECT_EQ("a\nb\n", Run("a\n#for i 1;3;1\n#endfor\nb"));
}

TEST_F(LoopTest, LoopsNest)
{
    EXPECT_EQ("1.1\n1.2\n-\n2.1\n2.2\n-\n", Run("#for i 1;2;1\n#for j 1;2;1\n#i.#j\n#endfor\n-\n#endfor"));
    EXPECT_EQ("1\n1\n2\nz\n", Run("#for i 1;2;1\n  \t#for j 1;#i;1 // c\n#j\n #endfor x\n#endfor\nz"));
}

TEST_F(LoopTest, TheLabelOfANestedLoopTellsBothLines)
{
    Run("a\n#for i 1;1;1\nb\n#for j 1;1;1\nc\n#endfor\n#endfor");
    EXPECT_EQ((Texts{"main.txt:1:a", "main.txt (LOOP l.2):1:b", "main.txt (LOOP l.2) (LOOP l.2):1:c"}), Units());
}

TEST_F(LoopTest, OnlyTheWholeWordsCountInABody)
{
    EXPECT_EQ("F x\nF x\nz\n",
              RunWith({"format=F", "endfor_=x", "fo="}, "#for i 1;2;1\n#format #endfor_\n#fo\n#endfor\nz"));
    EXPECT_EQ("x for\nz\n", RunWith({"for=for"}, "#for i 1;1;1\nx #for\n#endfor\nz"));
}

TEST_F(LoopTest, ConditionsAreDecidedAnewForEveryValue)
{
    EXPECT_EQ("odd 1\ntwo\nodd 3\nother\n",
              Run("#for i 1;4;1\n#if #i == 2\ntwo\n#elif #i % 2 == 1\nodd #i\n#else\nother\n#endif\n#endfor"));
}

TEST_F(LoopTest, SectionsGoOnBehindALoop)
{
    EXPECT_EQ("1\n2\na\n", Run("#ifdef X\n#for i 1;2;1\nx\n#endfor\n#else\n#for i 1;2;1\n#i\n#endfor\na\n#endif"));
}

TEST_F(LoopTest, ASkippedLoopDoesNothing)
{
    EXPECT_EQ("", Run("#if 0\n#for i nosuch;#U;\n#for\n#endif"));
}

TEST_F(LoopTest, TheLoopVariableHidesAndEndsADefineOfItsName)
{
    EXPECT_EQ("1\n2\n", RunWith({"i=old"}, "#for i 1;2;1\n#i\n#endfor"));
    EXPECT_FALSE(pp.HasDefine("i"));
}

TEST_F(LoopTest, ADefineOfItsNameEndsAlsoWhereNothingIsRepeated)
{
    for (const char* const loop : {"#for i 1;2;1\n#endfor", "#for i 2;1;1\nrow\n#endfor"}) {
        Define("i=5");
        EXPECT_EQ("", Run(loop));
        EXPECT_FALSE(pp.HasDefine("i")) << loop;
    }
}

TEST_F(LoopTest, TheLoopVariableOriginatesInTheDirective)
{
    EXPECT_EQ(Failure("\"i\" already defined in file \"main.txt\" line 2 (5 was 1) !", 1, "main.txt (LOOP l.2)"),
              Run("a\n#for i 1;3;1\n#define i 5\n#endfor"));
}

TEST_F(LoopTest, DefinesOfTheBodyStay)
{
    EXPECT_EQ("1\n", Run("#for i 1;1;1\n#define X #i\n#endfor\n#X"));
    EXPECT_EQ(
        Failure("\"X\" already defined in file \"main.txt (LOOP l.2)\" line 1 (2 was 1) !", 1, "main.txt (LOOP l.2)"),
        Run("#undef X\n#for i 1;2;1\n#define X #i\n#endfor"));
}

TEST_F(LoopTest, ABodyMayUseInlineScriptStringsAndComments)
{
    EXPECT_EQ("1=1 '#i'\n2=4 '#i'\n", Run("#for i 1;2;1\n#i=#{#i*#i} '#i' // #i /* c\n#endfor"));
}

TEST_F(LoopTest, RepeatedUnitsAreNotScannedAgain)
{
    EXPECT_EQ("it's #X\nit's #X\n", RunWith({"Q=it's #X"}, "#for i 1;2;1\n#Q\n#endfor"));
}

TEST_F(LoopTest, FilesOfABodyKnowTheDirective)
{
    Run("a\n #for i 1;1;1\nb\n#endfor");
    const CParserBlock& block = *parser.GetLastBlock(0);
    const CParserUnit* from = nullptr;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot)
        if (block.GetUnit(slot) && block.GetUnit(slot)->m_text == "b")
            from = block.GetUnit(slot)->m_file->GetIncludedFrom();
    ASSERT_NE(nullptr, from);
    EXPECT_EQ("file \"main.txt\" line 2", from->GetContext());
    EXPECT_EQ(" #for i 1;1;1", from->m_text);
}

TEST_F(LoopTest, ABodyMayInclude)
{
    const TempDirectory place;
    place.Put("dir/i.txt", "included #i");
    CDir dir = place.Dir();
    parser.SetDir(dir);
    EXPECT_EQ("included 1\nincluded 2\n", Run("#for i 1;2;1\n#include \"i.txt\"\n#endfor", "dir/main.txt"));
}

TEST_F(LoopTest, TheRemoveListDoesNotApplyToABody)
{
    static const wchar_t* names[] = {L"X", nullptr};
    parser.SetRemoveDefines(names);
    EXPECT_EQ("1\n", Run("#for i 1;1;1\n#define X 1\n#X\n#endfor"));
}

TEST_F(LoopTest, WithoutTrimmingTheEndStaysAsAnEmptyLine)
{
    pp.SetTrim(false);
    EXPECT_EQ("a\n 1 \n\nb\n", Run("a\n#for i 1;1;1\n #i \n  #endfor\nb"));
}

TEST_F(LoopTest, TheParserListsOnlyTheLoopsBlockAfterwards)
{
    CParserBlock* const before = parser.CreateBlock(false);
    Run("#for i 1;3;1\n#i\n#endfor");
    const std::unique_ptr<CParserBlock> result(parser.GetLastBlock(1));
    EXPECT_NE(before, result.get());
    EXPECT_EQ(before, parser.GetLastBlock(0));
}

TEST_F(LoopTest, BoundsThatCannotBeEvaluatedAreReported)
{
    const Case cases[] = {
        {"i nosuch;2;1", "#if : Can not evaluate start: nosuch"},
        {"i 1;nosuch;1", "for : Can not evaluate end: nosuch"},
        {"i 1;2;nosuch", "for : Can not evaluate step: nosuch"},
        {"i )(;)(;)(", "#if : Can not evaluate start: )("},
        {"i 1; )(;)(", "for : Can not evaluate end:  )("},
        {"i ;2;1", "#if : Can not evaluate start: "},
        {"i 1;;1", "for : Can not evaluate end: "},
        {"i 1;2;", "for : Can not evaluate step: "},
        {"i 1;2", "for : Can not evaluate step: "},
        {"i", "#if : Can not evaluate start: "},
        {"", "#if : Can not evaluate start: "},
    };
    for (const auto& [arguments, message] : cases)
        EXPECT_EQ(Failure(message, 2), Run(wxString("a\n#for ") + arguments + "\nb\n#endfor")) << arguments;
}

TEST_F(LoopTest, BoundsThatAreNoNumbersAreReported)
{
    const Case cases[] = {
        {"i \"1\";2;1", "#if : Can not evaluate start: \"1\""},
        {"i 1;true;1", "for : Can not evaluate end: true"},
        {"i 1;({});1", "for : Can not evaluate end: ({})"},
        {"i 1;null;1", "for : Can not evaluate end: null"},
        {"i 1;undefined;1", "for : Can not evaluate end: undefined"},
        {"i 1;2;String(1)", "for : Can not evaluate step: String(1)"},
    };
    for (const auto& [arguments, message] : cases)
        EXPECT_EQ(Failure(message, 2), Run(wxString("a\n#for ") + arguments + "\nb\n#endfor")) << arguments;
}

TEST_F(LoopTest, FractionsOfBoundsAreCutOff)
{
    EXPECT_EQ(Run("#for i 1;3;1\n#i\n#endfor"), Run("#for i Math.sqrt(2);7/2;Math.sqrt(2)\n#i\n#endfor"));
}

TEST_F(LoopTest, ABoundIsReportedWithItsDefinesReplaced)
{
    EXPECT_EQ(Failure("for : Can not evaluate end: nosuch + 5", 1),
              RunWith({"A=5"}, "#for i 1;nosuch + #A;1\n#endfor"));
}

TEST_F(LoopTest, AnUnknownDefineInABoundIsReportedAsSuch)
{
    for (const char* const arguments : {"i #U;2;1", "i 1;#U;1", "i 1;2;#U"})
        EXPECT_EQ(Failure("\"U\" is not defined !", 2), Run(wxString("a\n#for ") + arguments + "\n#endfor"))
            << arguments;
}

TEST_F(LoopTest, AStepThatIsNotAbove0IsRefused)
{
    EXPECT_EQ(Failure("for : Step is not above 0: 0", 2), Run("a\n#for i 1;2;0\nx\n#endfor"));
    EXPECT_EQ(Failure("for : Step is not above 0: -1", 2), Run("a\n#for i 1;2;-1\nx\n#endfor"));
    EXPECT_EQ(Failure("for : Step is not above 0: #Z", 2), RunWith({"Z=0"}, "a\n#for i 1;1;#Z\nx\n#endfor"));
    EXPECT_EQ(Failure("for : Step is not above 0: 1-1", 2), Run("a\n#for i 1;2;1-1\nx\n#endfor"));
}

TEST_F(LoopTest, TheArithmeticStopsAtTheLimitsOfInt)
{
    EXPECT_EQ("2147483646\n2147483647\n", Run("#for i 2147483646;2147483647;1\n#i\n#endfor"));
    EXPECT_EQ("1\n", Run("#for i 1;2147483647;2147483647\n#i\n#endfor"));
    EXPECT_EQ("-2147483648\n-1\n2147483646\n", Run("#for i -2147483648;2147483647;2147483647\n#i\n#endfor"));
}

TEST_F(LoopTest, ALoopWithoutItsEndIsReportedAndNothingRemoved)
{
    EXPECT_EQ(Failure("Missing #endfor for #for started file \"main.txt\" line 2!", 2), Run("a\n#for i 1;2;1\nb\n c"));
    EXPECT_EQ((Texts{"main.txt:1:a", "main.txt:2:#for i 1;2;1", "main.txt:3:b", "main.txt:4: c"}), Units());
}

TEST_F(LoopTest, ALoopWithoutItsEndIsReportedWhicheverOfANestIsOpen)
{
    EXPECT_EQ(Failure("Missing #endfor for #for started file \"main.txt\" line 1!", 1),
              Run("#for i 1;2;1\n#for j 1;2;1\n#endfor"));
    EXPECT_EQ(Failure("Missing #endfor for #for started file \"main.txt\" line 1!", 1), Run("#for i 1;2;1"));
}

TEST_F(LoopTest, AnEndWithoutALoopIsNoDirective)
{
    EXPECT_EQ(Failure("\"endfor\" is not defined !", 2), Run("a\n#endfor"));
}

TEST_F(LoopTest, AnErrorInABodyIsPassedUpWithItsPlace)
{
    EXPECT_EQ(Failure("ERROR :  at two", 3, "main.txt (LOOP l.1)"),
              Run("#for i 1;3;1\nok #i\n#if #i == 2\n#error at two\n#endif\n#endfor"));
}

TEST_F(LoopTest, ABodyMustCloseItsSectionsAndCannotTouchTheOnesAround)
{
    EXPECT_EQ(FailureWithoutUnit("Missing #endif for #ifdef started file \"main.txt (LOOP l.1)\" line 2!"),
              Run("#for i 1;2;1\na\n#if 1\n#endfor\n#endif"));
    EXPECT_EQ(Failure("#endif without #ifdef", 1, "main.txt (LOOP l.2)"), Run("#if 1\n#for i 1;2;1\n#endif\n#endfor"));
    pp.Clean();
    EXPECT_EQ(Failure("#else without #ifdef", 1, "main.txt (LOOP l.2)"), Run("#if 1\n#for i 1;2;1\n#else\n#endfor"));
}

TEST_F(LoopTest, TheSectionsAroundCanBeClosedAfterAFailure)
{
    for (const char* const loop :
         {"#for i 1;2;1\n*/\n#endfor", "#for i nosuch;2;1\n#endfor", "#for i 1;2;0\n#endfor", "#for i 1;2;1"}) {
        EXPECT_NE("", Run(wxString("#if 1\n") + loop));
        EXPECT_EQ("a\n", Run("#endif\na")) << loop;
    }
}

TEST_F(LoopTest, BoundsHaveAContextOfTheirOwn)
{
    EXPECT_EQ("7\n8\n1\n2\n", Run("#if c = 7\n#endif\n#{ s = 8; c2 = 7 }\n#{ s }\n"
                                  "#for i 1;typeof c + typeof s == 'undefinedundefined' ? 2 : 1;1\n#i\n#endfor"));
}

TEST_F(PartialLoopTest, ALoopWithKnownBoundsIsUnrolled)
{
    EXPECT_EQ("1 #U\n2 #U\n", RunPartial("#for i 1;2;1\n#i #U\n#endfor"));
}

TEST_F(PartialLoopTest, ALoopWithAnUnknownBoundIsKept)
{
    for (const char* const arguments : {"i #U;2;1", "i 1;#U;1", "i 1;2;#U", "i 1;defined(U)?3:2;1", " i #U;#V;#K"}) {
        pp.ResetPartial();
        const wxString directive = wxString("#for ") + arguments;
        pp.AddDefine("K", "1", wxArrayString());
        EXPECT_EQ(("a\n" + directive + "\n#i 1\nx\n#endfor\nb\n").utf8_string(),
                  RunPartial("a\n" + directive + "\n#i #K // c\n\nx\n #endfor\nb"));
        EXPECT_TRUE(pp.WasPartial()) << arguments;
        EXPECT_EQ((Texts{"main.txt:1:a", "main.txt:2:" + directive.utf8_string(), "main.txt (LOOP l.2):1:#i 1",
                         "main.txt (LOOP l.2):2:x", "main.txt:6:#endfor", "main.txt:7:b"}),
                  Units());
    }
}

TEST_F(PartialLoopTest, TheVariableOfAKeptLoopIsNotReplaced)
{
    Define("i=old");
    EXPECT_EQ("#for i 1;#U;1\n#i ##i x\n#endfor\n", RunPartial("#for i 1;#U;1\n#i ##i x\n#endfor"));
}

TEST_F(PartialLoopTest, TheVariableOfAKeptLoopDecidesNothing)
{
    Define("i=5");
    const char* const text = "#for i 1;#U;1\n#if #i == 5\na\n#elif #i == 1\nb\n#endif\n#endfor\n";
    EXPECT_EQ(text, RunPartial(text));
}

TEST_F(PartialLoopTest, BehindAKeptLoopItsVariableIsGoneAsBehindOneThatRan)
{
    Define("i=old");
    EXPECT_EQ("#for i 1;#U;1\n#endfor\n#i\n", RunPartial("#for i 1;#U;1\n#endfor\n#i"));
}

TEST_F(PartialLoopTest, KeptLoopsNest)
{
    const char* const text = "#for i 1;#U;1\n#for j #i;#U;1\n#i #j\n#endfor\n#endfor\n";
    EXPECT_EQ(text, RunPartial(text));
}

TEST_F(PartialLoopTest, ALoopOverTheVariableOfAKeptOneIsKept)
{
    const char* const text = "#for i 1;#U;1\n#for j 1;#i;1\n#j\n#endfor\n#endfor\n";
    EXPECT_EQ(text, RunPartial(text));
}

TEST_F(PartialLoopTest, ASecondPassRunsTheKeptLoop)
{
    const std::string kept = RunPartial("#for i 1;#U;1\n#i #K\n#endfor");
    pp.SetPartialMode(false);
    EXPECT_EQ("1 k\n2 k\n", RunWith({"U=2", "K=k"}, kept));
}

TEST_F(PartialLoopTest, BoundsThatFailOtherwiseAreErrorsToo)
{
    EXPECT_EQ(Failure("#if : Can not evaluate start: nosuch", 1), RunPartial("#for i nosuch;2;1\n#endfor"));
    EXPECT_EQ(Failure("for : Step is not above 0: 0", 1), RunPartial("#for i 1;2;0\n#endfor"));
    EXPECT_EQ(Failure("Missing #endfor for #for started file \"main.txt\" line 1!", 1), RunPartial("#for i 1;#U;1\na"));
}

TEST_F(PartialLoopTest, AnUnresolvedSectionAroundALoopDoesNotExcuseAnErrorDirectiveInIt)
{
    EXPECT_EQ(Failure("ERROR :  x", 1, "main.txt (LOOP l.2)"),
              RunPartial("#ifdef U\n#for i 1;1;1\n#error x\n#endfor\n#endif"));
}

TEST_F(PartialLoopTest, AnErrorInAKeptBodyIsPassedUp)
{
    EXPECT_EQ(Failure("String not terminated !", 1, "main.txt (LOOP l.1)"), RunPartial("#for i 1;#U;1\nit's\n#endfor"));
}

TEST_F(LoopTest, ManyLoopsTakeMemoryByWhatTheyHold)
{
    const auto used = [] {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    constexpr int count = 1000;
    wxString text;
    for (int number = 0; number < count; ++number)
        text << "#for i 1;2;1\nrow #i\n#endfor\n";
    const size_t before = used();
    EXPECT_EQ(0, parser.Parse(text, "main.txt", nullptr, false));
    EXPECT_GT(4096u * count, used() - before);
}

} // namespace
