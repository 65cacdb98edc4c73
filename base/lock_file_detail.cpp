#include "base/lock_file_detail.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vcq::detail
{

namespace
{

constexpr const char* directoryName = "vc_qxparser";

/// Leaves room for the ending below the 255 bytes that file systems grant a name.
constexpr size_t longestPlainName = 200;

/// True when nobody but the user can put anything into the directory.
bool IsPrivate(int directory, mode_t forbidden)
{
    struct stat info;
    if (::fstat(directory, &info) != 0)
        return false;
    if (S_ISDIR(info.st_mode) && info.st_uid == ::geteuid() && (info.st_mode & forbidden) == 0)
        return true;
    errno = EPERM;
    return false;
}

UniqueFd PrivateDirectory(int parent, const std::string& name)
{
    if (::mkdirat(parent, name.c_str(), 0700) != 0 && errno != EEXIST)
        return UniqueFd();
    UniqueFd directory = OpenAt(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    return directory.IsOpen() && IsPrivate(directory.Get(), 077) ? std::move(directory) : UniqueFd();
}

UniqueFd LockDirectory()
{
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/') {
        const UniqueFd parent = OpenPath(runtime, O_RDONLY | O_DIRECTORY);
        if (parent.IsOpen() && IsPrivate(parent.Get(), 022))
            return PrivateDirectory(parent.Get(), directoryName);
    }
    // Not TMPDIR: it differs between a session and its services, and a mutex is to be one for both.
    return PrivateDirectory(AT_FDCWD, std::string("/tmp/") + directoryName + "-" + std::to_string(::geteuid()));
}

/// True while the name still stands for the locked file: a cleaner of temporary files may have removed it between
/// opening and locking, and another process would lock the next one.
bool IsCurrent(int directory, const std::string& name, int fd)
{
    struct stat named;
    struct stat locked;
    return ::fstatat(directory, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(fd, &locked) == 0 &&
           named.st_dev == locked.st_dev && named.st_ino == locked.st_ino;
}

bool LockWhole(int fd, bool wait)
{
    int result = 0;
    do
        result = ::flock(fd, wait ? LOCK_EX : LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

bool IsPlain(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
}

/// FNV-1a, twice with different beginnings: two long names are told apart by 128 bits.
std::string Digest(const std::string& text)
{
    uint64_t first = 0xcbf29ce484222325u;
    uint64_t second = 0x9ae16a3b2f90404fu;
    for (const char c : text) {
        first = (first ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
        second = (second ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    }
    char digits[40];
    std::snprintf(digits, sizeof(digits), "%016llx%016llx", static_cast<unsigned long long>(first),
                  static_cast<unsigned long long>(second));
    return digits;
}

} // namespace

std::string LockFileName(const std::string& mutex)
{
    std::string name;
    for (const char c : mutex) {
        char escape[4];
        std::snprintf(escape, sizeof(escape), "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        name += IsPlain(c) ? std::string(1, c) : escape;
    }
    // The "%~" is no escape, so no short name is ever written like that.
    if (name.size() > longestPlainName)
        name = name.substr(0, longestPlainName - 40) + "%~" + Digest(mutex);
    return name + ".lock";
}

UniqueFd AcquireLockFile(const std::string& fileName, bool wait)
{
    const UniqueFd directory = LockDirectory();
    while (directory.IsOpen()) {
        UniqueFd file = OpenAt(directory.Get(), fileName, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0600);
        if (!file.IsOpen() || !LockWhole(file.Get(), wait))
            break;
        if (IsCurrent(directory.Get(), fileName, file.Get()))
            return file;
    }
    return UniqueFd();
}

void ReleaseLockFile(UniqueFd file)
{
    if (file.IsOpen())
        ::flock(file.Get(), LOCK_UN);
}

} // namespace vcq::detail
