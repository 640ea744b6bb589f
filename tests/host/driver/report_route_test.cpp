#include "host/driver/report_route.h"

#include <gtest/gtest.h>

#include <memory>

namespace plc::host {
namespace {

TEST(ReportRoute, EachGetsItsOwnReportsOnce)
{
    ReportRoute one;
    ReportRoute two;
    ASSERT_NE(one.hostTag(), two.hostTag());
    ReportRoute::deliver(two.hostTag(), 1, 17, 2);
    EXPECT_TRUE(one.take().empty());
    const std::vector<DriverReport> reports = two.take();
    ASSERT_EQ(1u, reports.size());
    EXPECT_EQ(1, reports[0].category);
    EXPECT_EQ(17, reports[0].tag);
    EXPECT_EQ(2, reports[0].status);
    EXPECT_TRUE(two.take().empty());
}

TEST(ReportRoute, ReportForOneThatHasEndedIsDropped)
{
    auto ended = std::make_unique<ReportRoute>();
    ReportRoute other;
    const int tag = ended->hostTag();
    ended.reset();
    ReportRoute::deliver(tag, 1, 17, 1);
    EXPECT_TRUE(other.take().empty());
}

TEST(ReportRoute, TagOfOneThatHasEndedIsUsedAgain)
{
    auto ended = std::make_unique<ReportRoute>();
    const ReportRoute other;
    const int tag = ended->hostTag();
    ended.reset();
    EXPECT_EQ(tag, ReportRoute().hostTag());
}

} // namespace
} // namespace plc::host
