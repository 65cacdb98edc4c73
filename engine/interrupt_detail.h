#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace qxjs
{

struct JSContext;
struct ThreadState;

struct Limits
{
    bool AreSet() const { return time_ms != 0 || memory_bytes != 0; }

    long time_ms = 0;
    std::size_t memory_bytes = 0;
    // While the outermost call on the context runs; 0 for no limit.
    std::int64_t deadline_ns = 0;
    std::size_t memory_ceiling = 0;
};

enum class Stop
{
    None,
    Time,
    Memory,
    Request
};

// Why the running script is being stopped, and where it was then.
struct StopCause
{
    Stop what = Stop::None;
    std::string file;
    unsigned line = 0;
    bool has_file = false;
};

// The nearest limits of a thread, for the watchdog to look at.
struct LimitWatch
{
    std::atomic<std::int64_t> deadline_ns{0};
    std::atomic<std::size_t> memory_ceiling{0};
    std::size_t wanted_bytes = 0; // what a native is about to take; the thread's own
};

// Brings the limits that are set for a context into force for its outermost call, and gives back what was in force
// before.
class LimitGuard
{
public:
    void Begin(ThreadState& t, JSContext& cx);
    void End(ThreadState& t, JSContext& cx)
    {
        if (m_active)
            GiveBack(t, cx);
    }

private:
    void GiveBack(ThreadState& t, JSContext& cx);

    bool m_active = false;
    std::int64_t m_deadline_before = 0;
    std::size_t m_ceiling_before = 0;
};

// The watchdog looks after a thread from its first limit until its engine ends.
void StopWatching(ThreadState& t);
// At the end of the process, before the engine is shut down.
void EndWatchdog();

bool InstallInterrupt(ThreadState& t);
// Ends the stop that the context's script is in.
StopCause TakeStop(ThreadState& t, JSContext& cx);
std::string StopMessage(Stop what, const Limits& limits);

} // namespace qxjs
