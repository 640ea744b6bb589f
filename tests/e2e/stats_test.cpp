// plc stats: what it counts against what the simulator did.

#include <QtCore/QJsonArray>

#include <csignal>

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

constexpr char kStatsProject[] = R"({
  'name': 'Measured',
  'settings': {'replyTimeout': 5000, 'reconnectDelay': 10, 'reconnectDelayLimit': 10,
               'retryLimit': 2},
  'areas': [{'index': 3, 'size': 64}],
  'scopes': [{'name': 'MAIN', 'variables': [
    {'name': 'speed', 'type': 'INT', 'area': 3, 'offset': 10},
    {'name': 'beside', 'type': 'INT', 'area': 3, 'offset': 12}]}],
  'cyclic': ['MAIN.speed', 'MAIN.beside']
})";

class Stats : public Plant {
protected:
    Stats() { writeProject(kStatsProject); }

    void measure(const QStringList& arguments, int exitCode = 0)
    {
        const Outcome outcome = run(
            "stats",
            QStringList{QStringLiteral("--json"), QStringLiteral("--for"), QStringLiteral("2")} +
                arguments);
        EXPECT_EQ(exitCode, outcome.exitCode) << testing::PrintToString(outcome);
        ASSERT_EQ(1, outcome.lines.size()) << testing::PrintToString(outcome);
        m_stats = parseJson(outcome.lines.first());
        ASSERT_FALSE(m_stats.isEmpty()) << testing::PrintToString(outcome);
    }
    int number(const char* name) const { return m_stats.value(QLatin1String(name)).toInt(-1); }
    double time(const char* name) const
    {
        return m_stats.value(QLatin1String("roundTrip"))
            .toObject()
            .value(QLatin1String(name))
            .toDouble(-1);
    }
    QJsonArray list(const char* name) const { return m_stats.value(QLatin1String(name)).toArray(); }

private:
    QJsonObject m_stats;
};

TEST_F(Stats, CountWhatAPlcThatFaresWellWasAsked)
{
    startSimulator();
    measure({QStringLiteral("--cycle"), QStringLiteral("10")});
    EXPECT_GE(number("requests"), 2 + 10);
    EXPECT_GE(status("requests"), number("accepted"));
    EXPECT_LE(status("requests"), number("requests"));
    EXPECT_EQ(0, number("refused"));
    EXPECT_EQ(0, number("unanswered"));
    EXPECT_EQ(0, number("retries"));
    EXPECT_EQ(1, number("logins"));
    EXPECT_EQ(0, number("reconnects"));
    EXPECT_EQ(1, number("roundTripsToValues"));
    // Two values in each read; one login.
    const int reads = number("accepted") - 2;
    EXPECT_EQ(2 * reads, number("values"));
    // One entry of four bytes each time: 26 bytes ask for it, 17 answer.
    EXPECT_EQ(20 + 23 + 26 * (number("requests") - 2), number("bytesSent"));
    EXPECT_EQ(206 + 36 + 17 * reads, number("bytesReceived"));
    EXPECT_GE(number("duration"), 2000);
    EXPECT_TRUE(list("failures").isEmpty());
    EXPECT_TRUE(list("linkLosses").isEmpty());
}

TEST_F(Stats, MeasureTheRoundTrip)
{
    startSimulator({QStringLiteral("--reply-delay"), QStringLiteral("20")});
    measure({QStringLiteral("--cycle"), QStringLiteral("0")});
    EXPECT_GE(time("count"), 4);
    EXPECT_GE(time("p50"), 19);
    EXPECT_LE(time("p50"), time("p90"));
    EXPECT_LE(time("p90"), time("p99"));
    EXPECT_LE(time("p99"), time("max"));
    EXPECT_LE(time("max"), number("duration"));
}

TEST_F(Stats, CountRefusedReadsByTheStatusOfThePlc)
{
    startSimulator();
    writeProject(QByteArray(kStatsProject)
                     .replace("'size': 64", "'size': 640")
                     .replace("'offset': 12", "'offset': 600"));
    measure({QStringLiteral("MAIN.beside")}, 1);
    ASSERT_EQ(1, list("refusals").size());
    const QJsonObject refusal = list("refusals").first().toObject();
    EXPECT_EQ(0x31, refusal.value(QLatin1String("status")).toInt());
    // Asked for once before another login and three times behind it; the next attempt comes ten
    // seconds later.
    EXPECT_EQ(4, refusal.value(QLatin1String("count")).toInt());
    EXPECT_EQ(4, number("refused"));
    EXPECT_EQ(0, list("failures").size());
    EXPECT_EQ(0, number("values"));
}

TEST_F(Stats, CountLossesOfTheLinkByTheirReasons)
{
    startSimulator({QStringLiteral("--drop-replies"), QStringLiteral("1")});
    measure({QStringLiteral("--timeout"), QStringLiteral("2000"), QStringLiteral("--for"),
             QStringLiteral("4.5")});
    EXPECT_EQ(1, number("unanswered"));
    EXPECT_EQ(1, number("reconnects"));
    EXPECT_EQ(2, number("logins"));
    ASSERT_EQ(1, list("linkLosses").size());
    const QJsonObject loss = list("linkLosses").first().toObject();
    EXPECT_EQ("no reply within 2000 ms",
              loss.value(QLatin1String("reason")).toString().toStdString());
    EXPECT_EQ(1, loss.value(QLatin1String("count")).toInt());
}

TEST_F(Stats, ThatNobodyAnsweredHaveExitCode1)
{
    usePort(1);
    measure({}, 1);
    EXPECT_EQ(0, number("requests"));
    EXPECT_EQ(0, time("count"));
}

TEST_F(Stats, AreASummaryInAPipe)
{
    startSimulator();
    const Outcome outcome = run("stats", {QStringLiteral("--for"), QStringLiteral("2")});
    EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_EQ(14, outcome.lines.size()) << testing::PrintToString(outcome);
    EXPECT_TRUE(outcome.lines.value(0).startsWith(QStringLiteral("Measured at 127.0.0.1:")));
    EXPECT_TRUE(outcome.lines.value(12).startsWith(QStringLiteral("round trip      p50 ")));
    EXPECT_EQ("first values             1 round trip after the login, at most",
              outcome.lines.value(13).toStdString());
    EXPECT_FALSE(outcome.lines.join(QString()).contains(QChar(0x1b)));
}

TEST_F(Stats, AreToldWhenTheUserEndsThem)
{
    startSimulator();
    const std::unique_ptr<LineProcess> process = start("stats", {QStringLiteral("--json")});
    while (status("requests") < 3 && process->isRunning()) {
    }
    ::kill(pid_t(process->pid()), SIGINT);
    EXPECT_EQ(0, process->exitCode());
    EXPECT_EQ(1, process->restOfOutput().size());
}

} // namespace
} // namespace plc::test
