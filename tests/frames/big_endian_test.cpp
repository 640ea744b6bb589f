#include "frames/big_endian.h"

#include <limits>

#include "support/driver_fixture.h"

namespace plc::test {
namespace {

TEST(FrameWriter, BeginsWithZerosOfTheGivenSize)
{
    FrameWriter frame(3);
    EXPECT_EQ(hex("00 00 00"), frame.frame());
    EXPECT_EQ(3, frame.left());
    EXPECT_TRUE(FrameWriter(0).frame().isEmpty());
}

TEST(FrameWriter, WritesTheMostSignificantByteFirst)
{
    FrameWriter frame(7);
    frame.u8(0xBB).u16(0x0102).u32(0x83848586);
    EXPECT_EQ(hex("BB 01 02 83 84 85 86"), frame.frame());
    EXPECT_EQ(0, frame.left());
}

TEST(FrameWriter, LeavesWhatIsNotWrittenZero)
{
    FrameWriter frame(5);
    frame.u16(0xFFFF);
    EXPECT_EQ(hex("FF FF 00 00 00"), frame.frame());
    EXPECT_EQ(3, frame.left());
}

TEST(FrameWriter, FieldThatDoesNotFitIsNotWritten)
{
    FrameWriter frame(3);
    frame.u32(0x01020304);
    EXPECT_EQ(hex("00 00 00"), frame.frame());
    frame.u16(0x0506).u16(0x0708);
    EXPECT_EQ(hex("05 06 00"), frame.frame());
    frame.u8(0x09).u8(0x0A);
    EXPECT_EQ(hex("05 06 09"), frame.frame());
    EXPECT_EQ(0, frame.left());
}

TEST(FrameWriter, BytesAreCutToTheirCount)
{
    FrameWriter frame(3);
    frame.bytes(hex("01 02 03 04"), 2).u8(0xFF);
    EXPECT_EQ(hex("01 02 FF"), frame.frame());
}

TEST(FrameWriter, BytesArePaddedToTheirCount)
{
    FrameWriter frame(5);
    frame.bytes(hex("01 02"), 4).u8(0xFF);
    EXPECT_EQ(hex("01 02 00 00 FF"), frame.frame());
    FrameWriter padding(3);
    padding.bytes(QByteArray(), 2).u8(0xFF);
    EXPECT_EQ(hex("00 00 FF"), padding.frame());
}

TEST(FrameWriter, BytesNeverGoBeyondTheEnd)
{
    FrameWriter full(2);
    full.bytes(hex("01 02 03"), 3);
    EXPECT_EQ(hex("00 00"), full.frame());
    FrameWriter padded(2);
    padded.bytes(hex("01"), 100);
    EXPECT_EQ(hex("01 00"), padded.frame());
    EXPECT_EQ(0, padded.left());
    padded.u8(0xFF);
    EXPECT_EQ(hex("01 00"), padded.frame());
}

TEST(FrameWriter, NoBytesAtAllMoveNothing)
{
    FrameWriter frame(1);
    frame.bytes(hex("01 02"), 0).u8(0xFF);
    EXPECT_EQ(hex("FF"), frame.frame());
}

TEST(FrameReader, ReadsTheMostSignificantByteFirst)
{
    ExactBytes bytes(hex("01 02 FF FE"));
    FrameReader reader(*bytes.get(), 0);
    EXPECT_EQ(4, reader.left());
    EXPECT_EQ(0x0102, reader.u16());
    EXPECT_EQ(0xFFFE, reader.u16());
    EXPECT_EQ(0, reader.left());
}

TEST(FrameReader, StartsAtItsPosition)
{
    ExactBytes bytes(hex("01 02 03 04 05"));
    FrameReader reader(*bytes.get(), 2);
    EXPECT_EQ(3, reader.left());
    EXPECT_EQ(0x03, *reader.here());
    EXPECT_EQ(0x0304, reader.u16());
    EXPECT_EQ(0x05, *reader.here());
}

TEST(FrameReader, FieldBeyondTheEndIsZeroAndNothingIsLeft)
{
    ExactBytes bytes(hex("01 02 03"));
    FrameReader reader(*bytes.get(), 2);
    EXPECT_EQ(0, reader.u16());
    EXPECT_EQ(0, reader.left());
    EXPECT_EQ(0, reader.u16());
    ExactBytes none{QByteArray()};
    EXPECT_EQ(0, FrameReader(*none.get(), 0).u16());
}

TEST(FrameReader, PositionOutsideTheFrameIsHeldWithinIt)
{
    ExactBytes bytes(hex("01 02 03"));
    for (qint64 position : {qint64(3), qint64(4), std::numeric_limits<qint64>::max()})
        EXPECT_EQ(0, FrameReader(*bytes.get(), position).left()) << position;
    for (qint64 position : {qint64(-1), std::numeric_limits<qint64>::min()})
        EXPECT_EQ(3, FrameReader(*bytes.get(), position).left()) << position;
}

TEST(FrameReader, SkipsToTheEndAtMost)
{
    ExactBytes bytes(hex("01 02 03 04"));
    FrameReader reader(*bytes.get(), 0);
    reader.skip(1);
    EXPECT_EQ(0x02, *reader.here());
    reader.skip(0);
    reader.skip(-5);
    EXPECT_EQ(3, reader.left());
    reader.skip(qint64(1) << 40);
    EXPECT_EQ(0, reader.left());
}

} // namespace
} // namespace plc::test
