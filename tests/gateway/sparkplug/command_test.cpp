#include "gateway/sparkplug/command.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/data_points.h"

namespace plc::gateway {
namespace {

using values::Value;

/// What becomes of a metric whose value is `hex`, field and all.
Expected<QVector<Value>> commanded(const char* type, const char* hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    wire::CommandMetric command;
    EXPECT_TRUE(command.ParseFromArray(bytes.constData(), int(bytes.size())));
    Metric metric;
    metric.point = test::dataPoint(type);
    return commandedValues(metric, command);
}

struct GoodCommand {
    const char* type;
    const char* hex; ///< Fields as in metric_writer_test.cpp.
    Value value;
};

const GoodCommand kGood[] = {
    {"BOOL", "7001", true},
    {"BIT", "7000", false},
    {"SINT", "50FFFFFFFF0F", qint64(-1)},
    {"SINT", "5080FFFFFF0F", qint64(-128)},
    {"SINT", "507F", qint64(127)},
    {"INT", "508080FEFF0F", qint64(-32768)},
    {"DINT", "508080808008", qint64(-2147483647 - 1)},
    {"LINT", "5880808080808080808001", std::numeric_limits<qint64>::min()},
    {"USINT", "50FF01", quint64(255)},
    {"UDINT", "50FFFFFFFF0F", quint64(4294967295)},
    {"UDINT", "58FFFFFFFF0F", quint64(4294967295)}, // as some hosts do
    {"DINT", "58FFFFFFFFFFFFFFFFFF01", qint64(-1)},
    {"ULINT", "58FFFFFFFFFFFFFFFFFF01", std::numeric_limits<quint64>::max()},
    {"TIME", "50D209", quint64(1234)},
    {"REAL", "650000C03F", 1.5f},
    {"LREAL", "6900000000000002C0", -2.25},
    {"STRING(4)", "7A064772C3BCC39F", QStringLiteral("Gr\u00FC\u00DF")},
    {"INT",
     "2002"
     "5005",
     qint64(5)}, // with its type, Int16
};

TEST(CommandedValue, IsExact)
{
    for (const GoodCommand& good : kGood) {
        const Expected<QVector<Value>> values = commanded(good.type, good.hex);
        ASSERT_TRUE(values) << good.type << " " << good.hex << " "
                            << values.error().text.toStdString();
        EXPECT_EQ(QVector<Value>{good.value}, *values) << good.type << " " << good.hex;
    }
}

TEST(CommandedValue, OfSeveralElementsIsAnArray)
{
    const Expected<QVector<Value>> numbers = commanded("INT*2", "820104D08A3075");
    ASSERT_TRUE(numbers);
    EXPECT_EQ((QVector<Value>{qint64(-30000), qint64(30000)}), *numbers);
    const Expected<QVector<Value>> bits = commanded("BOOL*3",
                                                    "820105"
                                                    "03000000"
                                                    "A0");
    ASSERT_TRUE(bits);
    EXPECT_EQ((QVector<Value>{true, false, true}), *bits);
}

struct BadCommand {
    const char* type;
    const char* hex;
    const char* error;
};

const BadCommand kBad[] = {
    {"USINT", "50AC02", "300 is outside the range of USINT, 0 to 255"},
    {"SINT", "50FF01", "255 is outside the range of SINT, -128 to 127"},
    {"SINT", "50FFFEFFFF0F", "-129 is outside the range of SINT, -128 to 127"},
    {"UINT", "50FFFFFFFF0F", "4294967295 is outside the range of UINT, 0 to 65535"},
    {"DINT", "58FFFFFFFF0F", "4294967295 is outside the range of DINT, -2147483648 to 2147483647"},
    {"LINT", "5005", "the value is not in the field that is for Int64"},
    {"INT", "650000C03F", "the value is not in the field that is for Int16"},
    {"REAL", "6900000000000002C0", "the value is not in the field that is for Float"},
    {"REAL", "5005", "the value is not in the field that is for Float"},
    {"LREAL", "650000C03F", "the value is not in the field that is for Double"},
    {"BOOL", "5001", "the value is not in the field that is for Boolean"},
    {"STRING(4)", "5005", "the value is not in the field that is for String"},
    {"INT", "7A0135", "the value is not in the field that is for Int16"},
    {"INT", "", "the value is not in the field that is for Int16"},
    {"INT", "38015005", "null is no value that can be written"},
    {"INT", "20035005", "the value is told to be Int32, the metric is Int16"},
    {"INT", "20635005", "the value is told to be data type 99, the metric is Int16"},
    {"REAL", "650000C07F", "\"nan\" is no number"},
    {"REAL", "65000080FF", "\"-inf\" is no number"},
    {"LREAL", "69000000000000F07F", "\"inf\" is no number"},
    {"STRING(2)", "7A03616263", "\"'abc'\" has 3 characters and the STRING has room for 2"},
    {"STRING(4)", "7A02C328", "the text is no UTF-8"},
    {"INT*2",
     "82010401000200"
     "8201020100",
     "2 values are expected, not 1"},
    {"INT*2", "5005", "the value is not in the field that is for Int16Array"},
    {"INT", "8201020500", "the value is not in the field that is for Int16"},
    {"REAL*2", "8201080000C03F0000C07F", "\"nan\" is no number"},
    {"STRING(4)*2", "82010461006200", "texts are written one by one, each by its own label"},
};

TEST(CommandedValue, IsRefusedWithItsReason)
{
    for (const BadCommand& bad : kBad) {
        const Expected<QVector<Value>> values = commanded(bad.type, bad.hex);
        ASSERT_FALSE(values) << bad.type << " " << bad.hex;
        EXPECT_EQ(bad.error, values.error().text) << bad.type << " " << bad.hex;
    }
}

QString errorOf(const QByteArray& payload)
{
    const Expected<wire::Command> command = parseCommand(payload);
    return command ? QStringLiteral("no error") : command.error().text;
}

TEST(CommandPayload, WithoutMetricsIsRefused)
{
    EXPECT_EQ("it has no metrics", errorOf(QByteArray()));
    EXPECT_EQ("it has no metrics", errorOf(QByteArray::fromHex("0802")));
}

TEST(CommandPayload, ThatIsNoneIsRefused)
{
    const char* payloads[] = {
        "FF",       // a tag that does not end
        "00",       // field 0
        "1205",     // a metric that is cut off
        "12022F2F", // a group in a metric that nothing began
        "1202"
        "5080",             // a number that does not end
        "0C",               // an end without a beginning
        "7B4B4B",           // groups that do not end
        "FFFFFFFFFFFFFFFF", // a tag of more than 32 bits
    };
    for (const char* payload : payloads)
        EXPECT_EQ("its bytes are no Sparkplug payload", errorOf(QByteArray::fromHex(payload)))
            << payload;
    EXPECT_EQ("its bytes are no Sparkplug payload", errorOf("{\"value\":1}"));
}

TEST(CommandPayload, HoldsAThousandMetricsAtMost)
{
    const QByteArray metric = QByteArray::fromHex("120410055001");
    EXPECT_EQ("no error", errorOf(metric.repeated(1000)));
    EXPECT_EQ("it has more than 1000 metrics", errorOf(metric.repeated(1001)));
    EXPECT_EQ("it has more than 1000 metrics", errorOf(QByteArray("\x12\x00", 2).repeated(500000)));
}

TEST(CommandPayload, HasAMebibyteAtMost)
{
    EXPECT_EQ("it has 1048577 bytes, more than 1048576", errorOf(QByteArray(1048577, '\x12')));
}

TEST(CommandPayload, NestedDeeplyIsSkippedOrRefused)
{
    // A data set in a data set in …, which nobody reads.
    QByteArray nested;
    while (nested.size() < 30000)
        nested = QByteArray::fromHex("8A01") + char(0x80 | (nested.size() & 0x7F)) +
                 char(0x80 | (nested.size() >> 7 & 0x7F)) + char(nested.size() >> 14) + nested;
    const QByteArray metric = QByteArray("\x10\x05\x50\x01", 4) + nested;
    QByteArray payload("\x12", 1);
    payload += char(0x80 | (metric.size() & 0x7F));
    payload += char(0x80 | (metric.size() >> 7 & 0x7F));
    payload += char(metric.size() >> 14);
    EXPECT_EQ("no error", errorOf(payload + metric));
    // Groups, which can only be skipped by following them down.
    EXPECT_EQ("its bytes are no Sparkplug payload", errorOf(QByteArray(500000, '\x7B')));
}

} // namespace
} // namespace plc::gateway
