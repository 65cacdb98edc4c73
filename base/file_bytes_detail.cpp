#include "base/file_bytes_detail.h"

#include "base/patience_detail.h"

#include <cerrno>
#include <fcntl.h>
#include <vector>

namespace vcq::detail
{

UniqueFd OpenToRead(const std::string& path)
{
    return OpenPath(path, O_RDONLY);
}

UniqueFd OpenEmpty(const std::string& path)
{
    constexpr mode_t everybody = 0666;
    return OpenPath(path, O_WRONLY | O_CREAT | O_TRUNC, everybody);
}

bool ReadToEnd(int fd, std::string& bytes)
{
    std::vector<char> piece(64 * 1024);
    ssize_t count = 0;
    while ((count = ReadSome(fd, piece.data(), piece.size())) > 0) {
        bytes.append(piece.data(), static_cast<size_t>(count));
        if (!MayGoOn()) {
            errno = EINTR;
            return false;
        }
    }
    return count == 0;
}

} // namespace vcq::detail
