#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{

using DefineTableTest = PreprocessTest<>;
using RemoveDefinesTest = PreprocessTest<>;
using Table = std::set<std::string>;

wxArrayString Names(const std::vector<wxString>& names)
{
    wxArrayString array;
    for (const wxString& name : names)
        array.Add(name);
    return array;
}

TEST_F(DefineTableTest, AnAddedDefineIsThere)
{
    EXPECT_FALSE(pp.HasDefine("A"));
    pp.AddDefine("A", "1", wxArrayString());
    EXPECT_TRUE(pp.HasDefine("A"));
    EXPECT_FALSE(pp.HasDefine("a"));
    EXPECT_FALSE(pp.HasDefine(""));
    EXPECT_EQ("1\n", Run("#A"));
}

TEST_F(DefineTableTest, AnAddedDefineMayHaveParameters)
{
    pp.AddDefine("F", "<#a|#b>", Names({"a", "b"}));
    EXPECT_EQ("<1|2>\n", Run("#F(1,2)"));
}

TEST_F(DefineTableTest, TheValueOfAnAddedDefineIsTakenAsItIs)
{
    Define("A= it's #U // x ");
    EXPECT_EQ(Table{"#define A  it's #U // x "}, Defines());
}

TEST_F(DefineTableTest, AddingAndRemovingInAnyOrderLeavesWhatWasNotRemoved)
{
    std::map<std::string, std::string> expected;
    std::mt19937 random(1);
    for (int step = 0; step < 30'000; ++step) {
        // More names at some times than at others: the table fills, and empties again.
        const unsigned int names = step / 5'000 % 2 ? 50 : 2'000;
        const std::string name = "N" + std::to_string(random() % names);
        if (random() % 3 == 0) {
            pp.RemoveDefine(name);
            expected.erase(name);
        } else
            pp.AddDefine(name, expected.emplace(name, std::to_string(step)).first->second, wxArrayString());
    }
    Table lines;
    for (const auto& [name, value] : expected)
        lines.insert("#define " + name + " " + value);
    EXPECT_EQ(lines, Defines());
    for (int number = 0; number < 2'000; ++number) {
        const std::string name = "N" + std::to_string(number);
        EXPECT_EQ(expected.count(name) != 0, pp.HasDefine(name)) << name;
    }
    pp.Clean();
    EXPECT_EQ(Table(), Defines());
}

TEST_F(DefineTableTest, AddingTheSameValueAgainChangesNothing)
{
    pp.SetParser(&parser);
    pp.AddDefine("A", "1", wxArrayString());
    pp.AddDefine("A", "1", Names({"x"}));
    EXPECT_EQ(Table{"#define A 1"}, Defines());
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

TEST_F(DefineTableTest, AddingAnotherValueRecordsAMessageAndKeepsTheOldOne)
{
    pp.SetParser(&parser);
    pp.AddDefine("A", "old", wxArrayString());
    pp.AddDefine("A", "new", wxArrayString());
    EXPECT_EQ("0, no unit: \"A\" already defined in  (new was old)!", LastFailure(parser, 0));
    EXPECT_EQ(Table{"#define A old"}, Defines());
}

TEST_F(DefineTableTest, AddingNamesThePlaceOfTheDirectiveThatCameBefore)
{
    Run("\n#define A old");
    pp.AddDefine("A", "new", wxArrayString());
    EXPECT_EQ("0, no unit: \"A\" already defined in file \"main.txt\" line 2 (new was old)!", LastFailure(parser, 0));
}

TEST_F(DefineTableTest, AddingReplacesTheUnitOfAnEarlierError)
{
    Run("#define A old\n#NOPE");
    pp.AddDefine("A", "new", wxArrayString());
    EXPECT_EQ("0, no unit: \"A\" already defined in file \"main.txt\" line 1 (new was old)!", LastFailure(parser, 0));
}

TEST_F(DefineTableTest, RemovingErasesAName)
{
    pp.AddDefine("A", "1", wxArrayString());
    pp.RemoveDefine("B");
    EXPECT_TRUE(pp.HasDefine("A"));
    pp.RemoveDefine("A");
    EXPECT_FALSE(pp.HasDefine("A"));
}

TEST_F(DefineTableTest, ApplyDefineExpandsADefineWithoutArguments)
{
    pp.SetParser(&parser);
    Define("A=x 'y'");
    wxString result;
    EXPECT_EQ(0, pp.ApplyDefine("A", result));
    EXPECT_EQ("x 'y'", result);
}

TEST_F(DefineTableTest, ApplyDefineOfAnUnknownNameGives1)
{
    pp.SetParser(&parser);
    wxString result;
    EXPECT_EQ(1, pp.ApplyDefine("A", result));
    EXPECT_EQ("", result);
}

TEST_F(DefineTableTest, ApplyDefineCannotGiveArguments)
{
    pp.SetParser(&parser);
    pp.AddDefine("F", "#a", Names({"a"}));
    wxString result;
    EXPECT_EQ(-1, pp.ApplyDefine("F", result));
    EXPECT_EQ("-1, no unit: \"F\" requires 1 parameters, but only 0 given !", LastFailure(parser, -1));
}

TEST_F(DefineTableTest, CopyDefineToAddsEveryDefine)
{
    CPreprocessor other(&parser, true);
    Define("A=1");
    pp.AddDefine("F", "<#a>", Names({"a"}));
    Run("#define B 2");
    pp.CopyDefineTo(&other);
    wxString text;
    other.GetDefines(text);
    for (const char* const line : {"#define A 1\n", "#define F(a) <#a>\n", "#define B 2\n"})
        EXPECT_TRUE(text.Contains(line)) << line;
    EXPECT_EQ(3u, Defines().size());
}

TEST_F(DefineTableTest, CopyDefineToKeepsWhatTheOtherHasAndTellsItsParser)
{
    CParser receiver;
    CPreprocessor other(&receiver, true);
    other.AddDefine("A", "theirs", wxArrayString());
    Define("A=ours");
    pp.CopyDefineTo(&other);
    wxString text;
    other.GetDefines(text);
    EXPECT_EQ("#define A theirs\n", text);
    EXPECT_EQ("0, no unit: \"A\" already defined in  (ours was theirs)!", LastFailure(receiver, 0));
}

TEST_F(DefineTableTest, TheListOfAnEmptyTableIsEmpty)
{
    wxString text = "old";
    pp.GetDefines(text);
    EXPECT_EQ("", text);
}

TEST_F(DefineTableTest, TheListHasALineForEachDefine)
{
    pp.AddDefine("A", "1", wxArrayString());
    pp.AddDefine("E", "", wxArrayString());
    pp.AddDefine("F", "#a", Names({"a"}));
    pp.AddDefine("G", "#a #b #c", Names({"a", "b", "c"}));
    EXPECT_EQ((Table{"#define A 1", "#define E ", "#define F(a) #a", "#define G(a,b,c) #a #b #c"}), Defines());
}

TEST_F(DefineTableTest, TheListIsInTheOrderOfAdding)
{
    wxString expected;
    for (int number = 0; number < 300; ++number) {
        const wxString name = wxString::Format("N%d", number * 7919 % 300);
        pp.AddDefine(name, "x", wxArrayString());
        expected << "#define " << name << " x\n";
    }
    wxString text;
    pp.GetDefines(text);
    EXPECT_EQ(expected, text);
}

TEST_F(DefineTableTest, WhatIsAddedAfterARemovalComesInItsPlace)
{
    for (const char* const name : {"A", "B", "C"})
        pp.AddDefine(name, "x", wxArrayString());
    pp.RemoveDefine("B");
    wxString text;
    pp.GetDefines(text);
    EXPECT_EQ("#define A x\n#define C x\n", text);
    pp.AddDefine("D", "x", wxArrayString());
    pp.GetDefines(text);
    EXPECT_EQ("#define A x\n#define D x\n#define C x\n", text);
}

TEST_F(DefineTableTest, TheListCanBeReadBack)
{
    pp.AddDefine("A", "1", wxArrayString());
    pp.AddDefine("G", "#a '#b' ##b", Names({"a", "b"}));
    wxString text;
    pp.GetDefines(text);
    PreprocessBench<> other;
    EXPECT_EQ("", other.Run(text));
    EXPECT_EQ(Defines(), other.Defines());
}

TEST_F(DefineTableTest, TheTableIsUnlimited)
{
    for (int number = 0; number < 1000; ++number)
        Define(wxString::Format("N%d=%d", number, number));
    EXPECT_EQ(1000u, Defines().size());
    EXPECT_EQ("0 500 999\n", Run("#N0 #N500 #N999"));
}

TEST_F(RemoveDefinesTest, DefiningLinesOfListedNamesAreEmptied)
{
    static const wchar_t* names[] = {L"A", L"B", nullptr};
    const struct
    {
        const char* text;
        const char* left;
    } cases[] = {
        {"", ""},
        {"#define A 1\nx\n", "\nx\n"},
        {"x\n#define A 1", "x\n"},
        {"#redefine B 1\nx", "\nx"},
        {" \t#define \t A 1\nx", "\nx"},
        {"#define A\nx", "\nx"},
        {"#define A(a,b) #a\nx", "\nx"},
        {"#define A 1\r\n#define B 2\r\nx\r\n", "\r\n\r\nx\r\n"},
        {"#define A 1\rx\r#define B 2\r", "\rx\r\r"},
        {"a\n\n#define A 1\n\nb", "a\n\n\n\nb"},
    };
    for (const auto& [text, left] : cases) {
        wxString changed = text;
        CPreprocessor::BufferInPlaceRemoveDefines(changed, names);
        EXPECT_EQ(left, changed) << text;
    }
}

TEST_F(RemoveDefinesTest, EverythingElseStays)
{
    static const wchar_t* names[] = {L"A", nullptr};
    for (const char* const text :
         {"#define AB 1\n", "#define B #A\n", "#undef A\n", "#ifdef A\n#endif\n", "x #A\n", "x #define A 1\n",
          "#define a 1\n", "define A\n", "##define A 1\n", "#defined A\n", "#define\nA 1\n"}) {
        wxString changed = text;
        CPreprocessor::BufferInPlaceRemoveDefines(changed, names);
        EXPECT_EQ(text, changed);
    }
}

TEST_F(RemoveDefinesTest, AnEmptyListRemovesNothing)
{
    static const wchar_t* none[] = {nullptr};
    wxString text = "#define A 1\n#define B";
    CPreprocessor::BufferInPlaceRemoveDefines(text, none);
    EXPECT_EQ("#define A 1\n#define B", text);
}

} // namespace
