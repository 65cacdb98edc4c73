#pragma once

#include <cstddef>
#include <cstring>
#include <cwchar>

/// What every scanner of a line needs: character classes and skips. Places are pointers into a text that ends at `end`;
/// nothing here stops at a NUL. Texts are wide or UTF-8: what is looked for is ASCII, which is no part of any other
/// character there.
namespace text_detail
{

/// An ASCII letter, digit or "_"; no other letters belong to words.
constexpr bool IsWordChar(wchar_t character)
{
    return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z') ||
           (character >= L'0' && character <= L'9') || character == L'_';
}

/// A space or a tab; line ends are not blank.
constexpr bool IsBlank(wchar_t character)
{
    return character == L' ' || character == L'\t';
}

/// The first place from `at` on that is not blank.
template <typename Char> const Char* SkipBlanks(const Char* at, const Char* end)
{
    while (at != end && IsBlank(*at))
        ++at;
    return at;
}

/// The first place from `at` on that does not belong to a word.
template <typename Char> const Char* SkipWord(const Char* at, const Char* end)
{
    while (at != end && IsWordChar(*at))
        ++at;
    return at;
}

/// The next `character` from `at` on, or `end`.
inline const wchar_t* FindChar(const wchar_t* at, const wchar_t* end, wchar_t character)
{
    const wchar_t* found = at == end ? nullptr : std::wmemchr(at, character, static_cast<size_t>(end - at));
    return found ? found : end;
}

inline const char* FindChar(const char* at, const char* end, char character)
{
    const void* found = at == end ? nullptr : std::memchr(at, character, static_cast<size_t>(end - at));
    return found ? static_cast<const char*>(found) : end;
}

/// Whether an odd number of backslashes stands directly before `at`, looking back no further than `start`.
template <typename Char> bool IsEscaped(const Char* at, const Char* start)
{
    const Char* run = at;
    while (run > start && run[-1] == L'\\')
        --run;
    return (at - run) % 2 != 0;
}

/// The quote that closes the string opened by the quote at `open`: the next same one that is not escaped. `end` when
/// there is none. Linear: the backslashes looked back at end at the quote examined before, so none is counted twice.
template <typename Char> const Char* FindClosingQuote(const Char* open, const Char* end)
{
    const Char* const inside = open + 1;
    const Char* quote = FindChar(inside, end, *open);
    while (quote != end && IsEscaped(quote, inside))
        quote = FindChar(quote + 1, end, *open);
    return quote;
}

} // namespace text_detail
