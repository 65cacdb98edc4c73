#include "qxp/output.h"

#include "qxp/diagnostics.h"
#include "vc_qxparser.h"

#include <wx/stream.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace
{

class StandardOutput : public wxOutputStream
{
protected:
    size_t OnSysWrite(const void* from, size_t size) override
    {
        const size_t written = std::fwrite(from, 1, size, stdout);
        m_lasterror = written == size ? wxSTREAM_NO_ERROR : wxSTREAM_WRITE_ERROR;
        return written;
    }
};

/// Reports why a result has not arrived: what the writer has logged about itself, or the failure of what it wrote to.
bool Fail(const wxString& outputError, bool isOutputAtFault, Diagnostics& diagnostics)
{
    if (isOutputAtFault) {
        diagnostics.DropErrors();
        diagnostics.Error(outputError);
    }
    diagnostics.Flush();
    return false;
}

/// What the system has said about a failure, behind a colon; nothing when it has said nothing.
wxString ReasonOf(int error)
{
    return error == 0 ? wxString() : wxS(": ") + wxString::FromUTF8(std::strerror(error));
}

bool WriteFile(const wxString& name, const ResultWriter& write, Diagnostics& diagnostics)
{
    errno = 0;
    CFile file = CDir().CreateFileW(name, true);
    wxOutputStream* const stream = file.GetOutputStream();
    const bool isWritten = stream && write(*stream);
    if (isWritten && file.Close())
        return true;
    const wxString reason = ReasonOf(errno);
    const bool isOutputAtFault = !stream || isWritten || !stream->IsOk();
    return Fail(wxString::Format(wxS("Output file not writable '%s'%s"), name, reason), isOutputAtFault, diagnostics);
}

bool WriteStandardOutput(const ResultWriter& write, Diagnostics& diagnostics)
{
    diagnostics.ClearProgress();
    StandardOutput stream;
    const bool isWritten = write(stream);
    if (isWritten && std::fflush(stdout) == 0)
        return true;
    return Fail(wxS("Standard output not writable") + ReasonOf(errno), isWritten || !stream.IsOk(), diagnostics);
}

} // namespace

bool WriteOutput(const std::string& fileName, const ResultWriter& write, Diagnostics& diagnostics)
{
    return fileName.empty() ? WriteStandardOutput(write, diagnostics)
                            : WriteFile(FromSystemName(fileName), write, diagnostics);
}

bool WriteOutput(const std::string& fileName, const std::string& text, Diagnostics& diagnostics)
{
    return WriteOutput(
        fileName, [&](wxOutputStream& stream) { return stream.WriteAll(text.data(), text.size()); }, diagnostics);
}
