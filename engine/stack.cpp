#include "engine/stack_detail.h"

#include <algorithm>
#include <cstdint>

#include <pthread.h>
#include <sys/resource.h>

#include "engine/thread_state_detail.h"

namespace qxjs
{

namespace
{

// What must stay free below script: natives check their depth only between script frames.
std::size_t Reserve(std::size_t stack_size)
{
    return std::max<std::size_t>(256 * 1024, stack_size / 4);
}

} // namespace

ThreadStack MeasureStack()
{
    ThreadStack stack{reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)), kDefaultStackQuota};
    pthread_attr_t attributes;
    if (::pthread_getattr_np(::pthread_self(), &attributes) == 0) {
        void* lowest = nullptr;
        std::size_t size = 0;
        if (::pthread_attr_getstack(&attributes, &lowest, &size) == 0)
            stack = {reinterpret_cast<std::uintptr_t>(lowest) + size, size};
        ::pthread_attr_destroy(&attributes);
    }
    return stack;
}

void SetStackQuota(ThreadState& t, std::uintptr_t here)
{
    t.stack_quota_from = here;
    const ThreadStack& stack = t.stack;
    const std::size_t used = stack.base > here ? stack.base - here : 0;
    const std::size_t usable = stack.size > Reserve(stack.size) ? stack.size - Reserve(stack.size) : stack.size / 2;
    // At least a little, so that a host this deep gets "too much recursion" from its script and not from nothing.
    const std::size_t quota = std::max<std::size_t>(std::min(used + t.stack_quota, usable), 64 * 1024);
    if (quota == t.stack_used_at_quota)
        return;
    t.stack_used_at_quota = quota;
    ::JS_SetNativeStackQuota(t.engine, quota);
}

} // namespace qxjs
