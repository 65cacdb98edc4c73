#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using ConditionalTest = PreprocessTest<>;

struct Case
{
    const char* text;
    const char* output;
};

TEST_F(ConditionalTest, IfdefKeepsTheFirstBranchOfADefinedName)
{
    EXPECT_EQ("a\nc\n", RunWith({"A=1"}, "#ifdef A\na\n#else\nb\n#endif\nc"));
}

TEST_F(ConditionalTest, IfdefKeepsTheElseBranchOfAnUndefinedName)
{
    EXPECT_EQ("b\nc\n", Run("#ifdef A\na\n#else\nb\n#endif\nc"));
}

TEST_F(ConditionalTest, IfndefIsTheReverse)
{
    EXPECT_EQ("a\n", Run("#ifndef A\na\n#else\nb\n#endif"));
    EXPECT_EQ("b\n", RunWith({"A="}, "#ifndef A\na\n#else\nb\n#endif"));
}

TEST_F(ConditionalTest, TheNameIsTheRunBehindBlanksAndTabs)
{
    Define("A=");
    const Case cases[] = {
        {"#ifdef \t A\na\n#endif", "a\n"},
        {"#ifdef A it's /* c\na\n#endif", "a\n"},
        {"#ifdef A+B\na\n#endif", "a\n"},
        {"#ifdef AB\na\n#endif", ""},
        {"#ifdef a\na\n#endif", ""},
        {"#ifdef(A)\na\n#endif", ""},
        {"#ifdef #A\na\n#endif", ""},
        {"#ifdef\na\n#else\nb\n#endif", "b\n"},
        {"#ifndef\na\n#else\nb\n#endif", "a\n"},
    };
    for (const auto& [text, output] : cases)
        EXPECT_EQ(output, Run(text)) << text;
}

TEST_F(ConditionalTest, TheRestOfTheLineBelongsToTheDirective)
{
    EXPECT_EQ("b\nc\n", Run("#if 0\n#else it's /* x\nb\n#endif \" */ #NOPE\nc"));
}

TEST_F(ConditionalTest, AnIfIsDecidedByScript)
{
    const struct
    {
        const char* condition;
        bool taken;
    } cases[] = {
        {"1", true},          {"0", false},           {"true", true},           {"false", false},
        {"1 < 2 && 3", true}, {"!1", false},          {"\"x\"", true},          {"\"\"", false},
        {"0/0", false},       {"null", false},        {"[].length == 0", true}, {"'a' + 'b' == 'ab'", true},
        {"1 // c", true},     {"0 /* c */", false},   {"#A == 2", true},        {"#A > 2", false},
        {"##A == '2'", true}, {"'#A' == '2'", false}, {"(#A)", true},           {"\t#A-2 ", false},
    };
    Define("A=2");
    for (const auto& [condition, taken] : cases)
        EXPECT_EQ(taken ? "a\n" : "b\n", Run(wxString("#if ") + condition + "\na\n#else\nb\n#endif")) << condition;
}

TEST_F(ConditionalTest, ConditionsMayFollowTheWordDirectly)
{
    EXPECT_EQ("1\n3\n", RunWith({"A=2"}, "#if(#A==2)\n1\n#endif\n#if(0)\n2\n#elif(#A)\n3\n#endif"));
}

TEST_F(ConditionalTest, ConditionsShareOneContext)
{
    EXPECT_EQ("a\nb\n", Run("#if x = 5\na\n#endif\n#if x == 5\nb\n#endif"));
}

TEST_F(ConditionalTest, AFailingConditionIsReportedAsWritten)
{
    EXPECT_EQ(Failure("#if : Can not evaluate condition:  nosuch", 2), Run("a\n#if nosuch\n#endif"));
    pp.Clean();
    EXPECT_EQ(Failure("#if : Can not evaluate condition:  )( ", 1), Run("#if )( \n#endif"));
    pp.Clean();
    EXPECT_EQ(Failure("#if : Can not evaluate condition:  nosuch + 2 ", 1),
              RunWith({"A=2"}, "#if nosuch + #A \n#endif"));
    pp.Clean();
    EXPECT_EQ(Failure("#elif : Can not evaluate condition:  )(", 2), Run("#if 0\n#elif )(\n#endif"));
    pp.Clean();
    EXPECT_EQ(Failure("#elseif : Can not evaluate condition:  )(", 3), Run("#if 0\n#elif 0\n#elseif )(\n#endif"));
}

TEST_F(ConditionalTest, AFailingIfKeepsDirectiveAndCondition)
{
    CParserBlock block(nullptr);
    block.CreateUnit(wxSharedPtr<CParserFile>(), "#if )(", 1);
    _BlockPosition position = {&block, 0, block.GetUnit(0), false};
    pp.SetParser(&parser);
    const std::wstring line = L"#if )(";
    const wchar_t* next = nullptr;
    wxString output;
    EXPECT_EQ(-1, pp.DirectiveApply(output, line.c_str(), line.c_str() + line.size(), &next, position));
    EXPECT_EQ("#if )(", output);
}

TEST_F(ConditionalTest, AnUnknownDefineInAConditionIsReportedAsSuch)
{
    for (const char* const text : {"a\n#if #U\n#endif", "#if 0\n#elif 1 + #U\n#endif", "#if 0\n#elseif #U\n#endif"}) {
        pp.Clean();
        EXPECT_EQ(Failure("\"U\" is not defined !", 2), Run(text)) << text;
    }
}

TEST_F(ConditionalTest, AStringInAConditionMustBeTerminated)
{
    EXPECT_EQ(Failure("String not terminated !", 1), Run("#if 'a\n#endif"));
}

TEST_F(ConditionalTest, OnlyTheFirstTrueBranchIsKept)
{
    EXPECT_EQ("b\n", Run("#if 0\na\n#elif 1\nb\n#elif 1\nc\n#else\nd\n#endif"));
    const wxString chain = "#if #N == 1\none\n#elif #N == 2\ntwo\n#elseif #N == 3\nthree\n#else\nother\n#endif";
    const char* const outputs[] = {"one\n", "two\n", "three\n", "other\n"};
    for (int n = 1; n <= 4; ++n) {
        pp.RemoveDefine("N");
        EXPECT_EQ(outputs[n - 1], RunWith({"N=" + std::to_string(n)}, chain)) << n;
    }
}

TEST_F(ConditionalTest, AnElifAfterATakenBranchIsNotEvaluated)
{
    EXPECT_EQ("a\n", Run("#if 1\na\n#elif nosuch(((\nb\n#elseif #UNKNOWN\nc\n#endif"));
}

TEST_F(ConditionalTest, AnElifAfterAnElseIsNeverTaken)
{
    EXPECT_EQ("b\n", Run("#if 0\na\n#else\nb\n#elif 1\nc\n#elseifdef A\nd\n#endif"));
    EXPECT_EQ("a\n", Run("#if 1\na\n#else\nb\n#elif 1\nc\n#endif"));
}

TEST_F(ConditionalTest, ASecondElseOfATakenSectionIsKept)
{
    // The first "else" leaves the state of a skipped "else", and that is no longer one of a taken branch.
    EXPECT_EQ("a\nc\n", Run("#if 1\na\n#else\nb\n#else\nc\n#endif"));
    EXPECT_EQ("b\nc\n", Run("#if 0\na\n#else\nb\n#else\nc\n#endif"));
}

TEST_F(ConditionalTest, AnElseAfterAnElifBehindAnElseIsSkipped)
{
    EXPECT_EQ("b\n", Run("#if 0\na\n#else\nb\n#elif 1\nc\n#else\nd\n#endif"));
}

TEST_F(ConditionalTest, ElseifdefLooksANameUp)
{
    const wxString chain = "#ifdef A\na\n#elseifdef B\nb\n#elseifdef C\nc\n#else\nd\n#endif";
    EXPECT_EQ("d\n", Run(chain));
    EXPECT_EQ("c\n", RunWith({"C="}, chain));
    EXPECT_EQ("b\n", RunWith({"B="}, chain));
    EXPECT_EQ("a\n", RunWith({"A="}, chain));
}

TEST_F(ConditionalTest, ElseifdefAfterATakenBranchIsSkipped)
{
    EXPECT_EQ("a\n", RunWith({"A="}, "#if 1\na\n#elseifdef A\nb\n#elseifdef U\nc\n#else\nd\n#endif"));
}

TEST_F(ConditionalTest, TheKindsOfBranchesMix)
{
    Define("A=1");
    EXPECT_EQ("b\n", Run("#ifdef U\na\n#elif #A\nb\n#elseifdef A\nc\n#endif"));
    EXPECT_EQ("c\n", Run("#ifndef A\na\n#elif 0\nb\n#elseifdef A\nc\n#else\nd\n#endif"));
}

TEST_F(ConditionalTest, SectionsNest)
{
    const wxString text =
        "#if #A\n1\n#if #B\n2\n#else\n3\n#endif\n4\n#else\n5\n#if #B\n6\n#else\n7\n#endif\n8\n#endif\n9";
    const Case cases[] = {
        {"11", "1\n2\n4\n9\n"}, {"10", "1\n3\n4\n9\n"}, {"01", "5\n6\n8\n9\n"}, {"00", "5\n7\n8\n9\n"}};
    for (const auto& [values, output] : cases) {
        pp.Clean();
        EXPECT_EQ(output, RunWith({std::string("A=") + values[0], std::string("B=") + values[1]}, text)) << values;
    }
}

TEST_F(ConditionalTest, ASectionInsideASkippedOneStaysSkippedInAllItsBranches)
{
    Define("A=");
    const char* const sections[] = {
        "#if 1\nx\n#else\nx\n#endif",
        "#if 0\nx\n#else\nx\n#endif",
        "#ifdef A\nx\n#elif 1\nx\n#else\nx\n#endif",
        "#ifndef A\nx\n#elif 1\nx\n#elseif 1\nx\n#elseifdef A\nx\n#else\nx\n#else\nx\n#endif",
        "#if 0\nx\n#elseifdef A\nx\n#else\nx\n#endif",
        "#if 0\n#if 0\nx\n#else\nx\n#endif\nx\n#else\nx\n#endif",
    };
    for (const wxString section : sections) {
        EXPECT_EQ("z\n", Run("#if 0\n" + section + "\nx\n#endif\nz")) << section.utf8_string();
        EXPECT_EQ("y\nz\n", Run("#if 1\ny\n#else\n" + section + "\nx\n#endif\nz")) << section.utf8_string();
    }
}

TEST_F(ConditionalTest, ConditionsInsideASkippedSectionAreNotEvaluated)
{
    EXPECT_EQ("z\n",
              Run("#if 0\n#if nosuch(((\n#elif )(\n#elseif #U\n#endif\n#if #U\n#endif\n#if 'a\n#endif\n#endif\nz"));
    EXPECT_EQ("undefined\n", Run("#if 0\n#if seen = 1\n#elif seen = 1\n#endif\n#endif\n"
                                 "#if typeof seen == 'undefined'\nundefined\n#endif"));
}

TEST_F(ConditionalTest, ABranchOrEndNeedsASection)
{
    const Case cases[] = {
        {"#else", "#else without #ifdef"},       {"#elif 1", "#elif without #if"},
        {"#elseif 1", "#elseif without #if"},    {"#elseifdef A", "#elseifdef without #ifdef"},
        {"#endif", "#endif without #ifdef"},     {"#elif )(", "#elif without #if"},
        {"  #endif x", "#endif without #ifdef"},
    };
    for (const auto& [line, message] : cases)
        EXPECT_EQ(Failure(message, 4), Run(wxString("a\n#if 1\n#endif\n") + line)) << line;
}

TEST_F(ConditionalTest, AnOpenSectionIsReportedWithThePlaceWhereTheInnermostStarted)
{
    const std::string message = "Missing #endif for #ifdef started file \"main.txt\" line 2!";
    EXPECT_EQ(FailureWithoutUnit(message), Run("a\n#if 1\nb"));
    EXPECT_EQ(FailureWithoutUnit(message), Run("#ifdef A\n#ifndef B\n#if 0\n#endif\n#else"));
    EXPECT_EQ(FailureWithoutUnit(message), Run("\n#if 0\n#elif 1\n#else"));
}

TEST_F(ConditionalTest, AMissingEndEmptiesTheStack)
{
    Run("#if 1\n#if 0\n#if 0");
    EXPECT_EQ("a\n", Run("a"));
    EXPECT_EQ(Failure("#endif without #ifdef", 1), Run("#endif"));
}

TEST_F(ConditionalTest, TheEndCheckOfNoOpenSectionsIsFine)
{
    CParserBlock block(nullptr);
    pp.SetParser(&parser);
    EXPECT_EQ(0, pp.DirectiveEndCheck({&block, 0, nullptr, false}));
}

TEST_F(ConditionalTest, EndifRestoresSkippingOnly)
{
    EXPECT_EQ("a\nb\n", Run("#if 1\n#if 0\nx\n#endif\na\n#endif\nb"));
}

TEST_F(ConditionalTest, DirectiveLinesLeaveNoUnits)
{
    pp.SetTrim(false);
    EXPECT_EQ("\na\n\n\n\n", Run("#if 1\na\n#else\nb\n#endif"));
}

class PreprocessConditionTest : public PreprocessTest<>
{
protected:
    /// A rewritten condition and, behind a blank, the result.
    std::string Rewrite(wxString condition)
    {
        const long result = pp.PreprocessCondition(condition);
        return condition.utf8_string() + " " + std::to_string(result);
    }
};

TEST_F(PreprocessConditionTest, EveryUseOfDefinedBecomesAScriptValue)
{
    Define("A=");
    const Case cases[] = {
        {"", " 0"},
        {"1 + 2", "1 + 2 0"},
        {"defined(A)", "true 0"},
        {"defined(B)", "false 0"},
        {"defined(a)", "false 0"},
        {"defined( \t A \t )", "true 0"},
        {"defined \t (A)", "true 0"},
        {"defined()", "false 0"},
        {"!defined(A)&&(defined(B)||defined (A))", "!true&&(false||true) 0"},
        {"defined((A))", "false) 0"},
        {"#defined(A)", "#true 0"},
        {".defined(A)", ".true 0"},
        {"\"defined(A)\"", "\"true\" 0"},
        {"defined(A", "defined(A 0"},
    };
    for (const auto& [condition, rewritten] : cases)
        EXPECT_EQ(rewritten, Rewrite(condition)) << condition;
}

TEST_F(PreprocessConditionTest, OtherWordsAreLeftAsTheyAre)
{
    Define("A=");
    for (const std::string condition : {"undefined(A)", "_defined(A)", "9defined(A)", "definedA", "defined A",
                                        "defined", "defined[A]", "definedx(A)", "defined + (A)", "Defined(A)"})
        EXPECT_EQ(condition + " 0", Rewrite(condition));
    EXPECT_EQ("defined A true 0", Rewrite("defined A defined(A)"));
}

TEST_F(PreprocessConditionTest, PartialModeKeepsWhatItCannotDecideYet)
{
    Define("A=");
    pp.SetPartialMode(true);
    EXPECT_EQ("true 0", Rewrite("defined(A)"));
    EXPECT_EQ("defined(B) 1", Rewrite("defined(B)"));
    EXPECT_EQ("defined(B) 1", Rewrite("defined \t( B )"));
    EXPECT_EQ("true && defined(B) || true 1", Rewrite("defined(A) && defined( B) || defined(A)"));
}

} // namespace
