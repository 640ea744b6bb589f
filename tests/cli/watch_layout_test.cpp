#include "cli/watch_layout.h"

#include "cli/text_cells.h"
#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

const Style kPlain(Style::Plain);
const Style kColoured(Style::Coloured);
constexpr int kConfirmWidth = 20; ///< Of the terminals in which questions are asked here.

WatchRow row(const QString& label)
{
    WatchRow row;
    row.label = label;
    row.value = QStringLiteral("12.5 %");
    row.number = 12.5;
    row.age = 40;
    row.trend = QVector<std::optional<double>>(60, 1.0);
    row.trend.last() = 2.0;
    row.lowest = QStringLiteral("-3");
    row.highest = QStringLiteral("99.75");
    return row;
}

WatchState stateOf(const QVector<WatchRow>& rows, int height)
{
    WatchState state(
        [](const QString& assignment) -> WatchState::Checked {
            return {QString(), assignment.section(QLatin1Char('='), 1), QString()};
        },
        [height](const QString& question) { return showsWhole(question, kConfirmWidth, height); });
    state.setPage(watchPage(height));
    state.update(rows);
    return state;
}

QVector<WatchRow> rows(int count)
{
    QVector<WatchRow> list;
    for (int i = 0; i < count; ++i)
        list.append(row(QStringLiteral("Plant.tank[%1].level").arg(i)));
    return list;
}

WatchFrame frame()
{
    return {QStringLiteral("Dairy"), QStringLiteral("connected"), true, QStringLiteral("written")};
}

void press(WatchState* state, const char* characters)
{
    for (const char* character = characters; *character != '\0'; ++character)
        state->press({Key::Character, QString(QLatin1Char(*character))});
}

/// Cells that the terminal shows, without the sequences for colours.
int shownCells(QString line)
{
    for (int start = int(line.indexOf(QChar(0x1b))); start >= 0;
         start = int(line.indexOf(QChar(0x1b))))
        line.remove(start, int(line.indexOf(QLatin1Char('m'), start)) - start + 1);
    return cellsOf(line);
}

TEST(WatchLayout, FitsEveryTerminal)
{
    for (int width : {1, 2, 3, 10, 20, 31, 32, 40, 47, 48, 71, 72, 80, 109, 110, 300}) {
        for (int height : {1, 2, 3, 5, 9, 10, 24, 100}) {
            for (int count : {0, 1, 7, 200}) {
                for (const char* keys : {"", "?", "/x", "w123", "p"}) {
                    QVector<WatchRow> list = rows(count);
                    if (count > 0) {
                        list[0].isStale = true;
                        list[0].label = QString(300, QLatin1Char('x'));
                        list.last().sinceChange = 5;
                    }
                    WatchState state = stateOf(list, height);
                    press(&state, keys);
                    const QStringList lines = layOutWatch(frame(), state, width, height, kColoured);
                    ASSERT_EQ(lines.size(), height);
                    for (const QString& line : lines) {
                        ASSERT_LE(shownCells(line), width)
                            << width << 'x' << height << ": " << line.toStdString();
                    }
                }
            }
        }
    }
}

TEST(WatchLayout, ShowsAllColumnsInEightyByTwentyFour)
{
    const QStringList lines = layOutWatch(frame(), stateOf(rows(3), 24), 80, 24, kPlain);
    EXPECT_EQ("Dairy: connected", lines[0].trimmed());
    EXPECT_EQ("3 values, as named", lines[1].trimmed());
    EXPECT_EQ("  LABEL               VALUE                TREND         AGE       MIN       MAX",
              lines[2]);
    EXPECT_EQ(QString::fromUtf8("> Plant.tank[0].level 12.5 %               "
                                "▁▁▁▁▁▁▁▁█   40 ms        -3     99.75"),
              lines[3]);
    EXPECT_EQ("  Plant.tank[1].level ", lines[4].left(22));
    EXPECT_EQ("written", lines[22].trimmed());
    EXPECT_EQ("?:help  w:write  p:pause  s:sort  /:filter  r:reset  q:end", lines[23].trimmed());
}

TEST(WatchLayout, ANarrowTerminalHasFewerColumns)
{
    const auto heading = [](int width) {
        return layOutWatch(frame(), stateOf(rows(1), 24), width, 24, kPlain)[2].simplified();
    };
    EXPECT_EQ("LABEL VALUE TREND AGE MIN MAX", heading(72));
    EXPECT_EQ("LABEL VALUE TREND AGE", heading(71));
    EXPECT_EQ("LABEL VALUE AGE", heading(47));
    EXPECT_EQ("LABEL VALUE", heading(31));
}

TEST(WatchLayout, ALowTerminalHasTheTableAndOneLineBelow)
{
    EXPECT_EQ(19, watchPage(24));
    EXPECT_EQ(7, watchPage(9));
    EXPECT_EQ(0, watchPage(1));
    const WatchState state = stateOf(rows(3), 5);
    QStringList lines = layOutWatch(frame(), state, 40, 5, kPlain);
    EXPECT_TRUE(lines[0].contains(QStringLiteral("LABEL")));
    EXPECT_TRUE(lines[1].contains(QStringLiteral("tank[0]")));
    EXPECT_EQ("written", lines[4].trimmed());
    WatchFrame quiet = frame();
    quiet.message.clear();
    EXPECT_TRUE(layOutWatch(quiet, state, 40, 5, kPlain)[4].startsWith(QStringLiteral("?:help")));
}

TEST(WatchLayout, OfALongLabelTheEndIsShown)
{
    WatchRow longRow = row(QStringLiteral("Plant.pasteuriser.heatExchanger.outlet.temperature"));
    const QStringList lines = layOutWatch(frame(), stateOf({longRow}, 24), 80, 24, kPlain);
    EXPECT_TRUE(lines[3].contains(QString::fromUtf8("…anger.outlet.temperature ")))
        << lines[3].toStdString();
}

TEST(WatchLayout, AJustChangedValueIsMarkedAndHighlighted)
{
    WatchRow changed = row(QStringLiteral("a"));
    changed.sinceChange = 999;
    WatchRow before = row(QStringLiteral("b"));
    before.sinceChange = 1000;
    const WatchState state = stateOf({before, changed}, 24);
    QStringList lines = layOutWatch(frame(), state, 80, 24, kColoured);
    EXPECT_EQ(" *a", lines[4].left(3));
    EXPECT_TRUE(lines[4].contains(kColoured.apply(Emphasis::Changed, fitted("12.5 %", 27))))
        << lines[4].toStdString();
    EXPECT_FALSE(lines[3].contains(QLatin1Char('*')));
    lines = layOutWatch(frame(), state, 80, 24, kPlain);
    EXPECT_EQ(" *a", lines[4].left(3));
    EXPECT_FALSE(lines[4].contains(QChar(0x1b)));
}

TEST(WatchLayout, AStaleValueIsMarkedAndShownAsAFailure)
{
    WatchRow stale = row(QStringLiteral("a"));
    stale.isStale = true;
    stale.age = 3600000;
    WatchRow never;
    never.label = QStringLiteral("b");
    never.value = QStringLiteral("?");
    never.isStale = true;
    const QStringList lines = layOutWatch(frame(), stateOf({stale, never}, 24), 80, 24, kColoured);
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("\x1b[31m>!a ")));
    EXPECT_TRUE(lines[3].contains(QStringLiteral(" 1.0 h ")));
    EXPECT_TRUE(lines[4].contains(QStringLiteral(" never ")));
}

TEST(WatchLayout, ALostLinkIsShownAsAFailure)
{
    WatchFrame lost = frame();
    lost.isLinkUp = false;
    lost.link = QStringLiteral("link lost");
    EXPECT_TRUE(layOutWatch(lost, stateOf(rows(1), 24), 80, 24, kColoured)[0].startsWith(
        QStringLiteral("\x1b[31mDairy: link lost")));
}

TEST(WatchLayout, SaysWhatIsFilteredSortedAndPaused)
{
    WatchState state = stateOf(rows(12), 24);
    press(&state, "s/[1");
    EXPECT_EQ("3 of 12 values, by label, filter [1",
              layOutWatch(frame(), state, 80, 24, kPlain)[1].trimmed());
    state.press({Key::Enter, QString()});
    press(&state, "p");
    EXPECT_EQ("PAUSED, 3 of 12 values, by label, filter [1",
              layOutWatch(frame(), state, 80, 24, kPlain)[1].trimmed());
}

TEST(WatchLayout, HelpTakesThePlaceOfTheTable)
{
    WatchState state = stateOf(rows(3), 24);
    press(&state, "?");
    const QStringList lines = layOutWatch(frame(), state, 80, 24, kPlain);
    EXPECT_EQ("KEYS", lines[2].trimmed());
    EXPECT_EQ(lines[3].trimmed(), watchHelp().first());
    EXPECT_LE(watchHelp().size(), watchPage(24)) << "all of it is in sight";
}

TEST(WatchLayout, ALongMessageTakesLinesOfTheTable)
{
    WatchFrame told = frame();
    told.message = QStringLiteral("one two three four five six seven");
    const QStringList lines = layOutWatch(told, stateOf(rows(30), 24), 12, 24, kPlain);
    ASSERT_EQ(24, lines.size());
    EXPECT_TRUE(lines[18].startsWith(QStringLiteral(" "))) << "the table's last";
    EXPECT_EQ("one two     ", lines[19]);
    EXPECT_EQ("three four  ", lines[20]);
    EXPECT_EQ("five six    ", lines[21]);
    EXPECT_EQ("seven       ", lines[22]);
}

TEST(WatchLayout, AMessageThatIsTooLongIsCutOffAtItsEnd)
{
    WatchFrame told = frame();
    told.message = QStringLiteral("one two three four five six seven");
    const QStringList lines = layOutWatch(told, stateOf(rows(30), 11), 12, 11, kPlain);
    EXPECT_EQ("one two     ", lines[7]);
    EXPECT_EQ("three four  ", lines[8]);
    EXPECT_EQ(QString::fromUtf8("five six se…"), lines[9]);
}

TEST(WatchLayout, AQuestionIsShownWholeOnANarrowTerminal)
{
    WatchRow narrow = row(QStringLiteral("Plant.pasteuriser.heatExchanger.outlet.temperature"));
    WatchState state = stateOf({narrow}, 24);
    press(&state, "w-1234.5678");
    state.press({Key::Enter, QString()});
    ASSERT_EQ(WatchState::Mode::Confirming, state.mode());
    const QStringList lines = layOutWatch(frame(), state, kConfirmWidth, 24, kPlain);
    // 112 characters in lines of 19: the last cell of the screen stays empty.
    EXPECT_EQ(
        "write Plant.pasteuriser.heatExchanger.outlet.temperature = -1234.5678 (now 12.5 %)? "
        "y: yes, any other key: no",
        lines.mid(18).join(QString()).trimmed());
    EXPECT_EQ("written", lines[17].trimmed());
    EXPECT_TRUE(lines[3].startsWith(QLatin1Char('>'))) << "the table still has its first lines";
}

TEST(WatchLayout, AQuestionThatTheTerminalCannotShowIsNotAsked)
{
    EXPECT_TRUE(showsWhole(QString(38, QLatin1Char('x')), 20, 2));
    EXPECT_FALSE(showsWhole(QString(39, QLatin1Char('x')), 20, 2));
    EXPECT_FALSE(showsWhole(QString(39, QLatin1Char('x')), 1, 100));
    EXPECT_FALSE(showsWhole(QString::fromUtf8("液"), 2, 5)) << "two cells, of which one is left";
    WatchState state = stateOf({row(QString(100, QLatin1Char('x')))}, 5);
    press(&state, "w1");
    state.press({Key::Enter, QString()});
    EXPECT_EQ(WatchState::Mode::TypingValue, state.mode());
}

TEST(WatchLayout, OnALowTerminalTheReasonStandsAboveTheValueToBeMended)
{
    WatchState state = stateOf(rows(3), 5);
    press(&state, "wx");
    WatchFrame told = frame();
    told.message = QStringLiteral("no number");
    const QStringList lines = layOutWatch(told, state, 60, 5, kPlain);
    EXPECT_EQ("no number", lines[3].trimmed());
    EXPECT_EQ("write Plant.tank[0].level (now 12.5 %) = x_", lines[4].trimmed());
}

TEST(WatchLayout, LongLabelsOnTheScreenDiffer)
{
    const WatchState state = stateOf({row(QStringLiteral("Plant.tank[1].outlet.valve.speed")),
                                      row(QStringLiteral("Plant.tank[2].outlet.valve.speed"))},
                                     24);
    const QStringList lines = layOutWatch(frame(), state, 44, 24, kPlain);
    EXPECT_TRUE(lines[3].contains(QStringLiteral("[1"))) << lines[3].toStdString();
    EXPECT_TRUE(lines[4].contains(QStringLiteral("[2"))) << lines[4].toStdString();
}

TEST(WatchLayout, ALongPromptTakesLinesOfTheTableAndItsEndIsAlwaysShown)
{
    WatchState state = stateOf({row(QString(70, QLatin1Char('x')))}, 24);
    press(&state, "w12345678901234");
    // "write ", the label, " (now 12.5 %) = 12345678901234_": 107 characters in lines of 39.
    QStringList lines = layOutWatch(frame(), state, 40, 24, kPlain);
    EXPECT_EQ("write xx", lines[21].left(8));
    EXPECT_EQ("now 12.5 %) = 12345678901234_", lines[23].trimmed());
    state.setPage(watchPage(2));
    lines = layOutWatch(frame(), state, 40, 2, kPlain);
    EXPECT_EQ(QString::fromUtf8("…xxxxxxx"), lines[0].left(8));
    EXPECT_EQ("now 12.5 %) = 12345678901234_", lines[1].trimmed());
}

} // namespace
} // namespace test
} // namespace plc::cli
