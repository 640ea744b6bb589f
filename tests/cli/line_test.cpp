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
    EXPECT_EQ(assignment("Main.speed=5").point.label, "Main.speed");
    EXPECT_EQ(assignment("Main.speed = 5").values, QVector<values::Value>{qint64(5)});
    EXPECT_EQ(assignment("Main.text=a=b").values, QVector<values::Value>{QStringLiteral("a=b")});
    EXPECT_EQ(assignment("Main.bytes[0]*2=1,2").values,
              (QVector<values::Value>{quint64(1), quint64(2)}));
}

TEST_F(LineTest, WrongAssignmentIsExplained)
{
    EXPECT_EQ(complaint("Main.speed"), "LABEL=VALUE is expected, not \"Main.speed\"");
    EXPECT_EQ(complaint("Main.speed=x"), "Main.speed: \"x\" is no whole number, which INT takes");
    EXPECT_THAT(complaint("Main.sped=1").toStdString(), ::testing::HasSubstr("speed"));
}

TEST_F(LineTest, ValueIsFollowedByItsUnitUnlessItNamesItItself)
{
    EXPECT_EQ(valueLine(point("Main.speed"), QStringLiteral("5")), "Main.speed = 5 rpm");
    EXPECT_EQ(valueLine(point("Main.count"), QStringLiteral("5")), "Main.count = 5");
    host::DataPoint time = point("Main.time");
    time.unit = QStringLiteral("ms");
    EXPECT_EQ(valueLine(time, QStringLiteral("T#1s")), "Main.time = T#1s");
}

TEST_F(LineTest, OutcomeOfAWriteNamesLabelAndValue)
{
    EXPECT_EQ(writeLine(assignment("Main.speed=5"), host::TransferOutcome()),
              "Main.speed = 5 rpm: done");
    EXPECT_EQ(writeLine(assignment("Main.speed=5"),
                        host::TransferOutcome::notSent(QStringLiteral("off"))),
              "Main.speed = 5 rpm (area 1 address 4): not sent: off");
}

TEST_F(LineTest, JsonKeepsTheOrderOfItsMembers)
{
    JsonLine line;
    addWrite(assignment("Main.speed=5"), host::TransferOutcome::notSent(QStringLiteral("\"off\"")),
             &line);
    EXPECT_EQ(line.text(),
              "{\"label\":\"Main.speed\",\"type\":\"INT\",\"unit\":\"rpm\",\"value\":5,"
              "\"outcome\":\"unsent\",\"error\":\"not sent: \\\"off\\\"\"}");
    JsonLine other;
    other.add("whole", qint64(-5))
        .add("part", 0.54, 1)
        .addFlag("yes", true)
        .addJson("none", "null");
    EXPECT_EQ(other.text(), "{\"whole\":-5,\"part\":0.5,\"yes\":true,\"none\":null}");
}

TEST_F(LineTest, LinkIsToldInWords)
{
    const QString peer = QStringLiteral("plc:1200");
    EXPECT_EQ(linkText(host::LinkState::Connecting, peer, QString(), -1), "connecting to plc:1200");
    EXPECT_EQ(linkText(host::LinkState::Up, peer, QString(), -1), "connected to plc:1200");
    EXPECT_EQ(linkText(host::LinkState::Down, peer, QStringLiteral("no reply within 1000 ms"), 500),
              "link to plc:1200 lost: no reply within 1000 ms; next attempt in 500 ms");
    EXPECT_EQ(linkText(host::LinkState::Down, peer, QStringLiteral("stopped"), -1),
              "closed the link to plc:1200");
}

} // namespace
} // namespace test
} // namespace plc::cli
