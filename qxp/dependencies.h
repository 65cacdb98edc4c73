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

    /// "TARGET: FILE FILE ..." and a line feed, with the characters escaped that make takes for its own. The target is
    /// the output or, when that is "" for standard output, the input with the extension ".out"; both as they were
    /// given.
    std::string MakeRule(const std::string& output, const std::string& input) const;

private:
    std::vector<std::string> m_files;
    std::unordered_set<std::string> m_known;
};
