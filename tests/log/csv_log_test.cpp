#include "log/csv_log.h"

#include <sys/resource.h>
#include <csignal>

#include "tests/log/log_files.h"

namespace plc::log {
namespace test {
namespace {

class CsvLogTest : public LogFiles {
protected:
    std::unique_ptr<CsvLog> open(const LogRotation& rotation = {})
    {
        Expected<std::unique_ptr<CsvLog>> log = CsvLog::open(file, rotation);
        EXPECT_TRUE(succeeds(log)) << error.toStdString();
        return log ? std::move(*log) : nullptr;
    }
    void write(CsvLog& log, const QVector<LogRecord>& records)
    {
        EXPECT_TRUE(succeeds(log.write(records))) << error.toStdString();
    }

    const QString file = path("a.csv");
};

TEST_F(CsvLogTest, BeginsWithTheNamesOfTheColumnsAndHasALineForEachRecord)
{
    LogRecord stale = record(61001, "P.text", "'x'");
    stale.state = LogState::Stale;
    write(*open(), {record(0, "P.level", "12.5"), stale});
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,P.level,12.5,fresh\n"
        "2026-11-21T06:01:01.001Z,P.text,'x',stale\n",
        content(file));
}

TEST_F(CsvLogTest, QuotesFieldsThatHoldCommasOrQuotes)
{
    write(*open(), {record(0, "P.t[1,2]*2", "[1, 2]"), record(0, "P.wide", "\"a\"")});
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,\"P.t[1,2]*2\",\"[1, 2]\",fresh\n"
        "2026-11-21T06:00:00.000Z,P.wide,\"\"\"a\"\"\",fresh\n",
        content(file));
}

TEST_F(CsvLogTest, MarksTextsThatASpreadsheetWouldCompute)
{
    write(*open(), {record(0, "@S.a", "-5"), record(0, "-S.b", "'=1+1'")});
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,'@S.a,-5,fresh\n"
        "2026-11-21T06:00:00.000Z,'-S.b,''=1+1',fresh\n",
        content(file));
}

TEST_F(CsvLogTest, GoesOnWithAFileThatExists)
{
    write(*open(), {record(0, "P.a", "1")});
    write(*open(), {record(1, "P.a", "2")});
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,P.a,1,fresh\n"
        "2026-11-21T06:00:00.001Z,P.a,2,fresh\n",
        content(file));
}

TEST_F(CsvLogTest, CutsHalfALineThatWasLeftAtTheEnd)
{
    write(*open(), {record(0, "P.a", "1")});
    put(file, "2026-11-21T06:00:00.0");
    const std::unique_ptr<CsvLog> log = open();
    EXPECT_EQ(21, log->cutBytes());
    write(*log, {record(1, "P.a", "2")});
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.000Z,P.a,1,fresh\n"
        "2026-11-21T06:00:00.001Z,P.a,2,fresh\n",
        content(file));
}

TEST_F(CsvLogTest, IsWholeAgainWhereverItWasCutOff)
{
    write(*open(), {record(0, "P.a", "1"), record(1, "P.b", "2")});
    const std::string whole = content(file);
    for (size_t size = 0; size <= whole.size(); ++size) {
        ASSERT_TRUE(QFile::remove(file));
        put(file, whole.substr(0, size).c_str());
        open();
        const size_t lastLineEnd = whole.substr(0, size).rfind('\n');
        const std::string expected = lastLineEnd == std::string::npos
                                         ? "time,label,value,state\n"
                                         : whole.substr(0, lastLineEnd + 1);
        ASSERT_EQ(content(file), expected) << "cut to " << size << " bytes";
    }
}

TEST_F(CsvLogTest, FindsTheEndOfTheLastLineFarBack)
{
    write(*open(), {record(0, "P.a", "1")});
    const std::string whole = content(file);
    put(file, std::string(200000, 'x').c_str());
    EXPECT_EQ(200000, open()->cutBytes());
    EXPECT_EQ(content(file), whole);
}

TEST_F(CsvLogTest, LeavesAFileAloneThatIsNoLog)
{
    put(file, "time;speed\n1;2\nhalf a line");
    EXPECT_FALSE(succeeds(CsvLog::open(file, LogRotation())));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("a.csv: the file exists and is no log"));
    EXPECT_EQ("time;speed\n1;2\nhalf a line", content(file));
}

TEST_F(CsvLogTest, TwoAtATimeCannotLogToOneFile)
{
    const std::unique_ptr<CsvLog> first = open();
    EXPECT_FALSE(succeeds(CsvLog::open(file, LogRotation())));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("another program is logging to it"));
}

TEST_F(CsvLogTest, GoesOnInANewFileBeforeOneGetsTooLarge)
{
    // 23 bytes of names and 37 a record ("2026-11-21T06:00:00.000Z,P.a,1,fresh\n"): two records
    // make 97.
    LogRotation rotation;
    rotation.size = 97;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2"), record(2, "P.a", "3")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.csv", names());
    EXPECT_EQ(97u, content(path("a.000001.20261121T060000000Z.csv")).size());
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.002Z,P.a,3,fresh\n",
        content(file));
}

TEST_F(CsvLogTest, TheSizeOfAnEarlierRunCounts)
{
    LogRotation rotation;
    rotation.size = 97;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2")});
    write(*open(rotation), {record(2, "P.a", "3")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.csv", names());
}

TEST_F(CsvLogTest, ARecordThatIsLargerThanAFileMayBeIsKeptAlone)
{
    LogRotation rotation;
    rotation.size = 1;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.csv", names());
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.001Z,P.a,2,fresh\n",
        content(file));
}

TEST_F(CsvLogTest, GoesOnInANewFileWhenThePeriodIsOver)
{
    LogRotation rotation;
    rotation.period = 60000;
    write(*open(rotation), {record(0, "P.a", "1"), record(59999, "P.a", "2")});
    EXPECT_EQ("a.csv", names());
    write(*open(rotation), {record(60000, "P.a", "3"), record(119999, "P.a", "4")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.csv", names());
    write(*open(rotation), {record(120000, "P.a", "5")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.000002.20261121T060100000Z.csv a.csv", names());
}

TEST_F(CsvLogTest, TheOldestFilesGoAndOthersStay)
{
    put(path("a.20200101.csv"), "not ours");
    put(path("ab.20200101T000000000Z.csv"), "of another log");
    LogRotation rotation;
    rotation.size = 1;
    rotation.keep = 2;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2"), record(2, "P.a", "3"),
                            record(3, "P.a", "4")});
    EXPECT_EQ(
        "a.000002.20261121T060000001Z.csv a.000003.20261121T060000002Z.csv a.20200101.csv a.csv "
        "ab.20200101T000000000Z.csv",
        names());
}

TEST_F(CsvLogTest, FilesThatBeginAtTheSameTimeDoNotReplaceEachOther)
{
    LogRotation rotation;
    rotation.size = 1;
    write(*open(rotation), {record(0, "P.a", "1"), record(0, "P.b", "2"), record(0, "P.c", "3")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.000002.20261121T060000000Z.csv a.csv", names());
}

TEST_F(CsvLogTest, TheOldestFilesGoAlsoWhenTheClockWasSetBack)
{
    LogRotation rotation;
    rotation.size = 1;
    rotation.keep = 2;
    // The third record comes a day before the others, as the fourth.
    constexpr qint64 kDay = 86400000;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2"), record(-kDay, "P.a", "3"),
                            record(1 - kDay, "P.a", "4")});
    EXPECT_EQ("a.000002.20261121T060000001Z.csv a.000003.20261120T060000000Z.csv a.csv", names());
}

TEST_F(CsvLogTest, FilesWithoutANumberAreOlderThanThoseWithOne)
{
    put(path("a.20300101T000000000Z.csv"), "of an earlier version, its clock ahead");
    put(path("a.20290101T000000000Z.csv"), "of an earlier version, its clock ahead");
    LogRotation rotation;
    rotation.size = 1;
    rotation.keep = 2;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.20300101T000000000Z.csv a.csv", names());
    write(*open(rotation), {record(2, "P.a", "3")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.000002.20261121T060000001Z.csv a.csv", names());
}

TEST_F(CsvLogTest, NumbersAreComparedAsNumbers)
{
    put(path("a.999999.20261121T050000000Z.csv"), "");
    LogRotation rotation;
    rotation.size = 1;
    rotation.keep = 1;
    write(*open(rotation), {record(0, "P.a", "1"), record(1, "P.a", "2")});
    EXPECT_EQ("a.1000000.20261121T060000000Z.csv a.csv", names());
    write(*open(rotation), {record(2, "P.a", "3")});
    EXPECT_EQ("a.1000001.20261121T060000001Z.csv a.csv", names());
}

TEST_F(CsvLogTest, GoesOnInNewFilesAlsoWhenTheClockWasSetBack)
{
    LogRotation rotation;
    rotation.period = 60000;
    constexpr qint64 kDay = 86400000;
    write(*open(rotation), {record(0, "P.a", "1"), record(-kDay, "P.a", "2"),
                            record(59999 - kDay, "P.a", "3"), record(60000 - kDay, "P.a", "4")});
    EXPECT_EQ("a.000001.20261121T060000000Z.csv a.000002.20261120T060000000Z.csv a.csv", names());
}

TEST_F(CsvLogTest, AFileThatCannotBeCreatedIsNamedWithTheReason)
{
    EXPECT_FALSE(succeeds(CsvLog::open(path("nowhere/a.csv"), LogRotation())));
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("nowhere/a.csv: cannot be opened for writing: No such file or "
                                    "directory"));
}

TEST_F(CsvLogTest, AFullDiskIsToldFromTheFirstLineOn)
{
    EXPECT_FALSE(succeeds(CsvLog::open(QStringLiteral("/dev/full"), LogRotation())));
    EXPECT_EQ("/dev/full: cannot be written: No space left on device", error);
}

TEST_F(CsvLogTest, WhenTheDiskIsFullTheFileEndsWithAWholeLine)
{
    const std::unique_ptr<CsvLog> log = open();
    write(*log, {record(0, "P.a", "1")});
    const std::string before = content(file);
    // A limit on files is met like the end of a disk: in the middle of a line.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {100, RLIM_INFINITY};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    EXPECT_FALSE(succeeds(log->write({record(1, "P.a", "2"), record(2, "P.a", "3")})));
    EXPECT_THAT(error.toStdString(),
                ::testing::HasSubstr("a.csv: cannot be written: File too large"));
    EXPECT_EQ(content(file), before);
}

} // namespace
} // namespace test
} // namespace plc::log
