#pragma once

#include <wx/string.h>

/// What stands at the start of a tag.
struct TagTitle
{
    bool closes = false;  ///< "/" follows the begin tag.
    wxString type;        ///< Empty when there is none.
    bool isNamed = false; ///< A name follows the type, or a "=" that demands one.
    wxString name;        ///< Without its quotes; empty when there is none.
    wxString rest;        ///< What is behind all that.
};

/// Reads the type and the name, `TYPE='NAME'` or `TYPE name='NAME'`, of a tag whose first line is `line`. A begin tag
/// at its start is passed over. "name" without a quoted, non-empty text is an option as any other.
TagTitle ReadTagTitle(const wxString& line, const wxString& beginTag);
