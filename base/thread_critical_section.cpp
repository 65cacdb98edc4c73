#include "base/thread_critical_section.h"

wxThreadCriticalSection::wxThreadCriticalSection() = default;
wxThreadCriticalSection::~wxThreadCriticalSection() = default;

void wxThreadCriticalSection::Enter()
{
    m_mutex.lock();
}

bool wxThreadCriticalSection::TryEnter()
{
    return m_mutex.try_lock();
}

void wxThreadCriticalSection::Leave()
{
    m_mutex.unlock();
}

wxThreadCriticalSectionLocker::wxThreadCriticalSectionLocker(wxThreadCriticalSection& section) : m_section(section)
{
    m_section.Enter();
}

wxThreadCriticalSectionLocker::~wxThreadCriticalSectionLocker()
{
    m_section.Leave();
}
