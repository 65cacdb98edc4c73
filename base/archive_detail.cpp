#include "base/archive_detail.h"

#include "base/file_state_detail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <wx/log.h>
#include <wx/zipstrm.h>

namespace vcq::detail
{

namespace
{

/// An open archive; the reader needs the file as long as it lives.
struct Archive
{
    explicit Archive(UniqueFd fd) : file(std::move(fd), true, false), zip(*file.Input(), wxConvUTF8) {}

    FileState file;
    wxZipInputStream zip;
};

std::shared_ptr<Archive> OpenArchive(const std::string& path)
{
    // Not to wait for the writer of a pipe that is no archive anyway; regular files know no waiting.
    UniqueFd fd = OpenPath(path, O_RDONLY | O_NOCTTY | O_NONBLOCK);
    struct stat info;
    if (!fd.IsOpen() || ::fstat(fd.Get(), &info) != 0 || !S_ISREG(info.st_mode))
        return nullptr;
    return std::make_shared<Archive>(std::move(fd));
}

} // namespace

bool IsArchive(const std::string& path)
{
    const wxLogNull silence;
    const std::shared_ptr<Archive> archive = OpenArchive(path);
    if (!archive)
        return false;
    const std::unique_ptr<wxZipEntry> entry(archive->zip.GetNextEntry());
    return entry || archive->zip.GetLastError() == wxSTREAM_EOF;
}

std::unique_ptr<ByteSource> OpenArchiveMember(const std::string& path, const wxString& member)
{
    const wxLogNull silence;
    std::shared_ptr<Archive> archive = OpenArchive(path);
    if (!archive)
        return nullptr;
    for (;;) {
        const std::unique_ptr<wxZipEntry> entry(archive->zip.GetNextEntry());
        if (!entry)
            return nullptr;
        if (entry->IsDir() || entry->GetInternalName() != member)
            continue;
        if (!archive->zip.OpenEntry(*entry))
            return nullptr;
        wxInputStream* const stream = &archive->zip;
        return std::make_unique<StreamSource>(stream, std::move(archive));
    }
}

} // namespace vcq::detail
