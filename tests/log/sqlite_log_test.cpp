#include "log/sqlite_log.h"

#include <sys/resource.h>
#include <csignal>

#include "log/log_export.h"
#include "tests/log/log_files.h"

namespace plc::log {
namespace test {
namespace {

class SqliteLogTest : public LogFiles {
protected:
    std::unique_ptr<SqliteLog> open() { return opened(file); }
    std::unique_ptr<SqliteLog> opened(const QString& database)
    {
        Expected<std::unique_ptr<SqliteLog>> log = SqliteLog::open(database);
        EXPECT_TRUE(succeeds(log)) << error.toStdString();
        return log ? std::move(*log) : nullptr;
    }
    void write(SqliteLog& log, const QVector<LogRecord>& records)
    {
        EXPECT_TRUE(succeeds(log.write(records))) << error.toStdString();
    }
    /// The rows of a query, columns separated by |.
    std::string rows(const char* query)
    {
        database::SqliteDatabase database;
        EXPECT_TRUE(database.open(file, false));
        database::SqliteStatement statement(database, query);
        EXPECT_TRUE(statement.isPrepared()) << database.error().toStdString();
        std::string text;
        while (statement.step() == database::SqliteStatement::Row)
            text += statement.text(0).toStdString() + "\n";
        return text;
    }
    void execute(const char* statements)
    {
        database::SqliteDatabase database;
        ASSERT_TRUE(database.open(file, true));
        ASSERT_TRUE(database.execute(statements)) << database.error().toStdString();
    }
    /// The number of records; nothing after an error.
    std::optional<qint64> exported(const QString& csv) { return exported(file, csv); }
    std::optional<qint64> exported(const QString& database, const QString& csv)
    {
        const Expected<qint64> records = exportLog(database, csv, [](qint64, qint64) {});
        return succeeds(records) ? std::optional<qint64>(*records) : std::nullopt;
    }

    const QString file = path("a.sqlite");
};

TEST_F(SqliteLogTest, HoldsTimeLabelValueNumberAndState)
{
    LogRecord number = record(0, "P.level", "16#0C");
    number.number = 12;
    LogRecord text = record(1, "P.text", "'x'");
    text.state = LogState::Stale;
    write(*open(), {number, text});
    EXPECT_EQ(
        "2026-11-21T06:00:00.000Z|P.level|16#0C|12.0|fresh\n"
        "2026-11-21T06:00:00.001Z|P.text|'x'|null|stale\n",
        rows("SELECT time || '|' || label || '|' || value || '|' || "
             "ifnull(number, 'null') || '|' || state FROM log"));
    EXPECT_EQ("0.0\n",
              rows("SELECT julianday(time) - julianday('2026-11-21 06:00:00') FROM log LIMIT 1"));
}

TEST_F(SqliteLogTest, TellsWhatThePlcRefuses)
{
    LogRecord refused = record(0, "P.level", "");
    refused.state = LogState::Refused;
    write(*open(), {refused});
    EXPECT_EQ("P.level||refused\n", rows("SELECT label || '|' || value || '|' || state FROM log"));
}

TEST_F(SqliteLogTest, OfTheFirstVersionCallsStaleWhatIsRefused)
{
    execute(R"(
        CREATE TABLE label(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
        CREATE TABLE sample(id INTEGER PRIMARY KEY, time TEXT NOT NULL,
            label INTEGER NOT NULL REFERENCES label(id), value TEXT NOT NULL, number REAL,
            state TEXT NOT NULL CHECK(state IN ('fresh', 'stale')));
        CREATE VIEW log AS SELECT sample.time AS time, label.name AS label, sample.value AS value,
            sample.number AS number, sample.state AS state
            FROM sample JOIN label ON label.id = sample.label ORDER BY sample.id;
        PRAGMA application_id = 0x706c636c;
        PRAGMA user_version = 1)");
    LogRecord refused = record(0, "P.level", "");
    refused.state = LogState::Refused;
    write(*open(), {refused});
    EXPECT_EQ("P.level||stale\n", rows("SELECT label || '|' || value || '|' || state FROM log"));
}

TEST_F(SqliteLogTest, EachLabelIsKeptOnceOverSeveralRuns)
{
    write(*open(), {record(0, "P.a", "1"), record(1, "P.a", "2"), record(1, "P.b", "2")});
    write(*open(), {record(2, "P.b", "3"), record(2, "P.a", "3")});
    EXPECT_EQ("P.a\nP.b\n", rows("SELECT name FROM label ORDER BY id"));
    EXPECT_EQ("P.a\nP.a\nP.b\nP.b\nP.a\n", rows("SELECT label FROM log"));
}

TEST_F(SqliteLogTest, IsReadableWhileItIsWritten)
{
    const std::unique_ptr<SqliteLog> log = open();
    write(*log, {record(0, "P.a", "1")});
    EXPECT_EQ("wal\n", rows("PRAGMA journal_mode"));
    EXPECT_EQ("1\n", rows("SELECT value FROM log"));
    write(*log, {record(1, "P.a", "2")});
    EXPECT_EQ("1\n2\n", rows("SELECT value FROM log"));
}

TEST_F(SqliteLogTest, ALogThatWasNotClosedGoesOn)
{
    const std::unique_ptr<SqliteLog> open1 = open();
    write(*open1, {record(0, "P.a", "1")});
    // The files as a killed program leaves them: the journal is still to be taken in.
    ASSERT_TRUE(QFile::copy(file, path("b.sqlite")));
    ASSERT_TRUE(QFile::copy(file + QStringLiteral("-wal"), path("b.sqlite-wal")));
    const std::unique_ptr<SqliteLog> copy = opened(path("b.sqlite"));
    ASSERT_TRUE(copy);
    write(*copy, {record(1, "P.a", "2")});
    ASSERT_EQ(2, exported(path("b.sqlite"), path("b.csv"))) << error.toStdString();
}

TEST_F(SqliteLogTest, LeavesADatabaseAloneThatIsNoLog)
{
    execute("CREATE TABLE recipe(id INTEGER)");
    EXPECT_FALSE(succeeds(SqliteLog::open(file)));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("a.sqlite: the database exists and is no "
                                                          "log of plc"));
    EXPECT_EQ("recipe\n", rows("SELECT name FROM sqlite_master"));
    EXPECT_FALSE(exported(path("a.csv")));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("no log of plc"));
}

TEST_F(SqliteLogTest, LeavesAFileAloneThatIsNoDatabase)
{
    put(file, "this is a letter and no database at all");
    EXPECT_FALSE(succeeds(SqliteLog::open(file)));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("a.sqlite: file is not a database"));
    EXPECT_EQ("this is a letter and no database at all", content(file));
}

TEST_F(SqliteLogTest, AFileThatCannotBeCreatedIsNamedWithTheReason)
{
    EXPECT_FALSE(succeeds(SqliteLog::open(path("nowhere/a.sqlite"))));
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("nowhere/a.sqlite: unable to open database file (No such file "
                                    "or directory)"));
}

TEST_F(SqliteLogTest, WhenTheDiskIsFullTheRecordsOfThatWriteAreLeftOutAltogether)
{
    const std::unique_ptr<SqliteLog> log = open();
    write(*log, {record(0, "P.a", "1")});
    QVector<LogRecord> many;
    for (int i = 0; i < 5000; ++i)
        many.append(record(i, "P.b", "2"));
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {100000, RLIM_INFINITY};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    EXPECT_FALSE(succeeds(log->write(many)));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("a.sqlite: "));
    EXPECT_EQ("1\n", rows("SELECT value FROM log"));
    EXPECT_EQ("P.a\n", rows("SELECT name FROM label"));
}

TEST_F(SqliteLogTest, ExportsToCsvInTheOrderOfTheLog)
{
    LogRecord stale = record(5, "P.a", "[1, 2]");
    stale.state = LogState::Stale;
    write(*open(), {record(7, "P.b", "1"), stale});
    qint64 told = 0;
    qint64 total = 0;
    const Expected<qint64> records = exportLog(file, path("a.csv"), [&](qint64 done, qint64 all) {
        told = done;
        total = all;
    });
    ASSERT_TRUE(succeeds(records)) << error.toStdString();
    EXPECT_EQ(2, *records);
    EXPECT_EQ(2, told);
    EXPECT_EQ(2, total);
    EXPECT_EQ(
        "time,label,value,state\n"
        "2026-11-21T06:00:00.007Z,P.b,1,fresh\n"
        "2026-11-21T06:00:00.005Z,P.a,\"[1, 2]\",stale\n",
        content(path("a.csv")));
}

TEST_F(SqliteLogTest, ExportDoesNotReplaceAFile)
{
    open();
    put(path("a.csv"), "mine");
    EXPECT_FALSE(exported(path("a.csv")));
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("a.csv exists; remove it or name another file"));
    EXPECT_EQ("mine", content(path("a.csv")));
}

TEST_F(SqliteLogTest, ExportThatCannotWriteLeavesNoFile)
{
    open();
    EXPECT_FALSE(exported(path("nowhere/a.csv")));
    EXPECT_THAT(error.toStdString(),
                ::testing::HasSubstr("nowhere/a.csv: cannot be written: No such file"));
}

TEST_F(SqliteLogTest, ExportOfNothingSaysSo)
{
    EXPECT_FALSE(exported(path("a.csv")));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("a.sqlite: unable to open"));
    EXPECT_EQ("", names());
}

} // namespace
} // namespace test
} // namespace plc::log
