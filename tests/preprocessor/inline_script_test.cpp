#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using InlineScriptTest = PreprocessTest<>;

struct Case
{
    const char* text;
    const char* output;
};

TEST_F(InlineScriptTest, TheResultReplacesTheConstruct)
{
    const Case cases[] = {
        {"a#{1+1}b", "a2b\n"},
        {"#{ 10/4 } is first", "2.5 is first\n"},
        {"x #{ \"s\".toUpperCase() } #{ [1,2].join('-') } y", "x S 1-2 y\n"},
        {"v#{true}", "vtrue\n"},
        {"#{1} }", "1 }\n"},
        {"#{\"\"}", ""},
        {"#{1}#{2}", "12\n"},
        {"'#{1}' #{1}", "'#{1}' 1\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(InlineScriptTest, TheDoubleFormQuotesTheResultAndTakesTheBlanksBeforeItAway)
{
    const Case cases[] = {
        {"a \t ##{1+1} b", "a\"2\" b\n"},
        {"##{ 'x' }", "\"x\"\n"},
        {"a##{''}", "a\"\"\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(InlineScriptTest, CommentsAndNumberSignsInAScriptBelongToIt)
{
    EXPECT_EQ("3 x\n", Run("#{ 3 /* c */ } x"));
    EXPECT_EQ("a//b\n", Run("#{ 'a//b' }"));
    EXPECT_EQ("#A\n", RunWith({"A=1"}, "#{ \"#A\" }"));
}

TEST_F(InlineScriptTest, AnOpeningBraceBeforeTheClosingOneIsAnError)
{
    for (const char* const line : {"#{ (function(){ return 1 })() }", "x #{ {} }", "##{ { }", "#{ '{' }"})
        EXPECT_EQ(Failure("#{ can not be nested !", 2), Run(wxString("a\n") + line)) << line;
}

TEST_F(InlineScriptTest, AnOpeningBraceBehindTheClosingOneIsText)
{
    EXPECT_EQ("1 { }\n", Run("#{1} { }"));
}

TEST_F(InlineScriptTest, AScriptMustEndOnItsLine)
{
    for (const char* const line : {"#{ 1", "#{", "x ##{ 1 + ", "#{1} #{2"})
        EXPECT_EQ(Failure("#{ needs a } on same line !", 2), Run(wxString("a\n") + line + "\n}")) << line;
}

TEST_F(InlineScriptTest, AFailingScriptIsReportedWithItsText)
{
    EXPECT_EQ(Failure("#{ : Can not evaluate script:  nosuchname + 1 ", 3), Run("a\n\nx #{ nosuchname + 1 }"));
    EXPECT_EQ(Failure("#{ : Can not evaluate script: )(", 1), Run("##{)(}"));
}

TEST_F(InlineScriptTest, TheReportShowsTheScriptWithItsDefinesReplaced)
{
    EXPECT_EQ(Failure("#{ : Can not evaluate script: nosuch + 5", 1), RunWith({"A=5"}, "#{nosuch + #A}"));
}

TEST_F(InlineScriptTest, DefinesInAScriptAreReplaced)
{
    EXPECT_EQ("11 foo!\n", RunWith({"A=5", "N=foo"}, "#{ #A * 2 + 1 } #{ ##N + \"!\" }"));
}

TEST_F(InlineScriptTest, AnUnknownDefineInAScriptIsReportedAsSuch)
{
    EXPECT_EQ(Failure("\"U\" is not defined !", 2), Run("a\n#{ #U + 1 }"));
}

TEST_F(InlineScriptTest, AStringThatTheClosingBraceCutsIsNotTerminated)
{
    EXPECT_EQ(Failure("String not terminated !", 1), Run("#{ \"}\" }"));
}

TEST_F(InlineScriptTest, DefinedTestsAreDecided)
{
    EXPECT_EQ("true false\n", RunWith({"A=5"}, "#{ defined(A) } #{ defined( B ) }"));
}

TEST_F(InlineScriptTest, TheResultIsNotScannedAgain)
{
    EXPECT_EQ("#A /* // '\n", RunWith({"A=5"}, "#{ \"#A /* // '\" }"));
}

TEST_F(InlineScriptTest, ScriptsShareOneContext)
{
    EXPECT_EQ("5\n6\n", Run("#{ x = 5 }\n#{ x + 1 }"));
    EXPECT_EQ("7\n", Run("#{ x + 2 }"));
}

TEST_F(InlineScriptTest, ConditionsHaveAContextOfTheirOwn)
{
    EXPECT_EQ("5\nunseen\n", Run("#{ x = 5 }\n#if typeof x == 'undefined'\nunseen\n#endif"));
}

TEST_F(InlineScriptTest, CleanEndsTheContext)
{
    EXPECT_EQ("5\n", Run("#{ x = 5 }"));
    pp.Clean();
    EXPECT_EQ("undefined\n", Run("#{ typeof x }"));
}

TEST_F(InlineScriptTest, SkippedScriptsAreNotRun)
{
    EXPECT_EQ("undefined\n", Run("#if 0\n#{ y = 1 } #{ nosuch } #{ never closed\n#{ { }\n#endif\n#{ typeof y }"));
}

TEST_F(InlineScriptTest, PartialModeKeepsAScriptItCannotDecide)
{
    EXPECT_EQ("x #{ #U + 1 } 2\n", RunPartial("x #{ #U + 1 } #{1+1}"));
    EXPECT_TRUE(pp.WasPartial());
}

TEST_F(InlineScriptTest, AFailingScriptIsAnErrorInPartialModeToo)
{
    EXPECT_EQ(Failure("#{ : Can not evaluate script: nosuch", 1), RunPartial("#{nosuch}"));
}

TEST_F(InlineScriptTest, TextBeyondAsciiPassesThroughScript)
{
    EXPECT_EQ(wxString(L"3 \U0001F600\u00e9\n").utf8_string(),
              Run(L"#{ '\U0001F600\u00e9'.length } #{ '\U0001F600\u00e9' }"));
}

} // namespace
