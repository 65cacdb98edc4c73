#pragma once

#include <wx/log.h>
#include <wx/string.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

class Diagnostics;
struct DiagnosticPlace;

/// The log of a script run: what scripts print goes to standard output, their errors and the formatted reports are
/// diagnostics. Takes the place of the log while it lives.
class ScriptLog : public wxLog
{
public:
    explicit ScriptLog(Diagnostics& diagnostics);
    ~ScriptLog() override;

    /// Says where the first error of a report stands, if that is known.
    void SetPlaceOf(std::function<std::optional<DiagnosticPlace>(const wxString& report)> placeOf);

    /// Keeps reports back from now on; TakeReports hands them out and ends that.
    void HoldReports() { m_holding = true; }
    std::vector<wxString> TakeReports();

    /// Writes a text, NULs and all, and a line feed.
    static void WriteLine(std::FILE* stream, const wxString& text);
    void WriteReport(const wxString& report);

protected:
    void DoLogRecord(wxLogLevel level, const wxString& message, const wxLogRecordInfo& info) override;

private:
    Diagnostics& m_diagnostics;
    std::function<std::optional<DiagnosticPlace>(const wxString& report)> m_placeOf;
    bool m_holding = false;
    std::vector<wxString> m_reports;
    wxLog* m_previous;
};
