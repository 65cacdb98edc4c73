#pragma once

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/ticket_queue_detail.h"
#include "engine/cell_set_detail.h"
#include "engine/double_pool_detail.h"
#include "engine/installed_engine_detail.h"
#include "engine/interrupt_detail.h"
#include "engine/js_error.h"
#include "engine/js_gc.h"
#include "engine/js_object.h"
#include "engine/js_runtime.h"
#include "engine/local_roots_detail.h"
#include "engine/pointer_set_detail.h"
#include "engine/root_table_detail.h"
#include "engine/stack_detail.h"

namespace qxjs
{

class Entry;
class NativeFrame;
struct ThreadState;
struct ReportStorage;
struct FrameRecord;
struct HostClass;
struct IdArray;

struct JSRuntime
{
    JSTrapHandler throw_hook = nullptr;
    void* throw_closure = nullptr;
};

// A script compiled for the host, or, with `script` null, the script of a frame.
struct JSScript
{
    ::JSScript* script = nullptr;
    bool scoped = false;
    std::string filename;
    uintN line = 0;
};

struct FrameRecord
{
    JSScript script;
    uintN line;
};

struct JSContext
{
    JSContext();
    ~JSContext();
    JSContext(const JSContext&) = delete;
    JSContext& operator=(const JSContext&) = delete;

    // Whose context it is; null once that thread's engine has ended. Other threads read it to find out that they must
    // not go on.
    std::atomic<ThreadState*> thread{nullptr};
    std::atomic<JSRuntime*> runtime{nullptr};
    std::atomic<bool> interrupt_requested{false};

    void* host_data = nullptr;
    JSErrorReporter reporter = nullptr;
    JSSurvivorHook survivor_hook = nullptr;
    JSRejectionHook rejection_hook = nullptr;
    ::JSObject* global = nullptr;
    unsigned depth = 0; // calls in progress that may run script
    bool dying = false; // to be destroyed as soon as depth is 0

    Limits limits;
    StopCause stopped;

    std::unique_ptr<ReportStorage> exception_report;
    std::vector<FrameRecord> frames;
    std::vector<std::unique_ptr<JSScript>> scripts;
};

// What a native function or accessor of ours carries in its reserved slot. Kept as long as the engine, because the
// function objects are; equal ones are shared, so defining the same table on many objects costs nothing here.
struct NativeRecord
{
    ThreadState* thread;
    JSNative native;
    JSPropertyOp op;
    JSNumberFieldOp field;
    jsval id;
    unsigned nargs;
    bool is_setter;
    const HostClass* constructs;     // the class whose instances `new` makes
    JSNumberNative number = nullptr; // asked before `native`
};

struct SafePointCall
{
    void (*fn)(void*); // null: cancelled
    void* data;
    bool early; // may come while script runs

    void operator()() const
    {
        if (fn)
            fn(data);
    }
};

// Everything this library keeps for one thread, and the thread's engine.
struct ThreadState final : DoublePool::Marker
{
    ThreadState();
    ~ThreadState();
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;

    bool Start();
    void Stop();
    void MarkDoubles(DoublePool& pool) override;

    // Keeps what the words refer to until the running native returns, or while it is recent.
    jsval Keep(jsval v)
    {
        if (locals.IsFull())
            MakeRoomForLocals();
        locals.Push(v);
        return v;
    }
    void MakeRoomForLocals();
    // No native and no local root scope is active: nobody counts on old results.
    bool AtRest() const { return depth == 0 && !locals.HasScopes(); }

    bool SafePointDue() const { return has_orders.load(std::memory_order_relaxed) || !safe_point_calls.IsEmpty(); }
    // Only script is between here and the outermost call.
    bool EarlyCallsDue() const { return !safe_point_calls.IsEmpty() && depth == 1 && !native; }

    ::JSContext* engine = nullptr;
    ::JSObject* default_global = nullptr;
    JS::Realm* outside_realm = nullptr;
    ::JSObject* outside_global = nullptr; // see StayInRealm
    std::aligned_storage_t<sizeof(JS::AutoDisableGenerationalGC), alignof(JS::AutoDisableGenerationalGC)> no_nursery;

    std::vector<JSContext*> contexts;
    JSContext hostless; // stands in where a finalizer runs and no context of a host is there
    JSContext* current = nullptr;
    Entry* innermost = nullptr;
    unsigned depth = 0;
    NativeFrame* native = nullptr; // the innermost on the stack
    std::size_t uses = 0;          // calls that could have left an exception pending
    unsigned stops = 0;            // contexts whose script is being stopped: nothing but natives may run
    bool ended_silently = false;   // script that ran last was ended by a native, without an exception
    bool collecting = false;
    std::atomic<bool> has_orders{false};
    std::vector<JSContext*> orders; // put aside by JS_DestroyContext; under the registry's lock

    LocalRoots locals;
    DoublePool doubles{*this};
    RootTable roots;
    CellSet host_objects;

    JS::Symbol* held_symbol = nullptr; // see JS_HoldObject
    std::vector<::JSString*> interned;
    PointerSet interned_set;
    std::unordered_map<::JSString*, std::unique_ptr<char16_t[]>> string_chars;
    std::size_t string_chars_limit = 64;
    std::unordered_set<std::string> names;
    std::vector<IdArray*> id_arrays;

    std::vector<std::unique_ptr<HostClass>> classes;
    std::unordered_map<const JSClass*, HostClass*> classes_seen; // by record, which may have changed since
    std::deque<NativeRecord> native_records;
    std::unordered_multimap<std::size_t, const NativeRecord*> native_index;

    vcq::detail::TicketQueue<SafePointCall> safe_point_calls;
    bool in_safe_point = false;
    ThreadStack stack;
    std::size_t stack_quota;
    std::size_t stack_used_at_quota = 0;
    std::uintptr_t stack_quota_from = 0; // where it is counted from; 0: not any more
    LimitWatch watch;
    bool watched = false;
    bool may_have_jobs = false;
    std::vector<::JSObject*> rejected; // promises that nothing handles (yet)
    bool running_jobs = false;
    bool discarding_jobs = false;
};

// Constant-initialised and trivially destructible, so that reading it costs no guard and it can be asked during the
// destruction of everything else.
// One word of the static block, which every call reads: otherwise the library would look it up by a call each time.
[[gnu::tls_model("initial-exec")]] inline thread_local ThreadState* t_state = nullptr;

// The state while the calls come that are left when the thread's engine has ended; else null.
[[gnu::tls_model("initial-exec")]] inline thread_local ThreadState* t_ending = nullptr;

// The calling thread's state, started if need be; null when it cannot be.
ThreadState* StartThread();

void ReportMisuse(const char* text);
[[gnu::cold]] void RefuseCall(JSContext* cx, const char* function);

// The first thing every function does: the state to work on, or null when the call must be refused.
inline ThreadState* Usable(JSContext* cx, const char* function)
{
    ThreadState* t = t_state;
    if (cx && t && cx->thread.load(std::memory_order_relaxed) == t && !t->collecting) {
        ++t->uses;
        return t;
    }
    RefuseCall(cx, function);
    return nullptr;
}
// The same for what never leaves an exception pending.
inline ThreadState* UsableQuietly(JSContext* cx, const char* function)
{
    ThreadState* t = t_state;
    if (cx && t && cx->thread.load(std::memory_order_relaxed) == t && !t->collecting)
        return t;
    RefuseCall(cx, function);
    return nullptr;
}
// The same for what finalizers may do.
inline ThreadState* UsableInFinalizer(JSContext* cx, const char* function)
{
    ThreadState* t = t_state;
    if (cx && t && cx->thread.load(std::memory_order_relaxed) == t)
        return t;
    RefuseCall(cx, function);
    return nullptr;
}

void TraceRoots(JSTracer* trc, void* thread);
void TraceWord(JSTracer* trc, jsval v);
// A root's address may hold a tagged word or the bare address of an object, a string or a double: tell them apart.
jsval WordAt(const ThreadState& t, const void* address);
void SweepStringChars(ThreadState& t);
// Keeps an atom as long as the engine, and gives it back.
::JSString* InternForever(ThreadState& t, ::JSString* atom);

// What became due while script ran: contexts put aside, calls at the safe point. Only at depth 0.
void RunSafePoint(ThreadState& t);
// Those of the calls that may come between script and the next native; false when the script must end.
bool RunEarlyCalls(ThreadState& t);
void DestroyContextNow(ThreadState& t, JSContext* cx);
// Takes the contexts put aside for this thread.
std::vector<JSContext*> TakeOrders(ThreadState& t);
// The thread's engine ends: its contexts refuse every call from now on.
void OrphanContexts(ThreadState& t);

// Stress mode: collect wherever a collection could happen.
extern std::atomic<bool> g_stress;
void CollectForStress(ThreadState& t);
inline void StressPoint(ThreadState& t)
{
    if (g_stress.load(std::memory_order_relaxed))
        CollectForStress(t);
}

} // namespace qxjs
