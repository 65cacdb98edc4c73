#pragma once

#include <optional>

#include "engine/error_report_detail.h"
#include "engine/thread_state_detail.h"

namespace qxjs
{

// What a call does, as far as entering and leaving the engine is concerned.
enum class EntryKind
{
    Access, // reads or writes things and may run script on the way
    Run     // runs script: old results go when it ends
};

// The frame around every call that may run script: it makes the context current, enters its realm, counts depth, and
// at the outermost call arms the limits, reports errors, runs promise jobs and lets old results go. False when the
// call must be refused; then everything has been reported that is to be.
class Entry
{
public:
    Entry(JSContext* cx, const char* function, EntryKind kind = EntryKind::Access);
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    explicit operator bool() const { return m_thread != nullptr; }
    ThreadState& Thread() const { return *m_thread; }
    ::JSContext* Engine() const { return m_thread->engine; }
    JSContext& Context() const { return *m_cx; }
    Entry* Previous() const { return m_previous; }
    bool IsOutermostOnContext() const { return m_outermost; }

    // An engine call failed: deals with the exception and gives the failure value.
    JSBool Fail(ReportStyle style = ReportStyle::Exception);

private:
    void Enter();
    [[gnu::cold]] bool MayGoOn();
    void EnterRealm(::JSObject* global);
    void BeginLimits();
    void Leave();
    [[gnu::cold]] void Refuse();
    void RunJobs();
    void DiscardJobs();
    bool ReportStop()
    {
        if (m_cx->stopped.what == Stop::None)
            return false;
        ReportStopCause();
        return true;
    }
    [[gnu::cold]] void ReportStopCause();

    ThreadState* m_thread;
    JSContext* m_cx;
    EntryKind m_kind;
    bool m_outermost = false;
    bool m_stopped = false;
    JSContext* m_context_before = nullptr;
    Entry* m_previous = nullptr;
    LimitGuard m_limits;
    std::optional<JSAutoRealm> m_realm;
    std::optional<JS::AutoSaveExceptionState> m_exception_before;
};

// Outside of all calls and natives the thread is in one realm or another, which keeps that realm's global alive.
void StayInRealm(ThreadState& t, ::JSObject* global);
void StayInDefaultRealm(ThreadState& t);

// For calls that run no script but need the context's realm: what they make belongs to its global.
class RealmScope
{
public:
    RealmScope(ThreadState& t, const JSContext& cx);

private:
    JSAutoRealm m_realm;
};

} // namespace qxjs
