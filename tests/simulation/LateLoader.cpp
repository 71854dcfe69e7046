#include "hardware/koralink.h"

#include <dlfcn.h>

#include <cstdio>

extern "C" __attribute__((visibility("default"))) int SAMP_FREQ;
int SAMP_FREQ = 1000;

/// A program that loads the control library too late: libc comes first, and the device files are out of reach.
int main()
{
    if (!dlopen("libkoralink.so.1", RTLD_NOW | RTLD_GLOBAL))
        std::puts(dlerror());
    std::puts("went on");
    return 0;
}
