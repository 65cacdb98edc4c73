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

} // namespace
