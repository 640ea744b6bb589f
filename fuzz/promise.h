#ifndef PLC_FUZZ_PROMISE_H
#define PLC_FUZZ_PROMISE_H

#include <cstdio>
#include <cstdlib>

namespace plc::fuzz {

/// Ends the process with a report when a promise is broken.
inline void require(bool isTrue, const char* promise)
{
    if (isTrue)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

} // namespace plc::fuzz

#endif
