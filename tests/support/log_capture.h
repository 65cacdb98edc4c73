#pragma once

#include <wx/log.h>
#include <wx/string.h>

#include <vector>

/// Collects what is logged while it lives, instead of showing it; the log target before it is put back afterwards. For
/// the main thread: what other threads log arrives when the main thread's log is flushed.
class LogCapture
{
public:
    struct Record
    {
        wxLogLevel level;
        wxString text;
    };

    LogCapture() : m_previous(wxLog::SetActiveTarget(&m_target)) {}
    ~LogCapture() { wxLog::SetActiveTarget(m_previous); }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Everything logged so far, in order.
    const std::vector<Record>& Records() const { return m_target.records; }

    /// The texts logged so far at `level`, in order.
    std::vector<wxString> Texts(wxLogLevel level) const
    {
        std::vector<wxString> texts;
        for (const Record& record : m_target.records)
            if (record.level == level)
                texts.push_back(record.text);
        return texts;
    }

    /// The errors (wxLogError) logged so far, in order.
    std::vector<wxString> Errors() const { return Texts(wxLOG_Error); }

    void Clear() { m_target.records.clear(); }

private:
    class Target : public wxLog
    {
    public:
        std::vector<Record> records;

    protected:
        void DoLogRecord(wxLogLevel level, const wxString& text, const wxLogRecordInfo&) override
        {
            records.push_back({level, text});
        }
    };

    Target m_target;
    wxLog* m_previous;
};
