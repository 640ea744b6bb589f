#include <gtest/gtest.h>

#include "simulator/plc_memory.h"
#include "tests/simulator/frame_bytes.h"

namespace plc::simulator {
namespace {

using test::bytes;
using test::hex;

TEST(PlcMemory, BeginsWithZeros)
{
    const PlcMemory memory({{3, 4}});
    EXPECT_EQ("00 00 00 00", hex(memory.read(3, 0, 4)));
}

TEST(PlcMemory, KeepsAreasApart)
{
    PlcMemory memory({{1, 4}, {2, 4}});
    memory.write(1, 1, bytes("aa bb"));
    EXPECT_EQ("00 aa bb 00", hex(memory.read(1, 0, 4)));
    EXPECT_EQ("00 00 00 00", hex(memory.read(2, 0, 4)));
}

TEST(PlcMemory, KnowsItsBounds)
{
    const PlcMemory memory({{1, 4}});
    EXPECT_TRUE(memory.contains(1, 0, 4));
    EXPECT_TRUE(memory.contains(1, 4, 0));
    EXPECT_FALSE(memory.contains(1, 0, 5));
    EXPECT_FALSE(memory.contains(1, 5, 0));
    EXPECT_FALSE(memory.contains(1, 4, 1));
    EXPECT_FALSE(memory.contains(1, 0xffffffff, 0xffffffff));
    EXPECT_FALSE(memory.contains(1, 0xffffffffffffffff, 2));
    EXPECT_FALSE(memory.contains(2, 0, 0));
}

TEST(PlcMemory, BitsLieInBigEndianWords)
{
    PlcMemory memory({{1, 6}});
    memory.writeBit(1, 2 * 16 + 0, true);
    memory.writeBit(1, 2 * 16 + 15, true);
    EXPECT_EQ("00 00 80 01 00 00", hex(memory.read(1, 0, 6)));
    EXPECT_TRUE(memory.readBit(1, 2 * 16 + 15));
    EXPECT_FALSE(memory.readBit(1, 2 * 16 + 14));
    memory.writeBit(1, 2 * 16 + 15, false);
    EXPECT_EQ("00 00 00 01 00 00", hex(memory.read(1, 0, 6)));
}

TEST(PlcMemory, Bit17IsBit1OfTheWordAtByte1)
{
    PlcMemory memory({{1, 4}});
    memory.write(1, 0, bytes("00 00 02 00"));
    EXPECT_TRUE(memory.readBit(1, 17));
    EXPECT_FALSE(memory.readBit(1, 18));
}

TEST(PlcMemory, WritingABitLeavesAllOthers)
{
    for (quint32 bit = 0; bit < 3 * 16; ++bit) {
        PlcMemory memory({{1, 4}});
        memory.write(1, 0, bytes("ff ff ff ff"));
        memory.writeBit(1, bit, false);
        int cleared = 0;
        for (const char byte : memory.read(1, 0, 4)) {
            for (int position = 0; position < 8; ++position)
                cleared += (quint8(byte) >> position & 1) == 0 ? 1 : 0;
        }
        EXPECT_EQ(1, cleared) << bit;
        EXPECT_FALSE(memory.readBit(1, bit));
        memory.writeBit(1, bit, true);
        EXPECT_EQ("ff ff ff ff", hex(memory.read(1, 0, 4))) << bit;
    }
}

TEST(PlcMemory, TheWordOfABitMustLieInTheArea)
{
    const PlcMemory memory({{1, 4}});
    EXPECT_TRUE(memory.containsBit(1, 2 * 16 + 15));
    EXPECT_FALSE(memory.containsBit(1, 3 * 16));
    EXPECT_FALSE(memory.containsBit(1, 0xffffffff));
    EXPECT_FALSE(memory.containsBit(2, 0));
}

} // namespace
} // namespace plc::simulator
