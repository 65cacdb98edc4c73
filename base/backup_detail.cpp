#include "base/backup_detail.h"

#include "base/atomic_file_detail.h"
#include "base/draft_detail.h"
#include "base/posix_detail.h"

#include <cerrno>
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

/// A draft with what `source` holds; it stays open, since its lock keeps it.
UniqueFd MakeCopy(int source, int directory, const std::string& name)
{
    struct stat info;
    if (::fstat(source, &info) != 0)
        return UniqueFd();
    UniqueFd copy = MakeDraft(directory, name, 0600);
    if (!copy.IsOpen() || (CopyBytes(source, copy.Get()) && CopyPermissions(info, copy.Get()) && SyncFile(copy.Get())))
        return copy;
    ::unlinkat(directory, name.c_str(), 0);
    errno = EIO;
    return UniqueFd();
}

bool IsRegular(const std::string& path)
{
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

/// A draft for the file `target`: a second name for the file, or a copy. `copy` holds the lock of the latter.
std::string MakeDraftOf(const std::string& from, int source, int directory, const std::string& target, UniqueFd& copy)
{
    const bool mayLink = IsRegular(from) && LockDraft(source);
    std::string draft;
    if (mayLink)
        draft = NameDraft(target, [&](const std::string& name) {
            return ::linkat(AT_FDCWD, from.c_str(), directory, name.c_str(), 0) == 0;
        });
    if (draft.empty())
        draft = NameDraft(target, [&](const std::string& name) {
            copy = MakeCopy(source, directory, name);
            return copy.IsOpen();
        });
    return draft;
}

} // namespace

bool BackUp(const std::string& from, const std::string& to)
{
    std::string target = to;
    const TargetKind kind = FollowLinks(target);
    if (kind != TargetKind::fresh && kind != TargetKind::regular)
        return false;
    const UniqueFd directory = OpenPath(DirectoryOf(target), O_RDONLY | O_DIRECTORY);
    const UniqueFd source = OpenPath(from, O_RDONLY | O_NOCTTY | O_NONBLOCK);
    struct stat info;
    if (!directory.IsOpen() || !source.IsOpen() || ::fstat(source.Get(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    const std::string name = NameOf(target);
    RemoveStaleDrafts(directory.Get(), name);
    UniqueFd copy;
    const std::string draft = MakeDraftOf(from, source.Get(), directory.Get(), name, copy);
    if (draft.empty())
        return false;
    const bool renamed = ::renameat(directory.Get(), draft.c_str(), directory.Get(), name.c_str()) == 0;
    // Also after a success: between two names of one file, renaming does nothing. After any other, the name may be
    // another process' draft already.
    if (IsNameOf(directory.Get(), draft, copy.IsOpen() ? copy.Get() : source.Get()))
        ::unlinkat(directory.Get(), draft.c_str(), 0);
    return renamed;
}

} // namespace vcq::detail
