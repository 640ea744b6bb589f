#include <climits>

#include "support/driver_fixture.h"
#include "support/record_checks.h"

namespace plc::test {
namespace {

TEST(DriverObject, IsConstructedWhenTheLibraryIsLoaded)
{
    EXPECT_EQ(nullptr, PLC_driver.settings);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_TRUE(PLC_driver.spareList.isEmpty());
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_TRUE(PLC_driver.extendList.isEmpty());
    EXPECT_EQ(nullptr, PLC_driver.resultCallback);
    EXPECT_EQ(nullptr, PLC_driver.failureCallback);
    EXPECT_TRUE(PLC_driver.disabledStations.isEmpty());
    EXPECT_TRUE(PLC_driver.symbolTable.isEmpty());
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    expectZeroRecord(PLC_driver.reply);
}

TEST(DriverObject, CountersAndFlagsStartAtZeroAndLastKindMatchesNoList)
{
    EXPECT_EQ(100, PLC_driver.lastKind);
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_EQ(0, PLC_driver.onceTries);
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_EQ(0, PLC_driver.spareFlag);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(0, PLC_driver.batchCount);
    EXPECT_EQ(0, PLC_driver.plcInfo1);
    EXPECT_EQ(0, PLC_driver.plcInfo2);
}

TEST(DriverObject, BatchHolds150FreshEntries)
{
    ASSERT_EQ(150u, sizeof PLC_driver.batch / sizeof PLC_driver.batch[0]);
    for (const RW_VAR& entry : PLC_driver.batch)
        expectZeroRecord(entry);
}

TEST(DriverObject, MutexesAreUnlockedAndNotRecursive)
{
    for (QMutex* mutex : {&PLC_driver.listMutex, &PLC_driver.dataMutex, &PLC_driver.stationMutex}) {
        ASSERT_TRUE(mutex->tryLock());
        EXPECT_FALSE(mutex->tryLock()) << "the same thread locked it twice";
        mutex->unlock();
    }
}

TEST(DriverObject, MembersLieInTheirOrderOfDestruction)
{
    const Communication_Protocol& driver = PLC_driver;
    const std::vector<const void*> members = {&driver.settings,
                                              &driver.readList,
                                              &driver.writeList,
                                              &driver.onceReadList,
                                              &driver.spareList,
                                              &driver.requestQueue,
                                              &driver.extendList,
                                              &driver.resultCallback,
                                              &driver.failureCallback,
                                              &driver.listMutex,
                                              &driver.dataMutex,
                                              &driver.stationMutex,
                                              &driver.disabledStations,
                                              &driver.reply,
                                              &driver.lastKind,
                                              &driver.writeTries,
                                              &driver.onceTries,
                                              &driver.cycleCount,
                                              &driver.failed,
                                              &driver.spareFlag,
                                              &driver.loggedIn,
                                              &driver.batchCount,
                                              &driver.plcInfo1,
                                              &driver.plcInfo2,
                                              &driver.batch,
                                              &driver.symbolTable,
                                              &driver.localImage};
    EXPECT_EQ(members.front(), &driver);
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end(), std::less<const void*>()));
}

TEST(DriverObject, DestructionReleasesAllThatItHolds)
{
    QByteArray bytes = hex("01 02 03");
    QString text = QLatin1String("Application");
    {
        std::unique_ptr<Communication_Protocol> driver(new Communication_Protocol);
        RW_VAR var;
        var.data = bytes;
        var.label = text;
        var.subLabel = text;
        driver->readList.append(var);
        driver->writeList.append(var);
        driver->onceReadList.append(var);
        driver->spareList.append(var);
        Protocol request;
        request.frame = bytes;
        request.var = var;
        driver->requestQueue.append(request);
        EXTENDVAR extension;
        extension.extData = bytes;
        driver->extendList.append(extension);
        driver->reply = var;
        driver->batch[0] = var;
        driver->batch[149] = var;
        Label_Type_Info scope;
        scope.name = text;
        driver->symbolTable.insert(text, scope);
        driver->localImage.insert(DataImage::key(1, 2), 3);
        ASSERT_FALSE(bytes.isDetached());
        ASSERT_FALSE(text.isDetached());
    }
    EXPECT_TRUE(bytes.isDetached());
    EXPECT_TRUE(text.isDetached());
}

TEST(BatchSize, StaysWithinTheArrayWhateverTheCounterSays)
{
    const std::vector<std::pair<int, int>> rows = {
        {0, 0}, {1, 1}, {149, 149}, {150, 150}, {151, 150}, {INT_MAX, 150}, {-1, 0}, {INT_MIN, 0}};
    for (const auto& row : rows) {
        PLC_driver.batchCount = row.first;
        EXPECT_EQ(batchSize(), row.second) << "batchCount " << row.first;
    }
    PLC_driver.batchCount = 0;
}

} // namespace
} // namespace plc::test
