#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

struct Case
{
    const char* text;
    const char* output;
};

class DefineExpansionTest : public PreprocessTest<>
{
protected:
    /// Runs a text behind some defines; failures are on line 5.
    std::string Use(const wxString& text)
    {
        return Run("#define A 1\n#define E\n#define F(a) <#a>\n#define P(a,b) <#a|#b>\n" + text +
                   "\n#undef A\n#undef E\n"
                   "#undef F\n#undef P");
    }

    std::string UseFails(const wxString& text)
    {
        std::string outcome = Use(text);
        pp.Clean();
        return outcome;
    }
};

TEST_F(DefineExpansionTest, ArgumentsReplaceTheParameters)
{
    const Case cases[] = {
        {"#F(x)", "<x>\n"},
        {"a#F(x)b", "a<x>b\n"},
        {"#P(x,y) #P(1,2)", "<x|y> <1|2>\n"},
        {"#P( x , y )", "<x|y>\n"},
        {"#P(x y,z)", "<x y|z>\n"},
        {"#P(,)", "<|>\n"},
        {"#P(x,)", "<x|>\n"},
        {"#P(,y)", "<|y>\n"},
        {"#P(g(1,2),(3))", "<g(1,2)|(3)>\n"},
        {"#F(())", "<()>\n"},
        {"#P(\"a,b\",'c)')", "<\"a,b\"|'c)'>\n"},
        {"#F(\"a\\\",b\")", "<\"a\\\",b\">\n"},
        {"#F(')(')", "<')('>\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Use(text)) << text;
}

TEST_F(DefineExpansionTest, TheDoubleFormPutsTheExpansionBetweenQuotes)
{
    const Case cases[] = {
        {"##A", "\"1\"\n"},       {"##F(x)", "\"<x>\"\n"}, {"##E", "\"\"\n"},
        {"a##A b", "a\"1\" b\n"}, {"a ##A", "a \"1\"\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Use(text)) << text;
}

TEST_F(DefineExpansionTest, DefinesInArgumentsAreReplacedFirst)
{
    const Case cases[] = {
        {"#F(#A)", "<1>\n"},      {"#F(##A)", "<\"1\">\n"}, {"#F(#F(#A))", "<<1>>\n"}, {"#P(#A#A,x #A)", "<11|x 1>\n"},
        {"#F('#A')", "<'#A'>\n"}, {"#F(#E)", "<>\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Use(text)) << text;
}

TEST_F(DefineExpansionTest, AnEmptyExpansionLeavesNothing)
{
    EXPECT_EQ("y\n", Use("#E\n #E #E\ny#E"));
}

TEST_F(DefineExpansionTest, ALineWithoutOpeningParenthesisGivesNoArguments)
{
    EXPECT_EQ("1 (x) 1\n", Use("#A (x) #A()"));
}

TEST_F(DefineExpansionTest, AsManyArgumentsAsParametersMustBeGiven)
{
    const Case cases[] = {
        {"#F", "\"F\" requires 1 parameters, but only 0 given !"},
        {"#F (1)", "\"F\" requires 1 parameters, but only 0 given !"},
        {"#F()", "\"F\" requires 1 parameters, but only 0 given !"},
        {"#P(1)", "\"P\" requires 2 parameters, but only 1 given !"},
        {"#P(1,2,3)", "\"P\" requires 2 parameters, but only 3 given !"},
        {"#A(1)", "\"A\" requires 0 parameters, but only 1 given !"},
        {"##P(1)", "\"P\" requires 2 parameters, but only 1 given !"},
        {"#define B #P(1)", "\"P\" requires 2 parameters, but only 1 given !"},
        {"#if #P(1)", "\"P\" requires 2 parameters, but only 1 given !"},
        {"#{ #P(1) }", "\"P\" requires 2 parameters, but only 1 given !"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(Failure(message, 5), UseFails(text)) << text;
}

TEST_F(DefineExpansionTest, AnArgumentMayHoldOneLevelOfParenthesesNotTwo)
{
    EXPECT_EQ(Failure("CPreprocessor::GetParams multiple nested parenthesis not supported", 5),
              UseFails("#F(g(h(1)))"));
    EXPECT_EQ(Failure("CPreprocessor::GetParams multiple nested parenthesis not supported", 5), UseFails("#P((()),1)"));
}

TEST_F(DefineExpansionTest, TheListOfArgumentsMustEndOnTheLine)
{
    for (const char* const line : {"#F(1", "#F(", "#F(g(1)", "#P(1,"}) {
        const std::string outcome = UseFails(line);
        const std::string start = Failure("\"" + std::string(1, line[1]) + "\" did not find end of parameters in ", 5);
        EXPECT_EQ(start, outcome.substr(0, start.size())) << line;
        EXPECT_EQ(" !", outcome.substr(outcome.size() - 2)) << line;
    }
}

TEST_F(DefineExpansionTest, AnArgumentWhoseDefinesCannotBeReplacedIsReportedWithTheReason)
{
    EXPECT_EQ(Failure("\"F\" error parsing parameters 'x #U y'->'x ' : \"U\" is not defined ! !", 5),
              UseFails("#F(x #U y)"));
    EXPECT_EQ(Failure("\"P\" error parsing parameters '#U'->'' : \"U\" is not defined ! !", 5), UseFails("#P(1,#U)"));
    EXPECT_EQ(Failure("\"F\" error parsing parameters '#F'->'' : \"F\" requires 1 parameters, but only 0 given ! !", 5),
              UseFails("#F(#F)"));
}

TEST_F(DefineExpansionTest, ParametersAreReplacedInTheValueByTheirWholeNames)
{
    EXPECT_EQ("1-2-\"1\"\n", Run("#define F(a,ab) #a-#ab-##a\n#F(1,2)"));
}

TEST_F(DefineExpansionTest, StringsInAValueAreCopiedUnchanged)
{
    EXPECT_EQ("'#a' \"##a\" 1 a\n", Run("#define F(a) '#a' \"##a\" #a a\n#F(1)"));
}

TEST_F(DefineExpansionTest, AParameterMayBeUsedOftenOrNever)
{
    EXPECT_EQ("111 x\n", Run("#define F(a) #a#a#a\n#define G(a) x\n#F(1) #G(1)"));
}

TEST_F(DefineExpansionTest, AParameterHidesADefineOfItsName)
{
    EXPECT_EQ("inner outer\n", Run("#define a outer\n#define F(a) #a\n#F(inner) #a"));
}

TEST_F(DefineExpansionTest, ADefineMayPassItsParametersOn)
{
    EXPECT_EQ("[<x>]\n", Run("#define F(a) <#a>\n#define G(b) [#F(#b)]\n#G(x)"));
}

TEST_F(DefineExpansionTest, AnExpansionIsNotScannedAgain)
{
    EXPECT_EQ("#{ 1 + 1 } ##{ 2 }\n", Run("#define S #{ 1 + 1 }\n#define T ##{ 2 }\n#S #T"));
    EXPECT_EQ("it's x // y /* #U\n", RunWith({"Q=it's", "C=// y", "D=/* #U"}, "#Q x #C #D"));
    EXPECT_EQ("<#b|1>\n", RunWith({"B=#b"}, "#define P(a,b) <#a|#b>\n#P(#B,1)"));
}

TEST_F(DefineExpansionTest, AConditionalTextChoosesByScript)
{
    const Case cases[] = {
        {"#C(1)", "one\n"},     {"#C(2)", "other\n"},  {"#C(1+0)", "one\n"},  {"##C(1)", "\"one\"\n"},
        {"#S(x)", "[yes x]\n"}, {"#S(y)", "[no y]\n"}, {"#N(1,1)", "both\n"}, {"#N(1,0)", "first\n"},
        {"#N(0,1)", "none\n"},  {"#T", "true\n"},      {"#E(0)", "<>\n"},     {"#M(1)", "a1 b1\n"},
    };
    const wxString defines = "#define C(a) #(#a==1?one:other)\n#define S(a) [#(##a==\"x\"?yes #a:no #a)]\n"
                             "#define N(a,b) #(#a?#(#b?both:first):none)\n#define T #(1==1?true:false)\n"
                             "#define E(a) <#(#a?x:)>\n#define M(a) #(#a?a#a:) #(#a?b#a:)";
    ASSERT_EQ("", Run(defines));
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(DefineExpansionTest, AConditionalTextNeedsAllItsParts)
{
    const struct
    {
        const char* value;
        const char* message;
    } cases[] = {
        {"#(#a)", "#(param?true:false) : Can not find question"},
        {"#(", "#(param?true:false) : Can not find question"},
        {"#(#a?x)", "#(param?true:false) : Can not find colon"},
        {"#(#a?x:y", "#(param?true:false) : Can not find close parenthesis"},
        {"#(nosuch + #a?x:y)", "#F : Can not evaluate question condition: nosuch + 1"},
    };
    for (const auto& [value, message] : cases) {
        pp.Clean();
        EXPECT_EQ(Failure(message, 2), Run(wxString("#define F(a) ") + value + "\nx #F(1)")) << value;
    }
}

TEST_F(DefineExpansionTest, TextsThatAreNotChosenAreNotDecided)
{
    EXPECT_EQ("y\n", Run("#define F(a) #(#a?#(nosuch?1:2):y)\n#F(0)"));
}

TEST_F(DefineExpansionTest, ApplyDefineDecidesConditionalTexts)
{
    pp.SetParser(&parser);
    Define("A=#(1?yes:no)");
    Define("B=#(nosuch?yes:no)");
    wxString result;
    EXPECT_EQ(0, pp.ApplyDefine("A", result));
    EXPECT_EQ("yes", result);
    EXPECT_EQ(-1, pp.ApplyDefine("B", result));
    EXPECT_EQ("-1, no unit: #B : Can not evaluate question condition: nosuch", LastFailure(parser, -1));
}

TEST_F(DefineExpansionTest, ADefineMayHaveManyParameters)
{
    for (const int count : {8, 9, 15000}) {
        wxString names;
        wxString value;
        wxString arguments;
        std::string expected;
        for (int number = 0; number < count; ++number) {
            const wxString separator = number == 0 ? "" : ",";
            names << separator << "p" << number;
            value << separator << "#p" << count - 1 - number;
            arguments << separator << number * 2;
            expected += (number == 0 ? "" : ",") + std::to_string((count - 1 - number) * 2);
        }
        pp.Clean();
        EXPECT_EQ(expected + "\n", Run("#define M(" + names + ") " + value + "\n#M(" + arguments + ")")) << count;
    }
}

TEST_F(DefineExpansionTest, TheFirstOfTwoParametersOfOneNameCounts)
{
    EXPECT_EQ("1 1\n", Run("#define D(a,a) #a #a\n#D(1,2)"));
    EXPECT_EQ("1 3\n", Run("#define L(a,a,c,d,e,f,g,h,i,j) #a #c\n#L(1,2,3,4,5,6,7,8,9,10)"));
}

TEST_F(DefineExpansionTest, AUseFailsAtTheLineOfTheUse)
{
    EXPECT_EQ(Failure("\"P\" requires 2 parameters, but only 1 given !", 6), UseFails("ok\nx #P(1)"));
}

} // namespace
