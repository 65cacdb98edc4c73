#include <unistd.h>

#include <cstdio>
#include <cstdlib>

/// Called before the first input. Arbitrary scripts open and write arbitrary files.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (geteuid() != 0)
        return 0;
    std::fprintf(stderr, "Scripts under test write where they like: do not fuzz as root.\n");
    std::exit(1);
}
