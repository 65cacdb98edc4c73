#include "parser/line_text_detail.h"

#include "parser/unit_array.h"

#include <algorithm>
#include <cstring>

namespace
{

/// Memory for changed lines is taken in pieces: a small one first, since most texts of loops and includes change
/// little, then ever larger ones up to this size.
constexpr size_t FirstPieceSize = 256;
constexpr size_t LargestPieceSize = 64 * 1024;

/// How many line feeds there are. Summed up in bytes, which many of fit into one register.
size_t CountLineFeeds(const std::string& text)
{
    constexpr size_t largestSum = 255;
    size_t count = 0;
    for (size_t at = 0; at < text.size(); at += largestSum) {
        const size_t end = std::min(text.size(), at + largestSum);
        unsigned char sum = 0;
        for (size_t i = at; i < end; ++i)
            sum = static_cast<unsigned char>(sum + (text[i] == '\n'));
        count += sum;
    }
    return count;
}

/// The places of one character in a text, asked for in ascending order.
class Occurrences
{
public:
    Occurrences(const char* begin, const char* end, char what) : m_end(end), m_what(what) { Find(begin); }

    /// The first one at or behind `at`, or the end.
    const char* From(const char* at)
    {
        if (m_next < at)
            Find(at);
        return m_next;
    }

private:
    void Find(const char* at)
    {
        const void* const found = at == m_end ? nullptr : std::memchr(at, m_what, static_cast<size_t>(m_end - at));
        m_next = found ? static_cast<const char*>(found) : m_end;
    }

    const char* m_end;
    const char* m_next = nullptr;
    char m_what;
};

} // namespace

void CLineText::Cut(std::string bytes, const wxSharedPtr<CParserFile>& file, bool keepEmptyLines,
                    CArrayParserUnit& units)
{
    auto* const text = new CLineText(std::move(bytes), file);
    text->CutLines(keepEmptyLines, units);
    if (text->m_lines == 0)
        delete text;
}

CLineText::CLineText(std::string bytes, const wxSharedPtr<CParserFile>& file)
    : m_file(file), m_bytes(std::move(bytes)),
      m_nextPieceSize(std::clamp(m_bytes.size(), FirstPieceSize, LargestPieceSize))
{}

void CLineText::CutLines(bool keepEmptyLines, CArrayParserUnit& units)
{
    const char* at = m_bytes.data();
    const char* const end = at + m_bytes.size();
    // Growing the array would touch half as much memory again.
    units.Reserve(CountLineFeeds(m_bytes) + 1);
    Occurrences lineFeeds(at, end, '\n');
    Occurrences returns(at, end, '\r');
    for (uint32_t line = 1; at != end; ++line) {
        const char* const lineEnd = std::min(lineFeeds.From(at), returns.From(at));
        if (lineEnd != at || keepEmptyLines) {
            units.AddLine(*this, std::string_view(at, static_cast<size_t>(lineEnd - at)), line);
            ++m_lines;
        }
        const bool isPair = end - lineEnd > 1 && lineEnd[0] == '\r' && lineEnd[1] == '\n';
        at = lineEnd == end ? end : lineEnd + (isPair ? 2 : 1);
    }
}

void CLineText::Copy(const CUnitSlot& line, CArrayParserUnit& units)
{
    units.AddLine(*line.text, line.Line(), line.line);
    ++line.text->m_lines;
}

void CLineText::Split(CArrayParserUnit& units, size_t index, size_t end, size_t begin)
{
    const CUnitSlot line = units.Peek(index);
    units.SetLine(index, line.Line().substr(0, end));
    units.InsertLine(index + 1, *line.text, line.Line().substr(begin), line.line);
    ++line.text->m_lines;
}

std::string_view CLineText::Keep(std::string_view line)
{
    if (line.size() > m_freeSize) {
        m_freeSize = std::max(m_nextPieceSize, line.size());
        m_nextPieceSize = std::min(2 * m_nextPieceSize, LargestPieceSize);
        m_changed.emplace_back(new char[m_freeSize]);
        m_free = m_changed.back().get();
    }
    std::copy(line.begin(), line.end(), m_free);
    const std::string_view kept(m_free, line.size());
    m_free += line.size();
    m_freeSize -= line.size();
    return kept;
}
