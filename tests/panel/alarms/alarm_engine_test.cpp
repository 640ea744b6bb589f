#include "panel/alarms/alarm_engine.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/panel/alarms/alarm_examples.h"

namespace plc::panel {
namespace {

using test::above;
using test::at;
using test::below;
using test::is;
using test::kStart;
using test::notGood;
using values::Value;

const QString kPlc = QStringLiteral("press");
const QString kLabel = QStringLiteral("Plant.level");

/// An engine with one alarm, whose times count from kStart.
class Alarm {
public:
    explicit Alarm(const AlarmSettings& alarm, const QVector<KeptOccurrence>& kept = {})
        : engine({alarm}, kept, 7, kStart)
    {
    }
    void value(qint64 time, const Value& value) { engine.take(kPlc, kLabel, {value, at(time)}); }
    void lost(qint64 time) { engine.take(kPlc, kLabel, {{}, at(time)}); }
    void confirm(qint64 time) { engine.confirm(kPlc, at(time)); }
    void advance(qint64 time) { engine.advance(at(time)); }
    AlarmStatus status() const { return engine.status(0); }
    std::string state() const { return alarmStateText(status().state).toStdString(); }
    /// "1000..3000 Bb", times from kStart: B: its begin was not seen, E: nor its end, g: a gap, r:
    /// a restart, a: acknowledged.
    std::string shown() const
    {
        const std::optional<AlarmOccurrence> found = status().occurrence;
        return found ? textOf(*found) : "none";
    }
    static std::string textOf(const AlarmOccurrence& found)
    {
        std::string text = std::to_string(found.begin - kStart) + "..";
        if (found.end)
            text += std::to_string(*found.end - kStart);
        text += found.isBeginUnseen ? " B" : "";
        text += found.isEndUnseen ? " E" : "";
        text += found.hasGap ? " g" : "";
        text += found.hasRestart ? " r" : "";
        text += found.acknowledgedAt ? " a" : "";
        return text;
    }
    std::string acknowledge(qint64 begin, qint64 time)
    {
        const Expected<AlarmOccurrence> done =
            engine.acknowledged(0, kStart + begin, QStringLiteral("anna"), kStart + time);
        if (!done)
            return done.error().text.toStdString();
        engine.acknowledge(0, *done);
        return "done";
    }

    AlarmEngine engine;
};

TEST(AlarmEngine, BeginsAndEndsWithTheTimesOfTheValues)
{
    Alarm alarm(above(80));
    EXPECT_EQ("unknown", alarm.state());
    alarm.value(1000, 79.0);
    EXPECT_EQ("normal", alarm.state());
    alarm.value(2000, 81.5);
    EXPECT_EQ("active", alarm.state());
    EXPECT_EQ("2000..", alarm.shown());
    EXPECT_EQ(81.5, std::get<double>(*alarm.status().occurrence->value));
    alarm.value(3000, 90.0);
    EXPECT_EQ("2000..", alarm.shown());
    EXPECT_EQ(81.5, std::get<double>(*alarm.status().occurrence->value)) << "that of the begin";
    alarm.value(4000, 80.0);
    EXPECT_EQ("ended", alarm.state());
    EXPECT_EQ("2000..4000", alarm.shown());
}

TEST(AlarmEngine, AnAlarmThatIsThereFromTheFirstValueOnMayHaveBegunEarlier)
{
    Alarm alarm(above(80));
    alarm.value(1000, 81.0);
    EXPECT_EQ("1000.. B", alarm.shown());
}

TEST(AlarmEngine, ADeadbandHoldsAnAlarmThatHasBegunButBeginsNone)
{
    Alarm alarm(above(80, 5));
    alarm.value(1000, 79.0);
    EXPECT_EQ("normal", alarm.state());
    alarm.value(2000, 81.0);
    alarm.value(3000, 76.0);
    EXPECT_EQ("active", alarm.state());
    alarm.value(4000, 75.0);
    EXPECT_EQ("2000..4000", alarm.shown());
    Alarm low(below(10, 2));
    low.value(1000, 9.0);
    low.value(2000, 11.0);
    EXPECT_EQ("active", low.state());
    low.value(3000, 12.0);
    EXPECT_EQ("ended", low.state());
}

TEST(AlarmEngine, ADelayIsOverWhenValuesWereAskedForBehindIt)
{
    Alarm alarm(above(80, 0, 5000));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.advance(60000);
    EXPECT_EQ("normal", alarm.state()) << "the clock alone shows nothing";
    alarm.confirm(5999);
    EXPECT_EQ("normal", alarm.state());
    alarm.confirm(6000);
    EXPECT_EQ("active", alarm.state());
    EXPECT_EQ("1000..", alarm.shown()) << "when the condition began";
}

TEST(AlarmEngine, ADelayIsOverWithAnotherValueThatHoldsToo)
{
    Alarm alarm(above(80, 0, 5000));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.value(6000, 82.0);
    EXPECT_EQ("1000..", alarm.shown());
    EXPECT_EQ(81.0, std::get<double>(*alarm.status().occurrence->value));
}

TEST(AlarmEngine, AnInterruptedDelayBeginsAnew)
{
    Alarm alarm(above(80, 5, 5000));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.value(5000, 79.0); // in the deadband, which counts only for what has begun
    alarm.value(5500, 81.0);
    alarm.confirm(10000);
    EXPECT_EQ("normal", alarm.state());
    alarm.lost(10100);
    alarm.value(10200, 81.0);
    alarm.confirm(15000);
    EXPECT_EQ("normal", alarm.state());
    alarm.confirm(15200);
    EXPECT_EQ("10200.. B", alarm.shown());
}

TEST(AlarmEngine, WhatIsNotKnownNeitherBeginsNorEnds)
{
    Alarm alarm(above(80));
    alarm.value(1000, 81.0);
    alarm.lost(2000);
    EXPECT_EQ("unknown", alarm.state());
    EXPECT_EQ(kStart + 2000, *alarm.status().unknownSince);
    EXPECT_EQ("1000.. B g", alarm.shown());
    alarm.lost(3000);
    EXPECT_EQ(kStart + 2000, *alarm.status().unknownSince);
    alarm.value(4000, 82.0);
    EXPECT_EQ("active", alarm.state());
    EXPECT_EQ("1000.. B g", alarm.shown());
    EXPECT_FALSE(alarm.status().unknownSince);
}

TEST(AlarmEngine, AnEndBehindAGapWasNotSeen)
{
    Alarm alarm(above(80));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.lost(2000);
    alarm.value(4000, 70.0);
    EXPECT_EQ("1000..4000 E g", alarm.shown());
}

TEST(AlarmEngine, WhatCannotBeComparedIsNotKnown)
{
    Alarm alarm(above(80));
    alarm.value(0, 90.0);
    alarm.value(1000, std::nan(""));
    EXPECT_EQ("unknown", alarm.state());
    EXPECT_EQ("0.. B g", alarm.shown());
}

TEST(AlarmEngine, NotGoodForItsDelayIsAnAlarmOfTheClock)
{
    Alarm alarm(notGood(5000));
    alarm.value(0, 1.0);
    alarm.lost(1000);
    alarm.confirm(60000);
    alarm.advance(5999);
    EXPECT_EQ("normal", alarm.state());
    alarm.advance(6000);
    EXPECT_EQ("1000..", alarm.shown());
    EXPECT_EQ("active", alarm.state());
    EXPECT_FALSE(alarm.status().occurrence->value);
    alarm.value(8000, 1.0);
    EXPECT_EQ("1000..8000", alarm.shown());
}

TEST(AlarmEngine, AStateBeginsAndEndsWithIt)
{
    Alarm alarm(is(true));
    alarm.value(0, false);
    alarm.value(1000, true);
    EXPECT_EQ("active", alarm.state());
    alarm.value(2000, false);
    EXPECT_EQ("1000..2000", alarm.shown());
}

TEST(AlarmEngine, AnAcknowledgedAlarmIsNormalWhenItHasEnded)
{
    Alarm alarm(above(80));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    EXPECT_EQ("done", alarm.acknowledge(1000, 1500));
    EXPECT_EQ("active", alarm.state());
    EXPECT_EQ("1000.. a", alarm.shown());
    EXPECT_EQ("anna", alarm.status().occurrence->acknowledgedBy.toStdString());
    EXPECT_EQ(kStart + 1500, *alarm.status().occurrence->acknowledgedAt);
    alarm.value(2000, 0.0);
    EXPECT_EQ("normal", alarm.state());
    EXPECT_EQ("none", alarm.shown());
}

TEST(AlarmEngine, AnEndedAlarmIsNormalWhenItWasAcknowledged)
{
    Alarm alarm(above(80));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.value(2000, 0.0);
    EXPECT_EQ("done", alarm.acknowledge(1000, 3000));
    EXPECT_EQ("normal", alarm.state());
}

TEST(AlarmEngine, AnAlarmThatIsNotKnownCanBeAcknowledged)
{
    Alarm alarm(above(80));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.lost(2000);
    EXPECT_EQ("done", alarm.acknowledge(1000, 3000));
    EXPECT_EQ("unknown", alarm.state());
    alarm.value(4000, 0.0);
    EXPECT_EQ("normal", alarm.state());
}

TEST(AlarmEngine, OnlyTheOccurrenceThatWasSeenIsAcknowledgedAndOnce)
{
    Alarm alarm(above(80));
    EXPECT_EQ("there is nothing to be acknowledged: the alarm is not there",
              alarm.acknowledge(0, 0));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.value(2000, 0.0);
    alarm.value(3000, 81.0);
    EXPECT_EQ(1, alarm.status().unacknowledgedBefore);
    EXPECT_EQ("the alarm has begun anew since; look at it before you acknowledge it",
              alarm.acknowledge(1000, 4000));
    EXPECT_EQ("done", alarm.acknowledge(3000, 4000));
    EXPECT_EQ("the alarm was acknowledged by anna", alarm.acknowledge(3000, 5000));
    EXPECT_EQ(0, alarm.status().unacknowledgedBefore);
}

TEST(AlarmEngine, ChangesAreToldOnceAndOccurrencesInTheirNewestState)
{
    Alarm alarm(above(80));
    alarm.value(0, 0.0);
    EXPECT_EQ(QVector<int>{0}, alarm.engine.takeChanges().alarms);
    alarm.value(500, 1.0);
    EXPECT_TRUE(alarm.engine.takeChanges().isEmpty());
    alarm.value(1000, 81.0);
    alarm.value(2000, 0.0);
    const AlarmEngine::Changes changes = alarm.engine.takeChanges();
    EXPECT_EQ(QVector<int>{0}, changes.alarms);
    ASSERT_EQ(1, changes.occurrences.size());
    EXPECT_EQ("1000..2000", Alarm::textOf(changes.occurrences[0]));
    EXPECT_EQ(7, changes.occurrences[0].number);
    EXPECT_EQ("above 80", changes.occurrences[0].condition.toStdString().substr(0, 8));
    EXPECT_EQ("Look at it", changes.occurrences[0].text.toStdString());
    alarm.value(3000, 81.0);
    EXPECT_EQ(8, alarm.engine.takeChanges().occurrences[0].number);
}

TEST(AlarmEngine, AClockThatIsPutBackMakesNoEndBeforeTheBegin)
{
    Alarm alarm(above(80));
    alarm.value(0, 0.0);
    alarm.value(10000, 81.0);
    alarm.engine.take(kPlc, kLabel, {Value(0.0), at(12000, -8000)});
    EXPECT_EQ("10000..10000", alarm.shown());
}

TEST(AlarmEngine, AClockThatIsPutBackHoldsNoAlarmOff)
{
    Alarm delayed(notGood(5000));
    delayed.value(0, 1.0);
    delayed.lost(100000);
    delayed.engine.advance(at(104999, -90000));
    EXPECT_EQ("normal", delayed.state());
    delayed.engine.advance(at(105000, -90000));
    EXPECT_EQ("active", delayed.state()) << "not only when the old time is reached again";
    EXPECT_EQ("10000..", delayed.shown()) << "5 s ago, as the clock goes now";
}

TEST(AlarmEngine, AClockThatIsSetForthEndsNoDelay)
{
    constexpr qint64 kHour = 3600000;
    Alarm alarm(above(80, 0, 600000));
    alarm.value(0, 0.0);
    alarm.value(1000, 81.0);
    alarm.engine.confirm(kPlc, at(4000, kHour));
    alarm.engine.take(kPlc, kLabel, {Value(82.0), at(5000, kHour)});
    alarm.engine.advance(at(6000, kHour));
    alarm.engine.confirm(kPlc, at(600999, kHour));
    EXPECT_EQ("normal", alarm.state());
    alarm.engine.confirm(kPlc, at(601000, kHour));
    EXPECT_EQ("active", alarm.state());
    EXPECT_EQ("3601000..", alarm.shown()) << "ten minutes ago, as the clock goes now";
    Alarm lost(notGood(5000));
    lost.value(0, 1.0);
    lost.lost(1000);
    lost.engine.advance(at(5999, kHour));
    EXPECT_EQ("normal", lost.state());
    lost.engine.advance(at(6000, kHour));
    EXPECT_EQ("3601000..", lost.shown());
}

/// What an earlier run has left: an occurrence that had begun 5 s before kStart.
KeptOccurrence kept(const AlarmSettings& alarm)
{
    AlarmOccurrence occurrence;
    occurrence.number = 3;
    occurrence.alarm = alarmId(alarm);
    occurrence.begin = kStart - 5000;
    return {occurrence, 2};
}

TEST(AlarmEngine, AnOccurrenceGoesOnBehindARestartAndTellsOfIt)
{
    Alarm alarm(above(80, 5), {kept(above(80, 5))});
    EXPECT_EQ("unknown", alarm.state());
    EXPECT_EQ("-5000.. r", alarm.shown());
    EXPECT_EQ(2, alarm.status().unacknowledgedBefore);
    alarm.value(1000, 76.0); // in the deadband
    EXPECT_EQ("active", alarm.state());
    EXPECT_EQ("-5000.. r", alarm.shown());
    alarm.value(2000, 70.0);
    EXPECT_EQ("-5000..2000 r", alarm.shown()) << "this end was seen";
}

TEST(AlarmEngine, AnEndWhileTheProgramWasAwayWasNotSeen)
{
    Alarm alarm(above(80), {kept(above(80))});
    alarm.value(1000, 70.0);
    EXPECT_EQ("-5000..1000 E r", alarm.shown());
    EXPECT_EQ("ended", alarm.state());
}

TEST(AlarmEngine, AnEndedOccurrenceStaysUntilItIsAcknowledgedAlsoBehindARestart)
{
    KeptOccurrence ended = kept(above(80));
    ended.newest.end = kStart - 2000;
    Alarm alarm(above(80), {ended});
    EXPECT_EQ("-5000..-2000", alarm.shown());
    alarm.value(1000, 0.0);
    EXPECT_EQ("ended", alarm.state());
    EXPECT_EQ("done", alarm.acknowledge(-5000, 2000));
    EXPECT_EQ("normal", alarm.state());
}

TEST(AlarmEngine, AnOccurrenceOfAnAlarmThatIsNotConfiguredAnyMoreIsClosed)
{
    AlarmEngine engine({above(81)}, {kept(above(80))}, 7, kStart);
    const AlarmEngine::Changes changes = engine.takeChanges();
    ASSERT_EQ(1, changes.occurrences.size());
    EXPECT_EQ("-5000..0 E r", Alarm::textOf(changes.occurrences[0]));
    EXPECT_TRUE(changes.occurrences[0].isWatchLost);
    EXPECT_FALSE(engine.status(0).occurrence);
}

TEST(AlarmEngine, OtherLabelsAndPlcsDoNotCount)
{
    AlarmEngine engine({above(80)}, {}, 1, kStart);
    engine.take(QStringLiteral("mill"), kLabel, {Value(90.0), at(0)});
    engine.take(kPlc, QStringLiteral("Plant.flow"), {Value(90.0), at(0)});
    EXPECT_EQ(AlarmState::Unknown, engine.status(0).state);
}

TEST(AlarmEngine, SeveralAlarmsMayWatchOneLabel)
{
    AlarmEngine engine({above(80), above(90), notGood(1000)}, {}, 1, kStart);
    engine.take(kPlc, kLabel, {Value(85.0), at(0)});
    EXPECT_EQ(AlarmState::Active, engine.status(0).state);
    EXPECT_EQ(AlarmState::Normal, engine.status(1).state);
    EXPECT_EQ(AlarmState::Normal, engine.status(2).state);
    EXPECT_EQ(1, engine.find(alarmId(above(90))));
    EXPECT_EQ(-1, engine.find(QStringLiteral("0123456789abcdef")));
}

} // namespace
} // namespace plc::panel
