#include "tests/driver/reply_processing_fixture.h"

namespace plc::test {
namespace {

TEST_F(Exchange, RetryKeepsEverythingAndCallsNobody)
{
    settings.retryLimit = 1;
    PLC_driver.cycleCount = 1;
    PLC_driver.writeList.append(tagged(0, 4, 11));
    PLC_driver.writeList.append(tagged(1, 4, 12));
    PLC_driver.reply.address = 99;
    const QByteArray frame = issue().frame;
    EXPECT_EQ(0, deliver(refusedReply())->result);
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(0, settings.frameIndex);
    EXPECT_EQ(2, PLC_driver.writeList.size());
    EXPECT_EQ(99, PLC_driver.reply.address);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_EQ(1, PLC_driver.cycleCount);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(failureCalls, IsEmpty());
    EXPECT_EQ(issue().frame, frame);
}

TEST_F(Exchange, RetryThatSucceedsReportsSuccess)
{
    settings.retryLimit = 1;
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    deliver(refusedReply());
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 1}));
}

TEST_F(Exchange, FinalFailureResetsTheTransactionAndTheLogin)
{
    settings.retryLimit = 1;
    settings.scanDone = 1;
    PLC_driver.cycleCount = 1;
    addReads(3);
    issue();
    queueRequest(Protocol());
    deliver(refusedReply());
    EXPECT_EQ(11, deliver(refusedReply())->result);
    EXPECT_EQ(1, PLC_driver.failed);
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(0, settings.scanDone);
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 0, 1}));
    EXPECT_EQ(20, issue().frameLength) << "the next request is the login";
}

TEST_F(Exchange, NegativeRetryLimitFailsAtOnce)
{
    for (int limit : {-1, INT_MIN}) {
        settings.retryLimit = limit;
        settings.retryCount = 0;
        PLC_driver.loggedIn = 1;
        addReads(1);
        issue();
        EXPECT_EQ(41, once(QByteArray())) << "limit " << limit;
    }
}

TEST_F(Exchange, RetryCountOfTheHostIsContinued)
{
    settings.retryLimit = 5;
    settings.retryCount = 5;
    addReads(1);
    issue();
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_EQ(0, settings.retryCount);
}

TEST_F(Exchange, LargestRetryCountExceedsEveryLimit)
{
    settings.retryLimit = INT_MAX;
    settings.retryCount = INT_MAX;
    addReads(1);
    issue();
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_EQ(0, settings.retryCount);
}

TEST_F(Exchange, FailedWriteIsReportedAndItsRequestPurged)
{
    PLC_driver.writeList.append(tagged(0, 4, 11, 900));
    PLC_driver.writeList.append(tagged(1, 4, 12, 900));
    PLC_driver.writeList.append(tagged(2, 4, 11, 900));
    PLC_driver.writeList.append(tagged(3, 5, 11, 900));
    PLC_driver.writeList.append(tagged(4, 4, 11, 900));
    PLC_driver.onceReadList.append(tagged(5, 4, 11));
    issue();
    RW_VAR* reply = deliver(refusedReply());
    EXPECT_EQ(15, reply->result);
    EXPECT_EQ(0, reply->address);
    EXPECT_TRUE(reply->data.isEmpty());
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(1, 3));
    EXPECT_EQ(1, PLC_driver.onceReadList.size());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 4, 1}));
    EXPECT_EQ(0, PLC_driver.loggedIn);
}

TEST_F(Exchange, FailedWriteOfOnePieceIsReportedAsFailed)
{
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    EXPECT_EQ(15, deliver(refusedReply())->result);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 4, 1}));
}

TEST_F(Exchange, FollowersOfAFailedWriteBatchAreRemovedToo)
{
    PLC_driver.writeList.append(tagged(0, 4, 11));
    PLC_driver.writeList.append(tagged(1, 4, 12));
    issue();
    PLC_driver.writeList.append(tagged(2, 4, 12));
    deliver(refusedReply());
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(2));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
}

TEST_F(Exchange, PurgeOfWritesKeepsOtherStationsWhileStationsCount)
{
    settings.multiStation = 1;
    for (int i = 0; i < 5; ++i) {
        PLC_driver.writeList.append(tagged(i, 4, 11, 900));
        PLC_driver.writeList[i].station = i % 2 ? 8 : 7;
    }
    issue();
    deliver(refusedReply());
    EXPECT_THAT(addressesOf(PLC_driver.writeList), ElementsAre(1, 3));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
}

TEST_F(Exchange, PurgeOfWritesIgnoresStationsOtherwise)
{
    for (int i = 0; i < 5; ++i) {
        PLC_driver.writeList.append(tagged(i, 4, 11, 900));
        PLC_driver.writeList[i].station = i % 2 ? 8 : 7;
    }
    issue();
    deliver(refusedReply());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Exchange, FailedOneShotReadIsReportedAndItsRequestPurged)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11, 900));
    PLC_driver.onceReadList.append(tagged(1, 4, 12, 900));
    PLC_driver.onceReadList.append(tagged(2, 4, 11, 900));
    issue();
    PLC_driver.writeList.append(tagged(3, 4, 11));
    EXPECT_EQ(15, deliver(refusedReply())->result);
    EXPECT_THAT(addressesOf(PLC_driver.onceReadList), ElementsAre(1));
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 4, 1}));
}

TEST_F(Exchange, PurgeOfOneShotReadsKeepsOtherStationsWhileStationsCount)
{
    settings.multiStation = -1;
    for (int i = 0; i < 4; ++i) {
        PLC_driver.onceReadList.append(tagged(i, 4, 11, 900));
        PLC_driver.onceReadList[i].station = i % 2 ? 8 : 7;
    }
    issue();
    deliver(refusedReply());
    EXPECT_THAT(addressesOf(PLC_driver.onceReadList), ElementsAre(1, 3));
}

TEST_F(Exchange, RemoteOneShotReadThatFailsInItsHandlerIsNotReported)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11, 900));
    PLC_driver.onceReadList.append(tagged(1, 4, 11, 900));
    PLC_driver.onceReadList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(115, deliver(refusedReply())->result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 4, 1}));
}

TEST_F(Exchange, RemoteOneShotReadThatNeverReachesItsHandlerIsReported)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11));
    PLC_driver.onceReadList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
}

TEST_F(Exchange, RemoteOneShotReadWhoseReplyIsNoFrameIsReported)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11));
    PLC_driver.onceReadList[0].deviceNo = kOtherDevice;
    issue();
    PLC_driver.requestQueue.first().replyLength = 14;
    EXPECT_EQ(71, once(writeReply().left(7)));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
}

TEST_F(Exchange, RemoteReplyBeforeDoesNotMakeALaterFailureRemote)
{
    PLC_driver.onceReadList.append(tagged(0, 4, 11, 900));
    PLC_driver.onceReadList.append(tagged(1, 4, 12, 900));
    PLC_driver.onceReadList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(100, deliver(goodReply())->result);
    issue();
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 12, 2}));
}

TEST_F(Exchange, FailedCyclicBatchGoesToTheEndAndNothingIsPurged)
{
    PLC_driver.readList.append(numberedRead(0, 700));
    PLC_driver.readList.append(numberedRead(1, 700));
    PLC_driver.readList[0].category = 3;
    PLC_driver.writeList.append(tagged(2, 3, 0));
    PLC_driver.writeTries = 5;
    issue();
    EXPECT_EQ(0, PLC_driver.lastKind);
    RW_VAR* reply = deliver(refusedReply());
    EXPECT_EQ(14, reply->result);
    EXPECT_EQ(3, reply->category);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(1, 0));
    EXPECT_EQ(0, PLC_driver.readList.last().result);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 3, 1}));
}

TEST_F(ReplyProcessing, FailureBeforeAnyBatchIsReportedAndPurgesNothing)
{
    PLC_driver.writeList.append(tagged(0, 9, 0));
    PLC_driver.onceReadList.append(tagged(0, 9, 0));
    addReads(1);
    PLC_driver.reply.category = 9;
    queueRequest(makeRequest(RW_VAR()));
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 9, 1}));
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(1, PLC_driver.onceReadList.size());
    EXPECT_EQ(1, PLC_driver.readList.size());
}

TEST_F(Exchange, FailureOfAListThatBecameEmptyStillCallsTheFailureCallback)
{
    for (QList<RW_VAR>* list :
         {&PLC_driver.writeList, &PLC_driver.onceReadList, &PLC_driver.readList}) {
        failureCalls.clear();
        PLC_driver.loggedIn = 1;
        list->append(tagged(0, 4, 11));
        issue();
        list->clear();
        PLC_driver.reply.category = 9;
        EXPECT_EQ(41, once(QByteArray()));
        EXPECT_THAT(resultCalls, IsEmpty());
        EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 9, 1}));
        EXPECT_EQ(9, PLC_driver.reply.category);
    }
}

TEST_F(Exchange, FailureLeavesImageAndInfoBytesAsTheyAre)
{
    PLC_driver.plcInfo1 = 7;
    PLC_driver.localImage.insert(DataImage::key(1, 0), 5);
    addReads(1);
    issue();
    deliver(refusedReply());
    EXPECT_EQ(5, imageByte(1, 0));
    EXPECT_EQ(7, PLC_driver.plcInfo1);
}

TEST_F(Exchange, UnsetCallbacksAreSkipped)
{
    RegistCallBackFuncIntf(nullptr, nullptr);
    PLC_driver.writeList.append(tagged(0, 4, 11, 900));
    PLC_driver.writeList.append(tagged(1, 4, 12, 900));
    issue();
    EXPECT_EQ(1, deliver(writeReply())->result);
    issue();
    EXPECT_EQ(15, deliver(refusedReply())->result);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    PLC_driver.loggedIn = 1;
    PLC_driver.onceReadList.append(tagged(0, 4, 11));
    issue();
    EXPECT_EQ(1, deliver(goodReply())->result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(failureCalls, IsEmpty());
}

std::vector<char> callOrder;

TEST_F(Exchange, ResultIsReportedBeforeTheFailure)
{
    callOrder.clear();
    RegistCallBackFuncIntf([](int, int, int, int) { callOrder.push_back('r'); },
                           [](QList<RW_VAR>*, int, int) { callOrder.push_back('f'); });
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    deliver(refusedReply());
    EXPECT_THAT(callOrder, ElementsAre('r', 'f'));
}

TEST_F(Exchange, ListFilledByTheFailureCallbackHarmsNothing)
{
    RegistCallBackFuncIntf(recordResult,
                           [](QList<RW_VAR>* list, int, int) { list->append(RW_VAR()); });
    for (int i = 0; i < 2; ++i) {
        PLC_driver.loggedIn = 1;
        addReads(1);
        issue();
        EXPECT_EQ(41, once(QByteArray()));
    }
    RegistCallBackFuncIntf(recordResult, recordFailure);
    PLC_driver.loggedIn = 1;
    issue();
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 0, 1}));
}

} // namespace
} // namespace plc::test
