#pragma once

#include "base/api.h"

#include <cstddef>
#include <memory>

class CParserUnit;

/// The slots of a block: an ordered array of unit pointers, null entries included, with the operations of a pointer
/// array.
///
/// The array keeps its free room as one gap that stays where the last insertion was. A walk that inserts as it goes
/// forward (includes, loops) therefore moves each slot behind it once in all, not once per insertion.
class VC_QXPARSER_API CArrayParserUnit
{
public:
    CArrayParserUnit() = default;

    ///@{
    /// A copy lists the same units, which it does not own either.
    CArrayParserUnit(const CArrayParserUnit& other) { *this = other; }
    CArrayParserUnit& operator=(const CArrayParserUnit& other);
    ///@}

    /// The number of slots, empty ones included.
    size_t GetCount() const { return m_capacity - (m_gapEnd - m_gapStart); }
    bool IsEmpty() const { return GetCount() == 0; } ///< Whether there is no slot at all.

    ///@{
    /// The slot at `index`, counted from 0; there must be one.
    CParserUnit*& Item(size_t index) { return m_slots[index < m_gapStart ? index : index + (m_gapEnd - m_gapStart)]; }
    CParserUnit* Item(size_t index) const
    {
        return m_slots[index < m_gapStart ? index : index + (m_gapEnd - m_gapStart)];
    }
    CParserUnit*& operator[](size_t index) { return Item(index); }
    CParserUnit* operator[](size_t index) const { return Item(index); }
    ///@}

    /// The last slot; there must be one.
    CParserUnit* Last() const { return Item(GetCount() - 1); }

    /// Appends a slot with this unit.
    void Add(CParserUnit* unit) { *MakeRoom(GetCount(), 1) = unit; }
    /// Inserts a slot with this unit at `index`, at most GetCount().
    void Insert(CParserUnit* unit, size_t index) { *MakeRoom(index, 1) = unit; }

    /// Inserts `count` slots at `index` and returns the first of them, for the caller to fill.
    CParserUnit** MakeRoom(size_t index, size_t count);

    /// The first slot that holds `unit`, or wxNOT_FOUND. Looks at every slot before it.
    int Index(const CParserUnit* unit) const;

    /// Takes slots away; their units stay whose they are.
    void RemoveAt(size_t index, size_t count = 1);
    /// Takes all slots away.
    void Empty();

private:
    void MoveGap(size_t index);
    void Grow(size_t count);

    std::unique_ptr<CParserUnit*[]> m_slots;
    size_t m_capacity = 0;
    size_t m_gapStart = 0;
    size_t m_gapEnd = 0;
};
