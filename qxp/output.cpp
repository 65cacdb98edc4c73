#include "qxp/output.h"

#include "qxp/diagnostics.h"
#include "vc_qxparser.h"

#include <wx/stream.h>

#include <algorithm>
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

/// A file that has its new content when it is committed.
class PendingFile
{
public:
    explicit PendingFile(const std::string& name) : m_name(FromSystemName(name))
    {
        errno = 0;
        m_file = CDir().CreateFileW(m_name, true);
    }

    bool IsOpened() const { return m_file.IsOpened(); }

    bool Write(const ResultWriter& write, Diagnostics& diagnostics)
    {
        errno = 0;
        wxOutputStream& stream = *m_file.GetOutputStream();
        if (!write(stream))
            return FailToWrite(!stream.IsOk(), diagnostics);
        // What is held back would show only when other files have been committed.
        stream.Sync();
        return stream.IsOk() || FailToWrite(true, diagnostics);
    }

    bool Commit(Diagnostics& diagnostics)
    {
        errno = 0;
        return m_file.Close() || FailToWrite(true, diagnostics);
    }

    bool FailToWrite(bool isOutputAtFault, Diagnostics& diagnostics) const
    {
        const wxString reason = ReasonOf(errno);
        return Fail(wxString::Format(wxS("Output file not writable '%s'%s"), m_name, reason), isOutputAtFault,
                    diagnostics);
    }

private:
    wxString m_name;
    CFile m_file;
};

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

ResultWriter TextWriter(const std::function<std::string()>& make)
{
    return [make](wxOutputStream& stream) {
        const std::string text = make();
        return stream.WriteAll(text.data(), text.size());
    };
}

bool WritePiece(wxOutputStream& stream, std::string& text)
{
    constexpr size_t pieceSize = 128 * 1024;
    if (text.size() < pieceSize)
        return true;
    const bool isWritten = stream.WriteAll(text.data(), text.size());
    text.clear();
    return isWritten;
}

bool WriteOutputs(const std::vector<Output>& outputs, Diagnostics& diagnostics)
{
    // What cannot be written at all is found before anything is.
    std::vector<PendingFile> files;
    for (const Output& output : outputs) {
        if (output.fileName.empty())
            continue;
        files.emplace_back(output.fileName);
        if (!files.back().IsOpened())
            return files.back().FailToWrite(true, diagnostics);
    }
    auto file = files.begin();
    for (const Output& output : outputs) {
        const bool isWritten = output.fileName.empty() ? WriteStandardOutput(output.write, diagnostics)
                                                       : (file++)->Write(output.write, diagnostics);
        if (!isWritten)
            return false;
    }
    return std::all_of(files.begin(), files.end(), [&](PendingFile& pending) { return pending.Commit(diagnostics); });
}

bool WriteOutput(const std::string& fileName, const ResultWriter& write, Diagnostics& diagnostics)
{
    return WriteOutputs({{fileName, write}}, diagnostics);
}

bool WriteOutput(const std::string& fileName, const std::string& text, Diagnostics& diagnostics)
{
    return WriteOutput(fileName, TextWriter([&text] { return text; }), diagnostics);
}
