#include "cli/log_command.h"
#include "tests/cli/parsing.h"
#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

class LogOptionsTest : public Parsing {
protected:
    LogOptionsTest() { qputenv("PLC_PROJECT", "a.json"); }

    static LogOptions log(const QStringList& arguments)
    {
        return optionsOf<LogOptions>(QStringList{QStringLiteral("log")} + arguments);
    }
    static QString complaint(const QStringList& arguments)
    {
        return Parsing::complaint(QStringList{QStringLiteral("log")} + arguments);
    }
};

TEST_F(LogOptionsTest, LogsChangesToOneFileUnlessToldOtherwise)
{
    const LogOptions options = log({"--output", "a.csv", "A.x"});
    EXPECT_EQ("a.csv", options.output);
    EXPECT_EQ(0, options.every);
    EXPECT_EQ(0, options.rotateSize);
    EXPECT_EQ(0, options.rotateEvery);
    EXPECT_EQ(0, options.keep);
    EXPECT_EQ(QStringList{"A.x"}, log({"-o", "a.csv", "A.x"}).arguments);
}

TEST_F(LogOptionsTest, TheNameDecidesOnTheKindOfFile)
{
    for (const char* name : {"a.sqlite", "a.sqlite3", "a.db", "A.SQLITE"})
        EXPECT_TRUE(isDatabase(QString::fromLatin1(name))) << name;
    for (const char* name : {"a.csv", "sqlite", "a.db.csv"})
        EXPECT_FALSE(isDatabase(QString::fromLatin1(name))) << name;
    EXPECT_EQ("--output takes a file that ends in .csv, .sqlite, .sqlite3 or .db, not \"a.txt\"",
              complaint({"--output", "a.txt"}));
    EXPECT_EQ("plc log takes --output FILE, ending in .csv or .sqlite", complaint({}));
}

TEST_F(LogOptionsTest, APlcIsNamedInDatabasesOnly)
{
    EXPECT_EQ("Tank 1", log({"-o", "a.db", "--plc", "Tank 1"}).plc);
    EXPECT_EQ("Tank 1", log({"-o", "a.db", "--plc", "Tank 1", "--convert", "b.csv"}).plc);
    EXPECT_EQ("--plc is for databases", complaint({"-o", "a.csv", "--plc", "Tank 1"}));
    EXPECT_EQ("--plc is for databases",
              complaint({"-o", "a.csv", "--plc", "Tank 1", "--export", "b.db"}));
}

TEST_F(LogOptionsTest, DurationsHaveUnits)
{
    EXPECT_EQ(500, log({"-o", "a.csv", "--every", "500ms"}).every);
    EXPECT_EQ(90000, log({"-o", "a.csv", "--every", "1m30s"}).every);
    EXPECT_EQ(86400000, log({"-o", "a.csv", "--every", "1d"}).every);
    EXPECT_EQ(2592000000, log({"-o", "a.csv", "--rotate-every", "30d"}).rotateEvery);
    for (const char* wrong : {"10", "0s", "-1s", "2d", "soon", "nan", "1e99ms"}) {
        EXPECT_EQ(complaint({"-o", "a.csv", "--every", wrong}),
                  QStringLiteral("--every takes a duration such as 500ms, 10s or 1m30s, from 1ms "
                                 "to 1d, not \"%1\"")
                      .arg(QLatin1String(wrong)));
    }
}

TEST_F(LogOptionsTest, SizesMayHaveUnits)
{
    EXPECT_EQ(1000, log({"-o", "a.csv", "--rotate-size", "1000"}).rotateSize);
    EXPECT_EQ(512000, log({"-o", "a.csv", "--rotate-size", "500k"}).rotateSize);
    EXPECT_EQ(67108864, log({"-o", "a.csv", "--rotate-size", "64M"}).rotateSize);
    EXPECT_EQ(2147483648, log({"-o", "a.csv", "--rotate-size", "2g"}).rotateSize);
    for (const char* wrong : {"0", "-1k", "k", "1T", "9999999999G"}) {
        EXPECT_EQ(complaint({"-o", "a.csv", "--rotate-size", wrong}),
                  QStringLiteral("--rotate-size takes a number of bytes such as 500k, 64M or 2G, "
                                 "not \"%1\"")
                      .arg(QLatin1String(wrong)));
    }
}

TEST_F(LogOptionsTest, OnlyCsvFilesRotate)
{
    EXPECT_EQ(3, log({"-o", "a.csv", "--rotate-size", "1k", "--keep", "3"}).keep);
    EXPECT_EQ("--rotate-size and --rotate-every are for .csv files",
              complaint({"-o", "a.db", "--rotate-every", "1h"}));
    EXPECT_EQ("--keep goes with --rotate-size or --rotate-every",
              complaint({"-o", "a.csv", "--keep", "3"}));
}

TEST_F(LogOptionsTest, AnExportNeedsNoProject)
{
    qunsetenv("PLC_PROJECT");
    EXPECT_EQ("a.db", log({"--export", "a.db", "-o", "a.csv"}).exported);
    EXPECT_EQ("no project file; give it with --project or in PLC_PROJECT",
              complaint({"-o", "a.csv"}));
    EXPECT_EQ("--export writes a .csv file, not \"b.db\"",
              complaint({"--export", "a.db", "-o", "b.db"}));
    EXPECT_EQ("--export takes the whole database; leave out the labels",
              complaint({"--export", "a.db", "-o", "a.csv", "A.x"}));
    EXPECT_EQ("--every has no meaning with --export",
              complaint({"--export", "a.db", "-o", "a.csv", "--every", "1s"}));
}

TEST_F(LogOptionsTest, AnExportHasAFormatAndARange)
{
    const LogOptions options =
        log({"--export", "a.db", "-o", "a.txt", "--format", "influx", "--from",
             "2026-11-21T06:00:00Z", "--to", "2026-11-21T08:00:00+01:00"});
    EXPECT_EQ("influx", options.format);
    EXPECT_EQ("--format takes csv, influx, postgresql, openmetrics or prometheus, not \"xml\"",
              complaint({"--export", "a.db", "-o", "a.csv", "--format", "xml"}));
    EXPECT_EQ("--from takes a time such as 2026-11-21T06:00:00Z, not \"2026-11-21T06:00:00\"",
              complaint({"--export", "a.db", "-o", "a.csv", "--from", "2026-11-21T06:00:00"}));
    EXPECT_EQ("--to 2026-11-21T05:59:59Z is before --from 2026-11-21T07:00:00+01:00",
              complaint({"--export", "a.db", "-o", "a.csv", "--from", "2026-11-21T07:00:00+01:00",
                         "--to", "2026-11-21T05:59:59Z"}));
    EXPECT_EQ("--to has no meaning without --export",
              complaint({"-o", "a.csv", "--to", "2026-11-21T06:00:00Z"}));
    EXPECT_EQ("--export writes a .csv file, not \"a.txt\"",
              complaint({"--export", "a.db", "-o", "a.txt"}));
}

TEST_F(LogOptionsTest, AConversionMakesADatabaseAndNeedsNoProject)
{
    qunsetenv("PLC_PROJECT");
    EXPECT_EQ("a.csv", log({"--convert", "a.csv", "-o", "a.db", "--every", "10s"}).converted);
    EXPECT_EQ("--convert makes a database, not \"b.csv\"",
              complaint({"--convert", "a.db", "-o", "b.csv"}));
    EXPECT_EQ("--convert takes the whole log; leave out the labels",
              complaint({"--convert", "a.csv", "-o", "a.db", "A.x"}));
    EXPECT_EQ("--export and --convert do not go together",
              complaint({"--convert", "a.db", "--export", "a.db", "-o", "b.csv"}));
}

} // namespace
} // namespace test
} // namespace plc::cli
