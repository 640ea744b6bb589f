#include "panel/model/plc_link.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

TEST(PlcLink, IsConnectingUntilSomethingIsKnown)
{
    EXPECT_EQ(PlcLink::Connecting, PlcLink().state);
}

TEST(PlcLink, IsToldInTheWordsOfTheInterface)
{
    EXPECT_STREQ("up", linkWord(PlcLink::Up));
    EXPECT_STREQ("connecting", linkWord(PlcLink::Connecting));
    EXPECT_STREQ("down", linkWord(PlcLink::Down));
}

} // namespace
} // namespace plc::panel
