#ifndef PLC_BENCH_SUPPORT_MEASURE_H
#define PLC_BENCH_SUPPORT_MEASURE_H

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "support/allocations.h"

namespace plc::bench {

// What a work is done by; the last part of a benchmark's name.
constexpr const char* kByDriver = "driver";
constexpr const char* kByBaseline = "baseline";
constexpr const char* kByFloor = "floor";

/// Registers `function` under the name WORK/WHO.
template <typename Function>
void registerBenchmark(const std::string& work, const char* who, Function function)
{
    benchmark::RegisterBenchmark((work + '/' + who).c_str(), function);
}

/// States what a call of the work touches and what it asked of the heap.
inline void reportCounters(benchmark::State& state, std::int64_t variables, const Allocations& used)
{
    const double calls = double(state.iterations());
    state.counters["variables"] = double(variables);
    state.counters["allocations"] = double(used.calls) / calls;
    state.counters["bytes"] = double(used.bytes) / calls;
}

/// Times `work`, which touches `variables` variables a call.
template <typename Work>
void measure(benchmark::State& state, std::int64_t variables, Work work)
{
    const Allocations before = allocations();
    for (auto _ : state)
        work();
    reportCounters(state, variables, allocations() - before);
}

/// The same, with `prepare` before each call that is not timed.
template <typename Prepare, typename Work>
void measurePrepared(benchmark::State& state, std::int64_t variables, Prepare prepare, Work work)
{
    Allocations used;
    for (auto _ : state) {
        state.PauseTiming();
        prepare();
        const Allocations before = allocations();
        state.ResumeTiming();
        work();
        used += allocations() - before;
    }
    reportCounters(state, variables, used);
}

/// Holds what the benchmarks of one work share: made for the first of them, and dropped before
/// anything else is made, since only one driver may be loaded at a time.
class Shared {
public:
    /// The `Value` made from `key`, which has a name().
    template <typename Value, typename Key>
    static Value& get(const Key& key)
    {
        static constexpr char kTypeMark = 0;
        if (s_type != &kTypeMark || s_name != key.name()) {
            drop();
            s_value = std::make_shared<Value>(key);
            s_type = &kTypeMark;
            s_name = key.name();
        }
        return *static_cast<Value*>(s_value.get());
    }
    static void drop()
    {
        s_type = nullptr;
        s_value.reset();
    }

private:
    static inline const void* s_type = nullptr;
    static inline std::string s_name;
    static inline std::shared_ptr<void> s_value;
};

/// One after the other of `count` things, round and round.
class Round {
public:
    explicit Round(std::size_t count) : m_count(count) {}
    std::size_t next()
    {
        const std::size_t current = m_next;
        m_next = m_next + 1 == m_count ? 0 : m_next + 1;
        return current;
    }

private:
    const std::size_t m_count;
    std::size_t m_next = 0;
};

} // namespace plc::bench

#endif
