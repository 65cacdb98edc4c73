#include "qxp/diagnostics.h"

#include "qxp/parser_options.h"
#include "vc_qxparser.h"

#include <unistd.h>

#include <cstdio>
#include <new>
#include <set>
#include <stdexcept>
#include <utility>

namespace
{

constexpr wxLogLevel ScriptErrorLevel = 103;
constexpr const wchar_t* Arrow = wxS("==> ");
constexpr auto ProgressDelay = std::chrono::milliseconds(500);

/// The messages of a script's report, which stand behind its arrows.
std::vector<wxString> ScriptMessages(const wxString& report)
{
    std::vector<wxString> messages;
    size_t at = report.find(Arrow);
    while (at != wxString::npos) {
        const size_t start = at + std::char_traits<wchar_t>::length(Arrow);
        const size_t end = report.find(wxS('\n'), at);
        messages.push_back(report.substr(start, end == wxString::npos ? end : end - start));
        at = report.find(Arrow, end);
    }
    return messages;
}

/// What scripts have failed for, each reason once.
void AddReasons(const std::vector<wxString>& reports, Diagnostic& diagnostic)
{
    std::set<wxString> said;
    for (const wxString& report : reports) {
        for (const wxString& reason : ScriptMessages(report)) {
            if (said.insert(reason).second)
                diagnostic.related.push_back({diagnostic.place, reason});
        }
    }
}

/// What a run has taken is free again, or should be, when this is reported.
void ReportOutOfMemory(Diagnostics& diagnostics)
{
    try {
        diagnostics.Error(wxS("Out of memory"));
    } catch (const std::bad_alloc&) {
        std::fputs("qxp: error: Out of memory\n", stderr);
    }
}

} // namespace

class Diagnostics::Log : public wxLog
{
public:
    explicit Log(Diagnostics& diagnostics) : m_diagnostics(diagnostics) { SetVerbose(diagnostics.m_verbose); }

protected:
    void DoLogRecord(wxLogLevel level, const wxString& message, const wxLogRecordInfo&) override
    {
        m_diagnostics.Logged(level, message);
    }

private:
    Diagnostics& m_diagnostics;
};

Diagnostics::Diagnostics(const CommonOptions& options)
    : m_printer(MakeDiagnosticPrinter(options)),
      m_showProgress(!options.quiet && options.diagnostics == DiagnosticFormats().front() && isatty(STDERR_FILENO)),
      m_verbose(options.verbose), m_log(std::make_unique<Log>(*this)),
      m_previousLog(wxLog::SetActiveTarget(m_log.get()))
{}

Diagnostics::~Diagnostics()
{
    ClearProgress();
    wxLog::SetActiveTarget(m_previousLog);
}

void Diagnostics::Logged(wxLogLevel level, const wxString& message)
{
    if (level == ScriptErrorLevel)
        m_scriptReports.push_back(message);
    else if (level <= wxLOG_Error)
        Keep({FailureHere(message), std::exchange(m_scriptReports, {})});
    else
        Say({Diagnostic::Kind::log, message, {}, {}, {}, {}});
}

/// What goes wrong again at each repetition is said once, and kept once.
void Diagnostics::Keep(KeptError error)
{
    m_keptErrors.push_back(std::move(error));
    if (!m_knownErrors.insert(m_keptErrors.back()).second)
        m_keptErrors.pop_back();
}

void Diagnostics::ReportFailure(const CParser& parser)
{
    wxString message;
    const CParserUnit* unit = nullptr;
    parser.GetLastError(&message, &unit);
    // A message quotes the input, whose lines can be hundreds of megabytes long.
    Diagnostic diagnostic = unit ? Diagnostic{} : FailureHere(wxString());
    diagnostic.message.swap(message);
    if (unit && unit->m_file) {
        diagnostic.place = PlaceOf(*unit);
        diagnostic.text = unit->m_text;
        AddOrigins(*unit, diagnostic);
    }
    AddReasons(TakeReportsOf(diagnostic.message), diagnostic);
    Say(diagnostic);
    Flush();
}

/// Takes out of what has been logged what concerns a failure: that begins with the same message.
std::vector<wxString> Diagnostics::TakeReportsOf(const wxString& failure)
{
    std::vector<wxString> reports;
    for (auto kept = m_keptErrors.begin(); kept != m_keptErrors.end();) {
        if (!kept->diagnostic.message.StartsWith(failure)) {
            ++kept;
            continue;
        }
        reports.insert(reports.end(), kept->reports.begin(), kept->reports.end());
        m_knownErrors.erase(*kept);
        kept = m_keptErrors.erase(kept);
    }
    reports.insert(reports.end(), m_scriptReports.begin(), m_scriptReports.end());
    m_scriptReports.clear();
    return reports;
}

/// An error that has no line of its own, in the line that is being worked on.
Diagnostic Diagnostics::FailureHere(const wxString& message) const
{
    Diagnostic diagnostic;
    diagnostic.message = message;
    const CParserUnit* const unit = m_where ? m_where() : nullptr;
    if (!unit || !unit->m_file)
        return diagnostic;
    diagnostic.place = PlaceOf(*unit);
    diagnostic.text = unit->m_text;
    diagnostic.isForToolsOnly = true;
    return diagnostic;
}

void Diagnostics::WarningAt(const CParserUnit& unit, const wxString& message)
{
    Diagnostic diagnostic{Diagnostic::Kind::warning, message, PlaceOf(unit), unit.m_text, {}, {}};
    AddOrigins(unit, diagnostic);
    Say(diagnostic);
}

void Diagnostics::ErrorAt(const DiagnosticPlace& place, const wxString& message)
{
    Say({Diagnostic::Kind::error, message, place, {}, {}, {}});
}

std::optional<DiagnosticPlace> Diagnostics::PlaceOf(const CParserUnit& unit) const
{
    if (!unit.m_file)
        return std::nullopt;
    const CSourceLine source = unit.GetSource();
    const wxString path = source.file ? source.file->GetPath() : wxString();
    return DiagnosticPlace{unit.GetFileName(), unit.m_line, NameFrom(m_searchDirectory, path), source.line, 0};
}

/// For each level out the place that caused the unit to be read.
void Diagnostics::AddOrigins(const CParserUnit& unit, Diagnostic& diagnostic) const
{
    wxSharedPtr<CParserFile> file = unit.m_file;
    while (file && file->GetIncludedFrom()) {
        const CParserUnit& from = *file->GetIncludedFrom();
        diagnostic.related.push_back(
            {PlaceOf(from), file->IsLoop() ? wxS("repeated from here") : wxS("included from here")});
        file = from.m_file;
    }
}

void Diagnostics::DropErrors()
{
    m_knownErrors.clear();
    m_keptErrors.clear();
}

void Diagnostics::Flush()
{
    m_knownErrors.clear();
    for (KeptError& kept : std::exchange(m_keptErrors, {})) {
        AddReasons(kept.reports, kept.diagnostic);
        Say(kept.diagnostic);
    }
    for (const wxString& report : std::exchange(m_scriptReports, {}))
        Say({Diagnostic::Kind::log, report, {}, {}, {}, {}});
}

void Diagnostics::Progress(const wxString& text)
{
    if (!m_showProgress || std::chrono::steady_clock::now() - m_started < ProgressDelay)
        return;
    std::fprintf(stderr, "\r\033[K%s", ToUtf8(text).c_str());
    m_progressShown = true;
}

void Diagnostics::ClearProgress()
{
    if (std::exchange(m_progressShown, false))
        std::fputs("\r\033[K", stderr);
}

void Diagnostics::UsageError(const std::string& message)
{
    Say({Diagnostic::Kind::error,
         FromSystemName(message),
         {},
         {},
         {},
         "qxp: error: " + message + "\nRun with --help for more information.\n"});
}

std::optional<wxString> ShownLine(const wxString& report)
{
    const size_t end = report.find(wxS('\n'));
    return end < report.find(Arrow) ? std::optional<wxString>(report.substr(0, end)) : std::nullopt;
}

void Diagnostics::SayReport(const wxString& report, const std::optional<DiagnosticPlace>& place)
{
    const std::vector<wxString> messages = ScriptMessages(report);
    Diagnostic diagnostic{Diagnostic::Kind::error, report, place, ShownLine(report), {}, ToUtf8(report)};
    if (!messages.empty())
        diagnostic.message = messages.front();
    for (size_t i = 1; i < messages.size(); ++i)
        diagnostic.related.push_back({std::nullopt, messages[i]});
    Say(diagnostic);
}

void Diagnostics::Say(const Diagnostic& diagnostic)
{
    ClearProgress();
    m_printer->Print(diagnostic);
}

void Diagnostics::Finish(int status)
{
    ClearProgress();
    m_printer->Finish(status);
}

int RunWithDiagnostics(const CommonOptions& options, const std::function<int(Diagnostics&)>& run)
{
    Diagnostics diagnostics(options);
    int status = StatusFailure;
    try {
        status = run(diagnostics);
    } catch (const std::bad_alloc&) {
        ReportOutOfMemory(diagnostics);
    } catch (const std::length_error&) {
        ReportOutOfMemory(diagnostics);
    }
    diagnostics.Finish(status);
    return status;
}
