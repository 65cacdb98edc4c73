#pragma once

#include <wx/log.h>
#include <wx/string.h>

/// Logs a text as it is. The macros of the log format theirs, and formatting ends at a NUL.
inline void LogWhole(wxLogLevel level, const wxString& text)
{
    if (wxLog::IsLevelEnabled(level, wxASCII_STR(wxLOG_COMPONENT)))
        wxLog::OnLog(level, text, wxLogRecordInfo(__FILE__, __LINE__, __func__, wxLOG_COMPONENT));
}
