#pragma once

#include "base/api.h"

#include <wx/arrstr.h>
#include <wx/string.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/// One entry of the define table.
struct _DefineInfo
{
    wxArrayString params; ///< The parameter names; empty for a define without parameters.
    wxString value;       ///< The value, in which the defines it mentions are already replaced.
    wxString origin;      ///< Where it was defined (see CParserUnit::GetContext); empty for a define of the host.

    /// Exchanges two defines without a copy; moving one would copy its texts.
    void Swap(_DefineInfo& other);
};

/// From a define's name to the define. A name is looked up where it stands in a text, without a copy of it.
///
/// A million defines are looked up in one cache line each: the slots lie in one piece of memory, and tell by their
/// hashes which define to look into. They are small, so that more of them stay in the caches; 2^32 defines would take
/// a terabyte before they ran out of numbers.
class CMapStringToDefineInfo
{
public:
    /// A define with its name.
    struct Entry
    {
        wxString name;      ///< Compared with case.
        _DefineInfo define; ///< What it stands for.
    };

    CMapStringToDefineInfo() = default;
    CMapStringToDefineInfo(const CMapStringToDefineInfo&) = delete;
    CMapStringToDefineInfo& operator=(const CMapStringToDefineInfo&) = delete;

    /// Null when there is no such define. A define stays where it is until it is erased.
    const _DefineInfo* Find(std::wstring_view name) const;

    /// Makes the define of this name what `define` is, and `define` what it was before: empty when there was none.
    void Set(const wxString& name, _DefineInfo& define);

    /// Removes a define.
    /// @return whether there was one.
    bool Erase(std::wstring_view name);
    /// Removes all.
    void Clear();

    /// The characters of all values together.
    size_t ValuesLength() const { return m_valuesLength; }

    /// Calls `visit` with every entry, in the order in which they were added; but one that was added after another was
    /// removed may come in that one's place.
    template <typename Visit> void ForEach(Visit visit) const
    {
        for (const std::unique_ptr<Piece>& piece : m_pieces) {
            for (const Place& place : *piece) {
                if (place)
                    visit(*place);
            }
        }
    }

private:
    /// Nothing: what was there has been erased, or nothing has been there yet.
    using Place = std::optional<Entry>;
    static constexpr size_t PieceSize = 16;
    using Piece = std::array<Place, PieceSize>;

    struct Slot
    {
        std::uint32_t hash = 0;
        std::uint32_t place = 0; ///< Its number, counted from 1; 0: the slot is free.
    };

    Place& PlaceOf(const Slot& slot) const
    {
        return (*m_pieces[(slot.place - 1) / PieceSize])[(slot.place - 1) % PieceSize];
    }
    size_t SlotOf(std::uint32_t hash, std::wstring_view name) const;
    size_t FreeSlot(std::uint32_t hash) const;
    size_t Following(size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }
    Entry& Add(std::uint32_t hash, const wxString& name);
    std::uint32_t FreePlace();
    void Grow();

    std::vector<Slot> m_slots; ///< A power of two of them, or none. A define stands in or behind the slot of its hash.
    size_t m_count = 0;
    size_t m_valuesLength = 0;
    /// The places, in the order in which they were made, in which memory gives them back best.
    std::vector<std::unique_ptr<Piece>> m_pieces;
    std::uint32_t m_made = 0;          ///< How many of the places have been used.
    std::vector<std::uint32_t> m_free; ///< Those of them that hold nothing.
};
