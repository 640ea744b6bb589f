#ifndef PLC_TESTS_SUPPORT_QT_FUNCTION_H
#define PLC_TESTS_SUPPORT_QT_FUNCTION_H

#include <dlfcn.h>

#include <cstdlib>

namespace plc::test {

/// The function of this linker name in Qt, behind the one of this program that stands before it.
template <typename Function>
Function inQt(const char* name)
{
    void* const function = dlsym(RTLD_NEXT, name);
    if (!function)
        std::abort();
    return reinterpret_cast<Function>(function);
}

} // namespace plc::test

#endif
