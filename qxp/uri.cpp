#include "qxp/uri.h"

#include <cstring>

namespace
{

bool StandsForItself(char ch)
{
    const bool isLetterOrDigit = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9');
    return isLetterOrDigit || (ch != '\0' && std::strchr("-._~/", ch));
}

} // namespace

std::string UriOfFile(const std::string& name)
{
    constexpr const char* digits = "0123456789ABCDEF";
    std::string uri = name.compare(0, 1, "/") == 0 ? "file://" : "";
    for (const char ch : name) {
        const auto byte = static_cast<unsigned char>(ch);
        if (StandsForItself(ch))
            uri += ch;
        else
            uri.append(1, '%').append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
    }
    return uri;
}
