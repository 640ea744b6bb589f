// What docs/host-guide.md tells hosts to mind, rule by rule.

#include <limits>

#include "docs/examples/entry_points.h"
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

    /// Addresses of the entries of a read request.
    static std::vector<int> addressesIn(const QByteArray& frame)
    {
        std::vector<int> addresses;
        for (int i = 0; i < frame.at(11); ++i)
            addresses.push_back(uchar(frame.at(16 + 10 * i)) << 8 | uchar(frame.at(17 + 10 * i)));
        return addresses;
    }

    void readCyclically(int address, int length)
    {
        RW_VAR read = makeVar(3, address, length);
        read.aux1 = -1;
        AddListReadVar(&read);
    }

    void cancelTransaction()
    {
        settings.retryCount = settings.retryLimit;
        QByteArray nothing;
        EXPECT_NE(DataCom(&nothing, 0)->result, 0);
    }

    /// Bytes of MAIN.name, a text at address 300 of area 3.
    static QByteArray text(int registers)
    {
        QByteArray value;
        GetRegisterData(QStringLiteral("MAIN.name"), 0, 0, 0, &value, registers);
        return value;
    }

    void writeText(const QByteArray& bytes, int registers, int tag = 5)
    {
        QByteArray value = bytes;
        SetRegisterData(QStringLiteral("MAIN.name"), 0, QString(), 0, &value, registers, 1, tag);
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
    EXPECT_EQ(0, deliver(refusedReply())->result);
    EXPECT_EQ(8, ComCommunication()->replyLength);
    EXPECT_EQ(71, deliver(readReply({word(1)}))->result);
}

TEST_F(HostRules, IncompleteReplyToARepeatedRequestIsAFailure)
{
    settings.retryLimit = 1;
    submit(makeWrite(3, 10, word(1), 1, 1));
    ComCommunication();
    deliver(refusedReply());
    EXPECT_EQ(71, deliver(writeReply().left(5))->result);
}

TEST_F(HostRules, LoginIsForgottenOnlyWithAnAbandonedTransaction)
{
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    const QByteArray readFrame = ComCommunication()->frame;
    deliver(readReply({word(1)}));
    // A connection lost here is not known to the driver.
    EXPECT_EQ(ComCommunication()->frame, readFrame);
    EXPECT_EQ(41, deliver(QByteArray())->result);
    EXPECT_EQ(0x01, ComCommunication()->frame.at(6)) << "identification";
}

TEST_F(HostRules, OneCallOfDataComNeverConsumesAFreshReply)
{
    submit(makeWrite(3, 10, word(1), 1, 1));
    ComCommunication();
    QByteArray reply = writeReply();
    EXPECT_EQ(1, DataCom(&reply, int(reply.size()))->result);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(1, DataCom(&reply, int(reply.size()))->result);
    EXPECT_EQ(0, PLC_driver.writeList.size());
}

TEST_F(HostRules, CallbackNamesTheHeadOfABatchOnly)
{
    submit(makeWrite(3, 10, word(1), 1, 100));
    submit(makeWrite(3, 12, word(2), 1, 200));
    EXPECT_EQ(2, entriesOfNextRequest());
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
    EXPECT_EQ(nullptr, ComCommunication());
}

TEST_F(HostRules, WriteReplacesOneOfTheSameAddressInAnotherArea)
{
    submit(makeWrite(9, 0, word(0), 1, 1));
    submit(makeWrite(3, 10, word(1), 1, 2));
    submit(makeWrite(4, 10, word(2), 1, 3));
    ASSERT_EQ(2, PLC_driver.writeList.size());
    EXPECT_EQ(4, PLC_driver.writeList.at(1).areaIndex);
}

TEST_F(HostRules, BitReplacesAByteWhoseAddressEqualsItsNumber)
{
    submit(makeWrite(9, 0, word(0), 1, 1));
    submit(makeWrite(3, 17, hex("55"), 1, 2));
    RW_VAR bit = makeWrite(3, 17, hex("01"), 1, 3);
    bit.dataType = 13;
    submit(bit);
    ASSERT_EQ(2, PLC_driver.writeList.size());
    EXPECT_EQ(13, PLC_driver.writeList.at(1).dataType);
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
            EXPECT_EQ(1, deliver(writeReply())->result);
            EXPECT_EQ(1, settings.retryCount);
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
    EXPECT_EQ(3, batches);
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
    EXPECT_EQ(0xBB, PLC_driver.localImage.value(plc::DataImage::key(3, 10)));
}

TEST_F(HostRules, ReplyToAnotherDeviceIsRemoteAndNotStored)
{
    RW_VAR read = makeVar(3, 10, 2);
    read.deviceNo = settings.localDeviceNo + 1;
    AddListReadVar(&read);
    ComCommunication();
    EXPECT_EQ(100, deliver(readReply({word(7)}))->result);
    EXPECT_FALSE(PLC_driver.localImage.contains(plc::DataImage::key(3, 10)));
}

TEST_F(HostRules, RefusedLoginCountsNoRetry)
{
    PLC_driver.loggedIn = 0;
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    for (int i = 0; i < 5; ++i) {
        ComCommunication();
        EXPECT_EQ(201, deliver(refusedReply())->result);
    }
    EXPECT_EQ(0, settings.retryCount);
}

TEST_F(HostRules, WritesOfASwitchedOffStationVanishWithoutACallback)
{
    RW_VAR write = makeWrite(3, 10, word(1), 1, 1);
    write.station = 5;
    submit(write);
    EnCommStation(5, 0);
    EXPECT_EQ(nullptr, ComCommunication());
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
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_NE(ComCommunication(), nullptr);
}

TEST_F(HostRules, GoodReadReplyWithTooFewBytesIsAccepted)
{
    RW_VAR first = makeVar(3, 10, 2);
    RW_VAR second = makeVar(3, 20, 2);
    AddListReadVar(&first);
    AddListReadVar(&second);
    ComCommunication();
    EXPECT_EQ(1, deliver(readReply({word(7)}))->result);
    EXPECT_TRUE(PLC_driver.localImage.contains(plc::DataImage::key(3, 11)));
    EXPECT_FALSE(PLC_driver.localImage.contains(plc::DataImage::key(3, 20)));
}

TEST_F(HostRules, GoodReplyWithoutDataEndsARefusedReadAndKeepsTheLogin)
{
    readCyclically(10, 2);
    ComCommunication();
    EXPECT_EQ(1, deliver(readReply({word(0x0708)}))->result);
    readCyclically(20, 2);
    ComCommunication();
    EXPECT_EQ(1, deliver(hex("BB BB 00 00 00 02 00 00"))->result);
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_TRUE(PLC_driver.localImage.contains(plc::DataImage::key(3, 10)));
    EXPECT_FALSE(PLC_driver.localImage.contains(plc::DataImage::key(3, 20)));
    EXPECT_EQ((std::vector<int>{10, 20}), addressesIn(ComCommunication()->frame));
}

TEST_F(HostRules, OneShotReadThatEndsWithoutDataIsReportedAsDone)
{
    RW_VAR read = makeVar(3, 20, 2);
    read.category = 2;
    read.aux1 = 100;
    AddListOnceReadVar(&read, 1);
    ComCommunication();
    EXPECT_EQ(1, deliver(hex("BB BB 00 00 00 02 00 00"))->result);
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_THAT(resultCalls, ::testing::ElementsAre(ResultCall{77, 2, 100, 1}));
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
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(HostRules, AbandonedBatchDropsAPieceOfAFollowerAndTheRestIsSentAndReportedAsDone)
{
    // The head takes 12 of the budget of 999, the first piece 510, the second would take 610.
    submit(makeWrite(3, 10, word(1), 1, 100));
    submit(makeWrite(3, 1000, QByteArray(500, 'a'), 1, 200));
    submit(makeWrite(3, 1500, QByteArray(600, 'b'), 1, 200));
    ASSERT_EQ(2, entriesOfNextRequest());
    EXPECT_EQ(12, deliver(refusedReply())->result);
    EXPECT_THAT(resultCalls, ::testing::ElementsAre(ResultCall{77, 1, 100, 2}));

    ASSERT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(1500, PLC_driver.writeList.at(0).address);
    logIn();
    EXPECT_EQ(1, entriesOfNextRequest());
    deliver(writeReply());
    EXPECT_EQ(resultCalls.back(), (ResultCall{77, 1, 200, 1})) << "without its beginning";
}

TEST_F(HostRules, AbandonedBatchTakesTheFurtherPiecesOfItsHeadAlong)
{
    submit(makeWrite(3, 1000, QByteArray(900, 'a'), 1, 100));
    submit(makeWrite(3, 1900, QByteArray(900, 'b'), 1, 100));
    submit(makeWrite(3, 10, word(1), 1, 200));
    ASSERT_EQ(1, entriesOfNextRequest());
    deliver(refusedReply());
    ASSERT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(200, PLC_driver.writeList.at(0).aux1);
}

TEST_F(HostRules, AbandonedCyclicBatchLosesNothing)
{
    readCyclically(10, 2);
    readCyclically(20, 2);
    ComCommunication();
    deliver(refusedReply());
    EXPECT_EQ(2, PLC_driver.readList.size());
}

TEST_F(HostRules, BitRecordOfSeveralBitsStatesNoLengthForItsBytes)
{
    RW_VAR bits = makeWrite(5, 17, hex("01 00 01"), 1, 1);
    bits.dataType = 13;
    submit(bits);
    EXPECT_EQ(hex("0005 00000011 00000000 010001"), ComCommunication()->frame.mid(12, 13));
}

TEST_F(HostRules, StationOfAMergedEntryIsThatOfItsFirstVariable)
{
    settings.multiStation = 1;
    example::handOverSymbols();
    QList<HostVarItem> items;
    for (int station : {1, 2}) { // MAIN.table[0,1] and [0,2], at 100 and 102 of area 3
        HostVarItem item;
        item.station = quint8(station);
        item.label = QStringLiteral("MAIN.table[0,%1]").arg(station);
        item.count = 1;
        items << item;
    }
    ASSERT_EQ(1, ReCreatReadVarList(&items));
    EnCommStation(2, 0);
    EXPECT_EQ(hex("0003 00000064 00000004"), ComCommunication()->frame.mid(12, 10))
        << "the variable of the switched-off station is read";
    deliver(readReply({hex("00 01 00 02")}));
    EnCommStation(-1, 1);
    EnCommStation(1, 0);
    EXPECT_EQ(nullptr, ComCommunication()) << "the variable of station 2 is not";
}

TEST_F(HostRules, StationsShareAnAddress)
{
    settings.multiStation = 1;
    RW_VAR ofStation1 = makeVar(3, 10, 2), ofStation2 = makeVar(3, 10, 2);
    ofStation1.station = 1;
    ofStation2.station = 2;
    AddListReadVar(&ofStation1);
    AddListReadVar(&ofStation2);
    EXPECT_EQ(ComCommunication()->frame.mid(12, 20), hex("0003 0000000A 00000002").repeated(2));
    deliver(readReply({word(1), word(2)}));
    EXPECT_EQ(2, PLC_driver.localImage.value(plc::DataImage::key(3, 11)));
}

TEST_F(HostRules, TextOfOddSizeIsWrittenWholeByABufferBeyondItsRegisters)
{
    settings.writeMode = 2;
    example::handOverSymbols();
    const QByteArray odd(41, 'x');
    writeText(odd, 20);
    ASSERT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(PLC_driver.writeList.at(0).data, odd);
    ComCommunication();
    deliver(writeReply());
    writeText(odd, 21);
    EXPECT_EQ(PLC_driver.writeList.at(0).data, odd + '\0') << "the neighbour's first byte";
}

TEST_F(HostRules, TextOfOddSizeIsReadOnceWithTheByteBehindIt)
{
    example::handOverSymbols();
    RW_VAR read;
    read.label = QStringLiteral("MAIN.name");
    read.length = 21;
    AddListOnceReadVar(&read, 0);
    EXPECT_EQ(42, PLC_driver.onceReadList.at(0).length);
    EXPECT_EQ(42, text(21).size());
}

TEST_F(HostRules, CallbacksFindTheListsLockedAndTheQueueEmpty)
{
    static bool wouldWaitForEver = false;
    RegistCallBackFuncIntf(
        [](int, int, int, int) {
            const bool isFree = PLC_driver.listMutex.tryLock();
            if (isFree)
                PLC_driver.listMutex.unlock();
            wouldWaitForEver = !isFree && PLC_driver.requestQueue.isEmpty();
        },
        nullptr);
    submit(makeWrite(3, 10, word(1), 1, 1));
    ComCommunication();
    deliver(writeReply());
    EXPECT_TRUE(wouldWaitForEver) << "ComCommunication() takes the lock when the queue is empty";
}

TEST_F(HostRules, NextCyclicRequestIsThereHoweverSoonItIsAskedFor)
{
    readCyclically(10, 2);
    for (int i = 0; i < 3; ++i) {
        ASSERT_NE(ComCommunication(), nullptr);
        EXPECT_EQ(ComCommunication(), ComCommunication()) << "one request at a time";
        deliver(readReply({word(i)}));
    }
}

TEST_F(HostRules, RequestGoesOnFromTheLastEntriesToTheFirst)
{
    // Three entries, of which two fit a request: 401 + 401 <= 999 < 3 * 401.
    for (const int address : {1000, 2000, 3000})
        readCyclically(address, 400);
    const QByteArray block(400, '\0');
    settings.scanDone = 0;
    EXPECT_THAT(addressesIn(ComCommunication()->frame), ::testing::ElementsAre(1000, 2000));
    deliver(readReply({block, block}));
    EXPECT_THAT(addressesIn(ComCommunication()->frame), ::testing::ElementsAre(3000, 1000));
    deliver(readReply({block, block}));
    EXPECT_EQ(0, settings.scanDone) << "though all entries were asked for";
}

TEST_F(HostRules, ValueAcrossACutIsMadeOfTwoReplies)
{
    settings.maxReadBytes = 600;
    example::handOverSymbols();
    HostVarItem item;
    item.label = QStringLiteral("MAIN.name");
    item.count = 1100; // bytes: entries of 600 and 500, which do not fit one request
    QList<HostVarItem> items{item};
    ASSERT_EQ(2, ReCreatReadVarList(&items));
    ComCommunication();
    deliver(readReply({QByteArray(600, 'a')}));
    ComCommunication();
    deliver(readReply({QByteArray(500, 'b')}));
    EXPECT_EQ(text(550), QByteArray(600, 'a') + QByteArray(500, 'b'));
}

TEST_F(HostRules, EntryOfTheHostIsNeitherCutNorMerged)
{
    settings.maxReadBytes = 10;
    readCyclically(100, 998);
    readCyclically(1098, 2);
    EXPECT_EQ(hex("00000001 0003 00000064 000003E6"), ComCommunication()->frame.mid(8, 14));
}

TEST_F(HostRules, MaxReadBytes1ReadsEachVariableWhole)
{
    settings.maxReadBytes = 1;
    example::handOverSymbols();
    ASSERT_EQ(3, example::readCyclically({QStringLiteral("MAIN.table[0,1]"),
                                          QStringLiteral("MAIN.table[0,2]"),
                                          QStringLiteral("MAIN.pumps[2].flow")}));
    EXPECT_EQ(hex("0003 00000064 00000002"
                  "0003 00000066 00000002"
                  "0003 000000D4 00000004"),
              ComCommunication()->frame.mid(12, 30));
}

TEST_F(HostRules, OneShotReadWithAppendIsNotCut)
{
    settings.maxReadBytes = 10;
    RW_VAR read = makeVar(3, 300, 41);
    AddListOnceReadVar(&read, 1);
    EXPECT_EQ(hex("00000001 0003 0000012C 00000029"), ComCommunication()->frame.mid(8, 14));
}

TEST_F(HostRules, WriteOfSeveralPiecesEndsAtTheRefusedOneWhichTheImageShows)
{
    settings.writeMode = 2;
    example::handOverSymbols();
    writeText(QByteArray(2400, 'x'), 1200);
    ASSERT_EQ(3, PLC_driver.writeList.size()) << "1000, 1000 and 400 bytes";
    ComCommunication();
    EXPECT_EQ(1, deliver(writeReply())->result);
    EXPECT_TRUE(resultCalls.empty());
    ComCommunication();
    EXPECT_EQ(12, deliver(refusedReply())->result);
    EXPECT_THAT(resultCalls, ::testing::ElementsAre(ResultCall{77, 1, 5, 2}));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(text(1200), QByteArray(2000, 'x') + QByteArray(400, '\0'))
        << "1000 bytes of it are not in the PLC";
}

TEST_F(HostRules, NinetyBitsFitARequest)
{
    for (int i = 0; i < 100; ++i) {
        RW_VAR bit = makeWrite(5, i, hex("01"), 1, 1);
        bit.dataType = 13;
        submit(bit);
    }
    EXPECT_EQ(90, entriesOfNextRequest()) << "999 / (1 + 10)";
}

TEST_F(HostRules, OneEmptyReplyGivesUpWithRetryCountAtItsLimit)
{
    settings.retryLimit = std::numeric_limits<int>::max();
    submit(makeWrite(3, 10, word(1), 1, 1));
    ComCommunication();
    cancelTransaction();
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(0, settings.retryCount);
}

TEST_F(HostRules, ValuesSymbolsAndStationsOutliveASession)
{
    example::handOverSymbols();
    ASSERT_EQ(1, example::readCyclically({QStringLiteral("MAIN.name")}));
    ComCommunication();
    deliver(readReply({hex("41")}));
    EnCommStation(7, 0);
    ComCommunication();
    cancelTransaction();
    QList<HostVarItem> none;
    EXPECT_EQ(0, ReCreatReadVarList(&none));
    EXPECT_EQ(nullptr, ComCommunication());

    EXPECT_EQ(hex("41 00"), text(1));
    EXPECT_EQ(300, PLCAddressChangeIntef(0, QStringLiteral("MAIN.name")));
    EXPECT_TRUE(PLC_driver.disabledStations.contains(7));
    EXPECT_EQ(1, PLC_driver.failed);
}

TEST_F(HostRules, StateAfterAnAbandonedTransactionEndsWithTheNextGoodReply)
{
    settings.writeMode = 2;
    example::handOverSymbols();
    readCyclically(10, 2);
    ComCommunication();
    cancelTransaction();
    writeText("AB", 1);
    EXPECT_EQ(hex("41 42"), text(1)) << "at once";
    ComCommunication();
    deliver(plc::test::identificationReply());
    deliver(plc::test::fileReply());
    EXPECT_EQ(1, PLC_driver.failed) << "the login does not end it";
    ComCommunication();
    deliver(writeReply());
    EXPECT_EQ(0, PLC_driver.failed);
    writeText("CD", 1);
    EXPECT_EQ(hex("41 42"), text(1)) << "not before its request is built";
}

TEST(StandAloneHelpers, GiveTheDocumentedResults)
{
    unsigned char digits[] = "123456789";
    EXPECT_EQ(0x31C3, CalCRC(digits, 9));
    unsigned char zero = 0, one = 1;
    EXPECT_EQ(256, CalLRC(&zero, 1));
    EXPECT_EQ(255, CalLRC(&one, 1));
    EXPECT_EQ(1, CalXOR(&one, 0));
}
