#include "preprocessor/preprocessor.h"
#include "preprocessor/text_detail.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

using Pieces = std::vector<std::wstring>;

/// Few characters, so that quotes, backslashes and what is searched meet often.
const std::wstring QuotedAlphabet = L"\"'\\ \tab=\n";

/// One of each kind of character a literal treats differently, both planes, NUL, and what the escapes are made of.
const std::wstring LiteralAlphabet =
    L"\0\x01\b\t\n\v\f\x1f \"'\\nxrtA9\x7f\u0080\u00e9\ufeff"s + wchar_t(0xD83D) + wchar_t(0x1F600);

const std::wstring LineAlphabet = L"ab\n\r";
const std::wstring EscapeAlphabet = L",^`;a";

std::wstring Wide(const wxString& text)
{
    return text.ToStdWstring();
}

rc::Gen<std::wstring> TextOf(const std::wstring& alphabet)
{
    return rc::gen::container<std::wstring>(rc::gen::elementOf(alphabet));
}

std::wstring PickText(const std::wstring& alphabet)
{
    return *TextOf(alphabet);
}

std::wstring Without(std::wstring text, const std::wstring& characters)
{
    const auto isDropped = [&](wchar_t character) { return characters.find(character) != std::wstring::npos; };
    text.erase(std::remove_if(text.begin(), text.end(), isDropped), text.end());
    return text;
}

void ReplaceAll(std::wstring& text, const std::wstring& from, const std::wstring& to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::wstring::npos; at += to.size())
        text.replace(at, from.size(), to);
}

std::wstring Joined(const Pieces& pieces, wchar_t separator)
{
    std::wstring text = pieces.front();
    for (size_t index = 1; index < pieces.size(); ++index)
        text += separator + pieces[index];
    return text;
}

Pieces Split(const std::wstring& text, wchar_t separator, bool unescape, wchar_t escape)
{
    Pieces pieces;
    for (const wxString& piece : CPreprocessor::SplitEscapeChar(text, separator, unescape, escape))
        pieces.push_back(Wide(piece));
    return pieces;
}

// Models: written for clearness, from the rules, however slow.

bool ModelIsEscaped(const std::wstring& text, size_t at)
{
    bool escaped = false;
    while (at-- > 0 && text[at] == L'\\')
        escaped = !escaped;
    return escaped;
}

long ModelFind(const std::wstring& text, const std::wstring& what)
{
    bool inSingle = false;
    bool inDouble = false;
    for (size_t cursor = 0; cursor < text.size(); ++cursor) {
        const size_t found = text.find(what, cursor);
        if (found == std::wstring::npos)
            return -1;
        cursor = std::min({found, text.find(L'"', cursor), text.find(L'\'', cursor)});
        const bool escaped = ModelIsEscaped(text, cursor);
        if (text[cursor] == L'"')
            inDouble ^= !inSingle && !escaped;
        else if (text[cursor] == L'\'')
            inSingle ^= !inDouble && !escaped;
        else if (!inSingle && !inDouble)
            return static_cast<long>(found);
    }
    const bool endsInBoundary = !text.empty() && (what == L"'" || what == L"\"");
    return endsInBoundary ? static_cast<long>(text.size()) : -1;
}

std::wstring ModelConcatQuotes(const std::wstring& text)
{
    std::wstring out;
    wchar_t open = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        out += text[at];
        const bool isBoundary = open ? text[at] == open : text[at] == L'"' || text[at] == L'\'';
        if (!isBoundary || ModelIsEscaped(text, at))
            continue;
        const size_t next = text.find_first_not_of(L" \t", at + 1);
        if (open == L'"' && next != std::wstring::npos && text[next] == L'"') {
            out.pop_back();
            at = next;
        } else
            open = open ? 0 : text[at];
    }
    return out;
}

std::wstring ModelEscape(wchar_t character)
{
    switch (character) {
    case L'\\':
        return L"\\\\";
    case L'"':
        return L"\\\"";
    case L'\'':
        return L"\\'";
    case L'\n':
        return L"\\n";
    case L'\t':
        return L"\\t";
    case L'\b':
        return L"\\b";
    case L'\r':
        return L"\\r";
    case L'\f':
        return L"\\f";
    case L'\v':
        return L"\\v";
    default:
        break;
    }
    if (character == 0 || (character >= 32 && character != 127))
        return std::wstring(1, character);
    return Wide(wxString::Format("\\x%02X", static_cast<unsigned int>(character)));
}

Pieces ModelSplit(const std::wstring& text, wchar_t separator, wchar_t escape)
{
    Pieces pieces(1);
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == separator && (at == 0 || text[at - 1] != escape))
            pieces.emplace_back();
        else
            pieces.back() += text[at];
    }
    return pieces;
}

std::wstring ModelIndent(std::wstring text, const std::wstring& indent)
{
    ReplaceAll(text, L"\r\n", L"\n");
    ReplaceAll(text, L"\n\r", L"\n");
    ReplaceAll(text, L"\r", L"\n");
    std::wstring out;
    for (size_t at = 0; at < text.size(); ++at) {
        if (at == 0 || text[at - 1] == L'\n')
            out += indent;
        out += text[at];
    }
    return out;
}

RC_GTEST_PROP(TextProperties, IsEscapedCharAgreesWithTheModel, ())
{
    const std::wstring text = PickText(L"\\\\a") + L"\"";
    const size_t at = *rc::gen::inRange<size_t>(0, text.size());
    const size_t start = *rc::gen::inRange<size_t>(0, at + 1);
    RC_ASSERT(CPreprocessor::IsEscapedChar(text.data() + at, text.data() + start) ==
              ModelIsEscaped(text.substr(start), at - start));
}

RC_GTEST_PROP(TextProperties, ExtractWordTakesTheLongestRunOfWordCharacters, ())
{
    const std::wstring text = PickText(L"azAZ09_-.\u00e9");
    const auto pos = *rc::gen::inRange<unsigned int>(0, static_cast<unsigned int>(text.size()) + 1);
    const wchar_t* end = nullptr;
    unsigned int length = 0;
    const std::wstring word = Wide(CPreprocessor::ExtractWord(text.c_str(), pos, &end, &length));
    const size_t behind = std::min(text.find_first_not_of(L"azAZ09_", pos), text.size());
    RC_ASSERT(word == text.substr(pos, behind - pos));
    RC_ASSERT(end == text.c_str() + behind);
    RC_ASSERT(length == word.size());
}

RC_GTEST_PROP(TextProperties, FindCharExAgreesWithTheModel, ())
{
    const std::wstring text = PickText(QuotedAlphabet);
    const std::wstring what = *rc::gen::oneOf(TextOf(L"ab="), TextOf(L"a"), TextOf(QuotedAlphabet));
    RC_ASSERT(CPreprocessor::FindCharEx(text, what) == ModelFind(text, what));
}

RC_GTEST_PROP(TextProperties, FindCharExAgreesWithTheModelOnShortTexts, ())
{
    const std::wstring text = *rc::gen::resize(12, TextOf(L"a'\"\\"));
    const std::wstring what = *rc::gen::resize(2, TextOf(L"a'\"\\"));
    RC_ASSERT(CPreprocessor::FindCharEx(text, what) == ModelFind(text, what));
}

RC_GTEST_PROP(TextProperties, FindCharExIsAPlainSearchWithoutQuotes, ())
{
    const std::wstring text = PickText(L"aab\\");
    const std::wstring what = *rc::gen::resize(6, TextOf(L"aab\\"));
    RC_PRE(!text.empty());
    const size_t found = text.find(what);
    RC_ASSERT(CPreprocessor::FindCharEx(text, what) == (found == std::wstring::npos ? -1 : static_cast<long>(found)));
}

RC_GTEST_PROP(TextProperties, FindClosingQuoteGivesTheFirstQuoteThatIsNotEscaped, ())
{
    const std::wstring inside = PickText(L"\"'\\a");
    const std::wstring text = L"\"" + inside;
    size_t expected = 0;
    while (expected < inside.size() && (inside[expected] != L'"' || ModelIsEscaped(inside, expected)))
        ++expected;
    const wchar_t* const end = text.data() + text.size();
    RC_ASSERT(text_detail::FindClosingQuote(text.data(), end) == text.data() + 1 + expected);
}

RC_GTEST_PROP(TextProperties, ExtractStringGivesWhatWasQuoted, ())
{
    const wchar_t quote = *rc::gen::elementOf(L"\"'"s);
    const std::wstring contents = Without(PickText(LiteralAlphabet), std::wstring(1, quote));
    const std::wstring rest = PickText(QuotedAlphabet);
    wxString text = quote + contents + quote + rest;
    RC_ASSERT(Wide(CPreprocessor::ExtractString(text, false)) == contents);
    RC_ASSERT(Wide(text) == rest);
}

RC_GTEST_PROP(TextProperties, ExtractStringReplacesTabsThenLineFeeds, ())
{
    const std::wstring contents = PickText(L"\\tnr'");
    std::wstring expected = contents;
    ReplaceAll(expected, L"\\t", L"\t");
    ReplaceAll(expected, L"\\n", L"\n");
    wxString text = L"\"" + contents + L"\"";
    RC_ASSERT(Wide(CPreprocessor::ExtractString(text, true)) == expected);
    RC_ASSERT(text.empty());
}

RC_GTEST_PROP(TextProperties, TrimmingLeavesTheTextBetweenTheOutermostOtherCharacters, ())
{
    const std::wstring set = L" \t\n\r";
    const std::wstring text = PickText(set + L"a\0"s);
    wxString left = text;
    CPreprocessor::TrimLeft(left, set.c_str());
    RC_ASSERT(Wide(left) == text.substr(std::min(text.find_first_not_of(set), text.size())));
    wxString right = text;
    CPreprocessor::TrimRight(right, set.c_str());
    RC_ASSERT(Wide(right) == text.substr(0, text.find_last_not_of(set) + 1));
}

RC_GTEST_PROP(TextProperties, ConcatQuotesAgreesWithTheModel, ())
{
    const std::wstring text = PickText(QuotedAlphabet);
    RC_ASSERT(Wide(CPreprocessor::ConcatQuotes(text)) == ModelConcatQuotes(text));
}

RC_GTEST_PROP(TextProperties, ConcatQuotesLeavesNothingToJoin, ())
{
    const wxString once = CPreprocessor::ConcatQuotes(PickText(L"\"\"\"'\\ a"));
    RC_ASSERT(Wide(CPreprocessor::ConcatQuotes(once)) == Wide(once));
}

RC_GTEST_PROP(TextProperties, ConcatQuotesJoinsTheLiteralsOfALineIntoOne, ())
{
    const auto texts = *rc::gen::nonEmpty(rc::gen::container<Pieces>(TextOf(LiteralAlphabet)));
    wxString line;
    std::wstring whole;
    for (const std::wstring& text : texts) {
        line += CPreprocessor::StringToJS(text, true) + wxString(PickText(L" \t"));
        whole += text;
    }
    wxString joined = CPreprocessor::ConcatQuotes(line);
    CPreprocessor::TrimRight(joined, L" \t");
    RC_ASSERT(Wide(joined) == Wide(CPreprocessor::StringToJS(whole, true)));
}

RC_GTEST_PROP(TextProperties, StringToJsEscapesCharacterByCharacter, ())
{
    const std::wstring text = PickText(LiteralAlphabet + L"\r");
    std::wstring expected;
    for (const wchar_t character : text)
        expected += ModelEscape(character);
    RC_ASSERT(Wide(CPreprocessor::StringToJS(text, false)) == expected);
    RC_ASSERT(Wide(CPreprocessor::StringToJS(text, true)) == L"\"" + expected + L"\"");
}

RC_GTEST_PROP(TextProperties, StringToJsInplaceIsStringToJsOrFails, ())
{
    const LogCapture log;
    const std::wstring text = Without(PickText(LiteralAlphabet), L"\0"s);
    const bool quote = *rc::gen::arbitrary<bool>();
    const std::wstring literal = Wide(CPreprocessor::StringToJS(text, quote));
    const size_t capacity = text.size() + 1 + *rc::gen::inRange<size_t>(0, literal.size() - text.size() + 2);
    std::wstring buffer = text;
    buffer.resize(capacity);
    const int length = CPreprocessor::StringToJS_Inplace(buffer.data(), static_cast<unsigned int>(capacity), quote);
    const bool fits = literal.size() < capacity;
    RC_ASSERT(length == (fits ? static_cast<int>(literal.size()) : -1));
    RC_ASSERT(buffer.c_str() == (fits ? literal : text));
    RC_ASSERT(log.Errors().size() == (fits ? 0U : 1U));
}

RC_GTEST_PROP(TextProperties, StringFromCReadsBackAnyTextButItsCarriageReturns, ())
{
    const LogCapture log;
    const std::wstring text = PickText(LiteralAlphabet + L"\r\n\n\\\"");
    RC_ASSERT(Wide(CPreprocessor::StringFromC(CPreprocessor::StringToC(text))) == Without(text, L"\r"));
    RC_ASSERT(log.Records().empty());
}

RC_GTEST_PROP(TextProperties, StringToCWritesOneLiteralForEachLine, ())
{
    const std::wstring text = PickText(LiteralAlphabet + L"\n\n\n");
    std::wstring expected = L"\"";
    for (const wchar_t character : text)
        expected += ModelEscape(character) + (character == L'\n' ? L"\"\n\"" : L"");
    RC_ASSERT(Wide(CPreprocessor::StringToC(text)) == expected + L"\"");
}

RC_GTEST_PROP(TextProperties, StringFromCReadsAnyText, ())
{
    const LogCapture log;
    const std::wstring literal = PickText(L"\"\"\\\\nrtx4Fg\n");
    const std::wstring text = Wide(CPreprocessor::StringFromC(literal));
    RC_ASSERT(text.size() <= literal.size());
    RC_ASSERT(log.Errors().size() <= 1U);
}

RC_GTEST_PROP(TextProperties, StringFromCIsThePlainTextWithoutEscapesAndQuotes, ())
{
    const std::wstring text = Without(PickText(LiteralAlphabet), L"\\\"");
    RC_ASSERT(Wide(CPreprocessor::StringFromC(text)) == text);
    RC_ASSERT(Wide(CPreprocessor::StringFromC(L"\"" + text + L"\" behind")) == text);
}

RC_GTEST_PROP(TextProperties, UnescapeCharUndoesEscapeChar, ())
{
    const std::wstring text = PickText(EscapeAlphabet);
    const wchar_t escape = *rc::gen::elementOf(L"^`\0"s);
    const wchar_t escaped = *rc::gen::elementOf(L",;a"s); // the escape character itself would be doubled, for good
    const wxString there = CPreprocessor::EscapeChar(text, escaped, escape);
    const auto count = static_cast<size_t>(std::count(text.begin(), text.end(), escaped));
    RC_ASSERT(there.length() == text.size() + count);
    RC_ASSERT(Wide(CPreprocessor::UnescapeChar(there, escaped, escape)) == text);
}

RC_GTEST_PROP(TextProperties, UnescapeCharReplacesEveryEscapedCharacter, ())
{
    const std::wstring text = PickText(EscapeAlphabet);
    std::wstring expected = text;
    ReplaceAll(expected, L"^,", L",");
    RC_ASSERT(Wide(CPreprocessor::UnescapeChar(text, L',', L'^')) == expected);
}

RC_GTEST_PROP(TextProperties, SplitEscapeCharAgreesWithTheModel, ())
{
    const std::wstring text = PickText(EscapeAlphabet);
    Pieces expected = ModelSplit(text, L',', L'^');
    RC_ASSERT(Split(text, L',', false, L'^') == expected);
    for (std::wstring& piece : expected)
        ReplaceAll(piece, L"^,", L",");
    RC_ASSERT(Split(text, L',', true, L'^') == expected);
}

RC_GTEST_PROP(TextProperties, ThePiecesOfSplitEscapeCharJoinedAreTheText, ())
{
    const std::wstring text = PickText(EscapeAlphabet);
    const wchar_t separator = *rc::gen::elementOf(EscapeAlphabet);
    const wchar_t escape = *rc::gen::elementOf(EscapeAlphabet);
    RC_ASSERT(Joined(Split(text, separator, false, escape), separator) == text);
}

RC_GTEST_PROP(TextProperties, SplitEscapeCharReadsBackEscapedPieces, ())
{
    auto pieces = *rc::gen::nonEmpty(rc::gen::container<Pieces>(TextOf(EscapeAlphabet)));
    Pieces escaped;
    for (std::wstring& piece : pieces) {
        piece += L'a'; // an escape character at the end of a piece would escape the separator behind it
        escaped.push_back(Wide(CPreprocessor::EscapeChar(piece, L',', L'^')));
    }
    RC_ASSERT(Split(Joined(escaped, L','), L',', true, L'^') == pieces);
}

RC_GTEST_PROP(TextProperties, IndentLinesAgreesWithTheModel, ())
{
    const std::wstring text = PickText(LineAlphabet);
    const int count = *rc::gen::inRange(-1, 4);
    std::wstring indent;
    for (int done = 0; done < count; ++done)
        indent += L" \t";
    RC_ASSERT(Wide(CPreprocessor::IndentLines(text, L" \t", count)) == ModelIndent(text, indent));
}

RC_GTEST_PROP(TextProperties, IndentLinesKeepsTheNumberOfLines, ())
{
    const std::wstring text = PickText(L"ab\n");
    const std::wstring out = Wide(CPreprocessor::IndentLines(text, L"+", 1));
    RC_ASSERT(std::count(out.begin(), out.end(), L'\n') == std::count(text.begin(), text.end(), L'\n'));
    const auto lines = std::count(text.begin(), text.end(), L'\n') + (text.empty() || text.back() == L'\n' ? 0 : 1);
    RC_ASSERT(std::count(out.begin(), out.end(), L'+') == lines);
}

RC_GTEST_PROP(TextProperties, ToKeywordKeepsTheLengthAndItsOwnResults, ())
{
    const std::wstring text = PickText(LiteralAlphabet + L"z_Z0");
    const wxString keyword = CPreprocessor::ToKeyword(text);
    RC_ASSERT(keyword.length() == text.size());
    RC_ASSERT(std::all_of(keyword.wx_str(), keyword.wx_str() + keyword.length(), text_detail::IsWordChar));
    RC_ASSERT(Wide(CPreprocessor::ToKeyword(keyword)) == Wide(keyword));
}

RC_GTEST_PROP(TextProperties, AnsiStringKeepsPrintableTextAndItsOwnResults, ())
{
    const std::wstring text = PickText(LiteralAlphabet);
    const std::wstring ansi = Wide(CPreprocessor::AnsiString(text));
    std::wstring expected;
    std::copy_if(text.begin(), text.end(), std::back_inserter(expected),
                 [](wchar_t character) { return character >= L' ' && character <= L'~'; });
    RC_ASSERT(ansi == expected);
    RC_ASSERT(Wide(CPreprocessor::AnsiString(ansi)) == ansi);
}

} // namespace
