#include "base/lock_file_detail.h"

#include "base/digest_detail.h"

#include <cerrno>
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

/// Names that are tried for a directory where others may take them first.
constexpr int publicNames = 8;

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

/// Makes the directory if need be. Not open when it is not the user's own, or open to others.
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
    return PrivateDirectoryInPublic(std::string("/tmp/") + directoryName + "-" + std::to_string(::geteuid()));
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

} // namespace

UniqueFd PrivateDirectoryInPublic(const std::string& path)
{
    const auto name = [&](int number) { return number == 0 ? path : path + "-" + std::to_string(number); };
    // One that is there comes first, whatever has become of the names before it: all processes must find the same.
    for (int number = 0; number < publicNames; ++number) {
        UniqueFd directory = OpenPath(name(number), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
        if (directory.IsOpen() && IsPrivate(directory.Get(), 077))
            return directory;
    }
    for (int number = 0; number < publicNames; ++number) {
        UniqueFd directory = PrivateDirectory(AT_FDCWD, name(number));
        if (directory.IsOpen())
            return directory;
    }
    return UniqueFd();
}

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
        // A cleaner of temporary files may have removed it between opening and locking, and another process would lock
        // the next one.
        if (IsNameOf(directory.Get(), fileName, file.Get()))
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
