#pragma once

#include "base/posix_detail.h"

#include <functional>
#include <string>

/// Drafts: hidden files, ".vcq-" with a digest of the target's name, that stand beside the target until they take its
/// name. A writer has a lock (flock) on its draft, which the system frees when the process ends, however it ends. So a
/// draft that nobody has locked was left by a writer that was killed; the next writer of the same target removes it.
namespace vcq::detail
{

/// Gives a draft for the file `target` a name by calling `give`, which says as the system does whether that was
/// possible (errno EEXIST: not under this name). Empty when it was not, errno says why.
std::string NameDraft(const std::string& target, const std::function<bool(const std::string& name)>& give);

/// Locks what is, or becomes, a draft. False when somebody is about to remove it. True too where files cannot be
/// locked: nothing is taken for stale there.
bool LockDraft(int fd);

/// Makes an empty draft, open for writing and locked. Not open on failure, as by OpenAt.
UniqueFd MakeDraft(int directory, const std::string& name, mode_t mode);

/// Removes the drafts for `target` in `directory` that nobody writes any more.
void RemoveStaleDrafts(int directory, const std::string& target);

} // namespace vcq::detail
