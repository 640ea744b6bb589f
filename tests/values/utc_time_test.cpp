#include "values/utc_time.h"

#include <gtest/gtest.h>

namespace plc::values {
namespace {

TEST(UtcTime, HasMillisecondsAlways)
{
    EXPECT_EQ("1970-01-01T00:00:00.000Z", utcTimeText(0).toStdString());
    EXPECT_EQ("2001-09-09T01:46:40.007Z", utcTimeText(1000000000007).toStdString());
    EXPECT_EQ("1969-12-31T23:59:59.999Z", utcTimeText(-1).toStdString());
}

} // namespace
} // namespace plc::values
