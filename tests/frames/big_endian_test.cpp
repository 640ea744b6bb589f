#include "frames/big_endian.h"

#include <limits>

#include "support/driver_fixture.h"

namespace plc {
namespace test {
namespace {

TEST(FrameWriter, BeginsWithZerosOfTheGivenSize)
{
    FrameWriter frame(3);
    EXPECT_EQ(frame.frame(), hex("00 00 00"));
    EXPECT_EQ(frame.left(), 3);
    EXPECT_TRUE(FrameWriter(0).frame().isEmpty());
}

TEST(FrameWriter, WritesTheMostSignificantByteFirst)
{
    FrameWriter frame(7);
    frame.u8(0xBB).u16(0x0102).u32(0x83848586);
    EXPECT_EQ(frame.frame(), hex("BB 01 02 83 84 85 86"));
    EXPECT_EQ(frame.left(), 0);
}

TEST(FrameWriter, LeavesWhatIsNotWrittenZero)
{
    FrameWriter frame(5);
    frame.u16(0xFFFF);
    EXPECT_EQ(frame.frame(), hex("FF FF 00 00 00"));
    EXPECT_EQ(frame.left(), 3);
}

TEST(FrameWriter, FieldThatDoesNotFitIsNotWritten)
{
    FrameWriter frame(3);
    frame.u32(0x01020304);
    EXPECT_EQ(frame.frame(), hex("00 00 00"));
    frame.u16(0x0506).u16(0x0708);
    EXPECT_EQ(frame.frame(), hex("05 06 00"));
    frame.u8(0x09).u8(0x0A);
    EXPECT_EQ(frame.frame(), hex("05 06 09"));
    EXPECT_EQ(frame.left(), 0);
}

TEST(FrameWriter, BytesAreCutToTheirCount)
{
    FrameWriter frame(3);
    frame.bytes(hex("01 02 03 04"), 2).u8(0xFF);
    EXPECT_EQ(frame.frame(), hex("01 02 FF"));
}

TEST(FrameWriter, BytesArePaddedToTheirCount)
{
    FrameWriter frame(5);
    frame.bytes(hex("01 02"), 4).u8(0xFF);
    EXPECT_EQ(frame.frame(), hex("01 02 00 00 FF"));
    FrameWriter padding(3);
    padding.bytes(QByteArray(), 2).u8(0xFF);
    EXPECT_EQ(padding.frame(), hex("00 00 FF"));
}

TEST(FrameWriter, BytesNeverGoBeyondTheEnd)
{
    FrameWriter full(2);
    full.bytes(hex("01 02 03"), 3);
    EXPECT_EQ(full.frame(), hex("00 00"));
    FrameWriter padded(2);
    padded.bytes(hex("01"), 100);
    EXPECT_EQ(padded.frame(), hex("01 00"));
    EXPECT_EQ(padded.left(), 0);
    padded.u8(0xFF);
    EXPECT_EQ(padded.frame(), hex("01 00"));
}

TEST(FrameWriter, NoBytesAtAllMoveNothing)
{
    FrameWriter frame(1);
    frame.bytes(hex("01 02"), 0).u8(0xFF);
    EXPECT_EQ(frame.frame(), hex("FF"));
}

TEST(FrameReader, ReadsTheMostSignificantByteFirst)
{
    ExactBytes bytes(hex("01 02 FF FE"));
    FrameReader reader(*bytes.get(), 0);
    EXPECT_EQ(reader.left(), 4);
    EXPECT_EQ(reader.u16(), 0x0102);
    EXPECT_EQ(reader.u16(), 0xFFFE);
    EXPECT_EQ(reader.left(), 0);
}

TEST(FrameReader, StartsAtItsPosition)
{
    ExactBytes bytes(hex("01 02 03 04 05"));
    FrameReader reader(*bytes.get(), 2);
    EXPECT_EQ(reader.left(), 3);
    EXPECT_EQ(*reader.here(), 0x03);
    EXPECT_EQ(reader.u16(), 0x0304);
    EXPECT_EQ(*reader.here(), 0x05);
}

TEST(FrameReader, FieldBeyondTheEndIsZeroAndNothingIsLeft)
{
    ExactBytes bytes(hex("01 02 03"));
    FrameReader reader(*bytes.get(), 2);
    EXPECT_EQ(reader.u16(), 0);
    EXPECT_EQ(reader.left(), 0);
    EXPECT_EQ(reader.u16(), 0);
    ExactBytes none{QByteArray()};
    EXPECT_EQ(FrameReader(*none.get(), 0).u16(), 0);
}

TEST(FrameReader, PositionOutsideTheFrameIsHeldWithinIt)
{
    ExactBytes bytes(hex("01 02 03"));
    for (qint64 position : {qint64(3), qint64(4), std::numeric_limits<qint64>::max()})
        EXPECT_EQ(FrameReader(*bytes.get(), position).left(), 0) << position;
    for (qint64 position : {qint64(-1), std::numeric_limits<qint64>::min()})
        EXPECT_EQ(FrameReader(*bytes.get(), position).left(), 3) << position;
}

TEST(FrameReader, SkipsToTheEndAtMost)
{
    ExactBytes bytes(hex("01 02 03 04"));
    FrameReader reader(*bytes.get(), 0);
    reader.skip(1);
    EXPECT_EQ(*reader.here(), 0x02);
    reader.skip(0);
    reader.skip(-5);
    EXPECT_EQ(reader.left(), 3);
    reader.skip(qint64(1) << 40);
    EXPECT_EQ(reader.left(), 0);
}

} // namespace
} // namespace test
} // namespace plc
