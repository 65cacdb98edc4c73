#pragma once

#include "base/api.h"

#include <atomic>
#include <mutex>

/// A critical section for the threads of one process. The thread inside may enter again (an evaluation that holds the
/// section can lead back to it); it is out when it has left as often.
class VC_QXPARSER_API wxThreadCriticalSection
{
public:
    wxThreadCriticalSection();
    ~wxThreadCriticalSection() = default;
    wxThreadCriticalSection(const wxThreadCriticalSection&) = delete;
    wxThreadCriticalSection& operator=(const wxThreadCriticalSection&) = delete;

    /// Waits until no other thread is inside.
    void Enter();

    /// Enters if no other thread is inside; false, at once, if one is.
    bool TryEnter();

    /// Only for the thread inside.
    void Leave();

private:
    bool IsInside() const;

    std::mutex m_mutex;
    std::atomic<const void*> m_inside{nullptr}; ///< The thread that is; only that one finds itself here.
    unsigned int m_entered = 0;                 ///< How often.
};

/// Is inside a critical section for its lifetime.
class VC_QXPARSER_API wxThreadCriticalSectionLocker
{
public:
    /// Enters; the section must outlive this object.
    explicit wxThreadCriticalSectionLocker(wxThreadCriticalSection& section) : m_section(section) { m_section.Enter(); }
    ~wxThreadCriticalSectionLocker() { m_section.Leave(); }
    wxThreadCriticalSectionLocker(const wxThreadCriticalSectionLocker&) = delete;
    wxThreadCriticalSectionLocker& operator=(const wxThreadCriticalSectionLocker&) = delete;

private:
    wxThreadCriticalSection& m_section;
};
