#pragma once

#include "base/api.h"

#include <wx/arrstr.h>
#include <wx/string.h>

#include <memory>
#include <string_view>
#include <unordered_map>

/// One entry of the define table.
struct _DefineInfo
{
    wxArrayString params; ///< The parameter names; empty for a define without parameters.
    wxString value;       ///< The value, in which the defines it mentions are already replaced.
    wxString origin;      ///< Where it was defined (see CParserUnit::GetContext); empty for a define of the host.
};

/// From a define's name to the define. A name is looked up where it stands in a text, without a copy of it.
class CMapStringToDefineInfo
{
public:
    /// A define with its name.
    struct Entry
    {
        wxString name;      ///< Compared with case.
        _DefineInfo define; ///< What it stands for.
    };

    ///@{
    /// Null when there is no such define. A define stays where it is until it is erased.
    _DefineInfo* Find(std::wstring_view name)
    {
        const auto found = m_entries.find(name);
        return found == m_entries.end() ? nullptr : &found->second->define;
    }
    const _DefineInfo* Find(std::wstring_view name) const
    {
        const auto found = m_entries.find(name);
        return found == m_entries.end() ? nullptr : &found->second->define;
    }
    ///@}

    /// The define of this name; an empty one is made when there is none.
    _DefineInfo& operator[](std::wstring_view name)
    {
        if (_DefineInfo* const found = Find(name))
            return *found;
        auto entry = std::make_unique<Entry>(Entry{wxString(name.data(), name.size()), {}});
        const std::wstring_view key(entry->name.wx_str(), entry->name.length());
        return m_entries.emplace(key, std::move(entry)).first->second->define;
    }

    /// Removes a define.
    /// @return whether there was one.
    bool Erase(std::wstring_view name) { return m_entries.erase(name) != 0; }
    /// Removes all.
    void Clear() { m_entries.clear(); }

    /// Calls `visit` with every entry, in no particular order.
    template <typename Visit> void ForEach(Visit visit) const
    {
        for (const auto& entry : m_entries)
            visit(*entry.second);
    }

private:
    std::unordered_map<std::wstring_view, std::unique_ptr<Entry>> m_entries; ///< The keys stand in the entries.
};
