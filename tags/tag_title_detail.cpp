#include "tags/tag_title_detail.h"

#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"

#include <string_view>

using namespace text_detail;

namespace
{

constexpr std::wstring_view NameOption = L"name";

/// The quoted text at `at`; `at` moves behind it when there is one.
wxString TakeQuoted(const wchar_t*& at, const wchar_t* end)
{
    return CPreprocessor::ExtractString(at, end, &at, false);
}

/// Takes the "=" behind the type, and the name behind that.
bool TakeName(const wchar_t*& at, const wchar_t* end, wxString& name)
{
    const wchar_t* const equals = SkipBlanks(at, end);
    if (equals == end || *equals != L'=')
        return false;
    at = equals + 1;
    name = TakeQuoted(at, end);
    return true;
}

/// Takes a name that is written as the option "name", with blanks around "=" as options may have them.
bool TakeNameOption(const wchar_t*& at, const wchar_t* end, wxString& name)
{
    const wchar_t* const word = SkipBlanks(at, end);
    const wchar_t* const wordEnd = SkipWord(word, end);
    if (std::wstring_view(word, static_cast<size_t>(wordEnd - word)) != NameOption)
        return false;
    const wchar_t* const equals = SkipBlanks(wordEnd, end);
    if (equals == end || *equals != L'=')
        return false;
    const wchar_t* behind = SkipBlanks(equals + 1, end);
    name = TakeQuoted(behind, end);
    if (name.empty())
        return false;
    at = behind;
    return true;
}

} // namespace

TagTitle ReadTagTitle(const wxString& line, const wxString& beginTag)
{
    TagTitle title;
    const Span text(line);
    const wchar_t* at = text.begin;
    if (line.StartsWith(beginTag))
        at += beginTag.length();
    title.closes = at != text.end && *at == L'/';
    if (title.closes)
        ++at;
    const wchar_t* const typeEnd = SkipWord(at, text.end);
    title.type = Copy(at, typeEnd);
    at = typeEnd;
    title.isNamed = TakeName(at, text.end, title.name) || TakeNameOption(at, text.end, title.name);
    title.rest = Copy(at, text.end);
    return title;
}
