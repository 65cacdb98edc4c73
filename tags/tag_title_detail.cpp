#include "tags/tag_title_detail.h"

#include "preprocessor/outside_strings_detail.h"

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

template <typename Char> TagTitle<Char> ReadTagTitle(Text<Char> line, const Span& beginTag)
{
    const Char* const end = line.data() + line.length();
    const Char* at = line.data() + (StartsWith(line, beginTag) ? beginTag.Length() : 0);
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

namespace
{

/// The options on the first line of an opening tag; false for a closing tag, which has none.
template <typename Char> bool TakeFirstLine(Text<Char>& text, const Span& beginTag)
{
    const Char* const end = text.data() + text.length();
    const TagTitle<Char> title = ReadTagTitle(TextOf(SkipBlanks(text.data(), end), end), beginTag);
    if (title.closes)
        return false;
    text = title.rest;
    while (title.isNamed && !text.empty() && (IsQuote(text.front()) || IsBlank(text.front())))
        text.remove_prefix(1);
    return true;
}

/// Takes the end of the tag away from its last line. A double tag shares that line with whatever follows it there.
template <typename Char> void DropTagEnd(Text<Char>& text, const Span& endTag, bool isDouble)
{
    const Char* const end = text.data() + text.length();
    const long tagEnd = isDouble ? FindOutsideStrings(text.data(), end, endTag) : -1;
    if (tagEnd != -1)
        text = text.substr(0, static_cast<size_t>(tagEnd));
    while (!text.empty() && (text.back() == '/' || endTag.Holds(text.back())))
        text.remove_suffix(1);
}

} // namespace

template <typename Char> bool TakeOptions(Text<Char>& line, const TagMarks& marks, bool isDouble, TagLine place)
{
    if (place.isFirst && !TakeFirstLine(line, marks.Begin(isDouble)))
        return false;
    if (place.isLast)
        DropTagEnd(line, marks.End(isDouble), isDouble);
    return true;
}

template TagTitle<char> ReadTagTitle(Text<char> line, const Span& beginTag);
template TagTitle<wchar_t> ReadTagTitle(Text<wchar_t> line, const Span& beginTag);
template bool TakeOptions(Text<char>& line, const TagMarks& marks, bool isDouble, TagLine place);
template bool TakeOptions(Text<wchar_t>& line, const TagMarks& marks, bool isDouble, TagLine place);
