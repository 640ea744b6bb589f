#include "cli/progress.h"

#include <gtest/gtest.h>

namespace plc::cli {
namespace test {
namespace {

ProgressMeter meter(qint64 total = 1000)
{
    return ProgressMeter(QStringLiteral("import"), QStringLiteral("lines"), total, 5000);
}

std::string textAfter(qint64 total, qint64 done, qint64 time)
{
    ProgressMeter result = meter(total);
    result.advance(done, 5000 + time);
    return result.text().toStdString();
}

TEST(ProgressMeter, ShowsShareRateAndRest)
{
    // 420 lines in 2 s are 210 a second; 580 are left.
    EXPECT_EQ("import: 42 %, 210 lines/s, 3 s left", textAfter(1000, 420, 2000));
    EXPECT_EQ("import: 50 %, 1.25k lines/s, 4 s left", textAfter(10000, 5000, 4000));
    EXPECT_EQ("import: 10 %, 7.5 lines/s, 2 min 0 s left", textAfter(1000, 100, 13333));
    // 1 in a second, 4319 left.
    EXPECT_EQ("import: 0 %, 1 lines/s, 1 h 11 min left", textAfter(4320, 1, 1000));
    EXPECT_EQ("import: 1 %, 12.5M lines/s, 1 min 39 s left", textAfter(1250000000, 12500000, 1000));
}

TEST(ProgressMeter, ShowsWhatIsDoneWhenTheTotalIsNotKnown)
{
    EXPECT_EQ("import: 420 lines, 210 lines/s", textAfter(0, 420, 2000));
}

TEST(ProgressMeter, ShowsNoRestBeforeAnythingIsDone)
{
    EXPECT_EQ("import: 0 %, 0 lines/s", meter().text().toStdString());
    EXPECT_EQ("import: 0 %, 0 lines/s", textAfter(1000, 0, 3000));
}

TEST(ProgressMeter, SaysHundredPercentOnlyWhenAllIsDone)
{
    EXPECT_EQ("import: 99 %, 999 lines/s, 0 s left", textAfter(1000, 999, 1000));
    EXPECT_EQ("import: 100 %, 1k lines/s, 0 s left", textAfter(1000, 1000, 1000));
    EXPECT_EQ("import: 100 %, 2k lines/s, 0 s left", textAfter(1000, 2000, 1000));
}

TEST(ProgressMeter, RateIsThatOfTheLastTenSeconds)
{
    ProgressMeter result = meter(100000);
    for (int second = 1; second <= 20; ++second)
        result.advance(100 * second, 5000 + 1000 * second);
    EXPECT_DOUBLE_EQ(100, result.rate());
    // Ten seconds at 10 a second; the first ones are forgotten.
    for (int second = 1; second <= 10; ++second)
        result.advance(2000 + 10 * second, 25000 + 1000 * second);
    EXPECT_DOUBLE_EQ(10, result.rate());
}

TEST(ProgressMeter, RateSinksWhileNothingIsDone)
{
    ProgressMeter result = meter();
    result.advance(100, 6000);
    EXPECT_DOUBLE_EQ(100, result.rate());
    result.advance(100, 9000);
    EXPECT_DOUBLE_EQ(25, result.rate());
    result.advance(100, 60000);
    result.advance(100, 71000);
    EXPECT_DOUBLE_EQ(0, result.rate());
}

TEST(ProgressMeter, KeepsTheRateOfManySmallSteps)
{
    ProgressMeter result = meter(10000000);
    for (int step = 1; step <= 3600 * 100; ++step)
        result.advance(step, 5000 + 10 * step);
    EXPECT_DOUBLE_EQ(100, result.rate());
}

class ProgressLine : public testing::Test {
protected:
    Progress::Output output()
    {
        return [this](const QByteArray& bytes) { written += bytes; };
    }
    std::string taken()
    {
        const std::string text = written.toStdString();
        written.clear();
        return text;
    }

    QByteArray written;
};

TEST_F(ProgressLine, IsQuietForTheFirstHalfSecond)
{
    {
        Progress progress(meter(), 5000, output(), 80);
        progress.advance(900, 5499);
    }
    EXPECT_EQ("", taken());
}

TEST_F(ProgressLine, IsRewrittenInPlaceTenTimesASecond)
{
    Progress progress(meter(), 5000, output(), 80);
    progress.advance(250, 5500);
    EXPECT_EQ("\r\x1b[Kimport: 25 %, 500 lines/s, 2 s left", taken());
    progress.advance(260, 5599);
    EXPECT_EQ("", taken());
    progress.advance(300, 5600);
    EXPECT_EQ("\r\x1b[Kimport: 30 %, 500 lines/s, 1 s left", taken());
}

TEST_F(ProgressLine, IsTakenAwayAtTheEndOnce)
{
    {
        Progress progress(meter(), 5000, output(), 80);
        progress.advance(250, 6000);
        taken();
        progress.clear();
        EXPECT_EQ("\r\x1b[K", taken());
    }
    EXPECT_EQ("", taken());
    {
        Progress progress(meter(), 5000, output(), 80);
        progress.advance(250, 6000);
        taken();
    }
    EXPECT_EQ("\r\x1b[K", taken());
}

TEST_F(ProgressLine, LeavesTheLastColumnFree)
{
    Progress progress(meter(), 5000, output(), 13);
    progress.advance(250, 5500);
    EXPECT_EQ("\r\x1b[Kimport: 25 %", taken());
}

TEST_F(ProgressLine, WritesNothingWithoutATerminal)
{
    Progress progress(meter(), 5000, Progress::Output(), 80);
    progress.advance(250, 60000);
    progress.clear();
    EXPECT_EQ("", taken());
}

} // namespace
} // namespace test
} // namespace plc::cli
