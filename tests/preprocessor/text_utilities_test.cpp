#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_detail.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

constexpr wchar_t Grin = 0x1F600; // beyond the first plane
constexpr wchar_t HighSurrogate = 0xD83D;
constexpr wchar_t LowSurrogate = 0xDE00;

/// Comparable and printable; NULs included.
std::wstring Wide(const wxString& text)
{
    return text.ToStdWstring();
}

using Pieces = std::vector<std::wstring>;

/// The same for a list of texts.
template <typename Texts> Pieces WideAll(const Texts& texts)
{
    Pieces pieces(texts.size());
    std::transform(texts.begin(), texts.end(), pieces.begin(), [](const wxString& text) { return Wide(text); });
    return pieces;
}

std::wstring Repeated(const std::wstring& text, size_t count)
{
    std::wstring out;
    for (size_t done = 0; done < count; ++done)
        out += text;
    return out;
}

/// A text for a failure message, cut when it is long.
std::string Shown(const std::wstring& text)
{
    return wxString(text.substr(0, 100)).utf8_string();
}

struct Conversion
{
    std::wstring text;
    std::wstring expected;
};

using Convert = wxString (*)(const wxString&);

void ExpectConversions(Convert convert, const std::vector<Conversion>& conversions)
{
    for (const Conversion& conversion : conversions)
        EXPECT_EQ(Wide(convert(conversion.text)), conversion.expected) << "from: " << Shown(conversion.text);
}

wxString ToJS(const wxString& text)
{
    return CPreprocessor::StringToJS(text, false);
}

// --- Escaped characters and words ---

TEST(TextUtilities, ACharacterBehindAnOddNumberOfBackslashesIsEscaped)
{
    for (size_t count = 0; count < 6; ++count) {
        const std::wstring text = L"a" + std::wstring(count, L'\\') + L"\"";
        const wchar_t* const start = text.c_str();
        EXPECT_EQ(CPreprocessor::IsEscapedChar(start + 1 + count, start), count % 2 == 1) << count;
    }
}

TEST(TextUtilities, EscapesAreCountedBackToTheGivenStartOnly)
{
    const wchar_t text[] = L"\\\\\\\"";
    EXPECT_TRUE(CPreprocessor::IsEscapedChar(text + 3, text));
    EXPECT_FALSE(CPreprocessor::IsEscapedChar(text + 3, text + 1));
    EXPECT_TRUE(CPreprocessor::IsEscapedChar(text + 3, text + 2));
    EXPECT_FALSE(CPreprocessor::IsEscapedChar(text + 3, text + 3));
}

TEST(TextUtilities, OnlyBackslashesDirectlyBeforeACharacterEscapeIt)
{
    const wchar_t text[] = L"\\ \"";
    EXPECT_FALSE(CPreprocessor::IsEscapedChar(text + 2, text));
}

TEST(TextUtilities, ANullPlaceIsNotEscaped)
{
    EXPECT_FALSE(CPreprocessor::IsEscapedChar(nullptr, L"\\"));
    EXPECT_FALSE(CPreprocessor::IsEscapedChar(nullptr, nullptr));
}

TEST(TextUtilities, ExtractWordTakesAsciiLettersDigitsAndUnderscores)
{
    const wchar_t text[] = L"#azAZ_09-x";
    const wchar_t* end = nullptr;
    unsigned int length = 0;
    EXPECT_EQ(Wide(CPreprocessor::ExtractWord(text, 1, &end, &length)), L"azAZ_09");
    EXPECT_EQ(end, text + 8);
    EXPECT_EQ(length, 7U);
}

TEST(TextUtilities, ExtractWordStopsAtEveryOtherCharacter)
{
    for (const wchar_t other : L" \t\n/:@[`{-.#\"'\\\u007f\u00e9\u0416\uff21"s + HighSurrogate + Grin) {
        const std::wstring text = L"a"s + other + L"b";
        EXPECT_EQ(Wide(CPreprocessor::ExtractWord(text.c_str(), 0, nullptr, nullptr)), L"a") << std::hex << int(other);
    }
}

TEST(TextUtilities, ExtractWordStopsAtTheTerminatingNul)
{
    const wchar_t text[] = L"word\0more";
    const wchar_t* end = nullptr;
    EXPECT_EQ(Wide(CPreprocessor::ExtractWord(text, 2, &end, nullptr)), L"rd");
    EXPECT_EQ(end, text + 4);
}

TEST(TextUtilities, ExtractWordGivesAnEmptyWordWhereNoneBegins)
{
    const wchar_t text[] = L"a b";
    const wchar_t* end = nullptr;
    unsigned int length = 9;
    EXPECT_EQ(Wide(CPreprocessor::ExtractWord(text, 1, &end, &length)), L"");
    EXPECT_EQ(end, text + 1);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(Wide(CPreprocessor::ExtractWord(text, 3, &end, &length)), L"");
    EXPECT_EQ(end, text + 3);
}

TEST(TextUtilities, ExtractWordMayStartWithADigit)
{
    EXPECT_EQ(Wide(CPreprocessor::ExtractWord(L"1a b", 0, nullptr, nullptr)), L"1a");
}

// --- Searching outside quoted strings ---

struct Search
{
    std::wstring text;
    std::wstring what;
    long expected;
};

void ExpectSearches(const std::vector<Search>& searches)
{
    for (const Search& search : searches)
        EXPECT_EQ(CPreprocessor::FindCharEx(search.text, search.what), search.expected)
            << "\"" << Shown(search.what) << "\" in: " << Shown(search.text);
}

TEST(TextUtilities, FindCharExGivesTheFirstOccurrence)
{
    ExpectSearches({{L"abcabc", L"c", 2}, {L"abcabc", L"ca", 2}, {L"abc", L"abc", 0}, {L"aab", L"ab", 1}});
}

TEST(TextUtilities, FindCharExGivesMinusOneWhenThereIsNone)
{
    ExpectSearches({{L"abc", L"d", -1},
                    {L"abc", L"cd", -1},
                    {L"abc", L"abcd", -1},
                    {L"", L"a", -1},
                    {L"", L"'", -1},
                    {L"", L"", -1}});
}

TEST(TextUtilities, FindCharExSkipsOccurrencesInQuotedStrings)
{
    ExpectSearches({{L"a='=' =", L"=", 1},
                    {L"'='", L"=", -1},
                    {L"\"=\"", L"=", -1},
                    {L"'=' =", L"=", 4},
                    {L"\"=\" =", L"=", 4},
                    {L"'='\"=\"=", L"=", 6}});
}

TEST(TextUtilities, FindCharExTakesTheOtherQuoteInsideAStringAsACharacter)
{
    ExpectSearches({{L"'\"' =", L"=", 4}, {L"\"'\" =", L"=", 4}, {L"'\"=\"' =", L"=", 6}, {L"\"'=\"' =", L"=", -1}});
}

TEST(TextUtilities, FindCharExIgnoresEscapedQuotes)
{
    ExpectSearches({{L"'\\'=' =", L"=", 6},
                    {L"\"\\\"=\" =", L"=", 6},
                    {L"'\\\\' =", L"=", 5},
                    {L"\\'=", L"=", 2},
                    {L"\\\\'=", L"=", -1},
                    {L"\\\"=\"=", L"=", 2}});
}

TEST(TextUtilities, FindCharExDoesNotFindInAStringThatIsNotClosed)
{
    ExpectSearches({{L"'=", L"=", -1}, {L"'= =", L"=", -1}, {L"a'\\'=", L"=", -1}});
}

TEST(TextUtilities, FindCharExFindsOverlappingOccurrencesBehindASkippedOne)
{
    // in the last one the occurrence at 1 is inside the string and shares a character with the one at 3
    ExpectSearches({{L"'aa'aab", L"aa", 4}, {L"\"xy\"xyx", L"xyx", 4}, {L"'a'a'a", L"a'a", 3}});
}

TEST(TextUtilities, FindCharExTakesTheQuotesWithinAnOccurrenceAsItsCharacters)
{
    ExpectSearches({{L"a='b'", L"='", 1}, {L"'x='", L"='", -1}, {L"a\"\"", L"a\"\"", 0}});
}

TEST(TextUtilities, FindCharExTakesAQuoteInFrontOfWhatIsSearchedAsABoundary)
{
    ExpectSearches({{L"a'b", L"'", -1}, {L"a'b'c", L"'", -1}, {L"'x'x", L"'x", -1}});
}

TEST(TextUtilities, FindCharExGivesTheLengthWhenItRunsOffTheEndAtSuchABoundary)
{
    ExpectSearches({{L"'", L"'", 1}, {L"a'b'", L"'", 4}, {L"ab\"", L"\"", 3}, {L"ab\\'", L"'", 4}, {L"\"'", L"'", 2}});
}

TEST(TextUtilities, FindCharExFindsAnEmptyTextAtTheFirstPlaceOutsideStrings)
{
    ExpectSearches({{L"ab", L"", 0}, {L"'a'b", L"", 3}, {L"'a", L"", -1}});
}

TEST(TextUtilities, FindCharExCountsNulsAndCharactersBeyondTheFirstPlane)
{
    ExpectSearches({{L"a\0b=c"s, L"=", 3},
                    {L"'\0' \0"s, L"\0"s, 4},
                    {L"\u00e9"s + Grin + L"=", L"=", 2},
                    {L"x"s + HighSurrogate + LowSurrogate, std::wstring(1, LowSurrogate), 2},
                    {L"'"s + Grin + L"'" + Grin, std::wstring(1, Grin), 3}});
}

TEST(TextUtilities, FindCharExHandlesAMillionBackslashesAndQuotes)
{
    const std::wstring slashes(1000000, L'\\');
    const auto length = static_cast<long>(slashes.size());
    ExpectSearches({{slashes + L"'='=", L"=", length + 3},
                    {slashes + L"\\'=", L"=", length + 2},
                    {Repeated(L"\\\"", 500000) + L"=", L"=", length},
                    {Repeated(L"'\\\\'", 250000) + L"=", L"=", length},
                    {Repeated(L"'=", 500000), L"=", 3},
                    {Repeated(L"\"'='", 250000) + L"=", L"=", 1000000}});
}

TEST(TextUtilities, FindCharExHandlesALongTextThatRepeatsItself)
{
    const std::wstring repeated(1000000, L'a');
    ExpectSearches({{repeated, std::wstring(500000, L'a') + L"b", -1},
                    {repeated + L"b", std::wstring(500000, L'a') + L"b", 500000},
                    {L"'" + repeated, std::wstring(500000, L'a'), -1}});
}

TEST(TextUtilities, FindCharExHandlesAMillionSkippedOccurrences)
{
    ExpectSearches({{L"'" + std::wstring(1000000, L'=') + L"'=", L"=", 1000002},
                    {L"\"" + Repeated(L"='", 500000) + L"\"=", L"=", 1000002}});
}

class FindInBlock : public ::testing::Test
{
protected:
    void Add(const std::wstring& text) { m_block.CreateUnit(wxSharedPtr<CParserFile>(), text, m_block.GetCount() + 1); }

    void AddHole()
    {
        Add(L"=");
        const auto slot = m_block.GetCount() - 1;
        ASSERT_EQ(m_block.RemoveElement(m_block.GetUnit(slot), nullptr, 1), 0);
    }

    void ExpectHit(int fromUnit, int fromPos, int unit, int pos)
    {
        EXPECT_TRUE(CPreprocessor::Find(&m_block, fromUnit, fromPos, L"="));
        EXPECT_EQ(fromUnit, unit);
        EXPECT_EQ(fromPos, pos);
    }

    void ExpectMiss(int fromUnit, int fromPos)
    {
        EXPECT_FALSE(CPreprocessor::Find(&m_block, fromUnit, fromPos, L"="));
        EXPECT_EQ(fromUnit, static_cast<int>(m_block.GetCount()));
        EXPECT_EQ(fromPos, 0);
    }

    CParserBlock m_block{nullptr};
};

TEST_F(FindInBlock, GivesUnitAndPlaceOfAHit)
{
    Add(L"ab");
    Add(L"'=' =");
    ExpectHit(0, 0, 1, 4);
    ExpectHit(1, 0, 1, 4);
}

TEST_F(FindInBlock, CountsThePlaceFromWhereTheSearchBegan)
{
    Add(L"a=b=c");
    ExpectHit(0, 2, 0, 1);
    ExpectHit(0, 3, 0, 0);
}

TEST_F(FindInBlock, KnowsNoQuotesBeforeWhereTheSearchBegan)
{
    Add(L"'=");
    ExpectHit(0, 1, 0, 0);
    ExpectMiss(0, 0);
}

TEST_F(FindInBlock, SearchesLaterUnitsFromTheirStart)
{
    Add(L"=abc");
    Add(L"=");
    ExpectHit(0, 1, 1, 0);
}

TEST_F(FindInBlock, SkipsHoles)
{
    AddHole();
    Add(L"a");
    AddHole();
    Add(L"b=");
    ExpectHit(0, 0, 3, 1);
}

TEST_F(FindInBlock, BeginsAtTheGivenPlaceOfTheFirstUnitBehindHoles)
{
    AddHole();
    Add(L"=a=");
    ExpectHit(0, 1, 1, 1);
}

TEST_F(FindInBlock, EndsBehindTheLastSlotOnAMiss)
{
    ExpectMiss(0, 0);
    Add(L"a");
    AddHole();
    ExpectMiss(0, 0);
    ExpectMiss(1, 5);
    ExpectMiss(2, 0);
}

TEST_F(FindInBlock, FindsNothingBehindTheEndOfAUnit)
{
    Add(L"=");
    ExpectMiss(0, 1);
    ExpectMiss(0, 1000);
}

TEST_F(FindInBlock, TakesNegativePlacesForTheStart)
{
    Add(L"a=");
    ExpectHit(-1, 0, 0, 1);
    ExpectHit(0, -7, 0, 1);
}

// --- Extracting quoted strings ---

struct Extraction
{
    std::wstring text;
    std::wstring contents;
    size_t after;
};

void ExpectExtraction(const Extraction& expected, bool unescape)
{
    SCOPED_TRACE(Shown(expected.text));
    const wchar_t* const begin = expected.text.data();
    const wchar_t* after = nullptr;
    const wxString contents = CPreprocessor::ExtractString(begin, begin + expected.text.size(), &after, unescape);
    EXPECT_EQ(Wide(contents), expected.contents);
    EXPECT_EQ(static_cast<size_t>(after - begin), expected.after);

    wxString rest = expected.text;
    EXPECT_EQ(Wide(CPreprocessor::ExtractString(rest, unescape)), expected.contents);
    EXPECT_EQ(Wide(rest), expected.text.substr(expected.after));
}

TEST(TextUtilities, ExtractStringTakesWhatStandsBetweenTheQuotes)
{
    ExpectExtraction({L"'ab' c", L"ab", 4}, false);
    ExpectExtraction({L"\"ab\"", L"ab", 4}, false);
    ExpectExtraction({L"\"it's\"x", L"it's", 6}, false);
    ExpectExtraction({L"'\"'\"", L"\"", 3}, false);
    ExpectExtraction({L"''rest", L"", 2}, false);
}

TEST(TextUtilities, ExtractStringTakesNothingWhereNoStringBegins)
{
    ExpectExtraction({L"", L"", 0}, false);
    ExpectExtraction({L" 'a'", L"", 0}, false);
    ExpectExtraction({L"a'b'", L"", 0}, true);
}

TEST(TextUtilities, ExtractStringTakesNothingWhenTheStringIsNotClosed)
{
    ExpectExtraction({L"'", L"", 0}, false);
    ExpectExtraction({L"'abc\"", L"", 0}, false);
    ExpectExtraction({L"\"abc'", L"", 0}, true);
}

TEST(TextUtilities, ExtractStringLetsNoBackslashProtectAQuote)
{
    ExpectExtraction({L"'it\\'s'", L"it\\", 5}, false);
    ExpectExtraction({L"\"\\\"\"", L"\\", 3}, true);
}

TEST(TextUtilities, ExtractStringReplacesTabsAndLineFeedsOnRequest)
{
    ExpectExtraction({L"'a\\tb\\nc'", L"a\tb\nc", 9}, true);
    ExpectExtraction({L"'a\\tb\\nc'", L"a\\tb\\nc", 9}, false);
}

TEST(TextUtilities, ExtractStringLeavesAllOtherEscapesAsTheyAre)
{
    ExpectExtraction({L"'\\r\\x41\\\"\\'", L"\\r\\x41\\\"\\", 11}, true);
    ExpectExtraction({L"'\\\\t\\\\n'", L"\\\t\\\n", 8}, true); // the second backslash counts, not what stands before it
    ExpectExtraction({L"'\\T\\N'", L"\\T\\N", 6}, true);
}

TEST(TextUtilities, ExtractStringKeepsNulsAndOtherPlanes)
{
    ExpectExtraction({L"'a\0b'c\0"s, L"a\0b"s, 5}, false);
    ExpectExtraction({L"\"\\t"s + Grin + L"\0\"\u00e9"s, L"\t"s + Grin + L'\0', 6}, true);
}

TEST(TextUtilities, ExtractStringEndsAtTheGivenEnd)
{
    const wchar_t text[] = L"'ab'";
    const wchar_t* after = nullptr;
    EXPECT_EQ(Wide(CPreprocessor::ExtractString(text, text + 3, &after, false)), L"");
    EXPECT_EQ(after, text);
    EXPECT_EQ(Wide(CPreprocessor::ExtractString(text, text, &after, false)), L"");
    EXPECT_EQ(after, text);
}

TEST(TextUtilities, ExtractStringNeedsNoPlaceForItsEnd)
{
    const wchar_t text[] = L"'ab'";
    EXPECT_EQ(Wide(CPreprocessor::ExtractString(text, text + 4, nullptr, false)), L"ab");
    EXPECT_EQ(Wide(CPreprocessor::ExtractString(text + 1, text + 4, nullptr, false)), L"");
}

// --- Trimming ---

TEST(TextUtilities, TrimLeftRemovesTheLongestPrefixOfTheSet)
{
    const std::vector<Conversion> conversions = {
        {L" \t\n\ra b \t", L"a b \t"}, {L"ab", L"ab"}, {L" \t", L""}, {L"", L""}, {L"\u00a0 a", L"\u00a0 a"}};
    for (const Conversion& conversion : conversions) {
        wxString text = conversion.text;
        CPreprocessor::TrimLeft(text, L" \t\n\r");
        EXPECT_EQ(Wide(text), conversion.expected);
    }
}

TEST(TextUtilities, TrimRightRemovesTheLongestSuffixOfTheSet)
{
    const std::vector<Conversion> conversions = {
        {L" a b \t\n\r", L" a b"}, {L"ab", L"ab"}, {L"\r\n", L""}, {L"", L""}, {L"a \u00a0", L"a \u00a0"}};
    for (const Conversion& conversion : conversions) {
        wxString text = conversion.text;
        CPreprocessor::TrimRight(text, L" \t\n\r");
        EXPECT_EQ(Wide(text), conversion.expected);
    }
}

TEST(TextUtilities, TrimmingTakesAnySet)
{
    wxString text = L" \"<file name>\" ";
    CPreprocessor::TrimLeft(text, L" \"<");
    CPreprocessor::TrimRight(text, L" \">");
    EXPECT_EQ(Wide(text), L"file name");
    CPreprocessor::TrimLeft(text, L"");
    CPreprocessor::TrimRight(text, L"");
    EXPECT_EQ(Wide(text), L"file name");
}

TEST(TextUtilities, TrimmingKeepsNuls)
{
    wxString text = L" \0 a \0 "s;
    CPreprocessor::TrimLeft(text, L" ");
    CPreprocessor::TrimRight(text, L" ");
    EXPECT_EQ(Wide(text), L"\0 a \0"s);
}

// --- Joining literals ---

TEST(TextUtilities, ConcatQuotesJoinsLiteralsWithBlanksAndTabsBetween)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"\"ab\"  \"cd\"", L"\"abcd\""},
                                                    {L"\"a\" \t \"b\"", L"\"ab\""},
                                                    {L"\"a\"\"b\"", L"\"ab\""},
                                                    {L"\"a\" \"b\" \"c\"", L"\"abc\""},
                                                    {L"x \"a\" \"b\" y", L"x \"ab\" y"},
                                                    {L"\"\" \"\" \"\"", L"\"\""}});
}

TEST(TextUtilities, ConcatQuotesLeavesLiteralsOnDifferentLinesApart)
{
    ExpectConversions(CPreprocessor::ConcatQuotes,
                      {{L"\"a\"\n\"b\"", L"\"a\"\n\"b\""}, {L"\"a\" \r\n \"b\"", L"\"a\" \r\n \"b\""}});
}

TEST(TextUtilities, ConcatQuotesLeavesLiteralsApartThatHaveSomethingBetween)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"\"a\", \"b\"", L"\"a\", \"b\""},
                                                    {L"\"a\"\u00a0\"b\"", L"\"a\"\u00a0\"b\""},
                                                    {L"\"a\" '' \"b\"", L"\"a\" '' \"b\""},
                                                    {L"\"a\" \\\"b\"", L"\"a\" \\\"b\""}});
}

TEST(TextUtilities, ConcatQuotesIgnoresDoubleQuotesInSingleQuotedText)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"'\"a\" \"b\"'", L"'\"a\" \"b\"'"},
                                                    {L"'\"' \"a\" \"b\"", L"'\"' \"ab\""},
                                                    {L"'\\'\"a\" \"b\"'", L"'\\'\"a\" \"b\"'"},
                                                    {L"\"a\" 'x'\"b\" \"c\"", L"\"a\" 'x'\"bc\""}});
}

TEST(TextUtilities, ConcatQuotesIgnoresSingleQuotesInLiterals)
{
    ExpectConversions(CPreprocessor::ConcatQuotes,
                      {{L"\"it's\" \"b\"", L"\"it'sb\""}, {L"\"a\" \"'\" \"'\"", L"\"a''\""}});
}

TEST(TextUtilities, ConcatQuotesIgnoresEscapedQuotes)
{
    ExpectConversions(CPreprocessor::ConcatQuotes,
                      {{L"\"a\\\" \"b\"", L"\"a\\\" \"b\""},
                       {L"\"a\\\\\" \"b\"", L"\"a\\\\b\""},
                       {L"\"a\\\"\" \"\\\"b\"", L"\"a\\\"\\\"b\""},
                       {L"\\\"a\" \"b\"", L"\\\"a\" \"b\""}, // the text opens at the second quote
                       {L"\\'\"a\" \"b\"", L"\\'\"ab\""}});
}

TEST(TextUtilities, ConcatQuotesKeepsBlanksBehindTheLastLiteral)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"\"a\" \t", L"\"a\" \t"}, {L"\"a\" \"b\" ", L"\"ab\" "}});
}

TEST(TextUtilities, ConcatQuotesKeepsALiteralThatIsNotClosed)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"\"a\" \"b", L"\"ab"}, {L"\"a", L"\"a"}, {L"\"\"\"", L"\""}});
}

TEST(TextUtilities, ConcatQuotesGivesTextWithoutQuotesUnchanged)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"", L""}, {L"a  b\\\t", L"a  b\\\t"}, {L"a\0b"s, L"a\0b"s}});
}

TEST(TextUtilities, ConcatQuotesKeepsNulsAndOtherPlanes)
{
    ExpectConversions(CPreprocessor::ConcatQuotes, {{L"\"\0\" \"\u00e9"s + Grin + L"\"", L"\"\0\u00e9"s + Grin + L"\""},
                                                    {L"\"a\"\0\"b\""s, L"\"a\"\0\"b\""s}});
}

TEST(TextUtilities, ConcatQuotesHandlesAMillionQuotes)
{
    const std::wstring slashes(1000000, L'\\');
    const std::wstring escaped = Repeated(L"\\\"", 500000);
    const std::wstring blanks(1000000, L' ');
    const std::vector<Conversion> conversions = {{std::wstring(1000000, L'"'), L"\"\""},
                                                 {L"\"" + slashes + L"\" \"b\"", L"\"" + slashes + L"b\""},
                                                 {L"\"" + escaped + L"\" \"b\"", L"\"" + escaped + L"b\""},
                                                 {L"\"a\"" + blanks + L"b", L"\"a\"" + blanks + L"b"}};
    for (const Conversion& conversion : conversions)
        EXPECT_TRUE(Wide(CPreprocessor::ConcatQuotes(conversion.text)) == conversion.expected)
            << "from: " << Shown(conversion.text);
}

// --- Messages ---

TEST(TextUtilities, AddContextGivesTheMessageUnchanged)
{
    EXPECT_EQ(Wide(CPreprocessor::AddContext(L"bad %s", L"file.h", 7)), L"bad %s");
    EXPECT_EQ(Wide(CPreprocessor::AddContext(L"", L"", 0)), L"");
}

TEST(TextUtilities, ExtractContextGivesNothing)
{
    wxString text = L"text";
    wxString file = L"file";
    int line = 7;
    EXPECT_EQ(CPreprocessor::ExtractContext(L"file \"a\" line 1", text, file, line), 0);
    EXPECT_EQ(Wide(text), L"text");
    EXPECT_EQ(Wide(file), L"file");
    EXPECT_EQ(line, 7);
}

// --- JavaScript literals ---

TEST(TextUtilities, StringToJsEscapesEachKindOfCharacter)
{
    ExpectConversions(ToJS, {{L"\\", L"\\\\"},
                             {L"\"", L"\\\""},
                             {L"'", L"\\'"},
                             {L"\n", L"\\n"},
                             {L"\t", L"\\t"},
                             {L"\b", L"\\b"},
                             {L"\r", L"\\r"},
                             {L"\f", L"\\f"},
                             {L"\v", L"\\v"},
                             {L"\x01", L"\\x01"},
                             {L"\x07", L"\\x07"},
                             {L"\x0e", L"\\x0E"},
                             {L"\x1f", L"\\x1F"},
                             {L"\x7f", L"\\x7F"}});
}

TEST(TextUtilities, StringToJsWritesAllOtherCharactersAsTheyAre)
{
    for (wchar_t character = L' '; character < 127; ++character) {
        const bool isEscaped = character == L'"' || character == L'\'' || character == L'\\';
        EXPECT_EQ(Wide(ToJS(wxString(character))).length(), isEscaped ? 2U : 1U) << int(character);
        EXPECT_EQ(Wide(ToJS(wxString(character))).back(), character);
    }
    ExpectConversions(ToJS, {{L"\0"s, L"\0"s},
                             {L"\u0080\u009f\u00e9\u2028\ufeff\uffff", L"\u0080\u009f\u00e9\u2028\ufeff\uffff"},
                             {std::wstring(1, Grin), std::wstring(1, Grin)},
                             {std::wstring(1, HighSurrogate), std::wstring(1, HighSurrogate)},
                             {L"", L""}});
}

TEST(TextUtilities, StringToJsEscapesWithinText)
{
    ExpectConversions(
        ToJS, {{L"say \"hi\"\n", L"say \\\"hi\\\"\\n"}, {L"a\\nb", L"a\\\\nb"}, {L"\ta\0b\x02"s, L"\\ta\0b\\x02"s}});
}

TEST(TextUtilities, StringToJsPutsDoubleQuotesAroundOnRequest)
{
    EXPECT_EQ(Wide(CPreprocessor::StringToJS(L"a\"b", true)), L"\"a\\\"b\"");
    EXPECT_EQ(Wide(CPreprocessor::StringToJS(L"", true)), L"\"\"");
    EXPECT_EQ(Wide(CPreprocessor::StringToJS(L"\0"s, true)), L"\"\0\""s);
}

/// A buffer filled with "#" behind its text, to see what is written.
struct Buffer
{
    Buffer(const std::wstring& text, size_t size) : characters(size, L'#')
    {
        characters.replace(0, text.size() + 1, text.c_str(), text.size() + 1);
    }

    int Convert(unsigned int capacity, bool quote)
    {
        return CPreprocessor::StringToJS_Inplace(characters.data(), capacity, quote);
    }

    std::wstring characters;
};

TEST(TextUtilities, StringToJsInplaceConvertsTheBuffer)
{
    Buffer buffer(L"a\nb", 8);
    EXPECT_EQ(buffer.Convert(8, false), 4);
    EXPECT_EQ(buffer.characters, L"a\\nb\0###"s);
}

TEST(TextUtilities, StringToJsInplaceQuotesOnRequest)
{
    Buffer buffer(L"a", 5);
    EXPECT_EQ(buffer.Convert(4, true), 3);
    EXPECT_EQ(buffer.characters, L"\"a\"\0#"s);
}

TEST(TextUtilities, StringToJsInplaceLeavesTextAloneThatNeedsNoEscape)
{
    const LogCapture log;
    Buffer buffer(L"abc\u00e9", 6);
    EXPECT_EQ(buffer.Convert(5, false), 4);
    EXPECT_EQ(buffer.characters, L"abc\u00e9\0#"s);
    Buffer empty(L"", 1);
    EXPECT_EQ(empty.Convert(1, false), 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST(TextUtilities, StringToJsInplaceFailsWhenTheResultAndItsNulDoNotFit)
{
    const Pieces message = {L"CPreprocessor::StringToJS_Inplace need more place"};
    for (const unsigned int capacity : {4U, 3U, 0U}) // the result has 4 characters
    {
        const LogCapture log;
        Buffer buffer(L"a\nb", 8);
        EXPECT_EQ(buffer.Convert(capacity, false), -1) << capacity;
        EXPECT_EQ(buffer.characters, L"a\nb\0####"s) << capacity;
        EXPECT_EQ(WideAll(log.Errors()), message) << capacity;
        EXPECT_EQ(log.Records().size(), 1U) << capacity;
    }
}

TEST(TextUtilities, StringToJsInplaceFailsForTextThatFillsTheCapacityAlready)
{
    const LogCapture log;
    Buffer buffer(L"abc", 4);
    EXPECT_EQ(buffer.Convert(3, false), -1);
    EXPECT_EQ(buffer.characters, L"abc\0"s);
    EXPECT_EQ(log.Errors().size(), 1U);
}

TEST(TextUtilities, StringToJsInplaceConvertsUpToTheNul)
{
    Buffer buffer(L"'\0'"s, 6);
    EXPECT_EQ(buffer.Convert(6, false), 2);
    EXPECT_EQ(buffer.characters, L"\\'\0\0##"s);
}

// --- C literals ---

TEST(TextUtilities, StringToCMakesOneLiteralOfEachLine)
{
    ExpectConversions(CPreprocessor::StringToC, {{L"a\nb", L"\"a\\n\"\n\"b\""},
                                                 {L"a", L"\"a\""},
                                                 {L"", L"\"\""},
                                                 {L"a\n", L"\"a\\n\"\n\"\""},
                                                 {L"\n\n", L"\"\\n\"\n\"\\n\"\n\"\""}});
}

TEST(TextUtilities, StringToCEscapesAsStringToJsDoes)
{
    ExpectConversions(CPreprocessor::StringToC,
                      {{L"\"\\'\t\r\x01\x7f", L"\"\\\"\\\\\\'\\t\\r\\x01\\x7F\""}, {L"\0\u00e9"s, L"\"\0\u00e9\""s}});
}

TEST(TextUtilities, StringToCKeepsABackslashBeforeAnNInItsLine)
{
    ExpectConversions(CPreprocessor::StringToC, {{L"a\\nb", L"\"a\\\\nb\""}, {L"\\\n", L"\"\\\\\\n\"\n\"\""}});
}

TEST(TextUtilities, StringFromCReadsBackWhatStringToCMakes)
{
    for (const std::wstring& text : {L"a\nb"s, L""s, L"\n"s, L"a\n\nb\n"s, L"\"'\\\t\b\f\v\x01\x7f"s, L"a\\nb\\"s,
                                     L"\"\n\""s, L"\0\u00e9\n\0"s, L"x"s + Grin + HighSurrogate})
        EXPECT_EQ(Wide(CPreprocessor::StringFromC(CPreprocessor::StringToC(text))), text);
}

TEST(TextUtilities, StringFromCGivesAnEmptyTextForAnEmptyOne)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"", L""}, {L"\"\"", L""}, {L"\"", L""}});
}

TEST(TextUtilities, StringFromCReadsEscapes)
{
    ExpectConversions(CPreprocessor::StringFromC,
                      {{L"\"\\\\\\\"\\'\"", L"\\\"'"}, {L"\"\\n\\t\\b\\f\\v\"", L"\n\t\b\f\v"}});
}

TEST(TextUtilities, StringFromCDropsCarriageReturnEscapes)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"\"x\\ry\"", L"xy"}, {L"\"\\r\\n\"", L"\n"}});
}

TEST(TextUtilities, StringFromCDropsUnknownEscapesWithTheirBackslash)
{
    ExpectConversions(CPreprocessor::StringFromC,
                      {{L"\"a\\qb\\0\\u0041\"", L"ab0041"}, {L"\"\\\u00e9\"", L""}, {L"\"a\\\nb\"", L"ab"}});
}

TEST(TextUtilities, StringFromCDropsABackslashAtTheEnd)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"a\\", L"a"}, {L"\"\\", L""}});
}

TEST(TextUtilities, StringFromCReadsHexadecimalCodes)
{
    const LogCapture log;
    ExpectConversions(CPreprocessor::StringFromC,
                      {{L"\"\\x41\\x7F\\x7f\\xFf\"", L"A\x7f\x7f\u00ff"}, {L"\"\\x00\\x411\"", L"\0A1"s}});
    EXPECT_TRUE(log.Records().empty());
}

TEST(TextUtilities, StringFromCReportsABadHexadecimalCodeAndLeavesItOut)
{
    const std::vector<Conversion> conversions = {{L"\"a\\xZZb\"", L"ab"},   {L"\"\\x4Gb\"", L"b"},
                                                 {L"\"\\xG4b\"", L"b"},     {L"\"\\x-1b\"", L"b"},
                                                 {L"\"\\x 1b\"", L"b"},     {L"\"a\\x\u0660\u0661b\"", L"ab"},
                                                 {L"\"\\x@`/:b\"", L"/:b"}, {L"\"a\\x`1", L"a"}};
    for (const Conversion& conversion : conversions) {
        const LogCapture log;
        EXPECT_EQ(Wide(CPreprocessor::StringFromC(conversion.text)), conversion.expected);
        EXPECT_EQ(WideAll(log.Errors()), Pieces{L"Failed to parse string '" + conversion.text + L"'"});
        EXPECT_EQ(log.Records().size(), 1U);
    }
}

TEST(TextUtilities, StringFromCReportsAHexadecimalCodeThatTheEndCutsShort)
{
    for (const std::wstring& literal : {L"\"a\\x"s, L"\"a\\x4"s, L"\"a\\x\""s, L"\"a\\x4\""s}) {
        const LogCapture log;
        EXPECT_EQ(Wide(CPreprocessor::StringFromC(literal)), L"a");
        EXPECT_EQ(WideAll(log.Errors()), Pieces{L"Failed to parse string '" + literal + L"'"});
    }
}

TEST(TextUtilities, StringFromCReportsALiteralOnceForAllItsBadCodes)
{
    const LogCapture log;
    EXPECT_EQ(Wide(CPreprocessor::StringFromC(L"\"\\xZZa\\x!!b\"")), L"ab");
    EXPECT_EQ(WideAll(log.Errors()), Pieces{L"Failed to parse string '\"\\xZZa\\x!!b\"'"});
}

TEST(TextUtilities, StringFromCTakesPercentSignsInTheReportLiterally)
{
    const LogCapture log;
    EXPECT_EQ(Wide(CPreprocessor::StringFromC(L"%s%n\\x")), L"%s%n");
    EXPECT_EQ(WideAll(log.Errors()), Pieces{L"Failed to parse string '%s%n\\x'"});
}

TEST(TextUtilities, StringFromCTakesAJointForALineFeed)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"\"a\"\n\"b\"", L"a\nb"}, {L"\"a\"\n\"\"\n\"b\"", L"a\n\nb"}});
}

TEST(TextUtilities, StringFromCTakesALineFeedEscapeAndTheJointBehindItForOneLineFeed)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"\"a\\n\"\n\"b\"", L"a\nb"},
                                                   {L"\"a\\n\\n\"\n\"b\"", L"a\n\nb"},
                                                   {L"\"\\n\"\n\"\\n\"\n\"\"", L"\n\n"},
                                                   {L"\"\\nx\"\n\"b\"", L"\nx\nb"}});
}

TEST(TextUtilities, StringFromCJoinsOnlyQuotesWithALineFeedAloneBetween)
{
    ExpectConversions(CPreprocessor::StringFromC,
                      {{L"\"a\" \n\"b\"", L"a\" \n\"b"}, {L"\"a\"\n \"b\"", L"a\"\n \"b"}, {L"\"a\"\n", L"a"}});
}

TEST(TextUtilities, StringFromCCutsAtTheLastQuote)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"\"a\" trailing", L"a"},
                                                   {L"\"a\" b \"c\" d", L"a\" b \"c"},
                                                   {L"a\"b", L"a"},
                                                   {L"\"a\\\"b", L"a\"b"},
                                                   {L"\"a\"\\n\\\"", L"a"}});
}

TEST(TextUtilities, StringFromCCutsNothingWithoutAClosingQuote)
{
    ExpectConversions(CPreprocessor::StringFromC, {{L"abc", L"abc"}, {L"\"abc", L"abc"}, {L"a\\tb", L"a\tb"}});
}

TEST(TextUtilities, StringFromCCopiesAllOtherCharacters)
{
    ExpectConversions(CPreprocessor::StringFromC,
                      {{L"\"a'\n\r\t\0"s + Grin + L"\u00e9\"", L"a'\n\r\t\0"s + Grin + L"\u00e9"}});
}

TEST(TextUtilities, StringFromCHandlesAMillionBadCodes)
{
    const LogCapture log;
    EXPECT_EQ(Wide(CPreprocessor::StringFromC(Repeated(L"\\xZZ", 250000) + L"a")), L"a");
    EXPECT_EQ(log.Errors().size(), 1U);
}

// --- Escape characters ---

TEST(TextUtilities, EscapeCharPutsTheEscapeCharacterBeforeEveryOccurrence)
{
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"a,b,,c", L',', L'^')), L"a^,b^,^,c");
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L",", L',', L'^')), L"^,");
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"\0,"s, L'\0', L'^')), L"^\0,"s);
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(std::wstring(2, Grin), Grin, L'^')), L"^"s + Grin + L"^" + Grin);
}

TEST(TextUtilities, EscapeCharDoesNotDoubleTheEscapeCharacter)
{
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"a^b,c", L',', L'^')), L"a^b^,c");
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"a^,", L',', L'^')), L"a^^,");
}

TEST(TextUtilities, EscapeCharGivesTextWithoutTheCharacterAsItIs)
{
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"a^b\0"s, L',', L'^')), L"a^b\0"s);
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"", L',', L'^')), L"");
}

TEST(TextUtilities, UnescapeCharTakesTheEscapeCharacterAway)
{
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"a^,b,^,c", L',', L'^')), L"a,b,,c");
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"^,", L',', L'^')), L",");
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"a^^,", L',', L'^')), L"a^,");
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"^\0,"s, L'\0', L'^')), L"\0,"s);
}

TEST(TextUtilities, UnescapeCharKeepsEscapeCharactersBeforeOtherCharacters)
{
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"a^b^", L',', L'^')), L"a^b^");
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"^ ,^", L',', L'^')), L"^ ,^");
}

TEST(TextUtilities, UnescapeCharGivesTextWithoutTheEscapeCharacterAsItIs)
{
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"a,b\0"s, L',', L'^')), L"a,b\0"s);
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"", L',', L'^')), L"");
}

TEST(TextUtilities, UnescapeCharTakesNoOccurrenceForTheEscapeOfTheNext)
{
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"^^a^", L'^', L'^')), L"^^a^");
}

TEST(TextUtilities, TheDefaultEscapeCharacterIsTheBackQuote)
{
    EXPECT_EQ(Wide(CPreprocessor::EscapeChar(L"a,b", L',', 0)), L"a`,b");
    EXPECT_EQ(Wide(CPreprocessor::UnescapeChar(L"a`,b", L',', 0)), L"a,b");
    EXPECT_EQ(WideAll(CPreprocessor::SplitEscapeChar(L"a,b`,c", L',', true, 0)), (Pieces{L"a", L"b,c"}));
}

// --- Splitting ---

struct Splitting
{
    std::wstring text;
    Pieces pieces;
};

void ExpectSplittings(bool unescape, const std::vector<Splitting>& splittings)
{
    for (const Splitting& splitting : splittings)
        EXPECT_EQ(WideAll(CPreprocessor::SplitEscapeChar(splitting.text, L',', unescape, L'^')), splitting.pieces)
            << "from: " << Shown(splitting.text);
}

TEST(TextUtilities, SplitEscapeCharCutsAtEverySeparator)
{
    ExpectSplittings(false, {{L"a,b,c", {L"a", L"b", L"c"}}, {L" a , b ", {L" a ", L" b "}}});
}

TEST(TextUtilities, SplitEscapeCharKeepsEmptyPieces)
{
    ExpectSplittings(true, {{L"a,", {L"a", L""}}, {L",a", {L"", L"a"}}, {L",", {L"", L""}}, {L",,", {L"", L"", L""}}});
}

TEST(TextUtilities, SplitEscapeCharGivesOneEmptyPieceForAnEmptyText)
{
    ExpectSplittings(false, {{L"", {L""}}});
    ExpectSplittings(true, {{L"", {L""}}});
}

TEST(TextUtilities, SplitEscapeCharGivesATextWithoutSeparatorAsItIs)
{
    ExpectSplittings(true, {{L"a^b", {L"a^b"}}});
}

TEST(TextUtilities, SplitEscapeCharKeepsEscapedSeparatorsTogetherWithTheirEscape)
{
    ExpectSplittings(false, {{L"a,b^,c", {L"a", L"b^,c"}}, {L"^,", {L"^,"}}, {L"a^^,b", {L"a^^,b"}}});
}

TEST(TextUtilities, SplitEscapeCharTakesTheEscapeAwayOnRequest)
{
    ExpectSplittings(
        true,
        {{L"a,b^,c", {L"a", L"b,c"}}, {L"^,^,,^,", {L",,", L","}}, {L"a^b,c", {L"a^b", L"c"}}, {L"a^^,b", {L"a^,b"}}});
}

TEST(TextUtilities, SplitEscapeCharCutsAtASeparatorThatIsTheEscapeCharacterToo)
{
    EXPECT_EQ(WideAll(CPreprocessor::SplitEscapeChar(L"a,,b", L',', true, L',')), (Pieces{L"a", L"", L"b"}));
}

TEST(TextUtilities, SplitEscapeCharTakesAnyCharacters)
{
    EXPECT_EQ(WideAll(CPreprocessor::SplitEscapeChar(L"a\0b"s, L'\0', false, L'^')), (Pieces{L"a", L"b"}));
    const std::wstring text = L"\u00e9"s + Grin + L"\0"s;
    EXPECT_EQ(WideAll(CPreprocessor::SplitEscapeChar(text, Grin, false, L'^')), (Pieces{L"\u00e9", L"\0"s}));
}

TEST(TextUtilities, SplitEscapeCharHandlesAMillionPieces)
{
    const wxArrayString pieces = CPreprocessor::SplitEscapeChar(std::wstring(1000000, L','), L',', true, L'^');
    EXPECT_EQ(pieces.GetCount(), 1000001U);
    const wxArrayString whole = CPreprocessor::SplitEscapeChar(Repeated(L"^,", 500000), L',', true, L'^');
    ASSERT_EQ(whole.GetCount(), 1U);
    EXPECT_EQ(whole[0].length(), 500000U);
}

// --- Lines and characters ---

wxString IndentByTwo(const wxString& text)
{
    return CPreprocessor::IndentLines(text, L"+", 2);
}

TEST(TextUtilities, IndentLinesPutsTheIndentBeforeEveryLine)
{
    ExpectConversions(IndentByTwo, {{L"a\nb", L"++a\n++b"}, {L" a\n\tb", L"++ a\n++\tb"}, {L"a", L"++a"}});
    EXPECT_EQ(Wide(CPreprocessor::IndentLines(L"a\nb", L"\t ", 3)), L"\t \t \t a\n\t \t \t b");
}

TEST(TextUtilities, IndentLinesPutsTheIndentBeforeEmptyLinesToo)
{
    ExpectConversions(IndentByTwo, {{L"a\n\nb", L"++a\n++\n++b"}, {L"\n", L"++\n"}, {L"\n\na", L"++\n++\n++a"}});
}

TEST(TextUtilities, IndentLinesKeepsAFinalLineFeedAndAddsNone)
{
    ExpectConversions(IndentByTwo, {{L"a\n", L"++a\n"}, {L"a\nb\n", L"++a\n++b\n"}, {L"a", L"++a"}, {L"", L""}});
}

TEST(TextUtilities, IndentLinesNormalisesLineEnds)
{
    ExpectConversions(IndentByTwo, {{L"a\r\nb", L"++a\n++b"},
                                    {L"a\n\rb", L"++a\n++b"},
                                    {L"a\rb", L"++a\n++b"},
                                    {L"a\r\rb", L"++a\n++\n++b"},
                                    {L"a\r\n\r\nb", L"++a\n++\n++b"},
                                    {L"a\r\n\rb", L"++a\n++b"},
                                    {L"a\n\r\nb", L"++a\n++\n++b"},
                                    {L"a\n\r\rb", L"++a\n++\n++b"},
                                    {L"a\r\r\nb", L"++a\n++\n++b"},
                                    {L"a\r", L"++a\n"}});
}

TEST(TextUtilities, IndentLinesPutsNothingForACountOfZeroOrLess)
{
    for (const int count : {0, -1, std::numeric_limits<int>::min()})
        EXPECT_EQ(Wide(CPreprocessor::IndentLines(L"a\r\n\r\nb", L"  ", count)), L"a\n\nb") << count;
}

TEST(TextUtilities, IndentLinesTakesAnEmptyIndentAnyNumberOfTimes)
{
    EXPECT_EQ(Wide(CPreprocessor::IndentLines(L"a\nb", L"", std::numeric_limits<int>::max())), L"a\nb");
}

TEST(TextUtilities, IndentLinesKeepsNulsAndOtherLineSeparators)
{
    ExpectConversions(IndentByTwo, {{L"a\0b\nc"s, L"++a\0b\n++c"s}, {L"a\u2028\u0085\v\fb", L"++a\u2028\u0085\v\fb"}});
}

TEST(TextUtilities, ToKeywordReplacesEveryCharacterThatIsNotOfAWord)
{
    ExpectConversions(CPreprocessor::ToKeyword, {{L"my file-name.h", L"my_file_name_h"},
                                                 {L"azAZ09_", L"azAZ09_"},
                                                 {L"/:@[`{", L"______"},
                                                 {L"\u00e9\0x"s + Grin, L"__x_"},
                                                 {L"", L""}});
}

TEST(TextUtilities, ToKeywordLeavesALeadingDigit)
{
    ExpectConversions(CPreprocessor::ToKeyword, {{L"1 a", L"1_a"}});
}

TEST(TextUtilities, AnsiStringKeepsPrintableAsciiOnly)
{
    std::wstring printable;
    for (wchar_t character = 32; character <= 126; ++character)
        printable += character;
    ExpectConversions(CPreprocessor::AnsiString, {{printable, printable},
                                                  {L"\x1f \x7e\x7f\u0080", L" ~"},
                                                  {L"a\tb\r\nc\0d"s, L"abcd"},
                                                  {L"\u00e9"s + Grin + HighSurrogate + L"x", L"x"},
                                                  {L"", L""}});
}

// --- What the scanners share ---

size_t ClosingQuote(const std::wstring& text)
{
    const wchar_t* const open = text.data();
    return static_cast<size_t>(text_detail::FindClosingQuote(open, open + text.size()) - open);
}

TEST(TextDetail, TheClosingQuoteIsTheNextSameOneThatIsNotEscaped)
{
    EXPECT_EQ(ClosingQuote(L"'a\"b'c'"), 4U);
    EXPECT_EQ(ClosingQuote(L"\"it's\""), 5U);
    EXPECT_EQ(ClosingQuote(L"\"a\\\"b\""), 5U);
    EXPECT_EQ(ClosingQuote(L"\"a\\\\\"b\""), 4U);
    EXPECT_EQ(ClosingQuote(L"\"\""), 1U);
    EXPECT_EQ(ClosingQuote(L"'\0'"s), 2U);
}

TEST(TextDetail, AStringWithoutClosingQuoteEndsWithTheText)
{
    EXPECT_EQ(ClosingQuote(L"'abc\""), 5U);
    EXPECT_EQ(ClosingQuote(L"'"), 1U);
    EXPECT_EQ(ClosingQuote(L"'\\'"), 3U);
}

TEST(TextDetail, AMillionEscapedQuotesAreHandled)
{
    EXPECT_EQ(ClosingQuote(L"\"" + Repeated(L"\\\"", 500000) + L"\""), 1000001U);
    EXPECT_EQ(ClosingQuote(L"\"" + std::wstring(1000000, L'\\') + L"\""), 1000001U);
}

TEST(TextDetail, SkipsStopAtTheEnd)
{
    const wchar_t text[] = L" \t\n  ab_9-";
    EXPECT_EQ(text_detail::SkipBlanks(text, text + 10), text + 2);
    EXPECT_EQ(text_detail::SkipBlanks(text, text + 1), text + 1);
    EXPECT_EQ(text_detail::SkipWord(text + 5, text + 10), text + 9);
    EXPECT_EQ(text_detail::SkipWord(text + 5, text + 7), text + 7);
    EXPECT_EQ(text_detail::SkipWord(text, text + 10), text);
}

} // namespace
