#include "frames/read_request.h"

#include <climits>

#include "driver/request_building.h"
#include "support/driver_fixture.h"
#include "support/record_checks.h"

namespace plc::test {
namespace {

class ReadRequest : public DriverTest {
protected:
    static void fillBatch(std::initializer_list<RW_VAR> entries)
    {
        std::copy(entries.begin(), entries.end(), PLC_driver.batch);
        PLC_driver.batchCount = int(entries.size());
    }

    static QByteArray build()
    {
        RW_VAR var;
        ReadAnalog(&var);
        return PLC_driver.requestQueue.isEmpty() ? QByteArray()
                                                 : PLC_driver.requestQueue.last().frame;
    }
};

TEST_F(ReadRequest, OneEntry)
{
    PLC_driver.plcInfo1 = 0x12;
    PLC_driver.plcInfo2 = 0x34;
    fillBatch({makeVar(1, 0x20, 4)});
    EXPECT_EQ(hex("BB BB 00 00 00 14 2E 00 00 00 00 01"
                  "00 01 00 00 00 20 00 00 00 04"
                  "00 01 12 34"),
              build());
}

TEST_F(ReadRequest, EntriesFollowInTheOrderOfTheBatch)
{
    PLC_driver.plcInfo1 = 0xFF;
    PLC_driver.plcInfo2 = 0x80;
    fillBatch({makeVar(0x0203, 0x04050607, 0x08090A0B), makeVar(9, 0x10, 2), makeVar(1, 0x8, 1)});
    EXPECT_EQ(hex("BB BB 00 00 00 28 2E 00 00 00 00 03"
                  "02 03 04 05 06 07 08 09 0A 0B"
                  "00 09 00 00 00 10 00 00 00 02"
                  "00 01 00 00 00 08 00 00 00 01"
                  "00 01 FF 80"),
              build());
}

TEST_F(ReadRequest, EmptyBatchStillGivesAWholeFrame)
{
    PLC_driver.plcInfo1 = 0x12;
    PLC_driver.plcInfo2 = 0x34;
    fillBatch({});
    EXPECT_EQ(hex("BB BB 00 00 00 0A 2E 00 00 00 00 00 00 01 12 34"), build());
}

TEST_F(ReadRequest, InfoBytesAreZeroBeforeALogin)
{
    fillBatch({});
    EXPECT_EQ(hex("BB BB 00 00 00 0A 2E 00 00 00 00 00 00 01 00 00"), build());
}

TEST_F(ReadRequest, FullBatchGives1516Bytes)
{
    for (int i = 0; i < 150; ++i)
        PLC_driver.batch[i] = makeVar(1, i, 1);
    PLC_driver.batchCount = 150;
    const QByteArray frame = build();
    ASSERT_EQ(1516, frame.size());
    EXPECT_EQ(hex("BB BB 00 00 05 E6 2E 00 00 00 00 96"), frame.left(12));
    EXPECT_EQ(hex("00 01 00 00 00 00 00 00 00 01"), frame.mid(12, 10));
    EXPECT_EQ(hex("00 01 00 00 00 95 00 00 00 01"), frame.mid(1502, 10));
    EXPECT_EQ(hex("00 01 00 00"), frame.right(4));
    EXPECT_EQ(1516, PLC_driver.requestQueue.last().frameLength);
}

TEST_F(ReadRequest, SizeIsSixteenAndTenForEachEntry)
{
    for (int count : {0, 1, 2, 24, 25, 99, 149, 150}) {
        PLC_driver.batchCount = count;
        const QByteArray frame = build();
        EXPECT_EQ(frame.size(), 10 * count + 16) << count << " entries";
        EXPECT_EQ(PLC_driver.requestQueue.last().frameLength, 10 * count + 16);
    }
}

TEST_F(ReadRequest, PayloadLengthCrossesIntoItsHighByteAt25Entries)
{
    PLC_driver.batchCount = 24;
    EXPECT_EQ(hex("00 00 00 FA"), build().mid(2, 4));
    PLC_driver.batchCount = 25;
    EXPECT_EQ(hex("00 00 01 04"), build().mid(2, 4));
}

TEST_F(ReadRequest, AreaIndexSendsItsLowSixteenBits)
{
    fillBatch(
        {makeVar(0x12345, 0, 1), makeVar(-1, 0, 1), makeVar(0xFFFF, 0, 1), makeVar(INT_MIN, 0, 1)});
    const QByteArray frame = build();
    EXPECT_EQ(hex("23 45"), frame.mid(12, 2));
    EXPECT_EQ(hex("FF FF"), frame.mid(22, 2));
    EXPECT_EQ(hex("FF FF"), frame.mid(32, 2));
    EXPECT_EQ(hex("00 00"), frame.mid(42, 2));
}

TEST_F(ReadRequest, NegativeAddressAndLengthAreSentAsTheirBits)
{
    fillBatch({makeVar(1, -1, -2), makeVar(1, INT_MIN, INT_MAX)});
    const QByteArray frame = build();
    EXPECT_EQ(hex("FF FF FF FF FF FF FF FE"), frame.mid(14, 8));
    EXPECT_EQ(hex("80 00 00 00 7F FF FF FF"), frame.mid(24, 8));
}

TEST_F(ReadRequest, StationAndTypeAreNotLookedAt)
{
    RW_VAR var = makeVar(1, 0x20, 4, 13);
    var.station = 5;
    EnCommStation(5, 0);
    fillBatch({var});
    EXPECT_EQ(hex("00 01 00 00 00 20 00 00 00 04"), build().mid(12, 10));
}

TEST_F(ReadRequest, CounterOutsideTheBatchIsHeldWithinIt)
{
    for (int i = 0; i < 150; ++i)
        PLC_driver.batch[i] = makeVar(1, i, 1);
    for (int count : {151, 1000, INT_MAX}) {
        PLC_driver.batchCount = count;
        const QByteArray frame = build();
        EXPECT_EQ(1516, frame.size()) << "batchCount " << count;
        EXPECT_EQ(hex("00 00 00 96"), frame.mid(8, 4)) << "batchCount " << count;
    }
    for (int count : {-1, -150, INT_MIN}) {
        PLC_driver.batchCount = count;
        EXPECT_EQ(hex("BB BB 00 00 00 0A 2E 00 00 00 00 00 00 01 00 00"), build())
            << "batchCount " << count;
    }
}

TEST_F(ReadRequest, IsQueuedAsARequestForAReplyOfVariableLength)
{
    fillBatch({makeVar(1, 0x20, 4)});
    build();
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    const Protocol& request = PLC_driver.requestQueue.first();
    EXPECT_EQ(26, request.frameLength);
    EXPECT_EQ(-1, request.replyLength);
    EXPECT_EQ(12, request.dataOffset);
    EXPECT_EQ(0, request.minReplyLength);
    EXPECT_EQ(0, request.extra1);
    EXPECT_EQ(0, request.extra2);
    EXPECT_EQ(0, request.extra3);
}

TEST_F(ReadRequest, CarriesACopyOfItsArgument)
{
    RW_VAR var = fullRecord();
    fillBatch({makeVar(1, 0x20, 4)});
    ReadAnalog(&var);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    expectEqualRecords(fullRecord(), PLC_driver.requestQueue.first().var);
}

TEST_F(ReadRequest, IsAppendedAtTheEndOfTheQueue)
{
    Protocol waiting;
    waiting.frame = hex("01");
    queueRequest(waiting);
    fillBatch({makeVar(1, 0x20, 4)});
    build();
    ASSERT_EQ(2, PLC_driver.requestQueue.size());
    EXPECT_EQ(hex("01"), PLC_driver.requestQueue.at(0).frame);
    EXPECT_EQ(26, PLC_driver.requestQueue.at(1).frameLength);
}

TEST_F(ReadRequest, StartsATransactionOfOneFrame)
{
    settings.frameCount = 7;
    settings.frameIndex = 5;
    fillBatch({makeVar(1, 0x20, 4)});
    build();
    EXPECT_EQ(1, settings.frameCount);
    EXPECT_EQ(0, settings.frameIndex);
}

TEST_F(ReadRequest, LeavesBatchAndFlagsAsTheyAre)
{
    fillBatch({makeVar(1, 0x20, 4), makeVar(2, 0x30, 6)});
    build();
    EXPECT_EQ(2, PLC_driver.batchCount);
    EXPECT_EQ(0x30, PLC_driver.batch[1].address);
    EXPECT_EQ(100, PLC_driver.lastKind);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_F(ReadRequest, ReadRegisterBuildsTheSameRequest)
{
    fillBatch({makeVar(1, 0x20, 4)});
    RW_VAR var = makeVar(1, 0x20, 4);
    ReadRegister(&var);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(hex("BB BB 00 00 00 14 2E 00 00 00 00 01"
                  "00 01 00 00 00 20 00 00 00 04 00 01 00 00"),
              PLC_driver.requestQueue.first().frame);
    EXPECT_EQ(0x20, PLC_driver.requestQueue.first().var.address);
    EXPECT_EQ(1, settings.frameCount);
}

TEST_F(ReadRequest, RemoteReadDoesNothing)
{
    fillBatch({makeVar(1, 0x20, 4)});
    settings.frameCount = 7;
    RW_VAR var = makeVar(1, 0x20, 4);
    Remote_ReadVar(&var);
    Remote_ReadVar(nullptr);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(7, settings.frameCount);
    EXPECT_EQ(1, PLC_driver.batchCount);
}

TEST_F(ReadRequest, NullVariableQueuesNothing)
{
    fillBatch({makeVar(1, 0x20, 4)});
    ReadAnalog(nullptr);
    ReadRegister(nullptr);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(ReadRequest, WithoutSettingsNothingIsTouched)
{
    SetComInfo(nullptr);
    fillBatch({makeVar(1, 0x20, 4)});
    RW_VAR var;
    ReadRegister(&var);
    EXPECT_EQ(nullptr, PLC_driver.settings);
    EXPECT_EQ(1, PLC_driver.batchCount);
}

} // namespace
} // namespace plc::test
