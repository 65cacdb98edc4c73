#pragma once

#include <wx/string.h>

#include <utility>
#include <vector>

class CJScript;

/// Names with their values, in the order in which a script made them.
using NamedTexts = std::vector<std::pair<wxString, wxString>>;

/// Runs a script in a new context of its own, with a fresh global object bound to the name "Global", and reads what it
/// has made there: the enumerable properties that are neither objects nor functions, as texts.
/// @param like the context whose limits are to hold; may be null.
/// @return false after a failure, which has been reported.
bool RunDefineScript(const wxString& script, const CJScript* like, NamedTexts& made);
