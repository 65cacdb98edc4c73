#pragma once

#include "base/api.h"

#include <memory>
#include <wx/string.h>

namespace vcq::detail
{
class SharedLock;
}

/// A mutex that all processes of a user know by its name. Held, it excludes other processes and the other threads of
/// this one. The thread that holds it may lock it again, through another object of the name too; it is free when it has
/// been unlocked as often. When the holding process dies, however it dies, the system frees it at once.
///
/// It is an advisory lock on an empty file in the user's runtime directory (below XDG_RUNTIME_DIR; without that, in a
/// private directory below /tmp, "vc_qxparser-" with the user's number, or with "-1" to "-7" behind it where somebody
/// else has taken the name), which stays there. Processes with different runtime directories do not see each other. Any
/// text is a name, a path for instance; different texts are different mutexes.
class VC_QXPARSER_API CMutexNamed
{
public:
    /// The mutex of this name, not locked. Nothing is touched before the first Lock or TryLock.
    explicit CMutexNamed(const wxString& name);

    /// Unlocks what was locked through this object and is not unlocked yet.
    ~CMutexNamed();

    CMutexNamed(const CMutexNamed&) = delete;
    CMutexNamed& operator=(const CMutexNamed&) = delete;

    /// Waits until the mutex is free and takes it. False, with the mutex not held, only when the lock file cannot be
    /// used: no private directory to be had, a link or another user's file in its place, no descriptors left.
    bool Lock();

    /// Takes the mutex if it is free; false at once if it is not, or as Lock.
    bool TryLock();

    /// Undoes one Lock. False when the calling thread does not hold the mutex.
    bool Unlock();

private:
    std::shared_ptr<vcq::detail::SharedLock> m_lock;
};

/// Holds a named mutex for its lifetime, waiting for it first.
class VC_QXPARSER_API CMutexNamedLocker
{
public:
    /// Locks; IsLocked tells whether it worked.
    explicit CMutexNamedLocker(CMutexNamed& mutex);
    ~CMutexNamedLocker();
    CMutexNamedLocker(const CMutexNamedLocker&) = delete;
    CMutexNamedLocker& operator=(const CMutexNamedLocker&) = delete;

    /// False when the mutex could not be had (see CMutexNamed::Lock): nothing is excluded then.
    bool IsLocked() const { return m_locked; }

private:
    CMutexNamed& m_mutex;
    bool m_locked;
};
