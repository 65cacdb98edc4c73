#include "base/utf8_text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

namespace
{

bool AreUtf8(const std::string& bytes)
{
    return CUtf8Text::FromBytes(bytes).has_value();
}

} // namespace

TEST(Utf8TextTest, ATextSurvivesTheWayInAndOut)
{
    const wxString text = wxString(L"a\0\xe9\x20ac\x1f600", 5);
    const CUtf8Text bytes(text);
    EXPECT_EQ(std::string("a\0\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", 11), bytes.Bytes());
    EXPECT_FALSE(bytes.HasSurrogates());
    EXPECT_EQ(text, bytes.ToWide());
}

TEST(Utf8TextTest, SurrogatesSurviveOneByOne)
{
    const wxString text = L"a\xd83d\xde00\xde00";
    const CUtf8Text bytes(text);
    EXPECT_EQ("a\xed\xa0\xbd\xed\xb8\x80\xed\xb8\x80", bytes.Bytes());
    EXPECT_TRUE(bytes.HasSurrogates());
    EXPECT_EQ(text, bytes.ToWide());
}

TEST(Utf8TextTest, ValuesBeyondUnicodeAreReplaced)
{
    EXPECT_EQ("\xef\xbf\xbd", CUtf8Text(wxString(static_cast<wchar_t>(0x110000), 1)).Bytes());
}

TEST(Utf8TextTest, OnlyUtf8IsTaken)
{
    EXPECT_TRUE(AreUtf8(""));
    EXPECT_TRUE(AreUtf8("abc\xc3\xa9"));
    EXPECT_TRUE(AreUtf8("\xed\xa0\x80"));
    for (const char* const bytes :
         {"\xff", "a\xc3", "\xc0\x80", "\xf4\x90\x80\x80", "\x80", "0123456789abcdef\xe2\x82"})
        EXPECT_FALSE(AreUtf8(bytes));
}

TEST(Utf8TextTest, SurrogatesAreFoundInBytesToo)
{
    EXPECT_TRUE(CUtf8Text::FromBytes("0123456789abcdef\xed\xa0\x80")->HasSurrogates());
    EXPECT_FALSE(CUtf8Text::FromBytes("0123456789abcdef\xed\x9f\xbf")->HasSurrogates());
}

TEST(Utf8TextTest, TakingTheBytesLeavesAnEmptyText)
{
    CUtf8Text text(wxString(L"a\xde00"));
    EXPECT_EQ("a\xed\xb8\x80", text.TakeBytes());
    EXPECT_EQ("", text.Bytes());
    EXPECT_FALSE(text.HasSurrogates());
}

RC_GTEST_PROP(Utf8TextProperties, EveryTextOfCharactersComesBack, ())
{
    const auto characters = *rc::gen::container<std::u32string>(
        rc::gen::oneOf(rc::gen::inRange<char32_t>(0, 0x80), rc::gen::inRange<char32_t>(0xd7f0, 0xe010),
                       rc::gen::inRange<char32_t>(0, 0x110000)));
    wxString text;
    for (const char32_t character : characters)
        text.append(1, static_cast<wchar_t>(character));
    const CUtf8Text bytes(text);
    RC_ASSERT(bytes.ToWide() == text);
    RC_ASSERT(CUtf8Text::FromBytes(bytes.Bytes())->HasSurrogates() == bytes.HasSurrogates());
}
