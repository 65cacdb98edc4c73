#include "tags/tag_title_detail.h"

#include <string_view>

using namespace text_detail;

namespace
{

constexpr std::wstring_view NameOption = L"name";

/// The quoted text at `at`, without its quotes; `at` moves behind it when there is one. The first same quote ends it.
Span TakeQuoted(const wchar_t*& at, const wchar_t* end)
{
    if (at == end || !IsQuote(*at))
        return {at, at};
    const wchar_t* const inside = at + 1;
    const wchar_t* const close = FindChar(inside, end, *at);
    if (close == end)
        return {at, at};
    at = close + 1;
    return {inside, close};
}

/// Takes the "=" behind the type, and the name behind that.
bool TakeName(const wchar_t*& at, const wchar_t* end, Span& name)
{
    const wchar_t* const equals = SkipBlanks(at, end);
    if (equals == end || *equals != L'=')
        return false;
    at = equals + 1;
    name = TakeQuoted(at, end);
    return true;
}

/// Takes a name that is written as the option "name", with blanks around "=" as options may have them.
bool TakeNameOption(const wchar_t*& at, const wchar_t* end, Span& name)
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
    if (name.Length() == 0)
        return false;
    at = behind;
    return true;
}

} // namespace

TagTitle ReadTagTitle(const Span& line, const wxString& beginTag)
{
    const Span tag(beginTag);
    const wchar_t* at = line.StartsWith(tag) ? line.begin + tag.Length() : line.begin;
    const bool closes = at != line.end && *at == L'/';
    if (closes)
        ++at;
    const wchar_t* const typeEnd = SkipWord(at, line.end);
    TagTitle title{closes, {at, typeEnd}, false, {typeEnd, typeEnd}, typeEnd};
    title.isNamed = TakeName(title.behind, line.end, title.name) || TakeNameOption(title.behind, line.end, title.name);
    return title;
}
