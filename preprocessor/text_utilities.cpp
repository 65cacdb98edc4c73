#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_detail.h"

#include <wx/log.h>

#include <algorithm>
#include <array>
#include <cwchar>
#include <string>
#include <vector>

using text_detail::FindChar;
using text_detail::IsEscaped;
using text_detail::IsWordChar;
using text_detail::SkipBlanks;

namespace
{

constexpr wchar_t DefaultEscape = L'`';

constexpr bool IsQuote(wchar_t character)
{
    return character == L'"' || character == L'\'';
}

/// The characters of a text, NULs included. They live as long as the text is neither changed nor destroyed.
struct Span
{
    explicit Span(const wxString& text) : begin(text.wx_str()), end(begin + text.length()) {}
    Span(const wchar_t* first, const wchar_t* behind) : begin(first), end(behind) {}

    size_t Length() const { return static_cast<size_t>(end - begin); }
    bool Holds(wchar_t character) const { return FindChar(begin, end, character) != end; }

    const wchar_t* begin;
    const wchar_t* end;
};

void Append(wxString& out, const wchar_t* begin, const wchar_t* end)
{
    out.append(begin, static_cast<size_t>(end - begin));
}

wxString Copy(const wchar_t* begin, const wchar_t* end)
{
    return wxString(begin, static_cast<size_t>(end - begin));
}

size_t CountChar(const Span& text, wchar_t character)
{
    return static_cast<size_t>(std::count(text.begin, text.end, character));
}

// --- Searching outside quoted strings ---

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

// --- String literals ---

struct Escape
{
    wchar_t character;
    wchar_t letter; ///< What stands for it behind a backslash.
};

constexpr Escape Escapes[] = {
    {L'\\', L'\\'}, {L'"', L'"'},  {L'\'', L'\''}, {L'\n', L'n'}, {L'\t', L't'},
    {L'\b', L'b'},  {L'\r', L'r'}, {L'\f', L'f'},  {L'\v', L'v'},
};

constexpr size_t AsciiCount = 128;
using AsciiTable = std::array<wchar_t, AsciiCount>;

/// By character: the letter behind the backslash, "x" for a code in hexadecimal digits, 0 for a character that is
/// written as it is (a NUL among them).
constexpr AsciiTable MakeLetters()
{
    AsciiTable letters{};
    for (size_t control = 1; control < L' '; ++control)
        letters[control] = L'x';
    letters[127] = L'x';
    for (const Escape& escape : Escapes)
        letters[static_cast<size_t>(escape.character)] = escape.letter;
    return letters;
}

/// By letter: the character it stands for, 0 for a letter that stands for nothing. Carriage returns are dropped: in a
/// text of lines they are what is left of another system's line ends.
constexpr AsciiTable MakeCharacters()
{
    AsciiTable characters{};
    for (const Escape& escape : Escapes)
        if (escape.character != L'\r')
            characters[static_cast<size_t>(escape.letter)] = escape.character;
    return characters;
}

constexpr AsciiTable LetterOf = MakeLetters();
constexpr AsciiTable CharacterOf = MakeCharacters();

/// A table's entry, 0 for characters beyond it.
constexpr wchar_t LookUp(const AsciiTable& table, wchar_t character)
{
    const bool isAscii = character >= 0 && static_cast<size_t>(character) < AsciiCount;
    return isAscii ? table[static_cast<unsigned char>(character)] : L'\0';
}

constexpr bool NeedsEscape(wchar_t character)
{
    return LookUp(LetterOf, character) != L'\0';
}

void AppendEscape(wxString& out, wchar_t character)
{
    constexpr const wchar_t* Digits = L"0123456789ABCDEF";
    const wchar_t letter = LookUp(LetterOf, character);
    const wchar_t escape[] = {L'\\', letter, Digits[character >> 4 & 15], Digits[character & 15]};
    out.append(escape, letter == L'x' ? 4 : 2);
}

/// The body of a string literal; `lineJoint` follows every escaped line feed.
void AppendLiteral(wxString& out, const Span& text, const wchar_t* lineJoint)
{
    const wchar_t* pending = text.begin;
    for (const wchar_t* at = text.begin; (at = std::find_if(at, text.end, NeedsEscape)) != text.end; pending = ++at) {
        Append(out, pending, at);
        AppendEscape(out, *at);
        if (*at == L'\n')
            out.append(lineJoint);
    }
    Append(out, pending, text.end);
}

wxString ToLiteral(const wxString& text, bool quote, const wchar_t* lineJoint)
{
    wxString out;
    out.reserve(text.length() + text.length() / 8 + 2);
    if (quote)
        out.append(1, L'"');
    AppendLiteral(out, Span(text), lineJoint);
    if (quote)
        out.append(1, L'"');
    return out;
}

/// The value of a hexadecimal digit, or -1.
constexpr int HexValue(wchar_t digit)
{
    if (digit >= L'0' && digit <= L'9')
        return digit - L'0';
    const unsigned int letter = (static_cast<unsigned int>(digit) | 0x20U) - 'a';
    return letter < 6 ? static_cast<int>(letter) + 10 : -1;
}

/// Reads a literal made by StringToC back into its text.
class LiteralReader
{
public:
    LiteralReader(const wxString& literal, wxString& out)
        : m_literal(literal), m_at(literal.wx_str()), m_end(m_at + literal.length()), m_out(out)
    {
        m_out.reserve(literal.length());
    }

    void Read()
    {
        if (m_at != m_end && *m_at == L'"')
            ++m_at;
        while (ReadPlain()) {
            if (*m_at == L'\\')
                ReadEscape();
            else
                ReadQuote();
        }
        if (m_lastQuote != wxString::npos)
            m_out.erase(m_lastQuote);
    }

private:
    /// Copies what is neither escape nor quote. False at the end.
    bool ReadPlain()
    {
        const auto isSpecial = [](wchar_t character) { return character == L'\\' || character == L'"'; };
        const wchar_t* const special = std::find_if(m_at, m_end, isSpecial);
        Append(m_out, m_at, special);
        m_at = special;
        return m_at != m_end;
    }

    void ReadEscape()
    {
        if (++m_at == m_end)
            return;
        const wchar_t letter = *m_at++;
        if (letter == L'x')
            return ReadCode();
        if (const wchar_t character = LookUp(CharacterOf, letter))
            m_out.append(1, character);
        if (letter == L'n')
            m_behindLineFeed = m_at;
    }

    void ReadCode()
    {
        const wchar_t* const digits = m_at;
        m_at += std::min<ptrdiff_t>(2, m_end - m_at);
        const bool complete = m_at - digits == 2 && HexValue(digits[0]) >= 0 && HexValue(digits[1]) >= 0;
        if (!complete)
            return ReportBadCode();
        m_out.append(1, static_cast<wchar_t>(HexValue(digits[0]) << 4 | HexValue(digits[1])));
    }

    /// A literal is reported once, however many of its codes are bad: the message is the whole literal each time, and
    /// repeating it for each code would take time and log space that grow with the square of the literal.
    void ReportBadCode()
    {
        if (!m_reported)
            wxLogError("Failed to parse string '%s'", m_literal);
        m_reported = true;
    }

    /// A joint between the literals of two lines is a line feed, unless the literal before it has already ended with an
    /// escaped one: then both are the same line end.
    void ReadQuote()
    {
        const bool isJoint = m_end - m_at >= 3 && m_at[1] == L'\n' && m_at[2] == L'"';
        if (!isJoint) {
            m_lastQuote = m_out.length();
            m_out.append(1, *m_at++);
            return;
        }
        if (m_at != m_behindLineFeed)
            m_out.append(1, L'\n');
        m_at += 3;
    }

    const wxString& m_literal;
    const wchar_t* m_at;
    const wchar_t* m_end;
    wxString& m_out;
    const wchar_t* m_behindLineFeed = nullptr;
    size_t m_lastQuote = wxString::npos;
    bool m_reported = false;
};

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
        out.append(1, LookUp(CharacterOf, letter));
        pending = at + 2;
    }
    Append(out, pending, text.end);
    return out;
}

// --- Escape characters and lines ---

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
    const Span span(text);
    const Span dropped(set, set + std::wcslen(set));
    const wchar_t* at = span.begin;
    while (at != span.end && dropped.Holds(*at))
        ++at;
    text.erase(0, static_cast<size_t>(at - span.begin));
}

void CPreprocessor::TrimRight(wxString& text, const wchar_t* set)
{
    const Span span(text);
    const Span dropped(set, set + std::wcslen(set));
    const wchar_t* behind = span.end;
    while (behind != span.begin && dropped.Holds(behind[-1]))
        --behind;
    text.erase(static_cast<size_t>(behind - span.begin));
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

wxString CPreprocessor::StringToJS(const wxString& text, bool quote)
{
    return ToLiteral(text, quote, L"");
}

int CPreprocessor::StringToJS_Inplace(wchar_t* buffer, unsigned int capacity, bool quote)
{
    const size_t length = std::wcslen(buffer);
    const wxString literal = StringToJS(wxString(buffer, length), quote);
    if (literal.length() >= capacity) {
        wxLogError("CPreprocessor::StringToJS_Inplace need more place");
        return -1;
    }
    if (literal.length() > length)
        std::wmemcpy(buffer, literal.wx_str(), literal.length() + 1);
    return static_cast<int>(literal.length());
}

wxString CPreprocessor::StringToC(const wxString& text)
{
    return ToLiteral(text, true, L"\"\n\"");
}

wxString CPreprocessor::StringFromC(const wxString& literal)
{
    wxString out;
    LiteralReader(literal, out).Read();
    return out;
}

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
