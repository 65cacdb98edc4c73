#include "base/text_encoding.h"
#include "base/utf8_detail.h"
#include "tests/base/base_test_support.h"

#include <rapidcheck.h>

#include <vector>

using namespace vcq::detail;

namespace
{

wxString TextOf(const std::vector<wchar_t>& characters)
{
    return wxString(characters.data(), characters.size());
}

/// Code points of all lengths in UTF-8, surrogates among them.
rc::Gen<std::vector<wchar_t>> AnyText()
{
    return rc::gen::container<std::vector<wchar_t>>(
        rc::gen::oneOf(rc::gen::inRange<wchar_t>(0, 0x80), rc::gen::inRange<wchar_t>(0x80, 0x800),
                       rc::gen::inRange<wchar_t>(0xd7f0, 0xe010), rc::gen::inRange<wchar_t>(0x800, 0x10000),
                       rc::gen::inRange<wchar_t>(0x10000, 0x110000)));
}

wxString Decode(const std::string& bytes, Utf8Stop& stop)
{
    std::vector<wchar_t> text(bytes.size() + 1);
    const Utf8Progress progress = DecodeUtf8(bytes.data(), bytes.size(), text.data());
    stop = progress.stop;
    return wxString(text.data(), progress.written);
}

} // namespace

TEST(ToUtf8Test, WritesEveryLengthOfCharacter)
{
    const wchar_t text[] = {'a', 0xe9, 0x20ac, 0x1f600};
    EXPECT_EQ("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", ToUtf8(wxString(text, 4)));
}

TEST(ToUtf8Test, WritesASurrogatePairAsItsOneCharacter)
{
    const wchar_t text[] = {0xd83d, 0xde00};
    EXPECT_EQ("\xf0\x9f\x98\x80", ToUtf8(wxString(text, 2)));
}

TEST(ToUtf8Test, WritesALoneSurrogateAsThreeBytes)
{
    const wchar_t text[] = {0xde00, 'x', 0xd83d};
    EXPECT_EQ("\xed\xb8\x80x\xed\xa0\xbd", ToUtf8(wxString(text, 3)));
}

TEST(ToUtf8Test, WritesAValueBeyondUnicodeAsTheReplacementCharacter)
{
    const wchar_t text[] = {0x110000, static_cast<wchar_t>(0x80000000)};
    EXPECT_EQ("\xef\xbf\xbd\xef\xbf\xbd", ToUtf8(wxString(text, 2)));
}

TEST(ToUtf8Test, KeepsNuls)
{
    EXPECT_EQ(std::string("a\0b", 3), ToUtf8(wxString(L"a\0b", 3)));
}

TEST(ToUtf8Test, AgreesWithWxWidgetsOnTextsWithoutSurrogates)
{
    EXPECT_TRUE(rc::check([] {
        std::vector<wchar_t> text = *AnyText();
        for (wchar_t& c : text)
            c = IsHighSurrogate(c) || IsLowSurrogate(c) ? '?' : c;
        RC_ASSERT(ToUtf8(TextOf(text)) == TextOf(text).utf8_string());
    }));
}

TEST(Utf8Test, DecodingIsTheInverseOfEncoding)
{
    EXPECT_TRUE(rc::check([] {
        const std::vector<wchar_t> text = *AnyText();
        Utf8Stop stop = Utf8Stop::invalid;
        const std::string bytes = EncodeUtf8(text.data(), text.size(), SurrogatePairs::keep);
        RC_ASSERT(Decode(bytes, stop) == TextOf(text));
        RC_ASSERT(stop == Utf8Stop::end);
    }));
}

TEST(Utf8Test, WhateverDecodesIsTheEncodingOfItsText)
{
    EXPECT_TRUE(rc::check([] {
        const auto bytes = *rc::gen::container<std::string>(rc::gen::element<char>(
            'a', '\x80', '\xbf', '\xc1', '\xc2', '\xe0', '\xed', '\xf0', '\xf4', '\xf5', '\xa0'));
        Utf8Stop stop = Utf8Stop::end;
        const wxString text = Decode(bytes, stop);
        const std::string again = EncodeUtf8(text.wx_str(), text.length(), SurrogatePairs::keep);
        RC_ASSERT(bytes.compare(0, again.size(), again) == 0);
        RC_ASSERT((stop == Utf8Stop::end) == (again.size() == bytes.size()));
    }));
}

TEST(Utf8Test, RefusesWhatIsNotUtf8)
{
    for (const char* bytes : {"\x80", "\xc0\x80", "\xc1\xbf", "\xc3(", "\xe0\x80\x80", "\xe0\x9f\xbf", "\xe2\x82(",
                              "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff", "\xfe"}) {
        Utf8Stop stop = Utf8Stop::end;
        EXPECT_EQ("", Decode(bytes, stop)) << bytes;
        EXPECT_EQ(Utf8Stop::invalid, stop) << bytes;
    }
}

TEST(Utf8Test, TellsTheBeginningOfACharacterFromAnError)
{
    for (const char* bytes : {"\xc3", "\xe2", "\xe2\x82", "\xf0", "\xf0\x9f", "\xf0\x9f\x98"}) {
        Utf8Stop stop = Utf8Stop::end;
        EXPECT_EQ("ab", Decode(std::string("ab") + bytes, stop)) << bytes;
        EXPECT_EQ(Utf8Stop::incomplete, stop) << bytes;
    }
}

TEST(SystemNameTest, IsUtf8WhateverTheLocale)
{
    EXPECT_EQ("\xc3\xa9", ToSystemName(wxString(wxUniChar(0xe9))));
    EXPECT_EQ(wxString(wxUniChar(0xe9)), FromSystemName("\xc3\xa9"));
}

TEST(SystemNameTest, EveryStringOfBytesSurvivesTheWayInAndOut)
{
    EXPECT_TRUE(rc::check([](const std::string& name) { RC_ASSERT(ToSystemName(FromSystemName(name)) == name); }));
    EXPECT_TRUE(rc::check([] {
        const auto name = *rc::gen::container<std::string>(
            rc::gen::element<char>('a', '\xed', '\xb2', '\xa0', '\x80', '\xc3', '\xf0', '\x9f'));
        RC_ASSERT(ToSystemName(FromSystemName(name)) == name);
    }));
}
