#include "gateway/sparkplug/metric_writer.h"

#include <gtest/gtest.h>

#include "support/data_points.h"

namespace plc::gateway {
namespace {

/// A metric with a good value, as it goes over the wire, in hex: its time and what follows.
QByteArray sampleHex(const char* type, const char* bytes)
{
    Metric metric;
    metric.point = test::dataPoint(type);
    Sample sample;
    sample.time = 1;
    sample.quality = Quality::Good;
    sample.isQualityNew = false;
    sample.bytes = QByteArray::fromHex(bytes);
    wire::Metric target;
    writeSample(metric, sample, &target);
    return QByteArray::fromStdString(target.SerializeAsString()).toHex().toUpper();
}

struct ValueCase {
    const char* type;
    const char* bytes; ///< Of the driver: least significant first, wide characters most.
    const char* wire;  ///< Field and value.
};

// Fields: 50 int (10), 58 long (11), 65 float (12), 69 double (13), 70 boolean (14), 7A text (15),
// 8201 bytes (16). Integers have seven bits a byte, the lowest first.
const ValueCase kValues[] = {
    {"BOOL", "00", "7000"},
    {"BOOL", "01", "7001"},
    {"BIT", "01", "7001"},
    {"SINT", "FF", "50FFFFFFFF0F"},
    {"SINT", "80", "5080FFFFFF0F"},
    {"SINT", "7F", "507F"},
    {"USINT", "FF", "50FF01"},
    {"BYTE", "80", "508001"},
    {"INT", "FFFF", "50FFFFFFFF0F"},
    {"INT", "0080", "508080FEFF0F"},
    {"INT", "FF7F", "50FFFF01"},
    {"UINT", "FFFF", "50FFFF03"},
    {"WORD", "0080", "50808002"},
    {"DINT", "FFFFFFFF", "50FFFFFFFF0F"},
    {"DINT", "00000080", "508080808008"},
    {"DINT", "FFFFFF7F", "50FFFFFFFF07"},
    {"UDINT", "FFFFFFFF", "50FFFFFFFF0F"},
    {"DWORD", "00000080", "508080808008"},
    {"LINT", "FFFFFFFFFFFFFFFF", "58FFFFFFFFFFFFFFFFFF01"},
    {"LINT", "0000000000000080", "5880808080808080808001"},
    {"LINT", "FFFFFFFFFFFFFF7F", "58FFFFFFFFFFFFFFFF7F"},
    {"ULINT", "FFFFFFFFFFFFFFFF", "58FFFFFFFFFFFFFFFFFF01"},
    {"LWORD", "0100000000000000", "5801"},
    {"REAL", "0000C03F", "650000C03F"},
    {"REAL", "FFFF7F7F", "65FFFF7F7F"},
    {"REAL", "0000C07F", "650000C07F"},
    {"LREAL", "00000000000002C0", "6900000000000002C0"},
    {"LREAL", "FFFFFFFFFFFFEF7F", "69FFFFFFFFFFFFEF7F"},
    {"TIME", "D2040000", "50D209"},
    {"STRING(4)", "4772FCDF", "7A064772C3BCC39F"},
    {"STRING(4)", "00", "7A00"},
    {"WSTRING(2)", "20AC0000", "7A03E282AC"},
    {"WSTRING(2)", "D83DDE00", "7A04F09F9880"},
    {"WSTRING(1)", "D83D", "7A03EFBFBD"},
    {"INT*2", "D08A3075", "820104D08A3075"},
    {"BOOL*3", "010001", "820105 03000000A0"},
};

TEST(WrittenSample, HasTheBytesOfItsType)
{
    for (const ValueCase& value : kValues) {
        const QByteArray expected =
            QByteArray::fromHex(QByteArray("1801") + value.wire).toHex().toUpper();
        EXPECT_EQ(expected, sampleHex(value.type, value.bytes)) << value.type << " " << value.bytes;
    }
}

TEST(WrittenSample, TextsOfAnArrayStandAtTheirOwnDistance)
{
    // The elements are 255 bytes apart.
    const QByteArray bytes = QByteArray("41420000").leftJustified(2 * 255, '0') + "4300";
    EXPECT_EQ(
        "1801820105"
        "4142004300",
        sampleHex("STRING(3)*2", bytes.constData()));
}

TEST(WrittenSample, NeverReadIsNull)
{
    EXPECT_EQ("18013801", sampleHex("INT", ""));
}

wire::Metric written(Quality quality, bool isNew)
{
    Metric metric;
    metric.point = test::dataPoint("INT");
    Sample sample;
    sample.quality = quality;
    sample.isQualityNew = isNew;
    sample.bytes = QByteArray::fromHex("0500");
    wire::Metric target;
    writeSample(metric, sample, &target);
    return target;
}

/// The code, or -1 where none is told.
int qualityOf(const wire::Metric& metric)
{
    if (metric.properties().keys_size() != 1 || metric.properties().keys(0) != "Quality")
        return -1;
    EXPECT_EQ(1, metric.properties().values_size());
    EXPECT_EQ(3u, metric.properties().values(0).type()); // Int32
    return int(metric.properties().values(0).int_value());
}

TEST(WrittenQuality, IsToldWhereItIsNotGood)
{
    EXPECT_EQ(500, qualityOf(written(Quality::Stale, true)));
    EXPECT_EQ(500, qualityOf(written(Quality::Stale, false)));
    EXPECT_EQ(0, qualityOf(written(Quality::Bad, true)));
    EXPECT_EQ(0, qualityOf(written(Quality::Bad, false)));
}

TEST(WrittenQuality, GoodIsToldOnceWhenItIsNew)
{
    EXPECT_EQ(192, qualityOf(written(Quality::Good, true)));
    EXPECT_EQ(-1, qualityOf(written(Quality::Good, false)));
}

TEST(WrittenQuality, LeavesTheLastKnownValue)
{
    EXPECT_EQ(5u, written(Quality::Stale, true).int_value());
    EXPECT_FALSE(written(Quality::Stale, true).has_is_null());
}

wire::Metric described(const char* type, const char* unit, const char* description)
{
    Metric metric;
    metric.name = QString::fromUtf8("Öfen/1/größe");
    metric.point = test::dataPoint(type);
    metric.point.unit = QString::fromUtf8(unit);
    metric.point.description = QString::fromUtf8(description);
    wire::Metric target;
    describe(metric, &target);
    return target;
}

TEST(Description, HasNameTypeUnitAndDescription)
{
    const wire::Metric metric = described("REAL", "°C", "temperature of the first oven");
    EXPECT_EQ("Öfen/1/größe", metric.name());
    EXPECT_EQ(9u, metric.datatype());
    ASSERT_EQ(2, metric.properties().keys_size());
    ASSERT_EQ(2, metric.properties().values_size());
    EXPECT_EQ("engUnit", metric.properties().keys(0));
    EXPECT_EQ("°C", metric.properties().values(0).string_value());
    EXPECT_EQ(12u, metric.properties().values(0).type()); // String
    EXPECT_EQ("description", metric.properties().keys(1));
    EXPECT_EQ("temperature of the first oven", metric.properties().values(1).string_value());
    EXPECT_EQ(12u, metric.properties().values(1).type());
}

TEST(Description, TellsNothingThatIsEmpty)
{
    EXPECT_FALSE(described("REAL", "", "").has_properties());
    EXPECT_EQ(1, described("REAL", "", "oven").properties().keys_size());
}

TEST(Description, TimesAreInMilliseconds)
{
    EXPECT_EQ("ms", described("TIME", "", "").properties().values(0).string_value());
    EXPECT_EQ("ticks", described("TIME", "ticks", "").properties().values(0).string_value());
}

} // namespace
} // namespace plc::gateway
