#include "gateway/model/metric_name.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

host::DataPoint point(const char* label, const char* type, int elements = 1)
{
    host::DataPoint result;
    result.label = QString::fromUtf8(label);
    result.type = values::findIecType(QString::fromLatin1(type));
    result.elements = elements;
    return result;
}

TEST(MetricName, ScopeAndMembersAreFolders)
{
    EXPECT_EQ("Plant/pump/speed", metricName(point("Plant.pump.speed", "REAL")));
}

TEST(MetricName, SubscriptsAreFolders)
{
    EXPECT_EQ("Plant/tank/1/level", metricName(point("Plant.tank[1].level", "REAL")));
    EXPECT_EQ("M/grid/-1/2", metricName(point("M.grid[-1,2]", "INT")));
    EXPECT_EQ("M/grid/1/2", metricName(point("M.grid[1, 2]", "INT")));
}

TEST(MetricName, SeveralElementsAreNamedByTheirFirstAndLast)
{
    EXPECT_EQ("M/field/4..6", metricName(point("M.field[4]", "INT", 3)));
    EXPECT_EQ("M/field/-2..0", metricName(point("M.field[-2]", "INT", 3)));
}

TEST(MetricName, LettersBeyondAsciiStay)
{
    EXPECT_EQ(QString::fromUtf8("Öfen/größe"), metricName(point("Öfen.größe", "INT")));
}

TEST(TypeText, TellsWhatTheBytesDependOn)
{
    EXPECT_EQ("INT", typeText(point("M.a", "INT")));
    EXPECT_EQ("REAL*3", typeText(point("M.a[1]", "REAL", 3)));
    host::DataPoint text = point("M.t[1]", "STRING", 2);
    text.stringLength = 20;
    EXPECT_EQ("STRING(20)*2", typeText(text));
}

} // namespace
} // namespace plc::gateway
