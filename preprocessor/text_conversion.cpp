#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"

#include <algorithm>

using namespace text_detail;

namespace
{

constexpr wchar_t DefaultEscape = L'`';

constexpr wchar_t EscapeOrDefault(wchar_t escape)
{
    return escape ? escape : DefaultEscape;
}

/// The next separator from `at` on without the escape character before it, or `end`. The escape character must stand at
/// or behind `at` too: a separator that has cut already escapes nothing, even if it is the escape character.
const wchar_t* FindSeparator(const wchar_t* at, const wchar_t* end, wchar_t separator, wchar_t escape)
{
    const wchar_t* found = FindChar(at, end, separator);
    while (found != end && found != at && found[-1] == escape)
        found = FindChar(found + 1, end, separator);
    return found;
}

/// The length of the line end at `at`, 0 when there is none: "\r\n", "\n\r", "\n", a lone "\r", and "\r\n\r", which is
/// "\n\r" once its beginning is "\n".
size_t LineEndLength(const wchar_t* at, const wchar_t* end)
{
    const wchar_t* behind = at;
    const auto take = [&behind, end](wchar_t character) {
        const bool stands = behind != end && *behind == character;
        behind += stands ? 1 : 0;
        return stands;
    };
    take(L'\r');
    if (take(L'\n'))
        take(L'\r');
    return static_cast<size_t>(behind - at);
}

wxString Repeat(const wxString& text, int count)
{
    wxString out;
    if (count <= 0 || text.empty())
        return out;
    out.reserve(text.length() * static_cast<size_t>(count));
    for (int done = 0; done < count; ++done)
        out.append(text);
    return out;
}

} // namespace

wxString CPreprocessor::EscapeChar(const wxString& text, wchar_t ch, wchar_t escape)
{
    const Span span(text);
    const size_t count = CountChar(span, ch);
    if (count == 0)
        return text;
    wxString out;
    out.reserve(text.length() + count);
    const wchar_t* pending = span.begin;
    for (const wchar_t* at = span.begin; (at = FindChar(at, span.end, ch)) != span.end; pending = at++) {
        Append(out, pending, at);
        out.append(1, EscapeOrDefault(escape));
    }
    Append(out, pending, span.end);
    return out;
}

wxString CPreprocessor::UnescapeChar(const wxString& text, wchar_t ch, wchar_t escape)
{
    const Span span(text);
    const wchar_t mark = EscapeOrDefault(escape);
    if (!span.Holds(mark))
        return text;
    wxString out;
    out.reserve(text.length());
    const wchar_t* pending = span.begin; // the last occurrence handled, which is copied with what follows it
    const wchar_t* handled = span.begin; // the place behind it
    for (const wchar_t* at = span.begin; (at = FindChar(at, span.end, ch)) != span.end; handled = ++at) {
        const bool escaped = at != handled && at[-1] == mark;
        Append(out, pending, escaped ? at - 1 : at);
        pending = at;
    }
    Append(out, pending, span.end);
    return out;
}

wxArrayString CPreprocessor::SplitEscapeChar(const wxString& text, wchar_t separator, bool unescape, wchar_t escape)
{
    const Span span(text);
    const wchar_t mark = EscapeOrDefault(escape);
    wxArrayString pieces;
    pieces.Alloc(CountChar(span, separator) + 1); // the array grows by small steps only and copies at each
    const auto add = [&](const wchar_t* begin, const wchar_t* end) {
        const wxString piece = Copy(begin, end);
        pieces.Add(unescape ? UnescapeChar(piece, separator, mark) : piece);
    };
    const wchar_t* piece = span.begin;
    for (const wchar_t* cut = nullptr; (cut = FindSeparator(piece, span.end, separator, mark)) != span.end;) {
        add(piece, cut);
        piece = cut + 1;
    }
    add(piece, span.end);
    return pieces;
}

wxString CPreprocessor::IndentLines(const wxString& text, const wxString& indent, int count)
{
    const Span span(text);
    wxString out;
    if (text.empty())
        return out;
    const auto isLineEnd = [](wchar_t character) { return character == L'\n' || character == L'\r'; };
    const size_t lines = std::max(CountChar(span, L'\n'), CountChar(span, L'\r')) + 1;
    const wxString prefix = Repeat(indent, count);
    out.reserve(text.length() + lines * prefix.length());
    for (const wchar_t* line = span.begin; line != span.end;) {
        const wchar_t* const lineEnd = std::find_if(line, span.end, isLineEnd);
        out.append(prefix);
        Append(out, line, lineEnd);
        if (lineEnd != span.end)
            out.append(1, L'\n');
        line = lineEnd + LineEndLength(lineEnd, span.end);
    }
    return out;
}

wxString CPreprocessor::ToKeyword(const wxString& text)
{
    std::wstring out(text.wx_str(), text.length());
    std::replace_if(
        out.begin(), out.end(), [](wchar_t character) { return !IsWordChar(character); }, L'_');
    return wxString(out);
}

wxString CPreprocessor::AnsiString(const wxString& text)
{
    const auto isDropped = [](wchar_t character) { return character < 32 || character > 126; };
    std::wstring out(text.wx_str(), text.length());
    out.erase(std::remove_if(out.begin(), out.end(), isDropped), out.end());
    return wxString(out);
}
