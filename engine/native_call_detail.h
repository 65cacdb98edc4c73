#pragma once

#include "engine/property_detail.h"
#include "engine/thread_state_detail.h"

// How script calls natives and property operations of this interface: each is an engine function whose reserved slot
// holds the record of what to call.
namespace qxjs
{

// The one record for these members.
const NativeRecord* FindRecord(ThreadState& t, const NativeRecord& wanted);

// New engine functions in the current realm; null with an error pending.
::JSFunction* NewNativeFunction(ThreadState& t, JSNative native, unsigned nargs, const char* name,
                                JSNumberNative number = nullptr);
::JSFunction* NewConstructor(ThreadState& t, JSNative native, unsigned nargs, const char* name,
                             const HostClass* constructs);
// Accessors are made once a realm and shared: they cannot be told apart by what they do, and making them for each of
// many objects with many properties would cost far more than the objects.
::JSObject* AccessorFunction(ThreadState& t, const AccessorOps& ops, bool is_setter);

} // namespace qxjs
