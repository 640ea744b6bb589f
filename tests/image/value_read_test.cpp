#include <climits>

#include "base/wrapped_int.h"
#include "driver/image_access.h"
#include "model/driver_model.h"
#include "model/library_side.h"
#include "support/lock_check.h"
#include "support/random.h"
#include "support/symbol_fixture.h"

namespace plc::test {
namespace {

constexpr int kArea = 3;
constexpr int kStart = 1000;

struct ReadResult {
    int result;
    QByteArray value;
};

/// Variables code0 to code18 at address 1000 of area 3, and some by purpose.
class ValueRead : public DriverTest {
protected:
    ValueRead()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, kStart, kArea));
        variables.append(variable("bit", 13, 17, kArea));
        variables.append(variable("lastBit", 13, -1, kArea));
        variables.append(variable("end", 3, -1, -1));
        variables.append(arrayOf(variable("words", 3, kStart, kArea), {10, 0, 9}));
        variables.append(variable("odd", 200, kStart, kArea));
        passSymbols({scope("MAIN", variables)});
    }

    static ReadResult read(const QString& label, int count)
    {
        ReadResult out = {-1, "not replaced"};
        out.result = GetRegisterData(label, 0, 0, 0, &out.value, count);
        return out;
    }

    static QByteArray value(const QString& label, int count)
    {
        const ReadResult out = read(label, count);
        EXPECT_EQ(1, out.result) << label.toStdString();
        return out.value;
    }

    static QByteArray value(int code, int count)
    {
        return value(QString("MAIN.code%1").arg(code), count);
    }

    static void put(int address, const char* bytes, int area = kArea)
    {
        const QByteArray data = hex(bytes);
        for (int i = 0; i < int(data.size()); ++i) {
            PLC_driver.localImage.insert(
                DataImage::key(quint32(area), advanced(quint32(address), i)), uchar(data.at(i)));
        }
    }

    static int bytesInImage() { return int(PLC_driver.localImage.size()); }
};

TEST_F(ValueRead, FlagsAreOneForAnyValueButZero)
{
    put(kStart, "05 00 FF 01");
    EXPECT_EQ(hex("01"), value(1, 1));
    EXPECT_EQ(hex("01 00 01 01"), value(1, 4));
}

TEST_F(ValueRead, BytesArePackedAtTheFrontOfTheRegisters)
{
    put(kStart, "AA BB CC");
    for (int code : {2, 14, 15}) {
        EXPECT_EQ(hex("AA 00"), value(code, 1)) << code;
        EXPECT_EQ(hex("AA BB 00 00"), value(code, 2)) << code;
        EXPECT_EQ(hex("AA BB CC 00 00 00"), value(code, 3)) << code;
    }
}

TEST_F(ValueRead, WordsAreSwapped)
{
    put(kStart, "12 34 56 78");
    for (int code : {3, 4, 16}) {
        EXPECT_EQ(hex("34 12"), value(code, 1)) << code;
        EXPECT_EQ(hex("34 12 78 56"), value(code, 2)) << code;
        EXPECT_EQ(hex("34 12 78 56 00 00"), value(code, 3)) << code;
    }
}

TEST_F(ValueRead, DoubleWordsAreReversed)
{
    put(kStart, "01 02 03 04 05 06 07 08");
    for (int code : {5, 6, 7, 17}) {
        EXPECT_EQ(hex("04 03 02 01"), value(code, 1)) << code;
        EXPECT_EQ(hex("04 03 02 01"), value(code, 2)) << code;
        EXPECT_EQ(hex("04 03 02 01 08 07 06 05"), value(code, 3)) << code;
        EXPECT_EQ(hex("04 03 02 01 08 07 06 05"), value(code, 4)) << code;
    }
}

TEST_F(ValueRead, QuadWordsAreReversed)
{
    put(kStart, "01 02 03 04 05 06 07 08 11 12 13 14 15 16 17 18");
    for (int code : {8, 9}) {
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01"), value(code, 1)) << code;
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01"), value(code, 4)) << code;
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"), value(code, 5)) << code;
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"), value(code, 8)) << code;
    }
}

TEST_F(ValueRead, TextKeepsItsOrder)
{
    put(kStart, "41 42 43 44 45");
    for (int code : {10, 11}) {
        EXPECT_EQ(hex("41 42"), value(code, 1)) << code;
        EXPECT_EQ(hex("41 42 43 44 45 00"), value(code, 3)) << code;
    }
}

TEST_F(ValueRead, BitsAreOneByteEach)
{
    put(1, "00 02");
    EXPECT_EQ(hex("01 00"), value("MAIN.bit", 2));
    put(1, "80 01");
    // Bit 17 on; bit 31 is the highest of word 1, bit 32 the lowest of word 2.
    EXPECT_EQ(hex("00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00"), value("MAIN.bit", 16));
}

TEST_F(ValueRead, BitsOfNeighbouringWordsShareAByte)
{
    put(1, "00 03 00");
    // Bits 16 and 17 are the low bits of the byte at 2; so are bits 40 and 41.
    const QByteArray bits = value("MAIN.bit", 26);
    EXPECT_EQ(1, bits.at(0));
    EXPECT_EQ(1, bits.at(40 - 17));
    EXPECT_EQ(1, bits.at(41 - 17));
    EXPECT_EQ(0, bits.at(42 - 17));
    EXPECT_EQ(3, int(bits.count('\1')));
}

TEST_F(ValueRead, BitAddressIsShiftedAsUnsigned)
{
    put(0x0FFFFFFF, "80 00");
    put(0, "00 01");
    EXPECT_EQ(hex("01 01 00"), value("MAIN.lastBit", 3));
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ValueRead, ElementsWithoutTypeAreZero)
{
    put(kStart, "AA BB CC DD");
    for (int code : {0, 18}) {
        EXPECT_EQ(hex("00 00"), value(code, 1)) << code;
        EXPECT_EQ(hex("00 00 00 00 00 00"), value(code, 3)) << code;
        EXPECT_EQ(QByteArray(), value(code, 0)) << code;
    }
    EXPECT_EQ(hex("00 00 00 00"), value("MAIN.odd", 2));
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ValueRead, StructureWithoutMemberDoesNotResolve)
{
    const ReadResult out = read("MAIN.code12", 2);
    EXPECT_EQ(0, out.result);
    EXPECT_EQ(hex("00 00 00 00"), out.value);
}

TEST_F(ValueRead, LabelThatDoesNotResolveGivesZeros)
{
    for (const char* label : {"MAIN.nosuch", "OTHER.code1", "", "MAIN", "MAIN.words",
                              "MAIN.words[-1]", "MAIN.code1[0]", "MAIN.code13[1]"}) {
        const ReadResult out = read(label, 3);
        EXPECT_EQ(0, out.result) << label;
        EXPECT_EQ(hex("00 00 00 00 00 00"), out.value) << label;
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ValueRead, CountOfZeroOrLessGivesNothing)
{
    put(kStart, "AA BB CC DD");
    for (int code = 0; code <= 18; ++code) {
        for (int count : {0, -1, -2, -3, -4, -7, -1000, INT_MIN}) {
            const ReadResult out = read(QString("MAIN.code%1").arg(code), count);
            EXPECT_EQ(code == 12 ? 0 : 1, out.result) << code << ", " << count;
            EXPECT_EQ(QByteArray(), out.value) << code << ", " << count;
        }
    }
    for (int count : {0, -1, INT_MIN}) {
        const ReadResult out = read("MAIN.nosuch", count);
        EXPECT_EQ(0, out.result);
        EXPECT_EQ(QByteArray(), out.value);
    }
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ValueRead, ReadingCreatesTheBytesThatItReads)
{
    struct Row {
        int code;
        int count;
        int bytes;
    };
    const Row rows[] = {{1, 5, 5},  {2, 5, 5},   {3, 5, 10},  {4, 5, 10},  {5, 5, 12},  {6, 5, 12},
                        {7, 5, 12}, {8, 5, 16},  {9, 5, 16},  {10, 5, 10}, {11, 5, 10}, {14, 5, 5},
                        {15, 5, 5}, {16, 5, 10}, {17, 5, 12}, {0, 5, 0},   {18, 5, 0}};
    for (const Row& row : rows) {
        PLC_driver.localImage.clear();
        const QByteArray zeros = value(row.code, row.count);
        EXPECT_EQ(QByteArray(zeros.size(), '\0'), zeros) << row.code;
        EXPECT_EQ(row.bytes, bytesInImage()) << row.code;
        for (int i = 0; i < row.bytes; ++i)
            EXPECT_TRUE(PLC_driver.localImage.contains(DataImage::key(kArea, kStart + quint32(i))));
    }
}

TEST_F(ValueRead, ReadingABitCreatesBothBytesOfItsWord)
{
    EXPECT_EQ(hex("00"), value("MAIN.bit", 1));
    EXPECT_EQ(2, bytesInImage());
    EXPECT_TRUE(PLC_driver.localImage.contains(DataImage::key(kArea, 1)));
    EXPECT_TRUE(PLC_driver.localImage.contains(DataImage::key(kArea, 2)));
    // Bits 17 to 32 lie in words 1 and 2, which are bytes 1 to 3.
    value("MAIN.bit", 16);
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(ValueRead, ArrayElementsAreReadAtTheirPlace)
{
    put(kStart + 4, "12 34 56 78");
    EXPECT_EQ(hex("34 12"), value("MAIN.words[2]", 1));
    EXPECT_EQ(hex("78 56"), value("MAIN.words[3]", 1));
}

TEST_F(ValueRead, AddressesGoOnAtZeroAfterTheLast)
{
    put(-1, "A1 A2 A3 A4", -1);
    EXPECT_EQ(hex("A2 A1 A4 A3"), value("MAIN.end", 2));
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ValueRead, OtherAreasAreNotLookedAt)
{
    put(kStart, "12 34", kArea + 1);
    EXPECT_EQ(hex("00 00"), value(3, 1));
}

TEST_F(ValueRead, ReservedArgumentsAreNotRead)
{
    put(kStart, "12 34");
    QByteArray out;
    EXPECT_EQ(1, GetRegisterData("MAIN.code3", INT_MIN, INT_MAX, -1, &out, 1));
    EXPECT_EQ(hex("34 12"), out);
}

TEST_F(ValueRead, ValueHeldBeforeIsReplaced)
{
    put(kStart, "12 34");
    QByteArray out(1000, 'x');
    EXPECT_EQ(1, GetRegisterData("MAIN.code3", 0, 0, 0, &out, 1));
    EXPECT_EQ(hex("34 12"), out);
}

TEST_F(ValueRead, CopyOfTheHeldValueStaysAsItWas)
{
    QByteArray out = "before";
    const QByteArray copy = out;
    GetRegisterData("MAIN.code3", 0, 0, 0, &out, 3);
    EXPECT_EQ("before", copy);
}

TEST_F(ValueRead, NeedsNoSettings)
{
    SetComInfo(nullptr);
    put(kStart, "12 34");
    EXPECT_EQ(hex("34 12"), value(3, 1));
}

TEST_F(ValueRead, NullBufferGivesZeroAndTouchesNothing)
{
    EXPECT_EQ(0, GetRegisterData("MAIN.code3", 0, 0, 0, nullptr, 1));
    EXPECT_EQ(0, GetRegisterData("MAIN.nosuch", 0, 0, 0, nullptr, 1));
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ValueRead, ValueAboveTheLargestIsRefused)
{
    struct Row {
        int code;
        int bytesPerCount;
    };
    const Row rows[] = {{1, 1}, {13, 1}, {2, 2}, {3, 2}, {10, 2}, {0, 2}, {5, 2}, {8, 2}};
    for (const Row& row : rows) {
        const QString label = QString("MAIN.code%1").arg(row.code);
        const int largestCount = PLC_LARGEST_VALUE / row.bytesPerCount;
        for (int count : {largestCount + 1, INT_MAX / 2, INT_MAX - 3, INT_MAX}) {
            const ReadResult out = read(label, count);
            EXPECT_EQ(0, out.result) << row.code << ", " << count;
            EXPECT_EQ(QByteArray(), out.value) << row.code << ", " << count;
        }
    }
    for (int count : {PLC_LARGEST_VALUE / 2 + 1, INT_MAX}) {
        const ReadResult out = read("MAIN.nosuch", count);
        EXPECT_EQ(0, out.result);
        EXPECT_EQ(QByteArray(), out.value);
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ValueRead, BufferOfARefusedSizeIsEmptiedThoughItHasThatSizeAlready)
{
    for (const char* label : {"MAIN.code3", "MAIN.nosuch"}) {
        QByteArray buffer(PLC_LARGEST_VALUE + 2, 'x');
        EXPECT_EQ(0, GetRegisterData(label, 0, 0, 0, &buffer, PLC_LARGEST_VALUE / 2 + 1)) << label;
        EXPECT_EQ(QByteArray(), buffer) << label;
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ValueRead, LargestValueIsRead)
{
    put(kStart + PLC_LARGEST_VALUE - 2, "12 34");
    const QByteArray words = value(3, PLC_LARGEST_VALUE / 2);
    ASSERT_EQ(PLC_LARGEST_VALUE, int(words.size()));
    EXPECT_EQ(hex("34 12"), words.right(2));
    const QByteArray flags = value(1, PLC_LARGEST_VALUE);
    ASSERT_EQ(PLC_LARGEST_VALUE, int(flags.size()));
    EXPECT_EQ(hex("00 01 01"), flags.right(3));
}

TEST_F(ValueRead, LargestZeroValueOfAnUnknownLabelIsGiven)
{
    const ReadResult out = read("MAIN.nosuch", PLC_LARGEST_VALUE / 2);
    EXPECT_EQ(0, out.result);
    EXPECT_EQ(QByteArray(PLC_LARGEST_VALUE, '\0'), out.value);
}

TEST_F(ValueRead, LabelIsResolvedBeforeTheLockIsTaken)
{
    QMutexLocker lock(&PLC_driver.dataMutex);
    EXPECT_EQ(0, read("MAIN.nosuch", 1).result);
}

TEST_F(ValueRead, ConvertsUnderTheDataLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { value(3, 1); }));
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { value("MAIN.bit", 1); }));
}

TEST_F(ValueRead, ListLockIsNotNeeded)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    EXPECT_EQ(hex("00 00"), value(3, 1));
}

TEST_F(ValueRead, RandomReadsEqualThePlainConversions)
{
    Random random(12);
    model::DriverModel model;
    model::Settings modelSettings = model::fromQt(settings);
    model.setComInfo(&modelSettings);
    for (int i = 0; i < 3000; ++i) {
        const quint32 address = quint32(random.between(-300, 3000));
        const uchar byte = uchar(random.oneIn(3) ? 0 : random.bits());
        PLC_driver.localImage.insert(DataImage::key(kArea, address), byte);
        model.image.at(kArea, address) = byte;
    }
    for (int round = 0; round < 4000; ++round) {
        int code = random.between(0, 18);
        if (code == 12)
            code = 255;
        const int address =
            random.oneIn(20) ? int(random.bits()) : random.between(-350, code == 13 ? 40000 : 3100);
        const QList<Label_Type_Info> symbols{
            scope("RANDOM", {variable("x", code, address, kArea)})};
        passSymbols(symbols);
        model.passSymbols(model::fromQt(symbols));
        const int count = random.oneIn(10) ? random.between(-5, 600) : random.between(-2, 20);
        model::Bytes expected;
        model.readValue(u"RANDOM.x", count, expected);
        ASSERT_EQ(model::toQt(expected), value("RANDOM.x", count))
            << "code " << code << ", address " << address << ", count " << count;
        ASSERT_EQ(int(model.image.bytes().size()), bytesInImage())
            << "code " << code << ", count " << count;
    }
}

} // namespace
} // namespace plc::test
