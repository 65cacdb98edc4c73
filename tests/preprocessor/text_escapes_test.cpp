#include "preprocessor/text_detail.h"
#include "tests/preprocessor/text_test_support.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

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
