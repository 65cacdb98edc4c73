#pragma once

#include <wx/string.h>

#include <string>
#include <unordered_set>
#include <vector>

/// The files that a result was made from, once each, in the order of first reading.
class Dependencies
{
public:
    void Add(const wxString& file);

    /// "TARGET: FILE FILE ..." and a line feed, with the characters escaped that make takes for its own.
    std::string MakeRule(const wxString& target) const;

private:
    std::vector<std::string> m_files;
    std::unordered_set<std::string> m_known;
};
