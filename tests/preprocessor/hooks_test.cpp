#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

/// A preprocessor whose hooks give the results of a test's choice and note what they were called with. A result of Base
/// has the base class do it.
class HookedPreprocessor : public CPreprocessor
{
public:
    static constexpr long Base = 1000;

    using CPreprocessor::CPreprocessor;

    void DirectiveStartBlock() override
    {
        calls.push_back("start");
        CPreprocessor::DirectiveStartBlock();
    }

    long DirectiveApply(wxString& output, const wchar_t* at, const wchar_t* end, const wchar_t** next,
                        _BlockPosition& position) override
    {
        calls.push_back("apply " + wxString(at, end).utf8_string() + " after '" + output.utf8_string() + "' in slot " +
                        std::to_string(position.m_index) + " " + position.m_unit->GetContext().utf8_string());
        if (applied == Base)
            return CPreprocessor::DirectiveApply(output, at, end, next, position);
        output += "!";
        *next = at + 2;
        return applied;
    }

    long DirectiveEndCheck(const _BlockPosition& position) override
    {
        calls.push_back("end");
        return endChecked == Base ? CPreprocessor::DirectiveEndCheck(position) : endChecked;
    }

    long Include(const wxString& argument, _BlockPosition& position) override
    {
        calls.push_back("include" + argument.utf8_string());
        return included == Base ? CPreprocessor::Include(argument, position) : included;
    }

    long ApplyFor(const wxString& arguments, _BlockPosition& position) override
    {
        calls.push_back("for" + arguments.utf8_string());
        return looped == Base ? CPreprocessor::ApplyFor(arguments, position) : looped;
    }

    void IncludeRead(const wxString& path) override { calls.push_back("read " + path.utf8_string()); }

    void WarningGiven(const wxString& text, const CParserUnit& unit) override
    {
        calls.push_back("warning" + text.utf8_string() + " at " + unit.GetContext().utf8_string());
    }

    Texts calls;
    long applied = Base;
    long endChecked = Base;
    long included = Base;
    long looped = Base;
};

using HooksTest = PreprocessTest<HookedPreprocessor>;

TEST_F(HooksTest, ANewPreprocessorIsActiveCompleteAndEmpty)
{
    CPreprocessor fresh(&parser, true);
    EXPECT_EQ(&parser, fresh.GetParser());
    EXPECT_FALSE(fresh.WasPartial());
    EXPECT_EQ(CDir().GetFullPath(), fresh.GetDir().GetFullPath());
    wxString defines;
    fresh.GetDefines(defines);
    EXPECT_EQ("", defines);
    CParserBlock block(nullptr);
    block.CreateUnit(wxSharedPtr<CParserFile>(), " #U", 1);
    EXPECT_EQ(-1, fresh.PreprocessBlock(&block));
}

TEST_F(HooksTest, TheSearchDirectoryIsACopy)
{
    const TempDirectory place;
    CDir dir = place.Dir();
    pp.SetDir(dir);
    dir = CDir("/");
    EXPECT_EQ(place.Path(), pp.GetDir().GetFullPath());
    CDir given = pp.GetDir();
    given = CDir("/");
    EXPECT_EQ(place.Path(), pp.GetDir().GetFullPath());
}

TEST_F(HooksTest, EveryBlockIsStartedAndEndChecked)
{
    EXPECT_EQ("a\n", Run("a"));
    EXPECT_EQ((Texts{"start", "end"}), pp.calls);
}

TEST_F(HooksTest, AnErrorSkipsTheEndCheck)
{
    Run("*/");
    EXPECT_EQ(Texts{"start"}, pp.calls);
}

TEST_F(HooksTest, ADeactivatedPreprocessorCallsNoHooks)
{
    pp.Desactivate();
    Run("#if 1");
    EXPECT_EQ(Texts{}, pp.calls);
}

TEST_F(HooksTest, ApplyIsToldTheNumberSignTheOutputAndTheUnit)
{
    pp.applied = 0;
    EXPECT_EQ("a\nb !cd \"#\" !ef\n", Run("a\n b #Xcd \"#\" #Yef"));
    EXPECT_EQ((Texts{"start", "apply #Xcd \"#\" #Yef after ' b ' in slot 1 file \"main.txt\" line 2",
                     "apply #Yef after ' b !cd \"#\" ' in slot 1 file \"main.txt\" line 2", "end"}),
              pp.calls);
}

TEST_F(HooksTest, AnApplyOf0ResumesWhereItSays)
{
    pp.applied = 0;
    EXPECT_EQ("b !cd !ef\n", Run("b #Xcd #Yef"));
}

TEST_F(HooksTest, AnApplyOf1IsAnUnknownDefine)
{
    pp.applied = 1;
    EXPECT_EQ(Failure("Unknown define in : #FOO rest // x", 2), Run("a\nb #FOO rest // x"));
}

TEST_F(HooksTest, AnApplyOf1IsIgnoredInPartialMode)
{
    pp.applied = 1;
    EXPECT_EQ("b !OO rest\n", RunPartial("b #FOO rest"));
}

TEST_F(HooksTest, AnApplyOf1IsIgnoredWhileSkipping)
{
    class SkippingThen1 : public CPreprocessor
    {
    public:
        using CPreprocessor::CPreprocessor;
        long DirectiveApply(wxString& output, const wchar_t* at, const wchar_t* end, const wchar_t** next,
                            _BlockPosition& position) override
        {
            if (at[1] != 'X')
                return CPreprocessor::DirectiveApply(output, at, end, next, position);
            *next = end;
            return 1;
        }
    };
    PreprocessBench<SkippingThen1> bench;
    EXPECT_EQ("a\n", bench.Run("#if 0\n#X\n#endif\na"));
    EXPECT_EQ(Failure("Unknown define in : #X", 1), bench.Run("#X"));
}

TEST_F(HooksTest, AnyOtherResultOfApplyIsPassedUp)
{
    for (const long result : {7L, -1L, -5L, 2L}) {
        pp.applied = result;
        EXPECT_EQ(std::to_string(result) + ", no unit: ", Run("a\n#FOO\nb"));
    }
    EXPECT_EQ("a\n#FOO\nb\n", Text());
}

TEST_F(HooksTest, TheResultOfTheEndCheckIsPassedUp)
{
    pp.endChecked = 7;
    EXPECT_EQ("7, no unit: ", Run("a"));
    EXPECT_EQ("a\n", Text());
}

TEST_F(HooksTest, IncludeIsGivenTheRestOfTheLine)
{
    pp.included = 0;
    EXPECT_EQ("a\n", Run("#include \"x.txt\" // c\na"));
    EXPECT_EQ("include \"x.txt\" // c", pp.calls[2]);
}

TEST_F(HooksTest, AnIncludeOf1IsAFailure)
{
    pp.included = 1;
    EXPECT_EQ("-1, no unit: ", Run("#include \"x.txt\"\na"));
}

TEST_F(HooksTest, AnyOtherResultOfIncludeIsPassedUp)
{
    for (const long result : {7L, -1L, 2L}) {
        pp.included = result;
        EXPECT_EQ(std::to_string(result) + ", no unit: ", Run("#include \"x.txt\"\na"));
    }
}

TEST_F(HooksTest, ForIsGivenTheRestOfTheLine)
{
    pp.looped = 0;
    EXPECT_EQ("a\n", Run("#for i 1;2;1 // c\na"));
    EXPECT_EQ("for i 1;2;1 // c", pp.calls[2]);
}

TEST_F(HooksTest, AForOf1IsAnUnknownDefineOutsidePartialMode)
{
    pp.looped = 1;
    EXPECT_EQ(Failure("Unknown define in : #for i 1;2;1", 1), Run("#for i 1;2;1\na"));
}

TEST_F(HooksTest, AForOf1LeavesTheEndOfTheLoopInPartialMode)
{
    pp.looped = 1;
    EXPECT_EQ("#endfor\na\n", RunPartial("#for i 1;2;1\na"));
}

TEST_F(HooksTest, AnyOtherResultOfForIsPassedUp)
{
    for (const long result : {7L, -1L, 2L}) {
        pp.looped = result;
        EXPECT_EQ(std::to_string(result) + ", no unit: ", Run("#for i 1;2;1\na"));
    }
}

TEST_F(HooksTest, IncludedAndRepeatedTextsRunThroughTheHooks)
{
    const TempDirectory place;
    place.Put("dir/i.txt", "b");
    CDir dir = place.Dir();
    parser.SetDir(dir);
    EXPECT_EQ("b\n", Run("#include \"dir/i.txt\""));
    EXPECT_EQ((Texts{"start", "apply #include \"dir/i.txt\" after '' in slot 0 file \"main.txt\" line 1",
                     "include \"dir/i.txt\"", "read dir/i.txt", "start", "end", "end"}),
              pp.calls);
    pp.calls.clear();
    EXPECT_EQ("b\nb\n", Run("#for i 1;2;1\nb\n#endfor"));
    EXPECT_EQ((Texts{"start", "apply #for i 1;2;1 after '' in slot 0 file \"main.txt\" line 1", "for i 1;2;1", "start",
                     "end", "start", "end", "end"}),
              pp.calls);
}

TEST_F(HooksTest, NestedResultsOfHooksArePassedUp)
{
    const TempDirectory place;
    place.Put("i.txt", "#for i 1;2;1\nb\n#endfor");
    CDir dir = place.Dir();
    parser.SetDir(dir);
    pp.looped = 7;
    EXPECT_EQ("7, no unit: ", Run("#include \"i.txt\""));
    pp.looped = HookedPreprocessor::Base;
    pp.included = 8;
    EXPECT_EQ("8, no unit: ", Run("#for i 1;2;1\n#include \"i.txt\"\n#endfor"));
}

TEST_F(HooksTest, WarningsAreGivenWithTheirTextAndUnit)
{
    EXPECT_EQ("a\n", Run("a\n#warning b c"));
    EXPECT_EQ("warning b c at file \"main.txt\" line 2", pp.calls[2]);
    EXPECT_TRUE(log.Texts(wxLOG_Warning).empty());
}

TEST_F(HooksTest, OnlyFilesThatWereReadAreToldOf)
{
    Run("#include \"no.txt\"");
    for (const std::string& call : pp.calls)
        EXPECT_NE("read", call.substr(0, 4));
}

/// A block that does not give up the units of its choice.
class StubbornBlock : public CParserBlock
{
public:
    explicit StubbornBlock(long result) : CParserBlock(nullptr), m_result(result) {}
    long RemoveElement(CParserUnit* unit, int* pos, int deleteIt) override
    {
        removed.push_back(deleteIt);
        return m_result ? m_result : CParserBlock::RemoveElement(unit, pos, deleteIt);
    }
    std::vector<int> removed;

private:
    long m_result;
};

TEST_F(HooksTest, ABlockThatKeepsAnEmptyUnitEndsTheScanWithItsResult)
{
    StubbornBlock block(5);
    for (const char* const line : {" a ", "// c", " b "})
        block.CreateUnit(wxSharedPtr<CParserFile>(), line, 1);
    EXPECT_EQ("5, no unit: ", Process(block));
    EXPECT_EQ("a\n", TextOf(block).substr(0, 2));
    EXPECT_EQ(" b ", block.GetUnit(2)->m_text);
}

TEST_F(HooksTest, EmptyUnitsAreDeletedThroughTheBlock)
{
    StubbornBlock block(0);
    for (const char* const line : {"a", "// c", " "})
        block.CreateUnit(wxSharedPtr<CParserFile>(), line, 1);
    EXPECT_EQ("a\n", Process(block));
    EXPECT_EQ((std::vector<int>{1, 1}), block.removed);
}

} // namespace
