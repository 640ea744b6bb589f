#include "gateway/sparkplug/array_bytes.h"

#include <gtest/gtest.h>

#include "support/data_points.h"

namespace plc::gateway {
namespace {

using values::Value;

QByteArray hex(const char* type, const QVector<Value>& values)
{
    return arrayBytes(test::dataPoint(type), values).toHex().toUpper();
}

QVector<Value> read(const char* type, const char* hex)
{
    const Expected<QVector<Value>> values =
        arrayValues(test::dataPoint(type), QByteArray::fromHex(hex));
    return values ? *values : QVector<Value>{values.error().text};
}

struct ArrayCase {
    const char* type;
    QVector<Value> values;
    const char* hex;
};

const ArrayCase kArrays[] = {
    {"SINT*2", {qint64(-23), qint64(123)}, "E97B"},
    {"INT*2", {qint64(-30000), qint64(30000)}, "D08A3075"},
    {"DINT*2", {qint64(-1), qint64(315338746)}, "FFFFFFFFFAAFCB12"},
    {"LINT*2",
     {qint64(-4270929666821191986), qint64(-3601064768563266876)},
     "CE067 2AC189CBAC4 C4BA9C18AC7206CE"},
    {"USINT*2", {quint64(23), quint64(250)}, "17FA"},
    {"UINT*2", {quint64(30), quint64(52360)}, "1E0088CC"},
    {"UDINT*2", {quint64(52), quint64(3293969225)}, "34000000 49FB55C4"},
    {"ULINT*2", {quint64(52), quint64(16444743074749521625u)}, "3400000000000000 D99E02D1B27637E4"},
    // 1.23 is 3F9D70A4, 89.341 is 42B2AE98; 12.354213 is 4028B55B6805A2D7.
    {"REAL*2", {1.23f, 89.341f}, "A4709D3F 98AEB242"},
    {"LREAL*1", {12.354213}, "D7A205685BB52840"},
    {"TIME*2", {quint64(1), quint64(4294967295)}, "01000000 FFFFFFFF"},
    // The first is the highest bit: 0011 0100, 1101 and four that mean nothing.
    {"BOOL*12",
     {false, false, true, true, false, true, false, false, true, true, false, true},
     "0C000000 34D0"},
    {"BIT*8", {true, false, false, false, false, false, false, true}, "08000000 81"},
};

TEST(ArrayBytes, AreLittleEndianAndPacked)
{
    for (const ArrayCase& array : kArrays) {
        const QByteArray expected = QByteArray::fromHex(array.hex).toHex().toUpper();
        EXPECT_EQ(expected, hex(array.type, array.values)) << array.type;
        EXPECT_EQ(array.values, read(array.type, array.hex)) << array.type;
    }
}

TEST(ArrayBytes, TextsEndWithAZero)
{
    EXPECT_EQ("4142430068656C6C6F00",
              hex("STRING(5)*2", {QStringLiteral("ABC"), QStringLiteral("hello")}));
    EXPECT_EQ("00C3B600", hex("WSTRING(5)*2", {QString(), QString::fromUtf8("ö")}));
}

TEST(ArrayBytes, OfAnotherNumberOfElementsAreRefused)
{
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 values are expected, not 1")}),
              read("INT*2", "0100"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 values are expected, not 3")}),
              read("INT*2", "010002000300"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("3 bytes are no whole number of values of 2 bytes")}),
              read("INT*2", "010002"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 values are expected, not 0")}), read("INT*2", ""));
}

TEST(ArrayBytes, OfTruthValuesMustBeAsManyAsTheyTell)
{
    EXPECT_EQ((QVector<Value>{QStringLiteral("an array of truth values begins with their count")}),
              read("BOOL*2", "020000"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 values are expected, not 3")}),
              read("BOOL*2", "0300000080"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 values are expected, not 4294967295")}),
              read("BOOL*2", "FFFFFFFF80"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 truth values do not stand in 2 bytes")}),
              read("BOOL*2", "020000008000"));
    EXPECT_EQ((QVector<Value>{QStringLiteral("2 truth values do not stand in 0 bytes")}),
              read("BOOL*2", "02000000"));
}

} // namespace
} // namespace plc::gateway
