#pragma once

#include "base/posix_detail.h"

#include <string>

/// The files that stand for named mutexes.
namespace vcq::detail
{

/// The name of the lock file for a mutex: safe as a file name, different for different mutexes, never too long.
std::string LockFileName(const std::string& mutex);

/// A directory of the user's own, made if need be, below one that everybody may write. Another user may have taken the
/// name first; then it is one of `path`-1 to `path`-7. Not open when none of these can be had, errno says why.
UniqueFd PrivateDirectoryInPublic(const std::string& path);

/// Opens the lock file and locks it. Not open when that fails: for `wait` false with errno EWOULDBLOCK when somebody
/// else has the lock. The system frees the lock when the process ends.
UniqueFd AcquireLockFile(const std::string& fileName, bool wait);

/// Frees the lock, also when a child process still has a copy of the descriptor; closing alone would leave it to that.
void ReleaseLockFile(UniqueFd file);

} // namespace vcq::detail
