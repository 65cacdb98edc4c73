#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

/// The system calls of this folder, with the two things every one of them needs: calls interrupted by a signal are
/// repeated, and a short write is continued. Another platform replaces this file and its source.
namespace vcq::detail
{

/// Owns one file descriptor; -1 is none. Moves, never copies.
class UniqueFd
{
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(other.Release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    ~UniqueFd() { Close(); }

    int Get() const { return m_fd; }
    bool IsOpen() const { return m_fd >= 0; }
    int Release();

    /// Closes the descriptor. False when the system reports that earlier writes were lost; it is closed all the same.
    bool Close();

private:
    int m_fd = -1;
};

/// open(2), close-on-exec always added. Not open on failure, errno says why.
UniqueFd OpenPath(const std::string& path, int flags, mode_t mode = 0);
UniqueFd OpenAt(int directory, const std::string& name, int flags, mode_t mode = 0);

/// Reads what one call gives: more than 0 bytes, 0 at the end, -1 on failure.
ssize_t ReadSome(int fd, void* to, size_t size);

ssize_t ReadSomeAt(int fd, void* to, size_t size, off_t position);

/// Writes all of it; false when the system refused any part.
bool WriteAll(int fd, const void* from, size_t size);

bool SyncFile(int fd);

/// As SyncFile, for a directory; true where the file system knows no such thing.
bool SyncDirectory(int fd);

/// Asks for large pages under memory that is about to be filled: a page fault for each 4 KiB of it costs more than
/// filling it. Does nothing for small pieces, and where the system knows no such pages.
void PreferLargePages(void* memory, size_t size);

/// True when `path`, links followed, is a directory.
bool IsDirectory(const std::string& path);

/// True when the file `name` in a directory, no link followed, is the one that is open.
bool IsNameOf(int directory, const std::string& name, int fd);

} // namespace vcq::detail
