// plc log: what is in the file, also after the program was killed.

#include <sys/resource.h>
#include <unistd.h>
#include <csignal>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

// The counter goes on by one fifty times a second.
constexpr char kLogProject[] = R"({
  'name': 'Logged',
  'settings': {'staleAfter': 20000, 'replyTimeout': 20000, 'reconnectDelay': 50,
               'reconnectDelayLimit': 100},
  'areas': [{'index': 1, 'size': 256}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0},
    {'name': 'counter', 'type': 'UDINT', 'area': 1, 'offset': 4,
     'signal': {'kind': 'counter', 'from': 0, 'to': 4000000000, 'interval': 0.02}},
    {'name': 'text', 'type': 'STRING', 'length': 10, 'area': 1, 'offset': 20},
    {'name': 'table', 'type': 'INT', 'area': 1, 'offset': 40, 'array': [[1, 3]]}]}],
  'cyclic': ['R.a']
})";

class Logging : public Plant {
protected:
    Logging()
    {
        writeProject(kLogProject);
        startSimulator();
        poke(1, 0, "0001");
    }
    void setStaleAfter(const char* milliseconds)
    {
        writeProject(
            QByteArray(kLogProject)
                .replace("'staleAfter': 20000", QByteArray("'staleAfter': ") + milliseconds));
    }

    std::unique_ptr<LineProcess> log(const QString& file, const QStringList& options)
    {
        return start("log", QStringList{QStringLiteral("--output"), file, QStringLiteral("--cycle"),
                                        QStringLiteral("10")} +
                                options);
    }
    QString path(const QString& name) const
    {
        return projectPath().section(QLatin1Char('/'), 0, -2) + QLatin1Char('/') + name;
    }
    static QByteArray content(const QString& file)
    {
        QFile opened(file);
        opened.open(QIODevice::ReadOnly);
        return opened.readAll();
    }
    static QList<QByteArray> lines(const QString& file)
    {
        QList<QByteArray> list = content(file).split('\n');
        list.removeAll(QByteArray());
        return list;
    }
    /// Waits until the file holds so many lines, each as a write() leaves them.
    static bool waitForLines(const QString& file, int count)
    {
        return waitUntil([&] { return lines(file).size() >= count; });
    }
    static bool waitForText(const QString& file, const char* text)
    {
        return waitUntil([&] { return content(file).contains(text); });
    }
    static void end(LineProcess& process, int signal)
    {
        ASSERT_EQ(0, kill(pid_t(process.pid()), signal));
        process.exitCode();
    }
    /// Each line has its four fields, and the counter never goes back. An export tells of gaps.
    static void expectWhole(const QString& file)
    {
        const QList<QByteArray> all = lines(file);
        ASSERT_FALSE(all.isEmpty());
        EXPECT_EQ("time,label,value,state", all.first().toStdString());
        EXPECT_TRUE(content(file).endsWith('\n'));
        qint64 last = -1;
        for (int i = 1; i < int(all.size()); ++i) {
            const QList<QByteArray> fields = all[i].split(',');
            ASSERT_EQ(4, fields.size()) << all[i].toStdString();
            EXPECT_EQ(24, fields[0].size()) << all[i].toStdString();
            EXPECT_EQ("R.counter", fields[1].toStdString());
            if (fields[3] == "gap") {
                EXPECT_EQ("", fields[2].toStdString());
                continue;
            }
            EXPECT_LE(last, fields[2].toLongLong()) << all[i].toStdString();
            EXPECT_EQ("fresh", fields[3].toStdString()) << all[i].toStdString();
            last = fields[2].toLongLong();
        }
    }
    /// The log in a database as CSV, under a name that is not taken yet. It does not exist when
    /// there is no log in the database.
    QString exported(const QString& database)
    {
        const QString file = path(QStringLiteral("export%1.csv").arg(++m_exports));
        const Outcome outcome =
            run("log", {QStringLiteral("--export"), database, QStringLiteral("--output"), file});
        EXPECT_EQ(outcome.exitCode == 0, QFile::exists(file)) << testing::PrintToString(outcome);
        return file;
    }

    template <typename Condition>
    static bool waitUntil(Condition condition)
    {
        QElapsedTimer patience;
        patience.start();
        while (!condition()) {
            if (patience.elapsed() > kPatience)
                return false;
            ::usleep(10000);
        }
        return true;
    }

private:
    int m_exports = 0;
};

const QString kCounter = QStringLiteral("R.counter");

TEST_F(Logging, EveryChangeIsALineWithTimeLabelValueAndState)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = log(
        file, {QStringLiteral("R.a"), QStringLiteral("R.text"), QStringLiteral("R.table[1]*3")});
    ASSERT_TRUE(waitForLines(file, 4));
    poke(1, 0, "FFFE");
    ASSERT_TRUE(waitForText(file, ",R.a,-2,fresh\n"));
    end(*plc, SIGINT);
    EXPECT_EQ(0, plc->exitCode());
    EXPECT_TRUE(plc->restOfOutput()
                    .join(QLatin1Char(' '))
                    .contains(QStringLiteral("a.csv: 4 records in ")));
    const QList<QByteArray> all = lines(file);
    ASSERT_EQ(5, all.size()) << content(file).toStdString();
    EXPECT_EQ("time,label,value,state", all[0].toStdString());
    EXPECT_EQ(",R.a,1,fresh", all[1].mid(24).toStdString());
    EXPECT_EQ(",R.text,'',fresh", all[2].mid(24).toStdString());
    EXPECT_EQ(",R.table[1]*3,\"[0, 0, 0]\",fresh", all[3].mid(24).toStdString());
    EXPECT_EQ(",R.a,-2,fresh", all[4].mid(24).toStdString());
}

TEST_F(Logging, WithoutLabelsTheCyclicOnesAreLogged)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = log(file, {});
    EXPECT_TRUE(waitForText(file, ",R.a,1,fresh\n"));
}

TEST_F(Logging, TheLossOfThePlcIsLoggedAsStaleValues)
{
    setStaleAfter("1000");
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = log(file, {QStringLiteral("R.a")});
    ASSERT_TRUE(waitForText(file, ",R.a,1,fresh\n"));
    EXPECT_EQ("", simulator().command(QStringLiteral("offline")));
    ASSERT_TRUE(waitForText(file, ",R.a,1,stale\n"));
    EXPECT_EQ("", simulator().command(QStringLiteral("online")));
    EXPECT_TRUE(waitForLines(file, 4));
    EXPECT_TRUE(lines(file).last().endsWith(",R.a,1,fresh"));
    end(*plc, SIGTERM);
    EXPECT_TRUE(plc->errors().contains(QStringLiteral("lost")));
}

TEST_F(Logging, AtAnIntervalValuesAreLoggedWhetherTheyChangeOrNot)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc =
        log(file, {QStringLiteral("R.a"), QStringLiteral("--every"), QStringLiteral("50ms")});
    ASSERT_TRUE(waitForLines(file, 6));
    end(*plc, SIGINT);
    const QList<QByteArray> all = lines(file);
    for (int i = 1; i < int(all.size()); ++i)
        EXPECT_EQ(",R.a,1,fresh", all[i].mid(24).toStdString());
}

TEST_F(Logging, AtAnIntervalTheLogBeginsWithTheFirstValues)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc =
        log(file, {QStringLiteral("R.a"), QStringLiteral("R.table[1]*3"), QStringLiteral("--every"),
                   QStringLiteral("1h")});
    ASSERT_TRUE(waitForLines(file, 3));
    end(*plc, SIGINT);
    const QList<QByteArray> all = lines(file);
    ASSERT_EQ(3, all.size()) << content(file).toStdString();
    EXPECT_EQ(",R.a,1,fresh", all[1].mid(24).toStdString());
    EXPECT_EQ(",R.table[1]*3,\"[0, 0, 0]\",fresh", all[2].mid(24).toStdString());
}

TEST_F(Logging, AFreshRecordHasTheTimeOfItsValueAndNotOfTheInterval)
{
    // Read once, and still fresh at the intervals behind it.
    setStaleAfter("3600000");
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = start(
        "log", {QStringLiteral("--output"), file, QStringLiteral("--cycle"),
                QStringLiteral("3600000"), QStringLiteral("--every"), QStringLiteral("400ms")});
    ASSERT_TRUE(waitForLines(file, 4));
    end(*plc, SIGINT);
    const QList<QByteArray> all = lines(file);
    const auto time = [&all](int line) {
        return QDateTime::fromString(QString::fromUtf8(all[line].left(24)), Qt::ISODateWithMs);
    };
    for (int i = 2; i < 4; ++i) {
        EXPECT_TRUE(all[i].endsWith(",R.a,1,fresh")) << all[i].toStdString();
        // Less than an interval: clocks are read to the millisecond, one after the other.
        EXPECT_LT(qAbs(time(1).msecsTo(time(i))), 300) << content(file).toStdString();
    }
}

TEST_F(Logging, KilledItLeavesWholeLinesAndGoesOnInTheSameFile)
{
    const QString file = path(QStringLiteral("a.csv"));
    int before = 0;
    for (int round = 0; round < 4; ++round) {
        const std::unique_ptr<LineProcess> plc = log(file, {kCounter});
        ASSERT_TRUE(waitForLines(file, before + 20));
        end(*plc, SIGKILL);
        expectWhole(file);
        before = int(lines(file).size());
    }
}

TEST_F(Logging, HalfALineOfAKilledProgramIsCutOffAndTold)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = log(file, {kCounter});
    ASSERT_TRUE(waitForLines(file, 3));
    end(*plc, SIGKILL);
    QFile torn(file);
    ASSERT_TRUE(torn.resize(torn.size() - 9));
    const int whole = int(content(file).count('\n'));
    const std::unique_ptr<LineProcess> next = log(file, {kCounter});
    ASSERT_TRUE(waitForLines(file, whole + 3));
    end(*next, SIGINT);
    EXPECT_EQ(0, next->exitCode());
    EXPECT_TRUE(next->errors().contains(QStringLiteral("ended in half a line, which was cut off")));
    expectWhole(file);
}

TEST_F(Logging, KilledItLeavesADatabaseThatIsReadAndGoesOn)
{
    const QString file = path(QStringLiteral("a.sqlite"));
    int before = 1;
    for (int round = 0; round < 3; ++round) {
        const std::unique_ptr<LineProcess> plc = log(file, {kCounter});
        // The database is read while it is written.
        ASSERT_TRUE(waitUntil(
            [&] { return QFile::exists(file) && lines(exported(file)).size() >= before + 20; }));
        end(*plc, SIGKILL);
        const QString csv = exported(file);
        expectWhole(csv);
        EXPECT_GE(int(lines(csv).size()), before + 20);
        before = int(lines(csv).size());
    }
}

TEST_F(Logging, GoesOnInNewFilesAndKeepsTheYoungest)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc =
        log(file, {kCounter, QStringLiteral("--rotate-size"), QStringLiteral("1k"),
                   QStringLiteral("--keep"), QStringLiteral("2")});
    const QDir folder(path(QString()));
    const auto rotated = [&folder] {
        return folder.entryList({QStringLiteral("a.*Z.csv")}, QDir::Files, QDir::Name);
    };
    ASSERT_TRUE(waitUntil([&] { return rotated().size() == 2; }));
    const QStringList first = rotated();
    ASSERT_TRUE(waitUntil([&] { return rotated() != first; }));
    end(*plc, SIGINT);
    EXPECT_EQ(2, rotated().size());
    for (const QString& name : rotated()) {
        expectWhole(folder.filePath(name));
        EXPECT_LE(QFile(folder.filePath(name)).size(), 1024);
    }
}

TEST_F(Logging, AFullDiskEndsTheLogWithAMessageAndAFileThatCanBeRead)
{
    // The children of this test may write files of 2000 bytes.
    rlimit limit = {};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
    limit.rlim_cur = 2000;
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = log(file, {kCounter});
    EXPECT_EQ(1, plc->exitCode());
    const QString errors = plc->errors();
    EXPECT_TRUE(errors.contains(QStringLiteral("a.csv: cannot be written: File too large")))
        << errors.toStdString();
    expectWhole(file);
}

TEST_F(Logging, ADatabaseWhoseFolderIsAwayForAWhileGoesOn)
{
    const QString folder = path(QStringLiteral("disk"));
    ASSERT_TRUE(QDir().mkdir(folder));
    const QString file = folder + QStringLiteral("/a.sqlite");
    const std::unique_ptr<LineProcess> plc = log(file, {kCounter});
    ASSERT_TRUE(
        waitUntil([&] { return QFile::exists(file) && lines(exported(file)).size() >= 20; }));
    const QString away = path(QStringLiteral("away"));
    ASSERT_TRUE(QDir().rename(folder, away));
    QString errors;
    const auto isTold = [&](const char* text) {
        return waitUntil([&] {
            plc->isRunning(); // takes what has come
            errors += plc->errors();
            return errors.contains(QLatin1String(text));
        });
    };
    EXPECT_TRUE(isTold("it is tried again each second")) << errors.toStdString();
    EXPECT_TRUE(plc->isRunning());
    ASSERT_TRUE(QDir().mkdir(folder));
    EXPECT_TRUE(isTold("the log goes on")) << errors.toStdString();
    ASSERT_EQ(0, kill(pid_t(plc->pid()), SIGINT));
    EXPECT_EQ(0, plc->exitCode()) << "nothing is missing";
    EXPECT_EQ(1, errors.count(QStringLiteral("it is tried again"))) << errors.toStdString();
    expectWhole(exported(away + QStringLiteral("/a.sqlite")));
    expectWhole(exported(file));
}

TEST_F(Logging, TwoProgramsCannotLogToOneFile)
{
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc = log(file, {kCounter});
    ASSERT_TRUE(waitForLines(file, 1));
    const std::unique_ptr<LineProcess> other = log(file, {kCounter});
    EXPECT_EQ(2, other->exitCode());
    EXPECT_TRUE(other->errors().contains(QStringLiteral("another program is logging to it")));
}

TEST_F(Logging, ExitCodeIs1WhenNobodyListens)
{
    setStaleAfter("100");
    usePort(1);
    const QString file = path(QStringLiteral("a.csv"));
    const std::unique_ptr<LineProcess> plc =
        log(file, {QStringLiteral("--for"), QStringLiteral("0.5")});
    EXPECT_EQ(1, plc->exitCode());
    EXPECT_TRUE(lines(file).last().endsWith(",R.a,,stale")) << content(file).toStdString();
}

TEST_F(Logging, WithJsonTheResultIsAnObject)
{
    const std::unique_ptr<LineProcess> plc =
        log(path(QStringLiteral("a.db")),
            {QStringLiteral("--json"), QStringLiteral("--for"), QStringLiteral("2")});
    EXPECT_EQ(0, plc->exitCode()) << plc->errors().toStdString();
    const QJsonObject object = parseJson(plc->restOfOutput().value(0));
    EXPECT_EQ(1, object.value(QLatin1String("records")).toInt());
    EXPECT_GE(object.value(QLatin1String("duration")).toInt(), 2000);
}

TEST_F(Logging, AFileThatCannotBeWrittenIsWrongUsage)
{
    for (const char* name : {"nowhere/a.csv", "nowhere/a.sqlite"}) {
        const std::unique_ptr<LineProcess> plc = log(path(QString::fromLatin1(name)), {});
        EXPECT_EQ(2, plc->exitCode());
        EXPECT_TRUE(plc->errors().contains(QLatin1String(name)));
    }
}

} // namespace
} // namespace plc::test
