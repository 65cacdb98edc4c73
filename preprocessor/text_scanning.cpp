#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"

#include <algorithm>
#include <cwchar>
#include <vector>

using namespace text_detail;

namespace
{

/// All occurrences of a text in another, overlapping ones too, from the first to the last. Every character is looked at
/// once, however much the texts repeat themselves: what has matched so far falls back along its borders (the longest
/// part that both begins and ends it) and never starts again.
class OccurrenceSearch
{
public:
    OccurrenceSearch(const Span& text, const Span& what) : m_at(text.begin), m_end(text.end), m_what(what)
    {
        if (what.Length() > 1)
            FindBorders();
    }

    /// The start of the next occurrence, or null. An empty text occurs before every character.
    const wchar_t* Next()
    {
        if (m_what.Length() == 0)
            return m_at == m_end ? nullptr : m_at++;
        while (m_at != m_end) {
            if (m_matched == 0)
                m_at = FindChar(m_at, m_end, *m_what.begin);
            if (m_at == m_end)
                break;
            m_matched = Match(m_matched, *m_at++);
            if (m_matched == m_what.Length())
                return TakeMatch();
        }
        return nullptr;
    }

private:
    void FindBorders()
    {
        m_borders.assign(m_what.Length(), 0);
        for (size_t length = 1; length < m_borders.size(); ++length)
            m_borders[length] = Match(m_borders[length - 1], m_what.begin[length]);
    }

    /// How much is matched when `character` follows `matched` characters of a match.
    size_t Match(size_t matched, wchar_t character) const
    {
        while (matched != 0 && m_what.begin[matched] != character)
            matched = m_borders[matched - 1];
        return m_what.begin[matched] == character ? matched + 1 : 0;
    }

    const wchar_t* TakeMatch()
    {
        const wchar_t* const start = m_at - m_matched;
        m_matched = m_borders.empty() ? 0 : m_borders.back();
        return start;
    }

    const wchar_t* m_at;
    const wchar_t* m_end;
    Span m_what;
    std::vector<size_t> m_borders;
    size_t m_matched = 0;
};

/// A walk from quote to quote that knows whether it is inside a quoted string. An escaped quote neither opens nor
/// closes one. Looking back over backslashes stays linear: they end at the quote before.
class QuoteWalk
{
public:
    explicit QuoteWalk(const wchar_t* begin) : m_begin(begin), m_at(begin) {}

    /// The quote of the string the walk is inside of, or 0.
    wchar_t Open() const { return m_open; }

    /// Moves behind the next quote before `end` that opens or closes a string.
    /// @return that quote, or `end`.
    const wchar_t* Next(const wchar_t* end)
    {
        while ((m_at = m_open ? FindChar(m_at, end, m_open) : std::find_if(m_at, end, IsQuote)) != end) {
            const wchar_t* const quote = m_at++;
            if (IsEscaped(quote, m_begin))
                continue;
            m_open = m_open ? L'\0' : *quote;
            return quote;
        }
        return end;
    }

    /// Moves up to `place`.
    void MoveTo(const wchar_t* place)
    {
        while (Next(place) != place)
            continue;
    }

private:
    const wchar_t* m_begin;
    const wchar_t* m_at;
    wchar_t m_open = L'\0';
};

/// FindCharEx. An occurrence that begins with a quote is a boundary for the walk, which takes it on its next move; a
/// text whose last character is such an occurrence gives its length.
long FindOutsideStrings(const Span& text, const Span& what)
{
    OccurrenceSearch occurrences(text, what);
    QuoteWalk walk(text.begin);
    const wchar_t* last = nullptr;
    while (const wchar_t* const found = occurrences.Next()) {
        walk.MoveTo(found);
        if (!IsQuote(*found) && !walk.Open())
            return static_cast<long>(found - text.begin);
        last = found;
    }
    const bool endsInBoundary = last && last + 1 == text.end && what.Length() != 0 && IsQuote(*what.begin);
    return endsInBoundary ? static_cast<long>(text.Length()) : -1;
}

/// Replaces "\t" and "\n" in the contents of a quoted string; all other backslashes stay.
wxString UnescapeBlanks(const Span& text)
{
    wxString out;
    out.reserve(text.Length());
    const wchar_t* pending = text.begin;
    for (const wchar_t* at = text.begin; (at = FindChar(at, text.end, L'\\')) != text.end; ++at) {
        const wchar_t letter = at + 1 == text.end ? L'\0' : at[1];
        if (letter != L't' && letter != L'n')
            continue;
        Append(out, pending, at);
        out.append(1, letter == L't' ? L'\t' : L'\n');
        pending = at + 2;
    }
    Append(out, pending, text.end);
    return out;
}

} // namespace

bool CPreprocessor::IsEscapedChar(const wchar_t* p, const wchar_t* start)
{
    return p && IsEscaped(p, start);
}

wxString CPreprocessor::ExtractWord(const wchar_t* text, unsigned int pos, const wchar_t** end, unsigned int* length)
{
    const wchar_t* const word = text + pos;
    const wchar_t* behind = word;
    while (IsWordChar(*behind)) // a NUL is no part of a word
        ++behind;
    if (end)
        *end = behind;
    if (length)
        *length = static_cast<unsigned int>(behind - word);
    return Copy(word, behind);
}

long CPreprocessor::FindCharEx(const wxString& text, const wxString& what)
{
    return FindOutsideStrings(Span(text), Span(what));
}

bool CPreprocessor::Find(const CParserBlock* block, int& unit, int& pos, const wxString& what)
{
    unit = std::max(unit, 0);
    const Span wanted(what);
    for (; unit < static_cast<int>(block->GetCount()); ++unit) {
        const CParserUnit* const current = block->GetUnit(static_cast<unsigned int>(unit));
        if (!current)
            continue;
        Span text(current->m_text);
        text.begin += std::min(static_cast<size_t>(std::max(pos, 0)), text.Length());
        const long found = FindOutsideStrings(text, wanted);
        if (found != -1) {
            pos = static_cast<int>(found);
            return true;
        }
        pos = 0;
    }
    pos = 0;
    return false;
}

wxString CPreprocessor::ExtractString(const wchar_t* begin, const wchar_t* end, const wchar_t** after, bool unescape)
{
    const bool opens = begin != end && IsQuote(*begin);
    const wchar_t* const close = opens ? FindChar(begin + 1, end, *begin) : end;
    if (after)
        *after = close == end ? begin : close + 1;
    if (close == end)
        return wxString();
    return unescape ? UnescapeBlanks(Span(begin + 1, close)) : Copy(begin + 1, close);
}

wxString CPreprocessor::ExtractString(wxString& text, bool unescape)
{
    const Span span(text);
    const wchar_t* after = nullptr;
    const wxString contents = ExtractString(span.begin, span.end, &after, unescape);
    text.erase(0, static_cast<size_t>(after - span.begin));
    return contents;
}

void CPreprocessor::TrimLeft(wxString& text, const wchar_t* set)
{
    const Span kept = WithoutLeft(Span(text), {set, set + std::wcslen(set)});
    text.erase(0, text.length() - kept.Length());
}

void CPreprocessor::TrimRight(wxString& text, const wchar_t* set)
{
    text.erase(WithoutRight(Span(text), {set, set + std::wcslen(set)}).Length());
}

wxString CPreprocessor::ConcatQuotes(const wxString& text)
{
    const Span span(text);
    const wchar_t* pending = span.begin;
    wxString out;
    QuoteWalk walk(span.begin);
    for (const wchar_t* quote = nullptr; (quote = walk.Next(span.end)) != span.end;) {
        const bool closes = *quote == L'"' && !walk.Open();
        const wchar_t* const next = closes ? SkipBlanks(quote + 1, span.end) : span.end;
        if (next == span.end || *next != L'"')
            continue;
        if (out.empty())
            out.reserve(text.length());
        Append(out, pending, quote);
        pending = next + 1; // the walk takes the quote at `next` for an opening one, so the literal stays open
    }
    if (pending == span.begin)
        return text;
    Append(out, pending, span.end);
    return out;
}

wxString CPreprocessor::AddContext(const wxString& message, const wxString& /*file*/, unsigned long /*line*/)
{
    return message;
}

int CPreprocessor::ExtractContext(const wxString& /*message*/, wxString& /*text*/, wxString& /*file*/, int& /*line*/)
{
    return 0;
}
