#include "base/backup_detail.h"

#include "base/atomic_file_detail.h"
#include "base/posix_detail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vcq::detail
{

namespace
{

constexpr size_t copiedAtOnce = 64 * 1024;

bool CopyBytes(int from, int to)
{
    std::vector<char> buffer(copiedAtOnce);
    for (;;) {
        const ssize_t size = ReadSome(from, buffer.data(), buffer.size());
        if (size <= 0)
            return size == 0;
        if (!WriteAll(to, buffer.data(), static_cast<size_t>(size)))
            return false;
    }
}

/// The mode comes last, since a new owner clears bits; what is not the owner's own is not lent to others.
bool CopyPermissions(const struct stat& from, int to)
{
    const bool sameOwner = ::fchown(to, from.st_uid, from.st_gid) == 0;
    return ::fchmod(to, from.st_mode & (sameOwner ? 07777 : 0777)) == 0;
}

bool MakeCopy(const std::string& from, int directory, const std::string& name)
{
    const UniqueFd source = OpenPath(from, O_RDONLY | O_NOCTTY | O_NONBLOCK);
    struct stat info;
    if (!source.IsOpen() || ::fstat(source.Get(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    const UniqueFd copy = OpenAt(directory, name, O_CREAT | O_EXCL | O_WRONLY, 0600);
    if (!copy.IsOpen())
        return false;
    if (CopyBytes(source.Get(), copy.Get()) && CopyPermissions(info, copy.Get()) && SyncFile(copy.Get()))
        return true;
    ::unlinkat(directory, name.c_str(), 0);
    return false;
}

bool MakeSecondName(const std::string& from, int directory, const std::string& name)
{
    struct stat info;
    if (::lstat(from.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    return ::linkat(AT_FDCWD, from.c_str(), directory, name.c_str(), 0) == 0;
}

} // namespace

bool BackUp(const std::string& from, const std::string& to)
{
    std::string target = to;
    const TargetKind kind = FollowLinks(target);
    if (kind != TargetKind::fresh && kind != TargetKind::regular)
        return false;
    const UniqueFd directory = OpenPath(DirectoryOf(target), O_RDONLY | O_DIRECTORY);
    const std::string draft = RandomDraftName();
    if (!directory.IsOpen() ||
        (!MakeSecondName(from, directory.Get(), draft) && !MakeCopy(from, directory.Get(), draft)))
        return false;
    const bool renamed = ::renameat(directory.Get(), draft.c_str(), directory.Get(), NameOf(target).c_str()) == 0;
    // Also after a success: between two names of one file, renaming does nothing.
    ::unlinkat(directory.Get(), draft.c_str(), 0);
    return renamed;
}

} // namespace vcq::detail
