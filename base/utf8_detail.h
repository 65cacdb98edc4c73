#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <wx/string.h>

/// UTF-8 at the speed of memory: wxWidgets' converters measure first and convert then, code point by code point.
namespace vcq::detail
{

static_assert(sizeof(wchar_t) == 4, "texts hold one code point in each wchar_t");

enum class Utf8Stop
{
    end,        ///< all bytes were converted
    incomplete, ///< the last bytes may be the beginning of a character
    invalid     ///< the bytes at the stop are not UTF-8
};

struct Utf8Progress
{
    size_t read;    ///< bytes converted
    size_t written; ///< code points written
    Utf8Stop stop;
};

/// Converts bytes up to the end or the first that cannot be. `to` has room for `size` code points. Overlong forms and
/// values beyond U+10FFFF are invalid; an encoded surrogate is taken as that surrogate, so that every text this library
/// writes reads back the same.
Utf8Progress DecodeUtf8(const char* from, size_t size, wchar_t* to);

/// What bytes are, seen as UTF-8.
struct Utf8Check
{
    size_t read; ///< bytes that are, up to the end or the first that are not
    Utf8Stop stop;
    bool hasSurrogates; ///< encoded surrogates are among those bytes
};

/// Finds what DecodeUtf8 would stop at, without converting.
Utf8Check CheckUtf8(const char* from, size_t size);

/// Appends bytes that are UTF-8 to a text.
void AppendUtf8(wxString& text, const char* from, size_t size);

/// Widens bytes to code points of the same value, which is Latin-1.
void DecodeLatin1(const char* from, size_t size, wchar_t* to);

enum class SurrogatePairs
{
    combine, ///< write the character that the pair stands for
    keep     ///< write each half, the exact inverse of DecodeUtf8
};

/// Writes the two to four bytes of a character that is not ASCII and returns the place behind them.
char* EncodeCharacter(uint32_t character, char* to);

std::string EncodeUtf8(const wchar_t* text, size_t length, SurrogatePairs pairs);

/// Appends the UTF-8 of a text that has exactly one: false, with `bytes` untouched, when there are surrogates or values
/// beyond U+10FFFF in it.
bool AppendExactUtf8(std::string& bytes, const wchar_t* text, size_t length);

inline bool IsHighSurrogate(wchar_t c)
{
    return (c & ~wchar_t(0x3ff)) == 0xd800;
}
inline bool IsLowSurrogate(wchar_t c)
{
    return (c & ~wchar_t(0x3ff)) == 0xdc00;
}

/// The character of a surrogate pair.
inline wchar_t CombineSurrogates(wchar_t high, wchar_t low)
{
    return 0x10000 + ((high & 0x3ff) << 10) + (low & 0x3ff);
}

} // namespace vcq::detail
