#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_detail.h"

#include <array>

namespace
{

constexpr auto OpeningChars = [] {
    std::array<bool, 128> table{};
    for (const char ch : {'"', '\'', '#', '/', '*'})
        table[static_cast<size_t>(ch)] = true;
    return table;
}();

/// The next string, comment or "#" on a line, or its end.
const wchar_t* FindOpening(const wchar_t* at, const wchar_t* end)
{
    for (; at != end; ++at) {
        const auto ch = static_cast<unsigned long>(*at);
        if (ch >= OpeningChars.size() || !OpeningChars[ch])
            continue;
        const wchar_t following = at + 1 == end ? L'\0' : at[1];
        const bool isPart = (ch == '/' && following != L'/' && following != L'*') || (ch == '*' && following != L'/');
        if (!isPart)
            return at;
    }
    return end;
}

} // namespace

/// One walk over a block: the state that lives from line to line.
class CBlockScan
{
public:
    CBlockScan(CPreprocessor& pp, CParserBlock* block) : m_pp(pp), m_position{block, 0, nullptr, false} {}

    long Run();

private:
    long ScanLine();
    long ScanText(const wchar_t* at, const wchar_t* end);
    long ApplyAt(const wchar_t*& at, const wchar_t* end);
    const wchar_t* SkipComment(const wchar_t* at, const wchar_t* begin, const wchar_t* end);
    void OpenComment();
    void Copy(const wchar_t* from, const wchar_t* to);
    long StoreResult(wxString& result);
    long StorePlainLine();

    CPreprocessor& m_pp;
    _BlockPosition m_position;
    wxString m_source;
    wxString m_output;

    size_t m_openComments = 0;
    const CParserUnit* m_commentUnit = nullptr;
    wxString m_commentContext;
};

long CBlockScan::Run()
{
    while (m_position.m_index < static_cast<int>(m_position.m_block->GetCount())) {
        m_position.m_unit = m_position.m_block->GetUnit(m_position.m_index);
        if (!m_position.m_unit) {
            ++m_position.m_index;
            continue;
        }
        if (const long result = ScanLine())
            return result;
    }
    if (m_openComments)
        return m_pp.Fail(wxString::Format(wxS("Comment not closed (started in %s)!"), m_commentContext), m_commentUnit);
    return m_pp.DirectiveEndCheck(m_position);
}

long CBlockScan::ScanLine()
{
    const wxString& text = m_position.m_unit->m_text;
    const wchar_t* const begin = text.wx_str();
    if (!m_openComments && FindOpening(begin, begin + text.length()) == begin + text.length())
        return StorePlainLine();

    // Directives may delete the unit while they still read its line.
    m_source.assign(text);
    m_output.clear();
    m_position.m_lineStarted = false;
    const wchar_t* const source = m_source.wx_str();
    if (const long result = ScanText(source, source + m_source.length()))
        return result;
    return StoreResult(m_output);
}

long CBlockScan::ScanText(const wchar_t* at, const wchar_t* end)
{
    const wchar_t* const begin = at;
    if (m_openComments)
        at = SkipComment(at, begin, end);
    while (at != end) {
        const wchar_t* const opening = FindOpening(at, end);
        Copy(at, opening);
        at = opening;
        if (at == end)
            break;
        if (*at == DirectiveChar) {
            if (const long result = ApplyAt(at, end))
                return result;
        } else if (*at == L'/' && at[1] == L'/')
            break;
        else if (*at == L'/') {
            OpenComment();
            at = SkipComment(at + 2, begin, end);
        } else if (*at == L'*')
            return m_pp.Fail(wxS("Comment closed but not opened !"), m_position.m_unit);
        else {
            const wchar_t* const close = text_detail::FindClosingQuote(at, end);
            if (close == end)
                return m_pp.Fail(wxS("String not terminated !"), m_position.m_unit);
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
    m_commentUnit = m_position.m_unit;
    m_commentContext = m_position.m_unit->GetContext();
}

/// Where the open comments end: the end of the line when they do not end on it.
const wchar_t* CBlockScan::SkipComment(const wchar_t* at, const wchar_t* begin, const wchar_t* end)
{
    while (at != end) {
        const wchar_t following = at + 1 == end ? L'\0' : at[1];
        if (*at == L'*' && following == L'/') {
            at += 2;
            if (--m_openComments == 0)
                return at;
        } else if (*at == L'/' && following == L'*' && (at == begin || at[-1] != L'/')) {
            at += 2;
            ++m_openComments;
        } else
            ++at;
    }
    return end;
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

long CBlockScan::StoreResult(wxString& result)
{
    if (m_pp.m_trim) {
        CPreprocessor::TrimLeft(result, TrimSet);
        CPreprocessor::TrimRight(result, TrimSet);
    }
    if (result.find(L'"') != wxString::npos)
        result = CPreprocessor::ConcatQuotes(result);
    CParserUnit* const unit = m_position.m_unit;
    if (m_pp.m_trim && result.empty()) {
        if (unit == m_commentUnit)
            m_commentUnit = nullptr;
        return m_position.m_block->RemoveElement(unit, &m_position.m_index, 1);
    }
    if (&unit->m_text != &result)
        unit->m_text = result;
    ++m_position.m_index;
    return 0;
}

/// The result of a line without any string, comment or "#" is the line itself, so nothing is copied.
long CBlockScan::StorePlainLine()
{
    wxString& text = m_position.m_unit->m_text;
    if (m_pp.m_skipping)
        text.clear();
    return StoreResult(text);
}

long CPreprocessor::PreprocessBlock(CParserBlock* block)
{
    if (m_deactivated)
        return 0;
    DirectiveStartBlock();
    return CBlockScan(*this, block).Run();
}
