#include "base/text_decoder_detail.h"

#include "base/utf8_detail.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>
#include <wx/log.h>
#include <wx/strconv.h>

namespace vcq::detail
{

namespace
{

/// What is converted at once: the wide piece stays in the processor's second-level cache until it is appended.
constexpr size_t pieceSize = 16 * 1024;

/// No character takes more bytes in an encoding that is converted piece by piece.
constexpr size_t longestCharacter = 4;

bool ConvertsAsAWhole(Encoding::Kind kind)
{
    return kind == Encoding::locale || kind == Encoding::named;
}

uint32_t TakeUnit(const char* bytes, size_t size, bool bigEndian)
{
    uint32_t unit = 0;
    for (size_t i = 0; i < size; ++i) {
        const size_t at = bigEndian ? i : size - 1 - i;
        unit = (unit << 8) | static_cast<unsigned char>(bytes[at]);
    }
    return unit;
}

bool AppendConverted(wxString& text, const std::string& bytes, const wxMBConv& conv)
{
    const size_t length = conv.ToWChar(nullptr, 0, bytes.data(), bytes.size());
    if (length == wxCONV_FAILED)
        return false;
    // Some of the converters end what they write with a NUL that they do not count.
    std::vector<wchar_t> wide(length + 1);
    if (conv.ToWChar(wide.data(), length, bytes.data(), bytes.size()) == wxCONV_FAILED)
        return false;
    text.append(wide.data(), length);
    return true;
}

} // namespace

TextDecoder::TextDecoder(const Encoding& encoding, wxString& text)
    : m_encoding(encoding), m_text(text), m_piece(new wchar_t[pieceSize + longestCharacter])
{
    size_t noMark = 0;
    m_encoding.kind = Settle(encoding.kind, {0, Encoding::detect}, noMark);
}

bool TextDecoder::Feed(const char* bytes, size_t size)
{
    if (ConvertsAsAWhole(m_encoding.kind)) {
        m_rest.append(bytes, size);
        return true;
    }
    while (size > 0 && !m_failed) {
        const size_t piece = std::min(size, pieceSize);
        FeedPiece(bytes, piece);
        bytes += piece;
        size -= piece;
    }
    return !m_failed;
}

void TextDecoder::FeedPiece(const char* bytes, size_t size)
{
    std::string joined;
    if (!m_rest.empty()) {
        joined = std::exchange(m_rest, std::string()).append(bytes, size);
        bytes = joined.data();
        size = joined.size();
    }
    ConvertPiece(bytes, size);
}

void TextDecoder::ConvertPiece(const char* bytes, size_t size)
{
    switch (UnitSize(m_encoding.kind)) {
    case 2:
        return ConvertUtf16(bytes, size);
    case 4:
        return ConvertUtf32(bytes, size);
    default:
        return m_encoding.kind == Encoding::latin1 ? ConvertLatin1(bytes, size) : ConvertUtf8(bytes, size);
    }
}

void TextDecoder::ConvertLatin1(const char* bytes, size_t size)
{
    DecodeLatin1(bytes, size, m_piece.get());
    m_text.append(m_piece.get(), size);
}

void TextDecoder::ConvertUtf8(const char* bytes, size_t size)
{
    const Utf8Progress progress = DecodeUtf8(bytes, size, m_piece.get());
    m_text.append(m_piece.get(), progress.written);
    bytes += progress.read;
    size -= progress.read;
    if (progress.stop == Utf8Stop::incomplete) {
        m_rest.assign(bytes, size);
    } else if (progress.stop == Utf8Stop::invalid && m_encoding.kind == Encoding::detect) {
        FallBackToLatin1();
        ConvertLatin1(bytes, size);
    } else if (progress.stop == Utf8Stop::invalid) {
        m_failed = true;
    }
}

void TextDecoder::ConvertUtf16(const char* bytes, size_t size)
{
    const bool bigEndian = IsBigEndian(m_encoding.kind);
    wchar_t* out = m_piece.get();
    size_t at = 0;
    while (at + 2 <= size) {
        const auto unit = static_cast<wchar_t>(TakeUnit(bytes + at, 2, bigEndian));
        if (!IsHighSurrogate(unit)) {
            *out++ = unit;
            at += 2;
            continue;
        }
        if (at + 4 > size)
            break;
        const auto next = static_cast<wchar_t>(TakeUnit(bytes + at + 2, 2, bigEndian));
        *out++ = IsLowSurrogate(next) ? CombineSurrogates(unit, next) : unit;
        at += IsLowSurrogate(next) ? 4 : 2;
    }
    m_text.append(m_piece.get(), static_cast<size_t>(out - m_piece.get()));
    m_rest.assign(bytes + at, size - at);
}

void TextDecoder::ConvertUtf32(const char* bytes, size_t size)
{
    const bool bigEndian = IsBigEndian(m_encoding.kind);
    size_t count = 0;
    for (; (count + 1) * 4 <= size && !m_failed; ++count) {
        const uint32_t character = TakeUnit(bytes + count * 4, 4, bigEndian);
        m_failed = character > 0x10ffff;
        m_piece[count] = static_cast<wchar_t>(character);
    }
    m_text.append(m_piece.get(), count);
    m_rest.assign(bytes + count * 4, size - count * 4);
}

void TextDecoder::FallBackToLatin1()
{
    m_encoding.kind = Encoding::latin1;
    const std::string bytes = EncodeUtf8(m_text.wx_str(), m_text.length(), SurrogatePairs::keep);
    m_text.clear();
    Feed(bytes.data(), bytes.size());
}

bool TextDecoder::ConvertWhole()
{
    const wxLogNull silence;
    if (m_rest.empty())
        return true;
    if (m_encoding.kind == Encoding::locale)
        return AppendConverted(m_text, m_rest, wxConvLibc);
    return AppendConverted(m_text, m_rest, wxCSConv(m_encoding.name));
}

bool TextDecoder::Finish()
{
    if (m_failed)
        return false;
    if (ConvertsAsAWhole(m_encoding.kind))
        return ConvertWhole();
    const std::string rest = std::exchange(m_rest, std::string());
    if (m_encoding.kind == Encoding::detect) {
        if (rest.empty()) {
            m_encoding.kind = Encoding::utf8;
            return true;
        }
        FallBackToLatin1();
        ConvertLatin1(rest.data(), rest.size());
        return true;
    }
    if (UnitSize(m_encoding.kind) == 2 && rest.size() == 2) {
        // A text may end with a surrogate that waits for its other half.
        m_text.append(1, static_cast<wchar_t>(TakeUnit(rest.data(), 2, IsBigEndian(m_encoding.kind))));
        return true;
    }
    return rest.empty();
}

bool DecodeLine(const Encoding& encoding, const char* bytes, size_t size, wxString& line)
{
    line.clear();
    TextDecoder decoder(encoding, line);
    if (decoder.Feed(bytes, size) && decoder.Finish())
        return true;
    line.clear();
    TextDecoder latin1({Encoding::latin1, wxString()}, line);
    latin1.Feed(bytes, size);
    return false;
}

} // namespace vcq::detail
