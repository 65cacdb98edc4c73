#include "engine/interrupt_detail.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include "engine/entry_detail.h"
#include "engine/js_limits.h"
#include "engine/thread_state_detail.h"

namespace qxjs
{

namespace
{

constexpr std::chrono::milliseconds kTick{2};
// How long the watchdog goes on ticking when no limit is in force: waking it costs more than a few ticks.
constexpr int kIdleTicks = 50;
// Where a native wants more at once, the memory is looked at before it is taken.
constexpr std::size_t kLargePiece = 1 << 20;

std::int64_t Now()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

// The resident size of the process in bytes; 0 when the system does not tell.
std::size_t ResidentBytes()
{
    const int file = ::open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    char text[128] = {};
    const ssize_t length = ::read(file, text, sizeof text - 1);
    ::close(file);
    unsigned long total = 0;
    unsigned long resident = 0;
    if (length <= 0 || std::sscanf(text, "%lu %lu", &total, &resident) != 2)
        return 0;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

// One thread for the process that asks engines to look at their limits. It only reads the clock and the memory and
// requests interrupts; what is to be done about them is decided on the engine's own thread.
class Watchdog
{
public:
    void Watch(ThreadState& t);
    void Forget(ThreadState& t);
    void End();
    // After a limit was set, when the watchdog may be asleep.
    void Wake()
    {
        if (!m_asleep.load())
            return;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_wake.notify_all();
    }

private:
    void Run();
    bool Tick();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<ThreadState*> m_threads;
    std::thread m_thread;
    std::atomic<bool> m_asleep{false};
    bool m_ending = false;
};

// Never destroyed: threads may end after the statics have gone.
Watchdog& TheWatchdog()
{
    static Watchdog& watchdog = *new Watchdog;
    return watchdog;
}
std::atomic<bool> g_watchdog_used{false};

void Watchdog::Watch(ThreadState& t)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ending || std::find(m_threads.begin(), m_threads.end(), &t) != m_threads.end())
        return;
    m_threads.push_back(&t);
    if (!m_thread.joinable())
        m_thread = std::thread(&Watchdog::Run, this);
    m_wake.notify_all();
}

void Watchdog::Forget(ThreadState& t)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_threads.erase(std::remove(m_threads.begin(), m_threads.end(), &t), m_threads.end());
}

void Watchdog::End()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
        m_wake.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
}

// True when some limit is in force.
bool Watchdog::Tick()
{
    bool armed = false;
    std::size_t resident = 0;
    for (ThreadState* t : m_threads) {
        const std::int64_t deadline = t->watch.deadline_ns.load();
        const std::size_t ceiling = t->watch.memory_ceiling.load();
        if (deadline == 0 && ceiling == 0)
            continue;
        armed = true;
        if (ceiling != 0 && resident == 0)
            resident = ResidentBytes();
        if ((deadline != 0 && Now() > deadline) || (ceiling != 0 && resident > ceiling))
            ::JS_RequestInterruptCallback(t->engine);
    }
    return armed;
}

void Watchdog::Run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    int idle = 0;
    while (!m_ending) {
        idle = Tick() ? 0 : idle + 1;
        if (idle < kIdleTicks) {
            m_wake.wait_for(lock, kTick);
            continue;
        }
        // Announced before the last look: who sets a limit after that look sees that the watchdog must be woken.
        m_asleep = true;
        if (!Tick() && !m_ending)
            m_wake.wait(lock);
        m_asleep = false;
        idle = 0;
    }
}

bool OverTime(const JSContext& cx)
{
    return cx.limits.deadline_ns != 0 && Now() > cx.limits.deadline_ns;
}

// Garbage does not count, so collect before believing it.
bool OverMemory(ThreadState& t, const JSContext& cx)
{
    const std::size_t ceiling = cx.limits.memory_ceiling;
    const std::size_t wanted = t.watch.wanted_bytes;
    if (ceiling == 0 || ResidentBytes() + wanted <= ceiling)
        return false;
    const std::size_t armed = t.watch.memory_ceiling.exchange(0); // this collection is not to request an interrupt
    JS::PrepareForFullGC(t.engine);
    JS::NonIncrementalGC(t.engine, JS::GCOptions::Shrink, JS::GCReason::API);
    ::malloc_trim(0);
    t.watch.memory_ceiling = armed;
    return ResidentBytes() + wanted > ceiling;
}

Stop FindStop(ThreadState& t, JSContext& cx)
{
    if (cx.interrupt_requested.exchange(false))
        return Stop::Request;
    if (OverTime(cx))
        return Stop::Time;
    return OverMemory(t, cx) ? Stop::Memory : Stop::None;
}

void RememberStop(ThreadState& t, JSContext& cx, Stop what)
{
    ++t.stops;
    cx.stopped.what = what;
    JS::AutoFilename file;
    unsigned line = 0;
    if (JS::DescribeScriptedCaller(t.engine, &file, &line)) {
        cx.stopped.has_file = file.get() != nullptr;
        cx.stopped.file = file.get() ? file.get() : "";
        cx.stopped.line = line;
    }
}

// The engine calls this also for reasons of its own, so what counts is the state of the limits, not the call.
bool OnInterrupt(::JSContext* engine)
{
    ThreadState* t = t_state;
    if (!t)
        return true;
    if (t->discarding_jobs) {
        ::JS_RequestInterruptCallback(engine); // for the next job
        return false;
    }
    for (const Entry* entry = t->innermost; entry; entry = entry->Previous()) {
        JSContext& cx = entry->Context();
        if (!entry->IsOutermostOnContext() || cx.stopped.what != Stop::None)
            continue;
        const Stop what = FindStop(*t, cx);
        if (what != Stop::None)
            RememberStop(*t, cx, what);
    }
    const bool stop = t->stops != 0;
    // A false alone ends the running job; an endless chain of them would go on with the next. With no job running the
    // engine would keep this in mind and never run one again.
    if (stop && t->running_jobs)
        js::StopDrainingJobQueue(engine);
    return !stop;
}

} // namespace

bool JS_MayGoOn(std::size_t bytes)
{
    ThreadState* t = t_state;
    if (!t || !t->innermost || t->collecting || t->discarding_jobs)
        return true;
    ++t->uses; // a native that goes on all the same is not to look as if nothing had happened
    if (t->stops != 0)
        return false;
    if (bytes >= kLargePiece && t->watch.memory_ceiling != 0) {
        t->watch.wanted_bytes = bytes;
        ::JS_RequestInterruptCallback(t->engine);
    }
    const bool goes_on = ::JS_CheckForInterrupt(t->engine);
    t->watch.wanted_bytes = 0;
    return goes_on;
}

bool InstallInterrupt(ThreadState& t)
{
    return ::JS_AddInterruptCallback(t.engine, OnInterrupt);
}

void StopWatching(ThreadState& t)
{
    t.watch.deadline_ns = 0;
    t.watch.memory_ceiling = 0;
    if (g_watchdog_used)
        TheWatchdog().Forget(t);
}

void EndWatchdog()
{
    if (g_watchdog_used)
        TheWatchdog().End();
}

StopCause TakeStop(ThreadState& t, JSContext& cx)
{
    --t.stops;
    return std::exchange(cx.stopped, {});
}

std::string StopMessage(Stop what, const Limits& limits)
{
    switch (what) {
    case Stop::Time:
        return "script time limit of " + std::to_string(limits.time_ms) + " ms exceeded";
    case Stop::Memory:
        return "script memory limit of " + std::to_string(limits.memory_bytes) + " bytes exceeded";
    default:
        return "script interrupted";
    }
}

void LimitGuard::Begin(ThreadState& t, JSContext& cx)
{
    m_active = true;
    m_deadline_before = t.watch.deadline_ns.load();
    m_ceiling_before = t.watch.memory_ceiling.load();
    if (cx.limits.time_ms != 0) {
        cx.limits.deadline_ns = Now() + cx.limits.time_ms * 1000000;
        if (m_deadline_before == 0 || cx.limits.deadline_ns < m_deadline_before)
            t.watch.deadline_ns = cx.limits.deadline_ns;
    }
    if (cx.limits.memory_bytes != 0) {
        cx.limits.memory_ceiling = ResidentBytes() + cx.limits.memory_bytes;
        if (m_ceiling_before == 0 || cx.limits.memory_ceiling < m_ceiling_before)
            t.watch.memory_ceiling = cx.limits.memory_ceiling;
    }
    g_watchdog_used = true;
    if (!t.watched) {
        t.watched = true;
        TheWatchdog().Watch(t);
    }
    TheWatchdog().Wake();
}

void LimitGuard::GiveBack(ThreadState& t, JSContext& cx)
{
    m_active = false;
    cx.limits.deadline_ns = 0;
    cx.limits.memory_ceiling = 0;
    t.watch.deadline_ns = m_deadline_before;
    t.watch.memory_ceiling = m_ceiling_before;
}

} // namespace qxjs
