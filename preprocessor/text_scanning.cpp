#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/outside_strings_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"

#include <algorithm>
#include <cwchar>

using namespace text_detail;

namespace
{

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
    const Span span(text);
    return FindOutsideStrings(span.begin, span.end, Span(what));
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
        const long found = FindOutsideStrings(text.begin, text.end, wanted);
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
    QuoteWalk<wchar_t> walk(span.begin);
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
