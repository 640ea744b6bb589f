#include "lists/variable_lists.h"

#include <climits>
#include <thread>

#include "base/wrapped_int.h"
#include "support/lock_check.h"
#include "support/random.h"
#include "support/record_checks.h"
#include "support/symbol_fixture.h"

namespace plc {
namespace test {
namespace {

using ReadList = DriverTest;
using WriteList = DriverTest;
using PieceCutting = DriverTest;

// --- Cyclic reads ---

TEST_F(ReadList, AppendsTheRecordAsItIs)
{
    RW_VAR var = fullRecord();
    EXPECT_EQ(1, AddListReadVar(&var));
    expectEqualRecords(fullRecord(), PLC_driver.readList.at(0));
    expectEqualRecords(fullRecord(), var);
}

TEST_F(ReadList, EqualRecordsAreAppendedEachTime)
{
    RW_VAR var = fullRecord();
    EXPECT_EQ(1, AddListReadVar(&var));
    EXPECT_EQ(2, AddListReadVar(&var));
    EXPECT_EQ(3, AddListReadVar(&var));
}

TEST_F(ReadList, HasNoLimit)
{
    RW_VAR var = fullRecord();
    for (int i = 1; i <= 3000; ++i)
        ASSERT_EQ(i, AddListReadVar(&var));
}

TEST_F(ReadList, NullAddsNothing)
{
    RW_VAR var = fullRecord();
    AddListReadVar(&var);
    EXPECT_EQ(0, AddListReadVar(nullptr));
    EXPECT_EQ(1, int(PLC_driver.readList.size()));
}

TEST_F(ReadList, NeedsNoSettings)
{
    SetComInfo(nullptr);
    RW_VAR var = fullRecord();
    EXPECT_EQ(1, AddListReadVar(&var));
}

TEST_F(ReadList, AppendingTakesNoLock)
{
    RW_VAR var = fullRecord();
    QMutexLocker lock(&PLC_driver.listMutex);
    EXPECT_EQ(1, AddListReadVar(&var));
}

// --- Writes ---

RW_VAR writeOf(int address, int aux1)
{
    return makeWrite(3, address, hex("12 34"), 2, aux1);
}

int addWrite(int address, int aux1, int append = 0)
{
    RW_VAR var = writeOf(address, aux1);
    return AddListWriteVar(&var, append);
}

/// Tags of all entries, to tell which of several writes to one place is in the list.
std::vector<int> writeTags()
{
    std::vector<int> tags;
    for (const RW_VAR& var : PLC_driver.writeList)
        tags.push_back(var.aux1);
    return tags;
}

TEST_F(WriteList, KeepsACopyOfTheRecord)
{
    RW_VAR var = fullRecord();
    EXPECT_EQ(1, AddListWriteVar(&var, 0));
    expectEqualRecords(fullRecord(), PLC_driver.writeList.at(0));
    expectEqualRecords(fullRecord(), var);
    var.data[0] = 'x';
    EXPECT_EQ(hex("0F 10"), PLC_driver.writeList.at(0).data);
}

TEST_F(WriteList, SecondWriteToThePlaceOfTheOnlyEntryIsQueuedBehindIt)
{
    EXPECT_EQ(1, addWrite(100, 1));
    EXPECT_EQ(2, addWrite(100, 2));
    EXPECT_EQ((std::vector<int>{1, 2}), writeTags());
}

TEST_F(WriteList, EntryBehindTheHeadIsReplaced)
{
    addWrite(100, 1);
    addWrite(200, 2);
    addWrite(300, 3);
    EXPECT_EQ(3, addWrite(300, 4));
    EXPECT_EQ((std::vector<int>{1, 2, 4}), writeTags());
}

TEST_F(WriteList, ReplacingOverwritesEveryMember)
{
    addWrite(100, 1);
    RW_VAR queued = writeOf(10, 2);
    queued.station = 11;
    queued.length = 12;
    AddListWriteVar(&queued, 0);
    RW_VAR var = fullRecord();
    EXPECT_EQ(2, AddListWriteVar(&var, 0));
    expectEqualRecords(fullRecord(), PLC_driver.writeList.at(1));
}

TEST_F(WriteList, HeadIsNeverReplaced)
{
    addWrite(100, 1);
    addWrite(200, 2);
    EXPECT_EQ(3, addWrite(100, 3));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), writeTags());
    EXPECT_EQ(3, addWrite(100, 4));
    EXPECT_EQ((std::vector<int>{1, 2, 4}), writeTags());
}

TEST_F(WriteList, OnlyTheFirstEqualEntryIsReplaced)
{
    addWrite(100, 1);
    addWrite(200, 2, 1);
    addWrite(200, 3, 1);
    EXPECT_EQ(3, addWrite(200, 4));
    EXPECT_EQ((std::vector<int>{1, 4, 3}), writeTags());
}

TEST_F(WriteList, StationAddressAndLengthMakeTheSamePlace)
{
    addWrite(100, 1);
    addWrite(200, 2);
    RW_VAR otherStation = writeOf(200, 3);
    otherStation.station = 9;
    EXPECT_EQ(3, AddListWriteVar(&otherStation, 0));
    RW_VAR otherAddress = writeOf(201, 4);
    EXPECT_EQ(4, AddListWriteVar(&otherAddress, 0));
    RW_VAR otherLength = writeOf(200, 5);
    otherLength.length = 3;
    EXPECT_EQ(5, AddListWriteVar(&otherLength, 0));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), writeTags());
}

TEST_F(WriteList, OtherMembersDoNotMakeAnotherPlace)
{
    addWrite(100, 1);
    addWrite(200, 2);
    RW_VAR var = fullRecord();
    var.address = 200;
    var.station = 0;
    var.length = 2;
    EXPECT_EQ(2, AddListWriteVar(&var, 0));
    expectEqualRecords(var, PLC_driver.writeList.at(1));
}

TEST_F(WriteList, EntryBehindOneOfLengthZeroIsReplaced)
{
    addWrite(1, 100);
    RW_VAR empty = makeWrite(3, 100, QByteArray(), 1, 2);
    ASSERT_EQ(2, AddListWriteVar(&empty, 0));
    RW_VAR write = makeWrite(3, 100, hex("11 22"), 1, 3);
    ASSERT_EQ(3, AddListWriteVar(&write, 0));
    write = makeWrite(3, 100, hex("33 44"), 1, 4);
    ASSERT_EQ(3, AddListWriteVar(&write, 0));
    EXPECT_EQ(2, PLC_driver.writeList.at(1).aux1);
    EXPECT_EQ(0, PLC_driver.writeList.at(1).length);
    EXPECT_EQ(4, PLC_driver.writeList.at(2).aux1);
    EXPECT_EQ(hex("33 44"), PLC_driver.writeList.at(2).data);
}

TEST_F(WriteList, AppendOfOneAppendsInAnyCase)
{
    addWrite(100, 1);
    addWrite(200, 2);
    EXPECT_EQ(3, addWrite(200, 3, 1));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), writeTags());
}

TEST_F(WriteList, OtherAppendValuesCountAsZero)
{
    addWrite(100, 1);
    addWrite(200, 2);
    for (int append : {-1, 2, 3, INT_MAX, INT_MIN})
        EXPECT_EQ(2, addWrite(200, 10, append)) << append;
    EXPECT_EQ((std::vector<int>{1, 10}), writeTags());
}

TEST_F(WriteList, TakesNoNewEntryOnceItHolds1024)
{
    for (int i = 0; i < 1024; ++i)
        ASSERT_EQ(i + 1, addWrite(100 * i, i));
    EXPECT_EQ(1024, addWrite(999999, 5000));
    EXPECT_EQ(1023, PLC_driver.writeList.last().aux1);
    // What is queued already is still replaced.
    EXPECT_EQ(1024, addWrite(100 * 1023, 6000));
    EXPECT_EQ(6000, PLC_driver.writeList.last().aux1);
    EXPECT_EQ(1024, addWrite(0, 7000));
    EXPECT_EQ(0, PLC_driver.writeList.first().aux1);
}

TEST_F(WriteList, AppendOfOneDoesNotLookAtTheLimit)
{
    for (int i = 0; i < 1024; ++i)
        addWrite(100 * i, i);
    EXPECT_EQ(1025, addWrite(0, 5000, 1));
    EXPECT_EQ(1026, addWrite(999999, 5001, 1));
    EXPECT_EQ(1026, addWrite(999998, 5002, 0));
    EXPECT_EQ(5001, PLC_driver.writeList.last().aux1);
}

TEST_F(WriteList, NullAddsNothing)
{
    addWrite(100, 1);
    EXPECT_EQ(0, AddListWriteVar(nullptr, 0));
    EXPECT_EQ(0, AddListWriteVar(nullptr, 1));
    EXPECT_EQ(1, int(PLC_driver.writeList.size()));
}

TEST_F(WriteList, NeedsNoSettings)
{
    SetComInfo(nullptr);
    EXPECT_EQ(1, addWrite(100, 1));
    EXPECT_EQ(2, addWrite(200, 2, 1));
}

TEST_F(WriteList, IsChangedUnderTheListLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { addWrite(100, 1); }));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { addWrite(100, 2, 1); }));
    EXPECT_EQ(2, int(PLC_driver.writeList.size()));
}

TEST_F(WriteList, FourThreadsLoseNoEntry)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < 500; ++i)
                addWrite(thread * 10000 + i, i, 1);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(2000, int(PLC_driver.writeList.size()));
}

TEST_F(WriteList, EqualsAPlainListForRandomWrites)
{
    Random random(17);
    QList<RW_VAR> plain;
    for (int i = 0; i < 20000; ++i) {
        RW_VAR var = writeOf(random.below(40) * (random.oneIn(3) ? 1 : 50), i);
        var.station = random.below(3);
        var.length = random.between(1, 3);
        const int append = random.oneIn(30) ? 1 : 0;
        int found = -1;
        for (int k = 1; k < int(plain.size()) && found < 0 && append == 0; ++k) {
            const RW_VAR& entry = plain.at(k);
            if (entry.station == var.station && entry.address == var.address &&
                entry.length == var.length)
                found = k;
        }
        if (append == 1 || plain.size() < 2)
            plain.append(var);
        else if (found > 0)
            plain[found] = var;
        else if (plain.size() < 1024)
            plain.append(var);
        ASSERT_EQ(int(plain.size()), AddListWriteVar(&var, append));
        if (random.oneIn(40)) {
            plain.removeFirst();
            PLC_driver.writeList.removeFirst();
        }
    }
    for (int i = 0; i < int(plain.size()); ++i)
        ASSERT_EQ(plain.at(i).aux1, PLC_driver.writeList.at(i).aux1);
}

// --- Writes of a value in pieces ---

class WritePieces : public DriverTest {
protected:
    static QByteArray bytes(int count)
    {
        QByteArray out;
        for (int i = 0; i < count; ++i)
            out.append(char(uchar(i * 7 + 3)));
        return out;
    }

    /// The same writes one after the other.
    static void addOneByOne(RW_VAR record, const QByteArray& value, int pieceSize)
    {
        for (int position = 0; position < int(value.size()); position += record.length) {
            record.data = value.mid(position, pieceSize);
            record.length = int(record.data.size());
            AddListWriteVar(&record, 0);
            record.address = advanced(record.address, record.length);
        }
    }
};

TEST_F(WritePieces, LastPieceHoldsTheRest)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), bytes(7), 3);
    ASSERT_EQ((Places{{10, 3}, {13, 3}, {16, 1}}), places(PLC_driver.writeList));
    EXPECT_EQ(hex("03 0A 11"), PLC_driver.writeList.at(0).data);
    EXPECT_EQ(hex("18 1F 26"), PLC_driver.writeList.at(1).data);
    EXPECT_EQ(hex("2D"), PLC_driver.writeList.at(2).data);
}

TEST_F(WritePieces, PiecesCarryTheOtherMembers)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), bytes(4), 4);
    RW_VAR expected = fullRecord();
    expected.length = 4;
    expected.data = bytes(4);
    ASSERT_EQ(1, int(PLC_driver.writeList.size()));
    expectEqualRecords(expected, PLC_driver.writeList.at(0));
}

TEST_F(WritePieces, NoBytesQueueNothing)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), QByteArray(), 4);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(WritePieces, PiecesBehindTheHeadAreReplaced)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), bytes(6), 2);
    queueWritePieces(PLC_driver.writeList, fullRecord(), QByteArray(6, 'x'), 2);
    // The head's place is queued once more; the two behind it are replaced where they are.
    ASSERT_EQ((Places{{10, 2}, {12, 2}, {14, 2}, {10, 2}}), places(PLC_driver.writeList));
    EXPECT_EQ(bytes(2), PLC_driver.writeList.at(0).data);
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ("xx", PLC_driver.writeList.at(i).data) << i;
}

TEST_F(WritePieces, FullListTakesReplacementsOnly)
{
    for (int i = 0; i < 1024; ++i) {
        RW_VAR var = fullRecord();
        var.address = 100000 + 2 * i;
        var.length = 1;
        AddListWriteVar(&var, 1);
    }
    RW_VAR record = fullRecord();
    record.address = 100000 + 2 * 1021;
    queueWritePieces(PLC_driver.writeList, record, QByteArray(10, 'x'), 1);
    ASSERT_EQ(1024, int(PLC_driver.writeList.size()));
    EXPECT_EQ(hex("0F 10"), PLC_driver.writeList.at(1020).data);
    for (int i = 1021; i < 1024; ++i)
        EXPECT_EQ("x", PLC_driver.writeList.at(i).data) << i;
}

TEST_F(WritePieces, FullListKeepsEntriesOfLengthZeroAndReplacesThoseBehindThem)
{
    RW_VAR queued = fullRecord();
    queued.length = 0;
    queued.data.clear();
    queued.aux1 = 900;
    for (int i = 0; i < 1020; ++i) {
        queued.address = 100000 + i;
        AddListWriteVar(&queued, 1);
    }
    // Without bytes at the value's start, between its pieces and behind its end; then its pieces.
    for (int address : {500, 502, 504}) {
        queued.address = address;
        AddListWriteVar(&queued, 1);
    }
    RW_VAR record = fullRecord();
    record.address = 500;
    record.length = 2;
    AddListWriteVar(&record, 1);
    record.address = 502;
    AddListWriteVar(&record, 1);

    record.address = 500;
    queueWritePieces(PLC_driver.writeList, record, QByteArray(4, 'x'), 2);
    ASSERT_EQ(1025, int(PLC_driver.writeList.size()));
    for (int i = 1020; i < 1023; ++i) {
        EXPECT_EQ(0, PLC_driver.writeList.at(i).length) << i;
        EXPECT_EQ(900, PLC_driver.writeList.at(i).aux1) << i;
    }
    EXPECT_EQ("xx", PLC_driver.writeList.at(1023).data);
    EXPECT_EQ("xx", PLC_driver.writeList.at(1024).data);
}

TEST_F(WritePieces, EqualWritesOneAfterTheOther)
{
    Random random(41);
    for (int round = 0; round < 150; ++round) {
        QList<RW_VAR> start;
        const int queued = random.oneIn(3) ? random.between(1000, 1030) : random.below(40);
        for (int i = 0; i < queued; ++i) {
            RW_VAR var = fullRecord();
            var.address = random.between(-30, random.oneIn(2) ? 300 : 30);
            var.length = random.between(1, 4);
            var.station = random.oneIn(4) ? 1 : 11;
            var.aux1 = i;
            start.append(var);
        }
        RW_VAR record = fullRecord();
        record.address = random.between(-30, 100);
        const QByteArray value = bytes(random.below(random.oneIn(8) ? 3000 : 60));
        const int pieceSize = random.between(1, 5);

        PLC_driver.writeList = start;
        addOneByOne(record, value, pieceSize);
        const QList<RW_VAR> expected = PLC_driver.writeList;
        PLC_driver.writeList = start;
        queueWritePieces(PLC_driver.writeList, record, value, pieceSize);
        expectEqualLists(expected, PLC_driver.writeList);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST_F(WritePieces, PiecesOfAWrappedAddressEqualWritesOneAfterTheOther)
{
    RW_VAR record = fullRecord();
    record.address = INT_MAX - 4;
    addOneByOne(record, bytes(12), 3);
    const QList<RW_VAR> expected = PLC_driver.writeList;
    EXPECT_EQ((Places{{INT_MAX - 4, 3}, {INT_MAX - 1, 3}, {INT_MIN + 1, 3}, {INT_MIN + 4, 3}}),
              places(expected));
    PLC_driver.writeList.clear();
    queueWritePieces(PLC_driver.writeList, record, bytes(12), 3);
    expectEqualLists(expected, PLC_driver.writeList);
}

// --- One-shot reads ---

class OneShotList : public DriverTest {
protected:
    OneShotList()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, 1000, 3));
        variables.append(variable("bit", 13, 35, 3));
        variables.append(variable("high", 1, INT_MAX - 99, 3));
        passSymbols({scope("MAIN", variables)});
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

bool samePlaceAndRequest(const RW_VAR& a, const RW_VAR& b)
{
    return a.category == b.category && a.aux1 == b.aux1 && a.station == b.station &&
           a.address == b.address && a.length == b.length && a.deviceNo == b.deviceNo &&
           a.dataType == b.dataType && a.areaIndex == b.areaIndex;
}

TEST_F(OneShotList, EqualsAPlainListForRandomRequests)
{
    Random random(23);
    QList<RW_VAR> plain;
    for (int i = 0; i < 1000; ++i) {
        const int max = random.oneIn(3) ? random.between(1, 20) : random.between(1, 300);
        const int count = random.oneIn(20) ? random.between(-5, 5) : random.between(1, 400);
        settings.maxReadBytes = max;
        RW_VAR var = request("MAIN.code1", count);
        var.category = random.below(2);
        RW_VAR expected = var;
        expected.station = 8;
        expected.dataType = 1;
        expected.address = 1000;
        expected.areaIndex = 3;
        for (int remaining = count; remaining > 0; remaining -= expected.length) {
            expected.length = max <= remaining ? max : remaining;
            bool isQueued = false;
            for (const RW_VAR& entry : plain)
                isQueued = isQueued || samePlaceAndRequest(entry, expected);
            if (!isQueued && plain.size() <= 1023)
                plain.append(expected);
            expected.address += expected.length;
        }
        ASSERT_EQ(int(plain.size()), AddListOnceReadVar(&var, 0));
        expectEqualRecords(expected, var);
        if (random.oneIn(200)) {
            plain.clear();
            PLC_driver.onceReadList.clear();
        }
        ASSERT_EQ(places(plain), queued());
    }
}

// --- Cutting a variable into pieces ---

Places cut(int total, int maxLen, int address, RW_VAR* left = nullptr)
{
    RW_VAR var = makeVar(3, address, 77);
    QList<RW_VAR> list;
    WhetherGroup(total, maxLen, &var, &list);
    if (left)
        *left = var;
    return places(list);
}

TEST_F(PieceCutting, LastPieceHoldsTheRest)
{
    EXPECT_EQ((Places{{1000, 100}, {1100, 100}, {1200, 50}}), cut(250, 100, 1000));
}

TEST_F(PieceCutting, MultipleOfThePieceSizeHasNoRest)
{
    EXPECT_EQ((Places{{1000, 100}, {1100, 100}}), cut(200, 100, 1000));
}

TEST_F(PieceCutting, TotalUpToThePieceSizeLeavesTheRecordAsItIs)
{
    RW_VAR left;
    for (int total : {100, 99, 1, 0, -1, INT_MIN}) {
        EXPECT_EQ((Places{{1000, 77}}), cut(total, 100, 1000, &left)) << total;
        EXPECT_EQ(1000, left.address);
        EXPECT_EQ(77, left.length);
    }
}

TEST_F(PieceCutting, OneMoreThanThePieceSizeGivesTwoPieces)
{
    EXPECT_EQ((Places{{1000, 100}, {1100, 1}}), cut(101, 100, 1000));
}

TEST_F(PieceCutting, PiecesOfOneByte)
{
    EXPECT_EQ((Places{{5, 1}, {6, 1}, {7, 1}}), cut(3, 1, 5));
    EXPECT_EQ((Places{{5, 77}}), cut(1, 1, 5));
}

TEST_F(PieceCutting, RecordIsLeftAsItsLastPiece)
{
    RW_VAR left;
    cut(250, 100, 1000, &left);
    EXPECT_EQ(1200, left.address);
    EXPECT_EQ(50, left.length);
    cut(200, 100, 1000, &left);
    EXPECT_EQ(1100, left.address);
    EXPECT_EQ(100, left.length);
}

TEST_F(PieceCutting, PiecesCarryTheOtherMembers)
{
    RW_VAR var = fullRecord();
    QList<RW_VAR> list;
    WhetherGroup(3, 2, &var, &list);
    ASSERT_EQ(2, int(list.size()));
    RW_VAR expected = fullRecord();
    expected.length = 2;
    expectEqualRecords(expected, list.at(0));
    expected.address = 12;
    expected.length = 1;
    expectEqualRecords(expected, list.at(1));
}

TEST_F(PieceCutting, AppendsBehindWhatTheListHolds)
{
    RW_VAR var = makeVar(3, 10, 4);
    QList<RW_VAR> list = {makeVar(3, 1, 1)};
    WhetherGroup(4, 4, &var, &list);
    EXPECT_EQ((Places{{1, 1}, {10, 4}}), places(list));
}

TEST_F(PieceCutting, DriverListsAreNotTouched)
{
    cut(250, 100, 1000);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(PieceCutting, AddressesAdvanceModuloTwoToThe32)
{
    EXPECT_EQ((Places{{INT_MAX - 1, 3}, {INT_MIN + 1, 3}, {INT_MIN + 4, 1}}),
              cut(7, 3, INT_MAX - 1));
    EXPECT_EQ((Places{{-3, 2}, {-1, 2}, {1, 1}}), cut(5, 2, -3));
}

TEST_F(PieceCutting, LargestValueIsCut)
{
    // 16777216 = 2 * 8388607 + 2
    EXPECT_EQ((Places{{1000, 8388607}, {8389607, 8388607}, {16778214, 2}}),
              cut(PLC_LARGEST_VALUE, 8388607, 1000));
    EXPECT_EQ((Places{{1000, 77}}), cut(PLC_LARGEST_VALUE, INT_MAX, 1000));
}

TEST_F(PieceCutting, ValueAboveTheLargestIsRefused)
{
    for (int maxLen : {1000, PLC_LARGEST_VALUE, INT_MAX}) {
        for (int total : {PLC_LARGEST_VALUE + 1, INT_MAX}) {
            RW_VAR left;
            EXPECT_EQ(Places{}, cut(total, maxLen, 1000, &left)) << total << ", " << maxLen;
            EXPECT_EQ(1000, left.address);
            EXPECT_EQ(77, left.length);
        }
    }
}

TEST_F(PieceCutting, PieceSizeThatIsNotPositiveAddsNothing)
{
    for (int maxLen : {0, -1, INT_MIN}) {
        for (int total : {0, 1, 250, -1, INT_MIN, INT_MAX}) {
            RW_VAR left;
            EXPECT_EQ(Places{}, cut(total, maxLen, 1000, &left)) << total << ", " << maxLen;
            EXPECT_EQ(1000, left.address);
            EXPECT_EQ(77, left.length);
        }
    }
}

TEST_F(PieceCutting, MorePiecesThanTheLimitAreRefused)
{
    for (int maxLen : {1, 2, 255}) {
        EXPECT_EQ(size_t(PLC_MOST_PIECES), cut(PLC_MOST_PIECES * maxLen, maxLen, 1000).size())
            << maxLen;
        RW_VAR left;
        EXPECT_EQ(Places{}, cut(PLC_MOST_PIECES * maxLen + 1, maxLen, 1000, &left)) << maxLen;
        EXPECT_EQ(Places{}, cut(INT_MAX, maxLen, 1000, &left)) << maxLen;
        EXPECT_EQ(1000, left.address);
        EXPECT_EQ(77, left.length);
    }
}

TEST_F(PieceCutting, NullPointersAddNothing)
{
    RW_VAR var = makeVar(3, 10, 4);
    QList<RW_VAR> list;
    WhetherGroup(250, 100, nullptr, &list);
    EXPECT_TRUE(list.isEmpty());
    WhetherGroup(250, 100, &var, nullptr);
    WhetherGroup(50, 100, nullptr, &list);
    WhetherGroup(50, 100, &var, nullptr);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(10, var.address);
    EXPECT_EQ(4, var.length);
}

TEST_F(PieceCutting, TakesNoLock)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    EXPECT_EQ(3u, cut(250, 100, 1000).size());
}

TEST_F(PieceCutting, PiecesCoverTheTotalWithoutGapOrOverlap)
{
    Random random(31);
    for (int i = 0; i < 2000; ++i) {
        const int maxLen = random.between(1, 200);
        const int total = random.between(maxLen + 1, 3000 + maxLen);
        const int address = random.between(-5000, 5000);
        int end = address;
        for (const std::pair<int, int>& piece : cut(total, maxLen, address)) {
            ASSERT_EQ(end, piece.first);
            ASSERT_GE(piece.second, 1);
            ASSERT_LE(piece.second, maxLen);
            end += piece.second;
        }
        ASSERT_EQ(address + total, end);
    }
}

} // namespace
} // namespace test
} // namespace plc
