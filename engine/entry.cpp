#include "engine/entry_detail.h"

#include "engine/class_detail.h"
#include "engine/jobs_detail.h"
#include "engine/native_frame_detail.h"
#include "engine/stack_detail.h"
#include "engine/text_detail.h"

namespace qxjs
{

namespace
{
constexpr std::size_t kResultsKept = 64;
}

void StayInRealm(ThreadState& t, ::JSObject* global)
{
    if (t.outside_global == global)
        return;
    JS::LeaveRealm(t.engine, t.outside_realm);
    t.outside_realm = JS::EnterRealm(t.engine, global);
    t.outside_global = global;
}

void StayInDefaultRealm(ThreadState& t)
{
    if (t.depth == 0 && !t.native)
        StayInRealm(t, t.default_global);
}

RealmScope::RealmScope(ThreadState& t, const JSContext& cx) : m_realm(t.engine, GlobalOf(t, cx)) {}

[[gnu::always_inline]] inline void Entry::BeginLimits()
{
    m_cx->interrupt_requested.store(false, std::memory_order_relaxed);
    if (m_cx->limits.AreSet())
        m_limits.Begin(*m_thread, *m_cx);
}

// A thread outside of all calls stays in the realm of its last one, or changing it would be a tenth of a short call.
[[gnu::always_inline]] inline void Entry::EnterRealm(::JSObject* global)
{
    ThreadState& t = *m_thread;
    if (t.depth == 1 && !t.native) {
        if (t.outside_global != global)
            StayInRealm(t, global);
    } else if (JS::CurrentGlobalOrNull(t.engine) != global)
        m_realm.emplace(t.engine, global);
}

// Inlined, as Leave is: for a short text, calls from one to the next of its steps would cost as much as they do.
[[gnu::always_inline]] inline void Entry::Enter()
{
    ThreadState& t = *m_thread;
    if (t.depth == 0) {
        if (t.has_orders.load(std::memory_order_relaxed))
            RunSafePoint(t);
        const auto here = reinterpret_cast<std::uintptr_t>(this);
        if (here != t.stack_quota_from) // as from a host's loop it is
            SetStackQuota(t, here);
    }
    StressPoint(t);
    m_context_before = t.current;
    m_previous = t.innermost;
    t.current = m_cx;
    t.innermost = this;
    t.ended_silently = false;
    ++t.depth;
    m_outermost = m_cx->depth++ == 0;
    EnterRealm(GlobalOf(t, *m_cx));
    if (t.depth == 1)
        ::JS_ClearPendingException(t.engine);
    else if (::JS_IsExceptionPending(t.engine))
        m_exception_before.emplace(t.engine); // the caller's exception is none of what runs now
    if (m_outermost)
        BeginLimits();
}

// While script is being stopped the natives below it go on, and some have much to convert. What they call for may be
// done, but no script on the way.
bool Entry::MayGoOn()
{
    ::JS_RequestInterruptCallback(Engine());
    return m_kind == EntryKind::Access;
}

[[gnu::always_inline]] inline void Entry::Leave()
{
    ThreadState& t = *m_thread;
    if (t.depth == 1 && t.may_have_jobs)
        RunJobs();
    else if (m_outermost)
        ReportStop();
    if (m_outermost)
        m_limits.End(t, *m_cx);
    m_exception_before.reset();
    m_realm.reset();
    --m_cx->depth;
    --t.depth;
    t.innermost = m_previous;
    t.current = m_context_before;
    StressPoint(t);
    if (t.depth != 0)
        return;
    if (GlobalOf(t, *m_cx) != t.outside_global)
        StayInDefaultRealm(t);
    if (m_kind == EntryKind::Run && t.AtRest())
        t.locals.KeepNewest(kResultsKept);
    if (t.SafePointDue())
        RunSafePoint(t);
}

Entry::Entry(JSContext* cx, const char* function, EntryKind kind)
    : m_thread(Usable(cx, function)), m_cx(cx), m_kind(kind)
{
    if (!m_thread)
        return;
    Enter();
    js::AutoCheckRecursionLimit recursion(Engine());
    if ((m_thread->stops != 0 && !MayGoOn()) || !recursion.checkConservative(Engine()))
        Refuse();
}

Entry::~Entry()
{
    if (m_thread)
        Leave();
}

void Entry::Refuse()
{
    Fail();
    Leave();
    m_thread = nullptr;
}

// The limits end before the report, or a reporter that evaluates would be stopped at once.
void Entry::ReportStopCause()
{
    const StopCause cause = TakeStop(*m_thread, *m_cx);
    m_stopped = true;
    m_limits.End(*m_thread, *m_cx);
    ::JS_ClearPendingException(Engine());
    const std::string text = StopMessage(cause.what, m_cx->limits);
    ReportMessage(*m_cx, Utf8ToUtf16(text), cause.has_file ? cause.file.c_str() : nullptr, cause.line);
}

// The jobs that script's promises queued. Those that are left when a limit stops the script are thrown away: kept, an
// endless chain of them would use up the time of every later call too.
void Entry::RunJobs()
{
    ThreadState& t = *m_thread;
    ReportStop();
    if (!m_stopped) {
        t.running_jobs = true;
        js::RunJobs(t.engine);
        t.running_jobs = false;
        ReportStop();
    }
    if (m_stopped)
        DiscardJobs();
    ::JS_ClearPendingException(t.engine);
    // Describing them may run script, which has what is left of the time, or none.
    if (!t.rejected.empty())
        ShowRejections(t, *m_cx);
    if (ReportStop())
        DiscardJobs();
    t.discarding_jobs = false;
}

// From here on, until the end of the call, script is stopped at once.
void Entry::DiscardJobs()
{
    m_thread->discarding_jobs = true;
    ::JS_RequestInterruptCallback(Engine());
    js::RunJobs(Engine());
}

JSBool Entry::Fail(ReportStyle style)
{
    if (m_outermost && ReportStop())
        return JS_FALSE;
    if (!::JS_IsExceptionPending(Engine())) {
        // Nobody reports what ran on the way of an access, so it ends with the script that it was made for.
        if (!m_outermost && m_kind == EntryKind::Access && m_thread->ended_silently && m_thread->native)
            m_thread->native->EndScript();
        return JS_FALSE;
    }
    CallThrowHook(*m_cx, Engine());
    if (m_outermost)
        ReportPending(*m_cx, Engine(), style);
    return JS_FALSE;
}

} // namespace qxjs
