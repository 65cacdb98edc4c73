#pragma once

#include "base/api.h"
#include "engine/js_types.h"

/// @file
/// Runtimes and contexts: the state every other call works on.
///
/// Threads. A context belongs to the thread that made it. A call from another thread is refused: the function returns
/// its failure value, the engine is not touched, and the misuse hook hears of it. A thread's engine starts with its
/// first JS_NewContext (some 20 ms) and ends with the thread; a program that makes no context never starts it. After
/// that, whatever contexts are left answer every call with failure and can still be destroyed.
///
/// Outermost calls. Many functions may run script. One that is called while no other is active on its context is the
/// outermost: it reports errors (js_error.h), applies the limits below, and runs the promise jobs that script queued.
namespace qxjs
{

///@{
/// A new runtime record. `max_bytes` is kept for the interface's sake; the heap has no small limit (see
/// JS_SetMemoryLimit). Costs nothing: the engine itself starts with the first context. Never null.
VC_QXPARSER_API JSRuntime* JS_Init(std::uint32_t max_bytes);
VC_QXPARSER_API JSRuntime* JS_NewRuntime(std::uint32_t max_bytes);
///@}

///@{
/// Deletes the record. Contexts made from it stay usable and have no runtime from then on.
VC_QXPARSER_API void JS_Finish(JSRuntime* rt);
VC_QXPARSER_API void JS_DestroyRuntime(JSRuntime* rt);
///@}

/// Does nothing: a thread's engine ends with the thread and the process's with the process, in the right order.
VC_QXPARSER_API void JS_ShutDown();

/// What a throw hook answers. Only JSTRAP_CONTINUE is acted upon: exceptions always travel on unchanged.
enum JSTrapStatus
{
    JSTRAP_ERROR,    ///< ignored
    JSTRAP_CONTINUE, ///< goes on with the exception
    JSTRAP_RETURN,   ///< ignored
    JSTRAP_THROW     ///< ignored
};
/// `script` and `pc` are null; *rval is the exception.
using JSTrapHandler = JSTrapStatus (*)(JSContext* cx, JSScript* script, jsbytecode* pc, jsval* rval, void* closure);

/// Has `hook` called once for each exception that leaves script for a call of this interface. Null removes it.
VC_QXPARSER_API JSBool JS_SetThrowHook(JSRuntime* rt, JSTrapHandler hook, void* closure);

/// A new context of the calling thread, without a global object; `chunk` is ignored. Null when the engine could not be
/// started or has already ended on this thread.
VC_QXPARSER_API JSContext* JS_NewContext(JSRuntime* rt, std::size_t chunk);

/// Drops the context's roots and its global, collects (finalizers run), and deletes it; `cx` is void afterwards. From
/// another thread, or while the context runs a script, it is put aside and destroyed by its thread when that next makes
/// a call with no script running, or ends.
VC_QXPARSER_API void JS_DestroyContext(JSContext* cx);

/// The runtime the context was made from; null once that is finished.
VC_QXPARSER_API JSRuntime* JS_GetRuntime(JSContext* cx);

///@{
/// One pointer for the host's own use.
VC_QXPARSER_API void* JS_GetContextPrivate(JSContext* cx);
VC_QXPARSER_API void JS_SetContextPrivate(JSContext* cx, void* data);
///@}

struct JSClass;

/// A new global object of the class (js_object.h): it carries the standard names (Math, Array, parseInt, ...), its
/// parent is null, and it becomes global with JS_SetGlobalObject. The result lives like any other (js_gc.h). Null
/// after an error.
VC_QXPARSER_API JSObject* JS_NewGlobal(JSContext* cx, const JSClass* clasp);

/// The object that unqualified names end at; null when none is set. Keeps it alive as long as it is set.
VC_QXPARSER_API JSObject* JS_GetGlobalObject(JSContext* cx);
/// Only objects made with JS_NewGlobal, or null, can be set; others are refused and the misuse hook hears of it.
/// Without a global a context still converts values and makes strings, but does not evaluate.
VC_QXPARSER_API void JS_SetGlobalObject(JSContext* cx, JSObject* obj);

///@{
/// Stops a script that runs longer than this, counted from the outermost call on the context, promise jobs included.
/// 0, the default, sets no limit. Script cannot catch the stop; the call fails and reports
/// "script time limit of N ms exceeded".
VC_QXPARSER_API void JS_SetTimeLimit(JSContext* cx, long milliseconds);
VC_QXPARSER_API long JS_GetTimeLimit(JSContext* cx);
///@}

///@{
/// Stops a script during which the process has grown by more than this since the outermost call on the context began.
/// 0, the default, sets no limit. What matters is the process's resident memory, garbage being collected first; the
/// check runs every few milliseconds, so a fast script overshoots. Reported as
/// "script memory limit of N bytes exceeded".
VC_QXPARSER_API void JS_SetMemoryLimit(JSContext* cx, std::size_t bytes);
VC_QXPARSER_API std::size_t JS_GetMemoryLimit(JSContext* cx);
///@}

/// Stops the script that runs on the context now, if any: reported as "script interrupted". The one function that any
/// thread may call, as long as the context exists.
VC_QXPARSER_API void JS_RequestInterrupt(JSContext* cx);

/// The native stack that scripts of the calling thread may use, counted from where the outermost call is made: 512 KiB
/// by default, and never more than the thread's stack holds. Too deep a recursion is an ordinary script error.
/// Takes effect with the next outermost call.
VC_QXPARSER_API void JS_SetStackQuota(JSContext* cx, std::size_t bytes);

///@{
/// Called with a line of text when a call is refused because the caller broke a rule of this interface: wrong thread,
/// called from a finalizer, not a global. It may be called on any thread. The default, restored by null, writes an
/// error to the log. Returns the previous hook, null for the default.
using JSMisuseHook = void (*)(const char* text);
VC_QXPARSER_API JSMisuseHook JS_SetMisuseHook(JSMisuseHook hook);
///@}

} // namespace qxjs
