#include "engine/jobs_detail.h"

#include <algorithm>

#include "engine/error_report_detail.h"
#include "engine/thread_state_detail.h"

namespace qxjs
{

namespace
{

constexpr const char* kNames[] = {"Promise", "WeakRef", "WebAssembly"};

bool OnScriptMadeSource(::JSContext*, JS::RuntimeCode, JS::HandleString)
{
    if (t_state)
        t_state->may_have_jobs = true;
    return true;
}

void OnRejection(::JSContext*, bool, JS::HandleObject promise, JS::PromiseRejectionHandlingState state, void* thread)
{
    auto& rejected = static_cast<ThreadState*>(thread)->rejected;
    if (state == JS::PromiseRejectionHandlingState::Unhandled)
        rejected.push_back(promise);
    else
        rejected.erase(std::remove(rejected.begin(), rejected.end(), promise.get()), rejected.end());
}

constexpr ::JSSecurityCallbacks kCallbacks = {OnScriptMadeSource, nullptr};

} // namespace

void NoteSource(ThreadState& t, std::u16string_view text)
{
    // Neither word may be written with escapes.
    t.may_have_jobs = t.may_have_jobs || text.find(u"async") != std::u16string_view::npos ||
                      text.find(u"import") != std::u16string_view::npos;
}

bool ResolveGlobalName(::JSContext* engine, JS::HandleObject global, JS::HandleId id, bool* resolved)
{
    if (t_state && id.isString()) {
        ::JSLinearString* name = ::JS_ASSERT_STRING_IS_LINEAR(id.toString()); // names are atoms
        const auto is_name = [&](const char* watched) { return ::JS_LinearStringEqualsAscii(name, watched); };
        if (std::any_of(std::begin(kNames), std::end(kNames), is_name))
            t_state->may_have_jobs = true;
    }
    return ::JS_ResolveStandardClass(engine, global, id, resolved);
}

void WatchRejections(ThreadState& t)
{
    JS::SetPromiseRejectionTrackerCallback(t.engine, OnRejection, &t);
}

void ShowRejections(ThreadState& t, JSContext& cx)
{
    JS::RootedObjectVector promises(t.engine);
    for (::JSObject* promise : t.rejected) {
        if (!promises.append(promise))
            break;
    }
    t.rejected.clear();
    for (std::size_t i = 0; i < promises.length() && cx.rejection_hook; ++i) {
        JSAutoRealm realm(t.engine, promises[i]);
        JS::RootedValue reason(t.engine, JS::GetPromiseResult(promises[i]));
        cx.rejection_hook(&cx, DescribeException(t.engine, reason).c_str());
    }
}

JSRejectionHook JS_SetRejectionHook(JSContext* cx, JSRejectionHook hook)
{
    if (!cx)
        return nullptr;
    std::swap(cx->rejection_hook, hook);
    return hook;
}

void WatchScriptMadeSource(ThreadState& t)
{
    ::JS_SetSecurityCallbacks(t.engine, &kCallbacks);
}

} // namespace qxjs
