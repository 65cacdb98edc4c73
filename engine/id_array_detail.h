#pragma once

#include <vector>

#include "engine/js_object.h"

namespace qxjs
{

// A JSIdArray with its storage; the thread's list of them keeps the ids alive.
struct IdArray : JSIdArray
{
    std::vector<jsid> words;
};

} // namespace qxjs
