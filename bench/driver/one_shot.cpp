#include "benchmarks.h"
#include "support/labelled_plant.h"
#include "support/measure.h"

namespace plc::bench {

namespace {

constexpr int kListLimit = 1024;
constexpr int kConvert = 0;
constexpr int kCategory = 3;
const PlantShape kShape{LabelKind::Scalar, 2, 10000};

/// One read for each of the first labels, up to the limit of the list.
std::vector<RW_VAR> readsOf(const LabelledPlant& plant)
{
    std::vector<RW_VAR> reads(kListLimit);
    for (size_t i = 0; i < reads.size(); ++i) {
        reads[i].label = plant.labels()[i];
        reads[i].category = kCategory;
        reads[i].aux1 = int(i);
        reads[i].length = kShape.registers;
    }
    return reads;
}

void addByDriver(benchmark::State& state)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(kShape);
    Driver& driver = plant.driver();
    const std::vector<RW_VAR> reads = readsOf(plant);
    std::vector<RW_VAR> given;
    int queued = 0;
    const auto prepare = [&] {
        driver.dropQueued();
        given = reads; // the driver converts them
    };
    measurePrepared(state, kListLimit, prepare, [&] {
        for (RW_VAR& read : given)
            queued = driver.addListOnceReadVar(&read, kConvert);
    });
    if (queued != kListLimit)
        state.SkipWithError("the one-shot list was not filled");
    driver.dropQueued();
}

void addByBaseline(benchmark::State& state)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(kShape);
    baseline::StraightforwardDriver& driver = plant.straightforward();
    const std::vector<RW_VAR> reads = readsOf(plant);
    measurePrepared(
        state, kListLimit, [&] { driver.clearOnceReads(); },
        [&] {
            for (const RW_VAR& read : reads)
                driver.addOnceRead(read);
        });
    driver.clearOnceReads();
}

/// Each label looked up once, each record copied once.
void lookUpAndCopy(benchmark::State& state)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(kShape);
    const QHash<QString, int>& table = plant.table();
    const std::vector<RW_VAR> reads = readsOf(plant);
    QList<RW_VAR> list;
    measurePrepared(
        state, kListLimit, [&] { list.clear(); },
        [&] {
            for (const RW_VAR& read : reads) {
                benchmark::DoNotOptimize(table.value(read.label));
                list.append(read);
            }
        });
}

void add(const char* who, void (*function)(benchmark::State&))
{
    registerBenchmark("one_shot_reads/" + std::to_string(kListLimit), who, function);
}

} // namespace

void registerOneShotBenchmarks()
{
    add(kByDriver, addByDriver);
    add(kByFloor, lookUpAndCopy);
    add(kByBaseline, addByBaseline);
}

} // namespace plc::bench
