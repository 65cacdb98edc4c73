#pragma once

#include "base/api.h"

#include <mutex>

/// A critical section for the threads of one process. The thread inside may enter again (an evaluation that holds the
/// section can lead back to it); it is out when it has left as often.
class VC_QXPARSER_API wxThreadCriticalSection
{
public:
    wxThreadCriticalSection();
    ~wxThreadCriticalSection();
    wxThreadCriticalSection(const wxThreadCriticalSection&) = delete;
    wxThreadCriticalSection& operator=(const wxThreadCriticalSection&) = delete;

    /// Waits until no other thread is inside.
    void Enter();

    /// Enters if no other thread is inside; false, at once, if one is.
    bool TryEnter();

    /// Only for the thread inside.
    void Leave();

private:
    std::recursive_mutex m_mutex;
};

/// Is inside a critical section for its lifetime.
class VC_QXPARSER_API wxThreadCriticalSectionLocker
{
public:
    /// Enters; the section must outlive this object.
    explicit wxThreadCriticalSectionLocker(wxThreadCriticalSection& section);
    ~wxThreadCriticalSectionLocker();
    wxThreadCriticalSectionLocker(const wxThreadCriticalSectionLocker&) = delete;
    wxThreadCriticalSectionLocker& operator=(const wxThreadCriticalSectionLocker&) = delete;

private:
    wxThreadCriticalSection& m_section;
};
