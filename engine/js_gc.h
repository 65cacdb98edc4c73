#pragma once

#include "base/api.h"
#include "engine/js_types.h"

/// @file
/// What lives, and how long.
///
/// Things never move; a word or pointer stays good as long as its thing lives. A thing lives while it can be reached
/// from a context's global, from a root, from running script, from a local root scope, or from the recent results:
///
/// - In a native (or a getter, setter), its arguments and everything this interface returned to it live until it
///   returns.
/// - Outside natives, everything returned lives until an outermost evaluation or call ends; the 64 newest results, the
///   call's own among them, outlive even that. (A program that never evaluates keeps its last million results.)
///   JS_GC and JS_ClearNewbornRoots drop all of them.
/// - What must live longer is put below something that lives, or rooted.
namespace qxjs
{

///@{
/// Roots: `rp` is the address of a word (jsval), or of a JSObject*, JSString*, JSFunction* or jsdouble*; whatever it
/// holds at the time of a collection lives, and null is fine. One root an address. Destroying the context removes the
/// roots made through it. False when refused.
VC_QXPARSER_API JSBool JS_AddRoot(JSContext* cx, void* rp);
VC_QXPARSER_API JSBool JS_AddNamedRoot(JSContext* cx, void* rp, const char* name);
///@}

/// True also when there was no such root, or not any more since the thread's engine has ended.
VC_QXPARSER_API JSBool JS_RemoveRoot(JSContext* cx, void* rp);

///@{
/// Everything returned between the two lives until the second: for host code outside natives that builds things.
VC_QXPARSER_API JSBool JS_EnterLocalRootScope(JSContext* cx);
VC_QXPARSER_API void JS_LeaveLocalRootScope(JSContext* cx);
///@}

/// Collects what cannot be reached; outside natives and local root scopes the recent results go first.
VC_QXPARSER_API void JS_GC(JSContext* cx);
/// Collects when the engine thinks it is time.
VC_QXPARSER_API void JS_MaybeGC(JSContext* cx);
/// Drops the recent results; does nothing inside natives and local root scopes.
VC_QXPARSER_API void JS_ClearNewbornRoots(JSContext* cx);

/// During a collection: whether this one found the thing dead. Otherwise: true unless `thing` is a live object of a
/// host's class that a root or a context's global holds directly; so true for what no host code holds on to. Never
/// looks into `thing`, which may be long gone.
VC_QXPARSER_API JSBool JS_IsAboutToBeFinalized(JSContext* cx, void* thing);

/// Calls `fn(data)` as soon as no script runs on the calling thread and no collection is going on: at once when that is
/// so, else at the end of the outermost call, at the latest when the thread's engine ends; then, engine calls are
/// refused. Calls come in the order they were asked for. For finalizers that have more to do than they may.
VC_QXPARSER_API void JS_CallAtSafePoint(JSContext* cx, void (*fn)(void* data), void* data);
/// The number of a call that waits; never 0.
using JSCallTicket = std::uint64_t;
/// As JS_CallAtSafePoint, but it may come sooner: when a function or constructor of the host that script called has
/// returned and no other native is running. For destroying what no script can reach any more: until its script ends, a
/// loop that makes and drops objects would keep all of them. Errors in `fn` are reported, the script goes on. `ticket`
/// (may be null) receives, before a call that comes at once, what JS_CancelCall takes.
VC_QXPARSER_API void JS_CallAfterNative(JSContext* cx, void (*fn)(void* data), void* data,
                                        JSCallTicket* ticket = nullptr);
/// Has a call with this `data` not come any more, on the thread that asked for it. Nothing happens when it has come.
VC_QXPARSER_API void JS_CancelCall(JSCallTicket ticket, const void* data);

///@{
/// Objects that a context has made live on behind it while others hold them. Has `hook` called when the context is
/// destroyed, behind its last collection, for each object of hosts' classes that the thread's engine holds then, of
/// whatever context; it may do what a finalizer may (js_types.h). Not called when the thread's engine ends first, which
/// finalizes all objects. Returns the previous hook; null, as at first, for none.
using JSSurvivorHook = void (*)(JSContext* cx, JSObject* obj);
VC_QXPARSER_API JSSurvivorHook JS_SetSurvivorHook(JSContext* cx, JSSurvivorHook hook);
///@}

///@{
/// Tells the collector that `obj` keeps so many bytes of native memory alive, so that it collects in time. Taken back
/// with the same number, at the latest in the finalizer.
VC_QXPARSER_API void JS_AddNativeMemory(JSContext* cx, JSObject* obj, std::size_t bytes);
VC_QXPARSER_API void JS_RemoveNativeMemory(JSContext* cx, JSObject* obj, std::size_t bytes);
///@}

/// For tests: collects at the start and end of every call that could, on all threads. Slow. Returns what it was.
VC_QXPARSER_API bool JS_SetStress(bool on);

/// For tests: how many objects of hosts' classes the calling thread's engine holds.
VC_QXPARSER_API std::size_t JS_CountHostObjects();

} // namespace qxjs
