#include "preprocessor/define_table.h"

#include "preprocessor/name_hash_detail.h"
#include "preprocessor/text_span_detail.h"

using text_detail::View;

namespace
{

constexpr size_t FewestSlots = 64;

} // namespace

void _DefineInfo::Swap(_DefineInfo& other)
{
    params.swap(other.params);
    value.swap(other.value);
    origin.swap(other.origin);
}

/// The slot of a name, or the free one where it would be put; there must be a free one.
size_t CMapStringToDefineInfo::SlotOf(std::uint64_t hash, std::wstring_view name) const
{
    size_t slot = static_cast<size_t>(hash) & (m_slots.size() - 1);
    while (m_slots[slot].place && (m_slots[slot].hash != hash || View((*m_slots[slot].place)->name) != name))
        slot = Following(slot);
    return slot;
}

const _DefineInfo* CMapStringToDefineInfo::Find(std::wstring_view name) const
{
    if (m_slots.empty())
        return nullptr;
    const Place* const place = m_slots[SlotOf(HashOfName(name), name)].place;
    return place ? &(*place)->define : nullptr;
}

void CMapStringToDefineInfo::Set(const wxString& name, _DefineInfo& define)
{
    const std::uint64_t hash = HashOfName(View(name));
    Place* const known = m_slots.empty() ? nullptr : m_slots[SlotOf(hash, View(name))].place;
    Entry& entry = known ? **known : Add(hash, name);
    m_valuesLength += define.value.length() - entry.define.value.length();
    entry.define.Swap(define);
}

CMapStringToDefineInfo::Entry& CMapStringToDefineInfo::Add(std::uint64_t hash, const wxString& name)
{
    // Above three quarters, the runs of slots that are taken become long.
    if ((m_count + 1) * 4 > m_slots.size() * 3)
        Grow();
    Place* const place = FreePlace();
    Entry& entry = place->emplace();
    entry.name = name;
    m_slots[SlotOf(hash, View(name))] = {hash, place};
    ++m_count;
    return entry;
}

CMapStringToDefineInfo::Place* CMapStringToDefineInfo::FreePlace()
{
    if (m_free.empty())
        return &m_places.emplace_back();
    Place* const place = m_free.back();
    m_free.pop_back();
    return place;
}

void CMapStringToDefineInfo::Grow()
{
    auto slots = MakeSlots<Slot>(m_slots.empty() ? FewestSlots : m_slots.size() * 2);
    slots.swap(m_slots);
    for (const Slot& slot : slots) {
        if (slot.place)
            m_slots[SlotOf(slot.hash, View((*slot.place)->name))] = slot;
    }
}

bool CMapStringToDefineInfo::Erase(std::wstring_view name)
{
    if (m_slots.empty())
        return false;
    size_t hole = SlotOf(HashOfName(name), name);
    Place* const erased = m_slots[hole].place;
    if (!erased)
        return false;
    m_valuesLength -= (*erased)->define.value.length();
    erased->reset();
    m_free.push_back(erased);
    --m_count;
    // What stands behind the hole because its own slot was taken is searched from there, and must not be behind a hole.
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = Following(hole); m_slots[slot].place; slot = Following(slot)) {
        const size_t distance = (slot - static_cast<size_t>(m_slots[slot].hash)) & mask;
        if (distance < ((slot - hole) & mask))
            continue;
        m_slots[hole] = m_slots[slot];
        hole = slot;
    }
    m_slots[hole].place = nullptr;
    return true;
}

void CMapStringToDefineInfo::Clear()
{
    m_slots.clear();
    m_count = 0;
    m_valuesLength = 0;
    m_places.clear();
    m_free.clear();
}
