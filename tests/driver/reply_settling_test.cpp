#include "tests/driver/reply_processing_fixture.h"

namespace plc::test {
namespace {

TEST_F(Exchange, GoodReplyTakesTheFailureBack)
{
    addReads(1);
    issue();
    PLC_driver.failed = 1;
    deliver(goodReply());
    EXPECT_EQ(0, PLC_driver.failed);
}

TEST_F(Exchange, GoodReplyDoesNotResetTheRetryCount)
{
    settings.retryLimit = 2;
    addReads(1);
    issue();
    EXPECT_EQ(0, once(QByteArray()));
    EXPECT_EQ(1, deliver(goodReply())->result);
    EXPECT_EQ(1, settings.retryCount);
    issue();
    EXPECT_EQ(0, once(QByteArray()));
    EXPECT_EQ(2, settings.retryCount);
    EXPECT_EQ(41, once(QByteArray()));
}

TEST_F(Exchange, ReplyOfAnUnfinishedTransactionRemovesItsFrameOnly)
{
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    queueRequest(PLC_driver.requestQueue.first());
    settings.frameCount = 2;
    PLC_driver.failed = 1;
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(1, settings.frameIndex);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 1, 1, 1}));
}

TEST_F(Exchange, UnfinishedRemoteTransactionGivesItsCode)
{
    PLC_driver.onceReadList.append(tagged(0, 1, 1));
    PLC_driver.onceReadList[0].deviceNo = kOtherDevice;
    issue();
    settings.frameCount = 2;
    EXPECT_EQ(100, deliver(goodReply())->result);
    EXPECT_EQ(1, PLC_driver.onceReadList.size());
}

TEST_F(Exchange, FrameIndexBeyondTheFrameCountIsComplete)
{
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    settings.frameIndex = 5;
    deliver(writeReply());
    EXPECT_EQ(6, settings.frameIndex);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Exchange, LargestFrameIndexIsReducedToThirtyTwoBits)
{
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    settings.frameIndex = INT_MAX;
    settings.frameCount = INT_MAX;
    deliver(writeReply());
    EXPECT_EQ(INT_MIN, settings.frameIndex);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty()) << "2^31 answers are more than were due";
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 1, 1, 1}));
}

TEST_F(Exchange, TransactionOfNoFramesIsCompleteWithTheFirstAnswer)
{
    for (int frameCount : {0, -1, INT_MIN}) {
        PLC_driver.writeList.append(tagged(0, 1, 1));
        issue();
        settings.frameCount = frameCount;
        deliver(writeReply());
        EXPECT_EQ(1, settings.frameIndex) << frameCount;
        EXPECT_TRUE(PLC_driver.writeList.isEmpty()) << frameCount;
    }
}

TEST_F(Exchange, LastFrameIndexBelowTheFrameCountIsNotComplete)
{
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    settings.frameIndex = INT_MAX - 2;
    settings.frameCount = INT_MAX;
    deliver(writeReply());
    EXPECT_EQ(INT_MAX - 1, settings.frameIndex);
    EXPECT_EQ(1, PLC_driver.writeList.size());
}

TEST_F(Exchange, ScanIsDoneAfterMoreTransactionsThanCyclicEntries)
{
    for (int i = 0; i < 3; ++i)
        PLC_driver.readList.append(numberedRead(i, 700));
    for (int i = 1; i <= 3; ++i) {
        issue();
        deliver(goodReply());
        EXPECT_EQ(PLC_driver.cycleCount, i);
        EXPECT_EQ(0, settings.scanDone);
    }
    issue();
    deliver(goodReply());
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(1, settings.scanDone);
    issue();
    deliver(goodReply());
    EXPECT_EQ(0, PLC_driver.cycleCount) << "a finished scan is not counted further";
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(Exchange, WritesCountTowardsTheScanToo)
{
    addReads(1);
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    deliver(writeReply());
    EXPECT_EQ(1, PLC_driver.cycleCount);
    EXPECT_EQ(0, settings.scanDone);
}

TEST_F(Exchange, WithoutCyclicEntriesTheFirstTransactionFinishesTheScan)
{
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    deliver(writeReply());
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(Exchange, RemoteTransactionsDoNotCountTowardsTheScan)
{
    addReads(1);
    PLC_driver.readList[0].deviceNo = kOtherDevice;
    for (int i = 0; i < 4; ++i) {
        issue();
        EXPECT_EQ(100, deliver(goodReply())->result);
    }
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(0, settings.scanDone);
}

TEST_F(Exchange, RemoteTransactionDoesNotFinishAScanThatIsDueEither)
{
    PLC_driver.cycleCount = 100;
    PLC_driver.writeList.append(tagged(0, 1, 1));
    PLC_driver.writeList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(100, deliver(writeReply())->result);
    EXPECT_EQ(100, PLC_driver.cycleCount);
    EXPECT_EQ(0, settings.scanDone);
}

TEST_F(Exchange, AnyValueButZeroOfScanDoneStopsTheCount)
{
    settings.scanDone = -1;
    PLC_driver.cycleCount = 100;
    PLC_driver.writeList.append(tagged(0, 1, 1));
    issue();
    deliver(writeReply());
    EXPECT_EQ(100, PLC_driver.cycleCount);
    EXPECT_EQ(-1, settings.scanDone);
}

TEST_F(Exchange, CompletedWriteIsReportedAndRemoved)
{
    PLC_driver.writeList.append(tagged(0x10, 4, 11));
    PLC_driver.writeList[0].label = QLatin1String("A.valve");
    PLC_driver.writeList[0].station = 5;
    issue();
    RW_VAR* reply = deliver(writeReply());
    EXPECT_EQ(reply, &PLC_driver.reply);
    EXPECT_EQ(1, reply->result);
    EXPECT_EQ(4, reply->category);
    EXPECT_EQ(11, reply->aux1);
    EXPECT_EQ(0x10, reply->address);
    EXPECT_EQ(5, reply->station);
    EXPECT_EQ(QLatin1String("A.valve"), reply->label);
    EXPECT_TRUE(reply->data.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
    EXPECT_THAT(failureCalls, IsEmpty());
}

TEST_F(Exchange, FollowersOfAWriteBatchLeaveWithoutACallOfTheirOwn)
{
    PLC_driver.writeList.append(tagged(0, 1, 1));
    PLC_driver.writeList.append(tagged(1, 1, 2));
    PLC_driver.writeList.append(tagged(2, 2, 1));
    issue();
    PLC_driver.writeList.append(tagged(3, 3, 3));
    deliver(writeReply());
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(3));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 1, 1, 1}));
    EXPECT_EQ(0, PLC_driver.reply.address);
}

TEST_F(Exchange, WriteInThreePiecesIsReportedAfterTheLast)
{
    for (int piece = 0; piece < 3; ++piece)
        PLC_driver.writeList.append(tagged(piece, 4, 11, 900));
    for (int piece = 0; piece < 3; ++piece) {
        EXPECT_THAT(resultCalls, IsEmpty());
        issue();
        EXPECT_EQ(1, PLC_driver.batchCount);
        EXPECT_EQ(1, deliver(writeReply())->result);
        EXPECT_EQ(PLC_driver.reply.address, piece);
    }
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Exchange, PiecesInOneBatchAreReportedOnce)
{
    for (int piece = 0; piece < 3; ++piece)
        PLC_driver.writeList.append(tagged(piece, 4, 11));
    issue();
    EXPECT_EQ(3, PLC_driver.batchCount);
    deliver(writeReply());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Exchange, FurtherPieceAnywhereInTheListHoldsTheReportBack)
{
    PLC_driver.writeList.append(tagged(0, 4, 11, 900));
    PLC_driver.writeList.append(tagged(1, 5, 11, 900));
    PLC_driver.writeList.append(tagged(2, 4, 12, 900));
    PLC_driver.writeList.append(tagged(3, 4, 11, 900));
    PLC_driver.writeList[3].station = 8;
    PLC_driver.writeList[3].deviceNo = kOtherDevice;
    issue();
    deliver(writeReply());
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(1, 2, 3));
}

TEST_F(Exchange, OtherRequestsDoNotHoldTheReportBack)
{
    PLC_driver.writeList.append(tagged(0, 4, 11, 900));
    PLC_driver.writeList.append(tagged(1, 5, 11, 900));
    PLC_driver.writeList.append(tagged(2, 4, 12, 900));
    PLC_driver.onceReadList.append(tagged(3, 4, 11));
    PLC_driver.readList.append(tagged(4, 4, 11));
    issue();
    deliver(writeReply());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
}

TEST_F(Exchange, WriteToARemoteDeviceIsReportedLikeALocalOne)
{
    PLC_driver.writeList.append(tagged(0, 4, 11));
    PLC_driver.writeList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(100, deliver(writeReply())->result);
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Exchange, HostTagIsTakenWhenTheCallIsMade)
{
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    settings.hostTag = -5;
    deliver(writeReply());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{-5, 4, 11, 1}));
}

TEST_F(Exchange, WriteListThatBecameEmptyIsSettledSilently)
{
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    PLC_driver.writeList.clear();
    PLC_driver.reply.category = 9;
    PLC_driver.reply.address = 99;
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_EQ(9, PLC_driver.reply.category);
    EXPECT_EQ(99, PLC_driver.reply.address);
}

TEST_F(Exchange, BatchCountBeyondTheListLeavesNothingOfIt)
{
    PLC_driver.writeList.append(tagged(0, 4, 11));
    PLC_driver.writeList.append(tagged(1, 4, 12));
    issue();
    PLC_driver.batchCount = 100;
    deliver(writeReply());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
}

TEST_F(Exchange, BatchCountOutsideTheArrayIsHeldWithinIt)
{
    for (int count : {1000, INT_MAX}) {
        PLC_driver.writeList.clear();
        for (int i = 0; i < 300; ++i)
            PLC_driver.writeList.append(tagged(i, 4, i));
        issue();
        PLC_driver.batchCount = count;
        deliver(writeReply());
        EXPECT_EQ(150, PLC_driver.writeList.size()) << "batchCount " << count;
        EXPECT_EQ(150, PLC_driver.writeList.first().address);
    }
    for (int count : {0, -1, INT_MIN}) {
        PLC_driver.writeList.clear();
        for (int i = 0; i < 3; ++i)
            PLC_driver.writeList.append(tagged(i, 4, i));
        PLC_driver.writeTries = 0;
        issue();
        PLC_driver.batchCount = count;
        deliver(writeReply());
        EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(1, 2)) << "count " << count;
    }
}

TEST_F(Exchange, ReplacedFollowerLeavesWithTheBatch)
{
    PLC_driver.writeList.append(tagged(0, 4, 1));
    PLC_driver.writeList.append(tagged(1, 4, 2));
    issue();
    RW_VAR second = tagged(1, 4, 3);
    AddListWriteVar(&second, 0);
    ASSERT_EQ(2, PLC_driver.writeList.size());
    deliver(writeReply());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Exchange, WriteAcknowledgementIsUnpackedWhenTheWriteIsToBeStored)
{
    // Block from offset 0 on: byte 0 is skipped, bytes 1 and 2 are the value.
    PLC_driver.writeList.append(makeWrite(2, 0x10, hex("55 66"), 4, 11));
    PLC_driver.writeList[0].aux2 = 0;
    issue();
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_EQ(0xBB, imageByte(2, 0x10));
    EXPECT_EQ(0x00, imageByte(2, 0x11));
}

TEST_F(Exchange, CompletedOneShotReadIsReportedAndRemoved)
{
    PLC_driver.onceReadList.append(tagged(0x10, 4, 11));
    PLC_driver.onceReadList.append(tagged(0x20, 4, 12));
    issue();
    PLC_driver.onceReadList.append(tagged(0x30, 4, 13));
    RW_VAR* reply = deliver(goodReply());
    EXPECT_EQ(1, reply->result);
    EXPECT_EQ(0x10, reply->address);
    EXPECT_TRUE(reply->data.isEmpty());
    EXPECT_THAT(addressesOf(PLC_driver.onceReadList), ElementsAre(0x30));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
}

TEST_F(Exchange, OneShotReadInThreePiecesIsReportedAfterTheLast)
{
    for (int piece = 0; piece < 3; ++piece)
        PLC_driver.onceReadList.append(tagged(piece, 4, 11, 900));
    for (int piece = 0; piece < 3; ++piece) {
        EXPECT_THAT(resultCalls, IsEmpty());
        issue();
        deliver(goodReply());
    }
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(Exchange, PieceForAnotherDeviceDoesNotHoldAOneShotReportBack)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11, 900));
    PLC_driver.onceReadList.append(tagged(1, 4, 11, 900));
    PLC_driver.onceReadList[1].deviceNo = kOtherDevice;
    issue();
    deliver(goodReply());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
    EXPECT_EQ(1, PLC_driver.onceReadList.size());
}

TEST_F(Exchange, PieceForAnotherStationHoldsAOneShotReportBack)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11, 900));
    PLC_driver.onceReadList.append(tagged(1, 4, 11, 900));
    PLC_driver.onceReadList[1].station = 8;
    issue();
    deliver(goodReply());
    EXPECT_THAT(resultCalls, IsEmpty());
}

TEST_F(Exchange, RemoteOneShotReadIsNotReported)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11));
    PLC_driver.onceReadList.append(tagged(1, 4, 12));
    PLC_driver.onceReadList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(100, deliver(goodReply())->result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_EQ(11, PLC_driver.reply.aux1);
}

TEST_F(Exchange, OneShotListThatBecameEmptyIsSettledSilently)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11));
    issue();
    PLC_driver.onceReadList.clear();
    PLC_driver.reply.address = 99;
    EXPECT_EQ(1, deliver(uniformReadReply(1, 1))->result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_EQ(99, PLC_driver.reply.address);
}

TEST_F(Exchange, CyclicBatchOfFiveGoesToTheEnd)
{
    for (int i = 0; i < 5; ++i)
        PLC_driver.readList.append(numberedRead(i, 100));
    for (int i = 5; i < 8; ++i)
        PLC_driver.readList.append(numberedRead(i, 600));
    issue();
    ASSERT_EQ(5, PLC_driver.batchCount);
    RW_VAR* reply = deliver(goodReply());
    EXPECT_EQ(1, reply->result);
    EXPECT_EQ(0, reply->address);
    EXPECT_EQ(100, reply->length);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(5, 6, 7, 0, 1, 2, 3, 4));
    for (const RW_VAR& var : PLC_driver.readList)
        EXPECT_EQ(0, var.result);
    EXPECT_THAT(resultCalls, IsEmpty());
}

TEST_F(Exchange, CyclicBatchOfTheWholeListKeepsItsOrder)
{
    addReads(3);
    issue();
    deliver(goodReply());
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1, 2));
}

TEST_F(Exchange, CyclicListThatWasReplacedIsNotRotated)
{
    addReads(3);
    issue();
    const QByteArray reply = goodReply();
    PLC_driver.readList.clear();
    for (int i = 10; i < 15; ++i)
        PLC_driver.readList.append(numberedRead(i));
    PLC_driver.reply.address = 99;
    EXPECT_EQ(1, deliver(reply)->result);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(10, 11, 12, 13, 14));
    EXPECT_EQ(99, PLC_driver.reply.address);
}

TEST_F(Exchange, CyclicListThatBecameEmptyIsSettledSilently)
{
    addReads(3);
    issue();
    const QByteArray reply = goodReply();
    PLC_driver.readList.clear();
    PLC_driver.reply.address = 99;
    EXPECT_EQ(1, deliver(reply)->result);
    EXPECT_EQ(99, PLC_driver.reply.address);
}

TEST_F(Exchange, CyclicListThatBecameShorterIsRotatedByTheBatchCount)
{
    addReads(8);
    issue();
    ASSERT_EQ(8, PLC_driver.batchCount);
    while (PLC_driver.readList.size() > 3)
        PLC_driver.readList.removeLast();
    deliver(goodReply());
    // Eight moves of three entries: twice round and two more.
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(2, 0, 1));
}

TEST_F(Exchange, CyclicRotationIsHeldWithinTheBatchArray)
{
    addReads(7);
    issue();
    const QByteArray reply = goodReply();
    PLC_driver.batchCount = INT_MAX;
    deliver(reply);
    // 150 moves of seven entries: 21 times round and three more.
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(3, 4, 5, 6, 0, 1, 2));
    issue();
    PLC_driver.batchCount = -1;
    deliver(reply);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(3, 4, 5, 6, 0, 1, 2));
    EXPECT_EQ(0, PLC_driver.readList.first().result);
}

TEST_F(Exchange, RemoteCyclicBatchIsRotatedToo)
{
    PLC_driver.readList.append(numberedRead(0, 700));
    PLC_driver.readList.append(numberedRead(1, 700));
    PLC_driver.readList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(100, deliver(goodReply())->result);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(1, 0));
}

} // namespace
} // namespace plc::test
