#include <algorithm>
#include <mutex>
#include <unordered_set>

#include <wx/log.h>

#include "engine/class_detail.h"
#include "engine/entry_detail.h"
#include "engine/js_gc.h"
#include "engine/late_children_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

// All contexts of the process, for what happens to them from outside: the end of their thread or runtime, destruction
// ordered by another thread. Never destroyed, because contexts may be used until the very end of the process.
struct Registry
{
    std::mutex mutex;
    std::unordered_set<JSContext*> contexts;
};

Registry& TheRegistry()
{
    static Registry& registry = *new Registry;
    return registry;
}

std::atomic<JSMisuseHook> g_misuse_hook{nullptr};

void DeleteContext(JSContext* cx)
{
    {
        std::lock_guard<std::mutex> lock(TheRegistry().mutex);
        TheRegistry().contexts.erase(cx);
    }
    delete cx;
}

// Nothing may run or be made meanwhile, as in a collection: what the hook puts off waits for a safe point.
void ShowSurvivors(ThreadState& t, JSContext& cx)
{
    if (!cx.survivor_hook)
        return;
    // What is cut off now is still found by its name.
    if (!DefineAllLateChildren(t))
        ::JS_ClearPendingException(t.engine);
    t.collecting = true;
    t.host_objects.ForEach([&](void* obj) { cx.survivor_hook(&cx, static_cast<JSObject*>(obj)); });
    t.collecting = false;
}

} // namespace

JSContext::JSContext() = default;
JSContext::~JSContext() = default;

void ReportMisuse(const char* text)
{
    if (JSMisuseHook hook = g_misuse_hook.load())
        hook(text);
    else
        wxLogError("%s", text);
}

void RefuseCall(JSContext* cx, const char* function)
{
    const char* reason = "without a context";
    if (cx) {
        const ThreadState* owner = cx->thread.load();
        reason = !owner             ? "after the end of the context's thread"
                 : owner != t_state ? "from another thread than the context's"
                                    : "during a garbage collection";
    }
    ReportMisuse((std::string(function) + " called " + reason + "; refused").c_str());
}

JSMisuseHook JS_SetMisuseHook(JSMisuseHook hook)
{
    return g_misuse_hook.exchange(hook);
}

JSRuntime* JS_Init(std::uint32_t)
{
    return new JSRuntime;
}

JSRuntime* JS_NewRuntime(std::uint32_t max_bytes)
{
    return JS_Init(max_bytes);
}

void JS_Finish(JSRuntime* rt)
{
    {
        std::lock_guard<std::mutex> lock(TheRegistry().mutex);
        for (JSContext* cx : TheRegistry().contexts) {
            if (cx->runtime.load() == rt)
                cx->runtime = nullptr;
        }
    }
    delete rt;
}

void JS_DestroyRuntime(JSRuntime* rt)
{
    JS_Finish(rt);
}

void JS_ShutDown() {}

JSBool JS_SetThrowHook(JSRuntime* rt, JSTrapHandler hook, void* closure)
{
    if (!rt)
        return JS_FALSE;
    rt->throw_hook = hook;
    rt->throw_closure = closure;
    return JS_TRUE;
}

JSRuntime* JS_GetRuntime(JSContext* cx)
{
    return cx ? cx->runtime.load() : nullptr;
}

JSContext* JS_NewContext(JSRuntime* rt, std::size_t)
{
    ThreadState* t = StartThread();
    if (!t || t->collecting)
        return nullptr;
    if (t->depth == 0)
        RunSafePoint(*t);
    auto* cx = new JSContext;
    cx->thread = t;
    cx->runtime = rt;
    t->contexts.push_back(cx);
    std::lock_guard<std::mutex> lock(TheRegistry().mutex);
    TheRegistry().contexts.insert(cx);
    return cx;
}

void DestroyContextNow(ThreadState& t, JSContext* cx)
{
    cx->global = nullptr;
    StayInDefaultRealm(t);
    cx->scripts.clear();
    t.roots.RemoveOf(cx);
    if (t.AtRest())
        t.locals.Truncate(0);
    // The context is there until its objects are gone: their finalizers get it.
    JSContext* before = t.current;
    t.current = cx;
    SweepStringChars(t);
    ::JS_GC(t.engine);
    ShowSurvivors(t, *cx);
    t.current = before;
    t.contexts.erase(std::remove(t.contexts.begin(), t.contexts.end(), cx), t.contexts.end());
    DeleteContext(cx);
}

// Gives the context to its thread to destroy; false when that has ended.
static bool OrderDestruction(JSContext* cx)
{
    std::lock_guard<std::mutex> lock(TheRegistry().mutex);
    ThreadState* owner = cx->thread.load();
    if (!owner)
        return false;
    if (std::find(owner->orders.begin(), owner->orders.end(), cx) == owner->orders.end())
        owner->orders.push_back(cx);
    owner->has_orders = true;
    return true;
}

void JS_DestroyContext(JSContext* cx)
{
    if (!cx)
        return;
    ThreadState* owner = cx->thread.load();
    if (owner && owner == t_state && cx->depth == 0 && !owner->collecting) {
        DestroyContextNow(*owner, cx);
        if (owner->depth == 0)
            RunSafePoint(*owner);
    } else if (!owner || !OrderDestruction(cx)) {
        DeleteContext(cx);
    }
}

std::vector<JSContext*> TakeOrders(ThreadState& t)
{
    std::vector<JSContext*> orders;
    std::lock_guard<std::mutex> lock(TheRegistry().mutex);
    orders.swap(t.orders);
    t.has_orders = false;
    return orders;
}

void OrphanContexts(ThreadState& t)
{
    std::vector<JSContext*> orders;
    {
        std::lock_guard<std::mutex> lock(TheRegistry().mutex);
        for (JSContext* cx : t.contexts) {
            cx->thread = nullptr;
            cx->global = nullptr;
            cx->scripts.clear();
        }
        orders.swap(t.orders);
    }
    t.contexts.clear();
    for (JSContext* cx : orders)
        DeleteContext(cx);
}

void* JS_GetContextPrivate(JSContext* cx)
{
    return cx ? cx->host_data : nullptr;
}

void JS_SetContextPrivate(JSContext* cx, void* data)
{
    if (cx)
        cx->host_data = data;
}

JSErrorReporter JS_SetErrorReporter(JSContext* cx, JSErrorReporter reporter)
{
    if (!cx)
        return nullptr;
    std::swap(cx->reporter, reporter);
    return reporter;
}

JSSurvivorHook JS_SetSurvivorHook(JSContext* cx, JSSurvivorHook hook)
{
    if (!cx)
        return nullptr;
    std::swap(cx->survivor_hook, hook);
    return hook;
}

JSObject* JS_NewGlobal(JSContext* cx, const JSClass* clasp)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    HostClass* host_class = FindClass(entry.Thread(), *clasp, true);
    ::JSObject* global = host_class ? NewGlobalObject(entry.Thread(), *host_class) : nullptr;
    if (!global) {
        entry.Fail();
        return nullptr;
    }
    entry.Thread().Keep(OBJECT_TO_JSVAL(Outer(global)));
    return Outer(global);
}

JSObject* JS_GetGlobalObject(JSContext* cx)
{
    return cx ? Outer(cx->global) : nullptr;
}

void JS_SetGlobalObject(JSContext* cx, JSObject* obj)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return;
    if (obj && !IsOurGlobal(Inner(obj))) {
        ReportMisuse("JS_SetGlobalObject called with an object that JS_NewGlobal did not make; refused");
        return;
    }
    cx->global = Inner(obj);
    StayInDefaultRealm(*t);
}

void JS_SetTimeLimit(JSContext* cx, long milliseconds)
{
    if (Usable(cx, __func__))
        cx->limits.time_ms = std::max(0L, milliseconds);
}

long JS_GetTimeLimit(JSContext* cx)
{
    return Usable(cx, __func__) ? cx->limits.time_ms : 0;
}

void JS_SetMemoryLimit(JSContext* cx, std::size_t bytes)
{
    if (Usable(cx, __func__))
        cx->limits.memory_bytes = bytes;
}

std::size_t JS_GetMemoryLimit(JSContext* cx)
{
    return Usable(cx, __func__) ? cx->limits.memory_bytes : 0;
}

void JS_SetStackQuota(JSContext* cx, std::size_t bytes)
{
    if (ThreadState* t = Usable(cx, __func__)) {
        t->stack_quota = bytes;
        t->stack_quota_from = 0;
    }
}

void JS_RequestInterrupt(JSContext* cx)
{
    // The lock keeps the owner's engine from ending meanwhile.
    std::lock_guard<std::mutex> lock(TheRegistry().mutex);
    ThreadState* owner = cx ? cx->thread.load() : nullptr;
    if (!owner)
        return;
    cx->interrupt_requested = true;
    ::JS_RequestInterruptCallback(owner->engine);
}

} // namespace qxjs
