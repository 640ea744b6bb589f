#include "driver/result_codes.h"

#include <climits>

#include "support/driver_fixture.h"

namespace plc::test {
namespace {

/// One category and the host numbers of the internal codes 0 to 7.
struct CategoryRow {
    int category;
    int numbers[8];
};

void PrintTo(const CategoryRow& row, std::ostream* out)
{
    *out << "category " << row.category;
}

class ResultCodeTable : public DriverTest, public ::testing::WithParamInterface<CategoryRow> {
protected:
    ResultCodeTable()
    {
        RW_VAR var;
        var.category = GetParam().category;
        queueRequest(makeRequest(var));
    }
};

TEST_P(ResultCodeTable, GivesTheHostNumberOfEachInternalCode)
{
    for (int code = 0; code < 8; ++code)
        EXPECT_EQ(GetDriverReturnValue(code), GetParam().numbers[code]) << "internal code " << code;
}

TEST_P(ResultCodeTable, GivesTheSameNumberForEveryOtherCode)
{
    for (int code : {8, 9, 10, 100, 200, -1, -4, INT_MAX, INT_MIN})
        EXPECT_EQ(200, GetDriverReturnValue(code)) << "internal code " << code;
}

TEST_P(ResultCodeTable, ShiftsABaseByTheSameAmount)
{
    const int shift = GetParam().numbers[1] - 10;
    for (int base : {0, 10, 40, 70, 110, 140, 170, -5})
        EXPECT_EQ(SwitchErrorReturn(base), base + shift) << "base " << base;
}

INSTANTIATE_TEST_SUITE_P(
    Categories, ResultCodeTable,
    ::testing::Values(CategoryRow{0, {1, 11, 41, 71, 100, 111, 141, 171}},
                      CategoryRow{1, {1, 12, 42, 72, 100, 112, 142, 172}},
                      CategoryRow{2, {1, 13, 43, 73, 100, 113, 143, 173}},
                      CategoryRow{3, {1, 14, 44, 74, 100, 114, 144, 174}},
                      CategoryRow{4, {1, 15, 45, 75, 100, 115, 145, 175}},
                      CategoryRow{5, {1, 16, 46, 76, 100, 116, 146, 176}},
                      CategoryRow{6, {1, 17, 47, 77, 100, 117, 147, 177}},
                      CategoryRow{7, {1, 18, 48, 78, 100, 118, 148, 178}},
                      CategoryRow{8, {1, 19, 49, 79, 100, 119, 149, 179}},
                      CategoryRow{9, {1, 20, 50, 80, 100, 120, 150, 180}},
                      CategoryRow{10, {1, 21, 51, 81, 100, 121, 151, 181}},
                      CategoryRow{11, {1, 22, 52, 82, 100, 122, 152, 182}},
                      CategoryRow{12, {1, 11, 41, 71, 100, 111, 141, 171}},
                      CategoryRow{13, {1, 11, 41, 71, 100, 111, 141, 171}},
                      CategoryRow{-1, {1, 11, 41, 71, 100, 111, 141, 171}},
                      CategoryRow{-11, {1, 11, 41, 71, 100, 111, 141, 171}},
                      CategoryRow{INT_MAX, {1, 11, 41, 71, 100, 111, 141, 171}},
                      CategoryRow{INT_MIN, {1, 11, 41, 71, 100, 111, 141, 171}}));

using ResultCodes = DriverTest;

TEST_F(ResultCodes, EmptyQueueShiftsByOne)
{
    EXPECT_EQ(1, SwitchErrorReturn(0));
    EXPECT_EQ(141, SwitchErrorReturn(140));
    EXPECT_EQ(11, GetDriverReturnValue(1));
    EXPECT_EQ(171, GetDriverReturnValue(7));
    EXPECT_EQ(1, GetDriverReturnValue(0));
    EXPECT_EQ(100, GetDriverReturnValue(4));
    EXPECT_EQ(200, GetDriverReturnValue(8));
}

TEST_F(ResultCodes, OnlyTheHeadOfTheQueueDecidesTheShift)
{
    RW_VAR var;
    var.category = 2;
    queueRequest(makeRequest(var));
    var.category = 9;
    queueRequest(makeRequest(var));
    PLC_driver.reply.category = 7;
    PLC_driver.batch[0].category = 7;
    EXPECT_EQ(73, GetDriverReturnValue(3));
}

TEST_F(ResultCodes, LargestBaseIsReducedToThirtyTwoBits)
{
    RW_VAR var;
    var.category = 11;
    queueRequest(makeRequest(var));
    EXPECT_EQ(INT_MIN + 11, SwitchErrorReturn(INT_MAX));
}

TEST_F(ResultCodes, ChangeNothing)
{
    RW_VAR var;
    var.category = 3;
    queueRequest(makeRequest(var));
    GetDriverReturnValue(1);
    SwitchErrorReturn(10);
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(0, PLC_driver.reply.result);
    EXPECT_EQ(0, settings.retryCount);
}

} // namespace
} // namespace plc::test
