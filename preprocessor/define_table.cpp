#include "preprocessor/define_table.h"

#include "preprocessor/name_hash_detail.h"
#include "preprocessor/text_span_detail.h"

using text_detail::View;

namespace
{

constexpr size_t FewestSlots = 64;

std::uint32_t HashOf(std::wstring_view name)
{
    return static_cast<std::uint32_t>(HashOfName(name));
}

} // namespace

void _DefineInfo::Swap(_DefineInfo& other)
{
    params.swap(other.params);
    value.swap(other.value);
    origin.swap(other.origin);
}

/// The slot of a name, or the free one where it would be put; there must be a free one.
size_t CMapStringToDefineInfo::SlotOf(std::uint32_t hash, std::wstring_view name) const
{
    size_t slot = hash & (m_slots.size() - 1);
    while (m_slots[slot].place && (m_slots[slot].hash != hash || View(PlaceOf(m_slots[slot])->name) != name))
        slot = Following(slot);
    return slot;
}

const _DefineInfo* CMapStringToDefineInfo::Find(std::wstring_view name) const
{
    if (m_slots.empty())
        return nullptr;
    const Slot& slot = m_slots[SlotOf(HashOf(name), name)];
    return slot.place ? &PlaceOf(slot)->define : nullptr;
}

void CMapStringToDefineInfo::Set(const wxString& name, _DefineInfo& define)
{
    const std::uint32_t hash = HashOf(View(name));
    const Slot known = m_slots.empty() ? Slot() : m_slots[SlotOf(hash, View(name))];
    Entry& entry = known.place ? *PlaceOf(known) : Add(hash, name);
    m_valuesLength += define.value.length() - entry.define.value.length();
    entry.define.Swap(define);
}

CMapStringToDefineInfo::Entry& CMapStringToDefineInfo::Add(std::uint32_t hash, const wxString& name)
{
    // Above three quarters, the runs of slots that are taken become long.
    if ((m_count + 1) * 4 > m_slots.size() * 3)
        Grow();
    const Slot slot{hash, FreePlace()};
    Entry& entry = PlaceOf(slot).emplace();
    entry.name = name;
    m_slots[FreeSlot(hash)] = slot;
    ++m_count;
    return entry;
}

std::uint32_t CMapStringToDefineInfo::FreePlace()
{
    if (m_free.empty()) {
        if (m_made % PieceSize == 0)
            m_pieces.push_back(std::make_unique<Piece>());
        return ++m_made;
    }
    const std::uint32_t place = m_free.back();
    m_free.pop_back();
    return place;
}

void CMapStringToDefineInfo::Grow()
{
    auto slots = MakeSlots<Slot>(m_slots.empty() ? FewestSlots : m_slots.size() * 2);
    slots.swap(m_slots);
    for (const Slot& slot : slots) {
        if (slot.place)
            m_slots[FreeSlot(slot.hash)] = slot;
    }
}

/// The first free slot for a name that is known not to be there.
size_t CMapStringToDefineInfo::FreeSlot(std::uint32_t hash) const
{
    size_t slot = hash & (m_slots.size() - 1);
    while (m_slots[slot].place)
        slot = Following(slot);
    return slot;
}

bool CMapStringToDefineInfo::Erase(std::wstring_view name)
{
    if (m_slots.empty())
        return false;
    size_t hole = SlotOf(HashOf(name), name);
    const Slot erased = m_slots[hole];
    if (!erased.place)
        return false;
    Place& place = PlaceOf(erased);
    m_valuesLength -= place->define.value.length();
    place.reset();
    m_free.push_back(erased.place);
    --m_count;
    // What stands behind the hole because its own slot was taken is searched from there, and must not be behind a hole.
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = Following(hole); m_slots[slot].place; slot = Following(slot)) {
        const size_t distance = (slot - m_slots[slot].hash) & mask;
        if (distance < ((slot - hole) & mask))
            continue;
        m_slots[hole] = m_slots[slot];
        hole = slot;
    }
    m_slots[hole].place = 0;
    return true;
}

void CMapStringToDefineInfo::Clear()
{
    m_slots.clear();
    m_count = 0;
    m_valuesLength = 0;
    m_pieces.clear();
    m_made = 0;
    m_free.clear();
}
