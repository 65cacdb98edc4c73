#pragma once

#include "parser/parser_file.h"

#include <string>
#include <unordered_map>
#include <vector>

/// Where each line of a result was read: a source map of version 3, with one segment for each line, at column 0.
class SourceMap
{
public:
    /// @param searchDirectory the directory that texts were named from, as it was given; must outlive the map.
    explicit SourceMap(const std::string& searchDirectory) : m_searchDirectory(searchDirectory) {}

    /// Appends the next line of the result.
    void AddLine(const CSourceLine& source);

    /// The map as JSON.
    /// @param result the file of the result, "" for standard output; @param map the file that the map is for.
    std::string Text(const std::string& result, const std::string& map) const;

private:
    long long IndexOf(const wxSharedPtr<CParserFile>& file);

    const std::string& m_searchDirectory;
    std::string m_mappings;
    bool m_isFirstLine = true;
    std::vector<std::string> m_sources; ///< As they are named from the current directory.
    std::unordered_map<std::string, long long> m_indexes;
    wxSharedPtr<CParserFile> m_lastFile;
    long long m_lastFileIndex = 0;
    long long m_lastSource = 0; ///< A segment holds differences to the one before it.
    long long m_lastLine = 0;   ///< Counted from 0.
};
