#include "preprocessor/name_list_detail.h"

#include <wx/string.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace
{

wxString AnyName()
{
    return wxString(*rc::gen::container<std::wstring>(rc::gen::element(L'a', L'b', L'\u20ac', L'\U0001F600')));
}

RC_GTEST_PROP(NameList, FindsTheFirstOfEqualNames, ())
{
    wxArrayString names;
    for (int left = *rc::gen::inRange(0, 60); left > 0; --left)
        names.Add(AnyName());
    const CNameList list(names);
    for (int lookups = 0; lookups < 20; ++lookups) {
        const wxString name = AnyName();
        RC_ASSERT(list.Find(std::wstring_view(name.wx_str(), name.length())) == names.Index(name));
    }
    for (const wxString& name : names)
        RC_ASSERT(list.Find(std::wstring_view(name.wx_str(), name.length())) == names.Index(name));
}

RC_GTEST_PROP(NameList, FindsNamesInTheirOrderAndInAnyOther, ())
{
    wxArrayString names;
    const int count = *rc::gen::inRange(0, 60);
    for (int number = 0; number < count; ++number)
        names.Add(wxString::Format("p%d", number));
    const CNameList list(names);
    for (int runs = 0; runs < 20; ++runs) {
        // Names that follow one another, the last one's follower included, which is none.
        const int from = *rc::gen::inRange(0, count + 1);
        const int to = *rc::gen::inRange(from, count + 1);
        for (int number = from; number <= to; ++number) {
            const wxString name = wxString::Format("p%d", number);
            RC_ASSERT(list.Find(std::wstring_view(name.wx_str(), name.length())) ==
                      (number < count ? number : wxNOT_FOUND));
        }
    }
}

} // namespace
