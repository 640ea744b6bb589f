#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "capture_file.h"

namespace plc {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const QStringList kReadTwice = {QStringLiteral("-2")};
const QStringList kCheckedSums = {QStringLiteral("-o"), QStringLiteral("ip.check_checksum:TRUE"),
                                  QStringLiteral("-o"), QStringLiteral("tcp.check_checksum:TRUE")};

CaptureFile& wholeSession(CaptureFile* capture)
{
    capture->open().login();
    capture->client("bbbb 00000014 2e00 00000001 0003 0000000a 00001389 0001 1234"); // odd: 5001
    capture->server(QByteArray::fromHex("bbbb 00001390 0000 00000001 00") + QByteArray(5001, 'x'));
    return capture->close();
}

TEST(Capture, PacketsHaveGoodChecksums)
{
    CaptureFile capture;
    wholeSession(&capture);

    const std::vector<Row> rows =
        capture.rows({"ip.checksum.status", "tcp.checksum.status"}, kCheckedSums + filter("tcp"));
    EXPECT_THAT(rows, SizeIs(3 + 4 + 1 + 4 + 3));
    EXPECT_THAT(rows, ::testing::Each(Row{"1", "1"}));
}

TEST(Capture, ConnectionIsWholeAndInSequence)
{
    CaptureFile capture;
    wholeSession(&capture);

    EXPECT_THAT(capture.rows({"frame.number", "_ws.expert.message"}, filter("tcp.analysis.flags")),
                IsEmpty());
    // 31: opened, data, closed
    EXPECT_THAT(capture.rows({"tcp.completeness"}, kReadTwice + filter("frame.number == 1")),
                ElementsAre(Row{"31"}));
}

TEST(Capture, BrokenConnectionIsSeenAsSuch)
{
    CaptureFile capture;
    capture.open().login().reset();

    // 47: opened, data, reset
    EXPECT_THAT(capture.rows({"tcp.completeness"}, kReadTwice + filter("frame.number == 1")),
                ElementsAre(Row{"47"}));
}

TEST(Capture, TimesAreExactToTheNanosecond)
{
    CaptureFile capture;
    capture.wait(std::chrono::nanoseconds(123456789)).login();

    EXPECT_THAT(capture.rows({"frame.time_epoch"}, filter("frame.number <= 2")),
                ElementsAre(Row{"1750000000.123456789"}, Row{"1750000000.124456789"}));
}

} // namespace
} // namespace plc
