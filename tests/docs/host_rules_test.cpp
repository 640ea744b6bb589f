// What docs/host-guide.md tells hosts to mind, rule by rule.

#include "frames/checksums.h"
#include "support/driver_fixture.h"

using plc::test::deliver;
using plc::test::DriverTest;
using plc::test::hex;
using plc::test::logIn;
using plc::test::makeVar;
using plc::test::makeWrite;
using plc::test::readReply;
using plc::test::refusedReply;
using plc::test::ResultCall;
using plc::test::resultCalls;
using plc::test::writeReply;

namespace {

class HostRules : public DriverTest {
protected:
    HostRules() { logIn(); }

    void submit(RW_VAR write) { AddListWriteVar(&write, 0); }

    int entriesOfNextRequest()
    {
        const QByteArray frame = ComCommunication()->frame;
        return frame.at(11);
    }
};

QByteArray word(int value)
{
    QByteArray bytes(2, '\0');
    bytes[0] = char(value >> 8);
    bytes[1] = char(value & 0xFF);
    return bytes;
}

} // namespace

TEST_F(HostRules, GoodReplyOfAnotherSizeToARepeatedRequestIsAFailure)
{
    settings.retryLimit = 1;
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    ComCommunication();
    EXPECT_EQ(deliver(refusedReply())->result, 0);
    EXPECT_EQ(ComCommunication()->replyLength, 8);
    EXPECT_EQ(deliver(readReply({word(1)}))->result, 71);
}

TEST_F(HostRules, IncompleteReplyToARepeatedRequestIsAFailure)
{
    settings.retryLimit = 1;
    submit(makeWrite(3, 10, word(1), 1, 1));
    ComCommunication();
    deliver(refusedReply());
    EXPECT_EQ(deliver(writeReply().left(5))->result, 71);
}

TEST_F(HostRules, LoginIsForgottenOnlyWithAnAbandonedTransaction)
{
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    const QByteArray readFrame = ComCommunication()->frame;
    deliver(readReply({word(1)}));
    // A connection lost here is not known to the driver.
    EXPECT_EQ(ComCommunication()->frame, readFrame);
    EXPECT_EQ(deliver(QByteArray())->result, 41);
    EXPECT_EQ(ComCommunication()->frame.at(6), 0x01) << "identification";
}

TEST_F(HostRules, OneCallOfDataComNeverConsumesAFreshReply)
{
    submit(makeWrite(3, 10, word(1), 1, 1));
    ComCommunication();
    QByteArray reply = writeReply();
    EXPECT_EQ(DataCom(&reply, int(reply.size()))->result, 1);
    EXPECT_EQ(PLC_driver.writeList.size(), 1);
    EXPECT_EQ(DataCom(&reply, int(reply.size()))->result, 1);
    EXPECT_EQ(PLC_driver.writeList.size(), 0);
}

TEST_F(HostRules, CallbackNamesTheHeadOfABatchOnly)
{
    submit(makeWrite(3, 10, word(1), 1, 100));
    submit(makeWrite(3, 12, word(2), 1, 200));
    EXPECT_EQ(entriesOfNextRequest(), 2);
    deliver(writeReply());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ::testing::ElementsAre(ResultCall{77, 1, 100, 1}));
}

TEST_F(HostRules, ReplacementOfAFollowerUnderWayIsNeverSent)
{
    submit(makeWrite(3, 10, word(1), 1, 1));
    submit(makeWrite(3, 12, word(2), 1, 2));
    ComCommunication();
    submit(makeWrite(3, 12, word(3), 1, 3));
    deliver(writeReply());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(ComCommunication(), nullptr);
}

TEST_F(HostRules, WriteReplacesOneOfTheSameAddressInAnotherArea)
{
    submit(makeWrite(9, 0, word(0), 1, 1));
    submit(makeWrite(3, 10, word(1), 1, 2));
    submit(makeWrite(4, 10, word(2), 1, 3));
    ASSERT_EQ(PLC_driver.writeList.size(), 2);
    EXPECT_EQ(PLC_driver.writeList.at(1).areaIndex, 4);
}

TEST_F(HostRules, BitReplacesAByteWhoseAddressEqualsItsNumber)
{
    submit(makeWrite(9, 0, word(0), 1, 1));
    submit(makeWrite(3, 17, hex("55"), 1, 2));
    RW_VAR bit = makeWrite(3, 17, hex("01"), 1, 3);
    bit.dataType = 13;
    submit(bit);
    ASSERT_EQ(PLC_driver.writeList.size(), 2);
    EXPECT_EQ(PLC_driver.writeList.at(1).dataType, 13);
}

TEST_F(HostRules, FailuresAddUpAcrossGoodReplies)
{
    settings.retryLimit = 1;
    for (int i = 0; i < 2; ++i) {
        submit(makeWrite(3, 10, word(i), 1, i));
        ComCommunication();
        const int refused = deliver(refusedReply())->result;
        EXPECT_EQ(refused, i == 0 ? 0 : 12);
        if (i == 0) {
            ComCommunication();
            EXPECT_EQ(deliver(writeReply())->result, 1);
            EXPECT_EQ(settings.retryCount, 1);
        }
    }
}

TEST_F(HostRules, GivingUpTransactionsEmptiesTheWriteList)
{
    for (int i = 0; i < 3; ++i)
        submit(makeWrite(3, 1000 * i, QByteArray(900, '\0'), 1, i));
    QByteArray nothing;
    int batches = 0;
    while (ComCommunication() && batches < 10) {
        ++batches;
        while (DataCom(&nothing, 0)->result == 0) {
        }
    }
    EXPECT_EQ(batches, 3);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls,
                ::testing::ElementsAre(ResultCall{77, 1, 0, 2}, ResultCall{77, 1, 1, 2},
                                       ResultCall{77, 1, 2, 2}));
}

TEST_F(HostRules, OnlyTheHeadOfAWriteBatchIsShownAtOnce)
{
    submit(makeWrite(3, 10, word(0x1122), 1, 1));
    submit(makeWrite(3, 12, word(0x3344), 1, 2));
    ComCommunication();
    deliver(writeReply());
    EXPECT_TRUE(PLC_driver.localImage.contains(plc::DataImage::key(3, 10)));
    EXPECT_FALSE(PLC_driver.localImage.contains(plc::DataImage::key(3, 12)));
}

TEST_F(HostRules, AcknowledgementOfAWriteWithoutAux2IsStoredAsData)
{
    RW_VAR write = makeWrite(3, 10, word(0x1122), 1, 1);
    write.aux2 = 0;
    submit(write);
    ComCommunication();
    deliver(writeReply());
    EXPECT_EQ(PLC_driver.localImage.value(plc::DataImage::key(3, 10)), 0xBB);
}

TEST_F(HostRules, ReplyToAnotherDeviceIsRemoteAndNotStored)
{
    RW_VAR read = makeVar(3, 10, 2);
    read.deviceNo = settings.localDeviceNo + 1;
    AddListReadVar(&read);
    ComCommunication();
    EXPECT_EQ(deliver(readReply({word(7)}))->result, 100);
    EXPECT_FALSE(PLC_driver.localImage.contains(plc::DataImage::key(3, 10)));
}

TEST_F(HostRules, RefusedLoginCountsNoRetry)
{
    PLC_driver.loggedIn = 0;
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    for (int i = 0; i < 5; ++i) {
        ComCommunication();
        EXPECT_EQ(deliver(refusedReply())->result, 201);
    }
    EXPECT_EQ(settings.retryCount, 0);
}

TEST_F(HostRules, WritesOfASwitchedOffStationVanishWithoutACallback)
{
    RW_VAR write = makeWrite(3, 10, word(1), 1, 1);
    write.station = 5;
    submit(write);
    EnCommStation(5, 0);
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(resultCalls.empty());
}

TEST_F(HostRules, NullAfterFiveWriteBatchesDoesNotMeanThatNothingWaits)
{
    for (int i = 0; i < 6; ++i)
        submit(makeWrite(3, 1000 * i, QByteArray(900, '\0'), 1, i));
    for (int i = 0; i < 5; ++i) {
        ASSERT_NE(ComCommunication(), nullptr);
        deliver(writeReply());
    }
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_NE(ComCommunication(), nullptr);
}

TEST_F(HostRules, GoodReadReplyWithTooFewBytesIsAccepted)
{
    RW_VAR first = makeVar(3, 10, 2);
    RW_VAR second = makeVar(3, 20, 2);
    AddListReadVar(&first);
    AddListReadVar(&second);
    ComCommunication();
    EXPECT_EQ(deliver(readReply({word(7)}))->result, 1);
    EXPECT_TRUE(PLC_driver.localImage.contains(plc::DataImage::key(3, 11)));
    EXPECT_FALSE(PLC_driver.localImage.contains(plc::DataImage::key(3, 20)));
}

TEST_F(HostRules, ScanDoneCountsWrites)
{
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    settings.scanDone = 0;
    for (int i = 0; i < 2; ++i) {
        submit(makeWrite(3, 20, word(i), 1, i));
        ComCommunication();
        deliver(writeReply());
    }
    EXPECT_EQ(settings.scanDone, 1);
}

TEST(StandAloneHelpers, GiveTheDocumentedResults)
{
    unsigned char digits[] = "123456789";
    EXPECT_EQ(CalCRC(digits, 9), 0x31C3);
    unsigned char zero = 0, one = 1;
    EXPECT_EQ(CalLRC(&zero, 1), 256);
    EXPECT_EQ(CalLRC(&one, 1), 255);
    EXPECT_EQ(CalXOR(&one, 0), 1);
}
