#include "tests/preprocessor/text_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

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

} // namespace
