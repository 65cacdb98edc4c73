#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "tests/support/counted_unit.h"
#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

class ParserBlockTest : public ::testing::Test
{
protected:
    /// Appends one unit a text; an empty text makes a hole.
    static void Fill(CParserBlock& block, const std::vector<std::string>& texts)
    {
        for (const std::string& text : texts) {
            block.CreateUnit(wxSharedPtr<CParserFile>(), text, block.GetCount() + 1);
            if (text.empty())
                block.RemoveElement(block.GetUnit(block.GetCount() - 1), nullptr, 1);
        }
    }

    /// The slots of a block: the texts, empty for a hole.
    static std::vector<std::string> Slots(const CParserBlock& block)
    {
        std::vector<std::string> slots;
        for (unsigned int slot = 0; slot < block.GetCount(); ++slot)
            slots.push_back(block.GetUnit(slot) ? block.GetUnit(slot)->m_text.utf8_string() : "");
        return slots;
    }

    static void ExpectOwnsItsUnits(const CParserBlock& block)
    {
        for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
            const CParserUnit* const unit = block.GetUnit(slot);
            EXPECT_EQ(&block, unit ? unit->m_block : &block) << slot;
        }
    }

    using Texts = std::vector<std::string>;

    CParser m_parser;
    CParserBlock m_block{&m_parser};
    CParserBlock m_other{nullptr};
};

TEST_F(ParserBlockTest, ANewBlockIsEmptyAndKnowsItsParser)
{
    EXPECT_EQ(0u, m_block.GetCount());
    EXPECT_EQ(&m_parser, m_block.GetParser());
    EXPECT_EQ(nullptr, m_other.GetParser());
}

TEST_F(ParserBlockTest, CreateUnitAppendsAUnitOfThisBlock)
{
    EXPECT_EQ(0, m_block.CreateUnit(wxSharedPtr<CParserFile>(), "a", 3));
    EXPECT_EQ(0, m_block.CreateUnit(wxSharedPtr<CParserFile>(), "b", 9));
    EXPECT_EQ((Texts{":3:a", ":9:b"}), UnitsOf(m_block));
    ExpectOwnsItsUnits(m_block);
}

TEST_F(ParserBlockTest, AppendListsAFreeUnitAtTheEnd)
{
    Fill(m_block, {"a", ""});
    CParserUnit* const unit = new CParserUnit(wxSharedPtr<CParserFile>(), nullptr, "b", 1);
    EXPECT_EQ(2, m_block.Append(unit));
    EXPECT_EQ((Texts{"a", "", "b"}), Slots(m_block));
    EXPECT_EQ(&m_block, unit->m_block);
}

TEST_F(ParserBlockTest, AppendTakesTheUnitOutOfItsBlock)
{
    Fill(m_other, {"a", "b", "c"});
    int pos = 1;
    EXPECT_EQ(0, m_block.Append(m_other.GetUnit(1), &pos));
    EXPECT_EQ((Texts{"b"}), Slots(m_block));
    EXPECT_EQ((Texts{"a", "", "c"}), Slots(m_other));
    ExpectOwnsItsUnits(m_block);
}

TEST_F(ParserBlockTest, AppendAdvancesTheCallersSlotInTheOldBlock)
{
    Fill(m_other, {"a", "b", "c"});
    int pos = 1;
    m_block.Append(m_other.GetUnit(1), &pos);
    EXPECT_EQ(2, pos);
}

TEST_F(ParserBlockTest, AppendWithoutASlotSearchesTheOldBlock)
{
    Fill(m_other, {"a", "b"});
    m_block.Append(m_other.GetUnit(1), nullptr);
    EXPECT_EQ((Texts{"a", ""}), Slots(m_other));
}

TEST_F(ParserBlockTest, AppendOfAnOwnUnitMovesItToTheEnd)
{
    Fill(m_block, {"a", "b"});
    EXPECT_EQ(2, m_block.Append(m_block.GetUnit(0)));
    EXPECT_EQ((Texts{"", "b", "a"}), Slots(m_block));
}

TEST_F(ParserBlockTest, AppendAsksTheOldBlockToGiveTheUnitUp)
{
    class AskedBlock : public CParserBlock
    {
    public:
        using CParserBlock::CParserBlock;
        long RemoveElement(CParserUnit* unit, int* pos, int deleteIt) override
        {
            ++asked;
            deleted += deleteIt;
            return CParserBlock::RemoveElement(unit, pos, deleteIt);
        }
        int asked = 0;
        int deleted = 0;
    } old(nullptr);
    Fill(old, {"a"});
    m_block.Append(old.GetUnit(0));
    EXPECT_EQ(1, old.asked);
    EXPECT_EQ(0, old.deleted);
}

TEST_F(ParserBlockTest, RemoveElementLeavesAHole)
{
    Fill(m_block, {"a", "b", "c"});
    EXPECT_EQ(0, m_block.RemoveElement(m_block.GetUnit(1), nullptr, 1));
    EXPECT_EQ(3u, m_block.GetCount());
    EXPECT_EQ((Texts{"a", "", "c"}), Slots(m_block));
}

TEST_F(ParserBlockTest, TheTextOfABlockSkipsHoles)
{
    Fill(m_block, {"a", "b", "c"});
    m_block.RemoveElement(m_block.GetUnit(1), nullptr, 1);
    EXPECT_EQ("a\nc\n", TextOf(m_block));
}

TEST_F(ParserBlockTest, RemoveElementAdvancesTheGivenSlot)
{
    Fill(m_block, {"a", "b", "c"});
    int pos = 1;
    EXPECT_EQ(0, m_block.RemoveElement(m_block.GetUnit(1), &pos, 1));
    EXPECT_EQ(2, pos);
}

TEST_F(ParserBlockTest, RemoveElementDeletesOnRequestOnly)
{
    int alive = 0;
    CountedUnit* const kept = new CountedUnit(alive);
    m_block.Append(kept);
    EXPECT_EQ(0, m_block.RemoveElement(kept, nullptr, 0));
    EXPECT_EQ(1, alive);
    m_block.Append(kept);
    EXPECT_EQ(0, m_block.RemoveElement(kept, nullptr, 1));
    EXPECT_EQ(0, alive);
}

TEST_F(ParserBlockTest, AUnitTakenOutWithoutDeletingBelongsToTheCaller)
{
    int alive = 0;
    CountedUnit* const kept = new CountedUnit(alive);
    {
        CParserBlock block(nullptr);
        block.Append(kept);
        block.RemoveElement(kept, nullptr, 0);
    }
    EXPECT_EQ(1, alive);
    delete kept;
}

TEST_F(ParserBlockTest, AUnitTakenOutWithoutDeletingIsFree)
{
    int alive = 0;
    CountedUnit* const kept = new CountedUnit(alive);
    {
        CParserBlock block(nullptr);
        block.Append(kept);
        block.RemoveElement(kept, nullptr, 0);
    }
    EXPECT_EQ(nullptr, kept->m_block);
    kept->m_block = nullptr;
    EXPECT_EQ(0, m_block.Append(kept));
    EXPECT_EQ((Texts{"x"}), Slots(m_block));
}

TEST_F(ParserBlockTest, RemoveElementOfASlotThatHoldsAnotherUnitChangesNothing)
{
    Fill(m_block, {"a", "b", "", "c"});
    for (const int slot : {1, 2, 3, 4, 99, -1}) {
        int pos = slot;
        EXPECT_EQ(1, m_block.RemoveElement(m_block.GetUnit(0), &pos, 1)) << slot;
        EXPECT_EQ(slot, pos);
        EXPECT_EQ((Texts{"a", "b", "", "c"}), Slots(m_block)) << slot;
    }
}

TEST_F(ParserBlockTest, RemoveElementOfAUnitThatIsNotListedChangesNothing)
{
    Fill(m_block, {"a", "b"});
    Fill(m_other, {"c"});
    EXPECT_EQ(1, m_block.RemoveElement(m_other.GetUnit(0), nullptr, 1));
    EXPECT_EQ((Texts{"a", "b"}), Slots(m_block));
    EXPECT_EQ((Texts{"c"}), Slots(m_other));
}

TEST_F(ParserBlockTest, GetBufferClearsTheTextFirst)
{
    wxString text = "old";
    m_block.GetBuffer(text, false);
    EXPECT_EQ("", text);
}

TEST_F(ParserBlockTest, GetBufferEndsEveryLineAndIgnoresItsFlag)
{
    m_block.CreateUnit(wxSharedPtr<CParserFile>(), "a", 1);
    m_block.CreateUnit(wxSharedPtr<CParserFile>(), "", 2);
    for (const bool flag : {false, true}) {
        wxString text;
        m_block.GetBuffer(text, flag);
        EXPECT_EQ("a\n\n", text) << flag;
    }
}

TEST_F(ParserBlockTest, InsertBlockMovesTheUnitsInTheirOrder)
{
    const struct
    {
        int pos;
        Texts slots;
    } cases[] = {{0, {"x", "y", "a", "b"}}, {1, {"a", "x", "y", "b"}}, {2, {"a", "b", "x", "y"}}};
    for (const auto& [slot, slots] : cases) {
        CParserBlock block(nullptr);
        CParserBlock source(nullptr);
        Fill(block, {"a", "b"});
        Fill(source, {"x", "", "y"});
        int pos = slot;
        block.InsertBlock(&source, &pos);
        EXPECT_EQ(slots, Slots(block));
        EXPECT_EQ(slot + 2, pos);
        ExpectOwnsItsUnits(block);
    }
}

TEST_F(ParserBlockTest, InsertBlockLeavesHolesInTheSource)
{
    Fill(m_other, {"x", "", "y"});
    int pos = 0;
    m_block.InsertBlock(&m_other, &pos);
    EXPECT_EQ((Texts{"", "", ""}), Slots(m_other));
}

TEST_F(ParserBlockTest, InsertBlockWithoutASlotInsertsAtTheEnd)
{
    Fill(m_block, {"a"});
    Fill(m_other, {"x", "y"});
    m_block.InsertBlock(&m_other, nullptr);
    EXPECT_EQ((Texts{"a", "x", "y"}), Slots(m_block));
    ExpectOwnsItsUnits(m_block);
}

TEST_F(ParserBlockTest, InsertBlockOfNothingMovesNothing)
{
    Fill(m_block, {"a"});
    Fill(m_other, {"", ""});
    int pos = 1;
    m_block.InsertBlock(&m_other, &pos);
    EXPECT_EQ(1, pos);
    EXPECT_EQ((Texts{"a"}), Slots(m_block));
}

TEST_F(ParserBlockTest, InsertBlockKeepsTheHolesOfTheReceiver)
{
    Fill(m_block, {"", "a", ""});
    Fill(m_other, {"x"});
    int pos = 2;
    m_block.InsertBlock(&m_other, &pos);
    EXPECT_EQ((Texts{"", "a", "x", ""}), Slots(m_block));
}

TEST_F(ParserBlockTest, ExtractBlockMovesTheUnitsOfASpan)
{
    const struct
    {
        int from, to, after;
        Texts left, moved;
    } cases[] = {
        {0, 0, 1, {"", "b", "", "c"}, {"z", "a"}},
        {1, 2, 3, {"a", "", "", "c"}, {"z", "b"}},
        {0, 3, 4, {"", "", "", ""}, {"z", "a", "b", "c"}},
        {1, -1, 4, {"a", "", "", ""}, {"z", "b", "c"}},
        {2, 2, 3, {"a", "b", "", "c"}, {"z"}},
    };
    for (const auto& [from, to, after, left, moved] : cases) {
        CParserBlock block(nullptr);
        CParserBlock destination(nullptr);
        Fill(block, {"a", "b", "", "c"});
        Fill(destination, {"z"});
        EXPECT_EQ(after, block.ExtractBlock(&destination, from, to)) << from << ' ' << to;
        EXPECT_EQ(left, Slots(block)) << from << ' ' << to;
        EXPECT_EQ(moved, Slots(destination)) << from << ' ' << to;
        ExpectOwnsItsUnits(destination);
    }
}

TEST_F(ParserBlockTest, ACloneIsDetachedAndHoldsClonesWithoutHoles)
{
    Fill(m_block, {"a", "", "b"});
    const std::unique_ptr<CParserBlock> clone(m_block.Clone());
    EXPECT_EQ(nullptr, clone->GetParser());
    EXPECT_EQ((Texts{":0:a", ":0:b"}), UnitsOf(*clone));
    EXPECT_EQ(2u, clone->GetCount());
    EXPECT_NE(m_block.GetUnit(0), clone->GetUnit(0));
    ExpectOwnsItsUnits(*clone);
    EXPECT_EQ((Texts{"a", "", "b"}), Slots(m_block));
}

TEST_F(ParserBlockTest, ACloneThatAnotherBlockListsIsTakenOutOfIt)
{
    class RegisteringUnit : public CParserUnit
    {
    public:
        explicit RegisteringUnit(CParserBlock& registry)
            : CParserUnit(wxSharedPtr<CParserFile>(), nullptr, "r", 1), m_registry(registry)
        {}
        CParserUnit* Clone() override
        {
            CParserUnit* const clone = CParserUnit::Clone();
            m_registry.Append(clone);
            return clone;
        }

    private:
        CParserBlock& m_registry;
    };
    m_block.Append(new RegisteringUnit(m_other));
    const std::unique_ptr<CParserBlock> clone(m_block.Clone());
    EXPECT_EQ((Texts{"r"}), Slots(*clone));
    EXPECT_EQ((Texts{""}), Slots(m_other));
    ExpectOwnsItsUnits(*clone);
}

TEST_F(ParserBlockTest, AssigningSharesTheUnitsAndTheParser)
{
    Fill(m_block, {"a", "", "b"});
    m_other = m_block;
    EXPECT_EQ(&m_parser, m_other.GetParser());
    ASSERT_EQ(3u, m_other.GetCount());
    for (unsigned int slot = 0; slot < 3; ++slot)
        EXPECT_EQ(m_block.GetUnit(slot), m_other.GetUnit(slot));
    // One of the two gives the units away, or both would delete them.
    for (int slot = 0; slot < 3;)
        if (m_other.RemoveElement(m_other.GetUnit(slot), &slot, 0) != 0)
            ++slot;
}

TEST_F(ParserBlockTest, AssigningABlockToItselfChangesNothing)
{
    Fill(m_block, {"a", "", "b"});
    const CParserBlock& same = m_block;
    m_block = same;
    EXPECT_EQ((Texts{"a", "", "b"}), Slots(m_block));
    EXPECT_EQ(&m_parser, m_block.GetParser());
}

TEST_F(ParserBlockTest, ABlockDeletesItsUnits)
{
    int alive = 0;
    {
        CParserBlock block(nullptr);
        block.Append(new CountedUnit(alive));
        block.Append(new CountedUnit(alive));
        block.RemoveElement(block.GetUnit(0), nullptr, 1);
        ASSERT_EQ(1, alive);
    }
    EXPECT_EQ(0, alive);
}

TEST_F(ParserBlockTest, AMovedUnitDiesWithItsNewBlock)
{
    int alive = 0;
    {
        CParserBlock receiver(nullptr);
        {
            CParserBlock giver(nullptr);
            giver.Append(new CountedUnit(alive));
            giver.Append(new CountedUnit(alive));
            giver.Append(new CountedUnit(alive));
            receiver.Append(giver.GetUnit(0));
            giver.ExtractBlock(&receiver, 1, 1);
            receiver.InsertBlock(&giver, nullptr);
        }
        EXPECT_EQ(3, alive);
    }
    EXPECT_EQ(0, alive);
}

TEST_F(ParserBlockTest, IndexOfFindsAUnitsSlot)
{
    Fill(m_block, {"a", "", "b"});
    Fill(m_other, {"c"});
    EXPECT_EQ(2, m_block.IndexOf(m_block.GetUnit(2)));
    EXPECT_EQ(-1, m_block.IndexOf(m_other.GetUnit(0)));
}

TEST_F(ParserBlockTest, InsertBehindListsAFreeUnitAtTheNextSlot)
{
    const struct
    {
        int index;
        unsigned int slot;
        Texts slots;
    } cases[] = {{0, 1, {"a", "x", "b"}}, {1, 2, {"a", "b", "x"}}, {7, 2, {"a", "b", "x"}}};
    for (const auto& [index, slot, slots] : cases) {
        CParserBlock block(nullptr);
        Fill(block, {"a", "b"});
        CParserUnit* const unit = new CParserUnit(wxSharedPtr<CParserFile>(), nullptr, "x", 1);
        EXPECT_EQ(slot, block.InsertBehind(unit, index)) << index;
        EXPECT_EQ(slots, Slots(block)) << index;
        EXPECT_EQ(&block, unit->m_block);
    }
}

} // namespace
