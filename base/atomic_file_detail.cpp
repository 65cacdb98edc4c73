#include "base/atomic_file_detail.h"

#include "base/draft_detail.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vcq::detail
{

namespace
{

/// As many links in a row as the system itself follows.
constexpr int mostLinks = 40;

/// Replaces `path` by what the link there says; false when it is no link.
bool FollowOneLink(std::string& path)
{
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length <= 0 || static_cast<size_t>(length) == target.size())
        return false;
    target.resize(static_cast<size_t>(length));
    path = target.front() == '/' ? target : DirectoryOf(path) + target;
    return true;
}

bool LeadsIntoAProcess(const std::string& path)
{
    // The links there name open files; what they say need not be a path at all.
    return path.rfind("/proc/", 0) == 0 || path.rfind("/dev/fd/", 0) == 0;
}

std::string DescriptorPath(int fd)
{
    return "/proc/self/fd/" + std::to_string(fd);
}

/// Whether the file there may be written, and the permissions that the draft may have at most: while it is written it
/// is never open to more people than the file that it will replace.
bool MayReplace(const std::string& target, mode_t& mode)
{
    struct stat info;
    // Renaming over a file asks for no right to write it; a protected file is to stay what it is all the same.
    if (::stat(target.c_str(), &info) != 0 || ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
        return false;
    mode = (info.st_mode & 0666) | S_IWUSR;
    return true;
}

} // namespace

std::string DirectoryOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::string NameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

TargetKind FollowLinks(std::string& path)
{
    struct stat info;
    // Asked first for the system's own verdict on the way: it may forbid to follow a link in a shared directory.
    const bool exists = ::stat(path.c_str(), &info) == 0;
    if (!exists && errno != ENOENT)
        return TargetKind::refused;
    if (exists && S_ISDIR(info.st_mode)) {
        errno = EISDIR;
        return TargetKind::refused;
    }
    if (exists && !S_ISREG(info.st_mode))
        return TargetKind::special;
    for (int links = 0; links <= mostLinks; ++links) {
        if (LeadsIntoAProcess(path))
            return TargetKind::special;
        if (!FollowOneLink(path))
            return exists ? TargetKind::regular : TargetKind::fresh;
    }
    errno = ELOOP;
    return TargetKind::refused;
}

std::unique_ptr<AtomicFile> AtomicFile::Create(const std::string& path, bool replace, Draft draft)
{
    std::string target = path;
    const TargetKind kind = FollowLinks(target);
    if (kind == TargetKind::refused)
        return nullptr;
    if (kind == TargetKind::special || (kind == TargetKind::regular && !replace) || NameOf(target).empty()) {
        errno = EEXIST;
        return nullptr;
    }
    mode_t mode = 0666;
    if (kind == TargetKind::regular && !MayReplace(target, mode))
        return nullptr;

    std::unique_ptr<AtomicFile> file(new AtomicFile);
    file->m_name = NameOf(target);
    file->m_replace = replace;
    file->m_directory = OpenPath(DirectoryOf(target), O_RDONLY | O_DIRECTORY);
    if (!file->m_directory.IsOpen())
        return nullptr;
    RemoveStaleDrafts(file->m_directory.Get(), file->m_name);
    return file->OpenDraft(draft, mode) ? std::move(file) : nullptr;
}

bool AtomicFile::OpenDraft(Draft draft, mode_t mode)
{
    // The nameless file gets its name through the process' own directory of descriptors; without it there is no way.
    if (draft == Draft::nameless && ::access("/proc/self/fd", X_OK) == 0)
        m_file = OpenAt(m_directory.Get(), ".", O_TMPFILE | O_WRONLY, mode);
    if (m_file.IsOpen())
        return LockDraft(m_file.Get());
    m_draft = NameDraft(m_name, [&](const std::string& name) {
        m_file = MakeDraft(m_directory.Get(), name, mode);
        return m_file.IsOpen();
    });
    return m_file.IsOpen();
}

/// While it is still locked: its name may be another's draft a moment later.
void AtomicFile::RemoveDraft()
{
    if (!m_draft.empty())
        ::unlinkat(m_directory.Get(), m_draft.c_str(), 0);
    m_draft.clear();
}

AtomicFile::~AtomicFile()
{
    RemoveDraft();
}

bool AtomicFile::KeepMode()
{
    struct stat old;
    if (::fstatat(m_directory.Get(), m_name.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT;
    struct stat draft;
    if (!S_ISREG(old.st_mode) || ::fstat(m_file.Get(), &draft) != 0)
        return false;
    mode_t mode = old.st_mode & 07777;
    const bool sameOwner = old.st_uid == draft.st_uid && old.st_gid == draft.st_gid;
    // Another owner must not lend his rights to what we wrote. The mode comes last, since a new owner clears bits.
    if (!sameOwner && ::fchown(m_file.Get(), old.st_uid, old.st_gid) != 0)
        mode &= 0777;
    return ::fchmod(m_file.Get(), mode) == 0;
}

bool AtomicFile::GiveName(const std::string& name)
{
    if (!m_draft.empty())
        return ::linkat(m_directory.Get(), m_draft.c_str(), m_directory.Get(), name.c_str(), 0) == 0;
    const std::string draft = DescriptorPath(m_file.Get());
    return ::linkat(AT_FDCWD, draft.c_str(), m_directory.Get(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool AtomicFile::PublishNew()
{
    if (GiveName(m_name))
        return true;
    // A file system without hard links can still rename; it has no nameless files either.
    const bool withoutLinks = errno == EPERM || errno == ENOTSUP;
    if (m_draft.empty() || !withoutLinks)
        return false;
    if (::renameat2(m_directory.Get(), m_draft.c_str(), m_directory.Get(), m_name.c_str(), RENAME_NOREPLACE) != 0)
        return false;
    m_draft.clear();
    return true;
}

bool AtomicFile::Publish()
{
    if (PublishNew())
        return true;
    if (!m_replace)
        return false;
    if (m_draft.empty())
        m_draft = NameDraft(m_name, [&](const std::string& name) { return GiveName(name); });
    if (m_draft.empty() || ::renameat(m_directory.Get(), m_draft.c_str(), m_directory.Get(), m_name.c_str()) != 0)
        return false;
    m_draft.clear();
    return true;
}

bool AtomicFile::Commit(Wait wait)
{
    if (!m_file.IsOpen())
        return false;
    const bool waits = wait == Wait::forDisk;
    const bool published = KeepMode() && (!waits || SyncFile(m_file.Get())) && Publish();
    RemoveDraft();
    // The flush has told of lost writes; closing has nothing to add, and comes too late to take the name back.
    m_file.Close();
    return published && (!waits || SyncDirectory(m_directory.Get()));
}

bool ReplaceFile(const std::string& path, const std::string& bytes)
{
    const std::unique_ptr<AtomicFile> file = AtomicFile::Create(path, true);
    return file && WriteAll(file->Descriptor(), bytes.data(), bytes.size()) && file->Commit(AtomicFile::Wait::never);
}

} // namespace vcq::detail
