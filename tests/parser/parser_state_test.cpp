#include "parser/parser.h"
#include "tests/support/counted_unit.h"
#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

TEST(ParserStateTest, CleanDeletesBlocksAndForgetsFiles)
{
    int alive = 0;
    CParser parser;
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    const wxSharedPtr<CParserFile> file = parser.GetLastBlock(0)->GetUnit(0)->m_file;
    parser.GetLastBlock(0)->Append(new CountedUnit(alive));
    parser.Clean();
    EXPECT_EQ(0, alive);
    EXPECT_EQ(1, file.use_count());
    EXPECT_EQ(nullptr, parser.GetFileRef(file.get()).get());
}

TEST(ParserStateTest, CleanKeepsWhatTheHostHasSet)
{
    const TempDirectory place;
    place.Put("inc.txt", "x\n\ny\n");
    CDir dir = place.Dir();
    CParser parser;
    parser.SetDir(dir);
    parser.KeepEmptyLines();
    parser.SetError("message", nullptr);
    parser.Clean();
    wxString message;
    parser.GetLastErrorStr(&message);
    EXPECT_EQ("message", message);
    ASSERT_EQ(0, parser.Parse("#include \"inc.txt\"\n\n", "a.txt", nullptr, false));
    EXPECT_EQ("x\ny\n", TextOf(*parser.GetLastBlock(0)));
    CPreprocessor untrimmed(nullptr, false);
    parser.Clean();
    CParser keeping(&untrimmed);
    keeping.KeepEmptyLines();
    keeping.Clean();
    ASSERT_EQ(0, keeping.Parse("a\n\nb", "a.txt", nullptr, false));
    EXPECT_EQ("a\n\nb\n", TextOf(*keeping.GetLastBlock(0)));
}

TEST(ParserStateTest, CleanForgetsTheRemoveList)
{
    static const wchar_t* names[] = {L"A", nullptr};
    CParser parser;
    parser.SetRemoveDefines(names);
    parser.Clean();
    ASSERT_EQ(0, parser.Parse("#define A 1", "a.txt", nullptr, true));
    EXPECT_TRUE(parser.GetPP()->HasDefine("A"));
}

TEST(ParserStateTest, TheMessageOutlivesCleanItsUnitDoesNot)
{
    CParser parser;
    ASSERT_EQ(-1, parser.Parse("a\n#B", "a.txt", nullptr, false));
    parser.Clean();
    EXPECT_EQ("-1, no unit: \"B\" is not defined !", LastFailure(parser, -1));
}

TEST(ParserStateTest, InitRunsTheCleanOfTheDerivedClass)
{
    class CountingParser : public CParser
    {
    public:
        void Clean() override
        {
            ++cleaned;
            CParser::Clean();
        }
        int cleaned = 0;
    } parser;
    parser.Init();
    EXPECT_EQ(1, parser.cleaned);
}

TEST(ParserStateTest, InitForgetsBlocks)
{
    int alive = 0;
    CParser parser;
    parser.CreateBlock(false)->Append(new CountedUnit(alive));
    parser.Init();
    EXPECT_EQ(0, alive);
}

TEST(ParserStateTest, TheDestructorDeletesTheBlocks)
{
    int alive = 0;
    {
        CParser parser;
        parser.CreateBlock(false)->Append(new CountedUnit(alive));
        parser.CreateBlock(false)->Append(new CountedUnit(alive));
        ASSERT_EQ(2, alive);
    }
    EXPECT_EQ(0, alive);
}

TEST(ParserStateTest, BlocksOfADerivedClassAreDeletedAsSuch)
{
    class CountingBlock : public CParserBlock
    {
    public:
        explicit CountingBlock(int& destroyed) : CParserBlock(nullptr), m_destroyed(destroyed) {}
        ~CountingBlock() override { ++m_destroyed; }

    private:
        int& m_destroyed;
    };
    class DerivedParser : public CParser
    {
    public:
        void List(CParserBlock* block) { m_blocks.Add(block); }
    };
    int destroyed = 0;
    DerivedParser parser;
    parser.List(new CountingBlock(destroyed));
    parser.List(nullptr);
    parser.List(new CountingBlock(destroyed));
    parser.Clean();
    EXPECT_EQ(2, destroyed);
}

TEST(ParserStateTest, TheLastErrorIsCopiedToWhatIsAskedFor)
{
    CParser parser;
    CParserUnit unit(wxSharedPtr<CParserFile>(), nullptr, "", 4);
    parser.SetError("message", &unit);
    wxString message;
    const CParserUnit* place = nullptr;
    parser.GetLastError(&message, nullptr);
    EXPECT_EQ("message", message);
    parser.GetLastError(nullptr, &place);
    EXPECT_EQ(&unit, place);
    parser.GetLastError(nullptr, nullptr);
    wxString again;
    parser.GetLastErrorStr(&again);
    EXPECT_EQ("message", again);
}

TEST(ParserStateTest, ANewErrorReplacesTheOld)
{
    CParser parser;
    CParserUnit unit(wxSharedPtr<CParserFile>(), nullptr, "", 4);
    parser.SetError("first", &unit);
    parser.SetError("second", nullptr);
    EXPECT_EQ("-1, no unit: second", LastFailure(parser, -1));
}

TEST(ParserStateTest, ClearErrorForgetsMessageAndUnit)
{
    CParser parser;
    CParserUnit unit(wxSharedPtr<CParserFile>(), nullptr, "", 4);
    parser.SetError("message", &unit);
    parser.ClearError();
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

TEST(ParserStateTest, ASuccessfulParseKeepsAnOlderError)
{
    CParser parser;
    parser.SetError("message", nullptr);
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    EXPECT_EQ("0, no unit: message", LastFailure(parser, 0));
}

TEST(ParserStateTest, AskDeleteElementDoesNothing)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    parser.AskDeleteElement();
    EXPECT_EQ(Texts{"a.txt:1:a"}, UnitsOf(*parser.GetLastBlock(0)));
}

TEST(FileTableTest, GetFileRefGivesTheTablesReference)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    const wxSharedPtr<CParserFile> file = parser.GetLastBlock(0)->GetUnit(0)->m_file;
    const long before = file.use_count();
    const wxSharedPtr<CParserFile> found = parser.GetFileRef(file.get());
    EXPECT_EQ(file.get(), found.get());
    EXPECT_EQ(before + 1, file.use_count());
}

TEST(FileTableTest, GetFileRefGoesByTheName)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("old", "a.txt", nullptr, false));
    const wxSharedPtr<CParserFile> old = parser.GetLastBlock(0)->GetUnit(0)->m_file;
    ASSERT_EQ(0, parser.Parse("new", "a.txt", nullptr, false));
    const wxSharedPtr<CParserFile> fresh = parser.GetLastBlock(0)->GetUnit(0)->m_file;
    EXPECT_EQ(fresh.get(), parser.GetFileRef(old.get()).get());
}

TEST(FileTableTest, GetFileRefOfAnUnknownNameIsNull)
{
    CParser parser;
    CParserFile file(&parser, nullptr);
    EXPECT_EQ(nullptr, parser.GetFileRef(&file).get());
}

TEST(FileTableTest, GetFileGivesAKnownFile)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    CParserUnit* const unit = parser.GetLastBlock(0)->GetUnit(0);
    EXPECT_EQ(unit->m_file.get(), parser.GetFile("a.txt", unit).get());
    EXPECT_EQ(nullptr, unit->m_file->GetIncludedFrom());
}

TEST(FileTableTest, GetFileMakesAnUnknownFileWithoutUnits)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    CParserUnit* const unit = parser.GetLastBlock(0)->GetUnit(0);
    const wxSharedPtr<CParserFile> made = parser.GetFile("b.txt", unit);
    ASSERT_NE(nullptr, made.get());
    EXPECT_EQ("b.txt", made->GetName());
    ASSERT_NE(nullptr, made->GetIncludedFrom());
    EXPECT_EQ("file \"a.txt\" line 1", made->GetIncludedFrom()->GetContext());
    EXPECT_EQ(made.get(), parser.GetFile("b.txt", nullptr).get());
    EXPECT_EQ(made.get(), parser.GetFileRef(made.get()).get());
    EXPECT_EQ(Texts{"a.txt:1:a"}, UnitsOf(*parser.GetLastBlock(0)));
}

TEST(FileTableTest, GetFileWithoutAnOriginMakesATopLevelFile)
{
    CParser parser;
    parser.CreateBlock(false);
    EXPECT_EQ(nullptr, parser.GetFile("b.txt", nullptr)->GetIncludedFrom());
}

TEST(FileTableTest, GetFileMakesUpAKeyForAnEmptyName)
{
    CParser parser;
    parser.CreateBlock(false);
    const wxSharedPtr<CParserFile> first = parser.GetFile("", nullptr);
    const wxSharedPtr<CParserFile> second = parser.GetFile("", nullptr);
    EXPECT_EQ(wxString::Format("pf_%p", first.get()), first->GetName());
    EXPECT_NE(first->GetName(), second->GetName());
    EXPECT_EQ(first.get(), parser.GetFileRef(first.get()).get());
}

TEST(FileTableTest, AFileLivesAsLongAsAUnitOfIt)
{
    CParser parser;
    CParserBlock kept(nullptr);
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    kept.Append(parser.GetLastBlock(0)->GetUnit(0));
    parser.Clean();
    EXPECT_EQ(Texts{"a.txt:1:a"}, UnitsOf(kept));
    EXPECT_EQ(1, kept.GetUnit(0)->m_file.use_count());
}

} // namespace
