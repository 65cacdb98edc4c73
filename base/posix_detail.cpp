#include "base/posix_detail.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vcq::detail
{

namespace
{

template <typename Call> auto Uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept
{
    if (this != &other) {
        Close();
        m_fd = other.Release();
    }
    return *this;
}

int UniqueFd::Release()
{
    return std::exchange(m_fd, -1);
}

bool UniqueFd::Close()
{
    if (m_fd < 0)
        return true;
    // Not repeated when interrupted: the descriptor is gone then, and its number may be another thread's already.
    return ::close(Release()) == 0 || errno == EINTR;
}

UniqueFd OpenPath(const std::string& path, int flags, mode_t mode)
{
    return OpenAt(AT_FDCWD, path, flags, mode);
}

UniqueFd OpenAt(int directory, const std::string& name, int flags, mode_t mode)
{
    return UniqueFd(Uninterrupted([&] { return ::openat(directory, name.c_str(), flags | O_CLOEXEC, mode); }));
}

ssize_t ReadSome(int fd, void* to, size_t size)
{
    return Uninterrupted([&] { return ::read(fd, to, size); });
}

ssize_t ReadSomeAt(int fd, void* to, size_t size, off_t position)
{
    return Uninterrupted([&] { return ::pread(fd, to, size, position); });
}

bool WriteAll(int fd, const void* from, size_t size)
{
    const char* at = static_cast<const char*>(from);
    while (size > 0) {
        const ssize_t written = Uninterrupted([&] { return ::write(fd, at, size); });
        if (written <= 0)
            return false;
        at += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool SyncFile(int fd)
{
    return Uninterrupted([&] { return ::fsync(fd); }) == 0;
}

bool SyncDirectory(int fd)
{
    return SyncFile(fd) || errno == EINVAL || errno == ENOTSUP;
}

void PreferLargePages(void* memory, size_t size)
{
    constexpr uintptr_t largePage = 2 * 1024 * 1024;
    const auto begin = reinterpret_cast<uintptr_t>(memory);
    const uintptr_t from = (begin + largePage - 1) & ~(largePage - 1);
    const uintptr_t to = (begin + size) & ~(largePage - 1);
    if (from < to)
        ::madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
}

bool IsDirectory(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsNameOf(int directory, const std::string& name, int fd)
{
    struct stat named;
    struct stat open;
    return ::fstatat(directory, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(fd, &open) == 0 &&
           named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

} // namespace vcq::detail
