#include "xml/tree_charset_detail.h"

#include <wx/strconv.h>
#include <wx/string.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <utility>

namespace xml_detail
{

namespace
{

constexpr int undefinedByte = -1;
constexpr int longestCharacter = 3;

/// Bytes behind which there are enough zeros for a converter to see an end, whatever it takes for one.
using Bytes = std::array<char, 8>;

/// The character that `bytes` are; `undefinedByte` when they are not exactly one. The zero behind them brings out what
/// a converter would keep for the next character, such as a letter that an accent may follow.
int Convert(const wxMBConv& converter, const Bytes& bytes)
{
    wchar_t characters[longestCharacter + 1];
    const size_t count = converter.MB2WC(characters, bytes.data(), std::size(characters));
    return count == 1 ? static_cast<int>(characters[0]) : undefinedByte;
}

/// How many bytes the characters have that begin with `lead`, which is none itself; 0 when there are none.
int LengthFrom(const wxMBConv& converter, char lead)
{
    for (int length = 2; length <= longestCharacter; ++length) {
        for (int next = 0x21; next < 0xff; ++next) {
            Bytes bytes{lead};
            std::fill_n(bytes.begin() + 1, length - 1, static_cast<char>(next));
            if (Convert(converter, bytes) != undefinedByte)
                return length;
        }
    }
    return 0;
}

struct MultibyteCharset
{
    explicit MultibyteCharset(const wxString& name) : converter(name) {}

    wxCSConv converter;
    size_t lengths[256] = {};
};

int XMLCALL ConvertCharacter(void* data, const char* text)
{
    const auto& charset = *static_cast<const MultibyteCharset*>(data);
    Bytes bytes{};
    std::copy_n(text, charset.lengths[static_cast<unsigned char>(*text)], bytes.begin());
    return Convert(charset.converter, bytes);
}

void XMLCALL Release(void* data)
{
    delete static_cast<MultibyteCharset*>(data);
}

void Describe(std::unique_ptr<MultibyteCharset> charset, XML_Encoding& description)
{
    description.map[0] = 0;
    for (int byte = 1; byte < 256; ++byte) {
        const char lead = static_cast<char>(byte);
        int& entry = description.map[byte];
        entry = Convert(charset->converter, {lead});
        if (entry != undefinedByte || byte < 0x80)
            continue;
        if (const int length = LengthFrom(charset->converter, lead)) {
            charset->lengths[byte] = static_cast<size_t>(length);
            entry = -length;
        }
    }
    description.convert = ConvertCharacter;
    description.release = Release;
    description.data = charset.release();
}

} // namespace

int XMLCALL DescribeCharset(void*, const XML_Char* name, XML_Encoding* description)
{
    try {
        auto charset = std::make_unique<MultibyteCharset>(wxString::FromUTF8(name));
        // The converter of an unknown name takes all bytes for Latin-1.
        if (!charset->converter.IsOk())
            return XML_STATUS_ERROR;
        Describe(std::move(charset), *description);
        return XML_STATUS_OK;
    } catch (const std::bad_alloc&) {
        return XML_STATUS_ERROR;
    }
}

} // namespace xml_detail
