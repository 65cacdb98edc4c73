// A library to be loaded before a program (LD_PRELOAD) that counts the calls of the system that have to do with files,
// and on request fails one, all from one on, or ends the process at one: see faults.h.
//
// The functions stand here without their headers, which declare them in ways that differ between versions.
#include "tests/faults/faults.h"

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <sys/types.h>

#define FAULTY extern "C" __attribute__((visibility("default")))

namespace
{

struct State
{
    std::atomic<long> count{0};
    std::atomic<long> at{0};
    std::atomic<int> action{static_cast<int>(Fault::none)};
    std::atomic<int> error{0};
};

State g_state;

/// Where the number of calls is told besides.
long* g_told = nullptr;

/// What is to happen at the call that begins now.
Fault NextFault()
{
    const auto action = static_cast<Fault>(g_state.action.load());
    if (action == Fault::none)
        return Fault::none;
    const long number = ++g_state.count;
    if (g_told)
        *g_told = number;
    const bool goesOn = action == Fault::failFrom || action == Fault::trickle || action == Fault::interrupt;
    if (goesOn ? number < g_state.at : number != g_state.at)
        return Fault::none;
    if (action == Fault::kill)
        ::raise(SIGKILL);
    errno = g_state.error;
    return action;
}

bool IsFailure(Fault fault)
{
    return fault == Fault::fail || fault == Fault::failFrom;
}

bool Fails()
{
    return IsFailure(NextFault());
}

/// How much of `size` bytes a call that reads or writes is to move; -1 when it is to fail.
ssize_t NextSize(size_t size)
{
    static std::atomic<bool> interrupted{false};
    const Fault fault = NextFault();
    if (IsFailure(fault))
        return -1;
    if (fault == Fault::interrupt && !interrupted.exchange(true)) {
        errno = EINTR;
        return -1;
    }
    interrupted = false;
    if (size > 1 && fault == Fault::trickle)
        return 1;
    return static_cast<ssize_t>(size > 1 && fault == Fault::shorten ? size / 2 : size);
}

template <typename Function> Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

template <typename Result, typename... Arguments>
Result Call(Result (*real)(Arguments...), typename std::common_type<Arguments>::type... arguments)
{
    return Fails() ? static_cast<Result>(-1) : real(arguments...);
}

} // namespace

FAULTY void vcq_fault_arm(Fault action, long at, int error)
{
    g_state.action = static_cast<int>(Fault::none);
    g_state.count = 0;
    g_state.at = at;
    g_state.error = error;
    g_state.action = static_cast<int>(action);
}

FAULTY long vcq_fault_disarm()
{
    g_state.action = static_cast<int>(Fault::none);
    return g_state.count;
}

FAULTY void vcq_fault_tell(long* number)
{
    g_told = number;
}

FAULTY int open(const char* path, int flags, ...)
{
    static auto* const real = Real<int(const char*, int, mode_t)>("open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Call(real, path, flags, mode);
}

FAULTY int open64(const char* path, int flags, ...)
{
    static auto* const real = Real<int(const char*, int, mode_t)>("open64");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Call(real, path, flags, mode);
}

FAULTY int openat(int directory, const char* path, int flags, ...)
{
    static auto* const real = Real<int(int, const char*, int, mode_t)>("openat");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Call(real, directory, path, flags, mode);
}

FAULTY int openat64(int directory, const char* path, int flags, ...)
{
    static auto* const real = Real<int(int, const char*, int, mode_t)>("openat64");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Call(real, directory, path, flags, mode);
}

FAULTY int close(int fd)
{
    static auto* const real = Real<int(int)>("close");
    // A failed close has closed all the same.
    const bool fails = Fails();
    const int error = errno;
    const int result = real(fd);
    if (fails)
        errno = error;
    return fails ? -1 : result;
}

FAULTY ssize_t read(int fd, void* to, size_t size)
{
    static auto* const real = Real<ssize_t(int, void*, size_t)>("read");
    const ssize_t moved = NextSize(size);
    return moved < 0 ? -1 : real(fd, to, static_cast<size_t>(moved));
}

FAULTY ssize_t write(int fd, const void* from, size_t size)
{
    static auto* const real = Real<ssize_t(int, const void*, size_t)>("write");
    const ssize_t moved = NextSize(size);
    return moved < 0 ? -1 : real(fd, from, static_cast<size_t>(moved));
}

FAULTY ssize_t pread(int fd, void* to, size_t size, off_t position)
{
    static auto* const real = Real<ssize_t(int, void*, size_t, off_t)>("pread");
    const ssize_t moved = NextSize(size);
    return moved < 0 ? -1 : real(fd, to, static_cast<size_t>(moved), position);
}

FAULTY ssize_t pread64(int fd, void* to, size_t size, off64_t position)
{
    static auto* const real = Real<ssize_t(int, void*, size_t, off64_t)>("pread64");
    const ssize_t moved = NextSize(size);
    return moved < 0 ? -1 : real(fd, to, static_cast<size_t>(moved), position);
}

FAULTY int ftruncate(int fd, off_t size)
{
    static auto* const real = Real<int(int, off_t)>("ftruncate");
    return Call(real, fd, size);
}

FAULTY int ftruncate64(int fd, off64_t size)
{
    static auto* const real = Real<int(int, off64_t)>("ftruncate64");
    return Call(real, fd, size);
}

FAULTY int mkstemp(char* name)
{
    static auto* const real = Real<int(char*)>("mkstemp");
    return Call(real, name);
}

FAULTY int mkstemp64(char* name)
{
    static auto* const real = Real<int(char*)>("mkstemp64");
    return Call(real, name);
}

FAULTY int link(const char* from, const char* to)
{
    static auto* const real = Real<int(const char*, const char*)>("link");
    return Call(real, from, to);
}

// These two wait for no disk: nobody takes the power away.
FAULTY int fdatasync(int)
{
    return Fails() ? -1 : 0;
}

FAULTY int fsync(int)
{
    return Fails() ? -1 : 0;
}

FAULTY int rename(const char* from, const char* to)
{
    static auto* const real = Real<int(const char*, const char*)>("rename");
    return Call(real, from, to);
}

FAULTY int renameat(int fromDirectory, const char* from, int toDirectory, const char* to)
{
    static auto* const real = Real<int(int, const char*, int, const char*)>("renameat");
    return Call(real, fromDirectory, from, toDirectory, to);
}

FAULTY int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned int flags)
{
    static auto* const real = Real<int(int, const char*, int, const char*, unsigned int)>("renameat2");
    return Call(real, fromDirectory, from, toDirectory, to, flags);
}

FAULTY int linkat(int fromDirectory, const char* from, int toDirectory, const char* to, int flags)
{
    static auto* const real = Real<int(int, const char*, int, const char*, int)>("linkat");
    return Call(real, fromDirectory, from, toDirectory, to, flags);
}

FAULTY int unlink(const char* path)
{
    static auto* const real = Real<int(const char*)>("unlink");
    return Call(real, path);
}

FAULTY int unlinkat(int directory, const char* path, int flags)
{
    static auto* const real = Real<int(int, const char*, int)>("unlinkat");
    return Call(real, directory, path, flags);
}

FAULTY int mkdirat(int directory, const char* path, mode_t mode)
{
    static auto* const real = Real<int(int, const char*, mode_t)>("mkdirat");
    return Call(real, directory, path, mode);
}

FAULTY int stat(const char* path, void* info)
{
    static auto* const real = Real<int(const char*, void*)>("stat");
    return Call(real, path, info);
}

FAULTY int stat64(const char* path, void* info)
{
    static auto* const real = Real<int(const char*, void*)>("stat64");
    return Call(real, path, info);
}

FAULTY int lstat(const char* path, void* info)
{
    static auto* const real = Real<int(const char*, void*)>("lstat");
    return Call(real, path, info);
}

FAULTY int lstat64(const char* path, void* info)
{
    static auto* const real = Real<int(const char*, void*)>("lstat64");
    return Call(real, path, info);
}

FAULTY int fstat(int fd, void* info)
{
    static auto* const real = Real<int(int, void*)>("fstat");
    return Call(real, fd, info);
}

FAULTY int fstat64(int fd, void* info)
{
    static auto* const real = Real<int(int, void*)>("fstat64");
    return Call(real, fd, info);
}

FAULTY int fstatat(int directory, const char* path, void* info, int flags)
{
    static auto* const real = Real<int(int, const char*, void*, int)>("fstatat");
    return Call(real, directory, path, info, flags);
}

FAULTY int fstatat64(int directory, const char* path, void* info, int flags)
{
    static auto* const real = Real<int(int, const char*, void*, int)>("fstatat64");
    return Call(real, directory, path, info, flags);
}

FAULTY int fchmod(int fd, mode_t mode)
{
    static auto* const real = Real<int(int, mode_t)>("fchmod");
    return Call(real, fd, mode);
}

FAULTY int fchown(int fd, uid_t owner, gid_t group)
{
    static auto* const real = Real<int(int, uid_t, gid_t)>("fchown");
    return Call(real, fd, owner, group);
}

FAULTY int access(const char* path, int mode)
{
    static auto* const real = Real<int(const char*, int)>("access");
    return Call(real, path, mode);
}

FAULTY int faccessat(int directory, const char* path, int mode, int flags)
{
    static auto* const real = Real<int(int, const char*, int, int)>("faccessat");
    return Call(real, directory, path, mode, flags);
}

FAULTY ssize_t readlink(const char* path, char* to, size_t size)
{
    static auto* const real = Real<ssize_t(const char*, char*, size_t)>("readlink");
    return Call(real, path, to, size);
}

FAULTY int flock(int fd, int operation)
{
    static auto* const real = Real<int(int, int)>("flock");
    return Call(real, fd, operation);
}

FAULTY ssize_t getrandom(void* to, size_t size, unsigned int flags)
{
    static auto* const real = Real<ssize_t(void*, size_t, unsigned int)>("getrandom");
    return Call(real, to, size, flags);
}
