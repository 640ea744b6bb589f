#include "cli/commands.h"
#include "cli/import_command.h"
#include "cli/plan_command.h"
#include "cli/read_command.h"
#include "cli/run_command.h"
#include "cli/symbols_command.h"
#include "cli/watch_command.h"
#include "tests/cli/parsing.h"
#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

class OptionsTest : public Parsing {
protected:
    OptionsTest() { qunsetenv("PLC_PROJECT"); }
};

TEST_F(OptionsTest, CommandAndItsArgumentsStandAnywhereAmongTheOptions)
{
    const QStringList line{"--json", "read", "-p", "a.json", "A.x", "--port", "99", "A.y"};
    EXPECT_EQ(&kReadCommand, parse(line)->command);
    const auto options = optionsOf<ReadOptions>(line);
    EXPECT_EQ((QStringList{"A.x", "A.y"}), options.arguments);
    EXPECT_EQ("a.json", options.projectFile);
    EXPECT_EQ(99, options.port);
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.trace);
}

TEST_F(OptionsTest, UnknownOptionIsNamedAndSentToTheHelp)
{
    EXPECT_EQ("Unknown option 'bogus'. --help lists the options.", complaint({"read", "--bogus"}));
}

TEST_F(OptionsTest, ProjectComesFromTheEnvironmentUnlessItIsGiven)
{
    EXPECT_EQ("no project file; give it with --project or in PLC_PROJECT", complaint({"run"}));
    qputenv("PLC_PROJECT", "/etc/plant.json");
    EXPECT_EQ("/etc/plant.json", optionsOf<RunOptions>({"run"}).projectFile);
    EXPECT_EQ("b.json", optionsOf<RunOptions>({"run", "--project", "b.json"}).projectFile);
}

TEST_F(OptionsTest, RunHasItsOwnOptions)
{
    const auto options = optionsOf<RunOptions>(
        {"run", "-p", "a", "--for", "2.5", "--cycle", "0", "--interval", "50", "--station-off", "3",
         "--station-off", "4", "--address", "plc.local", "--timeout", "250", "--trace"});
    EXPECT_EQ(2500, options.duration);
    EXPECT_EQ(0, options.cycleTime);
    EXPECT_EQ(50, options.interval);
    EXPECT_EQ((QVector<int>{3, 4}), options.stationsOff);
    EXPECT_EQ("plc.local", options.address);
    EXPECT_EQ(250, options.timeout);
    EXPECT_TRUE(options.trace);
    EXPECT_FALSE(options.once);
    EXPECT_EQ("--for is no option of plc read",
              complaint({"read", "-p", "a", "A.x", "--for", "2"}));
    EXPECT_EQ("--trace is no option of plc symbols", complaint({"symbols", "-p", "a", "--trace"}));
}

TEST_F(OptionsTest, PlanTakesTheProjectAsItsArgumentAndTheNetworkAsOptions)
{
    const auto options =
        optionsOf<PlanOptions>({"plan", "a.json", "--rtt", "2.5", "--mbit", "10", "--json"});
    EXPECT_EQ("a.json", options.projectFile);
    EXPECT_TRUE(options.arguments.isEmpty());
    EXPECT_DOUBLE_EQ(2.5, options.roundTrip);
    EXPECT_DOUBLE_EQ(10, options.bandwidth);
    EXPECT_EQ("b.json", optionsOf<PlanOptions>({"plan", "-p", "b.json"}).projectFile);
    EXPECT_EQ(1, optionsOf<PlanOptions>({"plan", "-p", "b.json"}).roundTrip);
    EXPECT_EQ("no project file; give it with --project or in PLC_PROJECT", complaint({"plan"}));
    EXPECT_EQ("plc plan takes at most one project file", complaint({"plan", "a.json", "b.json"}));
    EXPECT_EQ(
        "--rtt takes a duration such as 500ms, 10s or 1m30s or a number of ms, from 0s to "
        "1m, not \"far\"",
        complaint({"plan", "a.json", "--rtt", "far"}));
    EXPECT_EQ("--mbit takes a number from 0.001 to 100000, not \"0\"",
              complaint({"plan", "a.json", "--mbit", "0"}));
    EXPECT_EQ("--rtt is no option of plc run", complaint({"run", "-p", "a", "--rtt", "1"}));
    EXPECT_EQ("--trace is no option of plc plan", complaint({"plan", "a.json", "--trace"}));
}

TEST_F(OptionsTest, ImportNeedsNoProject)
{
    const auto options = optionsOf<ImportOptions>(
        {"import", "a.st", "b.st", "-o", "c.json", "--area", "1", "--base", "2:100", "--align", "8",
         "--scope", "GVL", "--name", "Line", "--all-warnings"});
    EXPECT_EQ((QStringList{"a.st", "b.st"}), options.arguments);
    EXPECT_EQ("c.json", options.output);
    EXPECT_EQ("Line", options.name);
    EXPECT_TRUE(options.allWarnings);
    EXPECT_EQ(1, options.places.defaultArea);
    EXPECT_EQ(2, options.places.base->area);
    EXPECT_EQ(100, options.places.base->offset);
    EXPECT_EQ(8, options.places.alignment);
    EXPECT_EQ("GVL", options.places.globalScope);
    for (const char* base : {"1", "1:", ":1", "1:2:3", "-1:0", "1:-1", "65536:0", "a:b"})
        EXPECT_EQ(complaint({"import", "a.st", "--base", base}),
                  QStringLiteral("--base takes AREA:OFFSET such as 1:2000, not \"%1\"")
                      .arg(QLatin1String(base)));
    EXPECT_EQ("--merge keeps the project's name; leave out --name",
              complaint({"import", "a.st", "--merge", "b", "--name", "c"}));
    EXPECT_EQ("--base is no option of plc read",
              complaint({"read", "-p", "a", "A.x", "--base", "1:2"}));
}

TEST_F(OptionsTest, ImportTakesNothingThatItHasNoUseFor)
{
    EXPECT_EQ("--project is no option of plc import",
              complaint({"import", "a.st", "--project", "b.json"}));
    EXPECT_EQ("--driver is no option of plc import",
              complaint({"import", "a.st", "--driver", "b.so"}));
    EXPECT_EQ("--json is no option of plc import", complaint({"import", "a.st", "--json"}));
}

TEST_F(OptionsTest, SymbolsHasOneFormAtATime)
{
    const auto options =
        optionsOf<SymbolsOptions>({"symbols", "-p", "a", "--tree", "--depth", "2", "x"});
    EXPECT_TRUE(options.tree);
    EXPECT_EQ(2, options.depth);
    EXPECT_EQ(8, optionsOf<SymbolsOptions>({"symbols", "-p", "a", "--check", "--gap", "8"}).gap);
    EXPECT_EQ("--depth goes with --tree", complaint({"symbols", "-p", "a", "--depth", "2"}));
    EXPECT_EQ("--gap goes with --check", complaint({"symbols", "-p", "a", "--gap", "2"}));
    EXPECT_EQ("--tree and --check are two different lists; give one",
              complaint({"symbols", "-p", "a", "--tree", "--check"}));
    EXPECT_EQ("--csv is for the plain list; leave out --tree, --check",
              complaint({"symbols", "-p", "a", "--tree", "--csv"}));
    EXPECT_EQ("--check takes all of the project; leave out the pattern",
              complaint({"symbols", "-p", "a", "--check", "x"}));
    EXPECT_EQ("--csv and --json are two different forms; give one",
              complaint({"symbols", "-p", "a", "--json", "--csv"}));
}

TEST_F(OptionsTest, AFileOfLabelsTakesThePlaceOfLabels)
{
    EXPECT_EQ("b.csv", optionsOf<ReadOptions>({"read", "-p", "a", "--labels", "b.csv"}).labelFile);
    EXPECT_EQ("--labels is no option of plc write",
              complaint({"write", "-p", "a", "A.x=1", "--labels", "b.csv"}));
}

TEST_F(OptionsTest, AllTimesAreWrittenAlike)
{
    const auto options = optionsOf<RunOptions>({"run", "-p", "a", "--for", "1m30s", "--cycle",
                                                "20ms", "--interval", "0.5s", "--timeout", "2s"});
    EXPECT_EQ(90000, options.duration);
    EXPECT_EQ(20, options.cycleTime);
    EXPECT_EQ(500, options.interval);
    EXPECT_EQ(2000, options.timeout);
    EXPECT_EQ(0.25, optionsOf<PlanOptions>({"plan", "a.json", "--rtt", "0.25ms"}).roundTrip);
    EXPECT_EQ(1000, optionsOf<PlanOptions>({"plan", "a.json", "--rtt", "1s"}).roundTrip);
    EXPECT_EQ(86400000, optionsOf<RunOptions>({"run", "-p", "a", "--for", "1d"}).duration);
    EXPECT_EQ(0, optionsOf<RunOptions>({"run", "-p", "a", "--cycle", "0"}).cycleTime);
    EXPECT_EQ(1, optionsOf<RunOptions>({"run", "-p", "a", "--for", "0.0001"}).duration)
        << "not for ever";
}

TEST_F(OptionsTest, AnEmptyValueIsNoValue)
{
    for (const char* option : {"--address", "--project", "--driver", "--capture", "--labels",
                               "--timeout", "--for", "--port", "--station-off", "--interval"}) {
        for (const char* value : {"", " "}) {
            EXPECT_EQ(complaint({"run", "-p", "a", option, value}),
                      QStringLiteral("%1 has an empty value; give one, or leave the option out")
                          .arg(QLatin1String(option)));
        }
    }
    for (const char* option : {"--output", "--merge", "--name", "--scope", "--base"})
        EXPECT_THAT(complaint({"import", "a.st", option, ""}).toStdString(),
                    ::testing::HasSubstr("has an empty value"));
    for (const char* option : {"--output", "--export", "--every", "--rotate-size"})
        EXPECT_THAT(complaint({"log", "-p", "a", option, ""}).toStdString(),
                    ::testing::HasSubstr("has an empty value"));
}

TEST_F(OptionsTest, ForceGoesWithAFileThatItReplaces)
{
    EXPECT_TRUE(
        optionsOf<ReadOptions>({"read", "-p", "a", "A.x", "--capture", "b", "--force"}).force);
    EXPECT_EQ("--force goes with --capture", complaint({"read", "-p", "a", "A.x", "--force"}));
    EXPECT_EQ("--force is no option of plc import", complaint({"import", "a.st", "--force"}));
}

TEST_F(OptionsTest, ReadOnlyIsForAllThatConnect)
{
    EXPECT_FALSE(optionsOf<LinkOptions>({"write", "-p", "a", "A.x=1"}).readOnly);
    for (const char* command : {"run", "watch", "write", "stats"})
        EXPECT_TRUE(optionsOf<LinkOptions>({command, "-p", "a", "A.x=1", "--read-only"}).readOnly)
            << command;
    EXPECT_EQ("--read-only is no option of plc resolve",
              complaint({"resolve", "-p", "a", "A.x", "--read-only"}));
}

TEST_F(OptionsTest, WithoutOptionsRunGoesOnAtItsUsualPace)
{
    const auto options = optionsOf<RunOptions>({"run", "-p", "a"});
    EXPECT_EQ(0, options.duration);
    EXPECT_EQ(0, options.interval);
    EXPECT_EQ(100, options.cycleTime);
    EXPECT_EQ(0, options.port);
    EXPECT_EQ(0, options.timeout);
    EXPECT_TRUE(options.stationsOff.isEmpty());
}

TEST_F(OptionsTest, WrongUsageIsExplained)
{
    EXPECT_EQ(
        "a command is expected: run, watch, log, read, write, resolve, symbols, import, plan, "
        "diagnose, stats (plc --help tells more)",
        complaint({}));
    EXPECT_EQ(
        "\"raed\" is no command (did you mean \"read\"?); there are run, watch, log, read, "
        "write, resolve, symbols, import, plan, diagnose, stats",
        complaint({"raed", "-p", "a"}));
    EXPECT_EQ("plc read takes at least one label", complaint({"read", "-p", "a"}));
    EXPECT_EQ("plc write takes at least one LABEL=VALUE", complaint({"write", "-p", "a"}));
    EXPECT_EQ("plc symbols takes at most one pattern", complaint({"symbols", "-p", "a", "x", "y"}));
    EXPECT_EQ("--port takes a number from 1 to 65535, not \"65536\"",
              complaint({"run", "-p", "a", "--port", "65536"}));
    EXPECT_EQ("--port takes a number from 1 to 65535, not \"x\"",
              complaint({"run", "-p", "a", "--port", "x"}));
    for (const char* wrong : {"0", "0s", "nan", "-1", "3000000000", "1x", "T#1s"}) {
        EXPECT_EQ(complaint({"run", "-p", "a", "--for", wrong}),
                  QStringLiteral("--for takes a duration such as 500ms, 10s or 1m30s or a number "
                                 "of seconds, from 1ms to 24d20h31m23s647ms, not \"%1\"")
                      .arg(QLatin1String(wrong)));
    }
    EXPECT_THAT(complaint({"run", "-p", "a", "--fro", "3"}).toStdString(),
                ::testing::HasSubstr("fro"));
    EXPECT_FALSE(complaint({"run", "-p"}).isEmpty());
}

TEST_F(OptionsTest, HelpNeedsNothingElse)
{
    for (const char* option : {"-h", "--help"}) {
        const Expected<Invocation> help = parse({option});
        ASSERT_TRUE(help);
        EXPECT_THAT(help->information.toStdString(),
                    ::testing::HasSubstr("plc write LABEL=VALUE..."));
    }
    EXPECT_FALSE(parse({"--version"})->information.isEmpty());
}

} // namespace
} // namespace test
} // namespace plc::cli
