#include "cli/time_text.h"

#include <QtCore/QTimeZone>

#include <ctime>

#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

TEST(TimeText, HasItsDistanceFromUtc)
{
    const QTimeZone india("Asia/Kolkata");
    EXPECT_EQ("2025-11-21T12:10:34.525+05:30",
              timeText(QDateTime::fromMSecsSinceEpoch(1763707234525, india)));
    EXPECT_EQ("2025-11-21T06:40:34.525Z",
              timeText(QDateTime::fromMSecsSinceEpoch(1763707234525, QTimeZone::utc())));
}

TEST(TimeText, TellsTheTwoHoursApartInWhichTheClockIsSetBack)
{
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    ::tzset();
    // 2025-10-26T00:30Z and an hour later are both half past two in Berlin.
    EXPECT_EQ("2025-10-26T02:30:00.000+02:00",
              timeText(QDateTime::fromMSecsSinceEpoch(1761438600000)));
    EXPECT_EQ("2025-10-26T02:30:00.000+01:00",
              timeText(QDateTime::fromMSecsSinceEpoch(1761442200000)));
}

} // namespace
} // namespace test
} // namespace plc::cli
