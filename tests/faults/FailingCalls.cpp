#include "faults/FailingCalls.h"

#include <dlfcn.h>

namespace {

template <typename Function>
Function* ofLibrary(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_DEFAULT, name));
}

} // namespace

bool failing_calls::isLoaded()
{
    return ofLibrary<int()>("kora_failing_end") != nullptr;
}

void failing_calls::begin(const char* firstPath, const char* secondPath, int number, Kind kind)
{
    ofLibrary<void(const char*, const char*, int, int)>("kora_failing_begin")(firstPath, secondPath, number, kind);
}

int failing_calls::end()
{
    return ofLibrary<int()>("kora_failing_end")();
}

const char* failing_calls::failedFunction()
{
    return ofLibrary<const char*()>("kora_failed_function")();
}

const char* failing_calls::failedPath()
{
    return ofLibrary<const char*()>("kora_failed_path")();
}
