#include "preprocessor/define_table.h"

#include <functional>

namespace
{

constexpr size_t FewestSlots = 64;

size_t HashOf(std::wstring_view name)
{
    return std::hash<std::wstring_view>()(name);
}

std::wstring_view View(const wxString& name)
{
    return std::wstring_view(name.wx_str(), name.length());
}

} // namespace

void _DefineInfo::Swap(_DefineInfo& other)
{
    params.swap(other.params);
    value.swap(other.value);
    origin.swap(other.origin);
}

/// The slot of a name, or the free one where it would be put; there must be a free one.
size_t CMapStringToDefineInfo::SlotOf(size_t hash, std::wstring_view name) const
{
    size_t slot = hash & (m_slots.size() - 1);
    while (m_slots[slot].entry && (m_slots[slot].hash != hash || View(m_slots[slot].entry->name) != name))
        slot = Following(slot);
    return slot;
}

_DefineInfo* CMapStringToDefineInfo::Find(std::wstring_view name)
{
    if (m_slots.empty())
        return nullptr;
    Entry* const entry = m_slots[SlotOf(HashOf(name), name)].entry;
    return entry ? &entry->define : nullptr;
}

const _DefineInfo* CMapStringToDefineInfo::Find(std::wstring_view name) const
{
    return const_cast<CMapStringToDefineInfo*>(this)->Find(name);
}

_DefineInfo& CMapStringToDefineInfo::operator[](std::wstring_view name)
{
    if (_DefineInfo* const found = Find(name))
        return *found;
    _DefineInfo empty;
    return Add(wxString(name.data(), name.size()), empty);
}

_DefineInfo& CMapStringToDefineInfo::Add(const wxString& name, _DefineInfo& define)
{
    // Above three quarters, the runs of slots that are taken become long.
    if ((m_count + 1) * 4 > m_slots.size() * 3)
        Grow();
    const size_t hash = HashOf(View(name));
    const size_t slot = SlotOf(hash, View(name));
    Entry* const entry = MakeEntry();
    entry->name = name;
    entry->define.Swap(define);
    m_slots[slot] = {hash, entry};
    ++m_count;
    return entry->define;
}

CMapStringToDefineInfo::Entry* CMapStringToDefineInfo::MakeEntry()
{
    if (m_erased.empty())
        return &m_entries.emplace_back();
    Entry* const entry = m_erased.back();
    m_erased.pop_back();
    return entry;
}

void CMapStringToDefineInfo::Grow()
{
    std::vector<Slot> slots(m_slots.empty() ? FewestSlots : m_slots.size() * 2);
    slots.swap(m_slots);
    for (const Slot& slot : slots) {
        if (slot.entry)
            m_slots[SlotOf(slot.hash, View(slot.entry->name))] = slot;
    }
}

bool CMapStringToDefineInfo::Erase(std::wstring_view name)
{
    if (m_slots.empty())
        return false;
    size_t hole = SlotOf(HashOf(name), name);
    Entry* const erased = m_slots[hole].entry;
    if (!erased)
        return false;
    *erased = Entry();
    m_erased.push_back(erased);
    --m_count;
    // What stands behind the hole because its own slot was taken is searched from there, and must not be behind a hole.
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = Following(hole); m_slots[slot].entry; slot = Following(slot)) {
        const size_t distance = (slot - m_slots[slot].hash) & mask;
        if (distance < ((slot - hole) & mask))
            continue;
        m_slots[hole] = m_slots[slot];
        hole = slot;
    }
    m_slots[hole].entry = nullptr;
    return true;
}

void CMapStringToDefineInfo::Clear()
{
    m_slots.clear();
    m_count = 0;
    m_entries.clear();
    m_erased.clear();
}
