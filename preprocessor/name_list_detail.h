#pragma once

#include "preprocessor/name_hash_detail.h"
#include "preprocessor/text_span_detail.h"

#include <wx/arrstr.h>
#include <wx/defs.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The names of an array, to be looked up where they stand in a text. The array must live as long and not change.
///
/// Many names are found by an index in one piece of memory, whose slots tell by their hashes which name to look at: a
/// lookup waits for memory twice, however many names there are. Parameters are often used in the order in which they
/// are declared: once two were, the following one is looked at before that.
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
            MakeIndex();
        if (m_expected < m_names.size() && View(m_expected) == name)
            return static_cast<int>(m_expected++);
        const int found = m_slots[SlotOf(HashOf(name), name)].index;
        if (found != wxNOT_FOUND)
            NoteFound(static_cast<size_t>(found));
        return found;
    }

private:
    static constexpr size_t FewNames = 8;

    struct Slot
    {
        std::uint32_t hash = 0;
        std::int32_t index = wxNOT_FOUND; ///< wxNOT_FOUND: the slot is free.
    };

    static std::uint32_t HashOf(std::wstring_view name) { return static_cast<std::uint32_t>(HashOfName(name)); }

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

    void NoteFound(size_t index) const
    {
        const bool inOrder = index == m_behindLast && !m_hasEqualNames;
        m_behindLast = index + 1;
        m_expected = inOrder ? m_behindLast : m_names.size();
    }

    void MakeIndex() const
    {
        size_t count = 1;
        while (count < 2 * m_names.size())
            count *= 2;
        m_slots = MakeSlots<Slot>(count);
        // The slots of some names are fetched at once: waiting for each of them costs more than all the rest.
        constexpr size_t atOnce = 16;
        std::uint32_t hashes[atOnce];
        for (size_t from = 0; from < m_names.size(); from += atOnce) {
            const size_t to = std::min(from + atOnce, m_names.size());
            for (size_t i = from; i < to; ++i) {
                hashes[i - from] = HashOf(View(i));
                __builtin_prefetch(&m_slots[hashes[i - from] & (count - 1)], 1);
            }
            for (size_t i = from; i < to; ++i)
                Enter(i, hashes[i - from]);
        }
        m_expected = m_names.size();
    }

    void Enter(size_t index, std::uint32_t hash) const
    {
        Slot& slot = m_slots[SlotOf(hash, View(index))];
        if (slot.index == wxNOT_FOUND)
            slot = {hash, static_cast<std::int32_t>(index)};
        else
            m_hasEqualNames = true;
    }

    std::wstring_view View(size_t index) const { return text_detail::View(m_names[index]); }

    const wxArrayString& m_names;
    mutable std::vector<Slot> m_slots; ///< A power of two of them, made by the first lookup that needs them.
    mutable bool m_hasEqualNames = false;
    mutable size_t m_behindLast = 0; ///< Behind the name that the index found last.
    mutable size_t m_expected = 0;   ///< The name that is looked at first, if there is such a one.
};
