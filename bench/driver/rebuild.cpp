#include <algorithm>
#include <numeric>

#include "baseline/straightforward_driver.h"
#include "benchmarks.h"
#include "support/driver.h"
#include "support/measure.h"
#include "support/shuffle.h"
#include "support/symbols.h"

namespace plc::bench {

namespace {

constexpr int kMaxReadBytes = 200;
constexpr int kVariableRegisters = 2;

/// Labels beyond which the bubble sort does not end in reasonable time.
constexpr int kMostForBubbleSort = 5000;

constexpr const char* kBySort = "floor";
constexpr const char* kByResolution = "resolution";

enum class Order { Sorted, Reversed, Random };
enum class Layout {
    Dense, ///< One area, a variable every 8 bytes: 25 share a read.
    HundredAreas,
    Scattered ///< One area, no two variables share a read.
};

const char* nameOf(Order order)
{
    switch (order) {
        case Order::Sorted:
            return "sorted";
        case Order::Reversed:
            return "reversed";
        default:
            return "random";
    }
}

const char* nameOf(Layout layout)
{
    switch (layout) {
        case Layout::Dense:
            return "one_area";
        case Layout::HundredAreas:
            return "100_areas";
        default:
            return "scattered";
    }
}

struct CyclicShape {
    int labels;
    Order order;
    Layout layout;

    std::string name() const
    {
        return std::to_string(labels) + '/' + nameOf(order) + '/' + nameOf(layout);
    }
    int areaOf(int variable) const { return layout == Layout::HundredAreas ? variable % 100 : 0; }
    int addressOf(int variable) const
    {
        constexpr int kDenseDistance = 8;
        constexpr int kScatteredDistance = 256;
        return variable * (layout == Layout::Scattered ? kScatteredDistance : kDenseDistance);
    }
};

/// The cyclic variables of a host, with their symbols.
class CyclicPlant {
public:
    explicit CyclicPlant(const CyclicShape& shape)
    {
        std::vector<int> numbers(size_t(shape.labels));
        std::iota(numbers.begin(), numbers.end(), 0);
        QList<Label_Type_Info> variables;
        for (const int i : numbers) {
            const QString name =
                QString::fromLatin1("Station%1_Value").arg(i, 6, kDecimal, QLatin1Char('0'));
            variables.append(variable(name, kDoubleWordCode, shape.addressOf(i), shape.areaOf(i)));
        }
        if (shape.order == Order::Reversed)
            std::reverse(numbers.begin(), numbers.end());
        else if (shape.order == Order::Random)
            shuffle(numbers);
        for (const int i : numbers) {
            HostVarItem item;
            item.label = QLatin1String("Plant.") + variables.at(i).name;
            item.count = kVariableRegisters;
            items.append(item);
            places.push_back(quint64(shape.areaOf(i)) << 32 | quint64(shape.addressOf(i)));
        }
        m_scopes.append(scope(QLatin1String("Plant"), variables));
    }

    Driver& driver()
    {
        if (!m_driver) {
            m_driver = std::make_unique<Driver>();
            m_driver->settings.maxReadBytes = kMaxReadBytes;
            m_driver->passVarName(&m_scopes);
        }
        return *m_driver;
    }
    void passSymbols(baseline::StraightforwardDriver& driver) { driver.passSymbols(m_scopes); }

    QList<HostVarItem> items;
    std::vector<quint64> places; ///< Area and address of each item.

private:
    QList<Label_Type_Info> m_scopes;
    std::unique_ptr<Driver> m_driver;
};

void rebuildByDriver(benchmark::State& state, const CyclicShape& shape)
{
    CyclicPlant& plant = Shared::get<CyclicPlant>(shape);
    Driver& driver = plant.driver();
    int entries = 0;
    measure(state, shape.labels, [&] { entries = driver.reCreatReadVarList(&plant.items); });
    state.counters["entries"] = entries;
}

void resolveEach(benchmark::State& state, const CyclicShape& shape)
{
    CyclicPlant& plant = Shared::get<CyclicPlant>(shape);
    const auto resolve = plant.driver().resolve;
    measure(state, shape.labels, [&] {
        for (int i = 0; i < int(plant.items.size()); ++i) {
            ControlInformationM place = ControlInformationM();
            benchmark::DoNotOptimize(resolve(plant.items.at(i).label, place));
            benchmark::DoNotOptimize(place);
        }
    });
}

void sortPlaces(benchmark::State& state, const CyclicShape& shape)
{
    const CyclicPlant& plant = Shared::get<CyclicPlant>(shape);
    std::vector<quint64> sorted;
    measurePrepared(
        state, shape.labels, [&] { sorted = plant.places; },
        [&] {
            std::stable_sort(sorted.begin(), sorted.end());
            benchmark::DoNotOptimize(sorted.data());
            benchmark::ClobberMemory();
        });
}

/// All in one area: what is sorted are the addresses alone.
void sortAddresses(benchmark::State& state, const CyclicShape& shape)
{
    const CyclicPlant& plant = Shared::get<CyclicPlant>(shape);
    const std::vector<qint32> addresses(plant.places.begin(), plant.places.end());
    std::vector<qint32> sorted;
    measurePrepared(
        state, shape.labels, [&] { sorted = addresses; },
        [&] {
            std::stable_sort(sorted.begin(), sorted.end());
            benchmark::DoNotOptimize(sorted.data());
            benchmark::ClobberMemory();
        });
}

void rebuildByBaseline(benchmark::State& state, const CyclicShape& shape)
{
    CyclicPlant& plant = Shared::get<CyclicPlant>(shape);
    baseline::StraightforwardDriver driver;
    plant.passSymbols(driver);
    measure(state, shape.labels,
            [&] { benchmark::DoNotOptimize(driver.rebuildReadList(plant.items, kMaxReadBytes)); });
}

using Function = void (*)(benchmark::State&, const CyclicShape&);

void add(const CyclicShape& shape, const char* who, Function function)
{
    registerBenchmark("rebuild/" + shape.name(), who,
                      [=](benchmark::State& state) { function(state, shape); });
}

void addAll(const CyclicShape& shape)
{
    add(shape, kByDriver, rebuildByDriver);
    add(shape, kBySort, shape.layout == Layout::HundredAreas ? sortPlaces : sortAddresses);
    add(shape, kByResolution, resolveEach);
    if (shape.labels <= kMostForBubbleSort)
        add(shape, kByBaseline, rebuildByBaseline);
}

} // namespace

void registerRebuildBenchmarks()
{
    for (const int labels : {1000, 5000, 10000, 100000, 200000}) {
        for (const Order order : {Order::Sorted, Order::Reversed, Order::Random}) {
            addAll({labels, order, Layout::Dense});
            addAll({labels, order, Layout::HundredAreas});
        }
        addAll({labels, Order::Random, Layout::Scattered});
    }
}

} // namespace plc::bench
