#pragma once

#include <cstddef>
#include <cstdint>

namespace qxjs
{

struct ThreadState;

constexpr std::size_t kDefaultStackQuota = 512 * 1024;

struct ThreadStack
{
    std::uintptr_t base = 0; // the highest address
    std::size_t size = 0;
};
// Of the calling thread.
ThreadStack MeasureStack();

// Gives script its quota of the stack, counted from the address: counted from the thread's start, a host that calls
// from deep inside its own code would find the quota used up. Only with no script running.
void SetStackQuota(ThreadState& t, std::uintptr_t here);

} // namespace qxjs
