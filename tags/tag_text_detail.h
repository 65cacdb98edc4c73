#pragma once

#include "base/utf8_detail.h"
#include "preprocessor/text_span_detail.h"

#include <wx/string.h>

#include <algorithm>
#include <string_view>

/// The texts that tags are read from: of units, which are wide, and of lines of which no unit has been made, which are
/// UTF-8. In those only ASCII is looked for.
namespace tag_text_detail
{

template <typename Char> using Text = std::basic_string_view<Char>;

inline Text<wchar_t> TextOf(const wxString& text)
{
    return {text.wx_str(), text.length()};
}

template <typename Char> Text<Char> TextOf(const Char* begin, const Char* end)
{
    return {begin, static_cast<size_t>(end - begin)};
}

inline wxString ToWide(Text<wchar_t> text)
{
    return wxString(text.data(), text.length());
}

inline wxString ToWide(Text<char> text)
{
    wxString wide;
    vcq::detail::AppendUtf8(wide, text.data(), text.length());
    return wide;
}

template <typename Char> bool StartsWith(Text<Char> text, const text_detail::Span& what)
{
    return text.length() >= what.Length() && std::equal(what.begin, what.end, text.begin());
}

/// What belongs to a tag no more than the blanks before and behind it.
constexpr bool IsAroundTag(wchar_t character)
{
    return text_detail::IsBlank(character) || character == L'\n' || character == L'\r';
}

/// The place of the first character from `at` on that is none of these; the length of the text without one.
template <typename Char> size_t SkipAroundTag(Text<Char> text, size_t at)
{
    while (at < text.length() && IsAroundTag(text[at]))
        ++at;
    return at;
}

} // namespace tag_text_detail
