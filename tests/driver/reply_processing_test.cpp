#include "tests/driver/reply_processing_fixture.h"

namespace plc::test {
namespace {

TEST_F(ReplyProcessing, WithoutARequestTheReplyRecordSaysOneAndNothingChanges)
{
    addReads(2);
    PLC_driver.writeList.append(tagged(0, 1, 1));
    PLC_driver.reply.category = 9;
    PLC_driver.reply.result = 44;
    PLC_driver.failed = 1;
    PLC_driver.cycleCount = 3;
    settings.retryCount = 2;
    QByteArray reply = writeReply();
    RW_VAR* result = DataCom(&reply, 8);
    EXPECT_EQ(result, &PLC_driver.reply);
    EXPECT_EQ(1, result->result);
    EXPECT_EQ(9, result->category);
    EXPECT_EQ(1, PLC_driver.failed);
    EXPECT_EQ(3, PLC_driver.cycleCount);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(2, settings.retryCount);
    EXPECT_EQ(0, settings.frameIndex);
    EXPECT_EQ(2, PLC_driver.readList.size());
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(failureCalls, IsEmpty());
}

TEST_F(ReplyProcessing, WithoutARequestAnyArgumentsAreTaken)
{
    EXPECT_EQ(1, DataCom(nullptr, 0)->result);
    EXPECT_EQ(1, DataCom(nullptr, 8)->result);
    EXPECT_EQ(1, once(QByteArray(), -1));
    SetComInfo(nullptr);
    EXPECT_EQ(1, DataCom(nullptr, 0)->result);
}

TEST_F(ReplyProcessing, WithoutSettingsAWaitingRequestGives200)
{
    addReads(2);
    ComCommunication();
    SetComInfo(nullptr);
    EXPECT_EQ(200, once(identificationReply()));
    EXPECT_EQ(200, once(QByteArray()));
    EXPECT_EQ(200, DataCom(nullptr, 0)->result);
    EXPECT_EQ(2, PLC_driver.requestQueue.size());
    EXPECT_EQ(-1, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_THAT(failureCalls, IsEmpty());
}

TEST_F(ReplyProcessing, BeforeAnyBatchNoListIsSettled)
{
    addReads(2);
    PLC_driver.readList[0].result = -1;
    PLC_driver.writeList.append(tagged(0, 1, 1));
    PLC_driver.onceReadList.append(tagged(1, 2, 1));
    PLC_driver.loggedIn = 1;
    PLC_driver.batchCount = 1;
    RW_VAR var;
    queueRequest(makeRequest(var));
    settings.frameCount = 1;
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1));
    EXPECT_EQ(-1, PLC_driver.readList.first().result);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(1, PLC_driver.onceReadList.size());
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(Exchange, HalfAFrameWaitsAndAWholeOneRecordsItsSize)
{
    addReads(1);
    issue();
    const QByteArray reply = goodReply();
    EXPECT_EQ(0, once(reply.left(3)));
    EXPECT_EQ(0, once(reply.left(reply.size() / 2)));
    EXPECT_EQ(-1, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(1, once(reply));
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(15, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, settings.frameIndex);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_EQ(1, once(reply));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(1, settings.frameIndex);
    EXPECT_EQ(0, imageByte(1, 0));
}

TEST_F(Exchange, WaitingForMoreIsNoFailure)
{
    addReads(1);
    issue();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(0, once(hex("BB BB 00")));
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_THAT(failureCalls, IsEmpty());
}

TEST_F(Exchange, EveryTruncationOfAReplyWaitsAndStoresNothing)
{
    addReads(3);
    issue();
    const QByteArray reply = goodReply();
    for (int size = 1; size < reply.size(); ++size)
        EXPECT_EQ(0, once(reply.left(size))) << size << " bytes";
    EXPECT_EQ(-1, PLC_driver.requestQueue.first().replyLength);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_EQ(0, settings.retryCount);
}

TEST_F(Exchange, ReplyLongerThanItsHeaderSaysIsNeverComplete)
{
    addReads(1);
    issue();
    EXPECT_EQ(0, once(goodReply() + hex("00")));
    EXPECT_EQ(0, once(goodReply() + goodReply()));
    EXPECT_EQ(-1, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, settings.retryCount);
}

TEST_F(Exchange, NoBytesAtAllAreRetriedAndThenGive41)
{
    settings.retryLimit = 2;
    addReads(1);
    issue();
    EXPECT_EQ(0, once(QByteArray()));
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(0, once(QByteArray()));
    EXPECT_EQ(2, settings.retryCount);
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(Exchange, NullReplyIsAnEmptyOne)
{
    settings.retryLimit = 1;
    addReads(1);
    issue();
    EXPECT_EQ(0, DataCom(nullptr, 0)->result);
    EXPECT_EQ(41, DataCom(nullptr, 15)->result);
}

TEST_F(Exchange, EmptyMeansTheBufferAndNotTheNumberOfBytesReceived)
{
    addReads(1);
    issue();
    EXPECT_EQ(0, once(goodReply().left(4), 0));
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_EQ(1, once(goodReply(), 0));
    EXPECT_EQ(15, PLC_driver.requestQueue.first().replyLength);
    PLC_driver.requestQueue.first().replyLength = -1;
    EXPECT_EQ(41, once(QByteArray(), 15));
}

TEST_F(Exchange, FortyOneDoesNotDependOnTheCategory)
{
    PLC_driver.writeList.append(tagged(0, 5, 1));
    issue();
    EXPECT_EQ(41, once(QByteArray()));
}

TEST_F(Exchange, FixedLengthReplyThatIsNoWholeFrameGives71)
{
    for (const QByteArray& reply :
         {QByteArray(), hex("BB BB 00"), writeReply().left(7), writeReply() + hex("00")}) {
        RW_VAR var;
        var.category = 5;
        Protocol request = makeRequest(var);
        request.replyLength = 15;
        queueRequest(request);
        PLC_driver.loggedIn = 1;
        settings.frameCount = 1;
        settings.frameIndex = 0;
        EXPECT_EQ(71, once(reply, 15)) << reply.size() << " bytes";
        EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    }
    EXPECT_EQ(4u, failureCalls.size());
}

TEST_F(Exchange, FixedLengthOfOneByteIsNeverAWholeFrame)
{
    RW_VAR var;
    var.category = 5;
    Protocol request = makeRequest(var);
    request.replyLength = 1;
    queueRequest(request);
    EXPECT_EQ(71, once(hex("BB")));
}

TEST_F(Exchange, FixedLengthIsTestedByTheFrameAndComparedByTheHandler)
{
    RW_VAR var;
    var.category = 5;
    Protocol request = makeRequest(var);
    request.replyLength = 16;
    queueRequest(request);
    settings.frameCount = 1;
    EXPECT_EQ(76, once(writeReply(), 8)) << "a whole frame of another size";
}

TEST_F(Exchange, FixedLengthReplyNeedsNoSecondCall)
{
    RW_VAR var;
    var.aux2 = 1;
    Protocol request = makeRequest(var);
    request.replyLength = 8;
    queueRequest(request);
    settings.frameCount = 1;
    settings.frameIndex = 0;
    EXPECT_EQ(1, once(writeReply()));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(Exchange, ExpectedLengthZeroHasNoTestAndTakesAnything)
{
    for (const QByteArray& reply : {QByteArray(), hex("FF"), refusedReply(), goodReply()}) {
        RW_VAR var;
        Protocol request = makeRequest(var);
        request.replyLength = 0;
        queueRequest(request);
        settings.frameCount = 1;
        settings.frameIndex = 0;
        EXPECT_EQ(1, once(reply)) << reply.size() << " bytes";
        EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    }
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_F(Exchange, ExpectedLengthBelowMinusOneHasNoTest)
{
    RW_VAR var;
    var.category = 3;
    Protocol request = makeRequest(var);
    request.replyLength = -2;
    queueRequest(request);
    settings.frameCount = 1;
    settings.frameIndex = 0;
    settings.retryLimit = 1;
    EXPECT_EQ(0, once(QByteArray(), 0)) << "nothing received although a reply was expected";
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(74, once(writeReply()));
}

TEST_F(Exchange, RecordedSizeStaysWhenTheRequestIsRetried)
{
    settings.retryLimit = 2;
    PLC_driver.readList.append(numberedRead(0));
    PLC_driver.readList[0].category = 3;
    issue();
    const QByteArray refused = hex("BB BB 00 00 00 09 00 01 00 00 00 00 00 00 00");
    EXPECT_EQ(1, once(refused));
    EXPECT_EQ(0, once(refused));
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(15, issue().replyLength);
    EXPECT_EQ(0, once(writeReply())) << "8 bytes where 15 are expected";
    EXPECT_EQ(2, settings.retryCount);
    EXPECT_EQ(1, once(goodReply())) << "15 bytes are accepted at once";
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(Exchange, PartOfAReplyAfterTheSizeWasRecordedIsAFailure)
{
    settings.retryLimit = 1;
    addReads(1);
    issue();
    EXPECT_EQ(1, once(goodReply()));
    EXPECT_EQ(0, once(goodReply().left(10)));
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(71, once(QByteArray()));
}

TEST_F(Exchange, LocalReplyIsStored)
{
    settings.localDeviceNo = 3;
    PLC_driver.readList.append(makeVar(7, 0x20, 2));
    PLC_driver.readList.append(makeVar(9, 0x40, 1));
    PLC_driver.readList[0].deviceNo = 3;
    issue();
    EXPECT_EQ(1, deliver(readReply({hex("AB CD"), hex("EF")}))->result);
    EXPECT_EQ(0xAB, imageByte(7, 0x20));
    EXPECT_EQ(0xCD, imageByte(7, 0x21));
    EXPECT_EQ(0xEF, imageByte(9, 0x40));
    EXPECT_EQ(3, PLC_driver.localImage.size());
}

TEST_F(Exchange, ReplyToARequestThatOnlyWantsAnAcknowledgementIsNotStored)
{
    PLC_driver.readList.append(makeVar(7, 0x20, 2));
    PLC_driver.readList[0].aux2 = 1;
    issue();
    EXPECT_EQ(1, deliver(readReply({hex("AB CD")}))->result);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_F(Exchange, RemoteReplyGives100AndStoresNothing)
{
    settings.localDeviceNo = 3;
    PLC_driver.readList.append(makeVar(7, 0x20, 2));
    PLC_driver.readList[0].deviceNo = kOtherDevice;
    issue();
    EXPECT_EQ(100, deliver(readReply({hex("AB CD")}))->result);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_EQ(0x20, PLC_driver.reply.address);
}

TEST_F(Exchange, RemoteReplyWithoutTheMarkerIsStored)
{
    PLC_driver.readList.append(makeVar(7, 0x20, 2));
    PLC_driver.readList[0].deviceNo = kOtherDevice;
    PLC_driver.readList[0].aux12 = -1;
    issue();
    EXPECT_EQ(1, deliver(readReply({hex("AB CD")}))->result)
        << "the first frame of a transaction gives the local number";
    EXPECT_EQ(0xAB, imageByte(7, 0x20));
}

TEST_F(Exchange, RemoteReplyToTheSecondFrameGives100)
{
    PLC_driver.readList.append(makeVar(7, 0x20, 2));
    PLC_driver.readList[0].deviceNo = kOtherDevice;
    PLC_driver.readList[0].aux12 = -1;
    issue();
    settings.frameCount = 2;
    settings.frameIndex = 1;
    EXPECT_EQ(100, deliver(readReply({hex("AB CD")}))->result);
    EXPECT_EQ(0xAB, imageByte(7, 0x20));
}

struct FailureRow {
    const char* name;
    bool remote;
    int replyLength;
    QByteArray reply;
    int received;
    int category;
    int result;
};

void PrintTo(const FailureRow& row, std::ostream* out)
{
    *out << row.name;
}

class DataFailure : public Exchange, public ::testing::WithParamInterface<FailureRow> {
protected:
    void queueFailing()
    {
        RW_VAR var;
        var.category = GetParam().category;
        var.deviceNo = GetParam().remote ? kOtherDevice : 0;
        Protocol request = makeRequest(var);
        request.replyLength = GetParam().replyLength;
        queueRequest(request);
        settings.frameCount = 1;
        settings.frameIndex = 0;
    }
};

TEST_P(DataFailure, GivesItsNumberWhenTheRetriesAreSpent)
{
    queueFailing();
    EXPECT_EQ(once(GetParam().reply, GetParam().received), GetParam().result);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(1, PLC_driver.failed);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_P(DataFailure, GivesZeroWhileRetriesAreLeft)
{
    settings.retryLimit = 1;
    queueFailing();
    EXPECT_EQ(0, once(GetParam().reply, GetParam().received));
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(0, settings.frameIndex);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_THAT(failureCalls, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFailure,
    ::testing::Values(FailureRow{"LocalStatus", false, 8, refusedReply(), 8, 3, 14},
                      FailureRow{"LocalNothingReceived", false, 8, writeReply(), 0, 3, 44},
                      FailureRow{"LocalWrongLength", false, 8, writeReply(), 9, 3, 74},
                      FailureRow{"LocalNegativeReceived", false, 8, writeReply(), -1, 3, 74},
                      FailureRow{"LocalStatusCategory0", false, 8, refusedReply(), 8, 0, 11},
                      FailureRow{"LocalStatusCategory11", false, 8, refusedReply(), 8, 11, 22},
                      FailureRow{"LocalStatusCategory12", false, 8, refusedReply(), 8, 12, 11},
                      FailureRow{"RemoteStatus", true, 8, refusedReply(), 8, 3, 114},
                      FailureRow{"RemoteNothingReceived", true, 8, writeReply(), 0, 3, 144},
                      FailureRow{"RemoteWrongLength", true, 8, writeReply(), 9, 3, 174},
                      FailureRow{"RemoteStatusCategory11", true, 8, refusedReply(), 8, 11, 122},
                      FailureRow{"RemoteNothingCategory11", true, 8, writeReply(), 0, 11, 152},
                      FailureRow{"RemoteLengthCategory0", true, 8, writeReply(), 1, 0, 171},
                      FailureRow{"RemoteEmptyReplyOfLengthZero", true, 0, QByteArray(), 0, 3, 114},
                      FailureRow{"HeaderWithoutStatus", false, 6, hex("BB BB 00 00 00 00"), 6, 3,
                                 14}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Exchange, WholeFramesWithTooLittleDataStoreWhatTheyHave)
{
    const QByteArray whole = readReply({hex("01 02 03"), hex("04 05")});
    // Values of the two entries that lie within each size; byte 12 and byte 16 lead the blocks.
    for (int size = 8; size <= whole.size(); ++size) {
        PLC_driver.localImage.clear();
        PLC_driver.readList.clear();
        PLC_driver.readList.append(makeVar(7, 0x20, 3));
        PLC_driver.readList.append(makeVar(7, 0x40, 2));
        issue();
        EXPECT_EQ(1, deliver(frameOf(whole.mid(6, size - 6)))->result) << size << " bytes";
        EXPECT_EQ(imageByte(7, 0x20), size > 13 ? 1 : -1) << size << " bytes";
        EXPECT_EQ(imageByte(7, 0x21), size > 14 ? 2 : -1) << size << " bytes";
        EXPECT_EQ(imageByte(7, 0x22), size > 15 ? 3 : -1) << size << " bytes";
        EXPECT_EQ(imageByte(7, 0x40), size > 17 ? 4 : -1) << size << " bytes";
        EXPECT_EQ(imageByte(7, 0x41), size > 18 ? 5 : -1) << size << " bytes";
    }
}

TEST_F(Exchange, DataOffsetOutsideTheReplyStoresNothing)
{
    for (int offset : {-1, INT_MIN, 15, 16, INT_MAX}) {
        PLC_driver.readList.clear();
        addReads(1);
        issue();
        const QByteArray reply = goodReply();
        PLC_driver.requestQueue.first().dataOffset = offset;
        EXPECT_EQ(1, deliver(reply)->result) << "offset " << offset;
        EXPECT_TRUE(PLC_driver.localImage.isEmpty()) << "offset " << offset;
    }
}

TEST_F(ReplyProcessing, RandomRepliesNeverBreakTheDriver)
{
    std::mt19937 random(20240229);
    const auto below = [&random](int limit) { return int(random() % unsigned(limit)); };
    settings.retryLimit = 2;
    for (int round = 0; round < 3000; ++round) {
        if (PLC_driver.readList.size() < 3)
            PLC_driver.readList.append(makeVar(1, below(1000), below(30) - 2));
        if (PLC_driver.writeList.size() < 2)
            PLC_driver.writeList.append(tagged(below(1000), below(14), below(3), below(20)));
        if (PLC_driver.onceReadList.size() < 2)
            PLC_driver.onceReadList.append(tagged(below(1000), below(14), below(3)));
        PLC_driver.readList.last().deviceNo = below(2);
        PLC_driver.onceReadList.last().deviceNo = below(2);
        PLC_driver.onceReadList.last().aux12 = below(2) - 1;
        ComCommunication();
        QByteArray payload(below(260), '\0');
        for (int i = below(4); i < payload.size(); ++i)
            payload[i] = char(below(256));
        QByteArray reply = frameOf(payload);
        if (below(4) == 0)
            reply.truncate(below(int(reply.size()) + 1));
        deliver(reply);
        const int result = PLC_driver.reply.result;
        EXPECT_TRUE(result == 0 || result == 1 || result == 100 || result == 201 ||
                    (result >= 11 && result <= 182))
            << result;
        EXPECT_LE(settings.retryCount, settings.retryLimit);
        EXPECT_LE(PLC_driver.requestQueue.size(), 2);
    }
    EXPECT_FALSE(failureCalls.empty());
    EXPECT_FALSE(resultCalls.empty());
    EXPECT_GT(PLC_driver.localImage.size(), 0);
}

} // namespace
} // namespace plc::test
