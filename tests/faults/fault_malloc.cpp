// A library to be loaded before a program (LD_PRELOAD) whose allocations fail: the one of the number in QXP_FAILING, or
// with a "+" behind that all from it on. Numbers count from 1 at the loading of this library.
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#define FAULTY extern "C" __attribute__((visibility("default")))

// What stands behind the C library's own functions.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace
{

std::atomic<long> g_count{0};
long g_failing = 0;
bool g_allBehind = false;

__attribute__((constructor)) void ReadEnvironment()
{
    const char* const text = std::getenv("QXP_FAILING");
    char* end = nullptr;
    g_failing = text ? std::strtol(text, &end, 10) : 0;
    g_allBehind = end && *end == '+';
    g_count = 0;
}

bool Fails()
{
    const long number = ++g_count;
    if (g_failing == 0 || number < g_failing || (number > g_failing && !g_allBehind))
        return false;
    errno = ENOMEM;
    return true;
}

} // namespace

FAULTY void* malloc(size_t size)
{
    return Fails() ? nullptr : __libc_malloc(size);
}

FAULTY void* calloc(size_t count, size_t size)
{
    return Fails() ? nullptr : __libc_calloc(count, size);
}

FAULTY void* realloc(void* block, size_t size)
{
    return Fails() ? nullptr : __libc_realloc(block, size);
}

FAULTY void* memalign(size_t alignment, size_t size)
{
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}

FAULTY void* aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

FAULTY int posix_memalign(void** block, size_t alignment, size_t size)
{
    if (Fails())
        return ENOMEM;
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
