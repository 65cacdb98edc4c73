#pragma once

#include "engine/thread_state_detail.h"

namespace qxjs
{

// A native's stay: what the interface returns to it goes when it ends.
class NativeFrame
{
public:
    explicit NativeFrame(ThreadState& t, bool constructing = false)
        : m_thread(t), m_outer(t.native), m_locals(t.locals.Size()), m_uses(t.uses), m_constructing(constructing)
    {
        t.native = this;
        StressPoint(t);
    }
    ~NativeFrame()
    {
        m_thread.native = m_outer;
        DropLocals();
    }
    NativeFrame(const NativeFrame&) = delete;
    NativeFrame& operator=(const NativeFrame&) = delete;

    bool IsConstructing() const { return m_constructing; }
    void DropLocals() { m_thread.locals.Truncate(m_locals); }

    // Script that the native has run was ended in a way that script cannot catch. So will be what called the native,
    // whatever that makes of it.
    void EndScript() { m_script_ended = true; }

    // What a native that returned has left: success with an exception pending counts as success.
    bool Conclude(JSBool success)
    {
        if (success && m_thread.uses == m_uses)
            return true;
        const bool ends = m_script_ended || m_thread.stops != 0;
        if (success || ends)
            ::JS_ClearPendingException(m_thread.engine);
        m_thread.ended_silently = ends || (!success && !::JS_IsExceptionPending(m_thread.engine));
        return success && !ends;
    }

private:
    ThreadState& m_thread;
    NativeFrame* m_outer;
    std::size_t m_locals;
    std::size_t m_uses;
    bool m_constructing;
    bool m_script_ended = false;
};

} // namespace qxjs
