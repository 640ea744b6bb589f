#include <cstdio>

#include "benchmarks.h"
#include "support/labelled_plant.h"
#include "support/replies.h"

namespace plc::bench {

namespace {

constexpr int kVariables = 50;
constexpr int kMaxReadBytes = 200;

bool agrees(bool same, const std::string& what)
{
    if (!same)
        std::fprintf(stderr, "bench_driver: the baseline and the driver differ: %s\n",
                     what.c_str());
    return same;
}

/// Reads all labels cyclically, once: same entries, same frame, same values afterwards.
bool exchangesAgree(LabelledPlant& plant, const PlantShape& shape)
{
    Driver& driver = plant.driver();
    baseline::StraightforwardDriver& straightforward = plant.straightforward();
    QList<HostVarItem> items;
    for (const QString& label : plant.labels()) {
        HostVarItem item;
        item.label = label;
        item.count = shape.registers;
        items.append(item);
    }
    const int entries = driver.reCreatReadVarList(&items);
    if (!agrees(entries == straightforward.rebuildReadList(items, kMaxReadBytes),
                "entries of the read list of " + shape.name()))
        return false;

    driver.logIn();
    for (int answered = 0; answered < entries;) {
        const Protocol* request = driver.comCommunication();
        const Protocol* expected = straightforward.nextRequest();
        if (!agrees(request->frame == expected->frame, "read request for " + shape.name()))
            return false;
        const std::vector<int> lengths = readLengths(request->frame);
        QByteArray reply = readReply(lengths);
        for (int pass = 0; pass < kPassesOfAReply; ++pass) {
            if (!agrees(driver.dataCom(&reply, int(reply.size()))->result ==
                            straightforward.takeReply(reply),
                        "outcome of a reply for " + shape.name()))
                return false;
        }
        answered += int(lengths.size());
    }
    return true;
}

bool valuesAgree(LabelledPlant& plant, const PlantShape& shape)
{
    QByteArray value;
    QByteArray expected;
    for (const QString& label : plant.labels()) {
        const int result = plant.driver().getRegisterData(label, 0, 0, 0, &value, shape.registers);
        const bool same =
            result == plant.straightforward().readValue(label, &expected, shape.registers) &&
            result == 1 && value == expected && value.count('\0') == 0;
        if (!agrees(same, "value of " + label.toStdString()))
            return false;
    }
    return true;
}

bool writesAgree(LabelledPlant& plant, const PlantShape& shape)
{
    QByteArray value(2 * shape.registers, '\x55');
    for (const QString& label : plant.labels()) {
        const int size = int(value.size());
        const bool same =
            plant.driver().setRegisterData(label, 0, QString(), 0, &value, size, 0, 0) ==
            plant.straightforward().writeValue(label, &value, size);
        if (!agrees(same, "outcome of a write to " + label.toStdString()))
            return false;
    }
    return valuesAgree(plant, shape);
}

} // namespace

bool baselineAgrees()
{
    for (const LabelKind kind : {LabelKind::Scalar, LabelKind::ArrayElement, LabelKind::Member}) {
        for (const int registers : {1, 2, 4, 100}) {
            const PlantShape shape{kind, registers, kVariables};
            LabelledPlant plant(shape);
            if (!exchangesAgree(plant, shape) || !valuesAgree(plant, shape) ||
                !writesAgree(plant, shape))
                return false;
        }
    }
    return true;
}

} // namespace plc::bench
