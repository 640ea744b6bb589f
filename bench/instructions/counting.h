#ifndef PLC_BENCH_INSTRUCTIONS_COUNTING_H
#define PLC_BENCH_INSTRUCTIONS_COUNTING_H

#include <valgrind/callgrind.h>

namespace plc::bench {

/// Does `work` twice and has callgrind count the instructions of the second time, under this name:
/// the first time allocates, fills caches and binds symbols.
template <typename Work>
void count(const char* name, Work work)
{
    work();
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    work();
    CALLGRIND_DUMP_STATS_AT(name);
    CALLGRIND_STOP_INSTRUMENTATION;
}

} // namespace plc::bench

#endif
