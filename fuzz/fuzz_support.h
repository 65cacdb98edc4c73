#pragma once

#include "base/text_encoding.h"

#include <wx/init.h>
#include <wx/log.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// What must hold after every input.
inline void Require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// Swallows the log and counts the formatted reports of script errors.
class CountingLog : public wxLog
{
public:
    static constexpr wxLogLevel ScriptErrorLevel = 103;

    int reports = 0;
    wxString lastReport;

protected:
    void DoLogRecord(wxLogLevel level, const wxString& text, const wxLogRecordInfo&) override
    {
        if (level != ScriptErrorLevel)
            return;
        ++reports;
        lastReport = text;
    }
};

/// Starts the library at the first input, for as long as the program runs.
inline CountingLog& StartLibrary()
{
    static const auto* const initializer = new wxInitializer;
    static auto* const log = [] {
        auto* const target = new CountingLog;
        delete wxLog::SetActiveTarget(target);
        return target;
    }();
    Require(initializer->IsOk(), "wxWidgets starts");
    return *log;
}

inline wxString InputText(const std::uint8_t* data, std::size_t size)
{
    return FromSystemName(std::string(reinterpret_cast<const char*>(data), size));
}
