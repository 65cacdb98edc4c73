#pragma once

#include "preprocessor/text_detail.h"

#include <array>
#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

/// What the scan of a line looks for, in lines of UTF-8 and in wide ones.
namespace line_scan_detail
{

constexpr char OpeningChars[] = {'"', '\'', '#', '/', '*'};

constexpr auto IsOpeningChar = [] {
    std::array<bool, 128> table{};
    for (const char ch : OpeningChars)
        table[static_cast<size_t>(ch)] = true;
    return table;
}();

#ifdef __SSE2__
/// Skips what cannot begin an opening, sixteen characters at once, as far as whole sixteens go.
inline const char* SkipPlain(const char* at, const char* end)
{
    constexpr ptrdiff_t width = 16;
    for (; end - at >= width; at += width) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        __m128i found = _mm_setzero_si128();
        for (const char ch : OpeningChars)
            found = _mm_or_si128(found, _mm_cmpeq_epi8(text, _mm_set1_epi8(ch)));
        if (const int mask = _mm_movemask_epi8(found))
            return at + __builtin_ctz(static_cast<unsigned int>(mask));
    }
    return at;
}
#endif

template <typename Char> const Char* SkipPlain(const Char* at, const Char* /*end*/)
{
    return at;
}

/// The next string, comment or "#" on a line, or its end.
template <typename Char> const Char* FindOpening(const Char* at, const Char* end)
{
    for (; (at = SkipPlain(at, end)) != end; ++at) {
        const auto ch = static_cast<unsigned long>(*at);
        if (ch >= IsOpeningChar.size() || !IsOpeningChar[ch])
            continue;
        const Char following = at + 1 == end ? Char() : at[1];
        const bool isPart = (ch == '/' && following != '/' && following != '*') || (ch == '*' && following != '/');
        if (!isPart)
            return at;
    }
    return end;
}

/// Whether a double quote is followed by another one with nothing but blanks between, as where literals are joined.
template <typename Char> bool HasAdjacentQuotes(const Char* at, const Char* end)
{
    while ((at = text_detail::FindChar(at, end, Char('"'))) != end) {
        at = text_detail::SkipBlanks(at + 1, end);
        if (at != end && *at == '"')
            return true;
    }
    return false;
}

constexpr bool IsTrimmed(wchar_t character)
{
    return text_detail::IsBlank(character) || character == L'\n' || character == L'\r';
}

/// Takes what TrimLeft and TrimRight take off lines from both ends of a text.
template <typename Char> void Trim(const Char*& begin, const Char*& end)
{
    while (begin != end && IsTrimmed(*begin))
        ++begin;
    while (begin != end && IsTrimmed(end[-1]))
        --end;
}

} // namespace line_scan_detail
