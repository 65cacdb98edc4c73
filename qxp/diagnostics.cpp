#include "qxp/diagnostics.h"

#include "vc_qxparser.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <utility>

namespace
{

constexpr wxLogLevel ScriptErrorLevel = 103;
constexpr auto ProgressDelay = std::chrono::milliseconds(500);
constexpr size_t LongestQuotedLine = 1000;

bool UseColor(const std::string& when)
{
    if (when != "auto")
        return when == "always";
    const char* const terminal = std::getenv("TERM");
    const char* const noColor = std::getenv("NO_COLOR");
    const bool isRefused = noColor && *noColor;
    return isatty(STDERR_FILENO) && !isRefused && terminal && std::string(terminal) != "dumb";
}

wxString PlaceOf(const wxString& file, unsigned long line)
{
    return wxString::Format(wxS("%s:%lu"), file, line);
}

/// The messages of a script report, which stand behind its arrows.
std::vector<wxString> ScriptMessages(const wxString& report)
{
    static const wxString arrow = wxS("==> ");
    std::vector<wxString> messages;
    size_t at = report.find(arrow);
    while (at != wxString::npos) {
        const size_t end = report.find(wxS('\n'), at);
        messages.push_back(report.substr(at + arrow.length(), end == wxString::npos ? end : end - at - arrow.length()));
        at = report.find(arrow, end);
    }
    return messages;
}

/// A text of the input, for a terminal: with a code in the place of each character that would do something there.
wxString Shown(const wxString& text)
{
    wxString shown;
    for (const wxUniChar c : text) {
        const wxUint32 code = c.GetValue();
        const bool acts = (code < 0x20 && c != '\t' && c != '\n') || (code >= 0x7f && code < 0xa0);
        shown += acts ? wxString::Format(wxS("\\x%02X"), code) : wxString(c);
    }
    return shown;
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
    : m_color(UseColor(options.color)), m_showProgress(!options.quiet && isatty(STDERR_FILENO)),
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
    else if (level == wxLOG_Warning && SayDirectiveWarning(message))
        return;
    else if (level <= wxLOG_Error)
        m_keptErrors.push_back({message, std::exchange(m_scriptReports, {})});
    else
        Write(ToUtf8(message) + "\n");
}

/// A warning directive is logged as "WARNING: TEXT", a line feed, and "in 'FILE' (LINE)".
bool Diagnostics::SayDirectiveWarning(const wxString& message)
{
    wxString text;
    const size_t placeStart = message.rfind(wxS("\nin '"));
    if (placeStart == wxString::npos || !message.substr(0, placeStart).StartsWith(wxS("WARNING: "), &text))
        return false;
    wxString line;
    const wxString file = message.substr(placeStart + 5).BeforeLast(wxS('('), &line).BeforeLast(wxS('\''));
    Say(file + wxS(":") + line.BeforeFirst(wxS(')')), "warning", text.Trim(false));
    return true;
}

void Diagnostics::ReportFailure(const CParser& parser)
{
    wxString message;
    const CParserUnit* unit = nullptr;
    parser.GetLastError(&message, &unit);
    const wxString place = unit && unit->m_file ? PlaceOf(unit->GetFileName(), unit->m_line) : wxString(wxS("qxp"));
    Say(place, "error", message);
    if (unit && unit->m_file)
        SayOrigins(*unit);
    // What the library has logged about the same failure begins with the same message.
    const auto ofFailure = std::stable_partition(m_keptErrors.begin(), m_keptErrors.end(), [&](const KeptError& kept) {
        return !kept.message.StartsWith(message);
    });
    std::vector<wxString> reports;
    for (auto kept = ofFailure; kept != m_keptErrors.end(); ++kept)
        reports.insert(reports.end(), kept->reports.begin(), kept->reports.end());
    m_keptErrors.erase(ofFailure, m_keptErrors.end());
    reports.insert(reports.end(), m_scriptReports.begin(), m_scriptReports.end());
    m_scriptReports.clear();
    SayReasons(place, reports);
    Flush();
}

/// What scripts have failed for, each reason once.
void Diagnostics::SayReasons(const wxString& place, const std::vector<wxString>& reports)
{
    std::vector<wxString> said;
    for (const wxString& report : reports) {
        for (const wxString& reason : ScriptMessages(report)) {
            if (std::find(said.begin(), said.end(), reason) == said.end())
                Say(place, "note", reason);
            said.push_back(reason);
        }
    }
}

/// The unit's text, and for each level out the place that caused it to be read.
void Diagnostics::SayOrigins(const CParserUnit& unit)
{
    wxString text = unit.m_text.substr(0, LongestQuotedLine);
    if (text.length() < unit.m_text.length())
        text += wxS("...");
    Write("    " + ToUtf8(Shown(text.Trim(false).Trim())) + "\n");
    wxSharedPtr<CParserFile> file = unit.m_file;
    while (file && file->GetIncludedFrom()) {
        const CParserUnit& from = *file->GetIncludedFrom();
        const bool isLoop = file->GetName().StartsWith(from.GetFileName() + wxS(" (LOOP l."));
        Say(PlaceOf(from.GetFileName(), from.m_line), "note",
            isLoop ? wxS("repeated from here") : wxS("included from here"));
        file = from.m_file;
    }
}

void Diagnostics::ErrorAt(const wxString& file, long line, const wxString& message)
{
    Say(PlaceOf(file, static_cast<unsigned long>(line)), "error", message);
}

void Diagnostics::DropErrors()
{
    m_keptErrors.clear();
}

void Diagnostics::Flush()
{
    // What goes wrong again at each repetition is said once.
    std::set<std::pair<wxString, std::vector<wxString>>> said;
    for (const KeptError& kept : std::exchange(m_keptErrors, {})) {
        if (!said.insert({kept.message, kept.reports}).second)
            continue;
        Error(kept.message);
        SayReasons(wxS("qxp"), kept.reports);
    }
    for (const wxString& report : std::exchange(m_scriptReports, {}))
        Write(ToUtf8(report) + "\n");
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

void Diagnostics::Say(const wxString& place, const char* kind, const wxString& message)
{
    const std::string label = std::string(kind) + ":";
    const char* const color = label == "error:" ? "\033[1;31m" : label == "warning:" ? "\033[1;35m" : "\033[1;36m";
    // Places and messages hold file names, which must come out as the system knows them.
    const std::string where = ToSystemName(place) + ":";
    const std::string what = ToSystemName(message) + "\n";
    if (m_color)
        Write("\033[1m" + where + "\033[0m " + color + label + "\033[0m " + what);
    else
        Write(where + " " + label + " " + what);
}

void Diagnostics::Write(const std::string& text)
{
    ClearProgress();
    std::fwrite(text.data(), 1, text.size(), stderr);
}
