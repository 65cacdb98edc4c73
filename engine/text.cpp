#include "engine/text_detail.h"

namespace qxjs
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

void AppendUtf16(std::u16string& out, char32_t c)
{
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

// One character from the front of `text`; a malformed sequence costs its first byte.
char32_t TakeUtf8(std::string_view& text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    char32_t c = length <= 1 ? first : first & (0x7FU >> length);
    bool valid = length != 0 && length <= text.size();
    for (std::size_t i = 1; valid && i < length; ++i) {
        valid = (byte(i) & 0xC0) == 0x80;
        c = (c << 6) | (byte(i) & 0x3F);
    }
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    valid = valid && c >= smallest[length] && c <= 0x10FFFF && !IsHighSurrogate(c) && !IsLowSurrogate(c);
    text.remove_prefix(valid ? length : 1);
    return valid ? c : kReplacement;
}

} // namespace

std::size_t DecodeUtf16(const char16_t* chars, std::size_t length, wchar_t* out)
{
    wchar_t* const start = out;
    for (std::size_t i = 0; i < length; ++i) {
        char32_t c = chars[i];
        if (IsHighSurrogate(c) && i + 1 < length && IsLowSurrogate(chars[i + 1]))
            c = JoinSurrogates(c, chars[++i]);
        *out++ = static_cast<wchar_t>(c);
    }
    return static_cast<std::size_t>(out - start);
}

std::size_t EncodeUtf16(const wchar_t* chars, std::size_t length, char16_t* out)
{
    char16_t* const start = out;
    for (std::size_t i = 0; i < length; ++i) {
        auto c = static_cast<char32_t>(chars[i]);
        if (c > 0x10FFFF)
            c = kReplacement;
        if (c >= 0x10000) {
            *out++ = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            c = 0xDC00 + ((c - 0x10000) & 0x3FF);
        }
        *out++ = static_cast<char16_t>(c);
    }
    return static_cast<std::size_t>(out - start);
}

std::wstring ToWide(std::u16string_view text)
{
    std::wstring out(text.size(), L'\0');
    out.resize(DecodeUtf16(text.data(), text.size(), out.data()));
    return out;
}

std::u16string ToUtf16(std::wstring_view text)
{
    std::u16string out(text.size() * 2, u'\0');
    out.resize(EncodeUtf16(text.data(), text.size(), out.data()));
    return out;
}

std::u16string Utf8ToUtf16(std::string_view text)
{
    std::u16string out;
    out.reserve(text.size());
    while (!text.empty())
        AppendUtf16(out, TakeUtf8(text));
    return out;
}

std::string ToUtf8(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (IsHighSurrogate(c) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            c = JoinSurrogates(c, text[++i]);
        else if (IsHighSurrogate(c) || IsLowSurrogate(c))
            c = kReplacement;
        AppendUtf8(out, c);
    }
    return out;
}

std::string ToLatin1(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (char16_t c : text)
        out += c <= 0xFF ? static_cast<char>(c) : '?';
    return out;
}

} // namespace qxjs
