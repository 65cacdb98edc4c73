#pragma once

#include "qxp/command_line.h"
#include "qxp/diagnostic_printer.h"

#include <wx/log.h>
#include <wx/string.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

class CParser;
class CParserUnit;

/// Everything a command says on standard error: errors, warnings and notes in the form that the options name, and
/// progress. While it lives it takes the place of the log, so that what the library logs about a failure is not
/// reported twice.
class Diagnostics
{
public:
    explicit Diagnostics(const CommonOptions& options);
    ~Diagnostics();
    Diagnostics(const Diagnostics&) = delete;
    Diagnostics& operator=(const Diagnostics&) = delete;

    /// The directory that texts are named from, as it was given: see NameFrom.
    void SetSearchDirectory(const std::string& directory) { m_searchDirectory = directory; }

    /// Says which line is being worked on, for errors that come without one: tools are told it. It may answer null.
    void SetWhere(std::function<const CParserUnit*()> where) { m_where = std::move(where); }

    /// Reports the parser's last error, with its place, its line and where that was included from.
    void ReportFailure(const CParser& parser);

    /// Reports the warning of a text.
    void WarningAt(const CParserUnit& unit, const wxString& message);

    /// Reports an error in a file that has no units.
    void ErrorAt(const DiagnosticPlace& place, const wxString& message);

    /// "qxp: error: MESSAGE" and the like, for what has no place in a text.
    void Error(const wxString& message) { Say({Diagnostic::Kind::error, message, {}, {}, {}, {}}); }
    void Warning(const wxString& message) { Say({Diagnostic::Kind::warning, message, {}, {}, {}, {}}); }
    void Note(const wxString& message) { Say({Diagnostic::Kind::note, message, {}, {}, {}, {}}); }

    /// An error of the command line.
    void UsageError(const std::string& message);

    /// A script's report, which people read as it is. Tools are told the place of its first error, if there is one.
    void SayReport(const wxString& report, const std::optional<DiagnosticPlace>& place);

    void Say(const Diagnostic& diagnostic);

    /// To be called at the end of a run, with its exit status.
    void Finish(int status);

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
        Diagnostic diagnostic;
        std::vector<wxString> reports;

        /// By what people would read.
        bool operator<(const KeptError& other) const
        {
            return std::tie(diagnostic.message, reports) < std::tie(other.diagnostic.message, other.reports);
        }
    };

    void Logged(wxLogLevel level, const wxString& message);
    void Keep(KeptError error);
    std::vector<wxString> TakeReportsOf(const wxString& failure);
    Diagnostic FailureHere(const wxString& message) const;
    std::optional<DiagnosticPlace> PlaceOf(const CParserUnit& unit) const;
    void AddOrigins(const CParserUnit& unit, Diagnostic& diagnostic) const;

    std::unique_ptr<DiagnosticPrinter> m_printer;
    std::string m_searchDirectory;
    std::function<const CParserUnit*()> m_where;
    bool m_showProgress;
    bool m_verbose;
    bool m_progressShown = false;
    std::chrono::steady_clock::time_point m_started = std::chrono::steady_clock::now();
    std::list<KeptError> m_keptErrors; ///< In the order in which they were logged.
    std::set<std::reference_wrapper<const KeptError>, std::less<const KeptError>> m_knownErrors; ///< The same.
    std::vector<wxString> m_scriptReports;
    std::unique_ptr<Log> m_log;
    wxLog* m_previousLog;
};

/// The line that a script's report shows above its messages, if there is one.
std::optional<wxString> ShownLine(const wxString& report);

/// Runs a command with the diagnostics of its options: to the exit status, and to an error when memory does not
/// suffice.
int RunWithDiagnostics(const CommonOptions& options, const std::function<int(Diagnostics&)>& run);

/// The run of a command: of a `Command`, which is made of the options and the diagnostics when it begins.
template <typename Command, typename Options> std::function<int()> RunOf(const std::shared_ptr<Options>& options)
{
    return [options] {
        return RunWithDiagnostics(options->common,
                                  [&](Diagnostics& diagnostics) { return Command(*options, diagnostics).Run(); });
    };
}
