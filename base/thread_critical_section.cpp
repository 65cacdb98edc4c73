#include "base/thread_critical_section.h"

wxThreadCriticalSection::wxThreadCriticalSection() = default;
wxThreadCriticalSection::~wxThreadCriticalSection() = default;

bool wxThreadCriticalSection::IsInside() const
{
    return m_inside.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

// Most entries are nested ones, and a recursive mutex takes no less for those.
void wxThreadCriticalSection::Enter()
{
    if (!IsInside()) {
        m_mutex.lock();
        m_inside.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
    ++m_entered;
}

bool wxThreadCriticalSection::TryEnter()
{
    if (!IsInside()) {
        if (!m_mutex.try_lock())
            return false;
        m_inside.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
    ++m_entered;
    return true;
}

void wxThreadCriticalSection::Leave()
{
    if (--m_entered > 0)
        return;
    m_inside.store(std::thread::id(), std::memory_order_relaxed);
    m_mutex.unlock();
}
