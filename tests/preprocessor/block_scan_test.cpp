#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using BlockScanTest = PreprocessTest<>;
using Texts = std::vector<std::string>;

struct Case
{
    const char* text;
    const char* output;
};

TEST_F(BlockScanTest, APlainTextStaysAsItIs)
{
    EXPECT_EQ("a b\tc\nd / * } { ! $ @ \\ e\n", Run("a b\tc\nd / * } { ! $ @ \\ e\n"));
}

TEST_F(BlockScanTest, TextBeyondAsciiIsKept)
{
    EXPECT_EQ(wxString(L"\u00e4 \u65e5\u672c \U0001F600\n").utf8_string(),
              Run(L"\u00e4 \u65e5\u672c \U0001F600 // \u00f6"));
}

TEST_F(BlockScanTest, EveryLineKeepsItsOrigin)
{
    Run("a\n// c\n\nb /* x\ny */ c\n#define A 1\n#A");
    EXPECT_EQ((Texts{"main.txt:1:a", "main.txt:4:b", "main.txt:5:c", "main.txt:7:1"}), Units());
}

TEST_F(BlockScanTest, TrimmingRemovesBlanksAtBothEnds)
{
    EXPECT_EQ("a\tb  c\n", Run(" \t a\tb  c \t "));
}

TEST_F(BlockScanTest, TrimmingDeletesLinesThatBecomeEmpty)
{
    EXPECT_EQ("a\nb\n", Run("a\n \t \n// c\n/* d */\nb"));
    EXPECT_EQ(5u, parser.GetLastBlock(0)->GetCount());
}

TEST_F(BlockScanTest, WithoutTrimmingALineOfACommentStaysAsAnEmptyUnit)
{
    pp.SetTrim(false);
    EXPECT_EQ("\n\na\n", Run("// c\n/* d */\na"));
}

TEST_F(BlockScanTest, WithoutTrimmingBlanksStay)
{
    pp.SetTrim(false);
    EXPECT_EQ("  a \t\n \n", Run("  a \t\n \n"));
}

TEST_F(BlockScanTest, WithTrimmingALineOfACommentDisappears)
{
    EXPECT_EQ("a\n", Run("// c\na"));
}

TEST_F(BlockScanTest, AdjacentStringsAreJoinedTrimmedOrNot)
{
    for (const bool trim : {true, false}) {
        pp.SetTrim(trim);
        EXPECT_EQ("x \"abcd\" y\n", Run("x \"ab\" \t \"cd\" y")) << trim;
        EXPECT_EQ("'ab' 'cd'\n", Run("'ab' 'cd'")) << trim;
    }
}

TEST_F(BlockScanTest, StringsOfTwoLinesAreNotJoined)
{
    EXPECT_EQ("\"a\"\n\"b\"\n", Run("\"a\"\n\"b\""));
}

TEST_F(BlockScanTest, StringsAreJoinedOverTheCommentBetweenThem)
{
    EXPECT_EQ("\"ab\"\n", Run("\"a\" /* c */ \"b\""));
}

TEST_F(BlockScanTest, StringsAreCopiedWithEverythingInThem)
{
    const Case cases[] = {
        {R"("a // b")", "\"a // b\"\n"},
        {R"('/* a')", "'/* a'\n"},
        {R"("*/")", "\"*/\"\n"},
        {R"("#A #{ 1 } ##")", "\"#A #{ 1 } ##\"\n"},
        {R"("it's")", "\"it's\"\n"},
        {R"('say "x"')", "'say \"x\"'\n"},
        {R"("")", "\"\"\n"},
        {R"(" a ")", "\" a \"\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(BlockScanTest, AQuoteBehindAnOddNumberOfBackslashesDoesNotEndAString)
{
    const Case cases[] = {
        {R"("a\"b" // c)", "\"a\\\"b\"\n"},   {R"('a\'b' // c)", "'a\\'b'\n"},
        {R"("a\\" // c)", "\"a\\\\\"\n"},     {R"("a\\\"b" // c)", "\"a\\\\\\\"b\"\n"},
        {R"("\\\\" // c)", "\"\\\\\\\\\"\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(BlockScanTest, AStringThatIsNotClosedOnItsLineIsAnError)
{
    for (const char* const line : {"\"abc", "x 'abc", "\"abc'", "'", "\"a\\\"", "\"a\" \"", "it's"})
        EXPECT_EQ(Failure("String not terminated !", 2), Run(wxString("a\n") + line + "\n\"")) << line;
}

TEST_F(BlockScanTest, AStringThatIsNotClosedIsAnErrorInASkippedSectionToo)
{
    EXPECT_EQ(Failure("String not terminated !", 2), Run("#if 0\nit's\n#endif"));
}

TEST_F(BlockScanTest, ALineCommentDropsTheRestOfTheLine)
{
    const Case cases[] = {
        {"a // b", "a\n"},  {"a // b /* c", "a\n"}, {"a // \"b", "a\n"},    {"a // #B #{", "a\n"},
        {"a /// b", "a\n"}, {"a //* b", "a\n"},     {"a // b */ c", "a\n"}, {"a / / b", "a / / b\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(BlockScanTest, ABlockCommentIsDropped)
{
    const Case cases[] = {
        {"a /* b */ c", "a  c\n"},
        {"a/**/b", "ab\n"},
        {"/* a */ b /* c */ d", "b  d\n"},
        {"a /*/ b */ c", "a  c\n"},
        {"a /* // */ b", "a  b\n"},
        {"a /* \" ' */ b", "a  b\n"},
        {"a /* #B #{ */ b", "a  b\n"},
        {"a /* **/ b", "a  b\n"},
        {"a /* b */* c", "a * c\n"},
        {"a /* b\nc\nd */ e", "a\ne\n"},
        {"a /*\n#error no\n#endif\n*/ b", "a\nb\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(BlockScanTest, BlockCommentsNest)
{
    const Case cases[] = {
        {"a /* b /* c */ d */ e", "a  e\n"}, {"a /* /* /* */ */ b */ c", "a  c\n"},  {"a /* /**/ b */ c", "a  c\n"},
        {"a /* /*/ */ b */ c", "a  c\n"},    {"a /* b\n/* c\n*/ d\n*/ e", "a\ne\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(BlockScanTest, InACommentAnOpeningDirectlyBehindASlashDoesNotNest)
{
    const Case cases[] = {{"/* //* */ b", "b\n"}, {"/* /* *//* */ b", "b\n"}, {"/* a\n//* */ b", "b\n"}};
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(BlockScanTest, AClosingWithoutAnOpeningIsAnError)
{
    for (const char* const line : {"*/", "x */ y", "/* a */ */", "/* /* */ */ */", "'a' */"})
        EXPECT_EQ(Failure("Comment closed but not opened !", 2), Run(wxString("a\n") + line + "\nb")) << line;
}

TEST_F(BlockScanTest, AnOpenCommentIsReportedWhereTheOutermostOneBegan)
{
    const std::string message = "Comment not closed (started in file \"main.txt\" line 2)!";
    EXPECT_EQ(Failure(message, 2), Run("a\nb /* c\nd\n"));
    EXPECT_EQ(Failure(message, 2), Run("a\nb /* c\n/* d\n*/"));
    EXPECT_EQ(Failure(message, 2), Run("a\nb /* c /* d\ne /* f */"));
}

TEST_F(BlockScanTest, AnOpenCommentWhoseLineIsGoneIsReportedWithoutUnit)
{
    EXPECT_EQ(FailureWithoutUnit("Comment not closed (started in file \"main.txt\" line 2)!"), Run("a\n/* c\nd\n"));
}

TEST_F(BlockScanTest, AnOpenCommentAlsoEndsABlockThatHasAnOpenSection)
{
    EXPECT_EQ(Failure("Comment not closed (started in file \"main.txt\" line 2)!", 2), Run("#if 1\nb /* c\n#endif"));
}

TEST_F(BlockScanTest, ACommentDoesNotReachIntoTheNextText)
{
    Run("a /* c");
    EXPECT_EQ("b\n", Run("b"));
}

TEST_F(BlockScanTest, CommentsAreSeenInSkippedSectionsToo)
{
    EXPECT_EQ("c\n", Run("#if 0\n/*\n#endif\n*/\nb // #endif\n#endif\nc"));
    EXPECT_EQ(Failure("Comment closed but not opened !", 2), Run("#if 0\n*/\n#endif"));
}

TEST_F(BlockScanTest, SkippedTextIsNotCopied)
{
    EXPECT_EQ("z\n", Run("#if 0\na \"b\" 'c' /* d */ e #F #{ 1 ##{ #\n#endif\nz"));
}

TEST_F(BlockScanTest, AfterAnErrorTheUnitsBeforeItHoldTheirOutputTheOthersTheirText)
{
    EXPECT_EQ(Failure("Comment closed but not opened !", 3), Run(" a // b\n// c\n d */\n e // f"));
    EXPECT_EQ("a\n d */\n e // f\n", Text());
}

TEST_F(BlockScanTest, HolesAreSkipped)
{
    CParserBlock block(nullptr);
    for (const char* const line : {"a", "b // c", "d"})
        block.CreateUnit(wxSharedPtr<CParserFile>(), line, 1);
    block.RemoveElement(block.GetUnit(0), nullptr, 1);
    block.RemoveElement(block.GetUnit(2), nullptr, 1);
    EXPECT_EQ("b\n", Process(block));
    EXPECT_EQ(3u, block.GetCount());
}

TEST_F(BlockScanTest, AnEmptyBlockIsFine)
{
    CParserBlock block(nullptr);
    EXPECT_EQ("", Process(block));
}

TEST_F(BlockScanTest, ANulIsACharacterLikeOthers)
{
    EXPECT_EQ(std::string("a\0b\n", 4), Run(wxString(L"a\0b // c", 8)));
}

TEST_F(BlockScanTest, ADeactivatedPreprocessorLeavesBlocksUntouched)
{
    pp.Desactivate();
    EXPECT_EQ("  a // b\n*/ #NOPE \"\n#endif\n", Run("  a // b\n*/ #NOPE \"\n#endif"));
}

TEST_F(BlockScanTest, DeactivationIsForGood)
{
    pp.Desactivate();
    pp.Clean();
    EXPECT_EQ("a // b\n", Run("a // b"));
}

TEST_F(BlockScanTest, ALoneNumberSignTakesTheBlanksAroundItAway)
{
    const Case cases[] = {
        {"a # b", "ab\n"},   {"a  \t #\t  b", "ab\n"},  {"a#b", nullptr},   {"# a", "a\n"},
        {"a #", "a\n"},      {"a ## b", "ab\n"},        {"a #.b", "a.b\n"}, {"a #(b)", "a(b)\n"},
        {"a # # b", "ab\n"}, {"a # \"b\"", "a\"b\"\n"},
    };
    for (const auto& [text, output] : cases)
        if (output)
            EXPECT_EQ(output, Run(text)) << text;
        else
            EXPECT_EQ(Failure("\"b\" is not defined !", 1), Run(text));
}

TEST_F(BlockScanTest, WithoutTrimmingALoneNumberSignTakesLeadingBlanksAwayToo)
{
    pp.SetTrim(false);
    EXPECT_EQ("b \n", Run("  # b "));
}

TEST_F(BlockScanTest, ADirectiveIsRecognisedBehindBlanksAndComments)
{
    for (const char* const lead : {"", " ", "\t \t", "/* c */ ", " /* a */ /* b */\t", "/* c\n*/ "}) {
        EXPECT_EQ("1\n", Run(wxString(lead) + "#define A 1\n#A\n#undef A")) << lead;
        EXPECT_FALSE(pp.HasDefine("A"));
    }
}

TEST_F(BlockScanTest, AWordThatIsNotFirstOnItsLineNamesADefine)
{
    for (const char* const line : {"x #define A 1", "\"\" #define A 1", "#{\"\"} #define A 1", "##define A 1",
                                   "#E #define A 1", "' ' #define", "x#define"}) {
        pp.AddDefine("E", "", wxArrayString());
        EXPECT_EQ(Failure("\"define\" is not defined !", 1), Run(line)) << line;
    }
}

TEST_F(BlockScanTest, ADefineMayBeNamedLikeADirectiveElsewhereOnALine)
{
    EXPECT_EQ("x 1\n", RunWith({"if=1"}, "x #if"));
    EXPECT_EQ("\"1\"\n", Run("##if"));
}

TEST_F(BlockScanTest, InASkippedSectionTextBeforeAWordStillMakesItNoDirective)
{
    EXPECT_EQ("z\n", Run("#if 0\nx #endif\n\"s\" #endif\n#endif\nz"));
}

TEST_F(BlockScanTest, DirectiveWordsAreComparedWhole)
{
    const char* const words[] = {"ifdefx", "If", "IF", "endif_", "if1", "defines", "errors", "endfor", "elsif"};
    for (const char* const word : words)
        EXPECT_EQ(Failure(std::string("\"") + word + "\" is not defined !", 1), Run(wxString("#") + word + " 1"))
            << word;
}

TEST_F(BlockScanTest, AWordIsAsciiLettersDigitsAndUnderscores)
{
    EXPECT_EQ(wxString(L"1\u00e9 1.b 1-1 1$\n").utf8_string(),
              RunWith({"A_9=1"}, L"#A_9\u00e9 #A_9.b #A_9-#A_9 #A_9$"));
}

TEST_F(BlockScanTest, AnUnknownWordIsAnErrorAnywhereOnALine)
{
    EXPECT_EQ(Failure("\"fff\" is not defined !", 2), Run("a\n#fff is a colour"));
    EXPECT_EQ(Failure("\"fff\" is not defined !", 2), Run("a\nb #fff is a colour"));
    EXPECT_EQ(Failure("\"fff\" is not defined !", 2), Run("a\nb ##fff"));
}

TEST_F(BlockScanTest, AnUnknownWordIsNoErrorInASkippedSection)
{
    EXPECT_EQ("", Run("#if 0\nb #fff\n#fff\n#endif"));
}

TEST_F(BlockScanTest, AnUnknownWordIsNoErrorInPartialMode)
{
    EXPECT_EQ("b #fff c\n", RunPartial("b #fff c"));
}

TEST_F(BlockScanTest, TheNextBlockBeginsWithoutSkippingButWithTheSectionsLeftOpenByAnError)
{
    ASSERT_EQ(Failure("Comment closed but not opened !", 2), Run("#if 0\n*/"));
    EXPECT_EQ(FailureWithoutUnit("Missing #endif for #ifdef started file \"main.txt\" line 1!"), Run("a"));
    EXPECT_EQ("a\n", Text());
    EXPECT_EQ("b\n", Run("b"));
}

TEST_F(BlockScanTest, CleanForgetsDefinesAndOpenSections)
{
    ASSERT_EQ(Failure("Comment closed but not opened !", 3), Run("#define A 1\n#if 1\n*/"));
    pp.Clean();
    EXPECT_EQ("a\n", Run("a"));
    EXPECT_FALSE(pp.HasDefine("A"));
}

} // namespace
