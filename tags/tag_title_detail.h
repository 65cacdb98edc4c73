#pragma once

#include "tags/tag_line_detail.h"
#include "tags/tag_text_detail.h"

#include <wx/string.h>

/// What stands at the start of a tag; parts of its first line.
template <typename Char> struct TagTitle
{
    bool closes;                      ///< "/" follows the begin tag.
    tag_text_detail::Text<Char> type; ///< Empty when there is none.
    bool isNamed;                     ///< A name follows the type, or a "=" that demands one.
    tag_text_detail::Text<Char> name; ///< Without its quotes; empty when there is none.
    tag_text_detail::Text<Char> rest; ///< What follows all that.
};

/// Which lines of a tag a line is.
struct TagLine
{
    bool isFirst;
    bool isLast;
};

/// Reads the type and the name, `TYPE='NAME'` or `TYPE name='NAME'`, of a tag whose first line is `line`. A begin tag
/// at its start is passed over. "name" without a quoted, non-empty text is an option as any other.
template <typename Char>
TagTitle<Char> ReadTagTitle(tag_text_detail::Text<Char> line, const text_detail::Span& beginTag);

/// Leaves of the line of a tag what stands there of its options. False, for a closing tag, when there are none from
/// here on.
template <typename Char>
bool TakeOptions(tag_text_detail::Text<Char>& line, const TagMarks& marks, bool isDouble, TagLine place);

extern template TagTitle<char> ReadTagTitle(tag_text_detail::Text<char> line, const text_detail::Span& beginTag);
extern template TagTitle<wchar_t> ReadTagTitle(tag_text_detail::Text<wchar_t> line, const text_detail::Span& beginTag);
extern template bool TakeOptions(tag_text_detail::Text<char>& line, const TagMarks& marks, bool isDouble,
                                 TagLine place);
extern template bool TakeOptions(tag_text_detail::Text<wchar_t>& line, const TagMarks& marks, bool isDouble,
                                 TagLine place);
