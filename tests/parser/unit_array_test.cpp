#include "parser/parser_unit.h"
#include "parser/unit_array.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{

using Model = std::vector<CParserUnit*>;

Model Listed(const CArrayParserUnit& units)
{
    Model listed;
    for (size_t i = 0; i < units.GetCount(); ++i)
        listed.push_back(units[i]);
    return listed;
}

/// Units that arrays can list; index 0 is a hole.
class UnitArray : public ::testing::Test
{
protected:
    UnitArray()
    {
        for (int i = 0; i < 4; ++i)
            m_owned.push_back(std::make_unique<CParserUnit>(wxSharedPtr<CParserFile>(), nullptr, wxS("text"), 1));
    }

    CParserUnit* Unit(size_t index) const { return index == 0 ? nullptr : m_owned[index - 1].get(); }

private:
    std::vector<std::unique_ptr<CParserUnit>> m_owned;
};

RC_GTEST_FIXTURE_PROP(UnitArray, IsAVectorOfPointers, ())
{
    CArrayParserUnit units;
    Model model;
    const int steps = *rc::gen::inRange(1, 60);
    for (int step = 0; step < steps; ++step) {
        CParserUnit* const unit = Unit(*rc::gen::inRange<size_t>(0, 5));
        const size_t index = *rc::gen::inRange<size_t>(0, model.size() + 1);
        const auto at = model.begin() + static_cast<std::ptrdiff_t>(index);
        if (*rc::gen::inRange(0, 3) != 0) {
            units.Insert(unit, index);
            model.insert(at, unit);
        } else {
            const size_t count = *rc::gen::inRange<size_t>(0, model.size() - index + 1);
            units.RemoveAt(index, count);
            model.erase(at, at + static_cast<std::ptrdiff_t>(count));
        }
        RC_ASSERT(Listed(units) == model);
        const auto found = std::find(model.begin(), model.end(), unit);
        RC_ASSERT(units.Index(unit) == (found == model.end() ? wxNOT_FOUND : static_cast<int>(found - model.begin())));
    }
    CArrayParserUnit copy;
    copy.Add(Unit(1));
    copy = units;
    RC_ASSERT(Listed(copy) == model);
}

RC_GTEST_FIXTURE_PROP(UnitArray, SlotsThatAreTakenCanBePutBackWhereTheyWere, ())
{
    CArrayParserUnit units;
    Model model;
    for (int step = *rc::gen::inRange(1, 20); step > 0; --step) {
        CParserUnit* const unit = Unit(*rc::gen::inRange<size_t>(0, 5));
        const size_t index = *rc::gen::inRange<size_t>(0, model.size() + 1);
        units.Insert(unit, index);
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(index), unit);
    }
    CArrayParserUnit taken;
    taken.TakeAll(units);
    RC_ASSERT(Listed(taken) == model);
    RC_ASSERT(Listed(units) == Model(model.size()));
    const auto begin = *rc::gen::inRange<size_t>(0, model.size() + 1);
    const auto end = *rc::gen::inRange<size_t>(begin, model.size() + 1);
    taken.PutBack(units, begin, end);
    for (size_t i = 0; i < model.size(); ++i) {
        const bool isBack = begin <= i && i < end;
        RC_ASSERT(units[i] == (isBack ? model[i] : nullptr));
        RC_ASSERT(taken[i] == (isBack ? nullptr : model[i]));
    }
    units.Add(Unit(1));
    RC_ASSERT(units.Last() == Unit(1));
}

TEST_F(UnitArray, AnAssignmentToItselfKeepsTheSlots)
{
    CArrayParserUnit units;
    units.Add(Unit(1));
    units.Add(Unit(0));
    const CArrayParserUnit& same = units;
    units = same;
    EXPECT_EQ(Listed(units), (Model{Unit(1), Unit(0)}));
    EXPECT_EQ(units.Last(), nullptr);
}

} // namespace
