// The program `plc` and a PLC whose memory is another one in each reply: the process is stopped
// while replies are on their way, or nobody reads what it prints. All that it prints or logs is
// held against the PLC's own record.

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>

#include <memory>

#include "faults/host_process.h"
#include "faults/run_options.h"
#include "faults/stamped_server.h"
#include "faults/told_lines.h"
#include "support/random.h"

namespace plc::faults {
namespace {

constexpr int kReplyTimeout = 300; // ms
/// What may pass between the moment that a line tells and the printing of its time.
constexpr qint64 kPrintingTolerance = 120; // ms
constexpr int kProcessPatience = 60000;    // ms
constexpr int kRounds = 3;

class StampedProcess : public ::testing::TestWithParam<std::uint32_t> {
protected:
    StampedProcess()
    {
        m_settings.maxReadBytes = m_random.oneIn(2) ? 900 : 200;
        m_settings.replyTimeout = kReplyTimeout;
        m_settings.connectTimeout = 1000;
        m_settings.staleAfter = 2 * kReplyTimeout;
        QFile file(projectPath());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(projectJson(m_settings, kStampedArrays));
    }

    QString projectPath() const { return m_folder.filePath(QStringLiteral("project.json")); }
    void start(const char* command, const QStringList& options)
    {
        m_host = std::make_unique<HostProcess>(
            QStringList{QString::fromLatin1(command), QStringLiteral("--project"), projectPath(),
                        QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY),
                        QStringLiteral("--port"), QString::number(m_server.port())} +
            options);
    }

    /// The PLC answers meanwhile.
    void wait(int milliseconds)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < milliseconds)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    }
    void readFor(int milliseconds)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < milliseconds) {
            wait(10);
            readLines();
        }
    }
    void readToTheEnd()
    {
        QElapsedTimer clock;
        clock.start();
        while (m_host->isRunning() && clock.elapsed() < kProcessPatience) {
            wait(10);
            readLines();
        }
        readLines();
        ASSERT_FALSE(m_host->isRunning());
    }
    virtual void readLines()
    {
        m_host->readLines(
            [this](const QByteArray& line) { judge(toldByRun(line), kPrintingTolerance); });
    }

    void standStill()
    {
        wait(m_random.between(0, 20));
        m_host->stop();
        wait(m_random.between(2 * kReplyTimeout, 3 * kReplyTimeout));
        m_host->resume();
    }

    void judge(std::optional<ToldValue> told, qint64 tolerance)
    {
        if (!told)
            return;
        ++m_judged;
        told->readAt -= tolerance;
        const QString lie = m_judge.judgeValue(*told, -1);
        if (!lie.isEmpty() && ++m_lies <= 3)
            ADD_FAILURE() << lie.toStdString();
    }
    void expectThatValuesWereJudged()
    {
        EXPECT_GE(m_judged, int(kStampedArrays.size())) << m_host->errors().toStdString();
        if (HasFailure()) {
            GTEST_FAIL() << m_lies << " of " << m_judged
                         << " values were not so; repeat it with: " << runOptions().program
                         << " --seed " << GetParam() << " --gtest_filter='*StampedProcess*'";
        }
    }

    test::Random m_random{GetParam()};
    HostSettings m_settings;
    QTemporaryDir m_folder;
    StampedPlc m_plc{200, 30};
    StampedServer m_server{&m_plc, m_random.between(0, 5)};
    TruthJudge m_judge{&m_plc.record()};
    std::unique_ptr<HostProcess> m_host;
    int m_judged = 0;
    int m_lies = 0;
};

TEST_P(StampedProcess, PrintsWhatWasSoWhenItIsStoppedMeanwhile)
{
    start("run", {QStringLiteral("--json"), QStringLiteral("--interval"), QStringLiteral("10")});
    readFor(500);
    for (int round = 0; round < kRounds; ++round) {
        standStill();
        readFor(300);
    }
    m_host->interrupt();
    readToTheEnd();
    expectThatValuesWereJudged();
}

TEST_P(StampedProcess, PrintsWhatWasSoWhenNobodyReadsItsOutputMeanwhile)
{
    start("run", {QStringLiteral("--json"), QStringLiteral("--interval"), QStringLiteral("10")});
    readFor(300);
    for (int round = 0; round < kRounds; ++round) {
        wait(m_random.between(2 * kReplyTimeout, 3 * kReplyTimeout));
        readFor(300);
    }
    m_host->interrupt();
    readToTheEnd();
    expectThatValuesWereJudged();
}

TEST_P(StampedProcess, LogsWhatWasSoWhenItIsStoppedMeanwhile)
{
    const QString log = m_folder.filePath(QStringLiteral("values.csv"));
    start("log", {QStringLiteral("--output"), log});
    wait(500);
    for (int round = 0; round < kRounds; ++round) {
        standStill();
        wait(300);
    }
    m_host->interrupt();
    readToTheEnd();
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    while (!file.atEnd()) {
        // A record is of the time at which its reply was taken, which is in time.
        judge(toldByLog(file.readLine().trimmed()), kReplyTimeout + kPrintingTolerance);
    }
    expectThatValuesWereJudged();
}

TEST_P(StampedProcess, ReadsWhatWasSo)
{
    QStringList labels{QStringLiteral("--json")};
    for (const Array& array : kStampedArrays)
        labels.append(wholeArray(array));
    const qint64 startedAt = QDateTime::currentMSecsSinceEpoch();
    start("read", labels);
    while (m_host->isRunning())
        wait(10);
    m_host->readLines(
        [this, startedAt](const QByteArray& line) { judge(toldByRead(line, startedAt), 0); });
    expectThatValuesWereJudged();
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(StampedProcess);
INSTANTIATE_TEST_SUITE_P(Seed, StampedProcess, ::testing::ValuesIn(seedsOfProcesses()),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace plc::faults
