#include "tags/tag_title_detail.h"

using namespace tag_text_detail;
using namespace text_detail;

namespace
{

constexpr std::string_view NameOption = "name";

/// The quoted text at `at`, without its quotes; `at` moves behind it when there is one. The first same quote ends it.
template <typename Char> Text<Char> TakeQuoted(const Char*& at, const Char* end)
{
    if (at == end || !IsQuote(*at))
        return {};
    const Char* const inside = at + 1;
    const Char* const close = FindChar(inside, end, *at);
    if (close == end)
        return {};
    at = close + 1;
    return TextOf(inside, close);
}

/// Takes the "=" behind the type, and the name behind that.
template <typename Char> bool TakeName(const Char*& at, const Char* end, Text<Char>& name)
{
    const Char* const equals = SkipBlanks(at, end);
    if (equals == end || *equals != '=')
        return false;
    at = equals + 1;
    name = TakeQuoted(at, end);
    return true;
}

/// Takes a name that is written as the option "name", with blanks around "=" as options may have them.
template <typename Char> bool TakeNameOption(const Char*& at, const Char* end, Text<Char>& name)
{
    const Char* const word = SkipBlanks(at, end);
    const Char* const wordEnd = SkipWord(word, end);
    if (!std::equal(word, wordEnd, NameOption.begin(), NameOption.end()))
        return false;
    const Char* const equals = SkipBlanks(wordEnd, end);
    if (equals == end || *equals != '=')
        return false;
    const Char* behind = SkipBlanks(equals + 1, end);
    name = TakeQuoted(behind, end);
    if (name.empty())
        return false;
    at = behind;
    return true;
}

} // namespace

template <typename Char> TagTitle<Char> ReadTagTitle(Text<Char> line, const wxString& beginTag)
{
    const Char* const end = line.data() + line.length();
    const Char* at = line.data() + (StartsWith(line, Span(beginTag)) ? beginTag.length() : 0);
    const bool closes = at != end && *at == '/';
    if (closes)
        ++at;
    const Char* const typeEnd = SkipWord(at, end);
    TagTitle<Char> title{closes, TextOf(at, typeEnd), false, {}, {}};
    at = typeEnd;
    title.isNamed = TakeName(at, end, title.name) || TakeNameOption(at, end, title.name);
    title.rest = TextOf(at, end);
    return title;
}

template TagTitle<char> ReadTagTitle(Text<char> line, const wxString& beginTag);
template TagTitle<wchar_t> ReadTagTitle(Text<wchar_t> line, const wxString& beginTag);
