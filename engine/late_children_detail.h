#pragma once

#include "engine/class_detail.h"

// Children of an object whose properties are defined when somebody could tell that they are not: see JS_AddLateChild.
namespace qxjs
{

// The slot of an object for what it keeps of them.
constexpr std::uint32_t kLateSlot = 2;

// Before the object's finalizer: none of its children waits any more.
void ForgetLateChildren(::JSObject* obj);

// Defines what waits, on every object of the thread. False, with an error pending, when memory runs out.
bool DefineAllLateChildren(ThreadState& t);

} // namespace qxjs
