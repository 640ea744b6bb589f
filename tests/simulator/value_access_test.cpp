#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "simulator/value_access.h"
#include "tests/simulator/frame_bytes.h"
#include "values/iec_types.h"

namespace plc::simulator {
namespace {

using test::bytes;
using test::hex;

class ValueAccess : public testing::Test {
protected:
    project::LabelTarget place(const char* type, int length = 0)
    {
        m_variable.type = values::findIecType(QLatin1String(type));
        m_variable.stringLength = length;
        project::LabelTarget target;
        target.variable = &m_variable;
        target.area = 1;
        target.address = values::isBit(*m_variable.type) ? 4 * 16 + 3 : 4;
        return target;
    }

    /// Bytes that the text becomes, or the error.
    std::string stored(const char* type, const char* text, int size, int length = 0)
    {
        m_memory.write(1, 0, QByteArray(40, '\x55'));
        const Expected<void> isStored =
            storeText(&m_memory, place(type, length), QString::fromUtf8(text));
        if (!isStored) {
            EXPECT_EQ(QByteArray(40, '\x55'), m_memory.read(1, 0, 40));
            return isStored.error().text.toStdString();
        }
        EXPECT_EQ(QByteArray(4, '\x55'), m_memory.read(1, 0, 4));
        EXPECT_EQ(QByteArray(36 - size, '\x55'), m_memory.read(1, quint32(4 + size), 36 - size));
        return hex(m_memory.read(1, 4, size));
    }

    std::string shown(const char* type, const char* memory, int length = 0)
    {
        m_memory.write(1, 4, bytes(memory));
        return loadText(m_memory, place(type, length)).toStdString();
    }

    std::string storedNumber(const char* type, double number, int size)
    {
        storeNumber(&m_memory, place(type), number);
        return hex(m_memory.read(1, 4, size));
    }

    project::Variable m_variable;
    PlcMemory m_memory{{{1, 40}}};
};

TEST_F(ValueAccess, TextsBecomeBigEndianBytes)
{
    EXPECT_EQ("01", stored("BOOL", "true", 1));
    EXPECT_EQ("00", stored("BOOL", "0", 1));
    EXPECT_EQ("fe", stored("SINT", "-2", 1));
    EXPECT_EQ("c8", stored("USINT", "200", 1));
    EXPECT_EQ("ff", stored("BYTE", "16#FF", 1));
    EXPECT_EQ("12 34", stored("INT", "4660", 2));
    EXPECT_EQ("80 00", stored("INT", "-32768", 2));
    EXPECT_EQ("ff ff", stored("UINT", "65535", 2));
    EXPECT_EQ("00 0a", stored("WORD", "2#1010", 2));
    EXPECT_EQ("ff ff ff ff", stored("DINT", "-1", 4));
    EXPECT_EQ("3f 80 00 00", stored("REAL", "1", 4));
    EXPECT_EQ("00 00 05 dc", stored("TIME", "T#1500ms", 4));
    EXPECT_EQ("00 01 5f 90", stored("TIME", "T#1m30s", 4));
    EXPECT_EQ("c0 04 00 00 00 00 00 00", stored("LREAL", "-2.5", 8));
    EXPECT_EQ("80 00 00 00 00 00 00 00", stored("LINT", "-9223372036854775808", 8));
    EXPECT_EQ("ff ff ff ff ff ff ff ff", stored("ULINT", "18446744073709551615", 8));
    EXPECT_EQ("41 e4 00 00", stored("STRING", "A\xc3\xa4", 4, 3));
    EXPECT_EQ("00 41 20 ac 00 00 00 00", stored("WSTRING", "A\xe2\x82\xac", 8, 3));
    EXPECT_EQ("68 69 00 00", stored("STRING", "'hi'", 4, 3));
    EXPECT_EQ("27 0a 00 00", stored("STRING", "'$'$N'", 4, 3));
    EXPECT_EQ("7f c0 00 00", stored("REAL", "REAL#nan", 4));
}

TEST_F(ValueAccess, WhatIsNoValueOfTheTypeIsRefusedAndStoresNothing)
{
    const auto expectRefusal = [this](const char* type, const char* text, const char* part,
                                      int length = 0) {
        EXPECT_THAT(stored(type, text, 0, length), testing::HasSubstr(part)) << type;
    };
    expectRefusal("BOOL", "2", "\"2\" is no BOOL");
    expectRefusal("SINT", "128", "128 is outside the range of SINT, -128 to 127");
    expectRefusal("UINT", "-1", "-1 is outside the range of UINT, 0 to 65535");
    expectRefusal("WORD", "65536", "65536 is outside the range of WORD, 16#0 to 16#FFFF");
    expectRefusal("WORD", "7#1", "\"7#1\" is no whole number, which WORD takes");
    expectRefusal("INT", "1.5", "\"1.5\" is no whole number, which INT takes");
    expectRefusal("INT", "", "\"\" is no whole number, which INT takes");
    expectRefusal("ULINT", "18446744073709551616", "is outside the range of ULINT");
    expectRefusal("REAL", "1e39", "1e39 cannot be held by REAL");
    expectRefusal("LREAL", "nan", "\"nan\" is no number; write LREAL#nan if it is meant");
    expectRefusal("TIME", "1500", "\"1500\" is no duration such as T#1m30s");
    expectRefusal("STRING", "four", "has 4 characters and the STRING has room for 3", 3);
    expectRefusal("STRING", "\xe2\x82\xac", "which a STRING cannot hold", 3);
}

TEST_F(ValueAccess, BytesAreShownAsTheTypeHasThem)
{
    EXPECT_EQ("TRUE", shown("BOOL", "05"));
    EXPECT_EQ("-2", shown("SINT", "fe"));
    EXPECT_EQ("254", shown("USINT", "fe"));
    EXPECT_EQ("-32768", shown("INT", "80 00"));
    EXPECT_EQ("16#00AB", shown("WORD", "00 ab"));
    EXPECT_EQ("4294967295", shown("UDINT", "ff ff ff ff"));
    EXPECT_EQ("T#49d17h2m47s295ms", shown("TIME", "ff ff ff ff"));
    EXPECT_EQ("-0.1", shown("REAL", "bd cc cc cd"));
    EXPECT_EQ("-1", shown("LINT", "ff ff ff ff ff ff ff ff"));
    EXPECT_EQ("18446744073709551615", shown("ULINT", "ff ff ff ff ff ff ff ff"));
    EXPECT_EQ("16#0123456789ABCDEF", shown("LWORD", "01 23 45 67 89 ab cd ef"));
    EXPECT_EQ("'A\xc3\xa4'", shown("STRING", "41 e4 00 42", 3));
    EXPECT_EQ("\"\xe2\x82\xac\"", shown("WSTRING", "20 ac 00 00 00 41 00 00", 3));
}

TEST_F(ValueAccess, TextWithoutEndIsReadToItsCapacity)
{
    EXPECT_EQ("'ABCD'", shown("STRING", "41 42 43 44 45", 3));
}

TEST_F(ValueAccess, BitsChangeAlone)
{
    m_memory.write(1, 4, bytes("00 00"));
    EXPECT_TRUE(storeText(&m_memory, place("BIT"), QStringLiteral("true")));
    EXPECT_EQ("00 08", hex(m_memory.read(1, 4, 2)));
    EXPECT_EQ("TRUE", loadText(m_memory, place("BIT")).toStdString());
    EXPECT_EQ(1.0, loadNumber(m_memory, place("BIT")));
}

TEST_F(ValueAccess, NumbersAreRoundedAndKeptInRange)
{
    EXPECT_EQ("7f", storedNumber("SINT", 1000.0, 1));
    EXPECT_EQ("80", storedNumber("SINT", -1000.0, 1));
    EXPECT_EQ("00", storedNumber("USINT", -0.4, 1));
    EXPECT_EQ("00 03", storedNumber("INT", 2.5, 2));
    EXPECT_EQ("7f ff ff ff ff ff ff ff", storedNumber("LINT", 1e30, 8));
    EXPECT_EQ("80 00 00 00 00 00 00 00", storedNumber("LINT", -1e30, 8));
    EXPECT_EQ("ff ff ff ff ff ff ff ff", storedNumber("ULINT", 1e30, 8));
    EXPECT_EQ("7f 7f ff ff", storedNumber("REAL", 1e300, 4));
    EXPECT_EQ("00 00", storedNumber("INT", std::nan(""), 2));
    EXPECT_EQ("7f ff", storedNumber("INT", std::numeric_limits<double>::infinity(), 2));
    EXPECT_EQ("00", storedNumber("BOOL", 0.49, 1));
    EXPECT_EQ("01", storedNumber("BOOL", 0.5, 1));
}

TEST_F(ValueAccess, NumbersComeBackAsStored)
{
    for (const char* type : {"SINT", "USINT", "INT", "UINT", "DINT", "UDINT", "REAL", "LREAL",
                             "LINT", "ULINT", "BYTE", "WORD", "DWORD", "LWORD", "TIME"}) {
        for (const double number : {0.0, 1.0, 100.0}) {
            storeNumber(&m_memory, place(type), number);
            EXPECT_EQ(number, loadNumber(m_memory, place(type))) << type;
        }
    }
    for (const char* type : {"SINT", "INT", "DINT", "REAL", "LREAL", "LINT"}) {
        storeNumber(&m_memory, place(type), -5.0);
        EXPECT_EQ(-5.0, loadNumber(m_memory, place(type))) << type;
    }
}

} // namespace
} // namespace plc::simulator
