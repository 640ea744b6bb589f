#include "frames/read_request.h"

#include <climits>

#include "driver/request_building.h"
#include "support/driver_fixture.h"

namespace plc {
namespace test {
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
    EXPECT_EQ(build(), hex("BB BB 00 00 00 14 2E 00 00 00 00 01"
                           "00 01 00 00 00 20 00 00 00 04"
                           "00 01 12 34"));
}

TEST_F(ReadRequest, EntriesFollowInTheOrderOfTheBatch)
{
    PLC_driver.plcInfo1 = 0xFF;
    PLC_driver.plcInfo2 = 0x80;
    fillBatch({makeVar(0x0203, 0x04050607, 0x08090A0B), makeVar(9, 0x10, 2), makeVar(1, 0x8, 1)});
    EXPECT_EQ(build(), hex("BB BB 00 00 00 28 2E 00 00 00 00 03"
                           "02 03 04 05 06 07 08 09 0A 0B"
                           "00 09 00 00 00 10 00 00 00 02"
                           "00 01 00 00 00 08 00 00 00 01"
                           "00 01 FF 80"));
}

TEST_F(ReadRequest, EmptyBatchStillGivesAWholeFrame)
{
    PLC_driver.plcInfo1 = 0x12;
    PLC_driver.plcInfo2 = 0x34;
    fillBatch({});
    EXPECT_EQ(build(), hex("BB BB 00 00 00 0A 2E 00 00 00 00 00 00 01 12 34"));
}

TEST_F(ReadRequest, InfoBytesAreZeroBeforeALogin)
{
    fillBatch({});
    EXPECT_EQ(build(), hex("BB BB 00 00 00 0A 2E 00 00 00 00 00 00 01 00 00"));
}

TEST_F(ReadRequest, FullBatchGives1516Bytes)
{
    for (int i = 0; i < 150; ++i)
        PLC_driver.batch[i] = makeVar(1, i, 1);
    PLC_driver.batchCount = 150;
    const QByteArray frame = build();
    ASSERT_EQ(frame.size(), 1516);
    EXPECT_EQ(frame.left(12), hex("BB BB 00 00 05 E6 2E 00 00 00 00 96"));
    EXPECT_EQ(frame.mid(12, 10), hex("00 01 00 00 00 00 00 00 00 01"));
    EXPECT_EQ(frame.mid(1502, 10), hex("00 01 00 00 00 95 00 00 00 01"));
    EXPECT_EQ(frame.right(4), hex("00 01 00 00"));
    EXPECT_EQ(PLC_driver.requestQueue.last().frameLength, 1516);
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
    EXPECT_EQ(build().mid(2, 4), hex("00 00 00 FA"));
    PLC_driver.batchCount = 25;
    EXPECT_EQ(build().mid(2, 4), hex("00 00 01 04"));
}

TEST_F(ReadRequest, AreaIndexSendsItsLowSixteenBits)
{
    fillBatch(
        {makeVar(0x12345, 0, 1), makeVar(-1, 0, 1), makeVar(0xFFFF, 0, 1), makeVar(INT_MIN, 0, 1)});
    const QByteArray frame = build();
    EXPECT_EQ(frame.mid(12, 2), hex("23 45"));
    EXPECT_EQ(frame.mid(22, 2), hex("FF FF"));
    EXPECT_EQ(frame.mid(32, 2), hex("FF FF"));
    EXPECT_EQ(frame.mid(42, 2), hex("00 00"));
}

TEST_F(ReadRequest, NegativeAddressAndLengthAreSentAsTheirBits)
{
    fillBatch({makeVar(1, -1, -2), makeVar(1, INT_MIN, INT_MAX)});
    const QByteArray frame = build();
    EXPECT_EQ(frame.mid(14, 8), hex("FF FF FF FF FF FF FF FE"));
    EXPECT_EQ(frame.mid(24, 8), hex("80 00 00 00 7F FF FF FF"));
}

TEST_F(ReadRequest, StationAndTypeAreNotLookedAt)
{
    RW_VAR var = makeVar(1, 0x20, 4, 13);
    var.station = 5;
    EnCommStation(5, 0);
    fillBatch({var});
    EXPECT_EQ(build().mid(12, 10), hex("00 01 00 00 00 20 00 00 00 04"));
}

TEST_F(ReadRequest, CounterOutsideTheBatchIsHeldWithinIt)
{
    for (int i = 0; i < 150; ++i)
        PLC_driver.batch[i] = makeVar(1, i, 1);
    for (int count : {151, 1000, INT_MAX}) {
        PLC_driver.batchCount = count;
        const QByteArray frame = build();
        EXPECT_EQ(frame.size(), 1516) << "batchCount " << count;
        EXPECT_EQ(frame.mid(8, 4), hex("00 00 00 96")) << "batchCount " << count;
    }
    for (int count : {-1, -150, INT_MIN}) {
        PLC_driver.batchCount = count;
        EXPECT_EQ(build(), hex("BB BB 00 00 00 0A 2E 00 00 00 00 00 00 01 00 00"))
            << "batchCount " << count;
    }
}

TEST_F(ReadRequest, IsQueuedAsARequestForAReplyOfVariableLength)
{
    fillBatch({makeVar(1, 0x20, 4)});
    build();
    ASSERT_EQ(PLC_driver.requestQueue.size(), 1);
    const Protocol& request = PLC_driver.requestQueue.first();
    EXPECT_EQ(request.frameLength, 26);
    EXPECT_EQ(request.replyLength, -1);
    EXPECT_EQ(request.dataOffset, 12);
    EXPECT_EQ(request.minReplyLength, 0);
    EXPECT_EQ(request.extra1, 0);
    EXPECT_EQ(request.extra2, 0);
    EXPECT_EQ(request.extra3, 0);
}

TEST_F(ReadRequest, CarriesACopyOfItsArgument)
{
    RW_VAR var = makeVar(3, 0x40, 8, 5);
    var.category = 4;
    var.aux1 = 21;
    var.aux2 = 22;
    var.aux3 = 23;
    var.deviceNo = 24;
    var.result = 25;
    var.station = 26;
    var.aux12 = 27;
    var.label = QLatin1String("A.b");
    var.subLabel = QLatin1String("c");
    var.data = hex("01 02");
    fillBatch({makeVar(1, 0x20, 4)});
    ReadAnalog(&var);
    ASSERT_EQ(PLC_driver.requestQueue.size(), 1);
    const RW_VAR& carried = PLC_driver.requestQueue.first().var;
    EXPECT_EQ(carried.category, 4);
    EXPECT_EQ(carried.aux1, 21);
    EXPECT_EQ(carried.aux2, 22);
    EXPECT_EQ(carried.aux3, 23);
    EXPECT_EQ(carried.deviceNo, 24);
    EXPECT_EQ(carried.result, 25);
    EXPECT_EQ(carried.label, QLatin1String("A.b"));
    EXPECT_EQ(carried.subLabel, QLatin1String("c"));
    EXPECT_EQ(carried.dataType, 5);
    EXPECT_EQ(carried.address, 0x40);
    EXPECT_EQ(carried.station, 26);
    EXPECT_EQ(carried.length, 8);
    EXPECT_EQ(carried.aux12, 27);
    EXPECT_EQ(carried.areaIndex, 3);
    EXPECT_EQ(carried.data, hex("01 02"));
}

TEST_F(ReadRequest, IsAppendedAtTheEndOfTheQueue)
{
    Protocol waiting;
    waiting.frame = hex("01");
    queueRequest(waiting);
    fillBatch({makeVar(1, 0x20, 4)});
    build();
    ASSERT_EQ(PLC_driver.requestQueue.size(), 2);
    EXPECT_EQ(PLC_driver.requestQueue.at(0).frame, hex("01"));
    EXPECT_EQ(PLC_driver.requestQueue.at(1).frameLength, 26);
}

TEST_F(ReadRequest, StartsATransactionOfOneFrame)
{
    settings.frameCount = 7;
    settings.frameIndex = 5;
    fillBatch({makeVar(1, 0x20, 4)});
    build();
    EXPECT_EQ(settings.frameCount, 1);
    EXPECT_EQ(settings.frameIndex, 0);
}

TEST_F(ReadRequest, LeavesBatchAndFlagsAsTheyAre)
{
    fillBatch({makeVar(1, 0x20, 4), makeVar(2, 0x30, 6)});
    build();
    EXPECT_EQ(PLC_driver.batchCount, 2);
    EXPECT_EQ(PLC_driver.batch[1].address, 0x30);
    EXPECT_EQ(PLC_driver.lastKind, 100);
    EXPECT_EQ(PLC_driver.loggedIn, 0);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
}

TEST_F(ReadRequest, ReadRegisterBuildsTheSameRequest)
{
    fillBatch({makeVar(1, 0x20, 4)});
    RW_VAR var = makeVar(1, 0x20, 4);
    ReadRegister(&var);
    ASSERT_EQ(PLC_driver.requestQueue.size(), 1);
    EXPECT_EQ(PLC_driver.requestQueue.first().frame,
              hex("BB BB 00 00 00 14 2E 00 00 00 00 01"
                  "00 01 00 00 00 20 00 00 00 04 00 01 00 00"));
    EXPECT_EQ(PLC_driver.requestQueue.first().var.address, 0x20);
    EXPECT_EQ(settings.frameCount, 1);
}

TEST_F(ReadRequest, RemoteReadDoesNothing)
{
    fillBatch({makeVar(1, 0x20, 4)});
    settings.frameCount = 7;
    RW_VAR var = makeVar(1, 0x20, 4);
    Remote_ReadVar(&var);
    Remote_ReadVar(nullptr);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(settings.frameCount, 7);
    EXPECT_EQ(PLC_driver.batchCount, 1);
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
    EXPECT_EQ(PLC_driver.settings, nullptr);
    EXPECT_EQ(PLC_driver.batchCount, 1);
}

} // namespace
} // namespace test
} // namespace plc
