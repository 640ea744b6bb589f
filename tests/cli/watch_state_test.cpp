#include "cli/watch_state.h"

#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

WatchRow row(const char* label, double number, qint64 age = 10,
             std::optional<qint64> sinceChange = {})
{
    WatchRow row;
    row.label = QString::fromUtf8(label);
    row.value = QString::number(number);
    row.number = number;
    row.age = age;
    row.sinceChange = sinceChange;
    return row;
}

WatchRow textRow(const char* label, const char* value)
{
    WatchRow row;
    row.label = QString::fromUtf8(label);
    row.value = QString::fromUtf8(value);
    return row;
}

class WatchStateTest : public ::testing::Test {
protected:
    WatchState::Action press(Key::Name name) { return state.press({name, QString()}); }
    /// Presses each of the characters; the last one's action counts.
    WatchState::Action type(const char* characters)
    {
        WatchState::Action action;
        for (const QChar character : QString::fromUtf8(characters))
            action = state.press({Key::Character, QString(character)});
        return action;
    }
    /// The labels in order, separated by blanks.
    std::string shown() const
    {
        QStringList labels;
        for (int i = 0; i < state.count(); ++i)
            labels.append(state.row(i).label);
        return labels.join(QLatin1Char(' ')).toStdString();
    }
    void fill(int count)
    {
        QVector<WatchRow> rows;
        for (int i = 0; i < count; ++i)
            rows.append(row(QByteArray("v" + QByteArray::number(i)).constData(), i));
        state.update(rows);
    }

    QString obstacle;
    QString checked;
    QString unit;
    bool fits = true;
    WatchState state{[this](const QString& assignment) -> WatchState::Checked {
                         checked = assignment;
                         return {obstacle, assignment.section(QLatin1Char('='), 1).trimmed(), unit};
                     },
                     [this](const QString&) { return fits; }};
};

TEST_F(WatchStateTest, BeginsInTheOrderInWhichTheLabelsWereNamed)
{
    state.update({row("b", 1), row("a", 2)});
    EXPECT_EQ(shown(), "b a");
    EXPECT_EQ(state.orderText(), "as named");
    type("S");
    EXPECT_EQ(shown(), "a b");
    EXPECT_EQ(state.orderText(), "as named reversed");
}

TEST_F(WatchStateTest, SortsByLabelWithNumbersInThem)
{
    state.update(
        {row("t[10].b", 1), row("T[2].c", 2), row("t[2].b", 3), row("s", 4), row("t[02].d", 5)});
    type("s");
    EXPECT_EQ(state.orderText(), "by label");
    EXPECT_EQ(shown(), "s t[2].b T[2].c t[02].d t[10].b");
    type("S");
    EXPECT_EQ(shown(), "t[10].b t[02].d T[2].c t[2].b s");
}

TEST_F(WatchStateTest, SortsByValueNumbersBeforeTexts)
{
    state.update({textRow("text2", "'b'"), row("ten", 10), row("two", 2), textRow("text1", "'a'")});
    type("ss");
    EXPECT_EQ(state.orderText(), "by value");
    EXPECT_EQ(shown(), "two ten text1 text2");
}

TEST_F(WatchStateTest, SortsByAgeTheOldestFirstAndBeforeItWhatWasNeverRead)
{
    state.update({row("young", 1, 5), row("old", 1, 5000), textRow("never", "?")});
    type("sss");
    EXPECT_EQ(state.orderText(), "by age");
    EXPECT_EQ(shown(), "never old young");
}

TEST_F(WatchStateTest, SortsByChangeTheLastFirst)
{
    state.update({row("never", 1), row("before", 1, 5, 9000), row("now", 1, 5, 100)});
    type("ssss");
    EXPECT_EQ(state.orderText(), "by change");
    EXPECT_EQ(shown(), "now before never");
    type("s");
    EXPECT_EQ(state.orderText(), "as named");
}

TEST_F(WatchStateTest, EqualsKeepTheirOrder)
{
    state.update({row("c", 1), row("a", 1), row("b", 1)});
    type("ss");
    EXPECT_EQ(shown(), "c a b");
}

TEST_F(WatchStateTest, TheFilterWorksWhileItIsTyped)
{
    state.update({row("tank.level", 1), row("tank.mode", 2), row("pump.mode", 3)});
    type("/tank");
    EXPECT_EQ(state.prompt(), "/tank_");
    EXPECT_EQ(shown(), "tank.level tank.mode");
    press(Key::Backspace);
    type("k.m");
    EXPECT_EQ(shown(), "tank.mode");
    press(Key::Enter);
    EXPECT_EQ(state.prompt(), "");
    EXPECT_EQ(state.filter(), "tank.m");
    EXPECT_EQ(shown(), "tank.mode");
    press(Key::Escape);
    EXPECT_EQ(shown(), "tank.level tank.mode pump.mode");
}

TEST_F(WatchStateTest, TheFilterTakesWildcardsAndEscapeGivesItUp)
{
    state.update({row("tank.level", 1), row("pump.mode", 3)});
    type("/*.m?de");
    EXPECT_EQ(shown(), "pump.mode");
    press(Key::Escape);
    type("/nk*lev");
    EXPECT_EQ(shown(), "tank.level") << "anywhere in the label, as without a star";
    press(Key::Escape);
    EXPECT_EQ(state.filter(), "");
    EXPECT_EQ(shown(), "tank.level pump.mode");
}

TEST_F(WatchStateTest, AFilterThatNothingPassesLeavesNothingToSelect)
{
    fill(3);
    press(Key::End);
    type("/nothing");
    press(Key::Enter);
    EXPECT_EQ(state.count(), 0);
    EXPECT_EQ(state.all(), 3);
    EXPECT_EQ(type("w").kind, WatchState::Action::None);
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
    press(Key::Down);
    press(Key::PageDown);
    press(Key::End);
    EXPECT_EQ(state.selected(), -1);
    EXPECT_EQ(state.firstLine(), 0);
    EXPECT_EQ(type("w").kind, WatchState::Action::None);
    EXPECT_EQ(state.takeMessage(), "nothing is selected: no label passes the filter");
    press(Key::Escape);
    EXPECT_EQ(state.selected(), 2) << "still the label that was chosen";
}

TEST_F(WatchStateTest, TheSelectionFollowsItsLabelWhenValuesAreSorted)
{
    state.update({row("a", 1), row("b", 2), row("c", 3)});
    press(Key::Down);
    type("ss");
    state.update({row("a", 5), row("b", 4), row("c", 3)});
    EXPECT_EQ(shown(), "c b a");
    EXPECT_EQ(state.selected(), 1);
    state.update({row("a", 1), row("b", 9), row("c", 3)});
    EXPECT_EQ(shown(), "a c b");
    EXPECT_EQ(state.selected(), 2);
    type("S");
    EXPECT_EQ(state.selected(), 0);
    type("w1");
    press(Key::Enter);
    EXPECT_EQ(type("y").assignment, "b=1");
}

TEST_F(WatchStateTest, TheSelectedLabelStaysInSightWhereverItIsSorted)
{
    fill(20);
    state.setPage(5);
    type("ssS");
    EXPECT_EQ(state.selected(), 19);
    EXPECT_EQ(state.firstLine(), 15);
}

TEST_F(WatchStateTest, NothingIsWrittenWhileTheFilterHidesTheSelectedLabel)
{
    state.update({row("tank.a", 1), row("pump.a", 2), row("pump.b", 3)});
    type("/pump");
    EXPECT_EQ(state.selected(), -1);
    press(Key::Enter);
    EXPECT_EQ(type("w").kind, WatchState::Action::None);
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
    EXPECT_EQ(state.takeMessage(),
              "nothing is selected: tank.a does not pass the filter; Up and Down select another "
              "label");
    state.update({row("tank.a", 1), row("pump.a", 2), row("pump.b", 3)});
    EXPECT_EQ(state.selected(), -1);
    press(Key::Down);
    EXPECT_EQ(state.selected(), 0) << "the first in sight";
    type("w7");
    press(Key::Enter);
    EXPECT_EQ(type("y").assignment, "pump.a=7");
    press(Key::Escape);
    EXPECT_EQ(state.selected(), 1) << "pump.a among all";
}

TEST_F(WatchStateTest, TheHiddenLabelIsSelectedAgainWhenTheFilterGoes)
{
    state.update({row("a", 1), row("b", 2)});
    press(Key::Down);
    type("/a");
    EXPECT_EQ(state.selected(), -1);
    press(Key::Escape);
    EXPECT_EQ(state.selected(), 1);
}

TEST_F(WatchStateTest, TheSameLabelTwiceIsSelectedWhereItWasChosen)
{
    state.update({row("a", 1), row("a", 1)});
    press(Key::Down);
    state.update({row("a", 2), row("a", 2)});
    EXPECT_EQ(state.selected(), 1);
}

TEST_F(WatchStateTest, LabelsAreComparedOnlyWhenTheyOrTheFilterChange)
{
    fill(1000);
    EXPECT_EQ(state.comparisons(), 0u);
    type("/v1");
    EXPECT_EQ(state.comparisons(), 2000u) << "once for each character typed";
    press(Key::Enter);
    for (int i = 0; i < 100; ++i)
        fill(1000);
    type("sS");
    press(Key::Down);
    EXPECT_EQ(state.comparisons(), 2000u);
    fill(1001);
    EXPECT_EQ(state.comparisons(), 3001u);
}

TEST_F(WatchStateTest, TheScreenFollowsTheSelection)
{
    fill(20);
    state.setPage(5);
    press(Key::Down);
    EXPECT_EQ(state.selected(), 1);
    EXPECT_EQ(state.firstLine(), 0);
    press(Key::PageDown);
    EXPECT_EQ(state.selected(), 6);
    EXPECT_EQ(state.firstLine(), 2);
    press(Key::End);
    EXPECT_EQ(state.selected(), 19);
    EXPECT_EQ(state.firstLine(), 15);
    press(Key::Up);
    EXPECT_EQ(state.firstLine(), 15);
    press(Key::PageUp);
    EXPECT_EQ(state.selected(), 13);
    EXPECT_EQ(state.firstLine(), 13);
    press(Key::Home);
    EXPECT_EQ(state.selected(), 0);
    EXPECT_EQ(state.firstLine(), 0);
    type("jjk");
    EXPECT_EQ(state.selected(), 1);
}

TEST_F(WatchStateTest, ALargerScreenLeavesNoRoomEmptyAndASmallerOneShowsTheSelection)
{
    fill(20);
    state.setPage(5);
    press(Key::End);
    state.setPage(12);
    EXPECT_EQ(state.firstLine(), 8);
    press(Key::Up);
    state.setPage(2);
    EXPECT_EQ(state.selected(), 18);
    EXPECT_EQ(state.firstLine(), 17);
    state.setPage(0);
    EXPECT_EQ(state.firstLine(), 18);
}

TEST_F(WatchStateTest, AWriteIsCheckedConfirmedAndThenAskedFor)
{
    state.update({row("a", 1), row("b", 2)});
    press(Key::Down);
    type("w");
    EXPECT_EQ(state.prompt(), "write b (now 2) = _");
    type("4q2");
    press(Key::Backspace);
    press(Key::Backspace);
    type("2");
    EXPECT_EQ(state.prompt(), "write b (now 2) = 42_");
    EXPECT_EQ(press(Key::Enter).kind, WatchState::Action::None);
    EXPECT_EQ(checked, "b=42");
    EXPECT_EQ(state.prompt(), "write b = 42 (now 2)? y: yes, any other key: no");
    const WatchState::Action action = type("y");
    EXPECT_EQ(action.kind, WatchState::Action::Write);
    EXPECT_EQ(action.assignment, "b=42");
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
}

TEST_F(WatchStateTest, AnyOtherKeyThanYesWritesNothing)
{
    fill(1);
    for (Key::Name name : {Key::Enter, Key::Escape, Key::Other}) {
        press(Key::Enter);
        type("1");
        press(Key::Enter);
        EXPECT_EQ(press(name).kind, WatchState::Action::None);
        EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
        EXPECT_EQ(state.takeMessage(), "nothing was written");
    }
    type("w1");
    press(Key::Enter);
    EXPECT_EQ(type("n").kind, WatchState::Action::None);
}

TEST_F(WatchStateTest, AValueThatCannotBeWrittenIsExplainedAndCanBeMended)
{
    fill(1);
    obstacle = QStringLiteral("v0: \"4x\" is no whole number");
    type("w4x");
    press(Key::Enter);
    EXPECT_EQ(state.takeMessage(), obstacle);
    EXPECT_EQ(state.takeMessage(), "") << "told once";
    EXPECT_EQ(state.prompt(), "write v0 (now 0) = 4x_");
    press(Key::Backspace);
    obstacle.clear();
    press(Key::Enter);
    EXPECT_EQ(state.mode(), WatchState::Mode::Confirming);
    EXPECT_EQ(type("y").assignment, "v0=4");
}

TEST_F(WatchStateTest, TheQuestionHasTheValueAsItWillBeAndAsItIs)
{
    state.update({row("a", 1), textRow("b", "?")});
    type("w 5 ");
    press(Key::Enter);
    state.update({row("a", 7), textRow("b", "?")});
    EXPECT_EQ(state.prompt(), "write a = 5 (now 7)? y: yes, any other key: no");
    WatchRow stale = row("a", 7);
    stale.isStale = true;
    state.update({stale, textRow("b", "?")});
    EXPECT_EQ(state.prompt(), "write a = 5 (last 7, stale)? y: yes, any other key: no");
    press(Key::Escape);
    press(Key::Down);
    type("w5");
    press(Key::Enter);
    EXPECT_EQ(state.prompt(), "write b = 5 (never read)? y: yes, any other key: no");
}

TEST_F(WatchStateTest, WhatIsWrittenIsWhatWasConfirmed)
{
    fill(1);
    unit = QStringLiteral(" rpm");
    type("w 5 ");
    press(Key::Enter);
    EXPECT_EQ(state.prompt(), "write v0 = 5 rpm (now 0)? y: yes, any other key: no");
    EXPECT_EQ(type("y").assignment, "v0=5") << "neither the blanks nor the unit";
}

TEST_F(WatchStateTest, TheQuestionHasThePresentValueAlsoWhileTheTableIsHeldStill)
{
    state.update({row("a", 1)});
    type("p");
    state.update({row("a", 8)});
    EXPECT_EQ(state.row(0).number, 1.0);
    type("w5");
    press(Key::Enter);
    EXPECT_EQ(state.prompt(), "write a = 5 (now 8)? y: yes, any other key: no");
}

TEST_F(WatchStateTest, AQuestionThatIsNotAllInSightIsNotAsked)
{
    fill(1);
    fits = false;
    type("w5");
    press(Key::Enter);
    EXPECT_EQ(state.mode(), WatchState::Mode::TypingValue);
    EXPECT_THAT(state.takeMessage().toStdString(),
                ::testing::HasSubstr("nothing was written: the terminal is too small"));
    EXPECT_EQ(type("y").kind, WatchState::Action::None);
    EXPECT_EQ(state.prompt(), "write v0 (now 0) = 5y_");
}

TEST_F(WatchStateTest, AQuestionThatIsNoLongerAllInSightIsNotConfirmed)
{
    fill(1);
    type("w5");
    press(Key::Enter);
    fits = false;
    EXPECT_EQ(type("y").kind, WatchState::Action::None);
    EXPECT_EQ(state.mode(), WatchState::Mode::TypingValue);
    fits = true;
    press(Key::Enter);
    EXPECT_EQ(type("y").assignment, "v0=5");
}

TEST_F(WatchStateTest, WhereWritesAreRefusedNoValueIsAskedFor)
{
    fill(1);
    state.refuseWrites(QStringLiteral("read-only"));
    type("w5");
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
    press(Key::Enter);
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
    EXPECT_EQ(state.takeMessage(), "read-only");
    EXPECT_EQ(checked, "");
}

TEST_F(WatchStateTest, NoValueOrEscapeWritesNothing)
{
    fill(1);
    type("w");
    press(Key::Enter);
    EXPECT_EQ(state.takeMessage(), "nothing was written");
    type("w5");
    press(Key::Escape);
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
    EXPECT_EQ(state.takeMessage(), "nothing was written");
    EXPECT_EQ(checked, "");
}

TEST_F(WatchStateTest, TheLabelBeingWrittenStaysWhenTheRowsMove)
{
    state.update({row("a", 1), row("b", 2)});
    type("ssw7");
    state.update({row("a", 3), row("b", 2)});
    EXPECT_EQ(shown(), "b a");
    EXPECT_EQ(state.prompt(), "write a (now 3) = 7_");
    press(Key::Enter);
    EXPECT_EQ(type("y").assignment, "a=7");
}

TEST_F(WatchStateTest, WhilePausedTheTableStandsStillAndCanBeSorted)
{
    state.update({row("a", 1), row("b", 2)});
    type("p");
    EXPECT_TRUE(state.isPaused());
    state.update({row("a", 9), row("b", 2)});
    EXPECT_EQ(state.row(0).number, 1.0);
    type("ssS");
    EXPECT_EQ(shown(), "b a");
    type(" ");
    EXPECT_FALSE(state.isPaused());
    state.update({row("a", 9), row("b", 2)});
    EXPECT_EQ(shown(), "a b");
}

TEST_F(WatchStateTest, HelpScrollsAndAnyOtherKeyLeavesIt)
{
    fill(3);
    const int last = int(watchHelp().size()) - 4;
    state.setPage(4);
    type("?");
    EXPECT_EQ(state.mode(), WatchState::Mode::InHelp);
    for (int i = 0; i < 100; ++i)
        press(Key::Down);
    EXPECT_EQ(state.firstHelpLine(), last);
    press(Key::Up);
    EXPECT_EQ(state.firstHelpLine(), last - 1);
    EXPECT_EQ(type("q").kind, WatchState::Action::None) << "leaves the help only";
    EXPECT_EQ(state.mode(), WatchState::Mode::InTable);
    type("h");
    EXPECT_EQ(state.firstHelpLine(), 0);
}

TEST_F(WatchStateTest, OtherKeysAskForWhatTheyStandFor)
{
    fill(1);
    EXPECT_EQ(type("q").kind, WatchState::Action::Quit);
    EXPECT_EQ(type("r").kind, WatchState::Action::ForgetRanges);
    EXPECT_EQ(type("x").kind, WatchState::Action::None);
    EXPECT_EQ(state.takeMessage(), "x means nothing here; ? shows the keys");
    EXPECT_EQ(press(Key::Other).kind, WatchState::Action::None);
    EXPECT_EQ(state.takeMessage(), "");
}

} // namespace
} // namespace test
} // namespace plc::cli
