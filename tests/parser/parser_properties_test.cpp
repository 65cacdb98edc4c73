#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_file.h"
#include "parser/parser_unit.h"
#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace
{

/// What a block must hold: one entry a slot, null for a hole.
using Model = std::vector<CParserUnit*>;

/// Two blocks and what they must hold after every step.
class BlockPair
{
public:
    BlockPair() : m_blocks{std::make_unique<CParserBlock>(nullptr), std::make_unique<CParserBlock>(nullptr)} {}

    void Step()
    {
        m_from = *rc::gen::inRange(0, 2);
        switch (*rc::gen::inRange(0, 6)) {
        case 0:
            return CreateUnit();
        case 1:
            return Append();
        case 2:
            return RemoveElement();
        case 3:
            return InsertBlock();
        case 4:
            return ExtractBlock();
        default:
            return SplitAt();
        }
    }

    void Check() const
    {
        for (int which = 0; which < 2; ++which) {
            const CParserBlock& block = *m_blocks[which];
            RC_ASSERT(block.GetCount() == m_models[which].size());
            wxString text;
            for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
                const CParserUnit* const unit = block.GetUnit(slot);
                RC_ASSERT(unit == m_models[which][slot]);
                if (!unit)
                    continue;
                RC_ASSERT(unit->m_block == &block);
                RC_ASSERT(unit->m_line == m_lines.at(unit));
                text += unit->m_text + "\n";
            }
            RC_ASSERT(TextOf(block) == text.utf8_string());
        }
    }

private:
    CParserBlock& From() { return *m_blocks[m_from]; }
    CParserBlock& To() { return *m_blocks[1 - m_from]; }
    Model& FromModel() { return m_models[m_from]; }
    Model& ToModel() { return m_models[1 - m_from]; }

    int Slot() { return *rc::gen::inRange(0, static_cast<int>(FromModel().size())); }

    void CreateUnit()
    {
        From().CreateUnit(wxSharedPtr<CParserFile>(), "ab cd", ++m_line);
        FromModel().push_back(From().GetUnit(From().GetCount() - 1));
        m_lines[FromModel().back()] = m_line;
    }

    void Append()
    {
        if (FromModel().empty())
            return;
        const int slot = Slot();
        CParserUnit* const unit = FromModel()[slot];
        if (!unit)
            return;
        int pos = slot;
        const bool known = *rc::gen::arbitrary<bool>();
        RC_ASSERT(To().Append(unit, known ? &pos : nullptr) == static_cast<int>(ToModel().size()));
        RC_ASSERT(pos == slot + (known ? 1 : 0));
        FromModel()[slot] = nullptr;
        ToModel().push_back(unit);
    }

    void RemoveElement()
    {
        if (FromModel().empty())
            return;
        const int slot = Slot();
        const int given = Slot();
        CParserUnit* const unit = FromModel()[slot];
        if (!unit)
            return;
        int pos = given;
        const bool fits = given == slot;
        RC_ASSERT(From().RemoveElement(unit, &pos, 1) == (fits ? 0 : 1));
        RC_ASSERT(pos == given + (fits ? 1 : 0));
        if (fits)
            FromModel()[slot] = nullptr;
    }

    void InsertBlock()
    {
        const int size = static_cast<int>(ToModel().size());
        const int slot = *rc::gen::inRange(0, size + 1);
        Model moved;
        for (CParserUnit*& unit : FromModel()) {
            if (unit)
                moved.push_back(unit);
            unit = nullptr;
        }
        int pos = slot;
        const bool atEnd = *rc::gen::arbitrary<bool>();
        To().InsertBlock(&From(), atEnd ? nullptr : &pos);
        RC_ASSERT(atEnd || pos == slot + static_cast<int>(moved.size()));
        ToModel().insert(ToModel().begin() + (atEnd ? size : slot), moved.begin(), moved.end());
    }

    void ExtractBlock()
    {
        if (FromModel().empty())
            return;
        const int from = Slot();
        const int to = *rc::gen::inRange(from, static_cast<int>(FromModel().size()));
        const bool toEnd = *rc::gen::arbitrary<bool>();
        const int last = toEnd ? static_cast<int>(FromModel().size()) - 1 : to;
        RC_ASSERT(From().ExtractBlock(&To(), from, toEnd ? -1 : to) == last + 1);
        for (int slot = from; slot <= last; ++slot) {
            if (FromModel()[slot])
                ToModel().push_back(FromModel()[slot]);
            FromModel()[slot] = nullptr;
        }
    }

    void SplitAt()
    {
        if (FromModel().empty())
            return;
        const int slot = Slot();
        CParserUnit* const unit = FromModel()[slot];
        if (!unit)
            return;
        const size_t pos = *rc::gen::inRange<size_t>(0, 7);
        const wxString text = unit->m_text;
        const int tail = unit->SplitAt(pos, *rc::gen::element(slot, -1));
        RC_ASSERT(tail == slot + 1);
        RC_ASSERT(unit->m_text == text.Left(pos));
        CParserUnit* const made = From().GetUnit(tail);
        wxString rest = text.Mid(pos);
        RC_ASSERT(made->m_text == rest.Trim(false));
        FromModel().insert(FromModel().begin() + tail, made);
        m_lines[made] = unit->m_line;
    }

    std::unique_ptr<CParserBlock> m_blocks[2];
    Model m_models[2];
    std::map<const CParserUnit*, unsigned long> m_lines;
    unsigned long m_line = 0;
    int m_from = 0;
};

RC_GTEST_PROP(ParserProperties, MovingUnitsBetweenBlocksLosesNothingAndKeepsOrderAndOrigin, ())
{
    BlockPair pair;
    const int steps = *rc::gen::inRange(0, 60);
    for (int step = 0; step < steps; ++step) {
        pair.Step();
        pair.Check();
    }
}

/// The lines of a text by replacing line ends, as "LINE:TEXT".
std::vector<std::string> NaiveLines(wxString text, bool keepEmptyLines)
{
    text.Replace("\r\n", "\n");
    text.Replace("\r", "\n");
    std::vector<std::string> lines;
    unsigned long number = 0;
    while (!text.empty()) {
        ++number;
        const wxString line = text.BeforeFirst('\n');
        if (!line.empty() || keepEmptyLines)
            lines.push_back("a.txt:" + std::to_string(number) + ":" + line.utf8_string());
        text = text.AfterFirst('\n');
    }
    return lines;
}

RC_GTEST_PROP(ParserProperties, EveryMixOfLineEndsGivesTheNaiveLines, (bool keepEmptyLines))
{
    const auto text = *rc::gen::container<std::string>(rc::gen::element('a', ' ', '\t', '\r', '\n', '\r', '\n'));
    CPreprocessor pp(nullptr, false);
    CParser parser(&pp);
    if (keepEmptyLines)
        parser.KeepEmptyLines();
    RC_ASSERT(parser.Parse(text, "a.txt", nullptr, false) == 0);
    RC_ASSERT(UnitsOf(*parser.GetLastBlock(0)) == NaiveLines(text, keepEmptyLines));
}

RC_GTEST_PROP(ParserProperties, LoadingTheTextOfABlockAgainGivesTheSameLines, ())
{
    const auto text = *rc::gen::container<std::string>(rc::gen::element('a', 'b', ' ', '\r', '\n'));
    CPreprocessor pp(nullptr, false);
    CParser parser(&pp);
    parser.KeepEmptyLines();
    RC_ASSERT(parser.Parse(text, "a.txt", nullptr, false) == 0);
    const std::string once = TextOf(*parser.GetLastBlock(0));
    const std::vector<std::string> units = UnitsOf(*parser.GetLastBlock(0));
    RC_ASSERT(parser.Parse(once, "a.txt", nullptr, false) == 0);
    RC_ASSERT(UnitsOf(*parser.GetLastBlock(0)) == units);
}

} // namespace
