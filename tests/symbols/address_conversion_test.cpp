#include "driver/label_access.h"

#include <gtest/gtest.h>

#include <climits>

#include "support/symbol_fixture.h"

namespace plc::test {
namespace {

using AddressConversion = DriverTest;
using AddressQuery = DriverTest;

TEST_F(AddressConversion, GivesTheByteAddressOfALabel)
{
    passSymbols({mainScope()});
    EXPECT_EQ(10, PLCAddressChangeIntef(0, "MAIN.speed"));
    EXPECT_EQ(120, PLCAddressChangeIntef(0, "MAIN.tab[2,3]"));
    EXPECT_EQ(228, PLCAddressChangeIntef(0, "MAIN.rec[3].b"));
    EXPECT_EQ(234, PLCAddressChangeIntef(0, "MAIN.rec[3].flags[2]"));
}

TEST_F(AddressConversion, StringAddressToIntGivesTheSame)
{
    passSymbols({mainScope()});
    EXPECT_EQ(10, StringAddressToInt(0, "MAIN.speed"));
    EXPECT_EQ(234, StringAddressToInt(0, "MAIN.rec[3].flags[2]"));
    EXPECT_EQ(-1, StringAddressToInt(0, "MAIN.nosuch"));
}

TEST_F(AddressConversion, LabelsThatDoNotResolveGiveMinusOne)
{
    passSymbols({mainScope()});
    const char* const labels[] = {"",           "MAIN",           "OTHER.speed",  "MAIN.nosuch",
                                  "MAIN.tab",   "MAIN.tab[1]",    "MAIN.rec",     "MAIN.rec[0].a",
                                  "MAIN.rec.a", "MAIN.rec[2].zz", "MAIN.speed[1]"};
    for (const char* label : labels)
        EXPECT_EQ(-1, PLCAddressChangeIntef(0, label)) << label;
}

TEST_F(AddressConversion, StructuredElementWithoutMemberGivesMinusOne)
{
    passSymbols({mainScope()});
    EXPECT_EQ(-1, PLCAddressChangeIntef(0, "MAIN.rec[1]"));
}

TEST_F(AddressConversion, SurplusPartsAfterABasicTypeDoNotCount)
{
    passSymbols({mainScope()});
    EXPECT_EQ(10, PLCAddressChangeIntef(0, "MAIN.speed.x"));
    EXPECT_EQ(10, PLCAddressChangeIntef(0, "MAIN.speed.x[9].y."));
}

TEST_F(AddressConversion, IntegerArgumentHasNoInfluence)
{
    passSymbols({mainScope()});
    for (int number : {0, 1, -1, 10, INT_MAX, INT_MIN}) {
        EXPECT_EQ(10, PLCAddressChangeIntef(number, "MAIN.speed"));
        EXPECT_EQ(10, StringAddressToInt(number, "MAIN.speed"));
        EXPECT_EQ(-1, PLCAddressChangeIntef(number, "MAIN.nosuch"));
    }
}

TEST_F(AddressConversion, BitsGiveTheBitAddress)
{
    passSymbols({scope("MAIN", {variable("bit", 13, 35, 3)})});
    EXPECT_EQ(35, PLCAddressChangeIntef(0, "MAIN.bit"));
}

TEST_F(AddressConversion, NegativeAddressIsGivenAsItIs)
{
    passSymbols({scope("MAIN", {variable("low", 3, -20, 3), variable("end", 3, -1, 3)})});
    EXPECT_EQ(-20, PLCAddressChangeIntef(0, "MAIN.low"));
    EXPECT_EQ(-1, PLCAddressChangeIntef(0, "MAIN.end"));
}

TEST_F(AddressConversion, ElementWithoutTypeGivesItsAddress)
{
    passSymbols({scope("MAIN", {variable("raw", 0, 44, 3), variable("odd", 99, 45, 3)})});
    EXPECT_EQ(44, PLCAddressChangeIntef(0, "MAIN.raw"));
    EXPECT_EQ(45, PLCAddressChangeIntef(0, "MAIN.odd"));
}

TEST_F(AddressConversion, TakesNoLock)
{
    passSymbols({mainScope()});
    PLC_driver.listMutex.lock();
    PLC_driver.dataMutex.lock();
    PLC_driver.stationMutex.lock();
    EXPECT_EQ(10, PLCAddressChangeIntef(0, "MAIN.speed"));
    PLC_driver.stationMutex.unlock();
    PLC_driver.dataMutex.unlock();
    PLC_driver.listMutex.unlock();
}

TEST_F(AddressConversion, WithoutSymbolsEveryLabelGivesMinusOne)
{
    EXPECT_EQ(-1, PLCAddressChangeIntef(0, "MAIN.speed"));
    EXPECT_EQ(-1, PLCAddressChangeIntef(0, QString()));
}

TEST_F(AddressQuery, IsZeroWhateverItIsGiven)
{
    passSymbols({mainScope()});
    EXPECT_EQ(0, get_label_address_query(QStringList(), 0));
    EXPECT_EQ(0, get_label_address_query(QStringList() << "MAIN"
                                                       << "speed",
                                         1));
    EXPECT_EQ(0, get_label_address_query(QStringList() << "MAIN", INT_MAX));
    EXPECT_EQ(0, get_label_address_query(QStringList() << "OTHER", INT_MIN));
}

} // namespace
} // namespace plc::test
