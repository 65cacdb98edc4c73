#pragma once

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

/// Reads the type and the name, `TYPE='NAME'` or `TYPE name='NAME'`, of a tag whose first line is `line`. A begin tag
/// at its start is passed over. "name" without a quoted, non-empty text is an option as any other.
template <typename Char> TagTitle<Char> ReadTagTitle(tag_text_detail::Text<Char> line, const wxString& beginTag);

extern template TagTitle<char> ReadTagTitle(tag_text_detail::Text<char> line, const wxString& beginTag);
extern template TagTitle<wchar_t> ReadTagTitle(tag_text_detail::Text<wchar_t> line, const wxString& beginTag);
