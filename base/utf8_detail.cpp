#include "base/utf8_detail.h"

#include <cstring>

namespace vcq::detail
{

namespace
{

constexpr size_t asciiBlock = 16;

bool IsAsciiBlock(const unsigned char* at)
{
    uint64_t words[2];
    std::memcpy(words, at, sizeof(words));
    return ((words[0] | words[1]) & 0x8080808080808080u) == 0;
}

void WidenBlock(const unsigned char* from, wchar_t* to)
{
    for (size_t i = 0; i < asciiBlock; ++i)
        to[i] = from[i];
}

/// The length that a lead byte announces; 0 for a byte that leads nothing.
size_t SequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xc2)
        return 0;
    if (lead < 0xe0)
        return 2;
    if (lead < 0xf0)
        return 3;
    return lead < 0xf5 ? 4 : 0;
}

/// Reads one character of two to four bytes. Returns its length; 0 with `stop` set when it is not whole or not valid.
size_t DecodeSequence(const unsigned char* at, size_t available, wchar_t& character, Utf8Stop& stop)
{
    static constexpr wchar_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const size_t length = SequenceLength(*at);
    stop = Utf8Stop::invalid;
    if (length < 2)
        return 0;
    wchar_t value = *at & (0x7f >> length);
    for (size_t i = 1; i < length; ++i) {
        if (i == available) {
            stop = Utf8Stop::incomplete;
            return 0;
        }
        if ((at[i] & 0xc0) != 0x80)
            return 0;
        value = (value << 6) | (at[i] & 0x3f);
    }
    if (value < smallest[length] || value > 0x10ffff)
        return 0;
    character = value;
    return length;
}

/// The character at `i`, and how many elements of the text it takes.
size_t TakeCharacter(const wchar_t* text, size_t i, size_t length, SurrogatePairs pairs, uint32_t& character)
{
    character = static_cast<uint32_t>(text[i]);
    if (character > 0x10ffff)
        character = 0xfffd;
    if (pairs == SurrogatePairs::keep || !IsHighSurrogate(text[i]))
        return 1;
    if (i + 1 == length || !IsLowSurrogate(text[i + 1]))
        return 1;
    character = static_cast<uint32_t>(CombineSurrogates(text[i], text[i + 1]));
    return 2;
}

} // namespace

Utf8Progress DecodeUtf8(const char* from, size_t size, wchar_t* to)
{
    const auto* const begin = reinterpret_cast<const unsigned char*>(from);
    const auto* const end = begin + size;
    const auto* at = begin;
    wchar_t* out = to;
    Utf8Stop stop = Utf8Stop::end;
    while (at < end) {
        for (; static_cast<size_t>(end - at) >= asciiBlock && IsAsciiBlock(at); at += asciiBlock, out += asciiBlock)
            WidenBlock(at, out);
        for (; at < end && *at < 0x80; ++at)
            *out++ = *at;
        if (at == end)
            break;
        const size_t length = DecodeSequence(at, static_cast<size_t>(end - at), *out, stop);
        if (length == 0)
            return {static_cast<size_t>(at - begin), static_cast<size_t>(out - to), stop};
        at += length;
        ++out;
    }
    return {size, static_cast<size_t>(out - to), Utf8Stop::end};
}

Utf8Check CheckUtf8(const char* from, size_t size)
{
    const auto* const begin = reinterpret_cast<const unsigned char*>(from);
    const auto* const end = begin + size;
    const auto* at = begin;
    Utf8Stop stop = Utf8Stop::end;
    bool hasSurrogates = false;
    while (at < end) {
        while (static_cast<size_t>(end - at) >= asciiBlock && IsAsciiBlock(at))
            at += asciiBlock;
        while (at < end && *at < 0x80)
            ++at;
        if (at == end)
            break;
        wchar_t character = 0;
        const size_t length = DecodeSequence(at, static_cast<size_t>(end - at), character, stop);
        if (length == 0)
            return {static_cast<size_t>(at - begin), stop, hasSurrogates};
        hasSurrogates = hasSurrogates || IsHighSurrogate(character) || IsLowSurrogate(character);
        at += length;
    }
    return {size, Utf8Stop::end, hasSurrogates};
}

void AppendUtf8(wxString& text, const char* from, size_t size)
{
    constexpr size_t pieceSize = 1024;
    constexpr size_t longestCharacter = 4;
    wchar_t piece[pieceSize + longestCharacter];
    while (size > 0) {
        // A piece may end inside a character, which the next one then begins with.
        const Utf8Progress progress = DecodeUtf8(from, size < pieceSize ? size : pieceSize, piece);
        text.append(piece, progress.written);
        if (progress.read == 0)
            return;
        from += progress.read;
        size -= progress.read;
    }
}

void DecodeLatin1(const char* from, size_t size, wchar_t* to)
{
    for (size_t i = 0; i < size; ++i)
        to[i] = static_cast<unsigned char>(from[i]);
}

char* EncodeCharacter(uint32_t c, char* to)
{
    const int tails = c < 0x800 ? 1 : (c < 0x10000 ? 2 : 3);
    static constexpr unsigned leads[] = {0, 0xc0, 0xe0, 0xf0};
    *to++ = static_cast<char>(leads[tails] | (c >> 6 * tails));
    for (int i = tails - 1; i >= 0; --i)
        *to++ = static_cast<char>(0x80 | ((c >> 6 * i) & 0x3f));
    return to;
}

std::string EncodeUtf8(const wchar_t* text, size_t length, SurrogatePairs pairs)
{
    // Appending byte by byte to the string costs several times as much as appending pieces.
    char piece[4096];
    constexpr size_t longestCharacter = 4;
    std::string bytes;
    bytes.reserve(length);
    char* at = piece;
    for (size_t i = 0; i < length;) {
        uint32_t character = static_cast<uint32_t>(text[i]);
        if (character < 0x80) {
            *at++ = static_cast<char>(character);
            ++i;
        } else {
            i += TakeCharacter(text, i, length, pairs, character);
            at = EncodeCharacter(character, at);
        }
        if (static_cast<size_t>(piece + sizeof(piece) - at) < longestCharacter) {
            bytes.append(piece, at);
            at = piece;
        }
    }
    bytes.append(piece, at);
    return bytes;
}

bool AppendExactUtf8(std::string& bytes, const wchar_t* text, size_t length)
{
    const size_t before = bytes.size();
    bytes.resize(before + length);
    char* to = bytes.data() + before;
    size_t i = 0;
    for (; i < length && static_cast<uint32_t>(text[i]) < 0x80; ++i)
        to[i] = static_cast<char>(text[i]);
    if (i == length)
        return true;
    bytes.resize(before + i);
    for (size_t at = i; at < length; ++at) {
        if (static_cast<uint32_t>(text[at]) > 0x10ffff || IsHighSurrogate(text[at]) || IsLowSurrogate(text[at])) {
            bytes.resize(before);
            return false;
        }
    }
    bytes += EncodeUtf8(text + i, length - i, SurrogatePairs::keep);
    return true;
}

} // namespace vcq::detail
