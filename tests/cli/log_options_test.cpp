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
    EXPECT_EQ(options.output, "a.csv");
    EXPECT_EQ(options.every, 0);
    EXPECT_EQ(options.rotateSize, 0);
    EXPECT_EQ(options.rotateEvery, 0);
    EXPECT_EQ(options.keep, 0);
    EXPECT_EQ(log({"-o", "a.csv", "A.x"}).arguments, QStringList{"A.x"});
}

TEST_F(LogOptionsTest, TheNameDecidesOnTheKindOfFile)
{
    for (const char* name : {"a.sqlite", "a.sqlite3", "a.db", "A.SQLITE"})
        EXPECT_TRUE(isDatabase(QString::fromLatin1(name))) << name;
    for (const char* name : {"a.csv", "sqlite", "a.db.csv"})
        EXPECT_FALSE(isDatabase(QString::fromLatin1(name))) << name;
    EXPECT_EQ(complaint({"--output", "a.txt"}),
              "--output takes a file that ends in .csv, .sqlite, .sqlite3 or .db, not \"a.txt\"");
    EXPECT_EQ(complaint({}), "plc log takes --output FILE, ending in .csv or .sqlite");
}

TEST_F(LogOptionsTest, DurationsHaveUnits)
{
    EXPECT_EQ(log({"-o", "a.csv", "--every", "500ms"}).every, 500);
    EXPECT_EQ(log({"-o", "a.csv", "--every", "1m30s"}).every, 90000);
    EXPECT_EQ(log({"-o", "a.csv", "--every", "1d"}).every, 86400000);
    EXPECT_EQ(log({"-o", "a.csv", "--rotate-every", "30d"}).rotateEvery, 2592000000);
    for (const char* wrong : {"10", "0s", "-1s", "2d", "soon", "nan", "1e99ms"}) {
        EXPECT_EQ(complaint({"-o", "a.csv", "--every", wrong}),
                  QStringLiteral("--every takes a duration such as 500ms, 10s or 1m30s, from 1ms "
                                 "to 1d, not \"%1\"")
                      .arg(QLatin1String(wrong)));
    }
}

TEST_F(LogOptionsTest, SizesMayHaveUnits)
{
    EXPECT_EQ(log({"-o", "a.csv", "--rotate-size", "1000"}).rotateSize, 1000);
    EXPECT_EQ(log({"-o", "a.csv", "--rotate-size", "500k"}).rotateSize, 512000);
    EXPECT_EQ(log({"-o", "a.csv", "--rotate-size", "64M"}).rotateSize, 67108864);
    EXPECT_EQ(log({"-o", "a.csv", "--rotate-size", "2g"}).rotateSize, 2147483648);
    for (const char* wrong : {"0", "-1k", "k", "1T", "9999999999G"}) {
        EXPECT_EQ(complaint({"-o", "a.csv", "--rotate-size", wrong}),
                  QStringLiteral("--rotate-size takes a number of bytes such as 500k, 64M or 2G, "
                                 "not \"%1\"")
                      .arg(QLatin1String(wrong)));
    }
}

TEST_F(LogOptionsTest, OnlyCsvFilesRotate)
{
    EXPECT_EQ(log({"-o", "a.csv", "--rotate-size", "1k", "--keep", "3"}).keep, 3);
    EXPECT_EQ(complaint({"-o", "a.db", "--rotate-every", "1h"}),
              "--rotate-size and --rotate-every are for .csv files");
    EXPECT_EQ(complaint({"-o", "a.csv", "--keep", "3"}),
              "--keep goes with --rotate-size or --rotate-every");
}

TEST_F(LogOptionsTest, AnExportNeedsNoProject)
{
    qunsetenv("PLC_PROJECT");
    EXPECT_EQ(log({"--export", "a.db", "-o", "a.csv"}).exported, "a.db");
    EXPECT_EQ(complaint({"-o", "a.csv"}),
              "no project file; give it with --project or in PLC_PROJECT");
    EXPECT_EQ(complaint({"--export", "a.db", "-o", "b.db"}),
              "--export writes a .csv file, not \"b.db\"");
    EXPECT_EQ(complaint({"--export", "a.db", "-o", "a.csv", "A.x"}),
              "--export takes the whole database; leave out the labels");
    EXPECT_EQ(complaint({"--export", "a.db", "-o", "a.csv", "--every", "1s"}),
              "--every has no meaning with --export");
}

} // namespace
} // namespace test
} // namespace plc::cli
