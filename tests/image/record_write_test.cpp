#include "tests/image/image_fixture.h"

namespace plc::test {
namespace {

class ImageWrite : public DriverTest {
protected:
    static void write(int dataType, int address, int length, const QByteArray& data,
                      int area = kArea)
    {
        RW_VAR var = makeVar(area, address, length, dataType);
        ExactBytes bytes(data);
        var.data = *bytes.get();
        WriteDataToLocal(&var);
    }
};

TEST_F(ImageWrite, BytesAreStoredInTheirOrder)
{
    write(3, 100, 2, hex("12 34"));
    EXPECT_EQ("12 34 ..", image(100, 3));
    EXPECT_EQ(2, bytesInImage());
}

TEST_F(ImageWrite, EveryTypeButBitsStoresBytes)
{
    for (int code = -1; code <= 300; ++code) {
        if (code == 13)
            continue;
        PLC_driver.localImage.clear();
        write(code, 100, 3, hex("01 00 FF"));
        ASSERT_EQ("01 00 FF", image(100, 3)) << code;
        ASSERT_EQ(3, bytesInImage());
    }
}

TEST_F(ImageWrite, MissingBytesCountAsZero)
{
    PLC_driver.localImage.insert(keyOf(103), 0x77);
    write(5, 100, 4, hex("12 34"));
    EXPECT_EQ("12 34 00 00 ..", image(100, 5));
    write(5, 200, 3, QByteArray());
    EXPECT_EQ("00 00 00 ..", image(200, 4));
}

TEST_F(ImageWrite, SurplusBytesAreNotStored)
{
    write(5, 100, 2, hex("12 34 56 78"));
    EXPECT_EQ("12 34 ..", image(100, 3));
}

TEST_F(ImageWrite, LengthOfZeroOrLessStoresNothing)
{
    for (int code : {3, 13}) {
        for (int length : {0, -1, INT_MIN})
            write(code, 100, length, hex("12 34"));
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageWrite, AddressesGoOnAtZeroAfterTheLast)
{
    write(3, -1, 3, hex("A1 A2 A3"), -1);
    EXPECT_EQ("A1 A2 A3", image(-1, 3, -1));
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(ImageWrite, BitIsSetInTheLowByteBehindItsWordIndex)
{
    write(13, 17, 1, hex("01"));
    EXPECT_EQ("00 02 ..", image(1, 3));
    EXPECT_EQ(2, bytesInImage());
}

TEST_F(ImageWrite, EveryBitOfAWordHasItsPlace)
{
    // Word 2 has its high byte at 2 and its low byte at 3.
    const char* const expected[] = {"00 01", "00 02", "00 04", "00 08", "00 10", "00 20",
                                    "00 40", "00 80", "01 00", "02 00", "04 00", "08 00",
                                    "10 00", "20 00", "40 00", "80 00"};
    for (int bit = 0; bit < 16; ++bit) {
        PLC_driver.localImage.clear();
        write(13, 32 + bit, 1, hex("01"));
        EXPECT_EQ(expected[bit], image(2, 2)) << bit;
        EXPECT_EQ(2, bytesInImage());
    }
}

TEST_F(ImageWrite, BitsLeaveTheirNeighboursAlone)
{
    PLC_driver.localImage.insert(keyOf(1), 0xA5);
    PLC_driver.localImage.insert(keyOf(2), 0x5A);
    write(13, 17, 1, hex("00"));
    EXPECT_EQ("A5 58", image(1, 2));
    write(13, 16, 1, hex("01"));
    EXPECT_EQ("A5 59", image(1, 2));
    write(13, 24, 1, hex("00"));
    EXPECT_EQ("A4 59", image(1, 2));
    write(13, 30, 1, hex("01"));
    EXPECT_EQ("E4 59", image(1, 2));
}

TEST_F(ImageWrite, AnyValueButZeroSetsABit)
{
    write(13, 16, 5, hex("01 80 FF 00 02"));
    EXPECT_EQ("00 17", image(1, 2));
}

TEST_F(ImageWrite, MissingBytesOfABitWriteClearBits)
{
    PLC_driver.localImage.insert(keyOf(1), 0xFF);
    PLC_driver.localImage.insert(keyOf(2), 0xFF);
    write(13, 16, 4, hex("01 00"));
    EXPECT_EQ("FF F1", image(1, 2));
    write(13, 24, 2, QByteArray());
    EXPECT_EQ("FC F1", image(1, 2));
}

TEST_F(ImageWrite, NeighbouringWordsShareAByte)
{
    // Word 1 is bytes 1 and 2, word 2 is bytes 2 and 3: bit 16 and bit 40 are the same.
    write(13, 16, 1, hex("01"));
    EXPECT_EQ("00 01 ..", image(1, 3));
    write(13, 40, 1, hex("00"));
    EXPECT_EQ("00 00 00", image(1, 3));
    write(13, 40, 1, hex("01"));
    EXPECT_EQ("00 01 00", image(1, 3));
}

TEST_F(ImageWrite, RunOfBitsGoesOnInTheNextWord)
{
    // Bits 30 and 31 are bits 14 and 15 of word 1, bits 32 and 33 the lowest of word 2.
    write(13, 30, 4, hex("01 01 01 01"));
    EXPECT_EQ("C0 00 03", image(1, 3));
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(ImageWrite, BitAddressIsShiftedAsUnsigned)
{
    write(13, -1, 2, hex("01 01"));
    EXPECT_EQ("80 00", image(0x0FFFFFFF, 2));
    EXPECT_EQ("00 01", image(0, 2));
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ImageWrite, LengthAboveTheLargestValueStoresNothing)
{
    for (int length : {PLC_LARGEST_VALUE + 1, INT_MAX}) {
        write(3, 100, length, hex("12 34"));
        write(13, 100, length, hex("12 34"));
        EXPECT_EQ(0, bytesInImage()) << length;
    }
}

TEST_F(ImageWrite, LargestValueIsStored)
{
    write(3, 100, PLC_LARGEST_VALUE, hex("12 34"));
    EXPECT_EQ(PLC_LARGEST_VALUE, bytesInImage());
    EXPECT_EQ("12 34 00", image(100, 3));
    EXPECT_TRUE(exists(100 + PLC_LARGEST_VALUE - 1));
}

TEST_F(ImageWrite, NullStoresNothing)
{
    WriteDataToLocal(nullptr);
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageWrite, RecordIsNotChanged)
{
    RW_VAR var = makeVar(kArea, 100, 2, 13);
    var.data = hex("01");
    WriteDataToLocal(&var);
    EXPECT_EQ(100, var.address);
    EXPECT_EQ(2, var.length);
    EXPECT_EQ(hex("01"), var.data);
}

TEST_F(ImageWrite, RunsUnderTheDataLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { write(3, 100, 2, hex("12 34")); }));
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { write(13, 900, 2, hex("01 01")); }));
    EXPECT_EQ("12 34", image(100, 2));
}

TEST_F(ImageWrite, RandomBitRunsEqualBitsWrittenOneByOne)
{
    Random random(8);
    std::map<quint64, uchar> plain;
    for (int round = 0; round < 3000; ++round) {
        const int address = random.oneIn(10) ? random.between(-40, 40) : random.below(600);
        const int length = random.below(40);
        QByteArray data;
        for (int i = random.below(length + 3); i > 0; --i)
            data.append(char(uchar(random.oneIn(2) ? random.bits() : 0)));
        write(13, address, length, data);
        for (int i = 0; i < length; ++i) {
            const quint32 bit = advanced(quint32(address), i);
            uchar& high = plain[DataImage::key(kArea, bit >> 4)];
            uchar& low = plain[DataImage::key(kArea, (bit >> 4) + 1)];
            uchar& byte = (bit & 15) >= 8 ? high : low;
            const uchar mask = uchar(1 << (bit & 7));
            const bool isSet = i < int(data.size()) && data.at(i) != 0;
            byte = uchar(isSet ? byte | mask : byte & ~mask);
        }
        ASSERT_EQ(int(plain.size()), bytesInImage());
        if (round % 50 == 0) {
            for (const auto& byte : plain)
                ASSERT_EQ(byte.second, PLC_driver.localImage.value(byte.first))
                    << "round " << round;
        }
    }
}

} // namespace
} // namespace plc::test
