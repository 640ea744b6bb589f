#include "tests/lists/folding_fixture.h"

namespace plc::test {
namespace {

class Rebuild : public DriverTest {
protected:
    Rebuild()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, 1000, code));
        variables.append(variable("bit", 13, 35, 40));
        for (int i = 0; i < 200; ++i)
            variables.append(variable(QString("b%1").arg(i), 1, i, 30));
        variables.append(variable("far", 1, 5, -7));
        variables.append(variable("near", 1, 5, 31));
        passSymbols({scope("MAIN", variables)});
        settings.maxReadBytes = 100;
    }

    static HostVarItem item(const QString& label, int count, int station = 0)
    {
        HostVarItem out;
        out.label = label;
        out.count = count;
        out.station = quint8(station);
        return out;
    }

    static int rebuild(QList<HostVarItem> items) { return ReCreatReadVarList(&items); }
    static Places rebuilt(const QList<HostVarItem>& items)
    {
        const int count = rebuild(items);
        EXPECT_EQ(int(PLC_driver.readList.size()), count);
        return places(PLC_driver.readList);
    }
};

TEST_F(Rebuild, EntryCarriesTheItemTheSettingsAndThePlace)
{
    settings.remoteMode = 21;
    settings.localDeviceNo = 22;
    settings.defaultStation = 23;
    HostVarItem var = item("MAIN.code3", 5, 9);
    var.hostWord1 = 77;
    var.subLabel = "second";
    EXPECT_EQ(1, rebuild({var}));
    RW_VAR expected;
    expected.category = 0;
    expected.aux1 = -1;
    expected.aux2 = 0;
    expected.aux3 = 21;
    expected.deviceNo = 22;
    expected.result = 0;
    expected.label = "MAIN.code3";
    expected.subLabel = "second";
    expected.dataType = 3;
    expected.address = 1000;
    expected.station = 23;
    expected.length = 10;
    expected.aux12 = 0;
    expected.areaIndex = 3;
    expectEqualRecords(expected, PLC_driver.readList.at(0));
}

TEST_F(Rebuild, StationIsTheItemsOwnOnlyWithSeveralStations)
{
    settings.defaultStation = 23;
    rebuild({item("MAIN.code3", 1, 255)});
    EXPECT_EQ(23, PLC_driver.readList.at(0).station);
    settings.multiStation = -1;
    rebuild({item("MAIN.code3", 1, 255), item("MAIN.code4", 1, 0)});
    EXPECT_EQ(255, PLC_driver.readList.at(0).station);
    EXPECT_EQ(0, PLC_driver.readList.at(1).station);
}

TEST_F(Rebuild, EveryTypeCodeIsConverted)
{
    struct Row {
        int code;
        int length;
    };
    // Seven of each.
    const Row rows[] = {{1, 7},  {2, 7},  {3, 14}, {4, 14}, {5, 16}, {6, 16},  {7, 16}, {8, 16},
                        {9, 16}, {10, 7}, {11, 7}, {14, 7}, {15, 7}, {16, 14}, {17, 16}};
    for (const Row& row : rows) {
        EXPECT_EQ(1, rebuild({item(QString("MAIN.code%1").arg(row.code), 7)})) << row.code;
        const RW_VAR var = PLC_driver.readList.at(0);
        EXPECT_EQ(row.code, var.dataType);
        EXPECT_EQ(1000, var.address) << row.code;
        EXPECT_EQ(row.code, var.areaIndex);
        EXPECT_EQ(row.length, var.length) << row.code;
    }
    // Bit 1000 is bit 8 of word 62: (8 + 7 + 15) / 16 * 2
    EXPECT_EQ((Places{{62, 2}}), rebuilt({item("MAIN.code13", 7)}));
    EXPECT_EQ(16, PLC_driver.readList.at(0).dataType);
}

TEST_F(Rebuild, BitsBecomeWords)
{
    EXPECT_EQ((Places{{2, 4}}), rebuilt({item("MAIN.bit", 20)}));
    EXPECT_EQ(16, PLC_driver.readList.at(0).dataType);
    EXPECT_EQ(40, PLC_driver.readList.at(0).areaIndex);
}

TEST_F(Rebuild, WhatDoesNotResolveOrCannotBeReadIsSkipped)
{
    EXPECT_EQ(
        (Places{{1000, 2}}),
        rebuilt({item("MAIN.code0", 1), item("MAIN.nosuch", 1), item("", 1), item("MAIN.code3", 1),
                 item("MAIN.code12", 1), item("MAIN.code18", 1), item("OTHER.code3", 1)}));
}

TEST_F(Rebuild, ListOfWhatIsSkippedIsEmpty)
{
    EXPECT_EQ(0, rebuild({item("MAIN.code0", 1), item("MAIN.nosuch", 1)}));
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(Rebuild, AreasAreVisitedAscendingAndNeverMerged)
{
    EXPECT_EQ((Places{{5, 1}, {5, 1}, {5, 1}}),
              rebuilt({item("MAIN.near", 1), item("MAIN.b5", 1), item("MAIN.far", 1)}));
    EXPECT_EQ(-7, PLC_driver.readList.at(0).areaIndex);
    EXPECT_EQ(30, PLC_driver.readList.at(1).areaIndex);
    EXPECT_EQ(31, PLC_driver.readList.at(2).areaIndex);
}

TEST_F(Rebuild, VariablesOfOneAreaAreSortedAndMerged)
{
    EXPECT_EQ((Places{{3, 18}, {150, 4}}),
              rebuilt({item("MAIN.b150", 4), item("MAIN.b20", 1), item("MAIN.b3", 2)}));
    EXPECT_EQ("MAIN.b3", PLC_driver.readList.at(0).label);
}

TEST_F(Rebuild, WorkedGroupOfFour)
{
    QList<Label_Type_Info> variables = {variable("a", 1, 0, 3), variable("b", 1, 50, 3),
                                        variable("c", 1, 90, 3), variable("d", 1, 200, 3)};
    passSymbols({scope("GROUP", variables)});
    EXPECT_EQ((Places{{0, 100}, {100, 20}, {200, 4}}),
              rebuilt({item("GROUP.d", 4), item("GROUP.b", 20), item("GROUP.a", 10),
                       item("GROUP.c", 30)}));
}

TEST_F(Rebuild, VariablesOfDifferentStationsAreMergedTogether)
{
    settings.multiStation = 1;
    EXPECT_EQ((Places{{3, 3}}), rebuilt({item("MAIN.b3", 2, 1), item("MAIN.b5", 1, 2)}));
    EXPECT_EQ(1, PLC_driver.readList.at(0).station);
}

TEST_F(Rebuild, EqualVariablesAreFoldedInTheirOrder)
{
    HostVarItem first = item("MAIN.b3", 2);
    first.subLabel = "first";
    HostVarItem second = item("MAIN.b3", 4);
    second.subLabel = "second";
    EXPECT_EQ((Places{{3, 4}}), rebuilt({first, second}));
    EXPECT_EQ("first", PLC_driver.readList.at(0).subLabel);
}

TEST_F(Rebuild, TwoLengthsAtOneAddress)
{
    const QList<HostVarItem> items = {item("MAIN.b3", 4), item("MAIN.b3", 8)};
    settings.maxReadBytes = 1;
    EXPECT_EQ((Places{{3, 8}}), rebuilt(items));
    settings.maxReadBytes = 8;
    EXPECT_EQ((Places{{3, 8}}), rebuilt(items));
    settings.maxReadBytes = 4;
    EXPECT_EQ((Places{{3, 4}, {7, 4}}), rebuilt(items));
}

TEST_F(Rebuild, LongVariableIsCutUnlessTheLimitIsOne)
{
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 50}}), rebuilt({item("MAIN.b0", 250)}));
    settings.maxReadBytes = 1;
    EXPECT_EQ((Places{{0, 250}}), rebuilt({item("MAIN.b0", 250)}));
}

TEST_F(Rebuild, VariableWithoutLengthAddsNothing)
{
    EXPECT_EQ(Places{}, rebuilt({item("MAIN.b0", 0)}));
    EXPECT_EQ(Places{}, rebuilt({item("MAIN.b0", -10), item("MAIN.code3", INT_MAX)}));
    EXPECT_EQ((Places{{7, 1}}), rebuilt({item("MAIN.b0", 0), item("MAIN.b7", 1)}));
}

TEST_F(Rebuild, HugeVariableIsSkippedAndTheOthersAreRead)
{
    for (int maxReadBytes : {1, 2, INT_MAX}) {
        settings.maxReadBytes = maxReadBytes;
        EXPECT_EQ((Places{{7, 1}}), rebuilt({item("MAIN.b0", INT_MAX), item("MAIN.b7", 1)}))
            << maxReadBytes;
    }
}

TEST_F(Rebuild, ReplacesTheWholeList)
{
    PLC_driver.readList.append(entry(900, 900));
    EXPECT_EQ((Places{{3, 1}}), rebuilt({item("MAIN.b3", 1)}));
    EXPECT_EQ((Places{{4, 1}}), rebuilt({item("MAIN.b4", 1)}));
}

TEST_F(Rebuild, StartsTheScanAnew)
{
    PLC_driver.cycleCount = 5;
    settings.scanDone = 1;
    rebuild({item("MAIN.nosuch", 1)});
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(0, settings.scanDone);
}

TEST_F(Rebuild, EmptyInputEmptiesTheListAndLeavesTheScanAlone)
{
    PLC_driver.readList.append(entry(900, 900));
    PLC_driver.cycleCount = 5;
    settings.scanDone = 1;
    EXPECT_EQ(0, rebuild({}));
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
    EXPECT_EQ(5, PLC_driver.cycleCount);
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(Rebuild, NullInputChangesNothing)
{
    PLC_driver.readList.append(entry(900, 900));
    PLC_driver.cycleCount = 5;
    settings.scanDone = 1;
    EXPECT_EQ(0, ReCreatReadVarList(nullptr));
    EXPECT_EQ((Places{{900, 900}}), places(PLC_driver.readList));
    EXPECT_EQ(5, PLC_driver.cycleCount);
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(Rebuild, LimitThatIsNotPositiveGivesNoEntries)
{
    for (int maxReadBytes : {0, -1, INT_MIN}) {
        PLC_driver.readList.append(entry(900, 900));
        settings.maxReadBytes = maxReadBytes;
        EXPECT_EQ(0, rebuild({item("MAIN.b3", 1)})) << maxReadBytes;
        EXPECT_TRUE(PLC_driver.readList.isEmpty());
    }
}

TEST_F(Rebuild, WhatIsAboveALimitIsSkipped)
{
    settings.maxReadBytes = INT_MAX;
    EXPECT_EQ(1, rebuild({item("MAIN.b3", PLC_LARGEST_VALUE)}));
    EXPECT_EQ(PLC_LARGEST_VALUE, PLC_driver.readList.first().length);
    EXPECT_EQ(0, rebuild({item("MAIN.b3", PLC_LARGEST_VALUE + 1)}));
    EXPECT_EQ(0, rebuild({item("MAIN.b3", INT_MAX)}));
    settings.maxReadBytes = 2;
    EXPECT_EQ(PLC_MOST_PIECES, rebuild({item("MAIN.b3", 2 * PLC_MOST_PIECES)}));
    EXPECT_EQ(0, rebuild({item("MAIN.b3", 2 * PLC_MOST_PIECES + 1)}));
    EXPECT_EQ(1, rebuild({item("MAIN.b3", 2 * PLC_MOST_PIECES + 1), item("MAIN.b9", 1)}));
}

TEST_F(Rebuild, WithoutSettingsNothingIsBuilt)
{
    SetComInfo(nullptr);
    EXPECT_EQ(0, rebuild({item("MAIN.b3", 1)}));
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(Rebuild, InputIsNotChanged)
{
    QList<HostVarItem> items = {item("MAIN.b9", 250, 4), item("MAIN.b3", 2, 5)};
    items[0].hostWord1 = 6;
    ReCreatReadVarList(&items);
    ASSERT_EQ(2, int(items.size()));
    EXPECT_EQ("MAIN.b9", items.at(0).label);
    EXPECT_EQ(250, items.at(0).count);
    EXPECT_EQ(4, items.at(0).station);
    EXPECT_EQ(6, items.at(0).hostWord1);
    EXPECT_EQ("MAIN.b3", items.at(1).label);
    EXPECT_EQ(2, items.at(1).count);
}

TEST_F(Rebuild, OtherListsAreNotTouched)
{
    PLC_driver.writeList.append(entry(1, 1));
    PLC_driver.onceReadList.append(entry(2, 2));
    rebuild({item("MAIN.b3", 1)});
    EXPECT_EQ(1, int(PLC_driver.writeList.size()));
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
}

TEST_F(Rebuild, RunsUnderTheListLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { rebuild({item("MAIN.b3", 1)}); }));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { rebuild({}); }));
}

TEST_F(Rebuild, ListsAreFreeWhileLabelsAreResolved)
{
    bool isFree = false;
    const WatchedText label("MAIN.b3", [&] {
        isFree = PLC_driver.listMutex.tryLock();
        if (isFree)
            PLC_driver.listMutex.unlock();
    });
    EXPECT_EQ(1, rebuild({item(label.text(), 1)}));
    EXPECT_TRUE(label.wasRead());
    EXPECT_TRUE(isFree);
    PLC_driver.readList.clear(); // its entry shares the label
}

} // namespace
} // namespace plc::test
