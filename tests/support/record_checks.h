#ifndef PLC_TESTS_SUPPORT_RECORD_CHECKS_H
#define PLC_TESTS_SUPPORT_RECORD_CHECKS_H

#include <utility>
#include <vector>

#include "support/driver_fixture.h"

namespace plc::test {

/// A record in which every member has a value of its own.
inline RW_VAR fullRecord()
{
    RW_VAR var;
    var.category = 1;
    var.aux1 = 2;
    var.aux2 = 3;
    var.aux3 = 4;
    var.deviceNo = 5;
    var.result = 6;
    var.label = "MAIN.speed";
    var.subLabel = "second";
    var.dataType = 9;
    var.address = 10;
    var.station = 11;
    var.length = 12;
    var.aux12 = 13;
    var.areaIndex = 14;
    var.data = hex("0F 10");
    return var;
}

/// As constructed.
inline void expectZeroRecord(const RW_VAR& var)
{
    EXPECT_EQ(0, var.category);
    EXPECT_EQ(0, var.aux1);
    EXPECT_EQ(0, var.aux2);
    EXPECT_EQ(0, var.aux3);
    EXPECT_EQ(0, var.deviceNo);
    EXPECT_EQ(0, var.result);
    EXPECT_TRUE(var.label.isEmpty());
    EXPECT_TRUE(var.subLabel.isEmpty());
    EXPECT_EQ(0, var.dataType);
    EXPECT_EQ(0, var.address);
    EXPECT_EQ(0, var.station);
    EXPECT_EQ(0, var.length);
    EXPECT_EQ(0, var.aux12);
    EXPECT_EQ(0, var.areaIndex);
    EXPECT_TRUE(var.data.isEmpty());
}

inline void expectEqualRecords(const RW_VAR& expected, const RW_VAR& actual)
{
    EXPECT_EQ(expected.category, actual.category);
    EXPECT_EQ(expected.aux1, actual.aux1);
    EXPECT_EQ(expected.aux2, actual.aux2);
    EXPECT_EQ(expected.aux3, actual.aux3);
    EXPECT_EQ(expected.deviceNo, actual.deviceNo);
    EXPECT_EQ(expected.result, actual.result);
    EXPECT_EQ(expected.label, actual.label);
    EXPECT_EQ(expected.subLabel, actual.subLabel);
    EXPECT_EQ(expected.dataType, actual.dataType);
    EXPECT_EQ(expected.address, actual.address);
    EXPECT_EQ(expected.station, actual.station);
    EXPECT_EQ(expected.length, actual.length);
    EXPECT_EQ(expected.aux12, actual.aux12);
    EXPECT_EQ(expected.areaIndex, actual.areaIndex);
    EXPECT_EQ(expected.data, actual.data);
}

inline void expectEqualLists(const QList<RW_VAR>& expected, const QList<RW_VAR>& actual)
{
    ASSERT_EQ(int(expected.size()), int(actual.size()));
    for (int i = 0; i < int(expected.size()); ++i) {
        SCOPED_TRACE(i);
        expectEqualRecords(expected.at(i), actual.at(i));
        if (::testing::Test::HasFailure())
            return;
    }
}

typedef std::vector<std::pair<int, int>> Places;

/// Address and length of every entry.
inline Places places(const QList<RW_VAR>& list)
{
    Places out;
    for (const RW_VAR& var : list)
        out.push_back({var.address, var.length});
    return out;
}

} // namespace plc::test

#endif
