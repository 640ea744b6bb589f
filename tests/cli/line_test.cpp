#include "cli/assignment.h"
#include "cli/run_view.h"
#include "cli/value_lines.h"
#include "tests/host/host_fixture.h"

namespace plc::cli {
namespace test {

using host::test::HostTest;
namespace {

class LineTest : public HostTest {
protected:
    Assignment assignment(const char* text)
    {
        const Expected<Assignment> parsed =
            parseAssignment(runtime->points(), QString::fromUtf8(text));
        EXPECT_TRUE(parsed) << parsed.error().text.toStdString();
        return parsed.valueOr(Assignment());
    }
    QString complaint(const char* text)
    {
        const Expected<Assignment> parsed =
            parseAssignment(runtime->points(), QString::fromUtf8(text));
        EXPECT_FALSE(parsed) << text;
        return parsed ? QString() : parsed.error().text;
    }
};

TEST_F(LineTest, AssignmentIsSplitAtItsFirstSign)
{
    EXPECT_EQ("Main.speed", assignment("Main.speed=5").point.label);
    EXPECT_EQ(QVector<values::Value>{qint64(5)}, assignment("Main.speed = 5").values);
    EXPECT_EQ(QVector<values::Value>{QStringLiteral("a=b")}, assignment("Main.text=a=b").values);
    EXPECT_EQ((QVector<values::Value>{quint64(1), quint64(2)}),
              assignment("Main.bytes[0]*2=1,2").values);
}

TEST_F(LineTest, WrongAssignmentIsExplained)
{
    EXPECT_EQ("LABEL=VALUE is expected, not \"Main.speed\"", complaint("Main.speed"));
    EXPECT_EQ("Main.speed: \"x\" is no whole number, which INT takes", complaint("Main.speed=x"));
    EXPECT_THAT(complaint("Main.sped=1").toStdString(), ::testing::HasSubstr("speed"));
}

TEST_F(LineTest, ValueIsFollowedByItsUnitUnlessItNamesItItself)
{
    EXPECT_EQ("Main.speed = 5 rpm", valueLine(point("Main.speed"), QStringLiteral("5")));
    EXPECT_EQ("Main.count = 5", valueLine(point("Main.count"), QStringLiteral("5")));
    host::DataPoint time = point("Main.time");
    time.unit = QStringLiteral("ms");
    EXPECT_EQ("Main.time = T#1s", valueLine(time, QStringLiteral("T#1s")));
}

TEST_F(LineTest, OutcomeOfAWriteNamesLabelAndValue)
{
    EXPECT_EQ("Main.speed = 5 rpm: done",
              writeLine(assignment("Main.speed=5"), host::TransferOutcome()));
    EXPECT_EQ("Main.speed = 5 rpm (area 1 address 4): not sent: off",
              writeLine(assignment("Main.speed=5"),
                        host::TransferOutcome::notSent(QStringLiteral("off"))));
}

TEST_F(LineTest, JsonKeepsTheOrderOfItsMembers)
{
    JsonLine line;
    addWrite(assignment("Main.speed=5"), host::TransferOutcome::notSent(QStringLiteral("\"off\"")),
             &line);
    EXPECT_EQ(
        "{\"label\":\"Main.speed\",\"type\":\"INT\",\"unit\":\"rpm\",\"value\":5,"
        "\"outcome\":\"unsent\",\"error\":\"not sent: \\\"off\\\"\"}",
        line.text());
    JsonLine other;
    other.add("whole", qint64(-5))
        .add("part", 0.54, 1)
        .addFlag("yes", true)
        .addJson("none", "null");
    EXPECT_EQ("{\"whole\":-5,\"part\":0.5,\"yes\":true,\"none\":null}", other.text());
}

TEST_F(LineTest, LinkIsToldInWords)
{
    const QString peer = QStringLiteral("plc:1200");
    EXPECT_EQ("connecting to plc:1200", linkText(host::LinkState::Connecting, peer, QString(), -1));
    EXPECT_EQ("connected to plc:1200", linkText(host::LinkState::Up, peer, QString(), -1));
    EXPECT_EQ(
        "link to plc:1200 lost: no reply within 1000 ms; next attempt in 500 ms",
        linkText(host::LinkState::Down, peer, QStringLiteral("no reply within 1000 ms"), 500));
    EXPECT_EQ("closed the link to plc:1200",
              linkText(host::LinkState::Down, peer, QStringLiteral("stopped"), -1));
}

} // namespace
} // namespace test
} // namespace plc::cli
