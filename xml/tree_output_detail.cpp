#include "xml/tree_output_detail.h"

#include "base/utf8_detail.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace xml_detail
{

namespace
{

constexpr size_t blockSize = 1 << 20;

/// Texts are encoded in slices, for each of which the room for the worst case is reserved.
constexpr size_t sliceSize = 4096;
constexpr size_t longestResult = 8;

/// What stands for a character; of length 0 for one that stands for itself.
struct Escape
{
    char text[7];
    unsigned char length;
};

/// All characters that are ever escaped are below this.
constexpr size_t escapable = 64;
using EscapeTable = std::array<Escape, escapable>;

constexpr EscapeTable MakeTable(Escapes escapes)
{
    EscapeTable table{};
    if (escapes != Escapes::none) {
        table['<'] = {"&lt;", 4};
        table['>'] = {"&gt;", 4};
        table['&'] = {"&amp;", 5};
        table['\r'] = {"&#xD;", 5};
    }
    if (escapes == Escapes::attribute) {
        table['"'] = {"&quot;", 6};
        table['\t'] = {"&#x9;", 5};
        table['\n'] = {"&#xA;", 5};
    }
    return table;
}

const EscapeTable& TableOf(Escapes escapes)
{
    static constexpr EscapeTable tables[] = {MakeTable(Escapes::none), MakeTable(Escapes::text),
                                             MakeTable(Escapes::attribute)};
    return tables[static_cast<size_t>(escapes)];
}

class Utf8Encoder : public OutputEncoder
{
public:
    /// Whether there is no UTF-8 of a character.
    static bool Refuses(uint32_t c) { return (c > 0x10ffff) | ((c & ~0x7ffu) == 0xd800); }

    bool Put(const wchar_t* text, size_t size, Escapes escapes) override
    {
        const EscapeTable& table = TableOf(escapes);
        for (const wchar_t* const end = text + size; text < end;) {
            const wchar_t* const stop = text + std::min<size_t>(sliceSize, end - text);
            char* to = m_blocks.Reserve(static_cast<size_t>(stop - text) * longestResult);
            for (; text < stop; ++text) {
                const auto c = static_cast<uint32_t>(*text);
                if (c >= 0x80) {
                    if (Refuses(c))
                        return false;
                    to = vcq::detail::EncodeCharacter(c, to);
                } else if (c < escapable && table[c].length) {
                    std::memcpy(to, table[c].text, sizeof(table[c].text));
                    to += table[c].length;
                } else {
                    *to++ = static_cast<char>(c);
                }
            }
            m_blocks.Commit(to);
        }
        return true;
    }
};

/// Finds what Utf8Encoder refuses, without encoding.
class Utf8Trial : public OutputEncoder
{
public:
    bool Put(const wchar_t* text, size_t size, Escapes /*escapes*/) override
    {
        // Without a way out of the loop many characters are looked at at once.
        bool refused = false;
        for (size_t i = 0; i < size; ++i)
            refused |= Utf8Encoder::Refuses(static_cast<uint32_t>(text[i]));
        return !refused;
    }
};

bool IsAscii(const wxString& text)
{
    return std::all_of(text.wx_str(), text.wx_str() + text.length(), [](wchar_t c) { return c < 0x80 && c >= 0; });
}

/// Converts piece by piece; only pieces of ASCII go without wxWidgets' help where that changes nothing.
class ConvertingEncoder : public OutputEncoder
{
public:
    ConvertingEncoder(const wxString& encoding, wchar_t last) : m_converter(encoding), m_last(last)
    {
        m_keepsAscii = KeepsAscii(encoding);
    }

    /// Whether the bytes of a text are those of its parts: no mark is put before the first, and no sequence switches to
    /// another set of characters.
    static bool IsStateless(const wxString& encoding)
    {
        const wxCSConv converter(encoding);
        std::string parts;
        for (const wxChar* const part : {wxS("<"), wxS("+"), wxS(">")})
            parts += BytesOf(part, converter);
        const auto size = [&] { return converter.FromWChar(nullptr, 0, L"\u65e5", 1); };
        return size() == size() && parts == BytesOf(wxS("<+>"), wxCSConv(encoding));
    }

    bool Put(const wchar_t* text, size_t size, Escapes escapes) override
    {
        m_escaped.clear();
        const EscapeTable& table = TableOf(escapes);
        for (const wchar_t* const end = text + size; text < end; ++text) {
            if (static_cast<uint32_t>(*text) > static_cast<uint32_t>(m_last))
                return false;
            if (static_cast<uint32_t>(*text) < escapable && table[*text].length)
                m_escaped.append(table[*text].text, table[*text].length);
            else
                m_escaped.append(1, *text);
        }
        return m_keepsAscii && IsAscii(m_escaped) ? PutAscii() : PutConverted();
    }

private:
    static std::string BytesOf(const wxString& text, const wxMBConv& converter)
    {
        const wxScopedCharBuffer bytes = text.mb_str(converter);
        return std::string(bytes.data(), bytes.length());
    }

    static bool KeepsAscii(const wxString& encoding)
    {
        std::string ascii;
        for (int c = 1; c < 0x80; ++c)
            ascii += static_cast<char>(c);
        return BytesOf(wxString::FromAscii(ascii.data(), ascii.size()), wxCSConv(encoding)) == ascii;
    }

    bool PutAscii()
    {
        char* const to = m_blocks.Reserve(m_escaped.length());
        m_blocks.Commit(std::copy_n(m_escaped.wx_str(), m_escaped.length(), to));
        return true;
    }

    bool PutConverted()
    {
        if (m_escaped.empty())
            return true;
        const std::string bytes = BytesOf(m_escaped, m_converter);
        if (bytes.empty())
            return false;
        m_blocks.Append(bytes);
        return true;
    }

    const wxCSConv m_converter;
    const wchar_t m_last;
    bool m_keepsAscii;
    wxString m_escaped;
};

/// UTF-16 that names no byte order.
class MarkedUtf16Encoder : public ConvertingEncoder
{
public:
    MarkedUtf16Encoder() : ConvertingEncoder(wxS("UTF-16LE"), 0x10ffff) { m_blocks.Append("\xff\xfe"); }
};

} // namespace

char* OutputBlocks::Reserve(size_t size)
{
    if (m_blocks.empty() || m_blocks.back().capacity - m_blocks.back().size < size) {
        const size_t capacity = std::max(size, blockSize);
        m_blocks.push_back({std::unique_ptr<char[]>(new char[capacity]), capacity, 0});
    }
    return m_blocks.back().bytes.get() + m_blocks.back().size;
}

void OutputBlocks::Commit(const char* end)
{
    Block& block = m_blocks.back();
    const size_t size = static_cast<size_t>(end - block.bytes.get());
    m_size += size - block.size;
    block.size = size;
}

void OutputBlocks::Append(std::string_view bytes)
{
    Commit(std::copy(bytes.begin(), bytes.end(), Reserve(bytes.size())));
}

bool OutputBlocks::WriteTo(wxOutputStream& stream)
{
    const bool written = std::all_of(m_blocks.begin(), m_blocks.end(), [&](const Block& block) {
        return block.size == 0 || (stream.WriteAll(block.bytes.get(), block.size) && stream.IsOk());
    });
    Clear();
    return written;
}

void OutputBlocks::Clear()
{
    if (m_blocks.size() > 1)
        m_blocks.resize(1);
    if (!m_blocks.empty())
        m_blocks.front().size = 0;
    m_size = 0;
}

std::unique_ptr<OutputEncoder> OutputEncoder::CreateForTrial(const wxString& encoding)
{
    if (encoding.CmpNoCase(wxS("UTF-8")) == 0)
        return std::make_unique<Utf8Trial>();
    return Create(encoding);
}

std::unique_ptr<OutputEncoder> OutputEncoder::Create(const wxString& encoding)
{
    const auto is = [&](const wxChar* name) { return encoding.CmpNoCase(name) == 0; };
    if (is(wxS("UTF-8")))
        return std::make_unique<Utf8Encoder>();
    if (is(wxS("UTF-16")))
        return std::make_unique<MarkedUtf16Encoder>();
    if (!ConvertingEncoder::IsStateless(encoding))
        return nullptr;
    return std::make_unique<ConvertingEncoder>(encoding, is(wxS("US-ASCII")) ? 0x7f : 0x10ffff);
}

} // namespace xml_detail
