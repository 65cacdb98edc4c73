#include "base/case_folding_detail.h"

#include <cwctype>
#include <locale.h>

namespace vcq::detail
{

wchar_t FoldCaseBeyondAscii(wchar_t c)
{
    // Kept for as long as the process runs: texts may be compared to its end. Systems without it know the case of
    // ASCII.
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return unicode ? static_cast<wchar_t>(towlower_l(static_cast<std::wint_t>(c), unicode)) : c;
}

bool IsSameNoCase(const wxString& a, const wxString& b)
{
    if (a.length() != b.length())
        return false;
    const wchar_t* const left = a.wx_str();
    const wchar_t* const right = b.wx_str();
    for (std::size_t i = 0; i < a.length(); ++i) {
        if (left[i] != right[i] && FoldCase(left[i]) != FoldCase(right[i]))
            return false;
    }
    return true;
}

} // namespace vcq::detail
