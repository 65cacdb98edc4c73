#include "engine/entry_detail.h"
#include "engine/js_gc.h"

// Calls that finalizers put off. Owners of script objects are destroyed by them, and their destructors may do anything,
// so they must come where nobody relies on what they could destroy: never inside a collection, which any call that
// makes something can start, and never below a native, which holds bare addresses.
namespace qxjs
{

void RunSafePoint(ThreadState& t)
{
    if (t.has_orders.load(std::memory_order_relaxed)) {
        for (JSContext* cx : TakeOrders(t))
            DestroyContextNow(t, cx);
    }
    // What a call does in the engine ends in a safe point too. It leaves the rest to the loop that made the call, or
    // the stack would grow with every owner that waits.
    if (t.in_safe_point)
        return;
    t.in_safe_point = true;
    while (t.depth == 0 && !t.collecting && !t.safe_point_calls.empty()) {
        const SafePointCall call = t.safe_point_calls.front();
        t.safe_point_calls.pop_front();
        call.fn(call.data);
    }
    t.in_safe_point = false;
}

namespace
{

// As a native's frame: what the interface returns to the calls goes when they end, and they are not entered again.
class EarlyFrame
{
public:
    explicit EarlyFrame(ThreadState& t) : m_thread(t), m_locals(t.locals.Size()) { ++t.natives; }
    ~EarlyFrame()
    {
        --m_thread.natives;
        DropLocals();
    }
    EarlyFrame(const EarlyFrame&) = delete;
    EarlyFrame& operator=(const EarlyFrame&) = delete;
    void DropLocals() { m_thread.locals.Truncate(m_locals); }

private:
    ThreadState& m_thread;
    std::size_t m_locals;
};

} // namespace

// The host code that made the outermost call finds the same done when that ends. In between there is script only, and
// what it can reach is no garbage. Errors are reported as at the end of the call, or script would get them.
bool RunEarlyCalls(ThreadState& t)
{
    JSContext& cx = *t.current;
    EarlyFrame frame(t);
    while (!t.safe_point_calls.empty() && t.safe_point_calls.front().early && cx.stopped.what == Stop::None) {
        const SafePointCall call = t.safe_point_calls.front();
        t.safe_point_calls.pop_front();
        call.fn(call.data);
        if (::JS_IsExceptionPending(t.engine))
            ReportPending(cx, t.engine, ReportStyle::Exception);
        frame.DropLocals();
    }
    return cx.stopped.what == Stop::None;
}

static void CallLater(JSContext* cx, const SafePointCall& call, const char* function)
{
    ThreadState* t = t_state;
    if (!t) {
        call.fn(call.data); // the thread's engine is gone: nothing can be running
        return;
    }
    if (!UsableInFinalizer(cx, function))
        return;
    t->safe_point_calls.push_back(call);
    if (t->depth == 0 && !t->collecting)
        RunSafePoint(*t);
}

void JS_CallAtSafePoint(JSContext* cx, void (*fn)(void*), void* data)
{
    CallLater(cx, {fn, data, false}, __func__);
}

void JS_CallAfterNative(JSContext* cx, void (*fn)(void*), void* data)
{
    CallLater(cx, {fn, data, true}, __func__);
}

} // namespace qxjs
