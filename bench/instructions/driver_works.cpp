// The driver's main works, each as a host has it done. bench/instructions/run counts them.

#include <cstdio>
#include <cstdlib>

#include "counting.h"
#include "support/driver.h"
#include "support/labelled_plant.h"
#include "support/replies.h"
#include "support/symbols.h"

namespace plc::bench {
namespace {

constexpr int kLabels = 10000;
constexpr int kRegisters = 2;
constexpr int kQueuedWrites = 500;
constexpr int kRepetitions = 100;

[[noreturn]] void giveUp(const char* what)
{
    std::fprintf(stderr, "count_driver: %s\n", what);
    std::exit(EXIT_FAILURE);
}

void resolveAll(LabelledPlant& plant)
{
    for (const QString& label : plant.labels()) {
        ControlInformationM place = ControlInformationM();
        if (plant.driver().resolve(label, place) != 0)
            giveUp("a label does not resolve");
    }
}

void readAll(LabelledPlant& plant)
{
    QByteArray value;
    for (const QString& label : plant.labels()) {
        if (plant.driver().getRegisterData(label, 0, 0, 0, &value, kRegisters) != 1)
            giveUp("a value is not read");
    }
}

void writeSome(LabelledPlant& plant, int writeMode, int writes)
{
    Driver& driver = plant.driver();
    driver.settings.writeMode = writeMode;
    const QString noSubLabel;
    QByteArray value(2 * kRegisters, '\1');
    for (int i = 0; i < writes; ++i)
        driver.setRegisterData(plant.labels()[size_t(i)], 0, noSubLabel, 0, &value, kRegisters, 1,
                               i);
}

void countLabels()
{
    {
        LabelledPlant nested({LabelKind::Member, kRegisters, kLabels});
        count("driver/resolve_10000_nested_members", [&] { resolveAll(nested); });
    }
    LabelledPlant plant({LabelKind::Scalar, kRegisters, kLabels});
    count("driver/resolve_10000_scalars", [&] { resolveAll(plant); });
    count("driver/read_10000_values", [&] { readAll(plant); });
    count("driver/write_10000_values_into_the_image",
          [&] { writeSome(plant, PLC_WRITE_MODE_IMAGE, kLabels); });
    count("driver/queue_500_writes", [&] {
        writeSome(plant, PLC_WRITE_MODE_QUEUE, kQueuedWrites);
        plant.driver().dropQueued();
    });
}

RW_VAR entry(int number, int length)
{
    constexpr int kArea = 3;
    constexpr int kDistance = 1024; // entries lie apart, or they would have been merged
    RW_VAR var;
    var.label = QString::fromLatin1("Plant.Station%1_Value").arg(number, 6, 10, QLatin1Char('0'));
    var.station = kStation;
    var.aux1 = PLC_NO_HOST_REQUEST;
    var.dataType = PLC_TYPE_UDINT;
    var.address = number * kDistance;
    var.length = length;
    var.areaIndex = kArea;
    return var;
}

/// A request and its reply, which a host hands over twice.
void exchange(Driver& driver, QByteArray& reply)
{
    if (!driver.comCommunication())
        driver.comCommunication(); // the turn of the lists that have nothing to send
    const RW_VAR* outcome = nullptr;
    for (int pass = 0; pass < kPassesOfAReply; ++pass)
        outcome = driver.dataCom(&reply, int(reply.size()));
    if (outcome->result != PLC_RESULT_ACCEPTED)
        giveUp("a reply is not accepted");
}

void countReadCycle(const char* name, int entries, int length)
{
    Driver driver;
    for (int i = 0; i < entries; ++i) {
        RW_VAR read = entry(i, length);
        driver.addListReadVar(&read);
    }
    driver.logIn();
    QByteArray reply = readReply(std::vector<int>(size_t(entries), length));
    count(name, [&] {
        for (int i = 0; i < kRepetitions; ++i)
            exchange(driver, reply);
    });
}

void countWriteCycle(const char* name, int entries)
{
    Driver driver;
    std::vector<RW_VAR> writes;
    for (int i = 0; i < entries; ++i) {
        writes.push_back(entry(i, 1));
        writes.back().aux1 = i;
        writes.back().aux2 = PLC_REPLY_ACKNOWLEDGED;
        writes.back().data = QByteArray(1, '\7');
    }
    driver.addListWriteVar(&writes[0], PLC_APPEND_NEW);
    driver.logIn();
    driver.dropQueued();
    QByteArray reply = writeReply();
    count(name, [&] {
        for (int i = 0; i < kRepetitions; ++i) {
            for (RW_VAR& write : writes)
                driver.addListWriteVar(&write, PLC_APPEND_NEW);
            exchange(driver, reply);
        }
    });
}

/// Variables in an order that is the same in every run, 8 bytes apart, of one scope.
QList<Label_Type_Info> scopeOf(int variables)
{
    QList<Label_Type_Info> members;
    for (int i = 0; i < variables; ++i)
        members.append(
            variable(QString::fromLatin1("Station%1_Value").arg(i, 6, kDecimal, QLatin1Char('0')),
                     PLC_TYPE_UDINT, 8 * i, 1));
    return QList<Label_Type_Info>() << scope(QLatin1String("Plant"), members);
}

void countSymbolsAndLists()
{
    constexpr int kPrime = 7919; // steps through all of them
    QList<Label_Type_Info> scopes = scopeOf(kLabels);
    QList<HostVarItem> items;
    for (int i = 0; i < kLabels; ++i) {
        HostVarItem item;
        item.label = QString::fromLatin1("Plant.Station%1_Value")
                         .arg(i * kPrime % kLabels, 6, kDecimal, QLatin1Char('0'));
        item.count = kRegisters;
        items.append(item);
    }
    Driver driver;
    count("driver/pass_10000_symbols", [&] { driver.passVarName(&scopes); });
    count("driver/rebuild_10000_labels", [&] { driver.reCreatReadVarList(&items); });
    count("driver/queue_and_drop_500_one_shot_reads", [&] {
        for (int i = 0; i < kQueuedWrites; ++i) {
            RW_VAR read;
            read.label = items.at(i).label;
            read.length = kRegisters;
            driver.addListOnceReadVar(&read, PLC_APPEND_NEW);
        }
        driver.reCreatReadVarList(&items);
        driver.enCommStation(kStation, PLC_STATION_OFF);
        driver.comCommunication();
        driver.enCommStation(kStation, PLC_STATION_ON);
    });
}

void countAll()
{
    countLabels();
    countReadCycle("driver/read_cycle_99_entries_of_9", PLC_MOST_READ_ENTRIES, 9);
    countReadCycle("driver/read_cycle_1_entry_of_998", 1, 998);
    countWriteCycle("driver/write_cycle_90_entries_of_1", 90);
    countSymbolsAndLists();
}

} // namespace
} // namespace plc::bench

int main()
{
    plc::bench::countAll();
}
