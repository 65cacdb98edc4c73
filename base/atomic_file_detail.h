#pragma once

#include "base/posix_detail.h"

#include <memory>
#include <string>

namespace vcq::detail
{

/// A file that appears under its name complete or not at all. What is written goes to a file without a name in the
/// target's directory; Commit flushes it to the disk, gives it the name in one step and flushes the directory. A
/// process that is killed before leaves nothing on disk. Where the file system knows no nameless files
/// (`Draft::named`), and in the last step of replacing a file, it can leave a hidden draft, which the target's next
/// writer removes.
class AtomicFile
{
public:
    enum class Draft
    {
        nameless, ///< where the file system can; falls back to `named`
        named
    };

    /// Begins to write the file `path`. A symbolic link is followed: its target is replaced, the link stays. Without
    /// `replace` an existing file is an error, at Commit as well as now. Null on failure, errno says why: among others
    /// when the existing file is not a regular one, or is protected against writing.
    static std::unique_ptr<AtomicFile> Create(const std::string& path, bool replace, Draft draft = Draft::nameless);

    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Discards what was written unless Commit was called.
    ~AtomicFile();

    int Descriptor() const { return m_file.Get(); }

    enum class Wait
    {
        forDisk, ///< what is published outlives the system
        never    ///< it outlives the process
    };

    /// Publishes what was written, once. A new file has the permissions that the umask allows, a replaced one keeps
    /// its mode, and its owner where the system permits. False when any step failed: the target is then as it was,
    /// unless only the last flush, that of the directory, failed.
    bool Commit(Wait wait = Wait::forDisk);

private:
    AtomicFile() = default;
    bool OpenDraft(Draft draft, mode_t mode);
    bool KeepMode();
    bool Publish();
    void RemoveDraft();
    bool GiveName(const std::string& name);
    bool PublishNew();

    UniqueFd m_directory;
    UniqueFd m_file;
    std::string m_name;  ///< the target, in m_directory
    std::string m_draft; ///< the draft's own name there; empty while it has none
    bool m_replace = false;
};

/// Makes `bytes` the whole content of a file that is there, or of a new one, without waiting for the disk. False when
/// that fails, and the file is as it was; errno says why.
bool ReplaceFile(const std::string& path, const std::string& bytes);

/// What a name leads to once symbolic links are followed.
enum class TargetKind
{
    fresh,   ///< nothing is there yet
    regular, ///< a regular file
    special, ///< a device, a pipe, a socket, or an open file of a process: can be written to, never replaced
    refused  ///< a directory, or no way there; errno says why
};

/// The directory part of a path, with the slash at its end, and what is behind it.
std::string DirectoryOf(const std::string& path);
std::string NameOf(const std::string& path);

/// Follows the links at the end of `path` and stores where they lead, for a file that need not exist yet.
TargetKind FollowLinks(std::string& path);

} // namespace vcq::detail
