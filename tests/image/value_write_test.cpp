#include "model/driver_model.h"
#include "model/library_side.h"
#include "tests/image/value_write_fixture.h"

namespace plc::test {
namespace {

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

TEST_F(QueuedWrite, RandomValuesEqualThePlainConversions)
{
    Random random(15);
    model::Settings modelSettings = model::fromQt(settings);
    for (int round = 0; round < 4000; ++round) {
        const int code = random.between(0, 18);
        const int count = random.oneIn(10) ? random.between(-20, 1500) : random.between(-3, 30);
        QByteArray value;
        for (int i = random.below(random.oneIn(10) ? 2500 : 40); i > 0; --i)
            value.append(char(uchar(random.oneIn(3) ? 0 : random.bits())));
        PLC_driver.writeList.clear();
        PLC_driver.localImage.clear();
        PLC_driver.failed = random.oneIn(2) ? 1 : 0;
        const QString label = QString("MAIN.code%1").arg(code);
        model::DriverModel model;
        model.setComInfo(&modelSettings);
        model.passSymbols(model::fromQt(symbols));
        model.failed = PLC_driver.failed;
        ASSERT_EQ(
            model.writeValue(model::fromQt(label), u"second", 5, model::fromQt(value), count, 6, 7),
            write(label, value, count));
        expectEqualLists(model::toQt(model.writeList), list());
        ASSERT_EQ(int(model.image.bytes().size()), bytesInImage());
        for (const auto& byte : model.image.bytes())
            ASSERT_EQ(byte.second, PLC_driver.localImage.value(byte.first));
        ASSERT_FALSE(HasFailure()) << "code " << code << ", count " << count;
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
} // namespace plc::test
