#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace
{

using DefineTest = PreprocessTest<>;
using RedefineTest = PreprocessTest<>;
using UndefTest = PreprocessTest<>;
using Table = std::set<std::string>;

TEST_F(DefineTest, ADefineReplacesItsUses)
{
    EXPECT_EQ("x 1 1,1\n", Run("#define A 1\nx #A #A,#A"));
}

TEST_F(DefineTest, BareNamesAreNeverReplaced)
{
    EXPECT_EQ("A A1\n", Run("#define A 1\nA A#A"));
}

TEST_F(DefineTest, NamesAreComparedWithCase)
{
    EXPECT_EQ("low up\n", Run("#define a low\n#define A up\n#a #A"));
}

TEST_F(DefineTest, ANameIsAnyRunOfLettersDigitsAndUnderscores)
{
    EXPECT_EQ("u d e\n", Run("#define _x9 u\n#define 333 d\n#define _ e\n#_x9 #333 #_"));
}

TEST_F(DefineTest, BlanksAndTabsMayStandBeforeTheName)
{
    EXPECT_EQ("1\n", Run("#define \t A\t 1\n#A"));
}

TEST_F(DefineTest, ADefineNeedsAName)
{
    for (const char* const line : {"#define", "#define  ", "#define (a) b", "#define -A 1", "#define \"A\" 1"})
        EXPECT_EQ(Failure(std::string("No Define name in line: ") + line, 2), Run(wxString("a\n") + line)) << line;
}

TEST_F(DefineTest, TheMessageAboutAMissingNameShowsTheWholeLine)
{
    for (const char* const line : {"  #define (a) b", "\t/* c */ #define ", " #redefine\t"})
        EXPECT_EQ(Failure(std::string("No Define name in line: ") + line, 1), Run(line)) << line;
}

TEST_F(DefineTest, TheValueIsTheTrimmedRestOfTheLine)
{
    const struct
    {
        const char* line;
        const char* listed;
    } cases[] = {
        {"#define A", "#define A "},
        {"#define A \t ", "#define A "},
        {"#define A \t x  y \t", "#define A x  y"},
        {"#define A 1 // x", "#define A 1 // x"},
        {"#define A 1 /* x", "#define A 1 /* x"},
        {"#define A \"b c\" 'd'", "#define A \"b c\" 'd'"},
        {"#define A (1)", "#define A (1)"},
        {"#define A-1", "#define A -1"},
        {"#define A#{ 1 }", "#define A #{ 1 }"},
    };
    for (const auto& [line, listed] : cases) {
        pp.Clean();
        EXPECT_EQ("", Run(line)) << line;
        EXPECT_EQ(Table{listed}, Defines()) << line;
    }
}

TEST_F(DefineTest, ParametersFollowTheNameDirectly)
{
    Run("#define F(a,b) x\n#define G (a) x\n#define H( a , b ) x\n#define I() x");
    EXPECT_EQ((Table{"#define F(a,b) x", "#define G (a) x", "#define H(a,b) x", "#define I x"}), Defines());
}

TEST_F(DefineTest, AListOfParametersMustEndOnTheLine)
{
    const std::string outcome = Run("a\n#define F(a,b\nc)");
    const std::string start = Failure("\"F\" did not find end of parameters in ", 2);
    EXPECT_EQ(start, outcome.substr(0, start.size()));
    EXPECT_EQ(Table{}, Defines());
}

TEST_F(DefineTest, AListOfParametersHoldsNoNestedParentheses)
{
    EXPECT_EQ(Failure("CPreprocessor::GetParams multiple nested parenthesis not supported", 2),
              Run("a\n#define F(((a))) x"));
    EXPECT_EQ(Table{}, Defines());
}

TEST_F(DefineTest, TheValueIsExpandedWhenItIsDefined)
{
    EXPECT_EQ("1+1 9\n1+1\n", Run("#define A 1\n#define B #A+#A\n#redefine A 9\n#B #A\n#undef A\n#B"));
}

TEST_F(DefineTest, TheValueKeepsStringsAndTheNamesOfItsParameters)
{
    Run("#define a 1\n#define F(a) #a ##a '#a' \"#a\"");
    EXPECT_EQ((Table{"#define a 1", "#define F(a) #a ##a '#a' \"#a\""}), Defines());
}

TEST_F(DefineTest, AStringInTheValueMustBeTerminated)
{
    EXPECT_EQ(Failure("String not terminated !", 2), Run("a\n#define A it's"));
    EXPECT_FALSE(pp.HasDefine("A"));
}

TEST_F(DefineTest, AnUnknownNameInTheValueIsAnErrorAndDefinesNothing)
{
    EXPECT_EQ(Failure("\"U\" is not defined !", 2), Run("a\n#define A #U"));
    EXPECT_EQ(Table{}, Defines());
    EXPECT_EQ(Failure("\"A\" is not defined !", 1), Run("#define A #A"));
    EXPECT_EQ(Table{}, Defines());
}

TEST_F(DefineTest, AnIdenticalRedefinitionIsAcceptedSilently)
{
    EXPECT_EQ("x y x y\n", Run("#define A x y\n#define A   x y  \n#define B #A\n#define B x y\n#A #B"));
}

TEST_F(DefineTest, AnotherValueIsAnErrorThatNamesPlaceNewAndOldValue)
{
    EXPECT_EQ(Failure("\"A\" already defined in file \"main.txt\" line 2 (two was one) !", 4),
              Run("a\n#define A one\n\n#define A two"));
    EXPECT_EQ(Table{"#define A one"}, Defines());
}

TEST_F(DefineTest, ADefineOfTheHostHasNoPlace)
{
    EXPECT_EQ(Failure("\"A\" already defined in  (2 was 1) !", 1), RunWith({"A=1"}, "#define A 2"));
}

TEST_F(DefineTest, DefinesLastFromTextToText)
{
    Run("#define A 1", "a.txt");
    EXPECT_EQ("1\n", Run("#A", "b.txt"));
    EXPECT_EQ(Failure("\"A\" already defined in file \"a.txt\" line 1 (2 was 1) !", 1), Run("#define A 2"));
}

TEST_F(DefineTest, SkippedDirectivesDoNotTouchTheTable)
{
    EXPECT_EQ("", RunWith({"A=1"}, "#if 0\n#define B 2\n#redefine A 3\n#undef A\n#undef U\n#redefine U 1\n#define\n"
                                   "#define C it\n#endif"));
    EXPECT_EQ(Table{"#define A 1"}, Defines());
}

TEST_F(RedefineTest, ItReplacesTheValueTheParametersAndTheOrigin)
{
    Run("#define F(a) x #a\n#redefine F(b,c) #b #c y");
    EXPECT_EQ(Table{"#define F(b,c) #b #c y"}, Defines());
    EXPECT_EQ(Failure("\"F\" already defined in file \"main.txt\" line 2 (z was #b #c y) !", 1), Run("#define F z"));
}

TEST_F(RedefineTest, TheNewValueIsExpandedWithTheOldOne)
{
    EXPECT_EQ("2\n22\n", Run("#define A 1\n#redefine A 2\n#A\n#redefine A #A#A\n#A"));
}

TEST_F(RedefineTest, ADefineOfTheHostCanBeRedefined)
{
    EXPECT_EQ("2\n", RunWith({"A=1"}, "#redefine A 2\n#A"));
}

TEST_F(RedefineTest, AnUnknownNameIsAnError)
{
    EXPECT_EQ(Failure("\"A\" not defined!", 2), Run("a\n#redefine A 2"));
    EXPECT_FALSE(pp.HasDefine("A"));
}

TEST_F(RedefineTest, ItNeedsAName)
{
    EXPECT_EQ(Failure("No Define name in line: #redefine (x)", 1), Run("#redefine (x)"));
}

TEST_F(RedefineTest, AFailingValueLeavesTheDefineAsItWas)
{
    EXPECT_EQ(Failure("\"U\" is not defined !", 2), Run("#define A 1\n#redefine A #U"));
    EXPECT_EQ(Table{"#define A 1"}, Defines());
}

TEST_F(UndefTest, ItErasesTheName)
{
    EXPECT_EQ("", Run("#define A 1\n#define F(a) 1\n#undef \t A\n#undef F"));
    EXPECT_EQ(Table{}, Defines());
}

TEST_F(UndefTest, TheRestOfTheLineBelongsToIt)
{
    EXPECT_EQ("b\n", Run("#define A 1\n#undef A it's /* c\nb"));
    EXPECT_EQ(Table{}, Defines());
}

TEST_F(UndefTest, ANameCanBeDefinedAnew)
{
    EXPECT_EQ("2\n", Run("#define A 1\n#undef A\n#define A 2\n#A"));
}

TEST_F(UndefTest, AnUnknownNameIsAnError)
{
    EXPECT_EQ(Failure("\"A\" not defined!", 2), Run("a\n#undef A"));
    EXPECT_EQ(Failure("\"\" not defined!", 1), Run("#undef"));
}

} // namespace
