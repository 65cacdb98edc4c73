#pragma once

#include "preprocessor/text_span_detail.h"

#include <wx/string.h>

/// What stands at the start of a tag; parts of its first line.
struct TagTitle
{
    bool closes;            ///< "/" follows the begin tag.
    text_detail::Span type; ///< Empty when there is none.
    bool isNamed;           ///< A name follows the type, or a "=" that demands one.
    text_detail::Span name; ///< Without its quotes; empty when there is none.
    const wchar_t* behind;  ///< Where all that ends.
};

/// Reads the type and the name, `TYPE='NAME'` or `TYPE name='NAME'`, of a tag whose first line is `line`. A begin tag
/// at its start is passed over. "name" without a quoted, non-empty text is an option as any other.
TagTitle ReadTagTitle(const text_detail::Span& line, const wxString& beginTag);
