// The command line as scripts use it: exit codes, messages, and the trace.

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

constexpr char kCommandLineProject[] = R"({
  'name': 'Commands',
  'areas': [{'index': 3, 'size': 64}],
  'scopes': [{'name': 'MAIN', 'variables': [
    {'name': 'speed', 'type': 'INT', 'area': 3, 'offset': 10},
    {'name': 'tab', 'type': 'INT', 'area': 3, 'offset': 20, 'array': [[1, 4]]}]}],
  'cyclic': ['MAIN.speed']
})";

class CommandLine : public Plant {
protected:
    CommandLine()
    {
        writeProject(kCommandLineProject);
        startSimulator();
    }
};

TEST_F(CommandLine, TraceShowsEveryFrameOfARead)
{
    poke(3, 10, "1234");
    const Outcome outcome = run("read", {QStringLiteral("MAIN.speed"), QStringLiteral("--trace")});
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_EQ(QStringList{QStringLiteral("MAIN.speed = 4660")}, outcome.lines);
    constexpr const char* kFrames[] = {
        "> 20 bytes: BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00",
        "> 23 bytes: BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00",
        // one entry: area 3, address 10, two bytes
        "> 26 bytes: BB BB 00 00 00 14 2E 00 00 00 00 01 00 03 00 00 00 0A 00 00 00 02 00 01",
        "< 15 bytes: BB BB 00 00 00 09 00 00 00 00 00 01 00 12 34"};
    int at = 0;
    for (const char* frame : kFrames) {
        at = int(outcome.errors.indexOf(QLatin1String(frame), at));
        ASSERT_GE(at, 0) << frame << "\n" << outcome.errors.toStdString();
    }
}

TEST_F(CommandLine, TraceShowsTheInformationBytesTurnedRoundAtTheEndOfARequest)
{
    const Outcome outcome = run("read", {QStringLiteral("MAIN.speed"), QStringLiteral("--trace")});
    const QString fileReply =
        outcome.errors.section(QStringLiteral("< 36 bytes: "), 1).section(QLatin1Char('\n'), 0, 0);
    const QString readRequest =
        outcome.errors.section(QStringLiteral("> 26 bytes: "), 1).section(QLatin1Char('\n'), 0, 0);
    const QStringList reply = fileReply.split(QLatin1Char(' '));
    const QStringList request = readRequest.split(QLatin1Char(' '));
    ASSERT_GE(reply.size(), 26) << outcome.errors.toStdString();
    ASSERT_GE(request.size(), 26);
    EXPECT_EQ(reply.at(25), request.at(24));
    EXPECT_EQ(reply.at(24), request.at(25));
}

TEST_F(CommandLine, ResolveShowsTypeAreaAndAddressWithoutAPlc)
{
    useNoPort();
    const Outcome outcome =
        run("resolve", {QStringLiteral("MAIN.tab[3]"), QStringLiteral("--json")});
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    const QJsonObject object = parseJson(outcome.lines.value(0));
    EXPECT_EQ("INT", object.value(QLatin1String("type")).toString().toStdString());
    EXPECT_EQ(3, object.value(QLatin1String("area")).toInt());
    EXPECT_EQ(24, object.value(QLatin1String("address")).toInt());
}

TEST_F(CommandLine, SymbolsListsWhatMatches)
{
    useNoPort();
    const Outcome outcome = run("symbols", {QStringLiteral("*sp*")});
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_EQ(QStringList{QStringLiteral("MAIN.speed: INT, area 3 address 10")}, outcome.lines);
}

TEST_F(CommandLine, ReadOfSeveralLabelsKeepsTheirOrder)
{
    poke(3, 20, "0001000200030004");
    const Outcome outcome =
        run("read", {QStringLiteral("MAIN.tab[4]"), QStringLiteral("MAIN.tab[1]"),
                     QStringLiteral("MAIN.tab[2]*2")});
    EXPECT_EQ((QStringList{QStringLiteral("MAIN.tab[4] = 4"), QStringLiteral("MAIN.tab[1] = 1"),
                           QStringLiteral("MAIN.tab[2]*2 = [2, 3]")}),
              outcome.lines);
}

TEST_F(CommandLine, ExitCodeIs1WhenNobodyListens)
{
    usePort(1);
    const Outcome outcome = run("read", {QStringLiteral("MAIN.speed")});
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_EQ(
        "plc: no link to 127.0.0.1:1: Connection refused; plc diagnose tells where it fails "
        "and what to try\n"
        "plc: MAIN.speed (area 3 address 10): not sent: Connection refused\n",
        outcome.errors.toStdString());
}

TEST_F(CommandLine, AFailedWriteSaysWhatWhereAndWhy)
{
    EXPECT_EQ("", simulator().command(QStringLiteral("fail-writes on")));
    const Outcome outcome = run("write", {QStringLiteral("MAIN.speed=5")});
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_TRUE(outcome.lines.isEmpty());
    EXPECT_EQ(
        "plc: MAIN.speed = 5 (area 3 address 10): refused: result 12, the reply is no good "
        "answer: its length or its status is wrong; the PLC's status 0x0040: it may not "
        "have this address; compare it with the PLC's program\n",
        outcome.errors.toStdString());
}

TEST_F(CommandLine, WithJsonEveryLineOfEveryCommandIsAnObject)
{
    const struct {
        const char* command;
        QStringList arguments;
        QStringList members; ///< That each line has, or the last one of many.
    } kCommands[] = {
        {"read", {"MAIN.speed", "MAIN.tab[1]*4"}, {"label", "type", "value", "outcome"}},
        {"write", {"MAIN.speed=5"}, {"label", "type", "value", "outcome"}},
        {"run", {"--once"}, {"label", "type", "value", "outcome"}},
        {"run", {"--for", "0.3"}, {"time", "event"}},
        {"stats", {"--for", "0.3"}, {"requests", "roundTrip", "failures", "linkLosses"}},
        {"diagnose", {}, {"step", "outcome", "time", "text"}},
        {"resolve", {"MAIN.speed"}, {"label", "type", "code", "area", "address"}},
        {"symbols", {}, {"label", "type", "code", "area", "address"}},
        {"plan", {}, {"plan", "maxReadBytes", "requests", "scanTime"}}};
    for (const auto& command : kCommands) {
        if (qstrcmp(command.command, "resolve") == 0)
            useNoPort(); // neither it nor what comes behind it connects
        const Outcome outcome =
            run(command.command, QStringList{QStringLiteral("--json")} + command.arguments);
        EXPECT_EQ(0, outcome.exitCode) << command.command << testing::PrintToString(outcome);
        EXPECT_FALSE(outcome.lines.isEmpty()) << command.command;
        for (const QString& line : outcome.lines) {
            QJsonParseError error;
            const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8(), &error);
            ASSERT_EQ(QJsonParseError::NoError, error.error) << line.toStdString();
            for (const QString& member : command.members) {
                EXPECT_TRUE(document.object().contains(member))
                    << member.toStdString() << " is not in " << line.toStdString();
            }
        }
    }
}

struct Misuse {
    const char* command;
    QStringList arguments;
    const char* message;
};

class WrongUsage : public CommandLine, public testing::WithParamInterface<Misuse> {};

TEST_P(WrongUsage, HasExitCode2AndSaysWhatIsWrong)
{
    const Outcome outcome = run(GetParam().command, GetParam().arguments);
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(QLatin1String(GetParam().message)))
        << testing::PrintToString(outcome);
    EXPECT_TRUE(outcome.lines.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, WrongUsage,
                         testing::Values(Misuse{"read", {"MAIN.sped"}, "MAIN.sped"},
                                         Misuse{"read", {"MAIN.tab"}, "MAIN.tab"},
                                         Misuse{"read", {"MAIN.tab[5]"}, "MAIN.tab[5]"},
                                         Misuse{"read", {"speed"}, "speed"},
                                         Misuse{"read", {}, "label"},
                                         Misuse{"write", {"MAIN.speed"}, "MAIN.speed"},
                                         Misuse{"write", {"MAIN.speed=32768"}, "32768"},
                                         Misuse{"write", {"MAIN.speed=fast"}, "fast"},
                                         Misuse{"run", {"--for", "soon"}, "soon"},
                                         Misuse{"fly", {}, "fly"},
                                         Misuse{"read", {"--quickly", "MAIN.speed"}, "quickly"}));

TEST_F(CommandLine, ABrokenProjectFileHasExitCode2AndIsShownWithItsPlace)
{
    writeProject(QByteArray(kCommandLineProject)
                     .replace("'INT', 'area': 3, 'offset': 10", "'INTT', 'area': 3, 'offset': 10"));
    const Outcome outcome = run("read", {QStringLiteral("MAIN.speed")});
    EXPECT_EQ(2, outcome.exitCode);
    for (const char* part : {"project.json", "/scopes/0/variables/0/type", "INTT", "INT"})
        EXPECT_TRUE(outcome.errors.contains(QLatin1String(part)))
            << testing::PrintToString(outcome);
}

TEST_F(CommandLine, AMissingProjectFileHasExitCode2)
{
    ASSERT_TRUE(QFile::remove(projectPath()));
    EXPECT_EQ(2, run("read", {QStringLiteral("MAIN.speed")}).exitCode);
}

TEST_F(CommandLine, ADriverForAnotherQtIsRefusedBeforeItRuns)
{
    LineProcess process(QStringLiteral(PLC_HOST),
                        {QStringLiteral("resolve"), QStringLiteral("--project"), projectPath(),
                         QStringLiteral("--driver"), QStringLiteral(PLC_OTHER_QT_LIBRARY),
                         QStringLiteral("MAIN.speed")});
    EXPECT_EQ(2, process.exitCode()) << "the library ends with 99 whoever loads it";
    const QString errors = process.errors();
    EXPECT_TRUE(
        errors.contains(QStringLiteral("was built for Qt %1, and this program uses Qt %2; give "
                                       "the one for Qt %2, libplc_driver_qt%2.so.1,")
                            .arg(PLC_OTHER_QT)
                            .arg(QT_VERSION_MAJOR)))
        << errors.toStdString();
}

TEST_F(CommandLine, RunEndsAfterItsTimeWithASummary)
{
    const Outcome outcome =
        run("run", {QStringLiteral("--for"), QStringLiteral("0.3"), QStringLiteral("--json")});
    EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    const QJsonObject end = parseJson(outcome.lines.value(outcome.lines.size() - 1));
    EXPECT_EQ("end", end.value(QLatin1String("event")).toString().toStdString());
    EXPECT_GE(end.value(QLatin1String("requests")).toInt(), 3);
    EXPECT_EQ(0, end.value(QLatin1String("refused")).toInt(-1));
}

} // namespace
} // namespace plc::test
