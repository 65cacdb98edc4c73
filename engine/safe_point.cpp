#include "engine/entry_detail.h"
#include "engine/js_gc.h"
#include "engine/native_frame_detail.h"

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
    while (t.depth == 0 && !t.collecting && !t.safe_point_calls.IsEmpty())
        t.safe_point_calls.Pop()();
    t.in_safe_point = false;
}

// The host code that made the outermost call finds the same done when that ends. In between there is script only, and
// what it can reach is no garbage. Errors are reported as at the end of the call, or script would get them.
bool RunEarlyCalls(ThreadState& t)
{
    JSContext& cx = *t.current;
    NativeFrame frame(t); // so that they are not entered again
    while (!t.safe_point_calls.IsEmpty() && t.safe_point_calls.Front().early && t.stops == 0) {
        t.safe_point_calls.Pop()();
        if (::JS_IsExceptionPending(t.engine))
            ReportPending(cx, t.engine, ReportStyle::Exception);
        frame.DropLocals();
    }
    return t.stops == 0;
}

static void CallLater(JSContext* cx, const SafePointCall& call, JSCallTicket* ticket, const char* function)
{
    ThreadState* t = t_state;
    if (!t) {
        call(); // the thread's engine is gone: nothing can be running
        return;
    }
    if (!UsableInFinalizer(cx, function))
        return;
    const JSCallTicket given = t->safe_point_calls.Push(call);
    if (ticket)
        *ticket = given;
    if (t->depth == 0 && !t->collecting)
        RunSafePoint(*t);
}

void JS_CallAtSafePoint(JSContext* cx, void (*fn)(void*), void* data)
{
    CallLater(cx, {fn, data, false}, nullptr, __func__);
}

void JS_CallAfterNative(JSContext* cx, void (*fn)(void*), void* data, JSCallTicket* ticket)
{
    CallLater(cx, {fn, data, true}, ticket, __func__);
}

void JS_CancelCall(JSCallTicket ticket, const void* data)
{
    ThreadState* t = t_state ? t_state : t_ending;
    SafePointCall* call = t ? t->safe_point_calls.Find(ticket) : nullptr;
    if (call && call->data == data)
        call->fn = nullptr;
}

} // namespace qxjs
