#include "tests/preprocessor/text_test_support.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

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

} // namespace
