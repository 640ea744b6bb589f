#include "tests/image/value_write_fixture.h"

namespace plc::test {
namespace {

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

} // namespace
} // namespace plc::test
