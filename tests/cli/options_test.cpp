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
    EXPECT_EQ(parse(line)->command, &kReadCommand);
    const auto options = optionsOf<ReadOptions>(line);
    EXPECT_EQ(options.arguments, (QStringList{"A.x", "A.y"}));
    EXPECT_EQ(options.projectFile, "a.json");
    EXPECT_EQ(options.port, 99);
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.trace);
}

TEST_F(OptionsTest, UnknownOptionIsNamedAndSentToTheHelp)
{
    EXPECT_EQ(complaint({"read", "--bogus"}), "Unknown option 'bogus'. --help lists the options.");
}

TEST_F(OptionsTest, ProjectComesFromTheEnvironmentUnlessItIsGiven)
{
    EXPECT_EQ(complaint({"run"}), "no project file; give it with --project or in PLC_PROJECT");
    qputenv("PLC_PROJECT", "/etc/plant.json");
    EXPECT_EQ(optionsOf<RunOptions>({"run"}).projectFile, "/etc/plant.json");
    EXPECT_EQ(optionsOf<RunOptions>({"run", "--project", "b.json"}).projectFile, "b.json");
}

TEST_F(OptionsTest, RunHasItsOwnOptions)
{
    const auto options = optionsOf<RunOptions>(
        {"run", "-p", "a", "--for", "2.5", "--cycle", "0", "--interval", "50", "--station-off", "3",
         "--station-off", "4", "--address", "plc.local", "--timeout", "250", "--trace"});
    EXPECT_EQ(options.duration, 2500);
    EXPECT_EQ(options.cycleTime, 0);
    EXPECT_EQ(options.interval, 50);
    EXPECT_EQ(options.stationsOff, (QVector<int>{3, 4}));
    EXPECT_EQ(options.address, "plc.local");
    EXPECT_EQ(options.timeout, 250);
    EXPECT_TRUE(options.trace);
    EXPECT_FALSE(options.once);
    EXPECT_EQ(complaint({"read", "-p", "a", "A.x", "--for", "2"}),
              "--for is no option of plc read");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--trace"}), "--trace is no option of plc symbols");
}

TEST_F(OptionsTest, PlanTakesTheProjectAsItsArgumentAndTheNetworkAsOptions)
{
    const auto options =
        optionsOf<PlanOptions>({"plan", "a.json", "--rtt", "2.5", "--mbit", "10", "--json"});
    EXPECT_EQ(options.projectFile, "a.json");
    EXPECT_TRUE(options.arguments.isEmpty());
    EXPECT_DOUBLE_EQ(options.roundTrip, 2.5);
    EXPECT_DOUBLE_EQ(options.bandwidth, 10);
    EXPECT_EQ(optionsOf<PlanOptions>({"plan", "-p", "b.json"}).projectFile, "b.json");
    EXPECT_EQ(optionsOf<PlanOptions>({"plan", "-p", "b.json"}).roundTrip, 1);
    EXPECT_EQ(complaint({"plan"}), "no project file; give it with --project or in PLC_PROJECT");
    EXPECT_EQ(complaint({"plan", "a.json", "b.json"}), "plc plan takes at most one project file");
    EXPECT_EQ(complaint({"plan", "a.json", "--rtt", "far"}),
              "--rtt takes a duration such as 500ms, 10s or 1m30s or a number of ms, from 0s to "
              "1m, not \"far\"");
    EXPECT_EQ(complaint({"plan", "a.json", "--mbit", "0"}),
              "--mbit takes a number from 0.001 to 100000, not \"0\"");
    EXPECT_EQ(complaint({"run", "-p", "a", "--rtt", "1"}), "--rtt is no option of plc run");
    EXPECT_EQ(complaint({"plan", "a.json", "--trace"}), "--trace is no option of plc plan");
}

TEST_F(OptionsTest, ImportNeedsNoProject)
{
    const auto options = optionsOf<ImportOptions>(
        {"import", "a.st", "b.st", "-o", "c.json", "--area", "1", "--base", "2:100", "--align", "8",
         "--scope", "GVL", "--name", "Line", "--all-warnings"});
    EXPECT_EQ(options.arguments, (QStringList{"a.st", "b.st"}));
    EXPECT_EQ(options.output, "c.json");
    EXPECT_EQ(options.name, "Line");
    EXPECT_TRUE(options.allWarnings);
    EXPECT_EQ(options.places.defaultArea, 1);
    EXPECT_EQ(options.places.base->area, 2);
    EXPECT_EQ(options.places.base->offset, 100);
    EXPECT_EQ(options.places.alignment, 8);
    EXPECT_EQ(options.places.globalScope, "GVL");
    for (const char* base : {"1", "1:", ":1", "1:2:3", "-1:0", "1:-1", "65536:0", "a:b"})
        EXPECT_EQ(complaint({"import", "a.st", "--base", base}),
                  QStringLiteral("--base takes AREA:OFFSET such as 1:2000, not \"%1\"")
                      .arg(QLatin1String(base)));
    EXPECT_EQ(complaint({"import", "a.st", "--merge", "b", "--name", "c"}),
              "--merge keeps the project's name; leave out --name");
    EXPECT_EQ(complaint({"read", "-p", "a", "A.x", "--base", "1:2"}),
              "--base is no option of plc read");
}

TEST_F(OptionsTest, SymbolsHasOneFormAtATime)
{
    const auto options =
        optionsOf<SymbolsOptions>({"symbols", "-p", "a", "--tree", "--depth", "2", "x"});
    EXPECT_TRUE(options.tree);
    EXPECT_EQ(options.depth, 2);
    EXPECT_EQ(optionsOf<SymbolsOptions>({"symbols", "-p", "a", "--check", "--gap", "8"}).gap, 8);
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--depth", "2"}), "--depth goes with --tree");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--gap", "2"}), "--gap goes with --check");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--tree", "--check"}),
              "--tree and --check are two different lists; give one");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--tree", "--csv"}),
              "--csv is for the plain list; leave out --tree, --check");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--check", "x"}),
              "--check takes all of the project; leave out the pattern");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "--json", "--csv"}),
              "--csv and --json are two different forms; give one");
}

TEST_F(OptionsTest, AFileOfLabelsTakesThePlaceOfLabels)
{
    EXPECT_EQ(optionsOf<ReadOptions>({"read", "-p", "a", "--labels", "b.csv"}).labelFile, "b.csv");
    EXPECT_EQ(complaint({"write", "-p", "a", "A.x=1", "--labels", "b.csv"}),
              "--labels is no option of plc write");
}

TEST_F(OptionsTest, AllTimesAreWrittenAlike)
{
    const auto options = optionsOf<RunOptions>({"run", "-p", "a", "--for", "1m30s", "--cycle",
                                                "20ms", "--interval", "0.5s", "--timeout", "2s"});
    EXPECT_EQ(options.duration, 90000);
    EXPECT_EQ(options.cycleTime, 20);
    EXPECT_EQ(options.interval, 500);
    EXPECT_EQ(options.timeout, 2000);
    EXPECT_EQ(optionsOf<PlanOptions>({"plan", "a.json", "--rtt", "0.25ms"}).roundTrip, 0.25);
    EXPECT_EQ(optionsOf<PlanOptions>({"plan", "a.json", "--rtt", "1s"}).roundTrip, 1000);
    EXPECT_EQ(optionsOf<RunOptions>({"run", "-p", "a", "--for", "1d"}).duration, 86400000);
    EXPECT_EQ(optionsOf<RunOptions>({"run", "-p", "a", "--cycle", "0"}).cycleTime, 0);
    EXPECT_EQ(optionsOf<RunOptions>({"run", "-p", "a", "--for", "0.0001"}).duration, 1)
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
    EXPECT_EQ(complaint({"read", "-p", "a", "A.x", "--force"}), "--force goes with --capture");
    EXPECT_EQ(complaint({"import", "a.st", "--force"}), "--force is no option of plc import");
}

TEST_F(OptionsTest, ReadOnlyIsForAllThatConnect)
{
    EXPECT_FALSE(optionsOf<LinkOptions>({"write", "-p", "a", "A.x=1"}).readOnly);
    for (const char* command : {"run", "watch", "write", "stats"})
        EXPECT_TRUE(optionsOf<LinkOptions>({command, "-p", "a", "A.x=1", "--read-only"}).readOnly)
            << command;
    EXPECT_EQ(complaint({"resolve", "-p", "a", "A.x", "--read-only"}),
              "--read-only is no option of plc resolve");
}

TEST_F(OptionsTest, WithoutOptionsRunGoesOnAtItsUsualPace)
{
    const auto options = optionsOf<RunOptions>({"run", "-p", "a"});
    EXPECT_EQ(options.duration, 0);
    EXPECT_EQ(options.interval, 0);
    EXPECT_EQ(options.cycleTime, 100);
    EXPECT_EQ(options.port, 0);
    EXPECT_EQ(options.timeout, 0);
    EXPECT_TRUE(options.stationsOff.isEmpty());
}

TEST_F(OptionsTest, WrongUsageIsExplained)
{
    EXPECT_EQ(
        complaint({}),
        "a command is expected: run, watch, log, read, write, resolve, symbols, import, plan, "
        "diagnose, stats (plc --help tells more)");
    EXPECT_EQ(complaint({"raed", "-p", "a"}),
              "\"raed\" is no command (did you mean \"read\"?); there are run, watch, log, read, "
              "write, resolve, symbols, import, plan, diagnose, stats");
    EXPECT_EQ(complaint({"read", "-p", "a"}), "plc read takes at least one label");
    EXPECT_EQ(complaint({"write", "-p", "a"}), "plc write takes at least one LABEL=VALUE");
    EXPECT_EQ(complaint({"symbols", "-p", "a", "x", "y"}), "plc symbols takes at most one pattern");
    EXPECT_EQ(complaint({"run", "-p", "a", "--port", "65536"}),
              "--port takes a number from 1 to 65535, not \"65536\"");
    EXPECT_EQ(complaint({"run", "-p", "a", "--port", "x"}),
              "--port takes a number from 1 to 65535, not \"x\"");
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
