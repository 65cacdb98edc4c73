#include "base/file_text_detail.h"

#include "base/patience_detail.h"
#include "base/text_decoder_detail.h"
#include "base/utf8_detail.h"
#include "base/utf8_text.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace vcq::detail
{

namespace
{

/// Room is reserved for a file of this size at most: a file that pretends to be larger has to prove it.
constexpr wxFileOffset largestReserve = 256 * 1024 * 1024;

/// Room beyond what is needed that a text may keep for good, in characters.
constexpr size_t tolerableWaste = 1024 * 1024;

/// Settles what the byte order mark says, and skips it where the text begins.
void SettleByMark(FileState& file, Encoding& encoding)
{
    size_t skip = 0;
    if (!file.IsAtBeginning()) {
        encoding.kind = Settle(encoding.kind, file.Mark(), skip);
        return;
    }
    while (file.WindowSize() < longestMark && file.Fill())
        continue;
    file.Mark() = FindMark(file.Window(), file.WindowSize());
    encoding.kind = Settle(encoding.kind, file.Mark(), skip);
    file.Consume(skip);
}

/// Reads ahead to the end of a file, where it can be read twice, to see whether all of it is UTF-8. False where it
/// cannot be read twice.
bool LookAhead(FileState& file, Encoding& encoding)
{
    wxFileOffset position = file.Tell();
    if (position == wxInvalidOffset)
        return false;
    std::vector<char> bytes(64 * 1024);
    wxString scratch;
    TextDecoder decoder({Encoding::utf8, wxString()}, scratch);
    bool valid = true;
    ssize_t count = 0;
    while (valid && MayGoOn() && (count = file.ReadAt(bytes.data(), bytes.size(), position)) > 0) {
        valid = decoder.Feed(bytes.data(), static_cast<size_t>(count));
        scratch.clear();
        position += count;
    }
    if (count < 0)
        return false;
    encoding.kind = valid && decoder.Finish() ? Encoding::utf8 : Encoding::latin1;
    return true;
}

/// Settles the encoding for reading by lines, before all of the text has been seen.
void SettleForLines(FileState& file, TextRequest& request)
{
    SettleByMark(file, request.encoding);
    if (request.encoding.kind == Encoding::detect && !LookAhead(file, request.encoding)) {
        request.encoding.kind = Encoding::utf8;
        file.SetTentative(true);
    }
    if (request.byDefault)
        file.TextEncoding() = request.encoding;
}

bool IsUnit(const char* at, size_t unit, bool bigEndian, char character)
{
    for (size_t i = 0; i < unit; ++i) {
        const bool lowest = i == (bigEndian ? unit - 1 : 0);
        if (at[i] != (lowest ? character : '\0'))
            return false;
    }
    return true;
}

/// The offset of the first LF or CR at or behind `from`; `size` (rounded down to whole units) when there is none.
size_t FindLineEnd(const char* bytes, size_t from, size_t size, size_t unit, bool bigEndian)
{
    size_t at = from;
    if (unit == 1) {
        while (at < size && bytes[at] != '\n' && bytes[at] != '\r')
            ++at;
        return at;
    }
    for (; at + unit <= size; at += unit) {
        if (IsUnit(bytes + at, unit, bigEndian, '\n') || IsUnit(bytes + at, unit, bigEndian, '\r'))
            return at;
    }
    return at;
}

/// A line in the window: its bytes, and those of its line end.
struct LineSpan
{
    size_t length;
    size_t endLength;
};

LineSpan FindLine(FileState& file, size_t unit, bool bigEndian)
{
    size_t at = 0;
    for (;;) {
        at = FindLineEnd(file.Window(), at, file.WindowSize(), unit, bigEndian);
        if (at + unit <= file.WindowSize())
            break;
        if (!file.Fill())
            return {file.WindowSize(), 0};
    }
    if (!IsUnit(file.Window() + at, unit, bigEndian, '\r'))
        return {at, unit};
    while (at + 2 * unit > file.WindowSize() && file.Fill())
        continue;
    const bool lineFeed =
        at + 2 * unit <= file.WindowSize() && IsUnit(file.Window() + at + unit, unit, bigEndian, '\n');
    return {at, lineFeed ? 2 * unit : unit};
}

void DecodeTentativeLine(FileState& file, const Encoding& encoding, size_t length, wxString& line)
{
    if (DecodeLine(encoding, file.Window(), length, line))
        return;
    file.SetTentative(false);
    file.TextEncoding() = {Encoding::latin1, wxString()};
}

/// The bytes that room is to be reserved for.
size_t RestToReserve(const FileState& file)
{
    const wxFileOffset length = file.Length();
    if (length == wxInvalidOffset)
        return 0;
    return static_cast<size_t>(std::clamp<wxFileOffset>(length - file.Tell(), 0, largestReserve));
}

/// The bytes of a text as they are read, checked on the way.
class Utf8Reader
{
public:
    explicit Utf8Reader(std::string& bytes) : m_bytes(bytes) {}

    /// False when the bytes so far are no UTF-8.
    bool Feed(const char* from, size_t size)
    {
        m_bytes.append(from, size);
        if (m_stop != Utf8Stop::invalid) {
            const Utf8Check check = CheckUtf8(m_bytes.data() + m_checked, m_bytes.size() - m_checked);
            m_checked += check.read;
            m_stop = check.stop;
        }
        return m_stop != Utf8Stop::invalid;
    }

    bool IsComplete() const { return m_stop == Utf8Stop::end; }

private:
    std::string& m_bytes;
    size_t m_checked = 0;
    Utf8Stop m_stop = Utf8Stop::end;
};

std::string Latin1ToUtf8(const std::string& bytes)
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char byte : bytes) {
        const auto character = static_cast<unsigned char>(byte);
        char sequence[4];
        if (character < 0x80)
            text += byte;
        else
            text.append(sequence, EncodeCharacter(character, sequence));
    }
    return text;
}

/// Reads a text that is or may be UTF-8. Bytes that only may be and are not are Latin-1.
bool ReadUtf8(FileState& file, Encoding& encoding, std::string& bytes)
{
    // Room for what a reader of lines wants behind the text, so that it need not be copied.
    constexpr size_t slack = 64;
    bytes.reserve(RestToReserve(file) + slack);
    PreferLargePages(bytes.data(), bytes.capacity());
    Utf8Reader reader(bytes);
    bool isUtf8 = true;
    while ((isUtf8 || encoding.kind == Encoding::detect) && (file.WindowSize() > 0 || file.Fill())) {
        isUtf8 = reader.Feed(file.Window(), file.WindowSize());
        file.Consume(file.WindowSize());
    }
    if (reader.IsComplete()) {
        encoding.kind = Encoding::utf8;
        return true;
    }
    if (encoding.kind != Encoding::detect)
        return false;
    encoding.kind = Encoding::latin1;
    bytes = Latin1ToUtf8(bytes);
    return true;
}

} // namespace

TextRequest RequestFor(const FileState& file, CFile::eConvType conv)
{
    switch (conv) {
    case CFile::convLocale:
        return {{Encoding::locale, wxString()}, false};
    case CFile::convUtf16:
        return {{Encoding::utf16, wxString()}, false};
    case CFile::convUtf8:
        return {{Encoding::utf8, wxString()}, false};
    default:
        return {file.TextEncoding(), true};
    }
}

bool ReadText(FileState& file, TextRequest request, wxString& text)
{
    SettleByMark(file, request.encoding);
    if (request.byDefault && file.IsTentative())
        request.encoding.kind = Encoding::detect;
    text.reserve(RestToReserve(file) / UnitSize(request.encoding.kind));
    TextDecoder decoder(request.encoding, text);
    bool converted = true;
    while (converted && (file.WindowSize() > 0 || file.Fill())) {
        converted = decoder.Feed(file.Window(), file.WindowSize());
        file.Consume(file.WindowSize());
    }
    if (!converted || !decoder.Finish())
        file.Fail();
    if (file.HasFailed())
        return false;
    if (request.byDefault)
        file.TextEncoding() = decoder.Found();
    if (text.capacity() - text.length() > tolerableWaste)
        text.Shrink();
    return true;
}

bool ReadText(FileState& file, const TextRequest& request, CUtf8Text& text)
{
    Encoding encoding = request.encoding;
    SettleByMark(file, encoding);
    if (request.byDefault && file.IsTentative())
        encoding.kind = Encoding::detect;
    if (encoding.kind != Encoding::detect && encoding.kind != Encoding::utf8) {
        wxString wide;
        if (!ReadText(file, request, wide))
            return false;
        text = CUtf8Text(wide);
        return true;
    }
    std::string bytes;
    if (!ReadUtf8(file, encoding, bytes))
        file.Fail();
    if (file.HasFailed())
        return false;
    if (request.byDefault)
        file.TextEncoding() = encoding;
    text = *CUtf8Text::FromBytes(std::move(bytes));
    return true;
}

void ReadTextLine(FileState& file, TextRequest request, wxString& line)
{
    SettleForLines(file, request);
    const Encoding& encoding = request.encoding;
    const LineSpan span = FindLine(file, UnitSize(encoding.kind), IsBigEndian(encoding.kind));
    if (request.byDefault && file.IsTentative())
        DecodeTentativeLine(file, encoding, span.length, line);
    else if (!DecodeLine(encoding, file.Window(), span.length, line))
        file.Fail();
    file.Consume(span.length + span.endLength);
}

} // namespace vcq::detail
