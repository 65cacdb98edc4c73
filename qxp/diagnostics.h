#pragma once

#include "qxp/command_line.h"

#include <wx/log.h>
#include <wx/string.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

class CParser;
class CParserUnit;

/// Everything a command says on standard error: errors and warnings in the form that editors understand, notes,
/// progress. While it lives it takes the place of the log, so that what the library logs about a failure is not
/// reported twice.
class Diagnostics
{
public:
    explicit Diagnostics(const CommonOptions& options);
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    /// Reports the parser's last error, with its place, its line and where that was included from.
    void ReportFailure(const CParser& parser);

    /// Reports an error in a file that has no units. `line` is counted from 1.
    void ErrorAt(const wxString& file, long line, const wxString& message);

    /// "qxp: error: MESSAGE" and the like, for what has no place in a text.
    void Error(const wxString& message) { Say("qxp", "error", message); }
    void Warning(const wxString& message) { Say("qxp", "warning", message); }
    void Note(const wxString& message) { Say("qxp", "note", message); }

    /// Writes out what the library has logged and kept back. Call it when a run has succeeded.
    void Flush();

    /// Forgets the errors that the library has logged: for a failure that is reported in other words.
    void DropErrors();

    /// Shows how far long work has come, on a terminal only.
    void Progress(const wxString& text);
    /// Takes it away again. Call it before something else is written to the terminal.
    void ClearProgress();

private:
    class Log;

    /// An error that the library has logged, with the script reports that came before it.
    struct KeptError
    {
        wxString message;
        std::vector<wxString> reports;
    };

    void Logged(wxLogLevel level, const wxString& message);
    bool SayDirectiveWarning(const wxString& message);
    void SayReasons(const wxString& place, const std::vector<wxString>& reports);
    void SayOrigins(const CParserUnit& unit);
    void Say(const wxString& place, const char* kind, const wxString& message);
    void Write(const std::string& text);

    bool m_color;
    bool m_showProgress;
    bool m_verbose;
    bool m_progressShown = false;
    std::chrono::steady_clock::time_point m_started = std::chrono::steady_clock::now();
    std::vector<KeptError> m_keptErrors;
    std::vector<wxString> m_scriptReports;
    std::unique_ptr<Log> m_log;
    wxLog* m_previousLog;
};
