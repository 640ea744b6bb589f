#include <array>
#include <cstring>

#include "baseline/straightforward_driver.h"
#include "benchmarks.h"
#include "support/driver.h"
#include "support/measure.h"
#include "support/replies.h"

namespace plc::bench {

namespace {

constexpr int kAreaIndex = 3;
/// Cyclic entries lie apart, or they would have been merged.
constexpr int kEntryDistance = 1024;
constexpr int kDoubleWordCode = 6;
constexpr int kByteCode = 2;
constexpr int kAcknowledgeOnly = 1;
constexpr int kMostEntries = 150;
constexpr int kReplaceQueued = 0;

/// Entries of one request.
struct Entries {
    int count;
    int length; ///< Bytes of each.

    std::string name() const
    {
        return std::to_string(count) + "_entries_of_" + std::to_string(length);
    }
    int bytes() const { return count * length; }
};

QList<RW_VAR> readEntries(const Entries& entries)
{
    QList<RW_VAR> reads;
    for (int i = 0; i < entries.count; ++i) {
        RW_VAR read;
        read.label = QString::fromLatin1("Plant.Station%1_Value").arg(i, 6, 10, QLatin1Char('0'));
        read.station = kStation;
        read.aux1 = -1;
        read.dataType = kDoubleWordCode;
        read.address = i * kEntryDistance;
        read.length = entries.length;
        read.areaIndex = kAreaIndex;
        reads.append(read);
    }
    return reads;
}

QList<RW_VAR> writeEntries(const Entries& entries)
{
    QList<RW_VAR> writes = readEntries(entries);
    for (int i = 0; i < int(writes.size()); ++i) {
        writes[i].dataType = kByteCode;
        writes[i].aux1 = i;
        writes[i].aux2 = kAcknowledgeOnly;
        writes[i].data = QByteArray(entries.length, '\7');
    }
    return writes;
}

QByteArray replyTo(const Entries& entries)
{
    return readReply(std::vector<int>(size_t(entries.count), entries.length));
}

/// A driver that is logged in and reads the entries cyclically.
class ReadingPlant {
public:
    explicit ReadingPlant(const Entries& entries) : m_reply(replyTo(entries))
    {
        QList<RW_VAR> reads = readEntries(entries);
        for (int i = 0; i < int(reads.size()); ++i)
            m_driver.addListReadVar(&reads[i]);
        m_driver.logIn();
    }
    Driver& driver() { return m_driver; }
    QByteArray& reply() { return m_reply; }

private:
    Driver m_driver;
    QByteArray m_reply;
};

/// A request and its reply, which a host hands over twice.
void exchange(benchmark::State& state, Driver& driver, QByteArray& reply)
{
    if (!driver.comCommunication())
        driver.comCommunication(); // the turn of the lists that have nothing to send
    const RW_VAR* outcome = nullptr;
    for (int pass = 0; pass < kPassesOfAReply; ++pass)
        outcome = driver.dataCom(&reply, int(reply.size()));
    if (outcome->result != kReplyAccepted)
        state.SkipWithError("the driver did not accept the reply");
}

void exchange(benchmark::State& state, baseline::StraightforwardDriver& driver,
              const QByteArray& reply)
{
    driver.nextRequest();
    int result = 0;
    for (int pass = 0; pass < kPassesOfAReply; ++pass)
        result = driver.takeReply(reply);
    if (result != kReplyAccepted)
        state.SkipWithError("the baseline did not accept the reply");
}

void readCycleByDriver(benchmark::State& state, const Entries& entries)
{
    ReadingPlant& plant = Shared::get<ReadingPlant>(entries);
    measure(state, entries.count, [&] { exchange(state, plant.driver(), plant.reply()); });
}

void readCycleByBaseline(benchmark::State& state, const Entries& entries)
{
    baseline::StraightforwardDriver driver;
    for (const RW_VAR& read : readEntries(entries))
        driver.addRead(read);
    const QByteArray reply = replyTo(entries);
    measure(state, entries.count, [&] { exchange(state, driver, reply); });
}

/// Copies each record once, and the bytes of the reply or of the request's values once.
void copyOnce(benchmark::State& state, const QList<RW_VAR>& records, const QByteArray& bytes)
{
    std::array<RW_VAR, kMostEntries> copies;
    std::vector<char> buffer(size_t(bytes.size()));
    measure(state, records.size(), [&] {
        for (int i = 0; i < int(records.size()); ++i)
            copies[size_t(i)] = records.at(i);
        std::memcpy(buffer.data(), bytes.constData(), buffer.size());
        benchmark::DoNotOptimize(copies.data());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    });
}

void readCycleFloor(benchmark::State& state, const Entries& entries)
{
    copyOnce(state, readEntries(entries), replyTo(entries));
}

void storeByDriver(benchmark::State& state, const Entries& entries)
{
    ReadingPlant& plant = Shared::get<ReadingPlant>(entries);
    Driver& driver = plant.driver();
    driver.comCommunication(); // makes the batch, whose reply is stored again and again
    measure(state, entries.count, [&] { driver.saveToLocalDataErea(&plant.reply()); });
}

void storeByBaseline(benchmark::State& state, const Entries& entries)
{
    baseline::StraightforwardDriver driver;
    for (const RW_VAR& read : readEntries(entries))
        driver.addRead(read);
    driver.nextRequest();
    const QByteArray reply = replyTo(entries);
    measure(state, entries.count, [&] { driver.storeReply(reply); });
}

void storeFloor(benchmark::State& state, const Entries& entries)
{
    const QByteArray bytes(entries.bytes(), '\7');
    std::vector<char> buffer(size_t(bytes.size()));
    measure(state, entries.count, [&] {
        std::memcpy(buffer.data(), bytes.constData(), buffer.size());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    });
}

void writeCycleByDriver(benchmark::State& state, const Entries& entries)
{
    Shared::drop();
    Driver driver;
    QList<RW_VAR> writes = writeEntries(entries);
    driver.addListWriteVar(&writes[0], kReplaceQueued);
    driver.logIn();
    driver.dropQueued();
    QByteArray reply = writeReply();
    measure(state, entries.count, [&] {
        for (int i = 0; i < int(writes.size()); ++i)
            driver.addListWriteVar(&writes[i], kReplaceQueued);
        exchange(state, driver, reply);
    });
}

void writeCycleByBaseline(benchmark::State& state, const Entries& entries)
{
    baseline::StraightforwardDriver driver;
    const QList<RW_VAR> writes = writeEntries(entries);
    const QByteArray reply = writeReply();
    measure(state, entries.count, [&] {
        for (const RW_VAR& write : writes)
            driver.addWrite(write);
        exchange(state, driver, reply);
    });
}

void writeCycleFloor(benchmark::State& state, const Entries& entries)
{
    copyOnce(state, writeEntries(entries), QByteArray(entries.bytes(), '\7'));
}

using Function = void (*)(benchmark::State&, const Entries&);

void add(const char* work, const Entries& entries, const char* who, Function function)
{
    registerBenchmark(std::string(work) + '/' + entries.name(), who,
                      [=](benchmark::State& state) { function(state, entries); });
}

} // namespace

void registerCycleBenchmarks()
{
    // As full as one request can be: each entry counts one byte more, 999 in all.
    const Entries fewest{1, 998};
    const Entries most{99, 9};
    for (const Entries& entries : {fewest, most}) {
        add("store", entries, kByDriver, storeByDriver);
        add("store", entries, kByFloor, storeFloor);
        add("store", entries, kByBaseline, storeByBaseline);
    }
    for (const Entries& entries : {Entries{1, 4}, Entries{10, 4}, fewest, most}) {
        add("read_cycle", entries, kByDriver, readCycleByDriver);
        add("read_cycle", entries, kByFloor, readCycleFloor);
        add("read_cycle", entries, kByBaseline, readCycleByBaseline);
    }
    for (const Entries& entries : {Entries{1, 1}, Entries{90, 1}}) {
        add("write_cycle", entries, kByDriver, writeCycleByDriver);
        add("write_cycle", entries, kByFloor, writeCycleFloor);
        add("write_cycle", entries, kByBaseline, writeCycleByBaseline);
    }
}

} // namespace plc::bench
