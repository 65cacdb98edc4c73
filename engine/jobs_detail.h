#pragma once

#include <string_view>

#include "engine/installed_engine_detail.h"

namespace qxjs
{

struct ThreadState;
struct JSContext;

// Whether jobs of promises can be waiting, or objects be kept for the running job's weak references. Asking the engine
// takes a lock and costs a third of a short evaluation, and nearly no script has any. So the ways to the first of them
// are watched, all of them: the global names below, the words async and import in source, and source that script makes
// itself. From the first hit on the thread's jobs are run at the end of every outermost call.
void NoteSource(ThreadState& t, std::u16string_view text);
// The engine's resolve hook for globals, with the names watched.
bool ResolveGlobalName(::JSContext* engine, JS::HandleObject global, JS::HandleId id, bool* resolved);
void WatchScriptMadeSource(ThreadState& t);

void WatchRejections(ThreadState& t);
// Tells the context's hook of the promises that were rejected and are handled by nothing.
void ShowRejections(ThreadState& t, JSContext& cx);

} // namespace qxjs
