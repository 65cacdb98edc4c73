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

    // What a native that returned has left: success with an exception pending counts as success.
    bool Conclude(JSBool success)
    {
        if (success && m_thread.uses != m_uses)
            ::JS_ClearPendingException(m_thread.engine);
        return success != JS_FALSE;
    }

private:
    ThreadState& m_thread;
    const NativeFrame* m_outer;
    std::size_t m_locals;
    std::size_t m_uses;
    bool m_constructing;
};

} // namespace qxjs
