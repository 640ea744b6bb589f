#include <climits>

#include "driver/image_access.h"
#include "support/random.h"
#include "support/record_checks.h"
#include "support/symbol_fixture.h"

namespace plc {
namespace test {
namespace {

const int kArea = 3;
const int kStart = 1000;
const int kQueuedMode = 2;

/// Variables code0 to code18 at address 1000 of area 3, and some by purpose.
class ValueWrite : public DriverTest {
protected:
    ValueWrite()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, kStart, kArea));
        variables.append(variable("high", 10, INT_MAX - 999, kArea));
        variables.append(variable("bit", 13, 17, kArea));
        variables.append(variable("lastBit", 13, -2, kArea));
        passSymbols({scope("MAIN", variables)});
        settings.writeMode = kQueuedMode;
    }

    static int write(const QString& label, const QByteArray& value, int count)
    {
        ExactBytes bytes(value);
        return SetRegisterData(label, 0, "second", 5, bytes.get(), count, 6, 7);
    }

    /// Queues a value of a type code and gives all bytes that are queued for it.
    static QByteArray queued(int code, const char* value, int count)
    {
        PLC_driver.writeList.clear();
        EXPECT_EQ(0, write(QString("MAIN.code%1").arg(code), hex(value), count)) << code;
        QByteArray out;
        for (const RW_VAR& var : PLC_driver.writeList) {
            EXPECT_EQ(kStart + int(out.size()), var.address) << code;
            EXPECT_EQ(int(var.data.size()), var.length) << code;
            out += var.data;
        }
        return out;
    }

    static const QList<RW_VAR>& list() { return PLC_driver.writeList; }
    static int bytesInImage() { return int(PLC_driver.localImage.size()); }
    static int byteAt(int address)
    {
        return PLC_driver.localImage.value(DataImage::key(kArea, quint32(address)));
    }
    static bool exists(int address)
    {
        return PLC_driver.localImage.contains(DataImage::key(kArea, quint32(address)));
    }
};

using QueuedWrite = ValueWrite;
using ImageOnlyWrite = ValueWrite;

// --- Queued to the PLC ---

TEST_F(QueuedWrite, RecordCarriesTheArgumentsTheSettingsAndThePlace)
{
    settings.remoteMode = 21;
    settings.localDeviceNo = 22;
    settings.defaultStation = 23;
    EXPECT_EQ(0, write("MAIN.code3", hex("34 12"), 1));
    RW_VAR expected;
    expected.category = 6;
    expected.aux1 = 7;
    expected.aux2 = 1;
    expected.aux3 = 21;
    expected.deviceNo = 22;
    expected.result = 0;
    expected.label = "MAIN.code3";
    expected.subLabel = "second";
    expected.dataType = 3;
    expected.address = 1000;
    expected.station = 23;
    expected.length = 2;
    expected.aux12 = 0;
    expected.areaIndex = 3;
    expected.data = hex("12 34");
    ASSERT_EQ(1, int(list().size()));
    expectEqualRecords(expected, list().at(0));
}

TEST_F(QueuedWrite, StationIsTheArgumentOnlyWithSeveralStations)
{
    settings.defaultStation = 23;
    for (int multiStation : {0, 1, -1}) {
        settings.multiStation = multiStation;
        PLC_driver.writeList.clear();
        write("MAIN.code3", hex("34 12"), 1);
        EXPECT_EQ(multiStation ? 5 : 23, list().at(0).station);
    }
}

TEST_F(QueuedWrite, FlagsAreSentAsOneOrZero)
{
    EXPECT_EQ(hex("01"), queued(1, "05", 1));
    EXPECT_EQ(hex("01 00 01"), queued(1, "80 00 FF", 3));
    EXPECT_EQ(hex("01 00 00 00"), queued(1, "80", 4));
    EXPECT_EQ(hex("01 00 01"), queued(1, "01 00 07", 1));
    EXPECT_EQ(hex("00 00"), queued(1, "", 2));
}

TEST_F(QueuedWrite, BytesAreTheLowBytesOfTheRegisters)
{
    for (int code : {2, 14, 15}) {
        EXPECT_EQ(hex("41 42"), queued(code, "41 00 42 00", 2)) << code;
        EXPECT_EQ(hex("41 42"), queued(code, "41 EE 42 EE", 2)) << code;
        EXPECT_EQ(hex("41"), queued(code, "41", 1)) << code;
        EXPECT_EQ(hex("41 42"), queued(code, "41 00 42", 1)) << code;
        EXPECT_EQ(hex("41 42"), queued(code, "41 00 42", 2)) << code;
        EXPECT_EQ(hex("41 00 00"), queued(code, "41 00", 3)) << code;
        EXPECT_EQ(hex("41 42 43"), queued(code, "41 00 42 00 43 00", 1)) << code;
        EXPECT_EQ(hex("00 00 00"), queued(code, "", 3)) << code;
    }
}

TEST_F(QueuedWrite, WordsAreSwapped)
{
    for (int code : {3, 4, 16}) {
        EXPECT_EQ(hex("12 34"), queued(code, "34 12", 1)) << code;
        EXPECT_EQ(hex("12 34 56 78"), queued(code, "34 12 78 56", 2)) << code;
        EXPECT_EQ(hex("00 34"), queued(code, "34", 1)) << code;
        EXPECT_EQ(hex("12 34 00 78"), queued(code, "34 12 78", 1)) << code;
        EXPECT_EQ(hex("12 34 00 00"), queued(code, "34 12", 2)) << code;
        EXPECT_EQ(hex("12 34 56 78"), queued(code, "34 12 78 56", 1)) << code;
        EXPECT_EQ(hex("00 00 00 00"), queued(code, "", 2)) << code;
    }
}

TEST_F(QueuedWrite, DoubleWordsAreReversed)
{
    for (int code : {5, 6, 7, 17}) {
        EXPECT_EQ(hex("04 03 02 01"), queued(code, "01 02 03 04", 2)) << code;
        EXPECT_EQ(hex("04 03 02 01"), queued(code, "01 02 03 04", 1)) << code;
        EXPECT_EQ(hex("00 00 02 01"), queued(code, "01 02", 2)) << code;
        EXPECT_EQ(hex("00 00 00 01"), queued(code, "01", 1)) << code;
        EXPECT_EQ(hex("04 03 02 01 00 00 00 05"), queued(code, "01 02 03 04 05", 2)) << code;
        EXPECT_EQ(hex("04 03 02 01 00 00 00 00"), queued(code, "01 02 03 04", 3)) << code;
        EXPECT_EQ(hex("04 03 02 01 08 07 06 05"), queued(code, "01 02 03 04 05 06 07 08", 4));
        EXPECT_EQ(hex("00 00 00 00"), queued(code, "", 2)) << code;
    }
}

TEST_F(QueuedWrite, QuadWordsAreReversed)
{
    for (int code : {8, 9}) {
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01"), queued(code, "01 02 03 04 05 06 07 08", 4));
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01"), queued(code, "01 02 03 04 05 06 07 08", 1));
        EXPECT_EQ(hex("00 00 00 00 00 03 02 01"), queued(code, "01 02 03", 4)) << code;
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01 00 00 00 00 00 00 00 09"),
                  queued(code, "01 02 03 04 05 06 07 08 09", 4))
            << code;
        EXPECT_EQ(hex("08 07 06 05 04 03 02 01 00 00 00 00 00 00 00 00"),
                  queued(code, "01 02 03 04 05 06 07 08", 5))
            << code;
        EXPECT_EQ(QByteArray(8, '\0'), queued(code, "", 1)) << code;
    }
}

TEST_F(QueuedWrite, TextKeepsItsOrder)
{
    for (int code : {10, 11}) {
        EXPECT_EQ(hex("41 42"), queued(code, "41 42", 1)) << code;
        EXPECT_EQ(hex("41 42 43 00"), queued(code, "41 42 43", 2)) << code;
        EXPECT_EQ(hex("41 42 43 44 45"), queued(code, "41 42 43 44 45", 1)) << code;
        EXPECT_EQ(hex("00 00"), queued(code, "", 1)) << code;
    }
}

TEST_F(QueuedWrite, BitsAreQueuedOneByOne)
{
    EXPECT_EQ(0, write("MAIN.bit", hex("01 00 07"), 3));
    EXPECT_EQ((Places{{17, 1}, {18, 1}, {19, 1}}), places(list()));
    EXPECT_EQ(hex("01"), list().at(0).data);
    EXPECT_EQ(hex("00"), list().at(1).data);
    EXPECT_EQ(hex("01"), list().at(2).data);
    for (const RW_VAR& var : list())
        EXPECT_EQ(13, var.dataType);
}

TEST_F(QueuedWrite, MissingBitsAreZeroAndSurplusBitsAreSent)
{
    write("MAIN.bit", hex("01"), 3);
    EXPECT_EQ((Places{{17, 1}, {18, 1}, {19, 1}}), places(list()));
    EXPECT_EQ(hex("00"), list().at(2).data);
    PLC_driver.writeList.clear();
    write("MAIN.bit", hex("01 01 01"), 1);
    EXPECT_EQ((Places{{17, 1}, {18, 1}, {19, 1}}), places(list()));
    EXPECT_EQ(hex("01"), list().at(2).data);
}

TEST_F(QueuedWrite, BitAddressesGoOnAtZeroAfterTheLast)
{
    write("MAIN.lastBit", hex("01 01 01"), 3);
    EXPECT_EQ((Places{{-2, 1}, {-1, 1}, {0, 1}}), places(list()));
}

TEST_F(QueuedWrite, CodesThatHaveNoConversionQueueNothing)
{
    EXPECT_EQ(QByteArray(), queued(0, "01 02", 1));
    EXPECT_EQ(QByteArray(), queued(12, "01 02", 1));
    EXPECT_EQ(QByteArray(), queued(18, "01 02", 1));
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, LongValueIsQueuedInPiecesOfAThousandBytes)
{
    QByteArray value;
    for (int i = 0; i < 2400; ++i)
        value.append(char(uchar(i % 251)));
    EXPECT_EQ(0, write("MAIN.code10", value, 1200));
    EXPECT_EQ((Places{{1000, 1000}, {2000, 1000}, {3000, 400}}), places(list()));
    EXPECT_EQ(value.mid(0, 1000), list().at(0).data);
    EXPECT_EQ(value.mid(1000, 1000), list().at(1).data);
    EXPECT_EQ(value.mid(2000), list().at(2).data);
    for (const RW_VAR& var : list()) {
        EXPECT_EQ(6, var.category);
        EXPECT_EQ(7, var.aux1);
        EXPECT_EQ(1, var.aux2);
    }
}

TEST_F(QueuedWrite, ValueOfExactlyOnePieceIsOneEntry)
{
    write("MAIN.code10", QByteArray(1000, 'x'), 500);
    EXPECT_EQ((Places{{1000, 1000}}), places(list()));
    PLC_driver.writeList.clear();
    write("MAIN.code1", QByteArray(1001, 'x'), 1001);
    EXPECT_EQ((Places{{1000, 1000}, {2000, 1}}), places(list()));
}

TEST_F(QueuedWrite, PiecesAdvanceTheAddressModuloTwoToThe32)
{
    write("MAIN.high", QByteArray(2400, 'x'), 1200);
    EXPECT_EQ((Places{{INT_MAX - 999, 1000}, {INT_MIN, 1000}, {INT_MIN + 1000, 400}}),
              places(list()));
}

TEST_F(QueuedWrite, LaterValueReplacesTheQueuedOneBehindTheHead)
{
    write("MAIN.bit", hex("01"), 1);
    write("MAIN.code3", hex("34 12"), 1);
    write("MAIN.code3", hex("78 56"), 1);
    EXPECT_EQ((Places{{17, 1}, {1000, 2}}), places(list()));
    EXPECT_EQ(hex("56 78"), list().at(1).data);
    write("MAIN.bit", hex("00"), 1);
    EXPECT_EQ((Places{{17, 1}, {1000, 2}, {17, 1}}), places(list()));
}

TEST_F(QueuedWrite, FullListDropsThePieces)
{
    for (int i = 0; i < 1023; ++i) {
        RW_VAR var = makeWrite(kArea, 100000 + i, hex("01"), 1, i);
        AddListWriteVar(&var, 1);
    }
    EXPECT_EQ(0, write("MAIN.code10", QByteArray(2400, 'x'), 1200));
    EXPECT_EQ(1024, int(list().size()));
    EXPECT_EQ(1000, list().last().address);
}

TEST_F(QueuedWrite, ImageIsLeftToTheRequestWhileTheLinkIsUp)
{
    write("MAIN.code3", hex("34 12"), 1);
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, ImageIsWrittenAtOnceWhileTheLinkIsDown)
{
    for (int failed : {1, 255}) {
        PLC_driver.localImage.clear();
        PLC_driver.writeList.clear();
        PLC_driver.failed = quint8(failed);
        EXPECT_EQ(0, write("MAIN.code3", hex("34 12"), 1));
        EXPECT_EQ(1, int(list().size()));
        EXPECT_EQ(2, bytesInImage());
        EXPECT_EQ(0x12, byteAt(1000));
        EXPECT_EQ(0x34, byteAt(1001));
    }
}

TEST_F(QueuedWrite, AllPiecesGoIntoTheImageWhileTheLinkIsDown)
{
    PLC_driver.failed = 1;
    write("MAIN.code10", QByteArray(2400, 'x'), 1200);
    EXPECT_EQ(2400, bytesInImage());
    EXPECT_EQ('x', byteAt(3399));
    PLC_driver.localImage.clear();
    write("MAIN.bit", hex("01 00 01"), 3);
    // Bits 17 and 19: bits 1 and 3 of word 1, whose low byte is at 2.
    EXPECT_EQ(0x0A, byteAt(2));
    EXPECT_EQ(2, bytesInImage());
}

TEST_F(QueuedWrite, PiecesThatAFullListDropsStillGoIntoTheImageWhileTheLinkIsDown)
{
    for (int i = 0; i < 1024; ++i) {
        RW_VAR var = makeWrite(kArea, 100000 + i, hex("01"), 1, i);
        AddListWriteVar(&var, 1);
    }
    PLC_driver.failed = 1;
    write("MAIN.code10", QByteArray(2400, 'x'), 1200);
    EXPECT_EQ(1024, int(list().size()));
    EXPECT_EQ(2400, bytesInImage());
    EXPECT_TRUE(exists(1000));
    EXPECT_TRUE(exists(3399));
}

TEST_F(QueuedWrite, CountOfZeroSendsTheBuffersOwnBytes)
{
    EXPECT_EQ(hex("12 34"), queued(3, "34 12", 0));
    EXPECT_EQ(QByteArray(), queued(3, "", 0));
}

TEST_F(QueuedWrite, NegativeCountSendsTheBuffersOwnBytes)
{
    for (int count : {-1, -2, -7, -1000, INT_MIN}) {
        EXPECT_EQ(hex("01 00"), queued(1, "07 00", count)) << count;
        EXPECT_EQ(hex("41"), queued(2, "41 00", count)) << count;
        EXPECT_EQ(hex("12 34"), queued(3, "34 12", count)) << count;
        EXPECT_EQ(hex("04 03 02 01"), queued(5, "01 02 03 04", count)) << count;
        EXPECT_EQ(hex("00 00 00 00 04 03 02 01"), queued(8, "01 02 03 04", count)) << count;
        EXPECT_EQ(hex("41 42 43"), queued(10, "41 42 43", count)) << count;
        EXPECT_EQ(hex("01 00"), queued(13, "07 00", count)) << count;
        EXPECT_EQ(QByteArray(), queued(3, "", count)) << count;
    }
}

TEST_F(QueuedWrite, LabelThatDoesNotResolveWritesNothing)
{
    PLC_driver.failed = 1;
    for (const char* label : {"MAIN.nosuch", "", "OTHER.code3", "MAIN.code12", "MAIN.code3[1]"})
        EXPECT_EQ(0, write(label, hex("34 12"), 1)) << label;
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, ReservedArgumentIsNotRead)
{
    QByteArray value = hex("34 12");
    EXPECT_EQ(0, SetRegisterData("MAIN.code3", INT_MIN, "", 5, &value, 1, 6, 7));
    EXPECT_EQ(0, SetRegisterData("MAIN.code3", INT_MAX, "", 5, &value, 1, 6, 7));
    EXPECT_EQ(2, int(list().size()));
}

TEST_F(QueuedWrite, BufferIsNotChanged)
{
    QByteArray value = hex("34 12 78");
    SetRegisterData("MAIN.code3", 0, "", 5, &value, 1, 6, 7);
    EXPECT_EQ(hex("34 12 78"), value);
}

TEST_F(QueuedWrite, NullBufferWritesNothing)
{
    PLC_driver.failed = 1;
    EXPECT_EQ(0, SetRegisterData("MAIN.code3", 0, "", 5, nullptr, 1, 6, 7));
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, WithoutSettingsNothingIsWritten)
{
    SetComInfo(nullptr);
    PLC_driver.failed = 1;
    EXPECT_EQ(0, write("MAIN.code3", hex("34 12"), 1));
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, ValueAboveTheLargestIsRefused)
{
    PLC_driver.failed = 1;
    struct Row {
        int code;
        int bytesPerCount;
    };
    const Row rows[] = {{1, 1}, {13, 1}, {2, 1}, {3, 2}, {5, 2}, {8, 2}, {10, 2}};
    for (const Row& row : rows) {
        const QString label = QString("MAIN.code%1").arg(row.code);
        const int largestCount = PLC_LARGEST_VALUE / row.bytesPerCount;
        for (int count : {largestCount + 1, INT_MAX - 3, INT_MAX})
            EXPECT_EQ(0, write(label, hex("01 02"), count)) << row.code << ", " << count;
        EXPECT_TRUE(list().isEmpty()) << row.code;
        EXPECT_EQ(0, bytesInImage()) << row.code;
    }
    EXPECT_EQ(0, write("MAIN.code1", QByteArray(PLC_LARGEST_VALUE + 1, 'x'), 1));
    EXPECT_EQ(0, write("MAIN.code10", QByteArray(PLC_LARGEST_VALUE + 1, 'x'), 1));
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, LargestValueIsTaken)
{
    write("MAIN.code1", QByteArray(PLC_LARGEST_VALUE, 'x'), PLC_LARGEST_VALUE);
    EXPECT_EQ(1024, int(list().size()));
    EXPECT_EQ(1000 + 1023 * 1000, list().last().address);
}

TEST_F(QueuedWrite, MorePiecesThanTheLimitAreRefused)
{
    PLC_driver.failed = 1;
    EXPECT_EQ(0, write("MAIN.bit", hex("01"), PLC_MOST_PIECES + 1));
    EXPECT_EQ(0, write("MAIN.bit", QByteArray(PLC_MOST_PIECES + 1, '\1'), 1));
    EXPECT_EQ(0, write("MAIN.bit", hex("01"), PLC_LARGEST_VALUE));
    EXPECT_TRUE(list().isEmpty());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(QueuedWrite, LargestRunOfBitsEndsAtOnceWhenTheListIsFull)
{
    EXPECT_EQ(0, write("MAIN.bit", hex("01"), PLC_MOST_PIECES));
    ASSERT_EQ(1024, int(list().size()));
    EXPECT_EQ(17 + 1023, list().last().address);
    // Once more, with the head's place to be queued again and all others to be replaced.
    EXPECT_EQ(0, write("MAIN.bit", QByteArray(2000, '\1'), PLC_MOST_PIECES));
    ASSERT_EQ(1024, int(list().size()));
    EXPECT_EQ(hex("01"), list().at(0).data);
    EXPECT_EQ(hex("01"), list().last().data);
}

TEST_F(QueuedWrite, ListLockIsTakenAndDataLockOnlyWhileTheLinkIsDown)
{
    QMutexLocker lock(&PLC_driver.dataMutex);
    EXPECT_EQ(0, write("MAIN.code3", hex("34 12"), 1));
    EXPECT_EQ(1, int(list().size()));
}

// --- Into the image only ---

TEST_F(ImageOnlyWrite, StoresTheFirstBytesUnconverted)
{
    settings.writeMode = 0;
    EXPECT_EQ(1, write("MAIN.code5", hex("01 02 03 04"), 2));
    EXPECT_EQ(2, bytesInImage());
    EXPECT_EQ(1, byteAt(1000));
    EXPECT_EQ(2, byteAt(1001));
    EXPECT_TRUE(list().isEmpty());
}

TEST_F(ImageOnlyWrite, IsAnyModeButTwo)
{
    for (int mode : {0, 1, 3, -2, INT_MAX}) {
        settings.writeMode = mode;
        PLC_driver.localImage.clear();
        EXPECT_EQ(1, write("MAIN.code3", hex("34 12"), 2)) << mode;
        EXPECT_EQ(0x34, byteAt(1000)) << mode;
        EXPECT_EQ(0x12, byteAt(1001)) << mode;
    }
    EXPECT_TRUE(list().isEmpty());
}

TEST_F(ImageOnlyWrite, EveryCodeButBitsStoresCountBytes)
{
    settings.writeMode = 0;
    for (int code = 0; code <= 18; ++code) {
        if (code == 12 || code == 13)
            continue;
        PLC_driver.localImage.clear();
        EXPECT_EQ(1, write(QString("MAIN.code%1").arg(code), hex("05 06 07 08"), 3)) << code;
        EXPECT_EQ(3, bytesInImage()) << code;
        EXPECT_EQ(5, byteAt(1000)) << code;
        EXPECT_EQ(6, byteAt(1001)) << code;
        EXPECT_EQ(7, byteAt(1002)) << code;
    }
}

TEST_F(ImageOnlyWrite, MissingBytesAreZero)
{
    settings.writeMode = 0;
    PLC_driver.localImage.insert(DataImage::key(kArea, 1001), 0x77);
    EXPECT_EQ(1, write("MAIN.code3", hex("34"), 3));
    EXPECT_EQ(3, bytesInImage());
    EXPECT_EQ(0x34, byteAt(1000));
    EXPECT_EQ(0, byteAt(1001));
}

TEST_F(ImageOnlyWrite, BitsAreSetAndCleared)
{
    settings.writeMode = 0;
    PLC_driver.localImage.insert(DataImage::key(kArea, 2), 0xFF);
    EXPECT_EQ(1, write("MAIN.bit", hex("01 00 07"), 4));
    // Bits 17 to 20 of the low byte: 1, 0, 1, 0.
    EXPECT_EQ(0xEB, byteAt(2));
    EXPECT_EQ(2, bytesInImage());
    EXPECT_TRUE(list().isEmpty());
}

TEST_F(ImageOnlyWrite, CountOfZeroOrLessStoresNothingAndIsDone)
{
    settings.writeMode = 0;
    for (int count : {0, -1, INT_MIN}) {
        EXPECT_EQ(1, write("MAIN.code3", hex("34 12"), count)) << count;
        EXPECT_EQ(1, write("MAIN.bit", hex("34 12"), count)) << count;
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageOnlyWrite, FailedFlagIsNotLookedAt)
{
    settings.writeMode = 0;
    for (int failed : {0, 1}) {
        PLC_driver.failed = quint8(failed);
        EXPECT_EQ(1, write("MAIN.code3", hex("34 12"), 1));
    }
    EXPECT_EQ(1, bytesInImage());
    EXPECT_TRUE(list().isEmpty());
}

TEST_F(ImageOnlyWrite, LabelThatDoesNotResolveWritesNothing)
{
    settings.writeMode = 0;
    for (const char* label : {"MAIN.nosuch", "", "OTHER.code3", "MAIN.code12", "MAIN.code3[1]"})
        EXPECT_EQ(0, write(label, hex("34 12"), 1)) << label;
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageOnlyWrite, NullBufferWritesNothing)
{
    settings.writeMode = 0;
    EXPECT_EQ(0, SetRegisterData("MAIN.code3", 0, "", 5, nullptr, 1, 6, 7));
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageOnlyWrite, ValueAboveTheLargestIsRefused)
{
    settings.writeMode = 0;
    for (int count : {PLC_LARGEST_VALUE + 1, INT_MAX}) {
        EXPECT_EQ(0, write("MAIN.code3", hex("34 12"), count)) << count;
        EXPECT_EQ(0, write("MAIN.bit", hex("34 12"), count)) << count;
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageOnlyWrite, LargestValueIsStored)
{
    settings.writeMode = 0;
    EXPECT_EQ(1, write("MAIN.code3", hex("34 12"), PLC_LARGEST_VALUE));
    EXPECT_EQ(PLC_LARGEST_VALUE, bytesInImage());
    EXPECT_EQ(0x34, byteAt(1000));
    EXPECT_TRUE(exists(1000 + PLC_LARGEST_VALUE - 1));
}

TEST_F(ImageOnlyWrite, WhatIsWrittenInPlcOrderIsReadBackInHostOrder)
{
    settings.writeMode = 0;
    EXPECT_EQ(1, write("MAIN.code3", hex("12 34"), 2));
    QByteArray value;
    EXPECT_EQ(1, GetRegisterData("MAIN.code3", 0, 0, 0, &value, 1));
    EXPECT_EQ(hex("34 12"), value);
}

// --- Both ways ---

/// The conversions in their plainest form: the loops run over the buffer and the output grows.
QByteArray plainConversion(int code, const QByteArray& value, int count)
{
    const int n = int(value.size());
    QByteArray out;
    const auto input = [&](int i) { return i < n ? value.at(i) : '\0'; };
    const auto start = [&](int size) { out = QByteArray(qMax(size, 0), '\0'); };
    const auto put = [&](int i, char byte) {
        while (int(out.size()) <= i)
            out.append('\0');
        out[i] = byte;
    };
    const auto reverse = [&](int width) {
        for (int i = 0; n > 0 && i < ((n - 1) & ~(width - 1)) + width; i += width) {
            for (int j = 0; j < width; ++j)
                put(i + j, input(i + width - 1 - j));
        }
    };
    switch (code) {
        case 1:
        case 13:
            start(count);
            for (int i = 0; i < n; ++i)
                put(i, input(i) != 0 ? 1 : 0);
            break;
        case 2:
        case 14:
        case 15:
            start(count);
            for (int j = 0; n > 0 && 2 * j < ((n - 1) & ~1) + 2; ++j)
                put(j, input(2 * j));
            break;
        case 3:
        case 4:
        case 16:
            start(2 * count);
            reverse(2);
            break;
        case 5:
        case 6:
        case 7:
        case 17:
            start((count + 1) / 2 * 4);
            reverse(4);
            break;
        case 8:
        case 9:
            start((count + 3) / 4 * 8);
            reverse(8);
            break;
        case 10:
        case 11:
            start(2 * count);
            for (int i = 0; i < n; ++i)
                put(i, input(i));
            break;
        default:
            break;
    }
    return out;
}

TEST_F(QueuedWrite, RandomValuesEqualThePlainConversions)
{
    Random random(15);
    for (int round = 0; round < 4000; ++round) {
        const int code = random.between(0, 18);
        const int count = random.oneIn(10) ? random.between(-20, 1500) : random.between(-3, 30);
        QByteArray value;
        for (int i = random.below(random.oneIn(10) ? 2500 : 40); i > 0; --i)
            value.append(char(uchar(random.oneIn(3) ? 0 : random.bits())));
        PLC_driver.writeList.clear();
        PLC_driver.localImage.clear();
        PLC_driver.failed = random.oneIn(2) ? 1 : 0;
        ASSERT_EQ(0, write(QString("MAIN.code%1").arg(code), value, count));

        const QByteArray out = plainConversion(code, value, count);
        const int pieceSize = code == 13 ? 1 : 1000;
        QByteArray sent;
        for (const RW_VAR& var : list()) {
            ASSERT_EQ(kStart + int(sent.size()), var.address);
            ASSERT_EQ(qMin(pieceSize, int(out.size() - sent.size())), var.length);
            sent += var.data;
        }
        ASSERT_EQ(code == 13 ? out.left(1024) : out, sent)
            << "code " << code << ", count " << count;
        if (code != 13) {
            ASSERT_EQ(PLC_driver.failed ? int(out.size()) : 0, bytesInImage());
            for (int i = 0; PLC_driver.failed && i < int(out.size()); ++i)
                ASSERT_EQ(uchar(out.at(i)), byteAt(kStart + i));
        }
    }
}

TEST_F(QueuedWrite, ValuesWrittenWhileTheLinkIsDownAreReadBack)
{
    PLC_driver.failed = 1;
    Random random(16);
    for (int round = 0; round < 500; ++round) {
        for (int code : {3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17}) {
            const int registers = 4 * random.between(1, 20);
            QByteArray value;
            for (int i = 0; i < 2 * registers; ++i)
                value.append(char(uchar(random.bits())));
            const QString label = QString("MAIN.code%1").arg(code);
            ASSERT_EQ(0, write(label, value, registers));
            QByteArray back;
            ASSERT_EQ(1, GetRegisterData(label, 0, 0, 0, &back, registers));
            ASSERT_EQ(value, back) << code;
        }
    }
}

TEST_F(QueuedWrite, BitsWrittenWhileTheLinkIsDownAreReadBack)
{
    PLC_driver.failed = 1;
    // More than a word apart no two bits share a byte's place.
    write("MAIN.bit", hex("01 00 01 01 00 01"), 6);
    QByteArray back;
    EXPECT_EQ(1, GetRegisterData("MAIN.bit", 0, 0, 0, &back, 6));
    EXPECT_EQ(hex("01 00 01 01 00 01"), back);
}

} // namespace
} // namespace test
} // namespace plc
