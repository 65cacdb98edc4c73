#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

class LimitsTest : public PreprocessTest<>
{
protected:
    LimitsTest()
    {
        CDir dir = place.Dir();
        parser.SetDir(dir);
        limits.includeDepth = 3;
        limits.loopNesting = 3;
        limits.openSections = 3;
        limits.argumentNesting = 3;
        limits.loopPasses = 3;
        pp.SetLimits(limits);
    }

    /// A text that reaches `depth` files below itself: f1.txt, f2.txt and so on.
    wxString Includes(int depth)
    {
        for (int number = 1; number <= depth; ++number)
            place.Put("f" + std::to_string(number) + ".txt",
                      number < depth ? "\n#include \"f" + std::to_string(number + 1) + ".txt\"" : "end");
        return depth == 0 ? wxString("end") : wxString("#include \"f1.txt\"");
    }

    static wxString Loops(int depth)
    {
        wxString text = "x\n";
        for (int number = depth; number > 0; --number)
            text = wxString::Format("#for i%d 1;1;1\n", number) + text + "#endfor\n";
        return text;
    }

    /// A value with conditional texts inside each other.
    static wxString Conditionals(int depth)
    {
        wxString value = "x";
        for (int number = 0; number < depth; ++number)
            value = "#(1?" + value + ":n)";
        return value;
    }

    TempDirectory place;
    CPreprocessorLimits limits;
};

TEST_F(LimitsTest, TheDefaultsAreGenerousAndLoopsAreFree)
{
    const CPreprocessorLimits defaults = CPreprocessor(nullptr, true).GetLimits();
    EXPECT_EQ(200u, defaults.includeDepth);
    EXPECT_EQ(200u, defaults.loopNesting);
    EXPECT_EQ(10000u, defaults.openSections);
    EXPECT_EQ(200u, defaults.argumentNesting);
    EXPECT_EQ(0u, defaults.loopPasses);
    EXPECT_EQ(256u * 1024 * 1024, defaults.expandedLength);
    EXPECT_EQ(512u * 1024 * 1024, defaults.definesLength);
    EXPECT_EQ(size_t{4} << 30, defaults.addedBytes);
    EXPECT_EQ(0, defaults.scriptMilliseconds);
    EXPECT_EQ(0u, defaults.scriptBytes);
}

TEST_F(LimitsTest, SetLimitsReplacesThemAll)
{
    EXPECT_EQ(3u, pp.GetLimits().includeDepth);
    EXPECT_EQ(3u, pp.GetLimits().loopNesting);
    EXPECT_EQ(3u, pp.GetLimits().openSections);
    EXPECT_EQ(3u, pp.GetLimits().argumentNesting);
    EXPECT_EQ(3u, pp.GetLimits().loopPasses);
}

TEST_F(LimitsTest, IncludesUpToTheDepthAreRead)
{
    for (const int depth : {0, 1, 2, 3})
        EXPECT_EQ("end\n", Run(Includes(depth))) << depth;
}

TEST_F(LimitsTest, AnIncludeBelowTheDepthIsRefused)
{
    EXPECT_EQ(Failure("Include file 'f4.txt' nested deeper than 3", 2, "f3.txt"), Run(Includes(4)));
}

TEST_F(LimitsTest, IncludesBehindEachOtherAreNotNested)
{
    Includes(3);
    EXPECT_EQ("end\nend\nend\nend\n",
              Run("#include \"f1.txt\"\n#include \"f1.txt\"\n#include \"f1.txt\"\n#include \"f1.txt\""));
}

TEST_F(LimitsTest, TheDepthIsCountedAnewAfterAFailure)
{
    Run(Includes(4));
    EXPECT_EQ("end\n", Run(Includes(3)));
    EXPECT_NE("", Run("#include \"no.txt\""));
    EXPECT_EQ("end\n", Run(Includes(3)));
}

TEST_F(LimitsTest, AFileThatIncludesItselfEndsWithAnErrorByDefault)
{
    pp.SetLimits(CPreprocessorLimits());
    place.Put("self.txt", "a\n#include \"self.txt\"");
    EXPECT_EQ(Failure("Include file 'self.txt' nested deeper than 200", 2, "self.txt"), Run("#include \"self.txt\""));
}

TEST_F(LimitsTest, LoopsUpToTheNestingAreRun)
{
    for (const int depth : {0, 1, 2, 3})
        EXPECT_EQ("x\n", Run(Loops(depth))) << depth;
}

TEST_F(LimitsTest, ALoopBelowTheNestingIsRefused)
{
    const std::string innermost = "main.txt (LOOP l.1) (LOOP l.1) (LOOP l.1)";
    EXPECT_EQ(Failure("for : Loops nested deeper than 3", 1, innermost), Run(Loops(4)));
    EXPECT_EQ("x\n", Run(Loops(3))) << "counted anew";
}

TEST_F(LimitsTest, LoopsBehindEachOtherAreNotNested)
{
    EXPECT_EQ("x\nx\nx\nx\n", Run(Loops(3) + Loops(3) + Loops(3) + Loops(3)));
}

TEST_F(LimitsTest, ALoopInAnIncludedFileCountsWithThoseAround)
{
    place.Put("l.txt", Loops(2).utf8_string());
    EXPECT_EQ("x\n", Run("#for a 1;1;1\n#include \"l.txt\"\n#endfor"));
    EXPECT_EQ(Failure("for : Loops nested deeper than 3", 1, "l.txt (LOOP l.1)"),
              Run("#for a 1;1;1\n#for b 1;1;1\n#include \"l.txt\"\n#endfor\n#endfor"));
}

TEST_F(LimitsTest, LoopsThatIncludeThemselvesEndWithAnError)
{
    pp.SetLimits(CPreprocessorLimits());
    place.Put("self.txt", "#for i 1;1;1\n#include \"self.txt\"\n#endfor");
    const std::string outcome = Run("#include \"self.txt\"");
    EXPECT_EQ("-1, file", outcome.substr(0, 8));
    EXPECT_NE(std::string::npos, outcome.find("nested deeper than 200")) << outcome;
}

TEST_F(LimitsTest, SectionsUpToTheLimitMayBeOpen)
{
    EXPECT_EQ("x\n", Run("#if 1\n#if 1\nx\n#endif\n#endif"));
    EXPECT_EQ("x\n", Run("#if 1\n#if 1\n#if 1\nx\n#endif\n#endif\n#if 1\n#endif\n#endif"));
}

TEST_F(LimitsTest, ASectionAboveTheLimitIsRefusedWithItsWord)
{
    for (const std::string word : {"if", "ifdef", "ifndef"}) {
        pp.Clean();
        EXPECT_EQ(Failure("#" + word + " : More than 3 open sections !", 4),
                  Run("#if 1\n#if 1\n#if 1\n#" + word + " 1\n#endif\n#endif\n#endif\n#endif"));
    }
}

TEST_F(LimitsTest, ASectionAboveTheLimitIsRefusedInSkippedSectionsToo)
{
    EXPECT_EQ(Failure("#if : More than 3 open sections !", 4), Run("#if 0\n#if 1\n#if 1\n#if 1\n"));
}

TEST_F(LimitsTest, TheSectionsOfIncludingTextsCount)
{
    place.Put("i.txt", "#if 1\nx\n#endif");
    EXPECT_EQ("x\n", Run("#if 1\n#if 1\n#include \"i.txt\"\n#endif\n#endif"));
    EXPECT_EQ(Failure("#if : More than 3 open sections !", 1, "i.txt"),
              Run("#if 1\n#if 1\n#if 1\n#include \"i.txt\"\n#endif\n#endif\n#endif"));
}

TEST_F(LimitsTest, ManySectionsMayBeOpenByDefault)
{
    pp.SetLimits(CPreprocessorLimits());
    wxString text;
    for (int depth = 0; depth < 9999; ++depth)
        text += "#ifdef A\n";
    EXPECT_EQ(FailureWithoutUnit("Missing #endif for #ifdef started file \"main.txt\" line 9999!"), Run(text));
    EXPECT_EQ(FailureWithoutUnit("Missing #endif for #ifdef started file \"main.txt\" line 10000!"),
              Run(text + "#ifdef A\n"));
    EXPECT_EQ(Failure("#ifdef : More than 10000 open sections !", 10001), Run(text + "#ifdef A\n#ifdef A\n"));
}

TEST_F(LimitsTest, DefinesInsideArgumentsUpToTheLimitAreReplaced)
{
    for (const unsigned int limit : {1u, 2u}) {
        limits.argumentNesting = limit;
        pp.SetLimits(limits);
        pp.Clean();
        EXPECT_EQ("<x>\n<1>\n", RunWith({"A=1"}, "#define F(a) <#a>\n#F(x)\n#F(#A)"));
    }
}

TEST_F(LimitsTest, DefinesInsideArgumentsAboveTheLimitAreRefused)
{
    limits.argumentNesting = 2;
    pp.SetLimits(limits);
    EXPECT_EQ("<<1>>\n", RunWith({"A=1"}, "#define F(a) <#a>\n#F(#F(#A))"));
    limits.argumentNesting = 1;
    pp.SetLimits(limits);
    EXPECT_EQ(
        Failure("\"F\" error parsing parameters '#F(#A)'->'' : \"F\" : More than 1 defines inside parameters ! !", 2),
        Run("a\n#F(#F(#A))"));
    EXPECT_EQ("<1>\n", Run("#F(#A)")) << "counted anew";
}

TEST_F(LimitsTest, ConditionalTextsUpToTheLimitAreDecided)
{
    for (const int depth : {1, 2, 3}) {
        pp.Clean();
        EXPECT_EQ("x\n", Run("#define F(a) " + Conditionals(depth) + "\n#F(1)")) << depth;
    }
}

TEST_F(LimitsTest, ConditionalTextsAboveTheLimitAreRefused)
{
    EXPECT_EQ(Failure("#F : More than 3 conditional texts inside each other !", 2),
              Run("#define F(a) " + Conditionals(4) + "\n#F(1)"));
    pp.Clean();
    pp.SetLimits(CPreprocessorLimits());
    EXPECT_EQ("x\n", Run("#define F(a) " + Conditionals(200) + "\n#F(1)"));
    EXPECT_EQ(Failure("#G : More than 200 conditional texts inside each other !", 2),
              Run("#define G(a) " + Conditionals(201) + "\n#G(1)"));
}

TEST_F(LimitsTest, ALoopMayPassUpToTheLimit)
{
    EXPECT_EQ("x\nx\n", Run("#for i 1;2;1\nx\n#endfor"));
    EXPECT_EQ("x\nx\nx\n", Run("#for i 1;3;1\nx\n#endfor"));
    EXPECT_EQ("x\nx\nx\n", Run("#for i 1;8;3\nx\n#endfor"));
    EXPECT_EQ("", Run("#for i 1;0;1\nx\n#endfor"));
}

TEST_F(LimitsTest, ALoopOfMorePassesIsRefused)
{
    EXPECT_EQ(Failure("for : More than 3 passes: 4", 2), Run("a\n#for i 1;4;1\nx\n#endfor"));
    EXPECT_EQ(Failure("for : More than 3 passes: 4", 2), Run("a\n#for i 1;10;3\nx\n#endfor"));
    EXPECT_EQ(Failure("for : More than 3 passes: 4294967296", 2),
              Run("a\n#for i -2147483648;2147483647;1\nx\n#endfor"));
}

TEST_F(LimitsTest, PassesAreCountedForEachLoopAlone)
{
    EXPECT_EQ("x\nx\nx\nx\nx\nx\nx\nx\nx\n", Run("#for i 1;3;1\n#for j 1;3;1\nx\n#endfor\n#endfor"));
}

TEST_F(LimitsTest, WithoutALimitALoopPassesAsOftenAsItSays)
{
    limits.loopPasses = 0;
    pp.SetLimits(limits);
    Run("#for i 1;5000;1\n#i\n#endfor");
    EXPECT_EQ(5000u, Units().size());
    EXPECT_EQ("main.txt (LOOP l.1):1:5000", Units().back());
}

TEST_F(LimitsTest, ATextMayGrowUpToTheLimit)
{
    limits.expandedLength = 10;
    pp.SetLimits(limits);
    EXPECT_EQ("123412345\n1234512345\n", RunWith({"A=12345"}, "1234#A\n#A#A"));
    EXPECT_EQ("<1234567>\n<12345678>\n", Run("#define F(a) <#a>\n#F(1234567)\n#F(12345678)"));
    EXPECT_EQ("1234512345\n", Run("#define B #A#A\n#B"));
    EXPECT_EQ("a longer line without defines\n", Run("a longer line without defines"));
}

TEST_F(LimitsTest, ATextThatGrowsBeyondTheLimitIsRefused)
{
    limits.expandedLength = 10;
    pp.SetLimits(limits);
    const std::string message = "\"A\" : More than 10 characters after replacing defines !";
    EXPECT_EQ(Failure(message, 2), RunWith({"A=12345"}, "x\n1#A#A"));
    EXPECT_EQ(Failure(message, 1), Run("#define B #A#A#A"));
    EXPECT_EQ(Failure(message, 1), Run("#if #A #A"));
    EXPECT_EQ(Failure("\"F\" : More than 10 characters after replacing defines !", 2),
              Run("#define F(a) <#a>\n#F(123456789)"));
    EXPECT_EQ(Failure("\"G\" : More than 10 characters after replacing defines !", 2),
              Run("#define G(a) #a#a#a#a\n#G(123)"));
}

TEST_F(LimitsTest, DirectivesMayAddUpToTheLimit)
{
    place.Put("two.txt", "12345\n678\n");
    place.Put("umlauts.txt", "\u00e4\u00f6\u20ac\U0001F600\n");
    place.Put("surrogate.txt", "\xed\xa0\x80\nplain");
    limits.loopPasses = 0;
    const struct
    {
        const char* text;
        size_t lines; ///< Of loops and includes.
        size_t bytes; ///< In them, and added to others.
        const char* file;
        unsigned long line;
    } cases[] = {
        {"#for i 1;5;1\nx\n#endfor", 5, 5, "main.txt (LOOP l.1)", 1},
        {"#for i 1;5;1\n  x // a note\n#endfor", 5, 5, "main.txt (LOOP l.1)", 1},
        {"#for i 1;5;1\n#i\n#endfor", 5, 5, "main.txt (LOOP l.1)", 1},
        {"#for i 1;2;1\n#for j 1;1;1\n1234\n#endfor\n#endfor", 2, 8, "main.txt (LOOP l.1) (LOOP l.1)", 1},
        {"#include \"two.txt\"", 2, 8, "two.txt", 2},
        {"#include \"umlauts.txt\"", 1, 11, "umlauts.txt", 1},
        {"#include \"surrogate.txt\"", 2, 8, "surrogate.txt", 2},
        {"#define A 123456789012\nx\n#A", 0, 10, "main.txt", 3},
        {"#{'\u00e41234567' + '890123456'}", 0, 0, "main.txt", 0},
        {"#define A(x) #x#x\n#A(\u00e4\u00f6\u20ac)", 0, 3, "main.txt", 2},
        {"#define A 1\nas long as any\n#A\n#ifdef A\nand longer\n#endif", 0, 0, "main.txt", 0},
    };
    for (const auto& [text, lines, bytes, file, line] : cases) {
        limits.addedBytes = lines * CPreprocessorLimits::LineBytes + bytes;
        pp.SetLimits(limits);
        pp.Clean();
        Run(wxString::FromUTF8(text));
        EXPECT_EQ("", Message()) << text;
        if (limits.addedBytes-- == 0)
            continue;
        pp.SetLimits(limits);
        const wxString message = wxString::Format("More than %zu bytes added by directives !", limits.addedBytes);
        EXPECT_EQ(Failure(message.utf8_string(), line, file), Run(wxString::FromUTF8(text)));
    }
}

TEST_F(LimitsTest, LinesThatAreEmptyCountWhatTheyAdd)
{
    limits.addedBytes = 3 * CPreprocessorLimits::LineBytes;
    limits.loopPasses = 0;
    pp.SetLimits(limits);
    pp.SetTrim(false);
    parser.KeepEmptyLines();
    EXPECT_EQ("\n\n\n\n", Run("#for i 1;3;1\n\n#endfor"));
    for (const char* const line : {"", "//", "#{''}"})
        EXPECT_EQ(Failure("More than 72 bytes added by directives !", 1, "main.txt (LOOP l.1)"),
                  Run(wxString::Format("#for i 1;4;1\n%s\n#endfor", line)))
            << line;
}

TEST_F(LimitsTest, WhatIsAddedIsCountedForEachTextAnew)
{
    limits.addedBytes = 75;
    pp.SetLimits(limits);
    const wxString text = "#for i 1;3;1\nx\n#endfor";
    EXPECT_EQ("x\nx\nx\n", Run(text));
    EXPECT_EQ("x\nx\nx\n", Run(text));
    EXPECT_EQ(Failure("More than 75 bytes added by directives !", 1, "main.txt (LOOP l.4)"), Run(text + "\n" + text));
    EXPECT_EQ("x\nx\nx\n", Run(text));
}

TEST_F(LimitsTest, AllValuesTogetherMayBeAsLongAsTheLimit)
{
    limits.definesLength = 10;
    pp.SetLimits(limits);
    EXPECT_EQ("", Run("#define A 12345\n#define B 67890\n#define C"));
    EXPECT_EQ(Failure("\"D\" : More than 10 characters in the values of all defines !", 2), Run("x\n#define D 1"));
    EXPECT_FALSE(pp.HasDefine("D"));
    EXPECT_EQ(Failure("\"A\" : More than 10 characters in the values of all defines !", 1), Run("#redefine A 123456"));
    EXPECT_EQ("12345\n", Run("#A"));
}

TEST_F(LimitsTest, ValuesThatAreGivenUpCountNoMore)
{
    limits.definesLength = 10;
    limits.loopPasses = 0;
    pp.SetLimits(limits);
    EXPECT_EQ("", Run("#define A 1234567890\n#redefine A 12345\n#define B 12345\n#undef A\n#define A 12345"));
    EXPECT_EQ("", Run("#undef A\n#for i 1;100;1\n#redefine B #i\n#endfor\n#redefine B 12345\n#define A 12345"));
    pp.Clean();
    EXPECT_EQ("", Run("#define C 1234567890"));
}

TEST_F(LimitsTest, AScriptStopsAtItsTimeLimit)
{
    limits.scriptMilliseconds = 20;
    pp.SetLimits(limits);
    EXPECT_EQ(Failure("#if : Can not evaluate condition:  (function() { for (;;); })()", 1),
              Run("#if (function() { for (;;); })()\n#endif"));
    EXPECT_EQ(Failure("#{ : Can not evaluate script: for (;;);", 1), Run("#{for (;;);}"));
}

TEST_F(LimitsTest, AScriptStopsAtItsMemoryLimit)
{
    limits.scriptBytes = 32 * 1024 * 1024;
    pp.SetLimits(limits);
    EXPECT_EQ(Failure("#{ : Can not evaluate script: a = []; for (;;) a.push([1,2,3])", 1),
              Run("#{a = []; for (;;) a.push([1,2,3])}"));
}

} // namespace
