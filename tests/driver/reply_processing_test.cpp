#include <climits>
#include <random>

#include "support/driver_fixture.h"

namespace plc {
namespace test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Not the local device number.
const int kOtherDevice = 6;

std::vector<int> addressesOf(const QList<RW_VAR>& list)
{
    std::vector<int> addresses;
    for (const RW_VAR& var : list)
        addresses.push_back(var.address);
    return addresses;
}

RW_VAR numberedRead(int number, int length = 2)
{
    return makeVar(1, number, length);
}

/// A write or one-shot read that lies at `number` and belongs to the host request (category, aux1).
RW_VAR tagged(int number, int category, int aux1, int length = 1)
{
    RW_VAR var = makeWrite(1, number, QByteArray(length, 'x'), category, aux1);
    return var;
}

class ReplyProcessing : public DriverTest {
protected:
    /// The reply to the request at the head of the queue, complete in itself and good.
    static QByteArray goodReply()
    {
        QByteArray payload(6, '\0');
        for (int i = 0; i < batchSize(); ++i)
            payload += QByteArray(1 + qMax(0, PLC_driver.batch[i].length), '\0');
        return frameOf(payload);
    }

    /// Hands over `reply` once.
    static int once(const QByteArray& reply, int received)
    {
        ExactBytes bytes(reply);
        return DataCom(bytes.get(), received)->result;
    }
    static int once(const QByteArray& reply) { return once(reply, int(reply.size())); }

    static int imageByte(quint32 areaIndex, quint32 address)
    {
        const quint64 key = DataImage::key(areaIndex, address);
        return PLC_driver.localImage.contains(key) ? PLC_driver.localImage.value(key) : -1;
    }

    static void addReads(int count)
    {
        for (int i = 0; i < count; ++i)
            PLC_driver.readList.append(numberedRead(i));
    }

    /// Asks for a request, and fails the test when there is none.
    static const Protocol& issue()
    {
        static const Protocol kNone;
        const Protocol* request = ComCommunication();
        EXPECT_NE(request, nullptr);
        return request ? *request : kNone;
    }
};

class Exchange : public ReplyProcessing {
protected:
    Exchange() { logIn(); }
};

// ---- Nothing pending ----

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

// ---- Length test ----

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

// ---- Login ----

TEST_F(ReplyProcessing, LoginTakesTwoRepliesOfTwoCallsEach)
{
    addReads(1);
    issue();
    EXPECT_EQ(1, once(identificationReply()));
    EXPECT_EQ(206, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, settings.frameIndex);
    EXPECT_EQ(1, once(identificationReply()));
    EXPECT_EQ(1, settings.frameIndex);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(23, issue().frameLength);
    EXPECT_EQ(1, once(fileReply(0x34, 0x12)));
    EXPECT_EQ(36, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(1, once(fileReply(0x34, 0x12)));
    EXPECT_EQ(2, settings.frameIndex);
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(0x12, PLC_driver.plcInfo1);
    EXPECT_EQ(0x34, PLC_driver.plcInfo2);
}

TEST_F(ReplyProcessing, LoginSettlesNoListAndCallsNobody)
{
    addReads(2);
    PLC_driver.writeList.append(tagged(0, 1, 1));
    PLC_driver.failed = 1;
    issue();
    deliver(identificationReply());
    deliver(fileReply());
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(2, PLC_driver.readList.size());
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(1, PLC_driver.failed) << "only a good data reply takes the failure back";
    EXPECT_THAT(resultCalls, IsEmpty());
}

TEST_F(ReplyProcessing, LoginEndsWhenTheFrameCountIsReached)
{
    RW_VAR var;
    handshake_data(&var);
    settings.frameCount = 1;
    deliver(identificationReply());
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(ReplyProcessing, LoginGoesOnWhileTheFrameCountIsNotReached)
{
    RW_VAR var;
    handshake_data(&var);
    settings.frameCount = 3;
    deliver(identificationReply());
    EXPECT_EQ(1, deliver(fileReply(0x34, 0x12))->result);
    EXPECT_EQ(2, settings.frameIndex);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    settings.frameCount = 2;
    handshake_data(&var);
    deliver(identificationReply());
    EXPECT_EQ(0, PLC_driver.loggedIn) << "one answer of two";
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    deliver(fileReply(0x34, 0x12));
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(ReplyProcessing, LoginRepliesInPiecesAreWaitedFor)
{
    RW_VAR var;
    handshake_data(&var);
    const QByteArray reply = identificationReply();
    for (int size = 1; size < reply.size(); ++size)
        ASSERT_EQ(0, once(reply.left(size))) << size << " bytes";
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_EQ(1, deliver(reply)->result);
    EXPECT_EQ(1, settings.frameIndex);
}

struct RefusedLogin {
    const char* name;
    int frameIndex;
    int replyLength;
    QByteArray reply;
};

void PrintTo(const RefusedLogin& row, std::ostream* out)
{
    *out << row.name;
}

class LoginRefusal : public ReplyProcessing, public ::testing::WithParamInterface<RefusedLogin> {};

TEST_P(LoginRefusal, Gives201AndAnEmptyQueueAndNothingElse)
{
    settings.retryLimit = 3;
    settings.retryCount = 1;
    addReads(2);
    PLC_driver.cycleCount = 1;
    PLC_driver.reply.category = 8;
    issue();
    PLC_driver.writeTries = 2;
    PLC_driver.onceTries = 1;
    settings.frameIndex = GetParam().frameIndex;
    PLC_driver.requestQueue.first().replyLength = GetParam().replyLength;
    RW_VAR* result = deliver(GetParam().reply);
    EXPECT_EQ(201, result->result);
    EXPECT_EQ(8, result->category);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_EQ(1, PLC_driver.cycleCount);
    EXPECT_EQ(2, PLC_driver.writeTries);
    EXPECT_EQ(1, PLC_driver.onceTries);
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(settings.frameIndex, GetParam().frameIndex);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1));
    EXPECT_EQ(-1, PLC_driver.readList.first().result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(failureCalls, IsEmpty());
    EXPECT_EQ(20, issue().frameLength) << "the next request begins the login anew";
    EXPECT_EQ(0, settings.frameIndex);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LoginRefusal,
    ::testing::Values(RefusedLogin{"FirstReplyTooSmall", 0, -1, identificationReply(199)},
                      RefusedLogin{"SecondReplyTooSmall", 1, -1, fileReply(1, 2, 29)},
                      RefusedLogin{"RefusedStatus", 0, -1, refusedReply()},
                      RefusedLogin{"FewerBytesThanTheRequestWants", 0, 0, hex("BB BB 00 00 C8")},
                      RefusedLogin{"NoBytesAtAll", 1, 0, QByteArray()},
                      RefusedLogin{"NoReplyIsExpected", 2, -1, identificationReply()},
                      RefusedLogin{"FixedLength", 0, 206, identificationReply(150)}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(ReplyProcessing, LoginWithoutAnAnswerIsRetriedAndThenFailsTheBatch)
{
    settings.retryLimit = 1;
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    EXPECT_EQ(0, once(QByteArray()));
    EXPECT_EQ(20, issue().frameLength);
    EXPECT_EQ(2, PLC_driver.requestQueue.size());
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 4, 1}));
    EXPECT_EQ(1, PLC_driver.failed);
}

TEST_F(ReplyProcessing, LoginReplyOfFixedLengthThatIsNoFrameGives71)
{
    RW_VAR var;
    handshake_data(&var);
    PLC_driver.requestQueue.first().replyLength = 206;
    EXPECT_EQ(71, once(identificationReply().left(100)));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

// ---- Local and remote data ----

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

// ---- Good reply ----

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

// ---- Settling writes ----

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

// ---- Settling one-shot reads ----

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

// ---- Settling cyclic reads ----

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

// ---- Retry and final failure ----

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

// ---- Callbacks ----

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

// ---- Bad replies ----

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
} // namespace test
} // namespace plc
