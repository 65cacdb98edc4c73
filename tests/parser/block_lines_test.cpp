#include "base/utf8_text.h"
#include "parser/block_lines_detail.h"
#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_file.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

/// What stands in the slots: "." for a hole, "line" and "unit" for the others.
Texts Slots(CParserBlock& block)
{
    Texts slots;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        const CUnitSlot& found = CBlockLines(block).Units().Peek(slot);
        slots.push_back(found.IsLine() ? "line" : found.IsHole() ? "." : "unit");
    }
    return slots;
}

Texts OriginsOf(const CParserBlock& block)
{
    Texts origins;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        std::string text;
        if (!block.AppendText(slot, text))
            continue;
        const CParserOrigin origin = block.GetOrigin(slot);
        origins.push_back((origin.file ? origin.file->GetName().utf8_string() : "") + ":" +
                          std::to_string(origin.line) + ":" + text);
    }
    return origins;
}

/// A block of a class of its own, which gets every line as a unit.
class DerivedBlock : public CParserBlock
{
public:
    using CParserBlock::CParserBlock;
    long CreateUnit(wxSharedPtr<CParserFile> file, const wxString& text, unsigned long line) override
    {
        created.push_back(std::to_string(line) + ":" + text.utf8_string());
        return CParserBlock::CreateUnit(file, text, line);
    }
    Texts created;
};

class DerivedParser : public CParser
{
public:
    using CParser::CParser;
    CParserBlock* CreateBlock(bool detached) override
    {
        auto* const block = new DerivedBlock(detached ? nullptr : this);
        if (!detached)
            m_blocks.Add(block);
        return block;
    }
};

class BlockLinesTest : public ::testing::Test
{
protected:
    BlockLinesTest() { m_pp.Desactivate(); }

    CParserBlock& Load(const wxString& text, const wxString& name = "f")
    {
        m_parser.Parse(text, name, nullptr, false);
        return *m_parser.GetLastBlock(0);
    }

    CPreprocessor m_pp{nullptr, true};
    CParser m_parser{&m_pp};
};

TEST_F(BlockLinesTest, ALineBecomesAUnitWhenItIsAskedFor)
{
    CParserBlock& block = Load(L"a\n\n\xe9 \x1f600");
    EXPECT_EQ((Texts{"line", "line"}), Slots(block));
    CParserUnit* const unit = block.GetUnit(1);
    EXPECT_EQ(wxString(L"\xe9 \x1f600"), unit->m_text);
    EXPECT_EQ(3u, unit->m_line);
    EXPECT_EQ("f", unit->GetFileName());
    EXPECT_EQ(&block, unit->m_block);
    EXPECT_EQ((Texts{"line", "unit"}), Slots(block));
    EXPECT_EQ(unit, block.GetUnit(1));
    EXPECT_EQ(1, block.IndexOf(unit));
}

TEST_F(BlockLinesTest, ReadingTextsAndOriginsMakesNoUnit)
{
    CParserBlock& block = Load(L"a\r\n\r\xe9\n  ");
    EXPECT_EQ("a\n\xc3\xa9\n  \n", TextOf(block));
    EXPECT_EQ((Texts{"f:1:a", "f:3:\xc3\xa9", "f:4:  "}), OriginsOf(block));
    EXPECT_EQ((Texts{"line", "line", "line"}), Slots(block));
    EXPECT_EQ(-1, block.IndexOf(nullptr));
}

TEST_F(BlockLinesTest, UnitsAndHolesAreReadLikeLines)
{
    CParserBlock& block = Load("a\nb\nc");
    block.GetUnit(0)->m_text = L"\xd83d\xde00"; // a pair is written as its character
    block.RemoveElement(block.GetUnit(1), nullptr, 1);
    EXPECT_EQ((Texts{"unit", ".", "line"}), Slots(block));
    EXPECT_EQ((Texts{"f:1:\xf0\x9f\x98\x80", "f:3:c"}), OriginsOf(block));
    std::string text = "x";
    EXPECT_FALSE(block.AppendText(1, text));
    EXPECT_EQ("x", text);
}

TEST_F(BlockLinesTest, NoUnitStandsInALinesSlot)
{
    CParserBlock& block = Load("a\nb");
    int slot = 0;
    EXPECT_EQ(1, block.RemoveElement(nullptr, &slot, 0));
    const std::unique_ptr<CParserBlock> other(m_parser.CreateBlock(true));
    other->CreateUnit(wxSharedPtr<CParserFile>(), "x", 1);
    EXPECT_EQ(1, block.RemoveElement(other->GetUnit(0), &slot, 0));
    EXPECT_EQ(0, slot);
    EXPECT_EQ((Texts{"line", "line"}), Slots(block));
}

TEST_F(BlockLinesTest, InsertedLinesStayLinesWithTheirOrigins)
{
    CParserBlock& first = Load("a\nb", "first");
    CParserBlock& second = Load("c\nd\ne", "second");
    second.RemoveElement(second.GetUnit(1), nullptr, 1);
    int slot = 1;
    first.InsertBlock(&second, &slot);
    EXPECT_EQ(3, slot);
    EXPECT_EQ((Texts{"line", "line", "line", "line"}), Slots(first));
    EXPECT_EQ((Texts{"first:1:a", "second:1:c", "second:3:e", "first:2:b"}), OriginsOf(first));
    EXPECT_EQ((Texts{".", ".", "."}), Slots(second));
    EXPECT_EQ(&first, first.GetUnit(1)->m_block);
    EXPECT_EQ("second", first.GetUnit(1)->GetFileName());
}

TEST_F(BlockLinesTest, ExtractedLinesStayLinesWithTheirOrigins)
{
    CParserBlock& block = Load("a\nb\nc\nd");
    CParserUnit* const unit = block.GetUnit(2);
    CParserBlock target(nullptr);
    EXPECT_EQ(3, block.ExtractBlock(&target, 1, 2));
    EXPECT_EQ((Texts{"line", ".", ".", "line"}), Slots(block));
    EXPECT_EQ((Texts{"line", "unit"}), Slots(target));
    EXPECT_EQ(unit, target.GetUnit(1));
    EXPECT_EQ(&target, unit->m_block);
    EXPECT_EQ((Texts{"f:2:b", "f:3:c"}), OriginsOf(target));
    EXPECT_EQ(5, block.ExtractBlock(&target, 5, -1));
    EXPECT_EQ(4, block.ExtractBlock(&target, 0, -1));
    EXPECT_EQ((Texts{"f:2:b", "f:3:c", "f:1:a", "f:4:d"}), OriginsOf(target));
}

TEST_F(BlockLinesTest, ABlockExtractedIntoItselfGoesToItsEnd)
{
    CParserBlock& block = Load("a\nb");
    EXPECT_EQ(1, block.ExtractBlock(&block, 0, 0));
    EXPECT_EQ((Texts{".", "line", "unit"}), Slots(block));
    EXPECT_EQ("b\na\n", TextOf(block));
}

TEST_F(BlockLinesTest, ALineKeepsItsFileAliveThroughEverything)
{
    std::unique_ptr<CParserBlock> block;
    {
        CParser parser(&m_pp);
        parser.Parse(wxString("a\nb"), "gone", nullptr, false);
        block.reset(parser.GetLastBlock(1));
        parser.Parse(wxString("c"), "gone", nullptr, false);
    }
    EXPECT_EQ((Texts{"gone:1:a", "gone:2:b"}), OriginsOf(*block));
    const std::unique_ptr<CParserBlock> target = std::make_unique<CParserBlock>(nullptr);
    block->ExtractBlock(target.get(), 1, 1);
    block.reset();
    EXPECT_EQ("gone", target->GetUnit(0)->GetFileName());
    EXPECT_EQ("b", target->GetUnit(0)->m_text);
}

TEST_F(BlockLinesTest, ACloneHasTextsOnlyAndLeavesTheLines)
{
    CParserBlock& block = Load("a\nb\nc");
    block.RemoveElement(block.GetUnit(1), nullptr, 1);
    const std::unique_ptr<CParserBlock> clone(block.Clone());
    EXPECT_EQ((Texts{":0:a", ":0:c"}), UnitsOf(*clone));
    EXPECT_EQ((Texts{"line", ".", "line"}), Slots(block));
}

TEST_F(BlockLinesTest, AnAssignedBlockSharesTheUnitsOfAllLines)
{
    CParserBlock& block = Load("a\nb");
    CParserBlock copy(nullptr);
    copy = block;
    EXPECT_EQ((Texts{"unit", "unit"}), Slots(block));
    EXPECT_EQ(block.GetUnit(0), copy.GetUnit(0));
    EXPECT_EQ(&block, copy.GetUnit(0)->m_block);
    for (int slot = 0; slot < 2;)
        copy.RemoveElement(copy.GetUnit(slot), &slot, 0);
}

TEST_F(BlockLinesTest, ASplitLineIsTwoUnits)
{
    CParserBlock& block = Load("ab  cd\ne");
    EXPECT_EQ(1u, block.GetUnit(0)->SplitAt(2, 0));
    EXPECT_EQ((Texts{"unit", "unit", "line"}), Slots(block));
    EXPECT_EQ((Texts{"f:1:ab", "f:1:cd", "f:2:e"}), UnitsOf(block));
}

TEST_F(BlockLinesTest, ADerivedBlockGetsEachLineAsAUnit)
{
    DerivedParser parser(&m_pp);
    parser.Parse(wxString("a\n\nb"), "f", nullptr, false);
    auto& block = dynamic_cast<DerivedBlock&>(*parser.GetLastBlock(0));
    EXPECT_EQ((Texts{"1:a", "3:b"}), block.created);
    EXPECT_EQ((Texts{"unit", "unit"}), Slots(block));
    parser.Parse(CUtf8Text("c"), "g", nullptr, false);
    EXPECT_EQ((Texts{"1:c"}), dynamic_cast<DerivedBlock&>(*parser.GetLastBlock(0)).created);
}

TEST_F(BlockLinesTest, LinesThatEnterADerivedBlockBecomeUnits)
{
    CParserBlock& lines = Load("a\nb\nc");
    DerivedBlock derived(nullptr);
    lines.ExtractBlock(&derived, 0, 0);
    derived.InsertBlock(&lines, nullptr);
    EXPECT_EQ((Texts{"unit", "unit", "unit"}), Slots(derived));
    EXPECT_EQ((Texts{"f:1:a", "f:2:b", "f:3:c"}), UnitsOf(derived));
    EXPECT_EQ(&derived, derived.GetUnit(2)->m_block);
    EXPECT_TRUE(derived.created.empty());
}

TEST_F(BlockLinesTest, ATextWithSurrogatesIsUnitsAtOnce)
{
    const wxString text = L"a\n\xd83d\xde00\n\xde00";
    EXPECT_EQ((Texts{"unit", "unit", "unit"}), Slots(Load(text)));
    EXPECT_EQ(wxString(L"\xd83d\xde00"), Load(text).GetUnit(1)->m_text);
    m_parser.Parse(CUtf8Text(text), "f", nullptr, false);
    EXPECT_EQ(wxString(L"\xde00"), m_parser.GetLastBlock(0)->GetUnit(2)->m_text);
    EXPECT_EQ((Texts{"unit", "unit", "unit"}), Slots(*m_parser.GetLastBlock(0)));
}

TEST_F(BlockLinesTest, ValuesBeyondUnicodeAreKeptAsTheyAre)
{
    const wxString text(static_cast<wchar_t>(0x110000), 2);
    EXPECT_EQ(text, Load(text).GetUnit(0)->m_text);
}

TEST_F(BlockLinesTest, EmptyLinesAreKeptOnRequest)
{
    m_parser.KeepEmptyLines();
    CParserBlock& block = Load("\r\r\n\n\r\na\n");
    EXPECT_EQ((Texts{"f:1:", "f:2:", "f:3:", "f:4:", "f:5:a"}), OriginsOf(block));
    EXPECT_EQ("\n\n\n\na\n", TextOf(block));
    EXPECT_EQ("", block.GetUnit(1)->m_text);
}

TEST_F(BlockLinesTest, LinesCutOnceAreParsedAgainAndAgain)
{
    CParserUnit from(wxSharedPtr<CParserFile>(), nullptr, "because", 7);
    for (const wchar_t* const text : {L"a\n\nb", L"a\n\n\xde00"}) {
        const std::unique_ptr<CParserBlock> lines = m_parser.CutLines(CUtf8Text(text), "again", &from);
        for (int pass = 0; pass < 3; ++pass) {
            EXPECT_EQ(0, m_parser.ParseLines(*lines));
            const CParserBlock& block = *m_parser.GetLastBlock(0);
            EXPECT_EQ(&m_parser, block.GetParser());
            EXPECT_EQ(UnitsOf(*lines), UnitsOf(block));
            EXPECT_EQ("because", block.GetUnit(0)->m_file->GetIncludedFrom()->m_text);
        }
    }
}

TEST_F(BlockLinesTest, ADerivedParserGetsCopiesOfLinesAsUnits)
{
    DerivedParser parser(&m_pp);
    const std::unique_ptr<CParserBlock> lines = parser.CutLines(CUtf8Text("a\n\nb"), "again", nullptr);
    parser.ParseLines(*lines);
    EXPECT_EQ((Texts{"1:a", "3:b"}), dynamic_cast<DerivedBlock&>(*parser.GetLastBlock(0)).created);
}

TEST_F(BlockLinesTest, APreprocessedLineIsAPartOfItsTextOrAChangedLine)
{
    CPreprocessor pp(nullptr, true);
    CParser parser(&pp);
    ASSERT_EQ(0, parser.Parse(wxString("#define D (d)\n  a // b\n/* c */\nd /* e */ f\n#D#D\n\"g\" \"h\""), "f",
                              nullptr, false));
    CParserBlock& block = *parser.GetLastBlock(0);
    EXPECT_EQ((Texts{".", "line", ".", "line", "line", "line"}), Slots(block));
    EXPECT_EQ((Texts{"f:2:a", "f:4:d  f", "f:5:(d)(d)", "f:6:\"gh\""}), OriginsOf(block));
}

TEST_F(BlockLinesTest, ADirectivesTextThatHasNoUtf8BecomesAUnit)
{
    CPreprocessor pp(nullptr, true);
    CParser parser(&pp);
    pp.AddDefine("D", L"\xd83d\xde00", wxArrayString());
    ASSERT_EQ(0, parser.Parse(wxString("a\n#D"), "f", nullptr, false));
    CParserBlock& block = *parser.GetLastBlock(0);
    EXPECT_EQ((Texts{"line", "unit"}), Slots(block));
    EXPECT_EQ(wxString(L"\xd83d\xde00"), block.GetUnit(1)->m_text);
}

TEST_F(BlockLinesTest, AFailureMakesAUnitOfItsLineOnly)
{
    CPreprocessor pp(nullptr, true);
    CParser parser(&pp);
    EXPECT_EQ(-1, parser.Parse(wxString("a\n'\nb"), "f", nullptr, false));
    CParserBlock& block = *parser.GetLastBlock(0);
    EXPECT_EQ((Texts{"line", "unit", "line"}), Slots(block));
    const CParserUnit* unit = nullptr;
    parser.GetLastError(nullptr, &unit);
    EXPECT_EQ(block.GetUnit(1), unit);
}

/// Pieces of which texts with everything a scan knows are made.
const Texts Pieces = {"a",
                      " ",
                      "\t",
                      "\n",
                      "\n",
                      "\r\n",
                      "\r",
                      "//",
                      "/*",
                      "*/",
                      "\"",
                      "'",
                      "\\",
                      "\"b\" \"c\"",
                      "\xc3\xa9",
                      "#D",
                      "##D",
                      "#P(a,b)",
                      "#",
                      "#if 1\n",
                      "#if 0\n",
                      "#else\n",
                      "#endif\n",
                      "#U",
                      "#{1+1}",
                      "#for i 1;2;1\n",
                      "#endfor\n",
                      "\n#define D 1\n",
                      "\n#for i 1;2;1\nx#i\n/*\n*/\n#endfor\n",
                      "\n#for i 1;1;1\n#for k 1;2;1\n#i#k // c\n#endfor\n#endfor\n"};

std::string Outcome(CParser& parser, CPreprocessor& pp, const wxString& text)
{
    pp.AddDefine("D", "x y", wxArrayString());
    pp.AddDefine("P", "(#A)", wxSplit("A,B", ','));
    const long result = parser.Parse(text, "f", nullptr, false);
    std::string outcome = LastFailure(parser, result) + "\n" + TextOf(*parser.GetLastBlock(0));
    for (unsigned int slot = 0; slot < parser.GetLastBlock(0)->GetCount(); ++slot)
        outcome += parser.GetLastBlock(0)->GetUnit(slot) ? "u" : ".";
    for (const std::string& unit : UnitsOf(*parser.GetLastBlock(0)))
        outcome += "\n" + unit;
    return outcome;
}

RC_GTEST_PROP(BlockLinesProperties, LinesAndUnitsArePreprocessedAlike, (bool trim, bool partial, bool keepEmptyLines))
{
    std::string text;
    for (const std::string& piece : *rc::gen::container<Texts>(rc::gen::elementOf(Pieces)))
        text += piece;
    CPreprocessor linesPp(nullptr, trim);
    CPreprocessor unitsPp(nullptr, trim);
    CParser lines(&linesPp);
    DerivedParser units(&unitsPp);
    if (keepEmptyLines) {
        lines.KeepEmptyLines();
        units.KeepEmptyLines();
    }
    linesPp.SetPartialMode(partial);
    unitsPp.SetPartialMode(partial);
    const LogCapture log;
    const wxString wide = wxString::FromUTF8(text);
    RC_ASSERT(Outcome(lines, linesPp, wide) == Outcome(units, unitsPp, wide));
}

} // namespace
