#ifndef PLC_BENCH_SUPPORT_ALLOCATIONS_H
#define PLC_BENCH_SUPPORT_ALLOCATIONS_H

#include <cstdint>

namespace plc::bench {

/// What the whole process has asked of the heap. malloc() and its kin are replaced in this binary,
/// so that the containers of Qt and operator new are counted alike. Counted without locks: the
/// benchmarks run on one thread.
struct Allocations {
    std::int64_t calls = 0;
    std::int64_t bytes = 0;

    Allocations operator-(const Allocations& earlier) const
    {
        return {calls - earlier.calls, bytes - earlier.bytes};
    }
    Allocations& operator+=(const Allocations& more)
    {
        calls += more.calls;
        bytes += more.bytes;
        return *this;
    }
};

Allocations allocations();

/// Counts the bytes of heap that are taken while it lives, with the allocator's own overhead.
class HeapMeter {
public:
    HeapMeter();
    ~HeapMeter();
    /// Bytes taken since the meter was made and not given back.
    std::int64_t bytesHeld() const;

private:
    HeapMeter(const HeapMeter&) = delete;
    HeapMeter& operator=(const HeapMeter&) = delete;
};

} // namespace plc::bench

#endif
