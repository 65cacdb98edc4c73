#include "qxp/uri.h"

#include "base/text_encoding.h"

#include <cstring>
#include <cwchar>

namespace
{

bool StandsForItself(char ch)
{
    const bool isLetterOrDigit = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9');
    return isLetterOrDigit || (ch != '\0' && std::strchr("-._~/", ch));
}

void AppendEscaped(char ch, std::string& uri)
{
    constexpr const char* digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(ch);
    uri.append(1, '%').append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
}

/// Whether a character means itself in an address that programs read leniently.
bool IsReadable(wchar_t ch)
{
    constexpr wchar_t firstPrintable = L' ';
    constexpr wchar_t deleteCharacter = 0x7f;
    const bool isByteOfName = ch >= 0xdc80 && ch <= 0xdcff; // See FromSystemName.
    return ch >= firstPrintable && ch != deleteCharacter && !isByteOfName && !std::wcschr(L"%?#\\", ch);
}

} // namespace

std::string UriOfFile(const std::string& name)
{
    std::string uri = name.compare(0, 1, "/") == 0 ? "file://" : "";
    for (const char ch : name) {
        if (StandsForItself(ch))
            uri += ch;
        else
            AppendEscaped(ch, uri);
    }
    return uri;
}

std::string UriReferenceOf(const std::string& name)
{
    // A colon before the first slash would end the name of a scheme.
    const bool looksLikeScheme = name.find(':') < name.find('/');
    std::string uri = looksLikeScheme ? "./" : "";
    const wxString text = FromSystemName(name);
    for (const wchar_t ch : text.ToStdWstring()) {
        const std::string bytes = ToSystemName(wxString(1, ch));
        if (IsReadable(ch))
            uri += bytes;
        else
            for (const char byte : bytes)
                AppendEscaped(byte, uri);
    }
    return uri;
}
