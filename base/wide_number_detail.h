#pragma once

#include <wx/string.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace vcq::detail
{

/// Appends a whole number in decimal digits, whatever the locale. What goes through a format costs ten times as much,
/// and each define and each pass of a loop needs one.
inline void AppendNumber(wxString& text, long long number)
{
    constexpr int longest = std::numeric_limits<long long>::digits10 + 2;
    char digits[longest];
    const char* const end = std::to_chars(digits, digits + longest, number).ptr;
    wchar_t wide[longest];
    std::copy(static_cast<const char*>(digits), end, wide);
    text.append(wide, static_cast<size_t>(end - digits));
}

} // namespace vcq::detail
