#include "benchmarks.h"
#include "support/measure.h"
#include "visits.h"

namespace plc::bench {

namespace {

// The size of a value does not matter to where it stands.
constexpr int kRegisters = 2;

template <typename Access>
void visitLabels(benchmark::State& state, const LabelCase& what, Access access)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    const std::vector<QString>& labels = plant.labels();
    Round round(countOf(what.visits, labels.size()));
    auto accessPlant = access(plant);
    measure(state, 1, [&] { benchmark::DoNotOptimize(accessPlant(labels[round.next()])); });
}

void resolveByDriver(benchmark::State& state, const LabelCase& what)
{
    visitLabels(state, what, [](LabelledPlant& plant) {
        return [resolve = plant.driver().resolve](const QString& label) {
            ControlInformationM place = ControlInformationM();
            const int result = resolve(label, place);
            benchmark::DoNotOptimize(place);
            return result;
        };
    });
}

void addressByDriver(benchmark::State& state, const LabelCase& what)
{
    visitLabels(state, what, [](LabelledPlant& plant) {
        return [addressOf = plant.driver().addressOf](const QString& label) {
            return addressOf(0, label);
        };
    });
}

void resolveByBaseline(benchmark::State& state, const LabelCase& what)
{
    visitLabels(state, what, [](LabelledPlant& plant) {
        return [&driver = plant.straightforward()](const QString& label) {
            baseline::Place place;
            const bool resolved = driver.resolve(label, place);
            benchmark::DoNotOptimize(place);
            return resolved;
        };
    });
}

void lookUp(benchmark::State& state, const LabelCase& what)
{
    visitLabels(state, what, [](LabelledPlant& plant) {
        return [&table = plant.table()](const QString& label) { return table.value(label); };
    });
}

using Function = void (*)(benchmark::State&, const LabelCase&);

void add(const char* work, const LabelCase& what, const char* who, Function function)
{
    registerBenchmark(std::string(work) + '/' + what.name(), who,
                      [=](benchmark::State& state) { function(state, what); });
}

} // namespace

void registerResolutionBenchmarks()
{
    for (const LabelCase& what : labelCases({kRegisters})) {
        add("resolve", what, kByDriver, resolveByDriver);
        add("resolve", what, kByFloor, lookUp);
        add("resolve", what, kByBaseline, resolveByBaseline);
        add("address", what, kByDriver, addressByDriver);
        add("address", what, kByFloor, lookUp);
    }
}

} // namespace plc::bench
