#include "base/thread_critical_section.h"

/// Its address tells threads apart without a call.
[[gnu::tls_model("initial-exec")]] static thread_local char thisThread = 0;

wxThreadCriticalSection::wxThreadCriticalSection() = default;

bool wxThreadCriticalSection::IsInside() const
{
    return m_inside.load(std::memory_order_relaxed) == &thisThread;
}

// Most entries are nested ones, and a recursive mutex takes no less for those.
void wxThreadCriticalSection::Enter()
{
    if (!IsInside()) {
        m_mutex.lock();
        m_inside.store(&thisThread, std::memory_order_relaxed);
    }
    ++m_entered;
}

bool wxThreadCriticalSection::TryEnter()
{
    if (!IsInside()) {
        if (!m_mutex.try_lock())
            return false;
        m_inside.store(&thisThread, std::memory_order_relaxed);
    }
    ++m_entered;
    return true;
}

void wxThreadCriticalSection::Leave()
{
    if (--m_entered > 0)
        return;
    m_inside.store(nullptr, std::memory_order_relaxed);
    m_mutex.unlock();
}
