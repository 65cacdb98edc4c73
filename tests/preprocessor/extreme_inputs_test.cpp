#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string Repeated(const std::string& part, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

constexpr int Many = 100'000;

class ExtremeInputsTest : public PreprocessTest<>
{
protected:
    ExtremeInputsTest()
    {
        CDir dir = place.Dir();
        parser.SetDir(dir);
        place.Put("inc.txt", "#define I 1\n");
    }

    /// Whether a text ends with a result or with a message, whatever the mode.
    ::testing::AssertionResult EndsWell(const std::string& text, bool partial)
    {
        pp.Clean();
        pp.SetPartialMode(partial);
        parser.ClearError();
        const long result = parser.Parse(wxString::FromUTF8(text), "main.txt", nullptr, false);
        pp.Clean();
        if (result == 0)
            return ::testing::AssertionSuccess();
        if (result != -1 || Message().empty())
            return ::testing::AssertionFailure() << result << " without a message for " << text;
        ++failures;
        return ::testing::AssertionSuccess();
    }

    TempDirectory place;
    int failures = 0;
};

TEST_F(ExtremeInputsTest, ATextMayEndInsideEveryConstruct)
{
    const std::string text = "#define A(x,y) <#x \"s\\\"\" ##y #(#x?'a':#(1?b:c))>\n"
                             "a /* c /* d */ e */ \"s\\\\\" 'q' // f\n"
                             "#ifdef A\n#A( #A(1,2), \"(,\" )#{ 1 + \"}\".length }##{2}\n"
                             "#elif (defined(A) && 1)\n#elseifdef B\n#else\n#endif\n"
                             "#if #A(1,0) == 1 || defined( B )\n#elseif 2\n#endif\n"
                             "#for i 1;#A(1,0);1\n#i # b\n#for j #i;2;1\n##i\n#endfor\n#endfor\n"
                             "#redefine A 2\n#undef A\n#include \"inc.txt\"\n#warning w\n#error e";
    for (const bool partial : {false, true}) {
        failures = 0;
        for (size_t end = 0; end <= text.size(); ++end)
            EXPECT_TRUE(EndsWell(text.substr(0, end), partial));
        EXPECT_GT(failures, 100) << "so many ends leave something open";
        EXPECT_LT(failures, static_cast<int>(text.size())) << "and as many do not";
    }
}

TEST_F(ExtremeInputsTest, ATextMayBeginInsideEveryConstruct)
{
    const std::string text = "*/ x\" '#endif\n#else\n#elif 1\n#endfor\n) } { ( ;1\n#}##}#)##\\\"\n//*/ /*/ */";
    for (const bool partial : {false, true})
        for (size_t begin = 0; begin <= text.size(); ++begin)
            EXPECT_TRUE(EndsWell(text.substr(begin), partial));
}

TEST_F(ExtremeInputsTest, ATextMayBeManyOfOneCharacter)
{
    for (int character = 0; character < 0x80; ++character)
        for (const bool partial : {false, true})
            EXPECT_TRUE(EndsWell(std::string(1000, static_cast<char>(character)), partial)) << character;
}

TEST_F(ExtremeInputsTest, CommentsNestAsDeepAsTheyLike)
{
    EXPECT_EQ("a\n", Run(Repeated("/*", Many) + Repeated("*/", Many) + "a"));
    EXPECT_EQ("a\n", Run(Repeated("/*\n", Many) + Repeated("*/\n", Many) + "a"));
    EXPECT_EQ(FailureWithoutUnit("Comment not closed (started in file \"main.txt\" line 2)!"),
              Run("a\n" + Repeated("/*\n", Many)));
    EXPECT_EQ(Failure("Comment closed but not opened !", 1), Run(Repeated("/* ", Many) + Repeated("*/ ", Many) + "*/"));
}

TEST_F(ExtremeInputsTest, ALoopOfABillionPassesOverNothingEndsAtOnce)
{
    EXPECT_EQ("a\nb\n", Run("a\n#for i 1;1000000000;1\n#endfor\nb"));
    EXPECT_EQ("a\nb\n", Run("a\n#for i -2147483648;2147483647;1\n\n\n#endfor\nb"));
}

TEST_F(ExtremeInputsTest, ParenthesesOfAConditionMayNestUntilTheScriptRunsOutOfStack)
{
    const std::string shallow = Repeated("(", 50) + "1" + Repeated(")", 50);
    const std::string deep = Repeated("(", 100) + "1" + Repeated(")", 100);
    const std::string deepest = Repeated("(", Many) + "1" + Repeated(")", Many);
    EXPECT_EQ("x\nx\n", Run("#if " + shallow + "\nx\n#endif\n#if " + deep + "\nx\n#endif"));
    EXPECT_EQ(Failure("#if : Can not evaluate condition:  " + deepest, 1), Run("#if " + deepest + "\nx\n#endif"));
    EXPECT_EQ(Failure("for : Can not evaluate end: " + deepest, 2), Run("a\n#for i 1;" + deepest + ";1\n#endfor"));
    EXPECT_EQ(Failure("#{ : Can not evaluate script: " + deepest, 3), Run("a\nb\n#{" + deepest + "}"));
}

TEST_F(ExtremeInputsTest, SignsOfAConditionMayFollowEachOtherUntilTheScriptRunsOutOfStack)
{
    EXPECT_EQ("x\n", Run("#if " + Repeated("!", 1000) + "1\nx\n#endif"));
    EXPECT_EQ(Failure("#if : Can not evaluate condition:  " + Repeated("!", Many) + "1", 1),
              Run("#if " + Repeated("!", Many) + "1\nx\n#endif"));
}

TEST_F(ExtremeInputsTest, AConditionMayHaveManyTerms)
{
    EXPECT_EQ("x\n", Run("#if 0" + Repeated(" || 0", Many) + " || 1\nx\n#endif"));
    EXPECT_EQ("x\n", Run("#if 0" + Repeated(" || defined(A)", Many) + " || 1\nx\n#endif"));
    EXPECT_EQ("x\n", Run("#if Math.min(1, 0)" + Repeated(" || 0", Many) + " || 1\nx\n#endif"));
}

TEST_F(ExtremeInputsTest, ParenthesesOfAConditionalTextMayNestAsDeepAsTheyLike)
{
    const std::string deep = Repeated("(", Many) + Repeated(")", Many);
    EXPECT_EQ(deep + "\n", Run("#define A(x) #(#x?" + deep + ":b)\n#A(1)"));
    EXPECT_EQ(Failure("#(param?true:false) : Can not find colon", 2),
              Run("#redefine A(x) #(#x?" + Repeated("(", Many) + ":b)\n#A(1)"));
}

TEST_F(ExtremeInputsTest, ACallMayHaveManyArguments)
{
    EXPECT_EQ("2\n", Run("#define A(p" + Repeated(",p", Many) + ",q) #q\n#A(1" + Repeated(",1", Many) + ",2)"));
    EXPECT_EQ(Failure("\"B\" requires 1 parameters, but only 100001 given !", 2),
              Run("#define B(p) #p\n#B(1" + Repeated(",1", Many) + ")"));
}

TEST_F(ExtremeInputsTest, DefinesMayStandOnEachOther)
{
    std::string text = "#define N0 x\n";
    for (int number = 1; number <= 10'000; ++number)
        text += "#define N" + std::to_string(number) + " #N" + std::to_string(number - 1) + "\n";
    EXPECT_EQ("x\n", Run(text + "#N10000"));
}

TEST_F(ExtremeInputsTest, ADefineThatDoublesStopsAtTheLimit)
{
    CPreprocessorLimits limits;
    limits.expandedLength = 1'000'000;
    pp.SetLimits(limits);
    const std::string message = "\"A\" : More than 1000000 characters after replacing defines !";
    EXPECT_EQ(Failure(message, 1, "main.txt (LOOP l.2)"),
              Run("#define A x\n#for i 1;1000;1\n#redefine A #A#A\n#endfor"));
}

TEST_F(ExtremeInputsTest, WarningsInManySectionsThatPartialModeKeepsCostNoMoreThanOthers)
{
    constexpr int depth = 10'000;
    EXPECT_EQ(Repeated("#ifdef A\n", depth) + Repeated("#warning w\n", Many) + Repeated("#endif\n", depth),
              RunPartial(Repeated("#ifdef A\n", depth) + Repeated("#warning w\n", Many) + Repeated("#endif\n", depth)));
    EXPECT_EQ(0u, log.Records().size());
}

} // namespace
