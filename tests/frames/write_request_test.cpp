#include "frames/write_request.h"

#include <climits>

#include "driver/image_access.h"
#include "driver/request_building.h"
#include "support/driver_fixture.h"
#include "support/record_checks.h"

namespace plc::test {
namespace {

RW_VAR writeEntry(int areaIndex, int address, int length, const QByteArray& data, int dataType = 3)
{
    RW_VAR var = makeVar(areaIndex, address, length, dataType);
    var.data = data;
    return var;
}

class WriteRequest : public DriverTest {
protected:
    static void fillBatch(std::initializer_list<RW_VAR> entries)
    {
        std::copy(entries.begin(), entries.end(), PLC_driver.batch);
        PLC_driver.batchCount = int(entries.size());
    }

    static QByteArray build()
    {
        RW_VAR var;
        WriteAnalog(&var);
        return PLC_driver.requestQueue.isEmpty() ? QByteArray()
                                                 : PLC_driver.requestQueue.last().frame;
    }

    static int imageByte(quint32 areaIndex, quint32 address)
    {
        const quint64 key = DataImage::key(areaIndex, address);
        return PLC_driver.localImage.contains(key) ? PLC_driver.localImage.value(key) : -1;
    }
};

TEST_F(WriteRequest, OneEntry)
{
    PLC_driver.plcInfo1 = 0x12;
    PLC_driver.plcInfo2 = 0x34;
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    EXPECT_EQ(hex("BB BB 00 00 00 16 3C 00 00 00 00 01"
                  "00 02 00 00 00 10 00 00 00 02 AB CD"
                  "00 01 12 34"),
              build());
    EXPECT_EQ(28, PLC_driver.requestQueue.first().frameLength);
}

TEST_F(WriteRequest, EntriesFollowInTheOrderOfTheBatch)
{
    PLC_driver.plcInfo1 = 0xFF;
    PLC_driver.plcInfo2 = 0x80;
    fillBatch({writeEntry(0x0203, 0x04050607, 1, hex("11")), writeEntry(1, 0x20, 0, QByteArray()),
               writeEntry(2, 0x10, 3, hex("22 33 44"))});
    EXPECT_EQ(hex("BB BB 00 00 00 2C 3C 00 00 00 00 03"
                  "02 03 04 05 06 07 00 00 00 01 11"
                  "00 01 00 00 00 20 00 00 00 00"
                  "00 02 00 00 00 10 00 00 00 03 22 33 44"
                  "00 01 FF 80"),
              build());
}

TEST_F(WriteRequest, EmptyBatchStillGivesAWholeFrame)
{
    PLC_driver.plcInfo1 = 0x12;
    PLC_driver.plcInfo2 = 0x34;
    fillBatch({});
    EXPECT_EQ(hex("BB BB 00 00 00 0A 3C 00 00 00 00 00 00 01 12 34"), build());
}

TEST_F(WriteRequest, EmptyBatchIsNoBitWriteWhateverTheLastBatchLeft)
{
    PLC_driver.batch[0].dataType = 13;
    PLC_driver.batchCount = 0;
    EXPECT_EQ(hex("BB BB 00 00 00 0A 3C 00 00 00 00 00 00 01 00 00"), build());
}

TEST_F(WriteRequest, BitInFirstEntryZeroesItsLengthFieldAndKeepsTheBytes)
{
    PLC_driver.plcInfo1 = 0x12;
    PLC_driver.plcInfo2 = 0x34;
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"), 13)});
    EXPECT_EQ(hex("BB BB 00 00 00 16 3C 00 00 00 00 01"
                  "00 02 00 00 00 10 00 00 00 00 AB CD"
                  "00 01 12 34"),
              build());
}

TEST_F(WriteRequest, BitInFirstEntryZeroesEveryLengthField)
{
    fillBatch({writeEntry(2, 0x10, 1, hex("01"), 13), writeEntry(2, 0x20, 2, hex("AB CD"), 3),
               writeEntry(2, 0x30, 1, hex("00"), 13)});
    EXPECT_EQ(hex("BB BB 00 00 00 2C 3C 00 00 00 00 03"
                  "00 02 00 00 00 10 00 00 00 00 01"
                  "00 02 00 00 00 20 00 00 00 00 AB CD"
                  "00 02 00 00 00 30 00 00 00 00 00"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, BitBehindAWordSendsTheRealLengthOfBoth)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"), 3), writeEntry(2, 0x20, 1, hex("01"), 13)});
    EXPECT_EQ(hex("BB BB 00 00 00 21 3C 00 00 00 00 02"
                  "00 02 00 00 00 10 00 00 00 02 AB CD"
                  "00 02 00 00 00 20 00 00 00 01 01"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, OnlyCode13IsABit)
{
    for (int dataType : {0, 1, 12, 14, 16, 17, -13, 0x10D}) {
        fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"), dataType)});
        EXPECT_EQ(hex("00 00 00 02"), build().mid(18, 4)) << "type code " << dataType;
    }
}

TEST_F(WriteRequest, DataBeyondTheLengthIsNotSent)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD EF 01"))});
    EXPECT_EQ(hex("BB BB 00 00 00 16 3C 00 00 00 00 01"
                  "00 02 00 00 00 10 00 00 00 02 AB CD"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, ShortDataIsPaddedWithZeros)
{
    fillBatch({writeEntry(2, 0x10, 4, hex("AB CD")), writeEntry(2, 0x20, 2, QByteArray()),
               writeEntry(2, 0x30, 1, hex("77"))});
    EXPECT_EQ(hex("BB BB 00 00 00 2F 3C 00 00 00 00 03"
                  "00 02 00 00 00 10 00 00 00 04 AB CD 00 00"
                  "00 02 00 00 00 20 00 00 00 02 00 00"
                  "00 02 00 00 00 30 00 00 00 01 77"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, ExactlySizedDataIsNotReadBeyond)
{
    ExactBytes data(hex("AB"));
    fillBatch({writeEntry(2, 0x10, 4, *data.get())});
    EXPECT_EQ(hex("AB 00 00 00"), build().mid(22, 4));
}

TEST_F(WriteRequest, NegativeLengthTakesTenBytesAndCarriesTheNumber)
{
    fillBatch({writeEntry(2, 0x10, -1, hex("AB CD")), writeEntry(2, 0x20, INT_MIN, hex("EF")),
               writeEntry(2, 0x30, 1, hex("77"))});
    EXPECT_EQ(hex("BB BB 00 00 00 29 3C 00 00 00 00 03"
                  "00 02 00 00 00 10 FF FF FF FF"
                  "00 02 00 00 00 20 80 00 00 00"
                  "00 02 00 00 00 30 00 00 00 01 77"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, LengthTooLargeForAnyFrameCarriesTheNumberAndNoValue)
{
    fillBatch({writeEntry(2, 0x10, INT_MAX, hex("AB CD")), writeEntry(2, 0x20, INT_MAX, hex("EF")),
               writeEntry(2, 0x30, 1, hex("77"))});
    EXPECT_EQ(hex("BB BB 00 00 00 29 3C 00 00 00 00 03"
                  "00 02 00 00 00 10 7F FF FF FF"
                  "00 02 00 00 00 20 7F FF FF FF"
                  "00 02 00 00 00 30 00 00 00 01 77"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, LargestValueIsCarriedAndMirrored)
{
    RW_VAR entry = writeEntry(2, 0, PLC_LARGEST_VALUE, QByteArray(PLC_LARGEST_VALUE, 'x'));
    fillBatch({entry, writeEntry(2, 0x20, 1, hex("77"))});
    WriteRegister(&entry);
    const QByteArray frame = PLC_driver.requestQueue.last().frame;
    // 12 bytes in front, two entries of 10, the value, 4 bytes behind; nothing of the follower.
    ASSERT_EQ(12 + 20 + PLC_LARGEST_VALUE + 4, int(frame.size()));
    EXPECT_EQ(hex("00 02 00 00 00 00 01 00 00 00 78"), frame.mid(12, 11));
    EXPECT_EQ(hex("78 00 02 00 00 00 20 00 00 00 01 00 01 00 00"), frame.right(15));
    EXPECT_EQ(PLC_LARGEST_VALUE, PLC_driver.localImage.size());
    EXPECT_EQ('x', imageByte(2, PLC_LARGEST_VALUE - 1));
}

TEST_F(WriteRequest, ValueThatIsNotCarriedIsNotMirrored)
{
    for (int dataType : {3, 13}) {
        PLC_driver.localImage.clear();
        PLC_driver.localImage.insert(DataImage::key(2, 0x10), 9);
        RW_VAR entry = writeEntry(2, 0x10, PLC_LARGEST_VALUE + 1, hex("AB CD"), dataType);
        fillBatch({entry});
        WriteRegister(&entry);
        EXPECT_EQ(26, PLC_driver.requestQueue.last().frameLength) << dataType;
        EXPECT_EQ(1, PLC_driver.localImage.size()) << dataType;
        EXPECT_EQ(9, imageByte(2, 0x10)) << dataType;
    }
}

TEST_F(WriteRequest, NegativeLengthInABitWriteCarriesZero)
{
    fillBatch({writeEntry(2, 0x10, -1, hex("AB CD"), 13)});
    EXPECT_EQ(hex("BB BB 00 00 00 14 3C 00 00 00 00 01"
                  "00 02 00 00 00 10 00 00 00 00"
                  "00 01 00 00"),
              build());
}

TEST_F(WriteRequest, AreaIndexSendsItsLowSixteenBits)
{
    fillBatch({writeEntry(0x12345, -1, 1, hex("77"))});
    EXPECT_EQ(hex("23 45 FF FF FF FF 00 00 00 01"), build().mid(12, 10));
}

TEST_F(WriteRequest, PayloadLengthHasTwoBytes)
{
    fillBatch({writeEntry(2, 0x10, 500, QByteArray(500, 'x'))});
    const QByteArray frame = build();
    EXPECT_EQ(526, frame.size());
    EXPECT_EQ(hex("00 00 02 08"), frame.mid(2, 4)); // 520
}

TEST_F(WriteRequest, PayloadLengthIsReducedToItsLowSixteenBits)
{
    fillBatch({writeEntry(2, 0x10, 65536, QByteArray(65536, 'x'))});
    const QByteArray frame = build();
    EXPECT_EQ(65562, frame.size());
    EXPECT_EQ(hex("00 00 00 14"), frame.mid(2, 4)); // 65556 - 65536
    EXPECT_EQ(hex("00 01 00 00"), frame.mid(18, 4));
    EXPECT_EQ(hex("78 78 00 01 00 00"), frame.right(6));
    EXPECT_EQ(65562, PLC_driver.requestQueue.first().frameLength);
}

TEST_F(WriteRequest, FullBatchAndCounterOutsideIt)
{
    for (int i = 0; i < 150; ++i)
        PLC_driver.batch[i] = writeEntry(1, i, 1, hex("55"));
    for (int count : {150, 151, 1000, INT_MAX}) {
        PLC_driver.batchCount = count;
        const QByteArray frame = build();
        EXPECT_EQ(16 + 150 * 11, frame.size()) << "batchCount " << count;
        EXPECT_EQ(hex("00 00 00 96"), frame.mid(8, 4)) << "batchCount " << count;
        EXPECT_EQ(hex("00 01 00 00 00 95 00 00 00 01 55"), frame.mid(12 + 149 * 11, 11));
    }
    for (int count : {-1, INT_MIN}) {
        PLC_driver.batchCount = count;
        EXPECT_EQ(hex("BB BB 00 00 00 0A 3C 00 00 00 00 00 00 01 00 00"), build())
            << "batchCount " << count;
    }
}

TEST_F(WriteRequest, IsQueuedAsARequestForAReplyOfVariableLength)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    build();
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    const Protocol& request = PLC_driver.requestQueue.first();
    EXPECT_EQ(-1, request.replyLength);
    EXPECT_EQ(0, request.dataOffset);
    EXPECT_EQ(0, request.minReplyLength);
    EXPECT_EQ(0, request.extra1);
    EXPECT_EQ(0, request.extra2);
    EXPECT_EQ(0, request.extra3);
}

TEST_F(WriteRequest, CarriesACopyOfItsArgument)
{
    RW_VAR var = fullRecord();
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    WriteAnalog(&var);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    expectEqualRecords(fullRecord(), PLC_driver.requestQueue.first().var);
}

TEST_F(WriteRequest, IsAppendedAtTheEndOfTheQueue)
{
    Protocol waiting;
    waiting.frame = hex("01");
    queueRequest(waiting);
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    build();
    ASSERT_EQ(2, PLC_driver.requestQueue.size());
    EXPECT_EQ(hex("01"), PLC_driver.requestQueue.at(0).frame);
    EXPECT_EQ(28, PLC_driver.requestQueue.at(1).frameLength);
}

TEST_F(WriteRequest, StartsATransactionOfOneFrame)
{
    settings.frameCount = 7;
    settings.frameIndex = 5;
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    build();
    EXPECT_EQ(1, settings.frameCount);
    EXPECT_EQ(0, settings.frameIndex);
}

TEST_F(WriteRequest, BuilderAloneLeavesTheImageAsItIs)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    WriteAnalog(&PLC_driver.batch[0]);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_EQ(1, PLC_driver.batchCount);
}

TEST_F(WriteRequest, WriteRegisterQueuesAndMirrorsTheVariable)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    RW_VAR var = PLC_driver.batch[0];
    WriteRegister(&var);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(hex("BB BB 00 00 00 16 3C 00 00 00 00 01"
                  "00 02 00 00 00 10 00 00 00 02 AB CD 00 01 00 00"),
              PLC_driver.requestQueue.first().frame);
    EXPECT_EQ(2, PLC_driver.localImage.size());
    EXPECT_EQ(0xAB, imageByte(2, 0x10));
    EXPECT_EQ(0xCD, imageByte(2, 0x11));
}

TEST_F(WriteRequest, WriteRegisterMirrorsItsArgumentAndNoFollower)
{
    fillBatch({writeEntry(2, 0x10, 1, hex("11")), writeEntry(2, 0x20, 1, hex("22"))});
    RW_VAR var = PLC_driver.batch[0];
    WriteRegister(&var);
    EXPECT_EQ(1, PLC_driver.localImage.size());
    EXPECT_EQ(0x11, imageByte(2, 0x10));
    EXPECT_EQ(-1, imageByte(2, 0x20));
}

TEST_F(WriteRequest, WriteRegisterMirrorsABitIntoItsWord)
{
    // Bit 17 is bit 1 of word 1, whose low byte lies at address 2.
    fillBatch({writeEntry(2, 17, 1, hex("01"), 13)});
    RW_VAR var = PLC_driver.batch[0];
    WriteRegister(&var);
    EXPECT_EQ(0x00, imageByte(2, 1));
    EXPECT_EQ(0x02, imageByte(2, 2));
}

TEST_F(WriteRequest, AfterAFinalFailureNothingIsMirrored)
{
    for (int failed : {1, 2, 255}) {
        PLC_driver.requestQueue.clear();
        PLC_driver.failed = quint8(failed);
        fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
        RW_VAR var = PLC_driver.batch[0];
        WriteRegister(&var);
        EXPECT_EQ(1, PLC_driver.requestQueue.size()) << "failed " << failed;
        EXPECT_TRUE(PLC_driver.localImage.isEmpty()) << "failed " << failed;
    }
}

TEST_F(WriteRequest, ShortDataIsMirroredPaddedWithZeros)
{
    PLC_driver.localImage.insert(DataImage::key(2, 0x13), 0x99);
    fillBatch({writeEntry(2, 0x10, 4, hex("AB CD"))});
    RW_VAR var = PLC_driver.batch[0];
    WriteRegister(&var);
    EXPECT_EQ(0xCD, imageByte(2, 0x11));
    EXPECT_EQ(0x00, imageByte(2, 0x12));
    EXPECT_EQ(0x00, imageByte(2, 0x13));
    EXPECT_EQ(-1, imageByte(2, 0x14));
}

TEST_F(WriteRequest, RemoteWriteDoesNothing)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    settings.frameCount = 7;
    RW_VAR var = PLC_driver.batch[0];
    Remote_WriteVar(&var);
    Remote_WriteVar(nullptr);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_EQ(7, settings.frameCount);
}

TEST_F(WriteRequest, NullVariableQueuesAndMirrorsNothing)
{
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    WriteAnalog(nullptr);
    WriteRegister(nullptr);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_F(WriteRequest, WithoutSettingsNothingCrashes)
{
    SetComInfo(nullptr);
    fillBatch({writeEntry(2, 0x10, 2, hex("AB CD"))});
    RW_VAR var = PLC_driver.batch[0];
    WriteRegister(&var);
    EXPECT_EQ(1, PLC_driver.batchCount);
}

} // namespace
} // namespace plc::test
