#pragma once

#include "parser/parser_file.h"

#include <wx/sharedptr.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CArrayParserUnit;
struct CUnitSlot;

/// A file's text as its lines in blocks share it: they are places in it, until somebody makes units of them. It lives
/// as long as one line does, and keeps the file alive so long. Blocks belong to one thread at a time, so the count of
/// lines needs no lock.
class CLineText
{
public:
    /// The longest text whose lines fit into slots.
    static constexpr size_t LargestText = std::numeric_limits<uint32_t>::max();

    /// Appends the lines of a text to an array. Its bytes are well-formed UTF-8 and not more than LargestText; for line
    /// ends see CParserFile::Load.
    static void Cut(std::string bytes, const wxSharedPtr<CParserFile>& file, bool keepEmptyLines,
                    CArrayParserUnit& units);

    /// Appends a copy of a line to an array.
    static void Copy(const CUnitSlot& line, CArrayParserUnit& units);

    /// Makes two lines of the one in a slot: the bytes before `end` stay, those from `begin` on become the next slot.
    static void Split(CArrayParserUnit& units, size_t index, size_t end, size_t begin);

    /// Gives up the share of one line.
    static void Release(CLineText* text)
    {
        if (--text->m_lines == 0)
            delete text;
    }

    const wxSharedPtr<CParserFile>& File() const { return m_file; }

    /// Keeps a line that a directive or a comment has changed, not longer than LargestText.
    std::string_view Keep(std::string_view line);

    CLineText(const CLineText&) = delete;
    CLineText& operator=(const CLineText&) = delete;

private:
    CLineText(std::string bytes, const wxSharedPtr<CParserFile>& file);
    ~CLineText() = default;

    void CutLines(bool keepEmptyLines, CArrayParserUnit& units);

    wxSharedPtr<CParserFile> m_file;
    std::string m_bytes;
    std::vector<std::unique_ptr<char[]>> m_changed; ///< Pieces of memory with changed lines, one after the other.
    char* m_free = nullptr;                         ///< What is free in the last of them.
    size_t m_freeSize = 0;
    size_t m_nextPieceSize;
    size_t m_lines = 0;
};
