#include "baseline/straightforward_driver.h"
#include "benchmarks.h"
#include "support/driver.h"
#include "support/measure.h"

namespace plc::bench {

namespace {

constexpr int kAreaIndex = 3;
constexpr int kByteCode = 2;

/// Bytes that a plant touches: pieces of one size at equal distances.
struct Touched {
    const char* what;
    int pieces;
    int size;
    int distance;

    int bytes() const { return pieces * size; }
};

constexpr int kMebibyte = 1 << 20;
constexpr int kPiece = 128;
const Touched kDense = {"dense", kMebibyte / kPiece, kPiece, kPiece};
const Touched kSparse = {"one_byte_in_4096", 4096, 1, 4096};

/// Calls `write(address, bytes)` for each piece.
template <typename Write>
void touch(const Touched& touched, Write write)
{
    const QByteArray bytes(touched.size, '\7');
    for (int i = 0; i < touched.pieces; ++i)
        write(i * touched.distance, bytes);
}

/// What one image takes from the heap while it is filled, a fresh one each time.
template <typename Image, typename Fill>
void measureImage(benchmark::State& state, const Touched& touched, Fill fill)
{
    Shared::drop();
    Allocations used;
    std::int64_t held = 0;
    for (auto _ : state) {
        state.PauseTiming();
        {
            Image image;
            const Allocations before = allocations();
            const HeapMeter meter;
            state.ResumeTiming();
            fill(image);
            state.PauseTiming();
            held = meter.bytesHeld();
            used += allocations() - before;
        }
        state.ResumeTiming();
    }
    reportCounters(state, touched.bytes(), used);
    state.counters["held"] = double(held);
    state.counters["held_per_byte"] = double(held) / touched.bytes();
}

void fillByDriver(benchmark::State& state, const Touched& touched)
{
    measureImage<Driver>(state, touched, [&](Driver& driver) {
        RW_VAR write;
        write.areaIndex = kAreaIndex;
        write.dataType = kByteCode;
        write.length = touched.size;
        touch(touched, [&](int address, const QByteArray& bytes) {
            write.address = address;
            write.data = bytes;
            driver.writeDataToLocal(&write);
        });
    });
}

void fillByBaseline(benchmark::State& state, const Touched& touched)
{
    using Baseline = baseline::StraightforwardDriver;
    measureImage<Baseline>(state, touched, [&](Baseline& driver) {
        touch(touched, [&](int address, const QByteArray& bytes) {
            driver.store(kAreaIndex, address, bytes);
        });
    });
}

using Function = void (*)(benchmark::State&, const Touched&);

void add(const Touched& touched, const char* who, Function function)
{
    registerBenchmark(std::string("image_memory/") + touched.what, who,
                      [=](benchmark::State& state) { function(state, touched); });
}

} // namespace

void registerImageMemoryBenchmarks()
{
    for (const Touched& touched : {kDense, kSparse}) {
        add(touched, kByDriver, fillByDriver);
        add(touched, kByBaseline, fillByBaseline);
    }
}

} // namespace plc::bench
