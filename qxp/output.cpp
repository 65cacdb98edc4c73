#include "qxp/output.h"

#include "qxp/diagnostics.h"
#include "vc_qxparser.h"

#include <wx/stream.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{

bool WriteFile(const wxString& name, const std::string& text)
{
    CFile file = CDir().CreateFileW(name, true);
    wxOutputStream* const stream = file.GetOutputStream();
    return stream && stream->WriteAll(text.data(), text.size()) && file.Close();
}

} // namespace

bool WriteOutput(const std::string& fileName, const std::string& text, Diagnostics& diagnostics)
{
    if (!fileName.empty()) {
        const wxString name = FromSystemName(fileName);
        if (WriteFile(name, text))
            return true;
        diagnostics.Error(wxString::Format(wxS("Output file not writable '%s'"), name));
        return false;
    }
    diagnostics.ClearProgress();
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return true;
    diagnostics.Error(
        wxString::Format(wxS("Standard output not writable: %s"), wxString::FromUTF8(std::strerror(errno))));
    return false;
}
