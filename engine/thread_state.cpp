#include "engine/thread_state_detail.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

#include <pthread.h>
#include <unistd.h>

#include "engine/class_detail.h"
#include "engine/error_report_detail.h"
#include "engine/jobs_detail.h"
#include "engine/js_gc.h"
#include "engine/stack_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

// The engine's own cap, a backstop against swapping; hosts bound their scripts with JS_SetMemoryLimit. Small caps make
// ordinary scripts die with "out of memory".
constexpr std::uint32_t kHeapBytes = 0xFFFFFFFF;
constexpr std::size_t kResultsAtRest = 1000000;

std::atomic<bool> g_process_ended{false};
std::mutex g_start_mutex;

int g_exit_status = 0;
bool g_forked = false;

void OnFork()
{
    g_forked = true;
    ::on_exit([](int status, void*) { g_exit_status = status; }, nullptr);
}

// The engine's process-wide state. Its helper threads must be stopped before the engine's own statics go, and only
// its JS_ShutDown does that; this library links the engine, so this object is destroyed first. It does nothing when no
// context was ever made. A forked child has no helper threads to stop, and the engine's statics crash over what these
// left locked: it ends here, with its status, before they are reached.
class EngineProcess
{
public:
    constexpr EngineProcess() = default;
    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;
    ~EngineProcess()
    {
        g_process_ended = true;
        if (!m_started)
            return;
        if (g_forked) {
            std::fflush(nullptr);
            ::_exit(g_exit_status);
        }
        if (t_state)
            t_state->Stop(); // started after the thread's own clean-up had run
        EndWatchdog();
        ::JS_ShutDown();
    }
    bool Start()
    {
        std::lock_guard<std::mutex> lock(g_start_mutex);
        if (g_process_ended)
            return false;
        if (!m_started && ::JS_Init()) {
            m_started = true;
            ::pthread_atfork(nullptr, nullptr, OnFork);
        }
        return m_started && !g_forked;
    }

private:
    bool m_started = false;
};
EngineProcess g_process;

// Ends the thread's engine when the thread ends.
struct ThreadEnd
{
    ~ThreadEnd();
    bool started = false;
};
thread_local ThreadEnd t_end;
thread_local bool t_ended = false;

ThreadEnd::~ThreadEnd()
{
    t_ended = true;
    if (t_state)
        t_state->Stop();
}

void OnCollection(::JSContext* engine, JSGCStatus status, JS::GCReason, void* thread)
{
    auto& t = *static_cast<ThreadState*>(thread);
    t.collecting = status == JSGC_BEGIN;
    // Garbage made faster than the watchdog ticks is looked at where it is collected.
    if (!t.collecting && t.watch.memory_ceiling.load(std::memory_order_relaxed) != 0)
        ::JS_RequestInterruptCallback(engine);
}

constexpr JSClass kDefaultGlobal = {"global", 0,       nullptr, nullptr, nullptr,
                                    nullptr,  nullptr, nullptr, nullptr, nullptr};

} // namespace

std::atomic<bool> g_stress{false};

ThreadState* StartThread()
{
    if (t_state)
        return t_state;
    if (t_ended || !g_process.Start())
        return nullptr;
    t_end.started = true; // touches the object, so that its destructor will run
    auto state = std::make_unique<ThreadState>();
    t_state = state.get();
    if (!state->Start()) {
        t_state = nullptr;
        return nullptr;
    }
    return state.release();
}

ThreadState::ThreadState() : stack_quota(kDefaultStackQuota)
{
    hostless.thread = this;
}

ThreadState::~ThreadState() = default;

bool ThreadState::Start()
{
    engine = ::JS_NewContext(kHeapBytes);
    if (!engine)
        return false;
    // Without a job queue the first promise of a script is a crash.
    if (!js::UseInternalJobQueues(engine) || !JS::InitSelfHostedCode(engine)) {
        ::JS_DestroyContext(engine);
        return false;
    }
    // Hosts hold bare addresses, so nothing may move: no nursery, no compaction; and bare words have no barriers, so
    // no incremental collection. The guard object is never destroyed, it lasts as long as the context.
    new (&no_nursery) JS::AutoDisableGenerationalGC(engine);
    ::JS_SetGCParameter(engine, JSGC_COMPACTING_ENABLED, 0);
    ::JS_SetGCParameter(engine, JSGC_INCREMENTAL_GC_ENABLED, 0);
    ::JS_AddExtraGCRootsTracer(engine, TraceRoots, this);
    ::JS_SetGCCallback(engine, OnCollection, this);
    WatchScriptMadeSource(*this);
    WatchRejections(*this);
    stack = MeasureStack();
    SetStackQuota(*this, reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)));
    HostClass* host_class = FindClass(*this, kDefaultGlobal, true);
    default_global = host_class ? NewGlobalObject(*this, *host_class) : nullptr;
    if (!default_global || !InstallInterrupt(*this)) {
        ::JS_DestroyContext(engine);
        return false;
    }
    // Strings made with no realm entered are a crash, so one is entered for good.
    outside_realm = JS::EnterRealm(engine, default_global);
    outside_global = default_global;
    return true;
}

// Ends the thread's engine. All finalizers run; the contexts stay as records that refuse every call.
void ThreadState::Stop()
{
    StopWatching(*this);
    OrphanContexts(*this);
    if (depth != 0 || g_forked) {
        // The process ends from inside a script: the engine cannot be taken apart under a running script, and its
        // shutdown copes with a context that is left. Or it is a forked child, where helper threads would be waited
        // for that do not exist.
        t_state = nullptr;
        return;
    }
    default_global = nullptr;
    locals.Truncate(0);
    roots.Clear();
    rejected.clear();
    held_symbol = nullptr;
    interned.clear();
    string_chars.clear();
    id_arrays.clear();
    JS::LeaveRealm(engine, outside_realm);
    current = nullptr;
    collecting = true;
    ::JS_DestroyContext(engine);
    t_state = nullptr;
    t_ending = this;
    while (!safe_point_calls.IsEmpty())
        safe_point_calls.Pop()();
    t_ending = nullptr;
    delete this;
}

void ThreadState::MakeRoomForLocals()
{
    if (AtRest() && locals.Size() >= kResultsAtRest)
        locals.KeepNewest(kResultsAtRest / 2);
    else
        locals.Grow();
}

void ThreadState::MarkDoubles(DoublePool& pool)
{
    for (jsval v : locals) {
        if (JSVAL_IS_DOUBLE(v))
            pool.Mark(JSVAL_TO_DOUBLE(v));
    }
    for (const auto& root : roots) {
        const jsval v = WordAt(*this, root.first);
        if (JSVAL_IS_DOUBLE(v))
            pool.Mark(JSVAL_TO_DOUBLE(v));
    }
}

void CollectForStress(ThreadState& t)
{
    if (!t.collecting)
        ::JS_GC(t.engine);
}

} // namespace qxjs
