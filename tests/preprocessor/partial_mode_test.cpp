#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

class PartialModeTest : public PreprocessTest<>
{
protected:
    void SetUp() override
    {
        Define("K=1");
        pp.SetPartialMode(true);
    }
};

struct Case
{
    const char* text;
    const char* output;
};

TEST_F(PartialModeTest, ASectionOverAnUnknownNameIsKeptWithAllItsText)
{
    EXPECT_EQ("a\n#ifdef U\nb\n#endif\nc\n", Run("a\n#ifdef U\nb\n#endif\nc"));
    EXPECT_TRUE(pp.WasPartial());
}

TEST_F(PartialModeTest, ASectionOverAnUnknownNameIsKeptInBothForms)
{
    EXPECT_EQ("#ifndef U\nb\n#else\nc\n#endif\n", Run("#ifndef U\nb\n#else\nc\n#endif"));
    EXPECT_TRUE(pp.WasPartial());
}

TEST_F(PartialModeTest, KnownNamesAreDecidedAsEver)
{
    EXPECT_EQ("a\nd\n", Run("#ifdef K\na\n#else\nb\n#endif\n#ifndef K\nc\n#else\nd\n#endif"));
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, KnownNamesAreDecidedInsideAKeptSection)
{
    EXPECT_EQ("#ifdef U\na\n1\n#endif\n", Run("#ifdef U\n#ifdef K\na\n#else\nb\n#endif\n#K\n#endif"));
}

TEST_F(PartialModeTest, InlineScriptThatAsksForAnUnknownNameIsKept)
{
    EXPECT_EQ("a #{ defined(U) ? 1 : 2 } ##{#K + #U}\n", Run("a #{ defined(U) ? 1 : 2 } ##{#K + #U}"));
    EXPECT_TRUE(pp.WasPartial());
    pp.ResetPartial();
    EXPECT_EQ("a 1\n", Run("a #{ defined(K) ? 1 : 2 }"));
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, ADefineWhoseConditionalTextAsksForAnUnknownNameIsKept)
{
    const std::string define = "#define f(n) <#(defined(#n)?yes:no)#n>\n";
    EXPECT_EQ("a <yesK> #f(U) ##f( U ).\n", Run(define + "a #f(K) #f(U) ##f( U )."));
    EXPECT_TRUE(pp.WasPartial());
    EXPECT_EQ("#define g #f(U) 1\n#if #f(U) == 1\n#endif\n", Run("#define g #f(U) #K\n#if #f(U) == 1\n#endif"));
    EXPECT_EQ("x #{ #f(U) }\n", Run("x #{ #f(U) }"));
    Define("U=2");
    pp.ResetPartial();
    EXPECT_EQ("a <yesU> \"<yesU>\".\n", Run("a #f(U) ##f( U )."));
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, KeptSectionsNest)
{
    const char* const text = "#ifdef U\na\n#ifndef V\nb\n#else\nc\n#endif\n#else\nd\n#endif\n";
    EXPECT_EQ(text, Run(text));
}

TEST_F(PartialModeTest, KeptDirectivesAreKeptAsWritten)
{
    const char* const text = "#ifdef  U  it's // x\na\n#else  \" /* y\nb\n#endif z '";
    EXPECT_EQ(std::string(text) + "\n", Run(text));
}

TEST_F(PartialModeTest, AConditionThatCannotBeDecidedKeepsItsSection)
{
    for (const char* const condition :
         {"#U", "#U == #K", "1 + #U", "nosuch", ")(", "defined(U)", "!defined( U )", "#K && defined(U)", "'a"}) {
        const wxString text = wxString("#if ") + condition + "\na\n#else\nb\n#endif\n";
        EXPECT_EQ(text.utf8_string(), Run(text)) << condition;
        EXPECT_TRUE(pp.WasPartial()) << condition;
        EXPECT_EQ("0, no unit: ", LastFailure(parser, 0)) << condition;
        pp.ResetPartial();
    }
}

TEST_F(PartialModeTest, AConditionWhoseUsesFailKeepsItsSection)
{
    ASSERT_EQ("", Run("#define F(a) #a"));
    for (const char* const condition : {"#F", "#F(1,2)", "#F(1", "#F(((1)))", "#F(#U)", "#F('a)"}) {
        const wxString text = wxString("#if ") + condition + "\na\n#endif\n";
        EXPECT_EQ(text.utf8_string(), Run(text)) << condition;
        EXPECT_EQ("0, no unit: ", LastFailure(parser, 0)) << condition;
    }
}

TEST_F(PartialModeTest, AConditionThatCanBeDecidedIsDecided)
{
    const Case cases[] = {
        {"#if #K == 1\na\n#else\nb\n#endif", "a\n"},
        {"#if defined(K)\na\n#endif", "a\n"},
        {"#if !defined(K)\na\n#endif", ""},
        {"#if defined(K) || defined(U)\na\n#else\nb\n#endif", "a\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, AnElifOfAKeptSectionIsKeptWithItsDefinesReplaced)
{
    EXPECT_EQ("#if #U == 1\na\n#elif 1 == 1\nb\n#elseif #V > 1 // c\nc\n#else\nd\n#endif\n",
              Run("#if #U == 1\na\n#elif #K == 1\nb\n#elseif #V > #K // c\nc\n#else\nd\n#endif"));
}

TEST_F(PartialModeTest, AnElifOfAKeptSectionIsNotEvaluated)
{
    EXPECT_EQ("#ifdef U\n#elif )( nosuch\n#endif\n", Run("#ifdef U\n#elif )( nosuch\n#endif"));
}

TEST_F(PartialModeTest, AnElifOfAResolvedSectionMustBeDecided)
{
    EXPECT_EQ(Failure("#elif : Can not evaluate condition:  nosuch", 2), Run("#if 0\n#elif nosuch\n#endif"));
    pp.Clean();
    EXPECT_EQ(Failure("#elseif : Can not evaluate condition:  #U", 2), Run("#if 0\n#elseif #U\n#endif"));
}

TEST_F(PartialModeTest, AnErrorInTheConditionOfABranchThatMustBeDecidedIsTheOneReported)
{
    const Case cases[] = {
        {"#if 0\n#elif #K(1)\n#endif", "\"K\" requires 0 parameters, but only 1 given !"},
        {"#if 0\n#elseif #K(\n#endif", "\"K\" did not find end of parameters in ( !"},
        {"#if 0\n#elif 'x\n#endif", "String not terminated !"},
        {"#if 0\n#elif #U\n#endif", "#elif : Can not evaluate condition:  #U"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(Failure(message, 2), Run(text)) << text;
}

TEST_F(PartialModeTest, AnElifAfterATakenBranchIsNotEvaluated)
{
    EXPECT_EQ("a\n", Run("#if 1\na\n#elif #U\nb\n#elif )(\nc\n#endif"));
}

TEST_F(PartialModeTest, AnElseifdefOfAKeptSectionBecomesAConditionWhenItsNameIsKnown)
{
    EXPECT_EQ("#ifdef U\na\n#elif (1==1)\nb\n#else\nc\n#endif\n",
              Run("#ifdef U\na\n#elseifdef K\nb\n#else\nc\n#endif"));
}

TEST_F(PartialModeTest, AnElseifdefOfAKeptSectionIsKeptWhenItsNameIsUnknown)
{
    EXPECT_EQ("#ifdef U\na\n#elseifdef V // c\nb\n#endif\n", Run("#ifdef U\na\n#elseifdef V // c\nb\n#endif"));
}

TEST_F(PartialModeTest, AnElseifdefOfAResolvedSectionIsDecided)
{
    EXPECT_EQ("c\n", Run("#ifndef K\na\n#elseifdef U\nb\n#else\nc\n#endif"));
}

TEST_F(PartialModeTest, ASecondPassDecidesWhatTheFirstKept)
{
    const std::string kept = Run("#ifdef U\na\n#elseifdef K\nb\n#else\nc\n#endif\n#if #U2 > 1\nd\n#elif #K\ne\n#endif");
    pp.SetPartialMode(false);
    EXPECT_EQ("b\ne\n", RunWith({"U2=1"}, kept));
    EXPECT_EQ("a\ne\n", RunWith({"U="}, kept));
}

TEST_F(PartialModeTest, NothingOfASkippedSectionIsKept)
{
    EXPECT_EQ("z\n", Run("#ifndef K\n#ifdef U\nx\n#elif #V\nx\n#elseifdef K\nx\n#else\nx\n#endif\n#if #U\nx\n#endif\n"
                         "#error x\n#define A #U\n#redefine U 1\n#undef U\n#U\n#for i 1;#U;1\n#endfor\n#endif\nz"));
}

TEST_F(PartialModeTest, AKeptSectionInsideASkippedOneDoesNotEndTheSkipping)
{
    EXPECT_EQ("", Run("#if 0\n#ifdef U\nx\n#else\ny\n#endif\nz\n#endif"));
}

TEST_F(PartialModeTest, AnOpenKeptSectionIsAnErrorToo)
{
    EXPECT_EQ(FailureWithoutUnit("Missing #endif for #ifdef started file \"main.txt\" line 1!"), Run("#ifdef U\na"));
}

TEST_F(PartialModeTest, ABranchWithoutASectionIsAnErrorToo)
{
    EXPECT_EQ(Failure("#elif without #if", 1), Run("#elif #U"));
    EXPECT_EQ(Failure("#endif without #ifdef", 1), Run("#endif"));
}

TEST_F(PartialModeTest, AnUnknownUseIsKeptAsWrittenAndTheLineGoesOn)
{
    const Case cases[] = {
        {"x #U y ##U z #K", "x #U y ##U z 1\n"},
        {"#U first", "#U first\n"},
        {"#U(1,2) #K", "#U(1,2) 1\n"},
        {"#U(#K, ##K) // c", "#U(1, \"1\")\n"},
        {"#U('//') /* c */ x", "#U('//')  x\n"},
        {"x #define A 1", "x #define A 1\n"},
        {"a #U.#V#K", "a #U.#V1\n"},
    };
    for (const auto& [text, output] : cases) {
        pp.ResetPartial();
        EXPECT_EQ(output, Run(text)) << text;
        EXPECT_TRUE(pp.WasPartial()) << text;
    }
}

TEST_F(PartialModeTest, AKnownUseWithArgumentsThatCannotBeReplacedIsKeptAsWritten)
{
    ASSERT_EQ("", Run("#define F(a,b) <#a|#b>"));
    const Case cases[] = {
        {"x #F(#U,#K) #K", "x #F(#U,#K) 1\n"},
        {"##F( #K , #U )", "##F( #K , #U )\n"},
        {"#F(1,#F(#U,2)) #F(1,2)", "#F(1,#F(#U,2)) <1|2>\n"},
    };
    for (const auto& [text, output] : cases) {
        pp.ResetPartial();
        EXPECT_EQ(output, Run(text)) << text;
        EXPECT_TRUE(pp.WasPartial()) << text;
    }
}

TEST_F(PartialModeTest, AKnownUseWithTheWrongNumberOfArgumentsIsAnErrorToo)
{
    EXPECT_EQ(Failure("\"K\" requires 0 parameters, but only 1 given !", 1), Run("#K(1)"));
}

TEST_F(PartialModeTest, ADefineWithAnUnknownNameInItsValueIsKeptExpandedAsFarAsPossible)
{
    EXPECT_EQ("#define A 1 #U 1\n#define F(a,b) #a #U 1\n#define B #U // c\n",
              Run("#define  A  #K #U #K\n  #define F( a , b )  #a #U #K\n#define B #U // c"));
    EXPECT_TRUE(pp.WasPartial());
    EXPECT_FALSE(pp.HasDefine("A"));
    EXPECT_FALSE(pp.HasDefine("F"));
}

TEST_F(PartialModeTest, ADefineThatCanBeResolvedIsMade)
{
    EXPECT_EQ("1 2\n", Run("#define A #K 2\n#A"));
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, ARedefineOfAnUnknownNameIsKeptAsWritten)
{
    EXPECT_EQ("#redefine  U  #K // c\n", Run("#redefine  U  #K // c"));
    EXPECT_TRUE(pp.WasPartial());
    EXPECT_FALSE(pp.HasDefine("U"));
}

TEST_F(PartialModeTest, ARedefineOfAKnownNameIsDone)
{
    EXPECT_EQ("2\n", Run("#redefine K 2\n#K"));
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, AnUndefOfAnUnknownNameIsKeptAsWritten)
{
    EXPECT_EQ("#undef  U it's\n", Run("#undef  U it's"));
    EXPECT_TRUE(pp.WasPartial());
}

TEST_F(PartialModeTest, AnUndefOfAKnownNameIsDone)
{
    EXPECT_EQ("", Run("#undef K"));
    EXPECT_FALSE(pp.HasDefine("K"));
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, OtherErrorsStayErrors)
{
    const Case cases[] = {
        {"it's", "String not terminated !"},
        {"*/", "Comment closed but not opened !"},
        {"#define", "No Define name in line: #define"},
        {"#define K 2", "\"K\" already defined in  (2 was 1) !"},
        {"#define A it's", "String not terminated !"},
        {"#{ 1", "#{ needs a } on same line !"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(Failure(message, 1), Run(text)) << text;
}

TEST_F(PartialModeTest, ThePartialMarkStaysUntilItIsReset)
{
    EXPECT_FALSE(pp.WasPartial());
    Run("#U");
    EXPECT_TRUE(pp.WasPartial());
    Run("a");
    EXPECT_TRUE(pp.WasPartial());
    pp.ResetPartial();
    EXPECT_FALSE(pp.WasPartial());
}

TEST_F(PartialModeTest, PartialModeCanBeLeft)
{
    Run("#U");
    pp.SetPartialMode(false);
    EXPECT_EQ(Failure("\"U\" is not defined !", 1), Run("#U"));
}

} // namespace
