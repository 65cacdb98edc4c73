#pragma once

#include "tags/tag_text_detail.h"

#include <cstddef>
#include <optional>
#include <string_view>

class CArrayParserUnit;

/// What tags begin and end with.
struct TagMarks
{
    const text_detail::Span& Begin(bool isDouble) const { return isDouble ? doubleBegin : begin; }
    const text_detail::Span& End(bool isDouble) const { return isDouble ? doubleEnd : end; }

    text_detail::Span begin;
    text_detail::Span end;
    text_detail::Span doubleBegin;
    text_detail::Span doubleEnd;
};

/// A quote is the boundary of a string, wherever it stands, so what begins with one is never found.
inline bool CanBeFound(const text_detail::Span& tag)
{
    return tag.Length() != 0 && !text_detail::IsQuote(*tag.begin);
}

/// The place of a tag in a line that starts with it, blanks aside; npos when the line does not. The same as the first
/// occurrence outside of strings, accepted only behind blanks, but without a look at the rest of the line.
template <typename Char> size_t StartOfTag(tag_text_detail::Text<Char> line, const text_detail::Span& tag)
{
    const Char* const end = line.data() + line.length();
    const Char* const behindBlanks = text_detail::SkipBlanks(line.data(), end);
    for (const Char* at = text_detail::IsBlank(*tag.begin) ? line.data() : behindBlanks; at <= behindBlanks; ++at) {
        if (at != end && *at == *tag.begin && tag_text_detail::StartsWith(tag_text_detail::TextOf(at, end), tag))
            return static_cast<size_t>(at - line.data());
    }
    return std::wstring_view::npos;
}

/// A tag that begins and ends on one line of which no unit has been made.
struct LineTag
{
    size_t behind;      ///< Where the line goes on behind the end tag,
    size_t next;        ///< and where the first character that is no blank stands there; the line's end without one.
    wchar_t afterBegin; ///< The character behind the begin tag; 0 at the end of the line.
    wchar_t beforeEnd;  ///< The character before the end tag; 0 when the line starts with that.
    bool isDouble;
};

/// Reads the tag at `at` of a line. Nothing for a tag that does not end there, and for those that are rewritten.
/// @param inDouble whether only double tags are tags.
std::optional<LineTag> FindTagOnLine(std::string_view line, size_t at, const TagMarks& marks, bool inDouble);

/// Cuts the line in a slot behind a tag: what follows a single one becomes the next slot. Mere blanks are dropped.
void CutBehindTag(CArrayParserUnit& units, size_t slot, const LineTag& tag);
