#include "base/mutex_named.h"

#include "base/lock_file_detail.h"
#include "base/text_encoding.h"

#include <algorithm>
#include <condition_variable>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vcq::detail
{

/// The one lock behind all objects of one name in this process. The system's lock belongs to an open file, so it
/// excludes processes; who of this process has it is kept here.
class SharedLock
{
public:
    explicit SharedLock(const std::string& name) : m_fileName(LockFileName(name)) {}

    static std::shared_ptr<SharedLock> Named(const std::string& name);

    bool Acquire(const CMutexNamed* holder, bool wait);
    bool Release(const CMutexNamed* holder);
    void ReleaseAll(const CMutexNamed* holder);

private:
    bool BecomeOwner(const CMutexNamed* holder, bool wait, bool& again);
    void ForgetParentsLock();
    void FreeIfUnheld();
    bool IsMine() const { return !m_holders.empty() && m_owner == std::this_thread::get_id(); }

    const std::string m_fileName;
    std::mutex m_guard;
    std::condition_variable m_freed;
    std::thread::id m_owner;
    std::vector<const CMutexNamed*> m_holders; ///< the object of each lock that is not undone yet
    pid_t m_process = 0;
    UniqueFd m_file; ///< open while locked only: a child process that shared it would share the lock
};

namespace
{

struct Registry
{
    std::mutex guard;
    std::map<std::string, std::weak_ptr<SharedLock>> locks;
};

/// Never destroyed: mutexes may be static objects themselves.
Registry& AllLocks()
{
    static auto* const registry = new Registry;
    return *registry;
}

} // namespace

std::shared_ptr<SharedLock> SharedLock::Named(const std::string& name)
{
    Registry& registry = AllLocks();
    const std::lock_guard<std::mutex> guard(registry.guard);
    if (std::shared_ptr<SharedLock> known = registry.locks[name].lock())
        return known;
    for (auto entry = registry.locks.begin(); entry != registry.locks.end();)
        entry = entry->second.expired() ? registry.locks.erase(entry) : std::next(entry);
    auto lock = std::make_shared<SharedLock>(name);
    registry.locks[name] = lock;
    return lock;
}

void SharedLock::ForgetParentsLock()
{
    // After a fork the copy of the parent's state says that the lock is held; but it is held by the parent.
    if (m_holders.empty() || m_process == ::getpid())
        return;
    m_file.Close();
    m_holders.clear();
}

bool SharedLock::BecomeOwner(const CMutexNamed* holder, bool wait, bool& again)
{
    std::unique_lock<std::mutex> guard(m_guard);
    ForgetParentsLock();
    again = IsMine();
    if (!again && !m_holders.empty() && !wait)
        return false;
    if (!again)
        m_freed.wait(guard, [this] { return m_holders.empty(); });
    m_holders.push_back(holder);
    m_owner = std::this_thread::get_id();
    m_process = ::getpid();
    return true;
}

bool SharedLock::Acquire(const CMutexNamed* holder, bool wait)
{
    bool again = false;
    if (!BecomeOwner(holder, wait, again))
        return false;
    if (again)
        return true;
    // The guard is not held here, so that other threads can try while this one waits for another process.
    UniqueFd file = AcquireLockFile(m_fileName, wait);
    if (!file.IsOpen()) {
        Release(holder);
        return false;
    }
    const std::lock_guard<std::mutex> guard(m_guard);
    m_file = std::move(file);
    return true;
}

void SharedLock::FreeIfUnheld()
{
    if (!m_holders.empty())
        return;
    ReleaseLockFile(std::move(m_file));
    m_freed.notify_one();
}

bool SharedLock::Release(const CMutexNamed* holder)
{
    const std::lock_guard<std::mutex> guard(m_guard);
    ForgetParentsLock();
    if (!IsMine())
        return false;
    const auto found = std::find(m_holders.rbegin(), m_holders.rend(), holder);
    m_holders.erase(found == m_holders.rend() ? m_holders.end() - 1 : found.base() - 1);
    FreeIfUnheld();
    return true;
}

void SharedLock::ReleaseAll(const CMutexNamed* holder)
{
    const std::lock_guard<std::mutex> guard(m_guard);
    ForgetParentsLock();
    const auto end = std::remove(m_holders.begin(), m_holders.end(), holder);
    if (end == m_holders.end())
        return;
    m_holders.erase(end, m_holders.end());
    FreeIfUnheld();
}

} // namespace vcq::detail

using vcq::detail::SharedLock;

CMutexNamed::CMutexNamed(const wxString& name) : m_lock(SharedLock::Named(ToSystemName(name))) {}

CMutexNamed::~CMutexNamed()
{
    m_lock->ReleaseAll(this);
}

bool CMutexNamed::Lock()
{
    return m_lock->Acquire(this, true);
}

bool CMutexNamed::TryLock()
{
    return m_lock->Acquire(this, false);
}

bool CMutexNamed::Unlock()
{
    return m_lock->Release(this);
}

CMutexNamedLocker::CMutexNamedLocker(CMutexNamed& mutex) : m_mutex(mutex), m_locked(mutex.Lock()) {}

CMutexNamedLocker::~CMutexNamedLocker()
{
    if (m_locked)
        m_mutex.Unlock();
}
