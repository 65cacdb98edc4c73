#pragma once

#include "engine/entry_detail.h"

namespace qxjs
{

struct AccessorOps
{
    JSPropertyOp getter;
    JSPropertyOp setter;
    JSNumberFieldOp field;
    jsval id;
};

// A property name from Latin-1.
bool NarrowId(Entry& entry, const char* name, JS::MutableHandleId id);

bool DefineAccessor(Entry& entry, JS::HandleObject obj, JS::HandleId name, const AccessorOps& ops, uintN attrs);
bool DefineData(Entry& entry, JS::HandleObject obj, JS::HandleId name, jsval value, uintN attrs);

} // namespace qxjs
