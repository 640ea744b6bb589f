#include "tests/driver/request_cycle_fixture.h"

namespace plc::test {
namespace {

TEST_F(LoggedIn, WaitingRequestIsHandedOutAgainAndAgain)
{
    addReads({4, 4});
    addWrites({2});
    const Protocol* first = ComCommunication();
    ASSERT_NE(first, nullptr);
    const QByteArray frame = first->frame;
    for (int i = 0; i < 10; ++i) {
        const Protocol* again = ComCommunication();
        EXPECT_EQ(again, first);
        EXPECT_EQ(again->frame, frame);
    }
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(1, PLC_driver.writeTries);
    EXPECT_EQ(1, PLC_driver.batchCount);
    EXPECT_EQ(0, settings.scanDone);
}

TEST_F(RequestCycle, WaitingRequestChangesNothing)
{
    Protocol waiting;
    waiting.frame = hex("BB BB 01");
    queueRequest(waiting);
    addReads({4});
    addWrites({2});
    PLC_driver.writeList.first().station = 9;
    EnCommStation(9, 0);
    PLC_driver.batchCount = 7;
    PLC_driver.writeTries = 3;
    PLC_driver.onceTries = 2;
    settings.frameCount = 5;
    settings.frameIndex = 4;
    EXPECT_EQ(hex("BB BB 01"), ComCommunication()->frame);
    EXPECT_EQ(7, PLC_driver.batchCount);
    EXPECT_EQ(3, PLC_driver.writeTries);
    EXPECT_EQ(2, PLC_driver.onceTries);
    EXPECT_EQ(100, PLC_driver.lastKind);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(0, PLC_driver.readList.first().result);
    EXPECT_EQ(0, settings.scanDone);
    EXPECT_EQ(5, settings.frameCount);
    EXPECT_EQ(4, settings.frameIndex);
}

TEST_F(RequestCycle, WaitingRequestNeedsNoLock)
{
    queueRequest(Protocol());
    PLC_driver.listMutex.lock();
    EXPECT_NE(ComCommunication(), nullptr);
    PLC_driver.listMutex.unlock();
}

TEST_F(RequestCycle, ReturnsTheHeadOfTheQueueItself)
{
    addReads({4});
    const Protocol* request = ComCommunication();
    ASSERT_FALSE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(request, &PLC_driver.requestQueue.first());
}

TEST_F(RequestCycle, WithoutSettingsNothingIsSentOrChanged)
{
    SetComInfo(nullptr);
    addReads({4});
    addOnceReads({4});
    addWrites({2});
    PLC_driver.writeTries = 3;
    PLC_driver.onceTries = 2;
    PLC_driver.batchCount = 7;
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(3, PLC_driver.writeTries);
    EXPECT_EQ(2, PLC_driver.onceTries);
    EXPECT_EQ(7, PLC_driver.batchCount);
    EXPECT_EQ(100, PLC_driver.lastKind);
    EXPECT_EQ(0, PLC_driver.readList.first().result);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_F(RequestCycle, WithoutSettingsSwitchedOffEntriesStay)
{
    SetComInfo(nullptr);
    addWrites({2});
    PLC_driver.writeList.first().station = 9;
    EnCommStation(9, 0);
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, PLC_driver.writeList.size());
}

TEST_F(RequestCycle, WithoutSettingsAWaitingRequestIsStillHandedOut)
{
    addReads({4});
    const Protocol* waiting = ComCommunication();
    SetComInfo(nullptr);
    EXPECT_EQ(ComCommunication(), waiting);
}

TEST_F(RequestCycle, EmptyListsGiveNothingAndFinishTheScan)
{
    PLC_driver.writeTries = 4;
    PLC_driver.onceTries = 3;
    PLC_driver.batchCount = 7;
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, settings.scanDone);
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_EQ(0, PLC_driver.onceTries);
    EXPECT_EQ(0, PLC_driver.batchCount);
    EXPECT_EQ(100, PLC_driver.lastKind);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(RequestCycle, LoginComesBeforeAWrite)
{
    addWrites({2, 2});
    PLC_driver.writeList.first().label = QLatin1String("A.valve");
    const Protocol* request = ComCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(hex("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00"), request->frame);
    ASSERT_EQ(2, PLC_driver.requestQueue.size());
    EXPECT_EQ(23, PLC_driver.requestQueue.at(1).frameLength);
    EXPECT_EQ(QLatin1String("A.valve"), request->var.label);
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(0, 1));
    EXPECT_EQ(2, settings.frameCount);
    EXPECT_EQ(0, settings.frameIndex);
}

TEST_F(RequestCycle, BatchThrownAwayForTheLoginCounts)
{
    addWrites({2});
    ComCommunication();
    EXPECT_EQ(1, PLC_driver.writeTries);
    EXPECT_EQ(0, PLC_driver.onceTries);
    EXPECT_EQ(1, PLC_driver.lastKind);
    PLC_driver.requestQueue.clear();
    PLC_driver.writeList.clear();
    addOnceReads({4});
    ComCommunication();
    EXPECT_EQ(1, PLC_driver.writeTries);
    EXPECT_EQ(1, PLC_driver.onceTries);
    EXPECT_EQ(2, PLC_driver.lastKind);
}

TEST_F(RequestCycle, WriteThrownAwayForTheLoginIsMirroredAtOnce)
{
    PLC_driver.writeList.append(makeWrite(1, 0x10, hex("AB CD"), 1, 1));
    EXPECT_EQ(kIdentification, serviceOf(ComCommunication()));
    EXPECT_EQ(0xAB, PLC_driver.localImage.value(DataImage::key(1, 0x10)));
    EXPECT_EQ(0xCD, PLC_driver.localImage.value(DataImage::key(1, 0x11)));
}

TEST_F(RequestCycle, BatchThrownAwayIsChosenAgainAfterTheLogin)
{
    addWrites({2, 2});
    addReads({4});
    EXPECT_EQ(kIdentification, serviceOf(ComCommunication()));
    deliver(identificationReply());
    EXPECT_EQ(23, ComCommunication()->frameLength);
    deliver(fileReply(0x34, 0x12));
    const Protocol* request = ComCommunication();
    EXPECT_EQ(kWriteOut, serviceOf(request));
    EXPECT_EQ(2, entriesOf(request));
    EXPECT_EQ(hex("00 01 12 34"), request->frame.right(4));
    EXPECT_EQ(2, PLC_driver.writeTries);
}

TEST_F(RequestCycle, LoginBeforeACyclicReadMarksTheHeadAsIssued)
{
    addReads({4, 4});
    PLC_driver.readList.first().result = 5;
    const Protocol* request = ComCommunication();
    EXPECT_EQ(kIdentification, serviceOf(request));
    EXPECT_EQ(5, request->var.result);
    EXPECT_EQ(-1, PLC_driver.readList.at(0).result);
    EXPECT_EQ(0, PLC_driver.readList.at(1).result);
    EXPECT_EQ(0, PLC_driver.lastKind);
}

TEST_F(RequestCycle, SwitchedOffHeadsAreDroppedBeforeTheLoginToo)
{
    addWrites({2, 2});
    PLC_driver.writeList[0].station = 9;
    addOnceReads({4, 4});
    PLC_driver.onceReadList[0].station = 9;
    EnCommStation(9, 0);
    EXPECT_EQ(kIdentification, serviceOf(ComCommunication()));
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(1));
    PLC_driver.requestQueue.clear();
    PLC_driver.writeList.clear();
    EXPECT_EQ(kIdentification, serviceOf(ComCommunication()));
    EXPECT_THAT(addressesOf(PLC_driver.onceReadList), ElementsAre(1));
}

TEST_F(RequestCycle, NothingToSendNeedsNoLogin)
{
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(0, settings.frameCount);
}

TEST_F(RequestCycle, AnyValueButZeroIsLoggedIn)
{
    addReads({4});
    PLC_driver.loggedIn = -1;
    EXPECT_EQ(kRead, serviceOf(ComCommunication()));
}

TEST_F(LoggedIn, FullListsAreServedFiveFiveOne)
{
    for (int i = 0; i < 30; ++i)
        PLC_driver.writeList.append(numberedWrite(i, 500));
    for (int i = 0; i < 30; ++i) {
        RW_VAR var = makeVar(2, i, 600);
        var.category = 2;
        var.aux1 = i;
        PLC_driver.onceReadList.append(var);
    }
    addReads({700, 700});
    std::vector<int> kinds;
    for (int i = 0; i < 22; ++i)
        kinds.push_back(serveOne());
    const std::vector<int> round = {1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 0};
    std::vector<int> expected = round;
    expected.insert(expected.end(), round.begin(), round.end());
    EXPECT_EQ(expected, kinds);
}

TEST_F(LoggedIn, SixthWriteBatchLetsACyclicReadThrough)
{
    for (int i = 0; i < 12; ++i)
        PLC_driver.writeList.append(numberedWrite(i, 500));
    addReads({4});
    std::vector<int> kinds;
    for (int i = 0; i < 13; ++i)
        kinds.push_back(serveOne());
    EXPECT_THAT(kinds, ElementsAre(1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0, 1));
}

TEST_F(LoggedIn, SixthWriteBatchWithNothingElsePausesForOneCall)
{
    for (int i = 0; i < 7; ++i)
        PLC_driver.writeList.append(numberedWrite(i, 500));
    std::vector<int> kinds;
    for (int i = 0; i < 9; ++i)
        kinds.push_back(serveOne());
    EXPECT_THAT(kinds, ElementsAre(1, 1, 1, 1, 1, -1, 1, 1, -1));
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(LoggedIn, SixthOneShotBatchLetsACyclicReadThrough)
{
    for (int i = 0; i < 7; ++i) {
        RW_VAR var = makeVar(2, i, 600);
        var.aux1 = i;
        PLC_driver.onceReadList.append(var);
    }
    addReads({4});
    std::vector<int> kinds;
    for (int i = 0; i < 8; ++i)
        kinds.push_back(serveOne());
    EXPECT_THAT(kinds, ElementsAre(2, 2, 2, 2, 2, 0, 2, 2));
}

TEST_F(LoggedIn, OneShotBatchDoesNotResetTheWriteCap)
{
    PLC_driver.writeTries = 5;
    addWrites({2});
    addOnceReads({4});
    ComCommunication();
    EXPECT_EQ(2, PLC_driver.lastKind);
    EXPECT_EQ(5, PLC_driver.writeTries);
    EXPECT_EQ(1, PLC_driver.onceTries);
}

TEST_F(LoggedIn, WriteBatchDoesNotResetTheOneShotCap)
{
    PLC_driver.onceTries = 3;
    addWrites({2});
    ComCommunication();
    EXPECT_EQ(1, PLC_driver.lastKind);
    EXPECT_EQ(3, PLC_driver.onceTries);
}

TEST_F(LoggedIn, FourTriesStillServeAndFiveDoNot)
{
    addWrites({2});
    addReads({4});
    PLC_driver.writeTries = 4;
    ComCommunication();
    EXPECT_EQ(1, PLC_driver.lastKind);
    EXPECT_EQ(5, PLC_driver.writeTries);
    PLC_driver.requestQueue.clear();
    ComCommunication();
    EXPECT_EQ(0, PLC_driver.lastKind);
    EXPECT_EQ(0, PLC_driver.writeTries);
}

TEST_F(LoggedIn, RetriesDoNotCountTowardsTheCap)
{
    settings.retryLimit = 10;
    addWrites({2});
    ComCommunication();
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(0, deliver(QByteArray())->result);
        EXPECT_EQ(kWriteOut, serviceOf(ComCommunication()));
    }
    EXPECT_EQ(1, PLC_driver.writeTries);
}

TEST_F(LoggedIn, OnlyCyclicReadsAreServedByEveryCall)
{
    addReads({700, 700, 700});
    std::vector<int> heads;
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(0, serveOne());
        heads.push_back(PLC_driver.reply.address);
    }
    EXPECT_THAT(heads, ElementsAre(0, 1, 2, 0, 1, 2, 0));
}

class RemoteMode : public LoggedIn, public ::testing::WithParamInterface<int> {
protected:
    RemoteMode() { settings.remoteMode = GetParam(); }
};

TEST_P(RemoteMode, CyclicReadsGiveNothing)
{
    addReads({4, 4});
    PLC_driver.writeTries = 5;
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, settings.scanDone);
    EXPECT_EQ(0, PLC_driver.lastKind);
    EXPECT_EQ(1, PLC_driver.batchCount);
    EXPECT_EQ(-1, PLC_driver.readList.at(0).result);
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_P(RemoteMode, OneShotReadsGiveNothing)
{
    addOnceReads({4, 4});
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, settings.scanDone);
    EXPECT_EQ(2, PLC_driver.lastKind);
    EXPECT_EQ(1, PLC_driver.batchCount);
    EXPECT_EQ(0, PLC_driver.onceTries) << "nothing was queued, so the caps start anew";
    EXPECT_EQ(2, PLC_driver.onceReadList.size());
}

TEST_P(RemoteMode, WritesGiveNothingAndAreNotMirrored)
{
    addWrites({2, 2});
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, settings.scanDone);
    EXPECT_EQ(1, PLC_driver.lastKind);
    EXPECT_EQ(1, PLC_driver.batchCount);
    EXPECT_EQ(0, PLC_driver.writeTries);
    EXPECT_EQ(2, PLC_driver.writeList.size());
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_P(RemoteMode, PendingWritesKeepTheOthersFromTheirTurn)
{
    addWrites({2});
    addOnceReads({4});
    addReads({4});
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(nullptr, ComCommunication());
        EXPECT_EQ(1, PLC_driver.lastKind);
    }
    EXPECT_EQ(0, PLC_driver.readList.at(0).result);
}

TEST_P(RemoteMode, SwitchedOffHeadsAreDroppedAndRotatedAllTheSame)
{
    addWrites({2});
    PLC_driver.writeList[0].station = 9;
    addOnceReads({4});
    PLC_driver.onceReadList[0].station = 9;
    addReads({4, 4});
    PLC_driver.readList[0].station = 9;
    EnCommStation(9, 0);
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(1, 0));
}

TEST_P(RemoteMode, NoLoginIsQueued)
{
    PLC_driver.loggedIn = 0;
    addReads({4});
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(AnyValueButZero, RemoteMode, ::testing::Values(1, 2, -1, INT_MIN));

TEST_F(LoggedIn, ListsAndStationsMayBeChangedFromOtherThreads)
{
    addReads({4, 4, 4});
    PLC_driver.readList[1].station = 9;
    std::thread writer([] {
        for (int i = 0; i < 100; ++i) {
            RW_VAR var = makeWrite(1, i, hex("01 02"), 1, i);
            AddListWriteVar(&var, 1);
        }
    });
    std::thread switcher([] {
        for (int i = 0; i < 300; ++i)
            EnCommStation(9, i % 2);
    });
    for (int i = 0; i < 300; ++i)
        serveOne();
    writer.join();
    switcher.join();
    for (int i = 0; i < 100 && !PLC_driver.writeList.isEmpty(); ++i)
        serveOne();
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    for (const ResultCall& call : resultCalls)
        EXPECT_EQ(1, call.status);
}

} // namespace
} // namespace plc::test
