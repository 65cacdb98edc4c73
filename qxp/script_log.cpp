#include "qxp/script_log.h"

#include "base/text_encoding.h"
#include "qxp/diagnostics.h"

#include <cstdio>
#include <string>
#include <utility>

namespace
{

constexpr wxLogLevel ScriptErrorLevel = 103;

Diagnostic::Kind KindOf(wxLogLevel level)
{
    if (level <= wxLOG_Error)
        return Diagnostic::Kind::error;
    return level == wxLOG_Warning ? Diagnostic::Kind::warning : Diagnostic::Kind::log;
}

} // namespace

ScriptLog::ScriptLog(Diagnostics& diagnostics) : m_diagnostics(diagnostics), m_previous(wxLog::SetActiveTarget(this))
{
    SetVerbose(true);
}

ScriptLog::~ScriptLog()
{
    wxLog::SetActiveTarget(m_previous);
}

void ScriptLog::SetPlaceOf(std::function<std::optional<DiagnosticPlace>(const wxString& report)> placeOf)
{
    m_placeOf = std::move(placeOf);
}

std::vector<wxString> ScriptLog::TakeReports()
{
    m_holding = false;
    return std::exchange(m_reports, {});
}

void ScriptLog::WriteLine(std::FILE* stream, const wxString& text)
{
    const std::string line = ToUtf8(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stream);
}

void ScriptLog::WriteReport(const wxString& report)
{
    // What was printed before an error is seen before it.
    std::fflush(stdout);
    wxString text = report;
    report.StartsWith(wxS("CJScript "), &text);
    m_diagnostics.SayReport(text, m_placeOf ? m_placeOf(text) : std::nullopt);
}

void ScriptLog::DoLogRecord(wxLogLevel level, const wxString& message, const wxLogRecordInfo&)
{
    if (level == ScriptErrorLevel && m_holding)
        m_reports.push_back(message);
    else if (level == ScriptErrorLevel)
        WriteReport(message);
    else if (level == wxLOG_Info || level == wxLOG_Message)
        WriteLine(stdout, message);
    else {
        std::fflush(stdout);
        m_diagnostics.Say({KindOf(level), message, {}, {}, {}, ToUtf8(message) + "\n"});
    }
}
