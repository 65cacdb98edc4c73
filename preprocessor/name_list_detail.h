#pragma once

#include <wx/arrstr.h>
#include <wx/defs.h>

#include <cstddef>
#include <string_view>
#include <unordered_map>

/// The names of an array, to be looked up where they stand in a text. The array must live as long and not change.
class CNameList
{
public:
    explicit CNameList(const wxArrayString& names) : m_names(names) {}

    /// The index of the first such name, or wxNOT_FOUND.
    int Find(std::wstring_view name) const
    {
        if (m_names.size() <= FewNames)
            return FindAmongFew(name);
        if (m_indices.empty()) {
            for (size_t i = 0; i < m_names.size(); ++i)
                m_indices.emplace(View(i), static_cast<int>(i));
        }
        const auto found = m_indices.find(name);
        return found == m_indices.end() ? wxNOT_FOUND : found->second;
    }

private:
    static constexpr size_t FewNames = 8;

    int FindAmongFew(std::wstring_view name) const
    {
        for (size_t i = 0; i < m_names.size(); ++i) {
            if (View(i) == name)
                return static_cast<int>(i);
        }
        return wxNOT_FOUND;
    }

    std::wstring_view View(size_t index) const
    {
        return std::wstring_view(m_names[index].wx_str(), m_names[index].length());
    }

    const wxArrayString& m_names;
    mutable std::unordered_map<std::wstring_view, int> m_indices;
};
