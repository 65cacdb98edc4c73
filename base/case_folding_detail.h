#pragma once

#include <wx/string.h>

namespace vcq::detail
{

/// As FoldCase, for the characters beyond ASCII.
wchar_t FoldCaseBeyondAscii(wchar_t c);

/// What is the same for the forms of a letter that differ in case only, whatever the locale of the process: its lower
/// case as Unicode gives it, one character for one.
inline wchar_t FoldCase(wchar_t c)
{
    if (c >= 0x80)
        return FoldCaseBeyondAscii(c);
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

/// Whether two texts are the same but for case.
bool IsSameNoCase(const wxString& a, const wxString& b);

} // namespace vcq::detail
