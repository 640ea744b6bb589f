#include "benchmarks.h"
#include "support/measure.h"
#include "visits.h"

namespace plc::bench {

namespace {

constexpr int kRegisterBytes = 2;
constexpr int kWriteCategory = 5;

/// Values that are queued before the queue is emptied again; it holds 1024.
constexpr int kQueuedWrites = 1000;
constexpr int kQueueWrites = 2;

/// Calls `access(label)` for one label after the other.
template <typename Access>
void visitLabels(benchmark::State& state, const LabelCase& what, const LabelledPlant& plant,
                 Access access)
{
    const std::vector<QString>& labels = plant.labels();
    Round round(countOf(what.visits, labels.size()));
    access(labels[round.next()]); // gives a buffer that is used again its size
    measure(state, 1, [&] { access(labels[round.next()]); });
}

void readByDriver(benchmark::State& state, const LabelCase& what)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    const auto read = plant.driver().getRegisterData;
    QByteArray value;
    visitLabels(state, what, plant, [&](const QString& label) {
        benchmark::DoNotOptimize(read(label, 0, 0, 0, &value, what.shape.registers));
    });
}

void readIntoNewBufferByDriver(benchmark::State& state, const LabelCase& what)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    const auto read = plant.driver().getRegisterData;
    visitLabels(state, what, plant, [&](const QString& label) {
        QByteArray value;
        benchmark::DoNotOptimize(read(label, 0, 0, 0, &value, what.shape.registers));
    });
}

void readByBaseline(benchmark::State& state, const LabelCase& what)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    baseline::StraightforwardDriver& driver = plant.straightforward();
    QByteArray value;
    visitLabels(state, what, plant, [&](const QString& label) {
        benchmark::DoNotOptimize(driver.readValue(label, &value, what.shape.registers));
    });
}

void writeByDriver(benchmark::State& state, const LabelCase& what)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    const auto write = plant.driver().setRegisterData;
    const QString noSubLabel;
    QByteArray value(kRegisterBytes * what.shape.registers, '\1');
    visitLabels(state, what, plant, [&](const QString& label) {
        benchmark::DoNotOptimize(
            write(label, 0, noSubLabel, 0, &value, int(value.size()), kWriteCategory, 0));
    });
}

void writeByBaseline(benchmark::State& state, const LabelCase& what)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    baseline::StraightforwardDriver& driver = plant.straightforward();
    QByteArray value(kRegisterBytes * what.shape.registers, '\1');
    visitLabels(state, what, plant, [&](const QString& label) {
        benchmark::DoNotOptimize(driver.writeValue(label, &value, int(value.size())));
    });
}

/// The floor of any access by label.
void lookUp(benchmark::State& state, const LabelCase& what)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(what.shape);
    const QHash<QString, int>& table = plant.table();
    visitLabels(state, what, plant,
                [&](const QString& label) { benchmark::DoNotOptimize(table.value(label)); });
}

void queueWrites(benchmark::State& state, const PlantShape& shape)
{
    LabelledPlant& plant = Shared::get<LabelledPlant>(shape);
    Driver& driver = plant.driver();
    driver.settings.writeMode = kQueueWrites;
    const QString noSubLabel;
    QByteArray value(kRegisterBytes * shape.registers, '\1');
    measurePrepared(
        state, kQueuedWrites, [&] { driver.dropQueued(); },
        [&] {
            for (int i = 0; i < kQueuedWrites; ++i)
                driver.setRegisterData(plant.labels()[size_t(i)], 0, noSubLabel, 0, &value,
                                       shape.registers, kWriteCategory, i);
        });
    driver.dropQueued();
    driver.settings.writeMode = 0;
}

using Function = void (*)(benchmark::State&, const LabelCase&);

void add(const char* work, const LabelCase& what, const char* who, Function function)
{
    registerBenchmark(std::string(work) + '/' + what.name(), who,
                      [=](benchmark::State& state) { function(state, what); });
}

} // namespace

void registerValueBenchmarks()
{
    for (const LabelCase& what : labelCases({1, 2, 4, 100})) {
        add("read", what, kByDriver, readByDriver);
        add("read", what, kByFloor, lookUp);
        add("read", what, kByBaseline, readByBaseline);
        if (what.shape.kind == LabelKind::Scalar && what.shape.registers == 2) {
            add("read_into_new_buffer", what, kByDriver, readIntoNewBufferByDriver);
            add("read_into_new_buffer", what, kByFloor, lookUp);
        }
        add("write", what, kByDriver, writeByDriver);
        add("write", what, kByFloor, lookUp);
        add("write", what, kByBaseline, writeByBaseline);
    }
    const PlantShape shape{LabelKind::Scalar, 2, 10000};
    registerBenchmark("queue_writes/" + std::to_string(kQueuedWrites), kByDriver,
                      [=](benchmark::State& state) { queueWrites(state, shape); });
}

} // namespace plc::bench
