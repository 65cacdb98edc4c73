#include <rapidcheck.h>

#include "engine/text_detail.h"
#include "engine_fixture.h"

namespace
{

using EngineString = EngineTest;

std::wstring Wide(JSContext* cx, JSString* str)
{
    std::wstring text;
    EXPECT_TRUE(JS_StringToWide(cx, str, text));
    return text;
}

TEST_F(EngineString, CodePointsBeyondSixteenBitsAreTwoUnitsToScript)
{
    const std::wstring text = L"a\U0001F600b";
    JSString* str = JS_NewStringFromWide(cx, text.data(), text.size());
    ASSERT_NE(str, nullptr);
    EXPECT_EQ(JS_GetStringLength(str), 4u);
    EXPECT_EQ(Wide(cx, str), text);
    const jschar* units = JS_GetStringChars(str);
    EXPECT_EQ(std::u16string(units, 4), u"a\U0001F600b");
    EXPECT_EQ(units[4], u'\0');
}

TEST_F(EngineString, LoneSurrogatesComeThroughBothWays)
{
    const std::u16string units = {u'x', 0xD800, u'y', 0xDC00};
    JSString* str = JS_NewUCStringCopyN(cx, units.data(), units.size());
    const std::wstring text = Wide(cx, str);
    EXPECT_EQ(text, (std::wstring{L'x', static_cast<wchar_t>(0xD800), L'y', static_cast<wchar_t>(0xDC00)}));
    JSString* back = JS_NewStringFromWide(cx, text.data(), text.size());
    EXPECT_EQ(std::u16string(JS_GetStringChars(back), JS_GetStringLength(back)), units);
}

TEST_F(EngineString, CodesThatAreNoCharactersBecomeTheReplacementCharacter)
{
    const std::wstring text = {L'a', static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
    JSString* str = JS_NewStringFromWide(cx, text.data(), text.size());
    EXPECT_EQ(Wide(cx, str), L"a\xFFFD\xFFFD");
}

TEST_F(EngineString, NulsAreCharacters)
{
    const std::wstring text(L"a\0b\0", 4);
    JSString* str = JS_NewStringFromWide(cx, text.data(), text.size());
    EXPECT_EQ(JS_GetStringLength(str), 4u);
    EXPECT_EQ(Wide(cx, str), text);
    wxString wx;
    ASSERT_TRUE(JS_StringToWide(cx, str, wx));
    EXPECT_EQ(wx.ToStdWstring(), text);
}

TEST_F(EngineString, TheEmptyStringIsAString)
{
    JSString* str = JS_NewStringFromWide(cx, L"", 0);
    ASSERT_NE(str, nullptr);
    EXPECT_EQ(JS_GetStringLength(str), 0u);
    wxString wx("before");
    EXPECT_TRUE(JS_StringToWide(cx, str, wx));
    EXPECT_TRUE(wx.empty());
    EXPECT_EQ(JS_GetStringChars(str)[0], u'\0');
}

TEST_F(EngineString, LongTextsOfEitherWidthComeThrough)
{
    const std::wstring narrow(100000, L'\xE9');
    EXPECT_EQ(Wide(cx, JS_NewStringFromWide(cx, narrow.data(), narrow.size())), narrow);
    const std::wstring wide(100000, L'\x20AC');
    EXPECT_EQ(Wide(cx, JS_NewStringFromWide(cx, wide.data(), wide.size())), wide);
}

TEST_F(EngineString, AStringThatScriptPutTogetherReadsAsOne)
{
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("var s = ''; for (var i = 0; i < 1000; i++) s += i % 10; s", &v));
    const std::wstring text = Wide(cx, JSVAL_TO_STRING(v));
    ASSERT_EQ(text.size(), 1000u);
    EXPECT_EQ(text.substr(0, 12), L"012345678901");
}

TEST_F(EngineString, InternedStringsAreTheSameAndOutliveCollections)
{
    JSString* first = JS_InternUCString(cx, u"some name");
    EXPECT_EQ(JS_InternUCStringN(cx, u"some name!", 9), first);
    EXPECT_EQ(JS_InternString(cx, "some name"), first);
    JS_GC(cx);
    JS_GC(cx);
    EXPECT_EQ(JS_InternString(cx, "some name"), first);
    EXPECT_EQ(Wide(cx, first), L"some name");
}

TEST_F(EngineString, CharactersStayValidWhileTheStringIsRooted)
{
    JSString* str = JS_NewUCStringCopyZ(cx, u"to be kept");
    ASSERT_TRUE(JS_AddRoot(cx, &str));
    const jschar* chars = JS_GetStringChars(str);
    for (int i = 0; i < 1000; ++i) {
        JSString* other = JS_NewUCStringCopyZ(cx, u"other");
        ASSERT_NE(JS_GetStringChars(other), nullptr);
        if (i % 100 == 0)
            JS_GC(cx);
    }
    EXPECT_EQ(JS_GetStringChars(str), chars);
    EXPECT_EQ(std::u16string(chars), u"to be kept");
    JS_RemoveRoot(cx, &str);
}

TEST_F(EngineString, Utf8IsWellFormedEvenForLoneSurrogates)
{
    JSString* str = JS_NewUCStringCopyN(cx, u"\xD800é\U0001F600", 4);
    EXPECT_EQ(JS_StringToUtf8(cx, str), "\xEF\xBF\xBD\xC3\xA9\xF0\x9F\x98\x80");
}

TEST(EngineText, MalformedUtf8BecomesReplacementCharacters)
{
    EXPECT_EQ(qxjs::Utf8ToUtf16("a\xC3\xA9\xF0\x9F\x98\x80"), u"a\u00E9\U0001F600");
    EXPECT_EQ(qxjs::Utf8ToUtf16("\x80"), u"\uFFFD");
    EXPECT_EQ(qxjs::Utf8ToUtf16("\xC3"), u"\uFFFD");
    EXPECT_EQ(qxjs::Utf8ToUtf16("\xC0\x80"), u"\uFFFD\uFFFD");
    EXPECT_EQ(qxjs::Utf8ToUtf16("\xED\xA0\x80").substr(0, 1), u"\uFFFD");
    EXPECT_EQ(qxjs::Utf8ToUtf16("\xF4\x90\x80\x80").substr(0, 1), u"\uFFFD");
}

TEST_F(EngineString, AnyWideTextComesBackUnchanged)
{
    EXPECT_TRUE(rc::check([this](const std::vector<unsigned>& codes) {
        std::wstring text;
        for (unsigned code : codes) {
            const unsigned c = code % 0x110000;
            // A high and a low surrogate side by side are a pair on the way back.
            text += static_cast<wchar_t>(c >= 0xD800 && c < 0xE000 ? 0xD800 + c % 0x400 : c);
        }
        JSString* str = JS_NewStringFromWide(cx, text.data(), text.size());
        std::wstring back;
        RC_ASSERT(JS_StringToWide(cx, str, back));
        RC_ASSERT(back == text);
        wxString wx;
        RC_ASSERT(JS_StringToWide(cx, str, wx));
        RC_ASSERT(wx.ToStdWstring() == text);
    }));
}

TEST_F(EngineString, AnyUnitsComeBackUnchanged)
{
    EXPECT_TRUE(rc::check([this](const std::vector<std::uint16_t>& numbers) {
        const std::u16string units(numbers.begin(), numbers.end());
        JSString* str = JS_NewUCStringCopyN(cx, units.data(), units.size());
        RC_ASSERT(std::u16string(JS_GetStringChars(str), JS_GetStringLength(str)) == units);
        std::wstring wide;
        RC_ASSERT(JS_StringToWide(cx, str, wide));
        RC_ASSERT(qxjs::ToUtf16(wide) == units);
    }));
}

} // namespace
