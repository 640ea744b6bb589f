#include "panel/model/moment.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

TEST(Moment, GoesBackByBothClocks)
{
    const Moment moment = Moment{10000, 700}.before(250);
    EXPECT_EQ(9750, moment.time);
    EXPECT_EQ(450, moment.steady);
}

} // namespace
} // namespace plc::panel
