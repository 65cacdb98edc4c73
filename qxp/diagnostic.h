#pragma once

#include <wx/string.h>

#include <optional>
#include <string>
#include <vector>

/// A line of a text, as people know it and as tools find it.
struct DiagnosticPlace
{
    wxString name;              ///< What the library calls the text; for a loop "FILE (LOOP l.N)".
    unsigned long line = 0;     ///< Counted from 1 in that text.
    wxString file;              ///< The file that was really read, named from the current directory.
    unsigned long fileLine = 0; ///< Counted from 1 in that file.
    unsigned long column = 0;   ///< Counted from 1, in characters; 0 when it is not known. For tools only.
};

/// What explains a diagnostic: a place that led to the one it is about, or a reason.
struct DiagnosticNote
{
    std::optional<DiagnosticPlace> place;
    wxString message;
};

/// One thing that a command has to say on standard error, whatever form it takes there.
struct Diagnostic
{
    enum class Kind
    {
        error,
        warning,
        note,
        log ///< What the library or a script reports beside its results.
    };

    Kind kind = Kind::error;
    wxString message;
    std::optional<DiagnosticPlace> place;
    std::optional<wxString> text; ///< The line in question.
    std::vector<DiagnosticNote> related;
    std::optional<std::string> wording; ///< What people read instead of all this, line ends included.
    bool isForToolsOnly = false;        ///< The place and the text: people are told the message and its reasons.
};

/// "error" and the like.
const char* NameOf(Diagnostic::Kind kind);
