#include "base/draft_detail.h"

#include "base/digest_detail.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vcq::detail
{

namespace
{

/// Names that a stale draft is looked for under. More drafts than these are needed only while as many processes write
/// one target at the same time; those beyond have names that nobody looks for.
constexpr int knownNames = 4;

constexpr int mostRandomNames = 100;

std::string KnownName(const std::string& digest, int number)
{
    return ".vcq-" + digest + "-" + std::to_string(number) + ".tmp";
}

std::string RandomName(const std::string& digest)
{
    uint64_t number = 0;
    if (::getrandom(&number, sizeof(number), 0) != sizeof(number))
        number = static_cast<uint64_t>(::getpid());
    return ".vcq-" + digest + "-" + std::to_string(number) + ".tmp";
}

bool LockAtOnce(int fd, int operation)
{
    int result = 0;
    do
        result = ::flock(fd, operation | LOCK_NB);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

void RemoveIfStale(int directory, const std::string& name)
{
    const UniqueFd draft = OpenAt(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    struct stat info;
    if (!draft.IsOpen() || ::fstat(draft.Get(), &info) != 0 || !S_ISREG(info.st_mode) ||
        !LockAtOnce(draft.Get(), LOCK_EX))
        return;
    // With the lock held, no writer keeps what has this name, and none can make another of the name.
    if (IsNameOf(directory, name, draft.Get()))
        ::unlinkat(directory, name.c_str(), 0);
}

} // namespace

std::string NameDraft(const std::string& target, const std::function<bool(const std::string& name)>& give)
{
    const std::string digest = Digest(target);
    for (int number = 0; number < knownNames + mostRandomNames; ++number) {
        std::string name = number < knownNames ? KnownName(digest, number) : RandomName(digest);
        if (give(name))
            return name;
        if (errno != EEXIST)
            break;
    }
    return std::string();
}

bool LockDraft(int fd)
{
    // Shared, as the second name of a file is a draft too, which several processes may make at once.
    return LockAtOnce(fd, LOCK_SH) || errno != EWOULDBLOCK;
}

UniqueFd MakeDraft(int directory, const std::string& name, mode_t mode)
{
    UniqueFd draft = OpenAt(directory, name, O_CREAT | O_EXCL | O_WRONLY, mode);
    // Between its making and its locking, it looks stale.
    if (!draft.IsOpen() || (LockDraft(draft.Get()) && IsNameOf(directory, name, draft.Get())))
        return draft;
    errno = EEXIST;
    return UniqueFd();
}

void RemoveStaleDrafts(int directory, const std::string& target)
{
    const std::string digest = Digest(target);
    for (int number = 0; number < knownNames; ++number)
        RemoveIfStale(directory, KnownName(digest, number));
}

} // namespace vcq::detail
