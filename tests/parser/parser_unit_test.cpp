#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

class ParserUnitTest : public ::testing::Test
{
protected:
    /// A block with one unit for each text, all of file "a.txt" and of line 7.
    CParserUnit* Fill(const std::vector<wxString>& texts)
    {
        for (const wxString& text : texts)
            m_block.CreateUnit(m_file, text, 7);
        return m_block.GetUnit(0);
    }

    CParser m_parser;
    wxSharedPtr<CParserFile> m_file{MakeFile()};
    CParserBlock m_block{&m_parser};

private:
    CParserFile* MakeFile()
    {
        CParserFile* const file = new CParserFile(&m_parser, nullptr);
        CParserBlock none(nullptr);
        file->Load("", "a.txt", &none, false);
        return file;
    }
};

TEST_F(ParserUnitTest, AUnitHoldsItsFileBlockTextAndLine)
{
    CParserUnit unit(m_file, &m_block, "text", 42);
    EXPECT_EQ(m_file.get(), unit.m_file.get());
    EXPECT_EQ(&m_block, unit.m_block);
    EXPECT_EQ("text", unit.m_text);
    EXPECT_EQ(42u, unit.m_line);
}

TEST_F(ParserUnitTest, AUnitSharesItsFileWhileItLives)
{
    const long before = m_file.use_count();
    {
        CParserUnit unit(m_file, nullptr, "text", 1);
        EXPECT_EQ(before + 1, m_file.use_count());
    }
    EXPECT_EQ(before, m_file.use_count());
}

TEST_F(ParserUnitTest, TheFileNameIsThatOfTheFile)
{
    EXPECT_EQ("a.txt", CParserUnit(m_file, nullptr, "", 1).GetFileName());
}

TEST_F(ParserUnitTest, TheFileNameOfAUnitWithoutFileIsEmpty)
{
    EXPECT_EQ("", CParserUnit(wxSharedPtr<CParserFile>(), nullptr, "", 1).GetFileName());
}

TEST_F(ParserUnitTest, TheContextNamesFileAndLine)
{
    EXPECT_EQ("file \"a.txt\" line 42", CParserUnit(m_file, nullptr, "", 42).GetContext());
}

TEST_F(ParserUnitTest, TheContextOfAUnitWithoutFileNamesAnEmptyFile)
{
    EXPECT_EQ("file \"\" line 3", CParserUnit(wxSharedPtr<CParserFile>(), nullptr, "", 3).GetContext());
}

TEST_F(ParserUnitTest, TheContextShowsLinesBeyondThe32BitRange)
{
    EXPECT_EQ("file \"a.txt\" line 4294967296", CParserUnit(m_file, nullptr, "", 4294967296ul).GetContext());
}

TEST_F(ParserUnitTest, ACloneHasTheTextOnly)
{
    const std::unique_ptr<CParserUnit> clone(Fill({"text"})->Clone());
    EXPECT_EQ("text", clone->m_text);
    EXPECT_EQ(nullptr, clone->m_file.get());
    EXPECT_EQ(nullptr, clone->m_block);
    EXPECT_EQ(0u, clone->m_line);
}

TEST_F(ParserUnitTest, TheContextOfACloneNamesAnEmptyFileAndLine0)
{
    const std::unique_ptr<CParserUnit> clone(Fill({"text"})->Clone());
    EXPECT_EQ("file \"\" line 0", clone->GetContext());
}

TEST_F(ParserUnitTest, CloningLeavesTheUnitAndItsBlockAlone)
{
    const std::unique_ptr<CParserUnit> clone(Fill({"text"})->Clone());
    EXPECT_EQ(std::vector<std::string>{"a.txt:7:text"}, UnitsOf(m_block));
}

TEST_F(ParserUnitTest, AllKindsOfObjectsKnowTheirClass)
{
    const std::vector<std::pair<const wxClassInfo*, wxString>> kinds = {
        {&CParser::ms_classInfo, "CParser"},
        {&CParserBlock::ms_classInfo, "CParserBlock"},
        {&CParserFile::ms_classInfo, "CParserFile"},
        {&CParserUnit::ms_classInfo, "CParserUnit"},
        {&CPreprocessor::ms_classInfo, "CPreprocessor"},
    };
    for (const auto& [info, name] : kinds) {
        EXPECT_EQ(name, info->GetClassName());
        EXPECT_TRUE(info->IsKindOf(wxCLASSINFO(wxObject))) << name;
    }
    EXPECT_EQ(&CParserUnit::ms_classInfo, Fill({"x"})->GetClassInfo());
}

TEST_F(ParserUnitTest, SplittingLeavesTheHeadAndPutsTheTailBehind)
{
    EXPECT_EQ(1u, Fill({"headtail", "next"})->SplitAt(4, 0));
    EXPECT_EQ((std::vector<std::string>{"a.txt:7:head", "a.txt:7:tail", "a.txt:7:next"}), UnitsOf(m_block));
}

TEST_F(ParserUnitTest, TheTailBelongsToTheSameBlockAndFile)
{
    const unsigned int tail = Fill({"headtail", "next"})->SplitAt(4, 0);
    EXPECT_EQ(&m_block, m_block.GetUnit(tail)->m_block);
    EXPECT_EQ(m_file.get(), m_block.GetUnit(tail)->m_file.get());
}

TEST_F(ParserUnitTest, TheTailLosesItsLeadingBlanksTheHeadKeepsItsTrailingOnes)
{
    Fill({"head \t\n\r tail "})->SplitAt(5, 0);
    EXPECT_EQ("head ", m_block.GetUnit(0)->m_text);
    EXPECT_EQ("tail ", m_block.GetUnit(1)->m_text);
}

TEST_F(ParserUnitTest, ANegativeIndexHasTheUnitSearched)
{
    Fill({"a", "b", "headtail", "c"});
    EXPECT_EQ(3u, m_block.GetUnit(2)->SplitAt(4, -1));
    EXPECT_EQ("a\nb\nhead\ntail\nc\n", TextOf(m_block));
}

TEST_F(ParserUnitTest, SplittingTheLastUnitAppends)
{
    Fill({"a", "headtail"});
    EXPECT_EQ(2u, m_block.GetUnit(1)->SplitAt(4, 1));
    EXPECT_EQ("a\nhead\ntail\n", TextOf(m_block));
    EXPECT_EQ(&m_block, m_block.GetUnit(2)->m_block);
}

TEST_F(ParserUnitTest, AnIndexPastTheLastEntryAppends)
{
    EXPECT_EQ(2u, Fill({"headtail", "next"})->SplitAt(4, 9));
    EXPECT_EQ("head\nnext\ntail\n", TextOf(m_block));
}

TEST_F(ParserUnitTest, SplittingCountsHoles)
{
    Fill({"gone", "headtail", "next"});
    m_block.RemoveElement(m_block.GetUnit(0), nullptr, 1);
    EXPECT_EQ(2u, m_block.GetUnit(1)->SplitAt(4, -1));
    EXPECT_EQ(4u, m_block.GetCount());
    EXPECT_EQ("head\ntail\nnext\n", TextOf(m_block));
}

TEST_F(ParserUnitTest, ASplitAtTheEndsLeavesAnEmptyHalf)
{
    const struct
    {
        size_t pos;
        std::string text;
    } cases[] = {{0, "\nab\n"}, {2, "ab\n\n"}, {5, "ab\n\n"}};
    for (const auto& [pos, text] : cases) {
        CParserBlock block(nullptr);
        block.CreateUnit(m_file, "ab", 1);
        EXPECT_EQ(1u, block.GetUnit(0)->SplitAt(pos, 0));
        EXPECT_EQ(text, TextOf(block)) << pos;
    }
}

TEST_F(ParserUnitTest, SplittingTheLastUnitUsesTheAppendOfTheBlock)
{
    class CountingBlock : public CParserBlock
    {
    public:
        using CParserBlock::CParserBlock;
        int Append(CParserUnit* unit, int* pos) override
        {
            ++appended;
            return CParserBlock::Append(unit, pos);
        }
        int appended = 0;
    } block(nullptr);
    block.CreateUnit(m_file, "headtail", 1);
    const int before = block.appended;
    block.GetUnit(0)->SplitAt(4, 0);
    EXPECT_EQ(before + 1, block.appended);
}

TEST_F(ParserUnitTest, SplittingCountsCharactersNotBytes)
{
    Fill({L"\u00e4\u00f6\U0001F600tail"})->SplitAt(3, 0);
    EXPECT_EQ(wxString(L"\u00e4\u00f6\U0001F600"), m_block.GetUnit(0)->m_text);
    EXPECT_EQ("tail", m_block.GetUnit(1)->m_text);
}

} // namespace
