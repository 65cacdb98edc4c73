#include "parser/parser_block.h"
#include "tests/preprocessor/text_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

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

} // namespace
