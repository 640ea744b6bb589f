#include "model/driver_model.h"
#include "model/library_side.h"
#include "tests/lists/variable_lists_fixture.h"

namespace plc::test {
namespace {

using ReadList = DriverTest;
using WriteList = DriverTest;

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
    model::DriverModel model;
    for (int i = 0; i < 20000; ++i) {
        RW_VAR var = writeOf(random.below(40) * (random.oneIn(3) ? 1 : 50), i);
        var.station = random.below(3);
        var.length = random.between(1, 3);
        const int append = random.oneIn(30) ? 1 : 0;
        ASSERT_EQ(model.addWrite(model::fromQt(var), append), AddListWriteVar(&var, append));
        if (random.oneIn(40)) {
            model.writeList.erase(model.writeList.begin());
            PLC_driver.writeList.removeFirst();
        }
    }
    expectEqualLists(model::toQt(model.writeList), PLC_driver.writeList);
}

} // namespace
} // namespace plc::test
