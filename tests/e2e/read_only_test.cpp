// A project that must not be written: nothing reaches the PLC, whichever way a write takes.

#include "tests/e2e/plant.h"
#include "tests/e2e/terminal_process.h"

namespace plc::test {
namespace {

class ReadOnly : public Plant {
protected:
    /// `settings` goes into the project.
    void begin(const char* settings)
    {
        writeProject(QByteArray(R"({
          'name': 'Dairy', 'settings': {)") +
                     settings + R"(},
          'areas': [{'index': 1, 'size': 64}],
          'scopes': [{'name': 'R', 'variables': [
            {'name': 'first', 'type': 'INT', 'area': 1, 'offset': 0}]}],
          'cyclic': ['R.first']})");
        startSimulator();
        poke(1, 0, "0005");
    }
    static constexpr char kSetting[] = "'readOnly': true";
    const QString m_reason =
        QStringLiteral("the project is read-only, by its setting readOnly or by --read-only");
};

TEST_F(ReadOnly, WriteIsWrongUsageAndDoesNotEvenConnect)
{
    begin(kSetting);
    const Outcome outcome = run("write", {QStringLiteral("R.first=7")});
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(m_reason + QStringLiteral("; nothing was sent")))
        << outcome.errors.toStdString();
    EXPECT_EQ("00 05", peek(1, 0, 2));
    useNoPort();
    usePort(1);
    EXPECT_EQ(2, run("write", {QStringLiteral("R.first=7")}).exitCode) << "not a lost link";
}

TEST_F(ReadOnly, TheOptionDoesAsTheSetting)
{
    begin("");
    EXPECT_EQ(2,
              run("write", {QStringLiteral("R.first=7"), QStringLiteral("--read-only")}).exitCode);
    EXPECT_EQ("00 05", peek(1, 0, 2));
    EXPECT_EQ(0, run("write", {QStringLiteral("R.first=7")}).exitCode);
    EXPECT_EQ("00 07", peek(1, 0, 2));
}

TEST_F(ReadOnly, RunReadsOnAndRefusesTheWritesOfItsInput)
{
    begin(kSetting);
    const std::unique_ptr<LineProcess> plc = start("run", {});
    EXPECT_FALSE(plc->waitForLine({QStringLiteral("R.first = 5")}).isEmpty());
    plc->send(QStringLiteral("write R.first=7"));
    EXPECT_FALSE(plc->waitForLine({QStringLiteral("write R.first = 7"), m_reason}).isEmpty());
    EXPECT_EQ("00 05", peek(1, 0, 2));
    poke(1, 0, "0006");
    EXPECT_FALSE(plc->waitForLine({QStringLiteral("R.first = 6")}).isEmpty());
}

TEST_F(ReadOnly, WatchAsksForNoValue)
{
    begin("");
    TerminalProcess plc(QStringLiteral(PLC_HOST),
                        arguments("watch", {QStringLiteral("--read-only"),
                                            QStringLiteral("--cycle"), QStringLiteral("20ms")}),
                        100, 24, {QStringLiteral("LC_ALL=C.UTF-8"), QStringLiteral("TERM=xterm")});
    ASSERT_TRUE(plc.waitForText("R.first"));
    ASSERT_TRUE(plc.waitForText("Dairy (read-only)"));
    plc.type("w");
    EXPECT_TRUE(plc.waitForText("the project is read-only")) << plc.screen().text().toStdString();
    plc.type("7\ry");
    poke(1, 0, "0009");
    EXPECT_TRUE(plc.waitFor([](const Screen& screen) {
        return screen.line(3).simplified().contains(QStringLiteral("R.first 9"));
    })) << plc.screen().text().toStdString();
}

} // namespace
} // namespace plc::test
