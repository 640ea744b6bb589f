#include <gtest/gtest.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <vector>

#include "support/free_port.h"

namespace {

constexpr int kPatience = 30000; // ms, for what is expected to happen

constexpr char kTank[] = R"({"name": "One tank", "areas": [{"index": 1, "size": 64}],
  "scopes": [{"name": "TANK", "variables": [
    {"name": "level", "type": "UINT", "area": 1, "offset": 10}]}]})";

/// A program that runs until the end of the test.
class Program {
public:
    Program(const char* path, const QStringList& arguments)
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QString::fromLocal8Bit(path), arguments);
    }
    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished(kPatience);
    }

    /// Its next line; an empty text when none comes.
    QString line()
    {
        QElapsedTimer clock;
        clock.start();
        while (!m_process.canReadLine() && !clock.hasExpired(kPatience)) {
            if (!m_process.waitForReadyRead(100) && m_process.state() == QProcess::NotRunning)
                break;
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }
    /// Whether it prints this line, sooner or later.
    bool prints(const char* expected)
    {
        for (QString next = line(); !next.isEmpty(); next = line()) {
            if (next == QLatin1String(expected))
                return true;
        }
        return false;
    }

private:
    QProcess m_process;
};

class HostExamples : public ::testing::Test {
protected:
    /// A simulator with the tank; returns its port, which nobody else takes when it has ended.
    QString startPlc(const QString& port = QString::number(plc::test::freePort()))
    {
        const QString project = m_folder.filePath(QStringLiteral("tank.json"));
        QFile file(project);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(kTank);
        file.close();
        m_plcs.push_back(std::make_unique<Program>(
            PLC_SIMULATOR, QStringList{project, QStringLiteral("--port"), port}));
        return m_plcs.back()->line().section(QLatin1Char(':'), -1);
    }

    void endPlc() { m_plcs.pop_back(); }

private:
    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<Program>> m_plcs;
};

TEST_F(HostExamples, PollReadsAgainAndAgain)
{
    Program host(PLC_HOST_POLL, {QStringLiteral(PLC_LIBRARY), startPlc()});
    EXPECT_EQ("TANK.level 0", host.line().toStdString());
    EXPECT_EQ("TANK.level 0", host.line().toStdString());
}

TEST_F(HostExamples, PollComesBackWithThePlc)
{
    const QString port = startPlc();
    endPlc();
    Program host(PLC_HOST_POLL, {QStringLiteral(PLC_LIBRARY), port});
    startPlc(port);
    EXPECT_EQ("TANK.level 0", host.line().toStdString());
}

TEST_F(HostExamples, QtWritesAndReads)
{
    Program host(PLC_HOST_QT, {QStringLiteral(PLC_LIBRARY), startPlc()});
    EXPECT_TRUE(host.prints("written"));
    EXPECT_TRUE(host.prints("TANK.level 47"));
}

TEST_F(HostExamples, AnotherThreadWrites)
{
    Program host(PLC_HOST_FRONT, {QStringLiteral(PLC_LIBRARY), startPlc()});
    EXPECT_EQ("done", host.line().toStdString());
}

TEST_F(HostExamples, OfManyPlcsOneGoesAndComesBackAlone)
{
    const QStringList ports{startPlc(), startPlc(), startPlc()};
    Program host(PLC_HOST_MANY, QStringList{QStringLiteral(PLC_LIBRARY)} + ports);
    EXPECT_TRUE(host.prints("3 of 3 PLCs"));
    endPlc();
    EXPECT_TRUE(host.prints("2 of 3 PLCs"));
    startPlc(ports.last());
    EXPECT_TRUE(host.prints("3 of 3 PLCs"));
}

TEST_F(HostExamples, FiftyPlcsFitIntoOneProcess)
{
    QStringList arguments{QStringLiteral(PLC_LIBRARY)};
    const QString port = startPlc();
    for (int i = 0; i < 50; ++i)
        arguments.append(port);
    Program host(PLC_HOST_MANY, arguments);
    EXPECT_TRUE(host.prints("50 of 50 PLCs"));
}

int linesOf(const char* example)
{
    QFile file(QStringLiteral(PLC_SOURCE_DIR "/docs/examples/") + QLatin1String(example));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return int(file.readAll().count('\n'));
}

TEST(HostExampleSources, AreShort)
{
    EXPECT_LE(linesOf("host_poll.cpp"), 80);
    EXPECT_LE(linesOf("host_qt.cpp"), 40);
}

} // namespace
