#include "model/driver_model.h"
#include "model/library_side.h"
#include "tests/lists/folding_fixture.h"

namespace plc::test {
namespace {

using model::DriverModel;

using RandomGroups = DriverTest;

/// The group as the model sorts it.
QList<RW_VAR> sorted(const QList<RW_VAR>& group)
{
    std::vector<model::Variable> list = model::fromQt(group);
    DriverModel::sort(list);
    return model::toQt(list);
}

int randomLimit(Random& random)
{
    static const int limits[] = {1, 2, 3, 4, 7, 8, 16, 100, 200, 999, 65536, INT_MAX};
    return random.oneIn(3) ? random.between(1, 60) : limits[random.below(12)];
}

QList<RW_VAR> randomGroup(Random& random, int areaIndex)
{
    QList<RW_VAR> group;
    const int reach = random.oneIn(3) ? 2000 : random.between(1, 300);
    const int base = random.oneIn(4) ? random.between(-500, 0) : random.below(500);
    for (int i = random.below(24); i > 0; --i) {
        const int length = random.oneIn(12)  ? random.between(-40, 0)
                           : random.oneIn(9) ? random.between(1, 500)
                                             : random.between(1, 20);
        RW_VAR var = entry(base + random.below(reach), length, QString::number(i), areaIndex);
        var.station = random.below(3);
        var.dataType = random.between(1, 17);
        group.append(var);
    }
    return group;
}

TEST_F(RandomGroups, SortAsByExchangingNeighbours)
{
    Random random(1);
    for (int round = 0; round < 3000; ++round) {
        QList<RW_VAR> group = randomGroup(random, 3);
        std::vector<model::Variable> expected = model::fromQt(group);
        DriverModel::sort(expected);
        Bubble_Sort(&group);
        expectEqualLists(model::toQt(expected), group);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST_F(RandomGroups, FoldAsTheStepsSay)
{
    Random random(2);
    for (int round = 0; round < 8000; ++round) {
        const int maxLen = randomLimit(random);
        DriverModel model;
        PLC_driver.readList.clear();
        for (int area = random.between(1, 3); area > 0; --area) {
            QList<RW_VAR> group = sorted(randomGroup(random, area));
            model.foldInto(model::fromQt(group), maxLen);
            BitVarReCreat(&group, maxLen);
        }
        expectEqualLists(model::toQt(model.readList), PLC_driver.readList);
        ASSERT_FALSE(HasFailure()) << "round " << round << ", limit " << maxLen;
    }
}

TEST_F(RandomGroups, FoldAsTheStepsSayAtTheEndsOfTheAddresses)
{
    Random random(3);
    const int anchors[] = {INT_MIN, INT_MAX - 300, -150, INT_MAX - 5};
    for (int round = 0; round < 4000; ++round) {
        const int maxLen = random.oneIn(4) ? INT_MAX - random.below(3) : random.between(2, 80);
        QList<RW_VAR> group;
        const int anchor = anchors[random.below(4)];
        for (int i = random.between(1, 12); i > 0; --i) {
            const int step = random.below(qMin(300, INT_MAX - qMax(anchor, 1) + 1));
            const bool isLong = maxLen > 1000 && random.oneIn(3);
            const int length =
                isLong ? random.between(1, PLC_LARGEST_VALUE) : random.between(-3, 120);
            group.append(entry(anchor + step, length, QString::number(i)));
        }
        group = sorted(group);
        DriverModel model;
        model.foldInto(model::fromQt(group), maxLen);
        PLC_driver.readList.clear();
        BitVarReCreat(&group, maxLen);
        expectEqualLists(model::toQt(model.readList), PLC_driver.readList);
        ASSERT_FALSE(HasFailure()) << "round " << round << ", limit " << maxLen;
    }
}

TEST_F(RandomGroups, WholeRebuildsFollowTheStepsFromTheLabelsOn)
{
    Random random(4);
    QList<Label_Type_Info> variables;
    for (int i = 0; i < 120; ++i) {
        variables.append(variable(QString("v%1").arg(i), random.between(0, 18),
                                  random.between(-50, 1500), random.between(-2, 2)));
    }
    const QList<Label_Type_Info> scopes{scope("MAIN", variables)};
    passSymbols(scopes);
    for (int round = 0; round < 1500; ++round) {
        settings.maxReadBytes = randomLimit(random);
        model::Settings modelSettings = model::fromQt(settings);
        DriverModel model;
        model.setComInfo(&modelSettings);
        model.passSymbols(model::fromQt(scopes));
        std::vector<model::HostItem> items;
        for (int i = random.below(40); i > 0; --i) {
            model::HostItem item;
            item.label = model::fromQt("MAIN." + variables.at(random.below(120)).name);
            item.subLabel = model::fromQt(QString::number(i));
            item.count = random.oneIn(10) ? random.between(-9, 0) : random.between(1, 60);
            items.push_back(item);
        }
        QList<HostVarItem> hostItems = model::toQt(items);
        ASSERT_EQ(model.rebuildReadList(items), ReCreatReadVarList(&hostItems));
        expectEqualLists(model::toQt(model.readList), PLC_driver.readList);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST_F(RandomGroups, EveryByteOfEveryVariableIsRead)
{
    Random random(6);
    for (int round = 0; round < 1000; ++round) {
        const int maxLen = random.between(2, 300);
        QList<RW_VAR> group = randomGroup(random, 3);
        Bubble_Sort(&group);
        PLC_driver.readList.clear();
        BitVarReCreat(&group, maxLen);
        std::set<int> bytes;
        for (const RW_VAR& var : PLC_driver.readList) {
            ASSERT_LE(var.length, maxLen);
            ASSERT_GE(var.length, 1);
            for (int i = 0; i < var.length; ++i)
                bytes.insert(var.address + i);
        }
        for (const RW_VAR& var : group) {
            for (int i = 0; i < var.length; ++i)
                ASSERT_TRUE(bytes.count(var.address + i)) << "round " << round;
        }
    }
}

} // namespace
} // namespace plc::test
