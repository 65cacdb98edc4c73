#include "tests/faults/faults.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace
{

/// Memory that is the file's, so that what it is told outlives a kill.
long* MapNumber(const char* file)
{
    const int fd = ::open(file, O_RDWR | O_CLOEXEC);
    void* const number = ::mmap(nullptr, sizeof(long), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    if (number == MAP_FAILED)
        std::abort();
    return static_cast<long*>(number);
}

__attribute__((constructor)) void ArmFromEnvironment()
{
    int action = 0;
    long at = 0;
    int error = 0;
    std::array<char, 200> file;
    const char* const faults = std::getenv("QXP_FAULTS");
    if (!faults)
        return;
    if (std::sscanf(faults, "%d:%ld:%d:%199s", &action, &at, &error, file.data()) != 4)
        std::abort();
    vcq_fault_tell(MapNumber(file.data()));
    vcq_fault_arm(static_cast<Fault>(action), at, error);
}

} // namespace
