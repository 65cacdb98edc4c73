#pragma once

#include <string>
#include <string_view>

namespace qxjs
{

// Between UTF-16, wide characters (a code point each), UTF-8 and Latin-1. Lone surrogates stay what they are between
// UTF-16 and wide text; UTF-8 cannot hold them and gets U+FFFD, as malformed UTF-8 becomes U+FFFD.

inline bool IsHighSurrogate(char32_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}
inline bool IsLowSurrogate(char32_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}
inline char32_t JoinSurrogates(char32_t high, char32_t low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// `out` must have room for `length` characters; returns how many there are.
std::size_t DecodeUtf16(const char16_t* chars, std::size_t length, wchar_t* out);
// `out` must have room for 2 * `length` units; returns how many there are.
std::size_t EncodeUtf16(const wchar_t* chars, std::size_t length, char16_t* out);

std::wstring ToWide(std::u16string_view text);
std::u16string ToUtf16(std::wstring_view text);
std::u16string Utf8ToUtf16(std::string_view text);
std::string ToUtf8(std::u16string_view text);
std::string ToLatin1(std::u16string_view text); // '?' for what it has not

} // namespace qxjs
