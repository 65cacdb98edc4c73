#pragma once

#include "preprocessor/text_detail.h"

#include <wx/string.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string_view>

/// A text seen as a run of characters, for operations that work through it once.
namespace text_detail
{

/// The characters of a text, NULs included. They live as long as the text is neither changed nor destroyed.
struct Span
{
    explicit Span(const wxString& text) : begin(text.wx_str()), end(begin + text.length()) {}
    constexpr Span(const wchar_t* first, const wchar_t* behind) : begin(first), end(behind) {}
    template <size_t Size> constexpr Span(const wchar_t (&literal)[Size]) : Span(literal, literal + Size - 1) {}

    size_t Length() const { return static_cast<size_t>(end - begin); }
    bool Holds(wchar_t character) const { return FindChar(begin, end, character) != end; }
    bool StartsWith(const Span& what) const
    {
        return Length() >= what.Length() && std::equal(what.begin, what.end, begin);
    }
    bool operator==(const Span& other) const { return Length() == other.Length() && StartsWith(other); }
    bool operator!=(const Span& other) const { return !(*this == other); }

    const wchar_t* begin;
    const wchar_t* end;
};

/// The text without the characters of `set` at its start, or at its end.
inline Span WithoutLeft(Span text, const Span& set)
{
    while (text.begin != text.end && set.Holds(*text.begin))
        ++text.begin;
    return text;
}

inline Span WithoutRight(Span text, const Span& set)
{
    while (text.begin != text.end && set.Holds(text.end[-1]))
        --text.end;
    return text;
}

inline void Append(wxString& out, const wchar_t* begin, const wchar_t* end)
{
    out.append(begin, static_cast<size_t>(end - begin));
}

inline wxString Copy(const wchar_t* begin, const wchar_t* end)
{
    return wxString(begin, static_cast<size_t>(end - begin));
}

/// The characters of a text, as long as it is neither changed nor destroyed.
inline std::wstring_view View(const wxString& text)
{
    return std::wstring_view(text.wx_str(), text.length());
}

/// One text made of several. For messages that quote the input, which may be as long as memory allows: formatting tries
/// one size of its buffer after the other, and each sum of two texts is one more copy.
inline wxString Joined(std::initializer_list<std::wstring_view> parts)
{
    size_t length = 0;
    for (const std::wstring_view part : parts)
        length += part.size();
    wxString text;
    text.reserve(length);
    for (const std::wstring_view part : parts)
        text.append(part.data(), part.size());
    return text;
}

inline size_t CountChar(const Span& text, wchar_t character)
{
    return static_cast<size_t>(std::count(text.begin, text.end, character));
}

constexpr bool IsQuote(wchar_t character)
{
    return character == L'"' || character == L'\'';
}

} // namespace text_detail
