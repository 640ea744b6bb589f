#include <vector>

#include "base/keyed_hash.h"
#include "benchmarks.h"
#include "support/driver.h"
#include "support/measure.h"
#include "support/symbols.h"

namespace plc::bench {

namespace {

constexpr int kNames = 50000;
constexpr int kPages = 100000;
/// Slots of the tables that hold so many; input that crowds is chosen for them.
constexpr quint32 kNameSlots = 1u << 16;
constexpr quint32 kPageSlots = 1u << 18;
constexpr int kPageBits = 8;

/// Who has chosen the names or addresses, if anybody.
enum class Choice {
    Ordinary,
    KnownKey, ///< They crowd under the driver's own hash with a key that is not the process's.
    NoKey     ///< They crowd under a multiplication, the hash that first comes to mind.
};

std::string nameOf(Choice choice)
{
    switch (choice) {
        case Choice::Ordinary:
            return "ordinary";
        case Choice::KnownKey:
            return "chosen_for_a_key";
        default:
            return "chosen_for_multiplication";
    }
}

constexpr quint64 kFactor = Q_UINT64_C(0x9E3779B97F4A7C15); // 2^64 / golden ratio

quint32 multiplied(quint64 number)
{
    return quint32(number * kFactor >> 32);
}

/// Four characters at a time.
quint32 multiplied(const QString& name)
{
    quint64 hash = quint64(name.size());
    for (int i = 0; i < int(name.size()); i += 4) {
        quint64 word = 0;
        std::memcpy(&word, name.constData() + i, sizeof word);
        hash = (hash ^ word) * kFactor;
        hash ^= hash >> 32;
    }
    return quint32(hash * kFactor >> 32);
}

/// Whether a hash lies in the sixty-fourth of a table that the chosen input crowds into.
bool isCrowded(quint32 hash, quint32 slots)
{
    return (hash & (slots - 1)) < slots / 64;
}

bool isChosen(Choice choice, const KeyedHash& known, const QString& name)
{
    switch (choice) {
        case Choice::Ordinary:
            return true;
        case Choice::KnownKey:
            return isCrowded(known(LabelText(name)), kNameSlots);
        default:
            return isCrowded(multiplied(name), kNameSlots);
    }
}

bool isChosen(Choice choice, const KeyedHash& known, quint64 page)
{
    switch (choice) {
        case Choice::Ordinary:
            return true;
        case Choice::KnownKey:
            return isCrowded(known(page), kPageSlots);
        default:
            return isCrowded(multiplied(page), kPageSlots);
    }
}

/// Names of eight characters.
QList<Label_Type_Info> scopeOf(Choice choice)
{
    const KeyedHash known(1);
    QList<Label_Type_Info> variables;
    for (int i = 0; int(variables.size()) < kNames; ++i) {
        const QString name =
            QLatin1Char('V') + QString::fromLatin1("%1").arg(i, 7, kDecimal, QLatin1Char('0'));
        if (isChosen(choice, known, name))
            variables.append(variable(name, kWordCode, 2 * i));
    }
    QList<Label_Type_Info> scopes;
    scopes.append(scope(QLatin1String("Plant"), variables));
    return scopes;
}

/// Keys of pages: an area above 24 bits of an address.
std::vector<quint64> pagesOf(Choice choice)
{
    const KeyedHash known(1);
    std::vector<quint64> pages;
    for (quint64 page = 0; pages.size() < std::size_t(kPages); ++page) {
        if (isChosen(choice, known, page))
            pages.push_back(page);
    }
    return pages;
}

void passNames(benchmark::State& state, Choice choice)
{
    Shared::drop();
    QList<Label_Type_Info> scopes = scopeOf(choice);
    Driver driver;
    measure(state, kNames, [&] { driver.passVarName(&scopes); });
}

void touchPages(benchmark::State& state, Choice choice)
{
    Shared::drop();
    const std::vector<quint64> pages = pagesOf(choice);
    RW_VAR write;
    write.dataType = kWordCode;
    write.length = 1;
    write.data = QByteArray(1, '\7');
    for (auto _ : state) {
        state.PauseTiming();
        {
            Driver driver;
            state.ResumeTiming();
            for (const quint64 page : pages) {
                write.areaIndex = int(page >> (32 - kPageBits));
                write.address = int(quint32(page << kPageBits));
                driver.writeDataToLocal(&write);
            }
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    reportCounters(state, kPages, Allocations());
}

} // namespace

void registerChosenInputBenchmarks()
{
    for (const Choice choice : {Choice::Ordinary, Choice::KnownKey, Choice::NoKey}) {
        registerBenchmark("pass_names/50000/" + nameOf(choice), kByDriver,
                          [=](benchmark::State& state) { passNames(state, choice); });
        registerBenchmark("touch_pages/100000/" + nameOf(choice), kByDriver,
                          [=](benchmark::State& state) { touchPages(state, choice); });
    }
}

} // namespace plc::bench
