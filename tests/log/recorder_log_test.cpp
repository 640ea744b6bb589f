#include "log/recorder_log.h"

#include <QtCore/QDir>

#include "log/log_conversion.h"
#include "log/log_export.h"
#include "log/sqlite_log.h"
#include "recorder/reader.h"
#include "tests/log/log_files.h"
#include "tests/support/hanging_disk.h"

namespace plc::log {
namespace test {
namespace {

const QString kPlc = QStringLiteral("Tank 1");

class RecorderLogTest : public LogFiles {
protected:
    RecorderLogTest()
    {
        recorder::SeriesDescription series;
        series.label = QStringLiteral("P.a");
        series.type = values::findIecType(QStringLiteral("INT"));
        m_series.insert(series.label, series);
        series.label = QStringLiteral("P.text");
        series.type = values::findIecType(QStringLiteral("STRING"));
        series.stringLength = 10;
        m_series.insert(series.label, series);
    }

    std::unique_ptr<RecorderLog> open(const recorder::QueueLimits& limits = {})
    {
        Expected<std::unique_ptr<RecorderLog>> log = RecorderLog::open(
            file, m_series, [this] { return m_now; }, nullptr, limits);
        EXPECT_TRUE(succeeds(log)) << error.toStdString();
        return log ? std::move(*log) : nullptr;
    }
    static LogRecord of(qint64 time, const char* label, const QByteArray& bytes)
    {
        LogRecord given = record(time, label, "");
        given.bytes = bytes;
        return given;
    }
    std::string exported(const char* csv)
    {
        const Expected<qint64> records = exportLog(file, path(csv), [](qint64, qint64) {});
        EXPECT_TRUE(succeeds(records)) << error.toStdString();
        return content(path(csv));
    }
    recorder::History history(const QString& recording, int series)
    {
        const auto reader = recorder::Reader::open(recording);
        EXPECT_TRUE(succeeds(reader)) << error.toStdString();
        const auto found = reader ? (*reader)->changes(series, 0, kStart + 1000000)
                                  : Expected<recorder::History>(reader.error());
        EXPECT_TRUE(succeeds(found)) << error.toStdString();
        return found ? *found : recorder::History();
    }
    /// Times behind kStart with the values, gaps as "-".
    static std::string text(const recorder::History& history)
    {
        QStringList texts;
        for (const recorder::Sample& sample : history.samples) {
            const bool isGap = sample.quality == recorder::Quality::Gap;
            texts.append(QStringLiteral("%1 %2")
                             .arg(sample.time - kStart)
                             .arg(isGap ? QStringLiteral("-") : QString::fromUtf8(sample.bytes)));
        }
        return texts.join(QStringLiteral(", ")).toStdString();
    }

    const QString file = path("a.sqlite");
    qint64 m_now = kStart;
    QHash<QString, recorder::SeriesDescription> m_series;
};

TEST_F(RecorderLogTest, ClaimsNothingOfATimeInWhichItStoodStill)
{
    std::unique_ptr<RecorderLog> log = open();
    ASSERT_TRUE(succeeds(log->write({of(0, "P.a", "1")})));
    m_now += 1000;
    ASSERT_TRUE(succeeds(log->write({})));
    m_now += 60000;
    log->interrupt();
    ASSERT_TRUE(succeeds(log->write({of(60500, "P.a", "2")})));
    log.reset();
    EXPECT_EQ("0 1, 1000 -, 60500 2, 61000 -", text(history(file, 1)));
}

TEST_F(RecorderLogTest, IsExportedAsTheLogsBeforeInTheOrderOfTime)
{
    LogRecord stale = of(1000, "P.a", QByteArray("\xFE\xFF", 2));
    stale.state = LogState::Stale;
    LogRecord refused = of(2000, "P.a", {});
    refused.state = LogState::Refused;
    std::unique_ptr<RecorderLog> log = open();
    m_now += 2000;
    EXPECT_TRUE(succeeds(
        log->write({of(7, "P.text", "a,b"), of(5, "P.a", QByteArray("\1\0", 2)), stale, refused})));
    log.reset();
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.005Z,P.a,1,fresh\n"
        "2026-11-21T06:00:00.007Z,P.text,\"'a,b'\",fresh\n"
        "2026-11-21T06:00:01.000Z,P.a,-2,stale\n"
        "2026-11-21T06:00:02.000Z,P.a,,refused\n"
        "2026-11-21T06:00:02.000Z,P.text,,gap\n"
        "2026-11-21T06:00:02.000Z,P.a,,gap\n",
        exported("a.csv"));
}

TEST_F(RecorderLogTest, IsExportedWithTheGapsBetweenWhatWasRecorded)
{
    for (const qint64 begin : {0, 60000}) {
        std::unique_ptr<RecorderLog> log = open();
        EXPECT_TRUE(succeeds(log->write({of(begin, "P.a", QByteArray("\1\0", 2))})));
        m_now += 1000;
        EXPECT_TRUE(succeeds(log->write({})));
        log.reset();
        m_now += 59000;
    }
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,P.a,1,fresh\n"
        "2026-11-21T06:00:01.000Z,P.a,,gap\n"
        "2026-11-21T06:01:00.000Z,P.a,1,fresh\n"
        "2026-11-21T06:01:01.000Z,P.a,,gap\n",
        exported("a.csv"));
}

TEST_F(RecorderLogTest, OfSeveralPlcsIsExportedAndMadeAgainWithThePlcOfEachRecord)
{
    {
        auto recorder = recorder::Recorder::open(file, recorder::Limits(), kStart);
        ASSERT_TRUE(succeeds(recorder));
        QVector<recorder::Change> changes;
        for (const char* plc : {"north", "south"}) {
            recorder::SeriesDescription series = m_series.value(QStringLiteral("P.a"));
            series.source = QLatin1String(plc);
            const QByteArray bytes =
                plc == std::string("north") ? QByteArray("\1\0", 2) : QByteArray("\2\0", 2);
            changes.append({(*recorder)->series(series), {kStart, recorder::Quality::Good, bytes}});
        }
        ASSERT_TRUE(succeeds((*recorder)->append(changes, kStart)));
        ASSERT_TRUE(succeeds((*recorder)->end(kStart + 1000)));
    }
    const QByteArray csv =
        "time,label,value,state,plc\n"
        "2026-11-21T06:00:00.000Z,P.a,1,fresh,north\n"
        "2026-11-21T06:00:00.000Z,P.a,2,fresh,south\n"
        "2026-11-21T06:00:01.000Z,P.a,,gap,north\n"
        "2026-11-21T06:00:01.000Z,P.a,,gap,south\n";
    ASSERT_EQ(csv.toStdString(), exported("a.csv"));
    const QString again = path("again.sqlite");
    const auto none = [](qint64, qint64) {};
    EXPECT_FALSE(succeeds(convertLog(path("a.csv"), again, 0, kPlc, none)));
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("a.csv: line 1: the log has a PLC for each record; name none"));
    ASSERT_TRUE(succeeds(convertLog(path("a.csv"), again, 0, QString(), none)));
    const auto reader = recorder::Reader::open(again);
    ASSERT_TRUE(succeeds(reader));
    EXPECT_EQ("north", (*reader)->series()->at(0).description.source);
    EXPECT_EQ("south", (*reader)->series()->at(1).description.source);
    EXPECT_EQ("0 1, 1000 -", text(history(again, 1)));
    EXPECT_EQ("0 2, 1000 -", text(history(again, 2)));
}

TEST_F(RecorderLogTest, WithoutRecordsTheValuesAreKnownToHoldOn)
{
    std::unique_ptr<RecorderLog> log = open();
    EXPECT_TRUE(succeeds(log->write({of(0, "P.a", QByteArray("1 ", 2))})));
    m_now += 60000;
    EXPECT_TRUE(succeeds(log->write({})));
    log.reset();
    EXPECT_EQ("0 1 , 60000 -", text(history(file, 1)));
}

TEST_F(RecorderLogTest, TellsOnceThatItGoesOnInAnotherFile)
{
    std::unique_ptr<RecorderLog> log = open();
    EXPECT_TRUE(succeeds(log->write({of(0, "P.a", QByteArray("1 ", 2))})));
    EXPECT_EQ("", log->takeRemark().toStdString());
    ASSERT_TRUE(QFile::remove(file));
    m_now += 2000;
    EXPECT_TRUE(succeeds(log->write({})));
    EXPECT_EQ(
        "the log was moved or removed while it was written; it goes on in another file of its"
        " name",
        log->takeRemark().toStdString());
    EXPECT_EQ("", log->takeRemark().toStdString());
    log.reset();
    EXPECT_EQ("2000 1 , 2000 -", text(history(file, 1)));
}

/// The log's file removed, and a folder in its place: no other file can be begun there.
class RecorderLogWithoutAPlace : public RecorderLogTest {
protected:
    void takePlaceAway()
    {
        ASSERT_TRUE(QFile::remove(file));
        ASSERT_TRUE(QDir().mkdir(file));
    }
    void givePlaceBack() { ASSERT_TRUE(QDir().rmdir(file)); }
    /// Writes a second, or more, behind the last time.
    bool write(RecorderLog& log, const QVector<LogRecord>& records, qint64 after = 1000)
    {
        m_now += after;
        return bool(log.write(records));
    }
};

TEST_F(RecorderLogWithoutAPlace, WaitsWithItsRecordsAndHasThemAllBehindThat)
{
    std::unique_ptr<RecorderLog> log = open();
    EXPECT_TRUE(write(*log, {of(500, "P.a", QByteArray("1 ", 2))}));
    takePlaceAway();
    EXPECT_FALSE(write(*log, {of(2500, "P.a", QByteArray("2 ", 2))}, 2000));
    EXPECT_FALSE(write(*log, {of(3500, "P.a", QByteArray("3 ", 2))}));
    EXPECT_EQ(2, log->backlog().waiting);
    givePlaceBack();
    EXPECT_TRUE(write(*log, {}));
    EXPECT_EQ(0, log->backlog().sum());
    log.reset();
    EXPECT_EQ("2500 2 , 3500 3 , 5000 -", text(history(file, 1)));
}

TEST_F(RecorderLogWithoutAPlace, IsWrittenAsSoonAsItCanBe)
{
    std::unique_ptr<RecorderLog> log = open();
    EXPECT_TRUE(write(*log, {}));
    for (int round = 0; round < 50; ++round) {
        takePlaceAway();
        EXPECT_FALSE(write(*log, {of(m_now - kStart + 2000, "P.a", QByteArray("1 ", 2))}, 2000));
        givePlaceBack();
        // An attempt that was begun before fails and says nothing of what can be written now.
        ASSERT_TRUE(write(*log, {})) << "in round " << round;
    }
}

TEST_F(RecorderLogWithoutAPlace, HasAGapInPlaceOfWhatThereWasNoRoomFor)
{
    recorder::QueueLimits limits;
    limits.changes = 2;
    std::unique_ptr<RecorderLog> log = open(limits);
    EXPECT_TRUE(write(*log, {of(500, "P.a", QByteArray("1 ", 2))}));
    takePlaceAway();
    // One is tried to be written, two wait, and of the others the last is kept.
    for (const qint64 time : {2500, 3500, 4500, 5500, 6500})
        EXPECT_FALSE(write(*log, {of(time, "P.a", QByteArray::number(time).left(2))},
                           time == 2500 ? 2000 : 1000));
    EXPECT_EQ(3, log->backlog().waiting);
    EXPECT_EQ(2, log->backlog().dropped);
    givePlaceBack();
    EXPECT_TRUE(write(*log, {}));
    EXPECT_TRUE(write(*log, {}));
    EXPECT_EQ(0, log->backlog().waiting);
    log.reset();
    EXPECT_EQ("2500 25, 3500 35, 4500 45, 5000 -, 9000 65, 9000 -", text(history(file, 1)));
}

TEST_F(RecorderLogWithoutAPlace, EndsWithAGapWhereNothingCouldBeWrittenAnyMore)
{
    const QString moved = path("moved.sqlite");
    std::unique_ptr<RecorderLog> log = open();
    EXPECT_TRUE(write(*log, {of(500, "P.a", QByteArray("1 ", 2))}));
    ASSERT_TRUE(QFile::rename(file, moved));
    ASSERT_TRUE(QDir().mkdir(file));
    EXPECT_FALSE(write(*log, {of(2500, "P.a", QByteArray("2 ", 2))}, 2000));
    EXPECT_EQ(1, log->backlog().sum());
    log.reset();
    EXPECT_EQ("500 1 , 1000 -", text(history(moved, 1)));
}

TEST_F(RecorderLogTest, WaitsAtADiskThatHangsNoLongerThanItMust)
{
    std::unique_ptr<RecorderLog> log = open();
    EXPECT_TRUE(succeeds(log->write({of(0, "P.a", QByteArray("1 ", 2))})));
    plc::test::diskGate().setOpen(false);
    m_now += 1000;
    EXPECT_FALSE(log->write({of(1000, "P.a", QByteArray("2 ", 2))}));
    EXPECT_FALSE(log->write({of(1000, "P.text", QByteArray("ab"))}));
    EXPECT_EQ(2, log->backlog().waiting);
    plc::test::diskGate().setOpen(true);
    log->finish();
    EXPECT_EQ(0, log->backlog().sum());
    log.reset();
    EXPECT_EQ("0 1 , 1000 2 , 1000 -", text(history(file, 1)));
}

TEST_F(RecorderLogTest, LeavesADatabaseAloneThatIsNoRecording)
{
    put(file, "this is a letter and no database at all");
    EXPECT_FALSE(succeeds(RecorderLog::open(file, m_series, [this] { return m_now; })));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("a.sqlite: file is not a database"));
    EXPECT_EQ("this is a letter and no database at all", content(file));
    EXPECT_EQ("a.sqlite", names());
}

TEST_F(RecorderLogTest, IsMadeOfALogOfVersion1WithAGapWhereThatWasBegunAnew)
{
    const QVector<LogRecord> records{record(0, "P.a", "1"),      record(0, "P.b", "'x'"),
                                     record(1000, "P.a", "2"),   record(9000, "P.a", "2"),
                                     record(9000, "P.b", "'x'"), record(9500, "P.a", "-3.5")};
    auto old = SqliteLog::open(path("old.sqlite"));
    ASSERT_TRUE(succeeds(old));
    ASSERT_TRUE(succeeds((*old)->write(records)));
    const auto converted =
        convertLog(path("old.sqlite"), file, 0, QString(), [](qint64, qint64) {});
    ASSERT_TRUE(succeeds(converted)) << error.toStdString();
    EXPECT_EQ(6, *converted);
    EXPECT_EQ("0 1, 1000 2, 1000 -, 9000 2, 9500 -3.5, 9500 -", text(history(file, 1)));
    EXPECT_EQ("0 'x', 1000 -, 9000 'x', 9500 -", text(history(file, 2)));
    const auto reader = recorder::Reader::open(file);
    EXPECT_EQ(QString(), (*reader)->series()->first().description.source) << "nobody named the PLC";
    const auto mean = (*reader)->aggregates(1, kStart, kStart + 10000, 10000);
    // 1 for 1 s, 2 for 0.5 s; the last value held for no time.
    EXPECT_DOUBLE_EQ(2.0 / 1.5, mean->first().mean);
    EXPECT_DOUBLE_EQ(0.15, mean->first().coverage);
    EXPECT_DOUBLE_EQ(-3.5, mean->first().minimum.nearest);
}

TEST_F(RecorderLogTest, IsNotMadeOfALogThatCannotBeReadToItsEnd)
{
    // Nothing lies at the begin of a program's memory: reading there is an error of the device.
    ASSERT_TRUE(QFile::link(QStringLiteral("/proc/self/mem"), path("old.csv")));
    const auto converted = convertLog(path("old.csv"), file, 0, QString(), [](qint64, qint64) {});
    ASSERT_FALSE(succeeds(converted));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("Input/output error"));
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(RecorderLogTest, IsMadeOfACsvLogThatWasMadeAtAnInterval)
{
    put(path("old.csv"),
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,P.a,\"[1, 2]\",fresh\n"
        "2026-11-21T06:00:10.000Z,P.a,\"[1, 2]\",fresh\n"
        "2026-11-21T06:00:40.000Z,P.a,\"[1, 2]\",stale\n"
        "2026-11-21T06:00:5");
    const auto converted = convertLog(path("old.csv"), file, 10000, kPlc, [](qint64, qint64) {});
    ASSERT_TRUE(succeeds(converted)) << error.toStdString();
    EXPECT_EQ(3, *converted);
    EXPECT_EQ(kPlc, (*recorder::Reader::open(file))->series()->first().description.source);
    EXPECT_EQ("0 [1, 2], 10000 [1, 2], 10000 -, 40000 [1, 2], 40000 -", text(history(file, 1)));
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,P.a,\"[1, 2]\",fresh\n"
        "2026-11-21T06:00:10.000Z,P.a,\"[1, 2]\",fresh\n"
        "2026-11-21T06:00:10.000Z,P.a,,gap\n"
        "2026-11-21T06:00:40.000Z,P.a,\"[1, 2]\",stale\n"
        "2026-11-21T06:00:40.000Z,P.a,,gap\n",
        exported("a.csv"));
}

TEST_F(RecorderLogTest, OfWhatIsNoLogNothingIsMade)
{
    put(path("old.csv"), "time,label,value,state\nsoon,P.a,1,fresh\n");
    EXPECT_FALSE(succeeds(convertLog(path("old.csv"), file, 0, QString(), [](qint64, qint64) {})));
    EXPECT_THAT(error.toStdString(), ::testing::EndsWith("old.csv: line 2: not a record of a log"));
    EXPECT_EQ("old.csv", names());
}

TEST_F(RecorderLogTest, AConversionReplacesNoFile)
{
    put(path("old.csv"), "time,label,value,state\n2026-11-21T06:00:00.000Z,P.a,1,fresh\n");
    put(file, "mine");
    EXPECT_FALSE(succeeds(convertLog(path("old.csv"), file, 0, QString(), [](qint64, qint64) {})));
    EXPECT_EQ("mine", content(file));
}

} // namespace
} // namespace test
} // namespace plc::log
