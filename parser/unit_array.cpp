#include "parser/unit_array.h"

#include "base/posix_detail.h"
#include "base/utf8_detail.h"
#include "parser/line_text_detail.h"
#include "parser/parser_unit.h"

#include <wx/defs.h>

#include <algorithm>
#include <new>
#include <utility>

namespace
{

void SetUnit(CUnitSlot& slot, CParserUnit* unit)
{
    slot.text = nullptr;
    slot.unit = unit;
}

} // namespace

CArrayParserUnit& CArrayParserUnit::operator=(const CArrayParserUnit& other)
{
    if (this == &other)
        return *this;
    Empty();
    const size_t count = other.GetCount();
    CUnitSlot* const slots = MakeRoom(0, count);
    for (size_t i = 0; i < count; ++i)
        SetUnit(slots[i], other.Item(i));
    return *this;
}

void CArrayParserUnit::Insert(CParserUnit* unit, size_t index)
{
    SetUnit(*MakeRoom(index, 1), unit);
}

int CArrayParserUnit::Index(const CParserUnit* unit) const
{
    const size_t count = GetCount();
    for (size_t i = 0; i < count; ++i) {
        const CUnitSlot& slot = Slot(i);
        if (!slot.IsLine() && slot.unit == unit)
            return static_cast<int>(i);
    }
    return wxNOT_FOUND;
}

void CArrayParserUnit::RemoveAt(size_t index, size_t count)
{
    for (size_t i = index; i < index + count; ++i) {
        if (Slot(i).IsLine())
            DropLine(i);
    }
    MoveGap(index);
    m_gapEnd += count;
}

void CArrayParserUnit::Empty()
{
    const size_t count = GetCount();
    for (size_t i = 0; i < count; ++i) {
        if (Slot(i).IsLine())
            DropLine(i);
    }
    m_gapStart = 0;
    m_gapEnd = m_capacity;
}

void CArrayParserUnit::Reserve(size_t count)
{
    if (m_gapEnd - m_gapStart < count)
        Grow(count);
}

void CArrayParserUnit::InsertLine(size_t index, CLineText& text, std::string_view bytes, uint32_t line)
{
    CUnitSlot& slot = *MakeRoom(index, 1);
    slot.text = &text;
    slot.bytes = bytes.data();
    slot.length = static_cast<uint32_t>(bytes.size());
    slot.line = line;
}

void CArrayParserUnit::SetLine(size_t index, std::string_view bytes)
{
    CUnitSlot& slot = Slot(index);
    slot.bytes = bytes.data();
    slot.length = static_cast<uint32_t>(bytes.size());
}

void CArrayParserUnit::DropLine(size_t index)
{
    CUnitSlot& slot = Slot(index);
    CLineText::Release(slot.text);
    SetUnit(slot, nullptr);
}

size_t CArrayParserUnit::MoveTo(CArrayParserUnit& other, size_t index, size_t begin, size_t end)
{
    size_t count = 0;
    for (size_t i = begin; i < end; ++i)
        count += !Slot(i).IsHole();
    CUnitSlot* to = other.MakeRoom(index, count);
    for (size_t i = begin; i < end; ++i) {
        CUnitSlot& slot = Slot(i);
        if (slot.IsHole())
            continue;
        *to++ = slot;
        SetUnit(slot, nullptr);
    }
    return count;
}

void CArrayParserUnit::TakeAll(CArrayParserUnit& other)
{
    other.MoveGap(other.GetCount());
    const size_t count = other.m_gapStart;
    m_slots = std::exchange(other.m_slots, Owned(std::calloc(count, sizeof(CUnitSlot))));
    m_capacity = std::exchange(other.m_capacity, count);
    m_gapStart = count;
    m_gapEnd = std::exchange(other.m_gapEnd, count);
}

void CArrayParserUnit::PutBack(CArrayParserUnit& other, size_t begin, size_t end)
{
    for (size_t i = begin; i < end; ++i) {
        CUnitSlot& slot = Slot(i);
        if (slot.IsHole())
            continue;
        other.Slot(i) = slot;
        SetUnit(slot, nullptr);
    }
}

void CArrayParserUnit::MakeUnit(CUnitSlot& slot) const
{
    CLineText* const text = slot.text;
    wxString line;
    vcq::detail::AppendUtf8(line, slot.bytes, slot.length);
    SetUnit(slot, new CParserUnit(text->File(), m_owner, line, slot.line));
    CLineText::Release(text);
}

CArrayParserUnit::Slots CArrayParserUnit::Owned(void* memory)
{
    if (!memory)
        throw std::bad_alloc();
    return Slots(static_cast<CUnitSlot*>(memory));
}

CUnitSlot* CArrayParserUnit::MakeRoom(size_t index, size_t count)
{
    Reserve(count);
    if (index != m_gapStart)
        MoveGap(index);
    CUnitSlot* const first = m_slots.get() + m_gapStart;
    m_gapStart += count;
    return first;
}

void CArrayParserUnit::MoveGap(size_t index)
{
    CUnitSlot* const slots = m_slots.get();
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
    // Most blocks of a tag tree get their few lines at once and no more.
    const size_t capacity = used ? std::max<size_t>(used + used / 2 + 8, used + count) : count;
    // Left uninitialised: a slot is written when it is taken.
    Slots slots = Owned(std::malloc(capacity * sizeof(CUnitSlot)));
    vcq::detail::PreferLargePages(slots.get(), capacity * sizeof(CUnitSlot));
    const size_t behind = m_capacity - m_gapEnd;
    std::copy_n(m_slots.get(), m_gapStart, slots.get());
    std::copy_n(m_slots.get() + m_gapEnd, behind, slots.get() + capacity - behind);
    m_slots = std::move(slots);
    m_capacity = capacity;
    m_gapEnd = capacity - behind;
}
