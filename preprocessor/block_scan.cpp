#include "base/utf8_detail.h"
#include "parser/block_lines_detail.h"
#include "parser/line_text_detail.h"
#include "parser/parser.h"
#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/line_scan_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/scan_buffers_detail.h"
#include "preprocessor/text_span_detail.h"

#include <string>
#include <string_view>
#include <type_traits>

using namespace line_scan_detail;

namespace
{

size_t Utf8Length(const wchar_t* text, size_t length)
{
    size_t bytes = length;
    for (size_t i = 0; i < length; ++i)
        bytes += (text[i] >= 0x80) + (text[i] >= 0x800) + (text[i] >= 0x10000);
    return bytes;
}

} // namespace

/// One walk over a block: the state that lives from line to line.
///
/// Lines that are no units yet are scanned as they are, and what is left of one is mostly a part of it: nothing is
/// converted, copied or allocated for it. A line with a "#" is scanned as wide text, which is what directives work on.
class CBlockScan
{
public:
    CBlockScan(CPreprocessor& pp, CParserBlock* block)
        : m_pp(pp), m_lines(CBlockLines(*block).Units()), m_position{block, 0, nullptr, false},
          m_buffers(pp.m_freeBuffers), m_kept(m_buffers->kept), m_output(m_buffers->output),
          m_isNested(pp.m_openScans++ != 0)
    {
        if (!m_isNested)
            pp.m_addedBytes = 0;
    }
    ~CBlockScan() { --m_pp.m_openScans; }
    CBlockScan(const CBlockScan&) = delete;
    CBlockScan& operator=(const CBlockScan&) = delete;

    long Run();

private:
    long ScanLine(std::string_view line);
    long ScanUnit(CParserUnit& unit);
    long ScanSource();
    template <typename Char> long ScanText(const Char* at, const Char* end);
    template <typename Char> const Char* SkipComment(const Char* at, const Char* begin, const Char* end);
    long ApplyAt(const wchar_t*& at, const wchar_t* end);
    void OpenComment();
    void NoteOpenComment();
    void Copy(const char* from, const char* to);
    void Copy(const wchar_t* from, const wchar_t* to);
    long StoreLine();
    long StoreOutput();
    long StorePlainUnit(CParserUnit& unit);
    bool IsAtLine() const;
    bool EncodeLine(const wchar_t* text, size_t length);
    void SetText(const wchar_t* text, size_t length, bool fitsLine);
    long Remove();
    size_t SourceBytes() const;
    long NoteAdded(size_t bytes);

    CPreprocessor& m_pp;
    CArrayParserUnit& m_lines;
    _BlockPosition m_position;
    CScanBuffersUse m_buffers;
    CKeptText& m_kept;
    wxString& m_output;
    const bool m_isNested;       ///< A directive has added this text to another one.
    bool m_hasDirective = false; ///< The scan of a line has met a "#".
    bool m_hasString = false;    ///< It has met a string.

    size_t m_openComments = 0;
    bool m_commentOpened = false; ///< On the current line.
    int m_commentSlot = 0;
    CParserOrigin m_commentOrigin;
};

long CBlockScan::Run()
{
    while (m_position.m_index < static_cast<int>(m_lines.GetCount())) {
        const CUnitSlot& slot = m_lines.Peek(m_position.m_index);
        if (slot.IsHole()) {
            ++m_position.m_index;
            continue;
        }
        if (const long result = slot.IsLine() ? ScanLine(slot.Line()) : ScanUnit(*slot.unit))
            return result;
    }
    if (m_openComments)
        return m_pp.Fail(wxString::Format(wxS("Comment not closed (started in %s)!"), m_commentOrigin.GetContext()),
                         m_position.m_block->GetUnit(m_commentSlot));
    return m_pp.DirectiveEndCheck(m_position);
}

long CBlockScan::ScanLine(std::string_view line)
{
    m_position.m_unit = CCurrentUnit(m_position.m_block, m_position.m_index);
    const char* const end = line.data() + line.size();
    const char* const first = text_detail::SkipBlanks(line.data(), end);
    if (first != end && *first == '#' && !m_openComments) {
        m_buffers->source.Assign(line);
        return ScanSource();
    }
    m_kept.Clear();
    m_hasDirective = false;
    m_hasString = false;
    m_commentOpened = false;
    const size_t openComments = m_openComments;
    if (const long result = ScanText(line.data(), end))
        return result;
    if (!m_hasDirective)
        return StoreLine();

    m_openComments = openComments;
    m_buffers->source.Assign(line);
    return ScanSource();
}

long CBlockScan::ScanUnit(CParserUnit& unit)
{
    m_position.m_unit = &unit;
    const wxString& text = unit.m_text;
    const wchar_t* const begin = text.wx_str();
    if (!m_openComments && FindOpening(begin, begin + text.length()) == begin + text.length())
        return StorePlainUnit(unit);
    // Directives may delete the unit while they still read its line.
    m_buffers->source.Assign(text);
    return ScanSource();
}

long CBlockScan::ScanSource()
{
    m_output.clear();
    m_commentOpened = false;
    m_position.m_lineStarted = false;
    if (const long result = ScanText(m_buffers->source.Begin(), m_buffers->source.End()))
        return result;
    return StoreOutput();
}

template <typename Char> long CBlockScan::ScanText(const Char* at, const Char* end)
{
    const Char* const begin = at;
    if (m_openComments)
        at = SkipComment(at, begin, end);
    while (at != end) {
        const Char* const opening = FindOpening(at, end);
        Copy(at, opening);
        at = opening;
        if (at == end)
            break;
        if (*at == '#') {
            if constexpr (std::is_same_v<Char, wchar_t>) {
                if (const long result = ApplyAt(at, end))
                    return result;
            } else {
                m_hasDirective = true;
                return 0;
            }
        } else if (*at == '/' && at[1] == '/')
            break;
        else if (*at == '/') {
            OpenComment();
            at = SkipComment(at + 2, begin, end);
        } else if (*at == '*')
            return m_pp.Fail(wxS("Comment closed but not opened !"), m_position.m_unit);
        else {
            const Char* const close = text_detail::FindClosingQuote(at, end);
            if (close == end)
                return m_pp.Fail(wxS("String not terminated !"), m_position.m_unit);
            m_hasString = true;
            Copy(at, close + 1);
            at = close + 1;
        }
    }
    return 0;
}

long CBlockScan::ApplyAt(const wchar_t*& at, const wchar_t* end)
{
    const wchar_t* next = end;
    const long result = m_pp.DirectiveApply(m_output, at, end, &next, m_position);
    m_position.m_lineStarted = true;
    if (result == 1 && !m_pp.m_skipping && !m_pp.m_partial)
        return m_pp.Fail(wxString::Format(wxS("Unknown define in : %.*s"), static_cast<int>(end - at), at),
                         m_position.m_unit);
    at = next;
    return result == 1 ? 0 : result;
}

void CBlockScan::OpenComment()
{
    m_openComments = 1;
    m_commentOpened = true;
}

/// Where a comment began is only asked for when it goes on behind its line.
void CBlockScan::NoteOpenComment()
{
    if (!m_openComments || !m_commentOpened)
        return;
    m_commentSlot = m_position.m_index;
    m_commentOrigin = m_position.GetOrigin();
}

/// Where the open comments end: the end of the line when they do not end on it.
template <typename Char> const Char* CBlockScan::SkipComment(const Char* at, const Char* begin, const Char* end)
{
    while (at != end) {
        const Char following = at + 1 == end ? Char() : at[1];
        if (*at == '*' && following == '/') {
            at += 2;
            if (--m_openComments == 0)
                return at;
        } else if (*at == '/' && following == '*' && (at == begin || at[-1] != '/')) {
            at += 2;
            ++m_openComments;
        } else
            ++at;
    }
    return end;
}

void CBlockScan::Copy(const char* from, const char* to)
{
    if (!m_pp.m_skipping)
        m_kept.Add(from, to);
}

void CBlockScan::Copy(const wchar_t* from, const wchar_t* to)
{
    if (from == to)
        return;
    if (!m_position.m_lineStarted)
        m_position.m_lineStarted = text_detail::SkipBlanks(from, to) != to;
    if (!m_pp.m_skipping)
        m_output.append(from, to - from);
}

/// Makes the current line what is kept of it.
long CBlockScan::StoreLine()
{
    NoteOpenComment();
    const char* begin = m_kept.Text().data();
    const char* end = begin + m_kept.Text().size();
    if (m_pp.m_trim)
        Trim(begin, end);
    if (m_pp.m_trim && begin == end)
        return Remove();
    const std::string_view text(begin, static_cast<size_t>(end - begin));
    if (m_isNested && NoteAdded(text.size()) != 0)
        return -1;
    if (m_hasString && HasAdjacentQuotes(begin, end)) {
        m_output.clear();
        vcq::detail::AppendUtf8(m_output, begin, text.size());
        m_output = CPreprocessor::ConcatQuotes(m_output);
        const wchar_t* const joined = m_output.wx_str();
        SetText(joined, m_output.length(), EncodeLine(joined, m_output.length()));
    } else
        m_lines.SetLine(m_position.m_index,
                        m_kept.IsJoined() ? m_lines.Peek(m_position.m_index).text->Keep(text) : text);
    ++m_position.m_index;
    return 0;
}

/// Makes the current line or unit what directives have left of it.
long CBlockScan::StoreOutput()
{
    NoteOpenComment();
    const wchar_t* begin = m_output.wx_str();
    const wchar_t* end = begin + m_output.length();
    if (m_pp.m_trim)
        Trim(begin, end);
    if (m_pp.m_trim && begin == end)
        return Remove();
    if (HasAdjacentQuotes(begin, end)) {
        m_output = CPreprocessor::ConcatQuotes(wxString(begin, end - begin));
        begin = m_output.wx_str();
        end = begin + m_output.length();
    }
    const auto length = static_cast<size_t>(end - begin);
    const bool fitsLine = EncodeLine(begin, length);
    const size_t before = m_isNested ? 0 : SourceBytes();
    const size_t after = fitsLine ? m_buffers->bytes.size() : Utf8Length(begin, length);
    if ((m_isNested || after > before) && NoteAdded(after - before) != 0)
        return -1;
    SetText(begin, length, fitsLine);
    ++m_position.m_index;
    return 0;
}

/// The result of a unit without any string, comment or "#" is its text, so nothing is copied.
long CBlockScan::StorePlainUnit(CParserUnit& unit)
{
    if (m_pp.m_skipping)
        unit.m_text.clear();
    if (m_pp.m_trim) {
        CPreprocessor::TrimLeft(unit.m_text, TrimSet);
        CPreprocessor::TrimRight(unit.m_text, TrimSet);
        if (unit.m_text.empty())
            return Remove();
    }
    if (m_isNested && NoteAdded(Utf8Length(unit.m_text.wx_str(), unit.m_text.length())) != 0)
        return -1;
    ++m_position.m_index;
    return 0;
}

/// The bytes of the line that is the source of the current one.
size_t CBlockScan::SourceBytes() const
{
    return IsAtLine() ? m_lines.Peek(m_position.m_index).Line().size()
                      : Utf8Length(m_buffers->source.Begin(), m_buffers->source.Length());
}

/// Counts the bytes that the current line adds.
long CBlockScan::NoteAdded(size_t bytes)
{
    m_pp.m_addedBytes += bytes + (m_isNested ? CPreprocessorLimits::LineBytes : 0);
    if (m_pp.m_addedBytes <= m_pp.m_limits.addedBytes)
        return 0;
    return m_pp.Fail(wxString::Format(wxS("More than %lu bytes added by directives !"),
                                      static_cast<unsigned long>(m_pp.m_limits.addedBytes)),
                     m_position.m_unit);
}

/// Whether the current slot is a line that nobody has asked the unit of.
bool CBlockScan::IsAtLine() const
{
    return !m_position.m_unit.IsMade() && m_lines.Peek(m_position.m_index).IsLine();
}

/// Writes a text into the buffer of bytes when it can be that of the current slot's line.
bool CBlockScan::EncodeLine(const wchar_t* text, size_t length)
{
    std::string& bytes = m_buffers->bytes;
    bytes.clear();
    return IsAtLine() && vcq::detail::AppendExactUtf8(bytes, text, length) && bytes.size() <= CLineText::LargestText;
}

/// Makes a text that of the current line, or, when EncodeLine has refused it, of its unit.
void CBlockScan::SetText(const wchar_t* text, size_t length, bool fitsLine)
{
    if (fitsLine)
        m_lines.SetLine(m_position.m_index, m_lines.Peek(m_position.m_index).text->Keep(m_buffers->bytes));
    else
        m_position.m_unit->m_text.assign(text, length);
}

long CBlockScan::Remove()
{
    if (!IsAtLine())
        return m_position.m_block->RemoveElement(m_position.m_unit, &m_position.m_index, 1);
    m_lines.DropLine(m_position.m_index++);
    return 0;
}

CParserUnit* CCurrentUnit::Make() const
{
    m_unit = m_block->GetUnit(m_slot);
    m_block = nullptr;
    return m_unit;
}

CParserOrigin _BlockPosition::GetOrigin() const
{
    return m_unit.IsMade() ? CParserOrigin{m_unit->m_file, m_unit->m_line} : m_block->GetOrigin(m_index);
}

long CPreprocessor::PreprocessBlock(CParserBlock* block)
{
    if (m_deactivated)
        return 0;
    DirectiveStartBlock();
    return CBlockScan(*this, block).Run();
}
