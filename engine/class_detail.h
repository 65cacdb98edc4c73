#pragma once

#include "engine/script_cache_detail.h"
#include "engine/thread_state_detail.h"

namespace qxjs
{

// The engine's class for a host's class record. It must be the first member: the engine hands out its address.
struct HostClass
{
    ::JSClass engine_class;
    std::string name;
    JSClass members; // `name` points into the member above
    bool is_global;
};

constexpr std::uint32_t kPrivateSlot = 0;
constexpr std::uint32_t kParentSlot = 1;
constexpr std::uint32_t kRealmSlot = 2; // of globals only

// The class for a record, made on first sight; null with an error pending when it asks for hooks the engine does not
// call.
HostClass* FindClass(ThreadState& t, const JSClass& clasp, bool is_global);
bool SameClass(const HostClass* found, const JSClass& clasp);

// What tells objects made by this interface.
extern const ::JSClassOps kObjectOps;
extern const ::JSClassOps kLateParentOps; // of classes with late children
extern const ::JSClassOps kGlobalOps;
inline bool IsOurGlobal(::JSObject* obj)
{
    return JS::GetClass(obj)->cOps == &kGlobalOps;
}
// The class of such an object; null for other objects.
inline const HostClass* ClassOf(::JSObject* obj)
{
    const ::JSClass* engine_class = JS::GetClass(obj);
    if (engine_class->cOps != &kObjectOps && engine_class->cOps != &kLateParentOps && engine_class->cOps != &kGlobalOps)
        return nullptr;
    return reinterpret_cast<const HostClass*>(engine_class);
}
// What the host keeps in such an object; null for other objects.
inline void* PrivateOf(::JSObject* obj)
{
    return ClassOf(obj) ? JS::GetMaybePtrFromReservedSlot<void>(obj, kPrivateSlot) : nullptr;
}

// A new global in the one compartment all globals of a thread share, so that objects pass between them as they are.
::JSObject* NewGlobalObject(ThreadState& t, HostClass& host_class);

// The finalizer of the objects of hosts' classes.
void FinalizeHostObject(JS::GCContext* gcx, ::JSObject* obj);

// Sets up a new object of a class other than a global's.
void InitHostObject(ThreadState& t, ::JSObject* obj, ::JSObject* parent);

// What belongs to one global and is kept alive by it, and only by it: the global's own trace hook traces this, so
// that a cached script, which refers to its global, does not keep it alive.
struct RealmData
{
    ScriptCache cache;
    std::unordered_map<const HostClass*, ::JSObject*> prototypes;
    std::unordered_map<const NativeRecord*, ::JSObject*> accessors;
    void Trace(JSTracer* trc);
};

inline RealmData& DataOfGlobal(::JSObject* global)
{
    return *JS::GetMaybePtrFromReservedSlot<RealmData>(global, kRealmSlot);
}
// The context's global, or the default one.
inline ::JSObject* GlobalOf(const ThreadState& t, const JSContext& cx)
{
    return cx.global ? cx.global : t.default_global;
}
RealmData& DataOf(ThreadState& t, const JSContext& cx);

} // namespace qxjs
