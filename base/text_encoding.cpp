#include "base/text_encoding.h"

#include "base/utf8_detail.h"

#include <vector>

using namespace vcq::detail;

namespace
{

/// The byte behind a surrogate that stands for a byte of a system name; -1 for any other character.
int EscapedByte(wchar_t c)
{
    return c >= 0xdc80 && c <= 0xdcff ? c - 0xdc00 : -1;
}

wchar_t EscapeByte(char byte)
{
    return 0xdc00 + static_cast<unsigned char>(byte);
}

/// An encoded surrogate in a name is three bytes that are not UTF-8: taken as the surrogate, it could not be told from
/// an escaped byte on the way back.
void AppendEscapingSurrogates(wxString& text, const wchar_t* piece, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (!IsHighSurrogate(piece[i]) && !IsLowSurrogate(piece[i])) {
            text.append(1, piece[i]);
            continue;
        }
        for (const char byte : EncodeUtf8(piece + i, 1, SurrogatePairs::keep))
            text.append(1, EscapeByte(byte));
    }
}

} // namespace

std::string ToUtf8(const wxString& text)
{
    return EncodeUtf8(text.wx_str(), text.length(), SurrogatePairs::combine);
}

std::string ToSystemName(const wxString& name)
{
    std::string bytes;
    const wchar_t* const text = name.wx_str();
    size_t begin = 0;
    for (size_t i = 0; i < name.length(); ++i) {
        const int byte = EscapedByte(text[i]);
        const bool pairsWithTheOneBefore = i > begin && IsHighSurrogate(text[i - 1]);
        if (byte < 0 || pairsWithTheOneBefore)
            continue;
        bytes += EncodeUtf8(text + begin, i - begin, SurrogatePairs::combine);
        bytes.push_back(static_cast<char>(byte));
        begin = i + 1;
    }
    return bytes + EncodeUtf8(text + begin, name.length() - begin, SurrogatePairs::combine);
}

wxString FromSystemName(const std::string& name)
{
    wxString text;
    std::vector<wchar_t> piece(name.size());
    for (size_t at = 0; at < name.size();) {
        const Utf8Progress progress = DecodeUtf8(name.data() + at, name.size() - at, piece.data());
        AppendEscapingSurrogates(text, piece.data(), progress.written);
        at += progress.read;
        if (at < name.size())
            text.append(1, EscapeByte(name[at++]));
    }
    return text;
}
