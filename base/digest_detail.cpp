#include "base/digest_detail.h"

#include <cstdint>
#include <cstdio>

namespace vcq::detail
{

/// FNV-1a, twice with different beginnings: two long names are told apart by 128 bits.
std::string Digest(const std::string& text)
{
    uint64_t first = 0xcbf29ce484222325u;
    uint64_t second = 0x9ae16a3b2f90404fu;
    for (const char c : text) {
        first = (first ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
        second = (second ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    }
    char digits[40];
    std::snprintf(digits, sizeof(digits), "%016llx%016llx", static_cast<unsigned long long>(first),
                  static_cast<unsigned long long>(second));
    return digits;
}

} // namespace vcq::detail
