#include "parser/unit_array.h"

#include <wx/defs.h>

#include <algorithm>

CArrayParserUnit& CArrayParserUnit::operator=(const CArrayParserUnit& other)
{
    if (this == &other)
        return *this;
    Empty();
    const size_t count = other.GetCount();
    CParserUnit** const slots = MakeRoom(0, count);
    for (size_t i = 0; i < count; ++i)
        slots[i] = other.Item(i);
    return *this;
}

CParserUnit** CArrayParserUnit::MakeRoom(size_t index, size_t count)
{
    if (m_gapEnd - m_gapStart < count)
        Grow(count);
    MoveGap(index);
    CParserUnit** const first = m_slots.get() + m_gapStart;
    m_gapStart += count;
    return first;
}

int CArrayParserUnit::Index(const CParserUnit* unit) const
{
    const size_t count = GetCount();
    for (size_t i = 0; i < count; ++i) {
        if (Item(i) == unit)
            return static_cast<int>(i);
    }
    return wxNOT_FOUND;
}

void CArrayParserUnit::RemoveAt(size_t index, size_t count)
{
    MoveGap(index);
    m_gapEnd += count;
}

void CArrayParserUnit::Empty()
{
    m_gapStart = 0;
    m_gapEnd = m_capacity;
}

void CArrayParserUnit::MoveGap(size_t index)
{
    CParserUnit** const slots = m_slots.get();
    if (index < m_gapStart)
        std::move_backward(slots + index, slots + m_gapStart, slots + m_gapEnd);
    else if (index > m_gapStart)
        std::move(slots + m_gapEnd, slots + m_gapEnd + (index - m_gapStart), slots + m_gapStart);
    m_gapEnd = m_gapEnd + index - m_gapStart;
    m_gapStart = index;
}

void CArrayParserUnit::Grow(size_t count)
{
    const size_t used = GetCount();
    const size_t capacity = std::max<size_t>(used + used / 2 + 8, used + count);
    std::unique_ptr<CParserUnit*[]> slots(new CParserUnit*[capacity]);
    const size_t behind = m_capacity - m_gapEnd;
    std::copy_n(m_slots.get(), m_gapStart, slots.get());
    std::copy_n(m_slots.get() + m_gapEnd, behind, slots.get() + capacity - behind);
    m_slots = std::move(slots);
    m_capacity = capacity;
    m_gapEnd = capacity - behind;
}
