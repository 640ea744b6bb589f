#include "tests/driver/request_cycle_fixture.h"

namespace plc::test {
namespace {

TEST_F(LoggedIn, WriteBatchCarriesHeadAndFollowers)
{
    PLC_driver.writeList.append(makeWrite(2, 0x10, hex("AB CD"), 3, 7));
    PLC_driver.writeList.append(makeWrite(2, 0x20, hex("EF"), 3, 8));
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(hex("BB BB 00 00 00 21 3C 00 00 00 00 02"
                  "00 02 00 00 00 10 00 00 00 02 AB CD"
                  "00 02 00 00 00 20 00 00 00 01 EF"
                  "00 01 12 34"),
              request->frame);
    EXPECT_EQ(3, request->var.category);
    EXPECT_EQ(7, request->var.aux1);
    EXPECT_EQ(1, PLC_driver.lastKind);
    EXPECT_EQ(1, PLC_driver.writeTries);
    EXPECT_EQ(2, PLC_driver.batchCount);
    EXPECT_EQ(2, PLC_driver.writeList.size());
    EXPECT_EQ(1, settings.frameCount);
    EXPECT_EQ(0, settings.frameIndex);
}

TEST_F(LoggedIn, OnlyTheHeadOfAWriteBatchIsMirroredAtOnce)
{
    PLC_driver.writeList.append(makeWrite(2, 0x10, hex("AB"), 3, 7));
    PLC_driver.writeList.append(makeWrite(2, 0x20, hex("EF"), 3, 8));
    ComCommunication();
    EXPECT_EQ(0xAB, PLC_driver.localImage.value(DataImage::key(2, 0x10)));
    EXPECT_FALSE(PLC_driver.localImage.contains(DataImage::key(2, 0x20)));
}

TEST_F(LoggedIn, WritesAreNotMirroredAfterAFinalFailure)
{
    PLC_driver.failed = 1;
    PLC_driver.writeList.append(makeWrite(2, 0x10, hex("AB"), 3, 7));
    EXPECT_EQ(kWriteOut, serviceOf(ComCommunication()));
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

struct BudgetRow {
    const char* name;
    std::vector<int> lengths;
    int batch;
};

void PrintTo(const BudgetRow& row, std::ostream* out)
{
    *out << row.name;
}

class WriteBudget : public LoggedIn, public ::testing::WithParamInterface<BudgetRow> {};

TEST_P(WriteBudget, BoundsTheBatch)
{
    int address = 0;
    for (int length : GetParam().lengths) {
        RW_VAR var = makeVar(1, address++, length);
        PLC_driver.writeList.append(var);
    }
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(PLC_driver.batchCount, GetParam().batch);
    EXPECT_EQ(entriesOf(request), GetParam().batch);
    for (int i = 0; i < GetParam().batch; ++i)
        EXPECT_EQ(PLC_driver.batch[i].address, i);
    EXPECT_EQ(PLC_driver.writeList.size(), int(GetParam().lengths.size()));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WriteBudget,
    ::testing::Values(BudgetRow{"Single", {2}, 1},
                      BudgetRow{"TwoOf500ExceedIt", {500, 500}, 1},        // 510 + 510
                      BudgetRow{"Exactly999Fits", {489, 490}, 2},          // 499 + 500
                      BudgetRow{"OneMoreDoesNot", {490, 490}, 1},          // 500 + 500
                      BudgetRow{"HeadAboveItGoesAlone", {2000, 1}, 1},     // 2010
                      BudgetRow{"HeadOfExactly999GoesAlone", {989, 0}, 1}, // 999 + 10
                      BudgetRow{"ShorterOnesBehindAreNotLookedAt", {500, 500, 1, 1}, 1},
                      BudgetRow{"ThirdDoesNotFit", {300, 300, 400, 1}, 2}, // 310 + 310 + 410
                      BudgetRow{"EmptyWritesCostTen", std::vector<int>(120, 0), 99},      // 990
                      BudgetRow{"OneByteWritesCostEleven", std::vector<int>(120, 1), 90}, // 990
                      BudgetRow{"NegativeLengthsStopAtTheArray", std::vector<int>(200, -10), 150},
                      BudgetRow{"NegativeLengthMakesRoom", {900, -500, 500}, 3}, // 910, 420, 930
                      BudgetRow{"SmallestHead", {INT_MIN, 2, 2}, 3}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(LoggedIn, HugeFollowerIsComparedExactly)
{
    addWrites({2});
    RW_VAR huge = makeVar(1, 1, INT_MAX);
    PLC_driver.writeList.append(huge);
    PLC_driver.writeList.append(huge);
    EXPECT_EQ(1, entriesOf(ComCommunication()));
}

TEST_F(LoggedIn, HugeWriteIsSentWithoutItsBytesAndDoesNotStallTheDriver)
{
    for (int dataType : {3, 13}) {
        PLC_driver.requestQueue.clear();
        PLC_driver.writeList.clear();
        RW_VAR huge = makeWrite(1, 0, hex("01 02"), 1, 1);
        huge.length = INT_MAX;
        huge.dataType = dataType;
        PLC_driver.writeList.append(huge);
        const Protocol* request = ComCommunication();
        ASSERT_NE(request, nullptr);
        EXPECT_EQ(26, request->frameLength) << "type code " << dataType;
    }
}

TEST_F(LoggedIn, SwitchedOffHeadsOfTheWriteListAreDestroyed)
{
    addWrites({2, 2, 2, 2});
    PLC_driver.writeList[0].station = 8;
    PLC_driver.writeList[1].station = 9;
    PLC_driver.writeList[3].station = 9;
    EnCommStation(8, 0);
    EnCommStation(9, 0);
    EXPECT_EQ(2, entriesOf(ComCommunication()));
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(2, 3));
    EXPECT_THAT(batchAddresses(), ElementsAre(2, 3)) << "a follower's station is not tested";
}

TEST_F(LoggedIn, WriteListThatIsAllSwitchedOffGivesTheTurnToOneShotReads)
{
    addWrites({2, 2});
    PLC_driver.writeList[0].station = 9;
    PLC_driver.writeList[1].station = 9;
    EnCommStation(9, 0);
    addOnceReads({4});
    EXPECT_EQ(kRead, serviceOf(ComCommunication()));
    EXPECT_EQ(2, PLC_driver.lastKind);
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(LoggedIn, AllListsSwitchedOffGiveNothing)
{
    addWrites({2});
    addOnceReads({2});
    addReads({2, 2});
    for (QList<RW_VAR>* list :
         {&PLC_driver.writeList, &PLC_driver.onceReadList, &PLC_driver.readList})
        for (RW_VAR& var : *list)
            var.station = 9;
    EnCommStation(9, 0);
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, settings.scanDone);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1));
    EXPECT_EQ(0, PLC_driver.batchCount);
}

TEST_F(LoggedIn, OneShotBatchCarriesHeadAndFollowers)
{
    addOnceReads({4, 2});
    PLC_driver.onceReadList[0].aux1 = 33;
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(hex("BB BB 00 00 00 1E 2E 00 00 00 00 02"
                  "00 02 00 00 00 00 00 00 00 04"
                  "00 02 00 00 00 01 00 00 00 02"
                  "00 01 12 34"),
              request->frame);
    EXPECT_EQ(2, request->var.category);
    EXPECT_EQ(33, request->var.aux1);
    EXPECT_EQ(2, PLC_driver.lastKind);
    EXPECT_EQ(1, PLC_driver.onceTries);
    EXPECT_EQ(2, PLC_driver.onceReadList.size());
    EXPECT_EQ(0, PLC_driver.onceReadList.at(0).result) << "only cyclic heads are marked";
}

TEST_F(LoggedIn, SwitchedOffHeadsOfTheOneShotListAreDestroyed)
{
    addOnceReads({4, 4, 4});
    PLC_driver.onceReadList[0].station = 9;
    PLC_driver.onceReadList[2].station = 9;
    EnCommStation(9, 0);
    EXPECT_EQ(2, entriesOf(ComCommunication()));
    EXPECT_THAT(addressesOf(PLC_driver.onceReadList), ElementsAre(1, 2));
}

TEST_F(LoggedIn, OneShotListThatIsAllSwitchedOffGivesTheTurnToCyclicReads)
{
    addOnceReads({4});
    PLC_driver.onceReadList[0].station = 9;
    EnCommStation(9, 0);
    addReads({4});
    EXPECT_EQ(kRead, serviceOf(ComCommunication()));
    EXPECT_EQ(0, PLC_driver.lastKind);
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

enum ReadKind { kFromOnceList, kFromReadList };

class ReadBudget : public LoggedIn,
                   public ::testing::WithParamInterface<std::tuple<ReadKind, BudgetRow>> {};

TEST_P(ReadBudget, BoundsTheBatch)
{
    const BudgetRow& row = std::get<1>(GetParam());
    QList<RW_VAR>& list =
        std::get<0>(GetParam()) == kFromOnceList ? PLC_driver.onceReadList : PLC_driver.readList;
    int address = 0;
    for (int length : row.lengths)
        list.append(makeVar(1, address++, length));
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(kRead, serviceOf(request));
    EXPECT_EQ(PLC_driver.batchCount, row.batch);
    EXPECT_EQ(entriesOf(request), row.batch);
    for (int i = 0; i < row.batch; ++i)
        EXPECT_EQ(PLC_driver.batch[i].address, i);
    EXPECT_EQ(list.size(), int(row.lengths.size()));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ReadBudget,
    ::testing::Combine(
        ::testing::Values(kFromOnceList, kFromReadList),
        ::testing::Values(BudgetRow{"Single", {2}, 1},
                          BudgetRow{"Exactly999Fits", {499, 498}, 2},          // 500 + 499
                          BudgetRow{"OneMoreDoesNot", {499, 499}, 1},          // 500 + 500
                          BudgetRow{"HeadAboveItGoesAlone", {2000, 1}, 1},     // 2001
                          BudgetRow{"HeadOfExactly999GoesAlone", {998, 0}, 1}, // 999 + 1
                          BudgetRow{"ShorterOnesBehindAreNotLookedAt", {499, 499, 1, 1}, 1},
                          BudgetRow{"ThirdDoesNotFit", {300, 300, 400, 1}, 2}, // 301 + 301 + 401
                          BudgetRow{"TwoHundredBytes", std::vector<int>(200, 1), 99},
                          BudgetRow{"Exactly99", std::vector<int>(99, 1), 99},
                          BudgetRow{"EmptyReadsStopAt99", std::vector<int>(200, 0), 99},
                          BudgetRow{"NegativeLengthsStopAt99", std::vector<int>(200, -1), 99},
                          BudgetRow{"NineBytesAreTenEach", std::vector<int>(120, 9), 99},    // 990
                          BudgetRow{"TenBytesAreElevenEach", std::vector<int>(120, 10), 90}, // 990
                          BudgetRow{"HugeHead", {INT_MAX, 1}, 1},
                          BudgetRow{"HugeFollower", {1, INT_MAX, 1}, 1},
                          BudgetRow{"SmallestHeadMakesRoom", {INT_MIN, INT_MAX, 900, 100}, 3})),
    [](const auto& test) {
        return std::string(std::get<0>(test.param) == kFromOnceList ? "Once" : "Cyclic") +
               std::get<1>(test.param).name;
    });

TEST_F(LoggedIn, CyclicBatchMarksItsHeadInTheListOnly)
{
    addReads({4, 4, 4});
    for (RW_VAR& var : PLC_driver.readList)
        var.result = 7;
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(-1, PLC_driver.readList.at(0).result);
    EXPECT_EQ(7, PLC_driver.readList.at(1).result);
    EXPECT_EQ(7, PLC_driver.readList.at(2).result);
    EXPECT_EQ(7, PLC_driver.batch[0].result);
    EXPECT_EQ(7, request->var.result);
    EXPECT_EQ(0, PLC_driver.lastKind);
    EXPECT_EQ(3, PLC_driver.batchCount);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1, 2));
}

TEST_F(LoggedIn, BatchEntriesAreWholeCopies)
{
    RW_VAR var = makeVar(6, 0x20, 4, 5);
    var.category = 1;
    var.aux1 = -1;
    var.deviceNo = 3;
    var.station = 4;
    var.aux12 = -1;
    var.label = QLatin1String("A.level");
    PLC_driver.readList.append(makeVar(1, 0, 2));
    PLC_driver.readList.append(var);
    ComCommunication();
    const RW_VAR& copy = PLC_driver.batch[1];
    EXPECT_EQ(6, copy.areaIndex);
    EXPECT_EQ(0x20, copy.address);
    EXPECT_EQ(4, copy.length);
    EXPECT_EQ(5, copy.dataType);
    EXPECT_EQ(1, copy.category);
    EXPECT_EQ(-1, copy.aux1);
    EXPECT_EQ(3, copy.deviceNo);
    EXPECT_EQ(4, copy.station);
    EXPECT_EQ(-1, copy.aux12);
    EXPECT_EQ(QLatin1String("A.level"), copy.label);
}

TEST_F(LoggedIn, CyclicBatchResetsBothCaps)
{
    addReads({4});
    PLC_driver.writeTries = 5;
    PLC_driver.onceTries = 3;
    ComCommunication();
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_EQ(0, PLC_driver.onceTries);
}

TEST_F(LoggedIn, CyclicHeadsOfSwitchedOffStationsGoToTheEnd)
{
    addReads({4, 4, 4, 4});
    PLC_driver.readList[0].station = 8;
    PLC_driver.readList[1].station = 9;
    PLC_driver.readList[3].station = 9;
    EnCommStation(8, 0);
    EnCommStation(9, 0);
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(2, 3, 0, 1));
    EXPECT_THAT(batchAddresses(), ElementsAre(2, 3, 0, 1)) << "followers' stations do not count";
    EXPECT_EQ(-1, PLC_driver.readList.at(0).result);
    EXPECT_EQ(0, PLC_driver.readList.at(2).result);
}

TEST_F(LoggedIn, LastEntryAloneSwitchedOnIsFound)
{
    addReads({4, 4, 4});
    PLC_driver.readList[0].station = 9;
    PLC_driver.readList[1].station = 9;
    EnCommStation(9, 0);
    ComCommunication();
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(2, 0, 1));
    EXPECT_EQ(2, PLC_driver.batch[0].address);
}

TEST_F(LoggedIn, CyclicListThatIsAllSwitchedOffGivesNothingAndKeepsItsOrder)
{
    addReads({4, 4, 4});
    for (RW_VAR& var : PLC_driver.readList)
        var.station = 9;
    EnCommStation(9, 0);
    PLC_driver.writeTries = 5;
    PLC_driver.onceTries = 3;
    PLC_driver.lastKind = 2;
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, settings.scanDone);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1, 2));
    for (const RW_VAR& var : PLC_driver.readList)
        EXPECT_EQ(0, var.result);
    EXPECT_EQ(0, PLC_driver.batchCount);
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_EQ(0, PLC_driver.onceTries);
    EXPECT_EQ(2, PLC_driver.lastKind);
}

TEST_F(LoggedIn, StationSwitchedOnAgainIsServedByTheNextCall)
{
    addReads({4});
    PLC_driver.readList[0].station = 9;
    EnCommStation(9, 0);
    EXPECT_EQ(nullptr, ComCommunication());
    EnCommStation(9, 1);
    EXPECT_NE(ComCommunication(), nullptr);
}

} // namespace
} // namespace plc::test
