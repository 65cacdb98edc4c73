#include <cstring>

#include "engine/class_detail.h"
#include "engine/id_array_detail.h"
#include "engine/js_gc.h"
#include "engine/words_detail.h"

namespace qxjs
{

jsval WordAt(const ThreadState& t, const void* address)
{
    jsval word = 0;
    std::memcpy(&word, address, sizeof word);
    if (!JSVAL_IS_OBJECT(word) || JSVAL_IS_NULL(word))
        return word;
    void* thing = JSVAL_TO_GCTHING(word);
    if (t.doubles.Contains(thing))
        return DOUBLE_TO_JSVAL(static_cast<jsdouble*>(thing));
    if (JS::GCThingTraceKind(thing) == JS::TraceKind::String)
        return STRING_TO_JSVAL(static_cast<JSString*>(thing));
    return word;
}

void TraceWord(JSTracer* trc, jsval v)
{
    if (JSVAL_IS_STRING(v)) {
        if (::JSString* str = Inner(JSVAL_TO_STRING(v)))
            js::gc::TraceExternalEdge(trc, &str, "string word");
    } else if (JSVAL_IS_OBJECT(v)) {
        if (::JSObject* obj = Inner(JSVAL_TO_OBJECT(v)))
            js::gc::TraceExternalEdge(trc, &obj, "object word");
    }
}

static void TraceContext(JSTracer* trc, JSContext& cx)
{
    if (cx.global)
        js::gc::TraceExternalEdge(trc, &cx.global, "context global");
    for (auto& script : cx.scripts)
        js::gc::TraceExternalEdge(trc, &script->script, "compiled script");
}

void TraceRoots(JSTracer* trc, void* thread)
{
    auto& t = *static_cast<ThreadState*>(thread);
    if (t.default_global)
        js::gc::TraceExternalEdge(trc, &t.default_global, "default global");
    for (JSContext* cx : t.contexts)
        TraceContext(trc, *cx);
    for (jsval v : t.locals)
        TraceWord(trc, v);
    for (const auto& root : t.roots)
        TraceWord(trc, WordAt(t, root.first));
    for (::JSObject*& promise : t.rejected)
        js::gc::TraceExternalEdge(trc, &promise, "rejected promise");
    if (t.held_symbol)
        js::gc::TraceExternalEdge(trc, &t.held_symbol, "symbol of held objects");
    for (::JSString*& str : t.interned)
        js::gc::TraceExternalEdge(trc, &str, "interned string");
    // The table is keyed by address: what is in it must live, or another string could take the place.
    for (auto& chars : t.string_chars) {
        ::JSString* str = chars.first;
        js::gc::TraceExternalEdge(trc, &str, "string with characters handed out");
    }
    for (const IdArray* ids : t.id_arrays) {
        for (jsid id : ids->words)
            TraceWord(trc, id);
    }
}

void SweepStringChars(ThreadState& t)
{
    if (t.string_chars.empty())
        return;
    PointerSet held;
    const auto note = [&](jsval v) {
        if (JSVAL_IS_STRING(v))
            held.Insert(JSVAL_TO_STRING(v));
    };
    for (jsval v : t.locals)
        note(v);
    for (const auto& root : t.roots)
        note(WordAt(t, root.first));
    for (auto chars = t.string_chars.begin(); chars != t.string_chars.end();) {
        const bool keep = held.Contains(chars->first) || t.interned_set.Contains(chars->first);
        chars = keep ? std::next(chars) : t.string_chars.erase(chars);
    }
}

JSBool JS_AddNamedRoot(JSContext* cx, void* rp, const char* name)
{
    ThreadState* t = UsableInFinalizer(cx, __func__);
    if (!t || !rp)
        return JS_FALSE;
    t->roots.Add(rp, cx, name);
    return JS_TRUE;
}

JSBool JS_AddRoot(JSContext* cx, void* rp)
{
    return JS_AddNamedRoot(cx, rp, nullptr);
}

JSBool JS_RemoveRoot(JSContext* cx, void* rp)
{
    // Static objects that hold roots go after the thread's engine, which has taken its roots along.
    if (cx && !cx->thread.load(std::memory_order_relaxed))
        return JS_TRUE;
    ThreadState* t = UsableInFinalizer(cx, __func__);
    if (!t)
        return JS_FALSE;
    t->roots.Remove(rp);
    return JS_TRUE;
}

JSBool JS_EnterLocalRootScope(JSContext* cx)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return JS_FALSE;
    if (t->locals.IsFull())
        t->MakeRoomForLocals();
    t->locals.BeginScope();
    return JS_TRUE;
}

void JS_LeaveLocalRootScope(JSContext* cx)
{
    ThreadState* t = Usable(cx, __func__);
    if (t && t->locals.HasScopes())
        t->locals.EndScope();
}

void JS_ClearNewbornRoots(JSContext* cx)
{
    ThreadState* t = Usable(cx, __func__);
    if (t && t->AtRest()) {
        t->locals.Truncate(0);
        SweepStringChars(*t);
    }
}

void JS_GC(JSContext* cx)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return;
    JS_ClearNewbornRoots(cx);
    JSContext* before = t->current;
    t->current = cx; // finalizers get the context that collects
    ::JS_GC(t->engine);
    t->current = before;
    if (t->depth == 0)
        RunSafePoint(*t);
}

void JS_MaybeGC(JSContext* cx)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return;
    ::JS_MaybeGC(t->engine);
    if (t->depth == 0)
        RunSafePoint(*t);
}

static bool HeldByHost(ThreadState& t, const void* thing)
{
    for (const JSContext* cx : t.contexts) {
        if (cx->global == thing)
            return true;
    }
    return t.roots.Holds(thing);
}

JSBool JS_IsAboutToBeFinalized(JSContext* cx, void* thing)
{
    ThreadState* t = UsableInFinalizer(cx, __func__);
    if (!t || !thing || !t->host_objects.Contains(thing))
        return JS_TRUE;
    if (!t->collecting)
        return !HeldByHost(*t, thing);
    auto* obj = static_cast<::JSObject*>(thing);
    return js::gc::EdgeNeedsSweepUnbarriered(&obj);
}

void JS_AddNativeMemory(JSContext* cx, JSObject* obj, std::size_t bytes)
{
    if (Usable(cx, __func__))
        JS::AddAssociatedMemory(Inner(obj), bytes, JS::MemoryUse::Embedding1);
}

void JS_RemoveNativeMemory(JSContext* cx, JSObject* obj, std::size_t bytes)
{
    if (UsableInFinalizer(cx, __func__))
        JS::RemoveAssociatedMemory(Inner(obj), bytes, JS::MemoryUse::Embedding1);
}

bool JS_SetStress(bool on)
{
    return g_stress.exchange(on);
}

std::size_t JS_CountHostObjects()
{
    return t_state ? t_state->host_objects.Size() : 0;
}

} // namespace qxjs
