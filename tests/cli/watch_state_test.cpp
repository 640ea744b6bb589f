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
    EXPECT_EQ("b a", shown());
    EXPECT_EQ("as named", state.orderText());
    type("S");
    EXPECT_EQ("a b", shown());
    EXPECT_EQ("as named reversed", state.orderText());
}

TEST_F(WatchStateTest, SortsByLabelWithNumbersInThem)
{
    state.update(
        {row("t[10].b", 1), row("T[2].c", 2), row("t[2].b", 3), row("s", 4), row("t[02].d", 5)});
    type("s");
    EXPECT_EQ("by label", state.orderText());
    EXPECT_EQ("s t[2].b T[2].c t[02].d t[10].b", shown());
    type("S");
    EXPECT_EQ("t[10].b t[02].d T[2].c t[2].b s", shown());
}

TEST_F(WatchStateTest, SortsByValueNumbersBeforeTexts)
{
    state.update({textRow("text2", "'b'"), row("ten", 10), row("two", 2), textRow("text1", "'a'")});
    type("ss");
    EXPECT_EQ("by value", state.orderText());
    EXPECT_EQ("two ten text1 text2", shown());
}

TEST_F(WatchStateTest, SortsByAgeTheOldestFirstAndBeforeItWhatWasNeverRead)
{
    state.update({row("young", 1, 5), row("old", 1, 5000), textRow("never", "?")});
    type("sss");
    EXPECT_EQ("by age", state.orderText());
    EXPECT_EQ("never old young", shown());
}

TEST_F(WatchStateTest, SortsByChangeTheLastFirst)
{
    state.update({row("never", 1), row("before", 1, 5, 9000), row("now", 1, 5, 100)});
    type("ssss");
    EXPECT_EQ("by change", state.orderText());
    EXPECT_EQ("now before never", shown());
    type("s");
    EXPECT_EQ("as named", state.orderText());
}

TEST_F(WatchStateTest, EqualsKeepTheirOrder)
{
    state.update({row("c", 1), row("a", 1), row("b", 1)});
    type("ss");
    EXPECT_EQ("c a b", shown());
}

TEST_F(WatchStateTest, TheFilterWorksWhileItIsTyped)
{
    state.update({row("tank.level", 1), row("tank.mode", 2), row("pump.mode", 3)});
    type("/tank");
    EXPECT_EQ("/tank_", state.prompt());
    EXPECT_EQ("tank.level tank.mode", shown());
    press(Key::Backspace);
    type("k.m");
    EXPECT_EQ("tank.mode", shown());
    press(Key::Enter);
    EXPECT_EQ("", state.prompt());
    EXPECT_EQ("tank.m", state.filter());
    EXPECT_EQ("tank.mode", shown());
    press(Key::Escape);
    EXPECT_EQ("tank.level tank.mode pump.mode", shown());
}

TEST_F(WatchStateTest, TheFilterTakesWildcardsAndEscapeGivesItUp)
{
    state.update({row("tank.level", 1), row("pump.mode", 3)});
    type("/*.m?de");
    EXPECT_EQ("pump.mode", shown());
    press(Key::Escape);
    type("/nk*lev");
    EXPECT_EQ("tank.level", shown()) << "anywhere in the label, as without a star";
    press(Key::Escape);
    EXPECT_EQ("", state.filter());
    EXPECT_EQ("tank.level pump.mode", shown());
}

TEST_F(WatchStateTest, AFilterThatNothingPassesLeavesNothingToSelect)
{
    fill(3);
    press(Key::End);
    type("/nothing");
    press(Key::Enter);
    EXPECT_EQ(0, state.count());
    EXPECT_EQ(3, state.all());
    EXPECT_EQ(WatchState::Action::None, type("w").kind);
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
    press(Key::Down);
    press(Key::PageDown);
    press(Key::End);
    EXPECT_EQ(-1, state.selected());
    EXPECT_EQ(0, state.firstLine());
    EXPECT_EQ(WatchState::Action::None, type("w").kind);
    EXPECT_EQ("nothing is selected: no label passes the filter", state.takeMessage());
    press(Key::Escape);
    EXPECT_EQ(2, state.selected()) << "still the label that was chosen";
}

TEST_F(WatchStateTest, TheSelectionFollowsItsLabelWhenValuesAreSorted)
{
    state.update({row("a", 1), row("b", 2), row("c", 3)});
    press(Key::Down);
    type("ss");
    state.update({row("a", 5), row("b", 4), row("c", 3)});
    EXPECT_EQ("c b a", shown());
    EXPECT_EQ(1, state.selected());
    state.update({row("a", 1), row("b", 9), row("c", 3)});
    EXPECT_EQ("a c b", shown());
    EXPECT_EQ(2, state.selected());
    type("S");
    EXPECT_EQ(0, state.selected());
    type("w1");
    press(Key::Enter);
    EXPECT_EQ("b=1", type("y").assignment);
}

TEST_F(WatchStateTest, TheSelectedLabelStaysInSightWhereverItIsSorted)
{
    fill(20);
    state.setPage(5);
    type("ssS");
    EXPECT_EQ(19, state.selected());
    EXPECT_EQ(15, state.firstLine());
}

TEST_F(WatchStateTest, NothingIsWrittenWhileTheFilterHidesTheSelectedLabel)
{
    state.update({row("tank.a", 1), row("pump.a", 2), row("pump.b", 3)});
    type("/pump");
    EXPECT_EQ(-1, state.selected());
    press(Key::Enter);
    EXPECT_EQ(WatchState::Action::None, type("w").kind);
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
    EXPECT_EQ(
        "nothing is selected: tank.a does not pass the filter; Up and Down select another "
        "label",
        state.takeMessage());
    state.update({row("tank.a", 1), row("pump.a", 2), row("pump.b", 3)});
    EXPECT_EQ(-1, state.selected());
    press(Key::Down);
    EXPECT_EQ(0, state.selected()) << "the first in sight";
    type("w7");
    press(Key::Enter);
    EXPECT_EQ("pump.a=7", type("y").assignment);
    press(Key::Escape);
    EXPECT_EQ(1, state.selected()) << "pump.a among all";
}

TEST_F(WatchStateTest, TheHiddenLabelIsSelectedAgainWhenTheFilterGoes)
{
    state.update({row("a", 1), row("b", 2)});
    press(Key::Down);
    type("/a");
    EXPECT_EQ(-1, state.selected());
    press(Key::Escape);
    EXPECT_EQ(1, state.selected());
}

TEST_F(WatchStateTest, TheSameLabelTwiceIsSelectedWhereItWasChosen)
{
    state.update({row("a", 1), row("a", 1)});
    press(Key::Down);
    state.update({row("a", 2), row("a", 2)});
    EXPECT_EQ(1, state.selected());
}

TEST_F(WatchStateTest, LabelsAreComparedOnlyWhenTheyOrTheFilterChange)
{
    fill(1000);
    EXPECT_EQ(0u, state.comparisons());
    type("/v1");
    EXPECT_EQ(2000u, state.comparisons()) << "once for each character typed";
    press(Key::Enter);
    for (int i = 0; i < 100; ++i)
        fill(1000);
    type("sS");
    press(Key::Down);
    EXPECT_EQ(2000u, state.comparisons());
    fill(1001);
    EXPECT_EQ(3001u, state.comparisons());
}

TEST_F(WatchStateTest, TheScreenFollowsTheSelection)
{
    fill(20);
    state.setPage(5);
    press(Key::Down);
    EXPECT_EQ(1, state.selected());
    EXPECT_EQ(0, state.firstLine());
    press(Key::PageDown);
    EXPECT_EQ(6, state.selected());
    EXPECT_EQ(2, state.firstLine());
    press(Key::End);
    EXPECT_EQ(19, state.selected());
    EXPECT_EQ(15, state.firstLine());
    press(Key::Up);
    EXPECT_EQ(15, state.firstLine());
    press(Key::PageUp);
    EXPECT_EQ(13, state.selected());
    EXPECT_EQ(13, state.firstLine());
    press(Key::Home);
    EXPECT_EQ(0, state.selected());
    EXPECT_EQ(0, state.firstLine());
    type("jjk");
    EXPECT_EQ(1, state.selected());
}

TEST_F(WatchStateTest, ALargerScreenLeavesNoRoomEmptyAndASmallerOneShowsTheSelection)
{
    fill(20);
    state.setPage(5);
    press(Key::End);
    state.setPage(12);
    EXPECT_EQ(8, state.firstLine());
    press(Key::Up);
    state.setPage(2);
    EXPECT_EQ(18, state.selected());
    EXPECT_EQ(17, state.firstLine());
    state.setPage(0);
    EXPECT_EQ(18, state.firstLine());
}

TEST_F(WatchStateTest, AWriteIsCheckedConfirmedAndThenAskedFor)
{
    state.update({row("a", 1), row("b", 2)});
    press(Key::Down);
    type("w");
    EXPECT_EQ("write b (now 2) = _", state.prompt());
    type("4q2");
    press(Key::Backspace);
    press(Key::Backspace);
    type("2");
    EXPECT_EQ("write b (now 2) = 42_", state.prompt());
    EXPECT_EQ(WatchState::Action::None, press(Key::Enter).kind);
    EXPECT_EQ("b=42", checked);
    EXPECT_EQ("write b = 42 (now 2)? y: yes, any other key: no", state.prompt());
    const WatchState::Action action = type("y");
    EXPECT_EQ(WatchState::Action::Write, action.kind);
    EXPECT_EQ("b=42", action.assignment);
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
}

TEST_F(WatchStateTest, AnyOtherKeyThanYesWritesNothing)
{
    fill(1);
    for (Key::Name name : {Key::Enter, Key::Escape, Key::Other}) {
        press(Key::Enter);
        type("1");
        press(Key::Enter);
        EXPECT_EQ(WatchState::Action::None, press(name).kind);
        EXPECT_EQ(WatchState::Mode::InTable, state.mode());
        EXPECT_EQ("nothing was written", state.takeMessage());
    }
    type("w1");
    press(Key::Enter);
    EXPECT_EQ(WatchState::Action::None, type("n").kind);
}

TEST_F(WatchStateTest, AValueThatCannotBeWrittenIsExplainedAndCanBeMended)
{
    fill(1);
    obstacle = QStringLiteral("v0: \"4x\" is no whole number");
    type("w4x");
    press(Key::Enter);
    EXPECT_EQ(state.takeMessage(), obstacle);
    EXPECT_EQ("", state.takeMessage()) << "told once";
    EXPECT_EQ("write v0 (now 0) = 4x_", state.prompt());
    press(Key::Backspace);
    obstacle.clear();
    press(Key::Enter);
    EXPECT_EQ(WatchState::Mode::Confirming, state.mode());
    EXPECT_EQ("v0=4", type("y").assignment);
}

TEST_F(WatchStateTest, TheQuestionHasTheValueAsItWillBeAndAsItIs)
{
    state.update({row("a", 1), textRow("b", "?")});
    type("w 5 ");
    press(Key::Enter);
    state.update({row("a", 7), textRow("b", "?")});
    EXPECT_EQ("write a = 5 (now 7)? y: yes, any other key: no", state.prompt());
    WatchRow stale = row("a", 7);
    stale.isStale = true;
    state.update({stale, textRow("b", "?")});
    EXPECT_EQ("write a = 5 (last 7, stale)? y: yes, any other key: no", state.prompt());
    press(Key::Escape);
    press(Key::Down);
    type("w5");
    press(Key::Enter);
    EXPECT_EQ("write b = 5 (never read)? y: yes, any other key: no", state.prompt());
}

TEST_F(WatchStateTest, WhatIsWrittenIsWhatWasConfirmed)
{
    fill(1);
    unit = QStringLiteral(" rpm");
    type("w 5 ");
    press(Key::Enter);
    EXPECT_EQ("write v0 = 5 rpm (now 0)? y: yes, any other key: no", state.prompt());
    EXPECT_EQ("v0=5", type("y").assignment) << "neither the blanks nor the unit";
}

TEST_F(WatchStateTest, TheQuestionHasThePresentValueAlsoWhileTheTableIsHeldStill)
{
    state.update({row("a", 1)});
    type("p");
    state.update({row("a", 8)});
    EXPECT_EQ(1.0, state.row(0).number);
    type("w5");
    press(Key::Enter);
    EXPECT_EQ("write a = 5 (now 8)? y: yes, any other key: no", state.prompt());
}

TEST_F(WatchStateTest, AQuestionThatIsNotAllInSightIsNotAsked)
{
    fill(1);
    fits = false;
    type("w5");
    press(Key::Enter);
    EXPECT_EQ(WatchState::Mode::TypingValue, state.mode());
    EXPECT_THAT(state.takeMessage().toStdString(),
                ::testing::HasSubstr("nothing was written: the terminal is too small"));
    EXPECT_EQ(WatchState::Action::None, type("y").kind);
    EXPECT_EQ("write v0 (now 0) = 5y_", state.prompt());
}

TEST_F(WatchStateTest, AQuestionThatIsNoLongerAllInSightIsNotConfirmed)
{
    fill(1);
    type("w5");
    press(Key::Enter);
    fits = false;
    EXPECT_EQ(WatchState::Action::None, type("y").kind);
    EXPECT_EQ(WatchState::Mode::TypingValue, state.mode());
    fits = true;
    press(Key::Enter);
    EXPECT_EQ("v0=5", type("y").assignment);
}

TEST_F(WatchStateTest, WhereWritesAreRefusedNoValueIsAskedFor)
{
    fill(1);
    state.refuseWrites(QStringLiteral("read-only"));
    type("w5");
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
    press(Key::Enter);
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
    EXPECT_EQ("read-only", state.takeMessage());
    EXPECT_EQ("", checked);
}

TEST_F(WatchStateTest, NoValueOrEscapeWritesNothing)
{
    fill(1);
    type("w");
    press(Key::Enter);
    EXPECT_EQ("nothing was written", state.takeMessage());
    type("w5");
    press(Key::Escape);
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
    EXPECT_EQ("nothing was written", state.takeMessage());
    EXPECT_EQ("", checked);
}

TEST_F(WatchStateTest, TheLabelBeingWrittenStaysWhenTheRowsMove)
{
    state.update({row("a", 1), row("b", 2)});
    type("ssw7");
    state.update({row("a", 3), row("b", 2)});
    EXPECT_EQ("b a", shown());
    EXPECT_EQ("write a (now 3) = 7_", state.prompt());
    press(Key::Enter);
    EXPECT_EQ("a=7", type("y").assignment);
}

TEST_F(WatchStateTest, WhilePausedTheTableStandsStillAndCanBeSorted)
{
    state.update({row("a", 1), row("b", 2)});
    type("p");
    EXPECT_TRUE(state.isPaused());
    state.update({row("a", 9), row("b", 2)});
    EXPECT_EQ(1.0, state.row(0).number);
    type("ssS");
    EXPECT_EQ("b a", shown());
    type(" ");
    EXPECT_FALSE(state.isPaused());
    state.update({row("a", 9), row("b", 2)});
    EXPECT_EQ("a b", shown());
}

TEST_F(WatchStateTest, HelpScrollsAndAnyOtherKeyLeavesIt)
{
    fill(3);
    const int last = int(watchHelp().size()) - 4;
    state.setPage(4);
    type("?");
    EXPECT_EQ(WatchState::Mode::InHelp, state.mode());
    for (int i = 0; i < 100; ++i)
        press(Key::Down);
    EXPECT_EQ(state.firstHelpLine(), last);
    press(Key::Up);
    EXPECT_EQ(state.firstHelpLine(), last - 1);
    EXPECT_EQ(WatchState::Action::None, type("q").kind) << "leaves the help only";
    EXPECT_EQ(WatchState::Mode::InTable, state.mode());
    type("h");
    EXPECT_EQ(0, state.firstHelpLine());
}

TEST_F(WatchStateTest, OtherKeysAskForWhatTheyStandFor)
{
    fill(1);
    EXPECT_EQ(WatchState::Action::Quit, type("q").kind);
    EXPECT_EQ(WatchState::Action::ForgetRanges, type("r").kind);
    EXPECT_EQ(WatchState::Action::None, type("x").kind);
    EXPECT_EQ("x means nothing here; ? shows the keys", state.takeMessage());
    EXPECT_EQ(WatchState::Action::None, press(Key::Other).kind);
    EXPECT_EQ("", state.takeMessage());
}

} // namespace
} // namespace test
} // namespace plc::cli
