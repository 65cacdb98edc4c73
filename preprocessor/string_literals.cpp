#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"

#include <wx/log.h>

#include <array>
#include <cwchar>

using namespace text_detail;

namespace
{

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

} // namespace

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
