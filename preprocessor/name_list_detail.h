#pragma once

#include <wx/arrstr.h>
#include <wx/defs.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

/// The names of an array, to be looked up where they stand in a text. The array must live as long and not change.
///
/// Many names are found by an index in one piece of memory, whose slots tell by their hashes which name to look at: a
/// lookup waits for memory twice, however many names there are.
class CNameList
{
public:
    explicit CNameList(const wxArrayString& names) : m_names(names) {}

    /// The index of the first such name, or wxNOT_FOUND.
    int Find(std::wstring_view name) const
    {
        if (m_names.size() <= FewNames)
            return FindAmongFew(name);
        if (m_slots.empty())
            MakeSlots();
        return m_slots[SlotOf(HashOf(name), name)].index;
    }

private:
    static constexpr size_t FewNames = 8;

    struct Slot
    {
        std::uint32_t hash = 0;
        std::int32_t index = wxNOT_FOUND; ///< wxNOT_FOUND: the slot is free.
    };

    static std::uint32_t HashOf(std::wstring_view name)
    {
        return static_cast<std::uint32_t>(std::hash<std::wstring_view>()(name));
    }

    int FindAmongFew(std::wstring_view name) const
    {
        for (size_t i = 0; i < m_names.size(); ++i) {
            if (View(i) == name)
                return static_cast<int>(i);
        }
        return wxNOT_FOUND;
    }

    /// The slot of a name, or the free one that it would have.
    size_t SlotOf(std::uint32_t hash, std::wstring_view name) const
    {
        const size_t last = m_slots.size() - 1;
        size_t slot = hash & last;
        while (m_slots[slot].index != wxNOT_FOUND &&
               (m_slots[slot].hash != hash || View(static_cast<size_t>(m_slots[slot].index)) != name))
            slot = (slot + 1) & last;
        return slot;
    }

    void MakeSlots() const
    {
        size_t count = 1;
        while (count < 2 * m_names.size())
            count *= 2;
        m_slots.resize(count);
        for (size_t i = 0; i < m_names.size(); ++i) {
            const std::uint32_t hash = HashOf(View(i));
            Slot& slot = m_slots[SlotOf(hash, View(i))];
            if (slot.index == wxNOT_FOUND)
                slot = {hash, static_cast<std::int32_t>(i)};
        }
    }

    std::wstring_view View(size_t index) const
    {
        return std::wstring_view(m_names[index].wx_str(), m_names[index].length());
    }

    const wxArrayString& m_names;
    mutable std::vector<Slot> m_slots; ///< A power of two of them, made by the first lookup that needs them.
};
