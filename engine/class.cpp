#include "engine/class_detail.h"

#include <cstring>

#include "engine/jobs_detail.h"
#include "engine/js_gc.h"
#include "engine/late_children_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

constexpr std::size_t kClassesSeen = 1000;

// The context a finalizer gets: the running one, else any, else one that no host knows.
JSContext* ContextForFinalizer(ThreadState& t)
{
    if (t.current)
        return t.current;
    return t.contexts.empty() ? &t.hostless : t.contexts.front();
}

void FinalizeGlobal(JS::GCContext* gcx, ::JSObject* obj)
{
    FinalizeHostObject(gcx, obj);
    delete JS::GetMaybePtrFromReservedSlot<RealmData>(obj, kRealmSlot);
}

void TraceGlobal(JSTracer* trc, ::JSObject* obj)
{
    ::JS_GlobalObjectTraceHook(trc, obj);
    if (auto* data = JS::GetMaybePtrFromReservedSlot<RealmData>(obj, kRealmSlot))
        data->Trace(trc);
}

template <typename Hook> bool IsStub(Hook hook, Hook stub)
{
    return !hook || hook == stub;
}

bool HasOnlyStubs(const JSClass& c)
{
    return IsStub<JSPropertyOp>(c.addProperty, JS_PropertyStub) &&
           IsStub<JSPropertyOp>(c.delProperty, JS_PropertyStub) &&
           IsStub<JSPropertyOp>(c.getProperty, JS_PropertyStub) &&
           IsStub<JSPropertyOp>(c.setProperty, JS_PropertyStub) &&
           IsStub<JSEnumerateOp>(c.enumerate, JS_EnumerateStub) && IsStub<JSResolveOp>(c.resolve, JS_ResolveStub) &&
           IsStub<JSConvertOp>(c.convert, JS_ConvertStub);
}

} // namespace

const ::JSClassOps kObjectOps = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, FinalizeHostObject,
                                 nullptr, nullptr, nullptr};
const ::JSClassOps kGlobalOps = {nullptr,           nullptr,
                                 nullptr,           ::JS_NewEnumerateStandardClasses,
                                 ResolveGlobalName, ::JS_MayResolveStandardClass,
                                 FinalizeGlobal,    nullptr,
                                 nullptr,           TraceGlobal};

void FinalizeHostObject(JS::GCContext*, ::JSObject* obj)
{
    ForgetLateChildren(obj);
    ThreadState* t = t_state;
    if (!t)
        return;
    t->host_objects.Erase(obj);
    const HostClass* host_class = ClassOf(obj);
    if (host_class->members.finalize)
        host_class->members.finalize(ContextForFinalizer(*t), Outer(obj));
}

bool SameClass(const HostClass* found, const JSClass& clasp)
{
    return found && found->members.finalize == clasp.finalize && found->members.flags == clasp.flags &&
           found->name == clasp.name;
}

HostClass* FindClass(ThreadState& t, const JSClass& clasp, bool is_global)
{
    if (!HasOnlyStubs(clasp)) {
        ::JS_ReportErrorUTF8(t.engine, "class %s has hooks that are not supported", clasp.name);
        return nullptr;
    }
    const auto same = [&](const HostClass* known) { return known->is_global == is_global && SameClass(known, clasp); };
    const auto seen = t.classes_seen.find(&clasp);
    if (seen != t.classes_seen.end() && same(seen->second))
        return seen->second;
    if (t.classes_seen.size() >= kClassesSeen)
        t.classes_seen.clear();
    for (auto& known : t.classes) {
        if (same(known.get()))
            return t.classes_seen[&clasp] = known.get();
    }
    auto made = std::make_unique<HostClass>();
    made->name = clasp.name;
    made->members = clasp;
    made->members.name = made->name.c_str();
    made->is_global = is_global;
    made->engine_class.name = made->name.c_str();
    const bool has_late = !is_global && (clasp.flags & JSCLASS_HAS_LATE_CHILDREN) != 0;
    const std::uint32_t slots = has_late ? kLateSlot + 1 : kParentSlot + 1;
    made->engine_class.flags =
        (is_global ? JSCLASS_GLOBAL_FLAGS : JSCLASS_HAS_RESERVED_SLOTS(slots)) | JSCLASS_FOREGROUND_FINALIZE;
    made->engine_class.cOps = is_global ? &kGlobalOps : has_late ? &kLateParentOps : &kObjectOps;
    t.classes.push_back(std::move(made));
    return t.classes_seen[&clasp] = t.classes.back().get();
}

::JSObject* NewGlobalObject(ThreadState& t, HostClass& host_class)
{
    JS::RealmOptions options;
    if (t.default_global)
        options.creationOptions().setExistingCompartment(t.default_global);
    JS::RootedObject global(
        t.engine, ::JS_NewGlobalObject(t.engine, &host_class.engine_class, nullptr, JS::FireOnNewGlobalHook, options));
    if (!global)
        return nullptr;
    JS::SetReservedSlot(global, kPrivateSlot, JS::PrivateValue(nullptr));
    JS::SetReservedSlot(global, kRealmSlot, JS::PrivateValue(new RealmData));
    if (t.default_global) // hosts know nothing of the default one
        t.host_objects.Insert(global);
    return global;
}

void InitHostObject(ThreadState& t, ::JSObject* obj, ::JSObject* parent)
{
    JS::SetReservedSlot(obj, kPrivateSlot, JS::PrivateValue(nullptr));
    JS::SetReservedSlot(obj, kParentSlot, JS::ObjectOrNullValue(parent));
    t.host_objects.Insert(obj);
}

void RealmData::Trace(JSTracer* trc)
{
    cache.Trace(trc);
    for (auto& prototype : prototypes)
        js::gc::TraceExternalEdge(trc, &prototype.second, "class prototype");
    for (auto& accessor : accessors) {
        if (accessor.second)
            js::gc::TraceExternalEdge(trc, &accessor.second, "accessor function");
    }
}

RealmData& DataOf(ThreadState& t, const JSContext& cx)
{
    return DataOfGlobal(GlobalOf(t, cx));
}

JSBool JS_PropertyStub(JSContext*, JSObject*, jsval, jsval*)
{
    return JS_TRUE;
}

JSBool JS_EnumerateStub(JSContext*, JSObject*)
{
    return JS_TRUE;
}

JSBool JS_ResolveStub(JSContext*, JSObject*, jsval)
{
    return JS_TRUE;
}

JSBool JS_ConvertStub(JSContext*, JSObject*, JSType, jsval*)
{
    return JS_TRUE;
}

void JS_FinalizeStub(JSContext*, JSObject*) {}

const JSClass* JS_GetClass(JSContext* cx, JSObject* obj)
{
    const HostClass* host_class = UsableInFinalizer(cx, __func__) && obj ? ClassOf(Inner(obj)) : nullptr;
    return host_class ? &host_class->members : nullptr;
}

void* JS_GetPrivate(JSContext* cx, JSObject* obj)
{
    return UsableInFinalizer(cx, __func__) && obj ? PrivateOf(Inner(obj)) : nullptr;
}

JSBool JS_SetPrivate(JSContext* cx, JSObject* obj, void* data)
{
    if (!UsableInFinalizer(cx, __func__) || !obj || !ClassOf(Inner(obj)))
        return JS_FALSE;
    JS::SetReservedSlot(Inner(obj), kPrivateSlot, JS::PrivateValue(data));
    return JS_TRUE;
}

JSBool JS_InstanceOf(JSContext* cx, JSObject* obj, const JSClass* clasp, jsval* argv)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return JS_FALSE;
    if (obj && SameClass(ClassOf(Inner(obj)), *clasp))
        return JS_TRUE;
    if (argv)
        ::JS_ReportErrorNumberASCII(t->engine, js::GetErrorMessage, nullptr, JSMSG_INCOMPATIBLE_PROTO, clasp->name,
                                    "method", obj ? JS::GetClass(Inner(obj))->name : "null");
    return JS_FALSE;
}

void* JS_GetInstancePrivate(JSContext* cx, JSObject* obj, const JSClass* clasp, jsval* argv)
{
    return JS_InstanceOf(cx, obj, clasp, argv) ? JS_GetPrivate(cx, obj) : nullptr;
}

} // namespace qxjs
