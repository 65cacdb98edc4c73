#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_file.h"
#include "parser/parser_unit.h"
#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

class ParserFileTest : public ::testing::Test
{
protected:
    using Lines = std::vector<std::string>;

    /// The units that loading a text makes, as "LINE:TEXT".
    Lines Load(const wxString& text, bool keepEmptyLines)
    {
        CParserFile file(&m_parser, nullptr);
        CParserBlock block(nullptr);
        EXPECT_EQ(0, file.Load(text, "a.txt", &block, keepEmptyLines));
        EXPECT_EQ("a.txt", file.GetName());
        Lines lines;
        for (unsigned int slot = 0; slot < block.GetCount(); ++slot)
            lines.push_back(std::to_string(block.GetUnit(slot)->m_line) + ":" +
                            block.GetUnit(slot)->m_text.utf8_string());
        return lines;
    }

    CParser m_parser;
};

TEST_F(ParserFileTest, LinesAreCutAtEveryKindOfLineEnd)
{
    const struct
    {
        const char* text;
        Lines all;
        Lines filled;
    } cases[] = {
        {"", {}, {}},
        {"a", {"1:a"}, {"1:a"}},
        {"a\n", {"1:a"}, {"1:a"}},
        {"a\nb", {"1:a", "2:b"}, {"1:a", "2:b"}},
        {"a\r\nb\r\n", {"1:a", "2:b"}, {"1:a", "2:b"}},
        {"a\rb\r", {"1:a", "2:b"}, {"1:a", "2:b"}},
        {"\n", {"1:"}, {}},
        {"\n\n", {"1:", "2:"}, {}},
        {"\n\na", {"1:", "2:", "3:a"}, {"3:a"}},
        {"a\n\nb", {"1:a", "2:", "3:b"}, {"1:a", "3:b"}},
        {"a\n\n", {"1:a", "2:"}, {"1:a"}},
        {"a\n\rb", {"1:a", "2:", "3:b"}, {"1:a", "3:b"}},
        {"a\r\r\nb", {"1:a", "2:", "3:b"}, {"1:a", "3:b"}},
        {"a\r\n\nb\r\r\n\rc", {"1:a", "2:", "3:b", "4:", "5:", "6:c"}, {"1:a", "3:b", "6:c"}},
        {" \n\t\n", {"1: ", "2:\t"}, {"1: ", "2:\t"}},
    };
    for (const auto& [text, all, filled] : cases) {
        EXPECT_EQ(all, Load(text, true)) << ::testing::PrintToString(text);
        EXPECT_EQ(filled, Load(text, false)) << ::testing::PrintToString(text);
    }
}

TEST_F(ParserFileTest, NoOtherCharacterEndsALine)
{
    EXPECT_EQ(1u, Load(L"a\vb\fc\u0085d\u2028e\u2029f", false).size());
}

TEST_F(ParserFileTest, LoadingNamesTheFile)
{
    CParserFile file(&m_parser, nullptr);
    EXPECT_EQ("", file.GetName());
    CParserBlock block(nullptr);
    file.Load("", "first", &block, false);
    file.Load("", "second", &block, false);
    EXPECT_EQ("second", file.GetName());
}

TEST_F(ParserFileTest, UnitsHaveNoFileWhenTheTableDoesNotKnowItsName)
{
    CParserFile file(&m_parser, nullptr);
    CParserBlock block(nullptr);
    file.Load("a", "unknown.txt", &block, false);
    EXPECT_EQ(nullptr, block.GetUnit(0)->m_file.get());
}

TEST_F(ParserFileTest, UnitsGetTheFileThatTheTableHasUnderTheName)
{
    ASSERT_EQ(0, m_parser.Parse("x", "a.txt", nullptr, false));
    const CParserFile* const known = m_parser.GetLastBlock(0)->GetUnit(0)->m_file.get();
    CParserFile file(&m_parser, nullptr);
    CParserBlock block(nullptr);
    file.Load("a", "a.txt", &block, false);
    EXPECT_EQ(known, block.GetUnit(0)->m_file.get());
}

TEST_F(ParserFileTest, UnitsAreMadeByTheBlock)
{
    class UpperCaseBlock : public CParserBlock
    {
    public:
        using CParserBlock::CParserBlock;
        long CreateUnit(wxSharedPtr<CParserFile> file, const wxString& text, unsigned long line) override
        {
            return CParserBlock::CreateUnit(file, text.Upper(), line);
        }
    } block(nullptr);
    CParserFile file(&m_parser, nullptr);
    file.Load("ab\nc", "a.txt", &block, false);
    EXPECT_EQ("AB\nC\n", TextOf(block));
}

TEST_F(ParserFileTest, ATopLevelFileIsIncludedFromNowhere)
{
    EXPECT_EQ(nullptr, CParserFile(&m_parser, nullptr).GetIncludedFrom());
}

TEST_F(ParserFileTest, TheIncludingUnitIsCopiedWithItsOrigin)
{
    ASSERT_EQ(0, m_parser.Parse("a\nthe line", "a.txt", nullptr, false));
    std::unique_ptr<CParserFile> file(new CParserFile(&m_parser, m_parser.GetLastBlock(0)->GetUnit(1)));
    const CParserUnit* const from = file->GetIncludedFrom();
    m_parser.Clean();
    ASSERT_NE(nullptr, from);
    EXPECT_EQ("the line", from->m_text);
    EXPECT_EQ("file \"a.txt\" line 2", from->GetContext());
    EXPECT_EQ(nullptr, from->m_block);
}

} // namespace
