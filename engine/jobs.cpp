#include "engine/jobs_detail.h"

#include <algorithm>

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

void WatchScriptMadeSource(ThreadState& t)
{
    ::JS_SetSecurityCallbacks(t.engine, &kCallbacks);
}

} // namespace qxjs
