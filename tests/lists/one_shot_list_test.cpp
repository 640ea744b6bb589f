#include "model/driver_model.h"
#include "model/library_side.h"
#include "tests/lists/variable_lists_fixture.h"

namespace plc::test {
namespace {

class OneShotList : public DriverTest {
protected:
    OneShotList()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, 1000, 3));
        variables.append(variable("bit", 13, 35, 3));
        variables.append(variable("high", 1, INT_MAX - 99, 3));
        symbols.append(scope("MAIN", variables));
        passSymbols(symbols);
        settings.maxReadBytes = 256;
        settings.defaultStation = 8;
    }

    static RW_VAR request(const QString& label, int count)
    {
        RW_VAR var;
        var.label = label;
        var.length = count;
        return var;
    }

    static int add(const QString& label, int count)
    {
        RW_VAR var = request(label, count);
        return AddListOnceReadVar(&var, 0);
    }

    QList<Label_Type_Info> symbols;

    static Places queued() { return places(PLC_driver.onceReadList); }
};

TEST_F(OneShotList, LongVariableIsCutIntoPieces)
{
    EXPECT_EQ(3, add("MAIN.code3", 300));
    EXPECT_EQ((Places{{1000, 256}, {1256, 256}, {1512, 88}}), queued());
}

TEST_F(OneShotList, SecondEqualRequestAddsNothing)
{
    EXPECT_EQ(3, add("MAIN.code3", 300));
    EXPECT_EQ(3, add("MAIN.code3", 300));
    EXPECT_EQ((Places{{1000, 256}, {1256, 256}, {1512, 88}}), queued());
}

TEST_F(OneShotList, BitsBecomeWords)
{
    RW_VAR var = request("MAIN.bit", 20);
    EXPECT_EQ(1, AddListOnceReadVar(&var, 0));
    EXPECT_EQ((Places{{2, 4}}), queued());
    EXPECT_EQ(16, PLC_driver.onceReadList.at(0).dataType);
    EXPECT_EQ(16, var.dataType);
}

TEST_F(OneShotList, EveryTypeCodeIsConverted)
{
    struct Row {
        int code;
        int length;
    };
    // Seven of each.
    const Row rows[] = {{1, 7},  {2, 7},   {3, 14},  {4, 14}, {5, 16}, {6, 16},  {7, 16}, {8, 16},
                        {9, 16}, {10, 14}, {11, 14}, {14, 7}, {15, 7}, {16, 14}, {17, 16}};
    int count = 0;
    for (const Row& row : rows) {
        RW_VAR var = request(QString("MAIN.code%1").arg(row.code), 7);
        EXPECT_EQ(++count, AddListOnceReadVar(&var, 0)) << row.code;
        const RW_VAR& entry = PLC_driver.onceReadList.last();
        EXPECT_EQ(row.code, entry.dataType);
        EXPECT_EQ(1000, entry.address) << row.code;
        EXPECT_EQ(3, entry.areaIndex) << row.code;
        EXPECT_EQ(row.length, entry.length) << row.code;
    }
    // Bit 1000 is bit 8 of word 62: (8 + 7 + 15) / 16 * 2
    EXPECT_EQ(++count, add("MAIN.code13", 7));
    EXPECT_EQ(16, PLC_driver.onceReadList.last().dataType);
    EXPECT_EQ(62, PLC_driver.onceReadList.last().address);
    EXPECT_EQ(2, PLC_driver.onceReadList.last().length);
}

TEST_F(OneShotList, TypesThatCannotBeReadAreRefused)
{
    settings.defaultStation = 8;
    for (const char* label : {"MAIN.code0", "MAIN.code18"}) {
        RW_VAR var = request(label, 7);
        EXPECT_EQ(0, AddListOnceReadVar(&var, 0)) << label;
        EXPECT_EQ(8, var.station) << label;
        EXPECT_EQ(1000, var.address) << label;
        EXPECT_EQ(3, var.areaIndex) << label;
        EXPECT_EQ(0, var.dataType) << label;
        EXPECT_EQ(7, var.length) << label;
    }
    EXPECT_EQ(0, add("MAIN.code12", 7));
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(OneShotList, LabelThatDoesNotResolveLeavesTheRecordAsItWas)
{
    add("MAIN.code3", 1);
    RW_VAR var = fullRecord();
    var.label = "MAIN.nosuch";
    EXPECT_EQ(0, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
    RW_VAR expected = fullRecord();
    expected.label = "MAIN.nosuch";
    expectEqualRecords(expected, var);
}

TEST_F(OneShotList, OtherMembersAreCarried)
{
    RW_VAR var = fullRecord();
    var.label = "MAIN.code3";
    var.length = 1;
    AddListOnceReadVar(&var, 0);
    RW_VAR expected = fullRecord();
    expected.label = "MAIN.code3";
    expected.dataType = 3;
    expected.address = 1000;
    expected.areaIndex = 3;
    expected.station = 8;
    expected.length = 2;
    expectEqualRecords(expected, PLC_driver.onceReadList.at(0));
}

TEST_F(OneShotList, StationIsTheVariablesOwnOnlyWithSeveralStations)
{
    RW_VAR var = request("MAIN.code3", 1);
    var.station = 5;
    AddListOnceReadVar(&var, 0);
    EXPECT_EQ(8, PLC_driver.onceReadList.last().station);
    EXPECT_EQ(8, var.station);
    for (int multiStation : {1, -1, 2}) {
        settings.multiStation = multiStation;
        var = request("MAIN.code3", 1);
        var.station = 5 + multiStation;
        AddListOnceReadVar(&var, 0);
        EXPECT_EQ(5 + multiStation, PLC_driver.onceReadList.last().station);
    }
}

TEST_F(OneShotList, RecordIsLeftAsItsLastPieceWithTheAddressBehindIt)
{
    RW_VAR var = request("MAIN.code3", 300);
    AddListOnceReadVar(&var, 0);
    EXPECT_EQ(88, var.length);
    EXPECT_EQ(1600, var.address);
    EXPECT_EQ(3, var.dataType);
    EXPECT_EQ(3, var.areaIndex);

    var = request("MAIN.code3", 256);
    AddListOnceReadVar(&var, 0);
    EXPECT_EQ(256, var.length);
    EXPECT_EQ(1512, var.address);

    var = request("MAIN.code3", 1);
    AddListOnceReadVar(&var, 0);
    EXPECT_EQ(2, var.length);
    EXPECT_EQ(1002, var.address);
}

TEST_F(OneShotList, LengthOfExactlyTheLimitIsOnePiece)
{
    EXPECT_EQ(1, add("MAIN.code3", 128));
    EXPECT_EQ((Places{{1000, 256}}), queued());
}

TEST_F(OneShotList, OneByteMoreThanTheLimitIsTwoPieces)
{
    EXPECT_EQ(2, add("MAIN.code1", 257));
    EXPECT_EQ((Places{{1000, 256}, {1256, 1}}), queued());
}

TEST_F(OneShotList, BitRangeAdvancesItsWordAddressByBytes)
{
    settings.maxReadBytes = 4;
    // Bit 35 is bit 3 of word 2: (3 + 50 + 15) / 16 * 2 = 8 bytes.
    EXPECT_EQ(2, add("MAIN.bit", 50));
    EXPECT_EQ((Places{{2, 4}, {6, 4}}), queued());
}

TEST_F(OneShotList, PiecesAdvanceTheAddressModuloTwoToThe32)
{
    settings.maxReadBytes = 60;
    RW_VAR var = request("MAIN.high", 150);
    EXPECT_EQ(3, AddListOnceReadVar(&var, 0));
    // 2147483548 + 60, + 120 = 2147483668 = 2^32 - 2147483628
    EXPECT_EQ((Places{{2147483548, 60}, {2147483608, 60}, {-2147483628, 30}}), queued());
    EXPECT_EQ(-2147483598, var.address);
}

TEST_F(OneShotList, EntriesThatDifferInOneComparedMemberAreBothQueued)
{
    settings.multiStation = 1;
    RW_VAR var = request("MAIN.code3", 1);
    EXPECT_EQ(1, AddListOnceReadVar(&var, 0));
    const auto addChanged = [](const std::function<void(RW_VAR&)>& change) {
        RW_VAR changed = request("MAIN.code3", 1);
        change(changed);
        return AddListOnceReadVar(&changed, 0);
    };
    EXPECT_EQ(2, addChanged([](RW_VAR& v) { v.category = 1; }));
    EXPECT_EQ(3, addChanged([](RW_VAR& v) { v.aux1 = 1; }));
    EXPECT_EQ(4, addChanged([](RW_VAR& v) { v.station = 1; }));
    EXPECT_EQ(5, addChanged([](RW_VAR& v) { v.deviceNo = 1; }));
    EXPECT_EQ(6, addChanged([](RW_VAR& v) { v.length = 2; }));
    // Another type, address or area comes from another label.
    EXPECT_EQ(7, addChanged([](RW_VAR& v) { v.label = "MAIN.code4"; }));
    passSymbols({scope("OTHER", {variable("area", 3, 1000, 4), variable("place", 3, 1001, 3)})});
    EXPECT_EQ(8, addChanged([](RW_VAR& v) { v.label = "OTHER.area"; }));
    EXPECT_EQ(9, addChanged([](RW_VAR& v) { v.label = "OTHER.place"; }));
    EXPECT_EQ(9, addChanged([](RW_VAR&) {}));
}

TEST_F(OneShotList, EntriesThatDifferInOtherMembersAreTheSame)
{
    EXPECT_EQ(1, add("MAIN.code3", 1));
    passSymbols({scope("ALIAS", {variable("x", 3, 1000, 3)})});
    RW_VAR var = request("ALIAS.x", 1);
    var.aux2 = 1;
    var.aux3 = 1;
    var.result = 1;
    var.aux12 = 1;
    var.subLabel = "other";
    var.data = "other";
    EXPECT_EQ(1, AddListOnceReadVar(&var, 0));
    EXPECT_EQ("MAIN.code3", PLC_driver.onceReadList.at(0).label);
    EXPECT_EQ(0, PLC_driver.onceReadList.at(0).aux2);
}

TEST_F(OneShotList, HeadIsComparedToo)
{
    EXPECT_EQ(1, add("MAIN.code3", 1));
    EXPECT_EQ(2, add("MAIN.code4", 1));
    EXPECT_EQ(2, add("MAIN.code3", 1));
}

TEST_F(OneShotList, OnlyThePiecesThatAreNotQueuedAreAdded)
{
    add("MAIN.code3", 300);
    PLC_driver.onceReadList.removeAt(1);
    EXPECT_EQ(3, add("MAIN.code3", 300));
    EXPECT_EQ((Places{{1000, 256}, {1512, 88}, {1256, 256}}), queued());
}

TEST_F(OneShotList, AppendOfOneAppendsTheRecordAsItIs)
{
    RW_VAR var = fullRecord();
    var.label = "MAIN.nosuch";
    EXPECT_EQ(1, AddListOnceReadVar(&var, 1));
    EXPECT_EQ(2, AddListOnceReadVar(&var, 1));
    RW_VAR expected = fullRecord();
    expected.label = "MAIN.nosuch";
    expectEqualRecords(expected, PLC_driver.onceReadList.at(0));
    expectEqualRecords(expected, PLC_driver.onceReadList.at(1));
    expectEqualRecords(expected, var);
}

TEST_F(OneShotList, AppendOfOneDoesNotLookAtTheLimit)
{
    RW_VAR var = fullRecord();
    for (int i = 1; i <= 1030; ++i)
        ASSERT_EQ(i, AddListOnceReadVar(&var, 1));
    EXPECT_EQ(1030, add("MAIN.code3", 1));
}

TEST_F(OneShotList, OtherAppendValuesCountAsZero)
{
    for (int append : {-1, 2, INT_MAX, INT_MIN}) {
        RW_VAR var = request("MAIN.code3", 1);
        EXPECT_EQ(1, AddListOnceReadVar(&var, append)) << append;
        EXPECT_EQ(2, var.length);
    }
}

TEST_F(OneShotList, TakesNoNewEntryOnceItHolds1024)
{
    settings.maxReadBytes = 1;
    EXPECT_EQ(1020, add("MAIN.code1", 1020));
    EXPECT_EQ(1024, add("MAIN.code2", 10));
    EXPECT_EQ(1003, PLC_driver.onceReadList.last().address);
    EXPECT_EQ(1024, add("MAIN.code2", 10));
    EXPECT_EQ(1024, add("MAIN.code3", 1));
    EXPECT_EQ(1003, PLC_driver.onceReadList.last().address);
}

TEST_F(OneShotList, RecordIsLeftAsTheWalkLeavesItAlsoWhenTheListIsFull)
{
    settings.maxReadBytes = 1;
    add("MAIN.code1", 1024);
    settings.maxReadBytes = 256;
    RW_VAR var = request("MAIN.code3", 300);
    EXPECT_EQ(1024, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(88, var.length);
    EXPECT_EQ(1600, var.address);
    var = request("MAIN.code3", 256);
    EXPECT_EQ(1024, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(256, var.length);
    EXPECT_EQ(1512, var.address);
}

TEST_F(OneShotList, HugeLengthEndsAtOnceWhenTheListIsFull)
{
    settings.maxReadBytes = 1;
    RW_VAR var = request("MAIN.code1", PLC_MOST_PIECES);
    EXPECT_EQ(1024, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(1000, PLC_driver.onceReadList.first().address);
    EXPECT_EQ(2023, PLC_driver.onceReadList.last().address);
    EXPECT_EQ(1, var.length);
    EXPECT_EQ(66536, var.address); // 1000 + 65536
    settings.maxReadBytes = 2;
    var = request("MAIN.code1", 2 * PLC_MOST_PIECES - 1);
    EXPECT_EQ(1024, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(1, var.length);
    EXPECT_EQ(132071, var.address); // 1000 + 131071
}

TEST_F(OneShotList, MorePiecesThanTheLimitAreRefused)
{
    add("MAIN.code4", 1);
    for (int maxReadBytes : {1, 2, 200}) {
        settings.maxReadBytes = maxReadBytes;
        RW_VAR var = request("MAIN.code1", PLC_MOST_PIECES * maxReadBytes + 1);
        EXPECT_EQ(0, AddListOnceReadVar(&var, 0)) << maxReadBytes;
        EXPECT_EQ(PLC_MOST_PIECES * maxReadBytes + 1, var.length);
        EXPECT_EQ(1000, var.address);
    }
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
}

TEST_F(OneShotList, ValueAboveTheLargestIsRefused)
{
    add("MAIN.code4", 1);
    settings.maxReadBytes = INT_MAX;
    EXPECT_EQ(0, add("MAIN.code1", PLC_LARGEST_VALUE + 1));
    EXPECT_EQ(0, add("MAIN.code1", INT_MAX));
    EXPECT_EQ(0, add("MAIN.code3", PLC_LARGEST_VALUE / 2 + 1));
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
    EXPECT_EQ(2, add("MAIN.code3", PLC_LARGEST_VALUE / 2));
}

TEST_F(OneShotList, NoBytesAddNothingAndGiveTheCount)
{
    EXPECT_EQ(0, add("MAIN.code3", 0));
    EXPECT_EQ(1, add("MAIN.code3", 1));
    for (int count : {0, -1, -1000}) {
        RW_VAR var = request("MAIN.code3", count);
        EXPECT_EQ(1, AddListOnceReadVar(&var, 0)) << count;
        EXPECT_EQ(2 * count, var.length);
        EXPECT_EQ(1000, var.address);
        EXPECT_EQ(3, var.dataType);
    }
    // 2 * 2147483647 is -2 in 32 bits.
    RW_VAR var = request("MAIN.code3", INT_MAX);
    EXPECT_EQ(1, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(-2, var.length);
    EXPECT_EQ(1, add("MAIN.code8", INT_MAX));
    EXPECT_EQ(1, add("MAIN.code1", INT_MIN));
    EXPECT_EQ(1, add("MAIN.code3", INT_MIN));
}

TEST_F(OneShotList, PieceSizeThatIsNotPositiveAddsNothingButConvertsTheRecord)
{
    add("MAIN.code4", 1);
    for (int maxReadBytes : {0, -1, INT_MIN}) {
        settings.maxReadBytes = maxReadBytes;
        RW_VAR var = request("MAIN.code3", 300);
        EXPECT_EQ(0, AddListOnceReadVar(&var, 0)) << maxReadBytes;
        EXPECT_EQ(600, var.length);
        EXPECT_EQ(1000, var.address);
        EXPECT_EQ(3, var.dataType);
        EXPECT_EQ(3, var.areaIndex);
        EXPECT_EQ(8, var.station);
        var = request("MAIN.bit", 20);
        EXPECT_EQ(0, AddListOnceReadVar(&var, 0)) << maxReadBytes;
        EXPECT_EQ(16, var.dataType);
        EXPECT_EQ(2, var.address);
        EXPECT_EQ(4, var.length);
    }
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
}

TEST_F(OneShotList, LargestPieceSizeLeavesTheVariableWhole)
{
    settings.maxReadBytes = INT_MAX;
    EXPECT_EQ(1, add("MAIN.code1", PLC_LARGEST_VALUE));
    EXPECT_EQ((Places{{1000, PLC_LARGEST_VALUE}}), queued());
}

TEST_F(OneShotList, NullAddsNothing)
{
    add("MAIN.code3", 1);
    EXPECT_EQ(0, AddListOnceReadVar(nullptr, 0));
    EXPECT_EQ(0, AddListOnceReadVar(nullptr, 1));
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
}

TEST_F(OneShotList, WithoutSettingsNothingIsAdded)
{
    SetComInfo(nullptr);
    EXPECT_EQ(0, add("MAIN.code3", 1));
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(OneShotList, LabelIsResolvedBeforeTheLockIsTaken)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    EXPECT_EQ(0, add("MAIN.nosuch", 1));
    EXPECT_EQ(0, add("MAIN.code0", 1));
}

TEST_F(OneShotList, IsChangedUnderTheListLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { add("MAIN.code3", 1); }));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] {
        RW_VAR var = request("MAIN.code3", 1);
        AddListOnceReadVar(&var, 1);
    }));
    EXPECT_EQ(2, int(PLC_driver.onceReadList.size()));
}

TEST_F(OneShotList, EqualsAPlainListForRandomRequests)
{
    Random random(23);
    model::DriverModel model;
    model.passSymbols(model::fromQt(symbols));
    for (int i = 0; i < 1000; ++i) {
        const int max = random.oneIn(3) ? random.between(1, 20) : random.between(1, 300);
        const int count = random.oneIn(20) ? random.between(-5, 5) : random.between(1, 400);
        settings.maxReadBytes = max;
        RW_VAR var = request("MAIN.code1", count);
        var.category = random.below(2);
        model::Settings modelSettings = model::fromQt(settings);
        model.setComInfo(&modelSettings);
        model::Variable expected = model::fromQt(var);
        ASSERT_EQ(model.addOnce(expected, 0), AddListOnceReadVar(&var, 0));
        expectEqualRecords(model::toQt(expected), var);
        if (random.oneIn(200)) {
            model.onceList.clear();
            PLC_driver.onceReadList.clear();
        }
        expectEqualLists(model::toQt(model.onceList), PLC_driver.onceReadList);
        ASSERT_FALSE(HasFailure()) << "request " << i;
    }
}

} // namespace
} // namespace plc::test
