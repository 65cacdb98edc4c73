#pragma once

#include "preprocessor/text_span_detail.h"

#include <algorithm>
#include <cstddef>
#include <vector>

/// Searching what stands outside of quoted strings, in wide texts and in UTF-8. What is searched in UTF-8 is ASCII.
namespace text_detail
{

/// All occurrences of a text in another, overlapping ones too, from the first to the last. Every character is looked at
/// once, however much the texts repeat themselves: what has matched so far falls back along its borders (the longest
/// part that both begins and ends it) and never starts again.
template <typename Char> class OccurrenceSearch
{
public:
    OccurrenceSearch(const Char* begin, const Char* end, const Span& what) : m_at(begin), m_end(end), m_what(what)
    {
        if (what.Length() > 1)
            FindBorders();
    }

    /// The start of the next occurrence, or null. An empty text occurs before every character.
    const Char* Next()
    {
        if (m_what.Length() == 0)
            return m_at == m_end ? nullptr : m_at++;
        while (m_at != m_end) {
            if (m_matched == 0)
                m_at = FindChar(m_at, m_end, static_cast<Char>(*m_what.begin));
            if (m_at == m_end)
                break;
            m_matched = Match(m_matched, static_cast<wchar_t>(*m_at++));
            if (m_matched == m_what.Length())
                return TakeMatch();
        }
        return nullptr;
    }

private:
    void FindBorders()
    {
        m_borders.assign(m_what.Length(), 0);
        for (size_t length = 1; length < m_borders.size(); ++length)
            m_borders[length] = Match(m_borders[length - 1], m_what.begin[length]);
    }

    /// How much is matched when `character` follows `matched` characters of a match.
    size_t Match(size_t matched, wchar_t character) const
    {
        while (matched != 0 && m_what.begin[matched] != character)
            matched = m_borders[matched - 1];
        return m_what.begin[matched] == character ? matched + 1 : 0;
    }

    const Char* TakeMatch()
    {
        const Char* const start = m_at - m_matched;
        m_matched = m_borders.empty() ? 0 : m_borders.back();
        return start;
    }

    const Char* m_at;
    const Char* m_end;
    Span m_what;
    std::vector<size_t> m_borders;
    size_t m_matched = 0;
};

/// A walk from quote to quote that knows whether it is inside a quoted string. An escaped quote neither opens nor
/// closes one. Looking back over backslashes stays linear: they end at the quote before.
template <typename Char> class QuoteWalk
{
public:
    explicit QuoteWalk(const Char* begin) : m_begin(begin), m_at(begin) {}

    /// The quote of the string the walk is inside of, or 0.
    Char Open() const { return m_open; }

    /// Moves behind the next quote before `end` that opens or closes a string.
    /// @return that quote, or `end`.
    const Char* Next(const Char* end)
    {
        while ((m_at = m_open ? FindChar(m_at, end, m_open)
                              : std::find_if(m_at, end, [](Char ch) { return IsQuote(ch); })) != end) {
            const Char* const quote = m_at++;
            if (IsEscaped(quote, m_begin))
                continue;
            m_open = m_open ? Char() : *quote;
            return quote;
        }
        return end;
    }

    /// Moves up to `place`.
    void MoveTo(const Char* place)
    {
        while (Next(place) != place)
            continue;
    }

private:
    const Char* m_begin;
    const Char* m_at;
    Char m_open = Char();
};

/// FindCharEx. An occurrence that begins with a quote is a boundary for the walk, which takes it on its next move; a
/// text whose last character is such an occurrence gives its length.
template <typename Char> long FindOutsideStrings(const Char* begin, const Char* end, const Span& what)
{
    OccurrenceSearch<Char> occurrences(begin, end, what);
    QuoteWalk<Char> walk(begin);
    const Char* last = nullptr;
    while (const Char* const found = occurrences.Next()) {
        walk.MoveTo(found);
        if (!IsQuote(*found) && !walk.Open())
            return static_cast<long>(found - begin);
        last = found;
    }
    const bool endsInBoundary = last && last + 1 == end && what.Length() != 0 && IsQuote(*what.begin);
    return endsInBoundary ? static_cast<long>(end - begin) : -1;
}

} // namespace text_detail
