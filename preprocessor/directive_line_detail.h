#pragma once

#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"

#include <wx/string.h>

#include <string_view>

/// A "#" construct on a line, as its handler sees it. The pointers are into the line's text; the handlers of directives
/// own the rest of the line, so the scan resumes at its end.
struct CDirectiveLine
{
    wxString& output;     ///< What the line has come to so far.
    const wchar_t* at;    ///< The "#".
    const wchar_t* word;  ///< The word behind "#" or "##".
    const wchar_t* rest;  ///< What follows the word.
    const wchar_t* end;   ///< The end of the line.
    const wchar_t** next; ///< Receives where the scan resumes.
    _BlockPosition& position;

    bool IsQuoting() const { return word - at == 2; }
    wxString Word() const { return wxString(word, rest - word); }
    wxString Rest() const { return wxString(rest, end - rest); }

    /// Keeps the directive as it is written, for a later pass.
    void Keep() { output.append(at, end - at); }
};

constexpr wchar_t DirectiveChar = L'#';
constexpr wchar_t ScriptOpen = L'{';
constexpr wchar_t ScriptClose = L'}';

/// What asks in a script for a define.
constexpr const wchar_t* DefinedWord = L"defined";

/// The characters that TrimLeft and TrimRight take off lines and values.
constexpr const wchar_t* TrimSet = L" \t\n\r";

/// The message for a name that stands for nothing.
inline wxString NotDefined(std::wstring_view name)
{
    return text_detail::Joined({L"\"", name, L"\" is not defined !"});
}
