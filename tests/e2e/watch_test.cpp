// plc watch as a user sees it: on a terminal, and in a pipe.

#include "tests/e2e/plant.h"
#include "tests/e2e/terminal_process.h"

namespace plc::test {
namespace {

constexpr char kWatchProject[] = R"({
  'name': 'Watched',
  'settings': {'staleAfter': 20000, 'replyTimeout': 20000, 'reconnectDelay': 50,
               'reconnectDelayLimit': 100},
  'areas': [{'index': 1, 'size': 256}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'first', 'type': 'INT', 'area': 1, 'offset': 0, 'unit': 'rpm'},
    {'name': 'second', 'type': 'INT', 'area': 1, 'offset': 2},
    {'name': 'table', 'type': 'INT', 'area': 1, 'offset': 20, 'array': [[1, 3]]},
    {'name': 'text', 'type': 'STRING', 'length': 9, 'area': 1, 'offset': 40}]}]
})";

class Watching : public Plant {
protected:
    Watching()
    {
        writeProject(kWatchProject);
        startSimulator();
        poke(1, 0, "0005");
    }

    /// In a terminal that knows UTF-8 and colours.
    std::unique_ptr<TerminalProcess> watch(const QStringList& environment = {})
    {
        const QStringList usual{QStringLiteral("LC_ALL=C.UTF-8"), QStringLiteral("TERM=xterm"),
                                QStringLiteral("NO_COLOR=")};
        return std::make_unique<TerminalProcess>(
            QStringLiteral(PLC_HOST),
            arguments("watch",
                      {QStringLiteral("R.*"), QStringLiteral("--cycle"), QStringLiteral("20"),
                       QStringLiteral("--interval"), QStringLiteral("50")}),
            80, 24, usual + environment);
    }
    std::unique_ptr<LineProcess> watchLines(const QStringList& options)
    {
        return start("watch",
                     QStringList{QStringLiteral("--cycle"), QStringLiteral("20")} + options);
    }
};

bool shows(const Screen& screen, int line, const char* parts)
{
    return screen.line(line).simplified().contains(QString::fromUtf8(parts));
}

TEST_F(Watching, ShowsValuesWithTrendAndRangeAsTheyChange)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) {
        // A part of a screen may come before the rest.
        return shows(screen, 3, "R.first 5 rpm") &&
               shows(screen, 0, "Watched: connected to 127.0.0.1:") &&
               shows(screen, 1, "6 values, as named") && shows(screen, 7, "R.table[3] 0");
    })) << plc->screen().text().toStdString();
    poke(1, 0, "FFFD");
    EXPECT_TRUE(plc->waitFor([](const Screen& screen) {
        return shows(screen, 3, ">*R.first -3 rpm") && shows(screen, 3, " -3 5");
    })) << plc->screen().text().toStdString();
    plc->type("r");
    EXPECT_TRUE(plc->waitFor([](const Screen& screen) { return shows(screen, 3, " -3 -3"); }))
        << plc->screen().text().toStdString();
}

TEST_F(Watching, WritesTheSelectedValueAndShowsWhatThePlcSays)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.second"));
    plc->type("\x1b[B");
    ASSERT_TRUE(plc->waitForText("> R.second"));
    plc->type("w258\r");
    ASSERT_TRUE(plc->waitForText("write R.second = 258 (now 0)? y: yes"));
    EXPECT_EQ("00 00", peek(1, 2, 2)) << "not confirmed yet";
    plc->type("y");
    ASSERT_TRUE(plc->waitForText("write R.second = 258: done"));
    EXPECT_EQ("01 02", peek(1, 2, 2));
}

TEST_F(Watching, AWriteGoesToTheLabelThatWasChosenHoweverTheRowsMove)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) {
        return screen.text().contains(QLatin1String(">*R.first")) ||
               screen.text().contains(QLatin1String("> R.first"));
    }));
    plc->type("ssS"); // by value, the highest first
    ASSERT_TRUE(plc->waitForText("by value reversed"));
    poke(1, 2, "0009");
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) {
        return shows(screen, 4, "R.second 9") && shows(screen, 5, "> R.first 5");
    })) << plc->screen().text().toStdString();
    plc->type("w7x\r");
    ASSERT_TRUE(plc->waitForText("\"7x\" is no whole number"));
    ASSERT_TRUE(plc->waitForText("write R.first (now 5 rpm) = 7x_")) << "to be mended";
    plc->type("\x7f\ry");
    ASSERT_TRUE(plc->waitForText("write R.first = 7 rpm: done"));
    EXPECT_EQ("00 07 00 09", peek(1, 0, 4));
}

TEST_F(Watching, BlanksOfATextThatWasConfirmedAreWritten)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.text"));
    plc->type("\x1b[F"); // the last label
    ASSERT_TRUE(plc->waitForText("> R.text"));
    plc->type("w ab \r");
    ASSERT_TRUE(plc->waitForText("write R.text = ' ab ' (now '')? y: yes"));
    plc->type("y");
    ASSERT_TRUE(plc->waitForText("write R.text = ' ab ': done"));
    EXPECT_EQ("20 61 62 20 00", peek(1, 40, 5));
}

TEST_F(Watching, TheQuestionIsWholeOnANarrowTerminal)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.first"));
    plc->resize(20, 8);
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) { return shows(screen, 0, "LABEL VALUE"); }));
    plc->type("w258\r");
    // "write R.first = 258 rpm (now 5 rpm)? y: yes, any other key: no" in lines of 19
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) {
        return screen.line(4) == QLatin1String("write R.first = 258") &&
               screen.line(5) == QLatin1String(" rpm (now 5 rpm)? y") &&
               screen.line(6) == QLatin1String(": yes, any other ke") && shows(screen, 7, "y: no");
    })) << plc->screen().text().toStdString();
    plc->resize(10, 3);
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) { return shows(screen, 2, "y: no"); }));
    plc->type("y");
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) { return shows(screen, 2, "_"); }))
        << plc->screen().text().toStdString();
    EXPECT_EQ("00 05", peek(1, 0, 2)) << "what is not all in sight is not confirmed";
}

TEST_F(Watching, ARefusedWriteIsShownWithItsReason)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.second"));
    EXPECT_EQ("", simulator().command(QStringLiteral("fail-writes on")));
    plc->type("w7\ry");
    EXPECT_TRUE(plc->waitForText(": refused: result 12")) << plc->screen().text().toStdString();
    EXPECT_EQ("00 05", peek(1, 0, 2));
}

TEST_F(Watching, StaleValuesAreMarkedWhileThePlcIsAway)
{
    writeProject(QByteArray(kWatchProject).replace("'staleAfter': 20000", "'staleAfter': 600"));
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.first"));
    EXPECT_EQ("", simulator().command(QStringLiteral("offline")));
    EXPECT_TRUE(plc->waitForText(">!R.first"));
    EXPECT_TRUE(plc->waitForText("Watched: link to 127.0.0.1"));
    EXPECT_EQ("", simulator().command(QStringLiteral("online")));
    EXPECT_TRUE(plc->waitFor([](const Screen& screen) {
        return !screen.line(3).contains(QLatin1Char('!')) && shows(screen, 0, "connected to");
    })) << plc->screen().text().toStdString();
}

TEST_F(Watching, FollowsTheSizeOfTheTerminal)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("MAX"));
    plc->resize(40, 10);
    EXPECT_TRUE(plc->waitFor([](const Screen& screen) {
        return shows(screen, 2, "LABEL VALUE AGE") && !screen.text().contains("MAX") &&
               shows(screen, 9, "?:help");
    })) << plc->screen().text().toStdString();
    plc->resize(110, 30);
    EXPECT_TRUE(plc->waitFor([](const Screen& screen) {
        return shows(screen, 2, "MAX") && shows(screen, 29, "?:help");
    })) << plc->screen().text().toStdString();
}

struct End {
    const char* name;
    void (*end)(TerminalProcess& plc);
};

void PrintTo(const End& end, std::ostream* out)
{
    *out << end.name;
}

class WatchingEnds : public Watching, public testing::WithParamInterface<End> {};

TEST_P(WatchingEnds, WithTheTerminalAsItWas)
{
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.first"));
    EXPECT_FALSE(plc->isRestored()) << "keys come one by one meanwhile";
    GetParam().end(*plc);
    EXPECT_EQ(0, plc->exitCode());
    EXPECT_TRUE(plc->isRestored());
    EXPECT_TRUE(plc->output().contains("\x1b[?25h")) << "the cursor is back";
    EXPECT_TRUE(plc->output().contains("\x1b[?1049l")) << "what stood there before is back";
}

INSTANTIATE_TEST_SUITE_P(
    All, WatchingEnds,
    testing::Values(End{"Quit", [](TerminalProcess& plc) { plc.type("q"); }},
                    End{"ControlC", [](TerminalProcess& plc) { plc.type("\x03"); }},
                    End{"Terminate", [](TerminalProcess& plc) { plc.signal(SIGTERM); }},
                    End{"HangUp", [](TerminalProcess& plc) { plc.signal(SIGHUP); }}),
    [](const testing::TestParamInfo<End>& end) { return end.param.name; });

TEST_F(Watching, HasColoursUnlessTheyAreNotWanted)
{
    const QByteArray colour = "\x1b[1;33m";
    const std::unique_ptr<TerminalProcess> plc = watch();
    ASSERT_TRUE(plc->waitForText("R.first"));
    poke(1, 0, "0006");
    ASSERT_TRUE(plc->waitForText(">*R.first"));
    EXPECT_TRUE(plc->output().contains(colour));
    const std::unique_ptr<TerminalProcess> plain = watch({QStringLiteral("NO_COLOR=1")});
    ASSERT_TRUE(plain->waitForText("R.first"));
    poke(1, 0, "0007");
    ASSERT_TRUE(plain->waitForText(">*R.first"));
    EXPECT_FALSE(plain->output().contains(colour));
}

TEST_F(Watching, WritesAsciiAloneWhereTheLocaleIsNotUtf8)
{
    const std::unique_ptr<TerminalProcess> plc = watch({QStringLiteral("LC_ALL=C")});
    ASSERT_TRUE(plc->waitFor([](const Screen& screen) {
        return shows(screen, 3, "R.first 5 rpm") && screen.line(3).contains(QLatin1Char('_'));
    })) << plc->screen().text().toStdString();
    for (const char byte : plc->output())
        ASSERT_LT(uchar(byte), 0x80);
}

TEST_F(Watching, InAPipePrintsALineForEachChangeWithItsTime)
{
    const std::unique_ptr<LineProcess> plc = watchLines({QStringLiteral("R.first")});
    const QString first = plc->waitForLine({QStringLiteral("R.first = 5 rpm")});
    EXPECT_TRUE(first.mid(4, 1) == QLatin1String("-") && first.mid(10, 1) == QLatin1String("T"))
        << first.toStdString();
    for (int value = 6; value < 10; ++value) {
        poke(1, 0, QByteArray("000" + QByteArray::number(value)).constData());
        ASSERT_FALSE(plc->waitForLine({QStringLiteral("R.first = %1 rpm").arg(value)}).isEmpty());
    }
}

TEST_F(Watching, PrintsJsonLinesAndEndsAfterItsTime)
{
    const Outcome outcome = run("watch", {QStringLiteral("R.table[1..2]"), QStringLiteral("--json"),
                                          QStringLiteral("--for"), QStringLiteral("2")});
    EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    QStringList labels;
    for (const QString& line : outcome.lines) {
        const QJsonObject object = parseJson(line);
        ASSERT_FALSE(object.isEmpty()) << line.toStdString();
        if (object.value(QLatin1String("event")).toString() == QLatin1String("value"))
            labels.append(object.value(QLatin1String("label")).toString());
    }
    EXPECT_EQ((QStringList{QStringLiteral("R.table[1]"), QStringLiteral("R.table[2]")}), labels);
}

TEST_F(Watching, ALabelOrPatternThatIsNotThereIsWrongUsage)
{
    for (const char* label : {"R.frist", "S*", "R.table[1..4]"}) {
        const Outcome outcome = run("watch", {QString::fromLatin1(label)});
        EXPECT_EQ(2, outcome.exitCode);
        EXPECT_FALSE(outcome.errors.isEmpty());
    }
    const Outcome outcome = run("watch", {});
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("no cyclic labels")));
}

} // namespace
} // namespace plc::test
