#include "parser/parser.h"
#include "tests/support/counted_unit.h"
#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>
#include <wx/sysopt.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

/// A parser whose members a test can look at.
class OpenParser : public CParser
{
public:
    using CParser::CParser;
    using CParser::m_blocks;
    using CParser::m_dir;
    using CParser::m_files;
    using CParser::m_keepEmptyLines;
    using CParser::m_pp;
    using CParser::m_ppExternal;
    using CParser::m_removeDefines;
};

/// A preprocessor that gives a result of its choice and counts.
class FixedPreprocessor : public CPreprocessor
{
public:
    explicit FixedPreprocessor(long result) : CPreprocessor(nullptr, true), m_result(result) {}
    ~FixedPreprocessor() override
    {
        if (destroyed)
            ++*destroyed;
    }
    long PreprocessBlock(CParserBlock* block) override
    {
        blocks.push_back(block);
        return m_result;
    }
    std::vector<CParserBlock*> blocks;
    int* destroyed = nullptr;

private:
    long m_result;
};

using Texts = std::vector<std::string>;

wxString FullPath(CDir dir)
{
    return dir.GetFullPath();
}

TEST(ParserTest, ANewParserIsEmpty)
{
    OpenParser parser;
    EXPECT_EQ(nullptr, parser.GetPP());
    EXPECT_FALSE(parser.m_ppExternal);
    EXPECT_TRUE(parser.m_files.empty());
    EXPECT_TRUE(parser.m_blocks.IsEmpty());
    EXPECT_EQ(nullptr, parser.m_removeDefines);
    EXPECT_FALSE(parser.m_keepEmptyLines);
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
    EXPECT_EQ(FullPath(CDir()), FullPath(parser.m_dir));
}

TEST(ParserTest, TheDebugContextOptionIsReadByTheDefaultConstructor)
{
    for (const int option : {1, 0, 2, 0, -1, 0}) {
        wxSystemOptions::SetOption("tavoli.pp.debugcontext", option);
        CParser parser;
        EXPECT_EQ(option != 0, CParser::UseDebugContext()) << option;
    }
}

TEST(ParserTest, OtherConstructorsDoNotReadTheDebugContextOption)
{
    wxSystemOptions::SetOption("tavoli.pp.debugcontext", 0);
    CParser off;
    wxSystemOptions::SetOption("tavoli.pp.debugcontext", 1);
    CParser external(nullptr);
    CParser copy(off);
    EXPECT_FALSE(CParser::UseDebugContext());
    wxSystemOptions::SetOption("tavoli.pp.debugcontext", 0);
}

TEST(ParserTest, AGivenPreprocessorIsExternalAndLendsItsDirectory)
{
    const TempDirectory place;
    CDir dir = place.Dir();
    CPreprocessor pp(nullptr, true);
    pp.SetDir(dir);
    OpenParser parser(&pp);
    EXPECT_EQ(&pp, parser.GetPP());
    EXPECT_TRUE(parser.m_ppExternal);
    EXPECT_EQ(FullPath(dir), FullPath(parser.m_dir));
}

TEST(ParserTest, AParserGivenNoPreprocessorMakesItsOwn)
{
    OpenParser parser(nullptr);
    EXPECT_EQ(nullptr, parser.GetPP());
    EXPECT_TRUE(parser.m_ppExternal);
    EXPECT_EQ(0, parser.Parse(" a ", "a.txt", nullptr, false));
    EXPECT_NE(nullptr, parser.GetPP());
    EXPECT_FALSE(parser.m_ppExternal);
}

TEST(ParserTest, ItsOwnPreprocessorTrims)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse(" a \n \nb", "a.txt", nullptr, false));
    EXPECT_EQ("a\nb\n", TextOf(*parser.GetLastBlock(0)));
}

TEST(ParserTest, ItsOwnPreprocessorSearchesInTheParsersDirectory)
{
    const TempDirectory place;
    place.Put("inc.txt", "included\n");
    CDir dir = place.Dir();
    CParser parser;
    parser.SetDir(dir);
    ASSERT_EQ(0, parser.Parse("#include \"inc.txt\"", "a.txt", nullptr, false));
    EXPECT_EQ("included\n", TextOf(*parser.GetLastBlock(0)));
    EXPECT_EQ(FullPath(dir), FullPath(parser.GetPP()->GetDir()));
}

TEST(ParserTest, SetDirReachesThePreprocessorInUse)
{
    const TempDirectory place;
    CDir dir = place.Dir();
    CPreprocessor pp(nullptr, true);
    OpenParser parser(&pp);
    parser.SetDir(dir);
    EXPECT_EQ(FullPath(dir), FullPath(pp.GetDir()));
    EXPECT_EQ(FullPath(dir), FullPath(parser.m_dir));
}

TEST(ParserTest, ItsOwnPreprocessorLivesUntilClean)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("#define A 1", "a.txt", nullptr, false));
    ASSERT_EQ(0, parser.Parse("#A", "b.txt", nullptr, false));
    EXPECT_EQ("1\n", TextOf(*parser.GetLastBlock(0)));
    parser.Clean();
    EXPECT_EQ(nullptr, parser.GetPP());
    EXPECT_EQ(-1, parser.Parse("#A", "b.txt", nullptr, false));
}

TEST(ParserTest, AGivenPreprocessorSurvivesCleanAndTheParser)
{
    int destroyed = 0;
    {
        FixedPreprocessor pp(0);
        pp.destroyed = &destroyed;
        {
            CParser parser(&pp);
            parser.Parse("a", "a.txt", nullptr, false);
            parser.Clean();
            EXPECT_EQ(&pp, parser.GetPP());
        }
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(ParserTest, CopiesShareBlocksFilesAndPreprocessor)
{
    static const wchar_t* names[] = {L"A", nullptr};
    const TempDirectory place;
    CDir dir = place.Dir();
    CPreprocessor pp(nullptr, true);
    OpenParser original(&pp);
    ASSERT_EQ(0, original.Parse("a", "a.txt", nullptr, false));
    original.SetDir(dir);
    original.KeepEmptyLines();
    original.SetRemoveDefines(names);
    const CParserUnit* const unit = original.GetLastBlock(0)->GetUnit(0);
    original.SetError("message", unit);

    OpenParser copied(original);
    OpenParser assigned;
    assigned = original;
    for (OpenParser* const copy : {&copied, &assigned}) {
        EXPECT_EQ(&pp, copy->GetPP());
        EXPECT_TRUE(copy->m_ppExternal);
        EXPECT_EQ(original.GetLastBlock(0), copy->GetLastBlock(0));
        EXPECT_EQ(1u, copy->m_blocks.GetCount());
        EXPECT_EQ(original.m_files["a.txt"].get(), copy->m_files["a.txt"].get());
        EXPECT_EQ("-1, file \"a.txt\" line 1: message", LastFailure(*copy, -1));
        EXPECT_EQ(FullPath(dir), FullPath(copy->m_dir));
        EXPECT_EQ(names, copy->m_removeDefines);
        EXPECT_TRUE(copy->m_keepEmptyLines);
        copy->GetLastBlock(1); // only one parser may delete it
    }
}

TEST(ParserTest, ParseGivesThePreprocessorsResult)
{
    for (const long result : {0L, -1L, 1L, 7L}) {
        FixedPreprocessor pp(result);
        CParser parser(&pp);
        EXPECT_EQ(result, parser.Parse("a", "a.txt", nullptr, false));
        EXPECT_EQ(std::vector<CParserBlock*>{parser.GetLastBlock(0)}, pp.blocks);
    }
}

TEST(ParserTest, ASharedPreprocessorReportsToTheParserThatIsParsing)
{
    CPreprocessor pp(nullptr, true);
    CParser first(&pp);
    CParser second(&pp);
    EXPECT_EQ(-1, first.Parse("#A", "a.txt", nullptr, false));
    EXPECT_EQ(&first, pp.GetParser());
    EXPECT_EQ(-1, second.Parse("x\n#B", "b.txt", nullptr, false));
    EXPECT_EQ(&second, pp.GetParser());
    EXPECT_EQ("-1, file \"a.txt\" line 1: \"A\" is not defined !", LastFailure(first, -1));
    EXPECT_EQ("-1, file \"b.txt\" line 2: \"B\" is not defined !", LastFailure(second, -1));
}

TEST(ParserTest, ASharedPreprocessorCarriesDefinesFromParserToParser)
{
    CPreprocessor pp(nullptr, true);
    CParser first(&pp);
    CParser second(&pp);
    EXPECT_EQ(0, first.Parse("#define A 1", "a.txt", nullptr, false));
    EXPECT_EQ(0, second.Parse("#A", "b.txt", nullptr, false));
    EXPECT_EQ("1\n", TextOf(*second.GetLastBlock(0)));
}

TEST(ParserTest, MixedLineEndsAndDroppedEmptyLinesKeepTheLineNumbers)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("first\r\n\r\nsecond\rthird\n", "a.txt", nullptr, false));
    EXPECT_EQ((Texts{"a.txt:1:first", "a.txt:3:second", "a.txt:4:third"}), UnitsOf(*parser.GetLastBlock(0)));
}

TEST(ParserTest, KeepEmptyLinesMakesAUnitOfEveryLine)
{
    CPreprocessor pp(nullptr, false);
    CParser parser(&pp);
    parser.KeepEmptyLines();
    ASSERT_EQ(0, parser.Parse("first\r\n\r\nsecond\rthird\n", "a.txt", nullptr, false));
    EXPECT_EQ((Texts{"a.txt:1:first", "a.txt:2:", "a.txt:3:second", "a.txt:4:third"}),
              UnitsOf(*parser.GetLastBlock(0)));
}

TEST(ParserTest, ALineOfBlanksIsNotEmpty)
{
    CPreprocessor pp(nullptr, false);
    CParser parser(&pp);
    ASSERT_EQ(0, parser.Parse("a\n \nb", "a.txt", nullptr, false));
    EXPECT_EQ((Texts{"a.txt:1:a", "a.txt:2: ", "a.txt:3:b"}), UnitsOf(*parser.GetLastBlock(0)));
}

TEST(ParserTest, TextsWithoutANameGetKeysOfTheirOwn)
{
    OpenParser parser;
    ASSERT_EQ(0, parser.Parse("a", "", nullptr, false));
    const wxString first = parser.GetLastBlock(0)->GetUnit(0)->GetFileName();
    ASSERT_EQ(0, parser.Parse("b", "", nullptr, false));
    const wxString second = parser.GetLastBlock(0)->GetUnit(0)->GetFileName();
    EXPECT_NE(first, second);
    EXPECT_EQ(2u, parser.m_files.size());
    for (const wxString& name : {first, second}) {
        EXPECT_EQ("pf_", name.Left(3));
        EXPECT_EQ(name, wxString::Format("pf_%p", parser.m_files[name].get()));
    }
}

TEST(ParserTest, ASecondTextOfTheSameNameReplacesTheTableEntry)
{
    OpenParser parser;
    ASSERT_EQ(0, parser.Parse("old", "a.txt", nullptr, false));
    CParserUnit* const old = parser.GetLastBlock(0)->GetUnit(0);
    ASSERT_EQ(0, parser.Parse("new", "a.txt", nullptr, false));
    CParserUnit* const fresh = parser.GetLastBlock(0)->GetUnit(0);
    EXPECT_EQ(1u, parser.m_files.size());
    EXPECT_EQ(fresh->m_file.get(), parser.m_files["a.txt"].get());
    EXPECT_NE(fresh->m_file.get(), old->m_file.get());
    EXPECT_EQ("file \"a.txt\" line 1", old->GetContext());
    EXPECT_EQ(1, old->m_file.use_count()) << "only its own unit keeps the old file";
}

TEST(ParserTest, TheReadingUnitBecomesTheFilesOrigin)
{
    CParser parser;
    ASSERT_EQ(0, parser.Parse("a\nb", "a.txt", nullptr, false));
    const CParserUnit* const from = parser.GetLastBlock(0)->GetUnit(1);
    ASSERT_EQ(0, parser.Parse("c", "b.txt", from, false));
    const CParserUnit* const copy = parser.GetLastBlock(0)->GetUnit(0)->m_file->GetIncludedFrom();
    ASSERT_NE(nullptr, copy);
    EXPECT_NE(from, copy);
    EXPECT_EQ("b", copy->m_text);
    EXPECT_EQ("file \"a.txt\" line 2", copy->GetContext());
    EXPECT_EQ(nullptr, copy->m_block);
}

TEST(ParserTest, ParseAsksForAListedBlockAndDoesNotParseIt)
{
    class CountingParser : public CParser
    {
    public:
        CParserBlock* CreateBlock(bool detached) override
        {
            requests.push_back(detached);
            return CParser::CreateBlock(detached);
        }
        long ParseBlock(CParserBlock*) override
        {
            ++parsed;
            return 0;
        }
        std::vector<bool> requests;
        int parsed = 0;
    } parser;
    ASSERT_EQ(0, parser.Parse("a", "a.txt", nullptr, false));
    EXPECT_EQ(std::vector<bool>{false}, parser.requests);
    EXPECT_EQ(0, parser.parsed);
}

TEST(ParserTest, ListedDefinesAreTakenOutOnRequestOnly)
{
    static const wchar_t* names[] = {L"A", L"B", nullptr};
    const wxString text = "#define A 1\n#define AB 2\n#redefine B 3\nend";
    {
        CParser parser;
        parser.SetRemoveDefines(names);
        ASSERT_EQ(0, parser.Parse(text, "a.txt", nullptr, true));
        EXPECT_FALSE(parser.GetPP()->HasDefine("A"));
        EXPECT_TRUE(parser.GetPP()->HasDefine("AB"));
        EXPECT_EQ(Texts{"a.txt:4:end"}, UnitsOf(*parser.GetLastBlock(0)));
    }
    {
        CParser parser;
        parser.SetRemoveDefines(names);
        EXPECT_EQ(-1, parser.Parse(text, "a.txt", nullptr, false));
        EXPECT_EQ("-1, file \"a.txt\" line 3: \"B\" not defined!", LastFailure(parser, -1));
    }
    {
        CParser parser;
        EXPECT_EQ(-1, parser.Parse(text, "a.txt", nullptr, true)) << "nothing is listed";
    }
    EXPECT_EQ("#define A 1\n#define AB 2\n#redefine B 3\nend", text);
}

TEST(ParserTest, ADetachedBlockIsTheCallers)
{
    OpenParser parser;
    const std::unique_ptr<CParserBlock> block(parser.CreateBlock(true));
    EXPECT_EQ(nullptr, block->GetParser());
    EXPECT_EQ(0u, block->GetCount());
    EXPECT_TRUE(parser.m_blocks.IsEmpty());
}

TEST(ParserTest, AnAttachedBlockIsListed)
{
    OpenParser parser;
    CParserBlock* const block = parser.CreateBlock(false);
    EXPECT_EQ(&parser, block->GetParser());
    EXPECT_EQ(0u, block->GetCount());
    EXPECT_EQ(block, parser.GetLastBlock(0));
}

TEST(ParserTest, ARemovedBlockIsTheCallers)
{
    OpenParser parser;
    CParserBlock* const first = parser.CreateBlock(false);
    CParserBlock* const second = parser.CreateBlock(false);
    EXPECT_EQ(1, parser.RemoveBlock(first));
    const std::unique_ptr<CParserBlock> owned(first);
    EXPECT_EQ(1u, parser.m_blocks.GetCount());
    EXPECT_EQ(second, parser.GetLastBlock(0));
    EXPECT_EQ(0u, owned->GetCount());
}

TEST(ParserTest, RemovingABlockThatIsNotListedGives0)
{
    OpenParser parser;
    parser.CreateBlock(false);
    const std::unique_ptr<CParserBlock> block(parser.CreateBlock(true));
    EXPECT_EQ(0, parser.RemoveBlock(block.get()));
    EXPECT_EQ(0, parser.RemoveBlock(nullptr));
    EXPECT_EQ(1u, parser.m_blocks.GetCount());
}

TEST(ParserTest, TheLastBlockCanBeTaken)
{
    OpenParser parser;
    CParserBlock* const first = parser.CreateBlock(false);
    CParserBlock* const second = parser.CreateBlock(false);
    EXPECT_EQ(second, parser.GetLastBlock(0));
    EXPECT_EQ(2u, parser.m_blocks.GetCount());
    const std::unique_ptr<CParserBlock> owned(parser.GetLastBlock(1));
    EXPECT_EQ(second, owned.get());
    EXPECT_EQ(first, parser.GetLastBlock(0));
}

TEST(ParserTest, TheBaseClassParsesNothing)
{
    CParser parser;
    EXPECT_EQ(1, parser.ParseBlock(parser.CreateBlock(false)));
    EXPECT_EQ(1, parser.ParseBlock(nullptr));
}

} // namespace
