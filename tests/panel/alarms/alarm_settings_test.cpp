#include "panel/alarms/alarm_settings.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/panel/alarms/alarm_examples.h"

namespace plc::panel {
namespace {

using test::above;
using test::below;
using test::is;
using test::notGood;

std::string errorOf(const QVector<AlarmSettings>& alarms)
{
    const Expected<void> isGood = checkAlarms(alarms);
    return isGood ? std::string() : isGood.error().text.toStdString();
}

TEST(AlarmSettings, ConditionsAreShownAsPeopleReadThem)
{
    EXPECT_EQ("above 80", conditionText(above(80)).toStdString().substr(0, 8));
    EXPECT_EQ("below -5.5", conditionText(below(-5.5)).toStdString());
    EXPECT_EQ("is TRUE", conditionText(is(true)).toStdString());
    EXPECT_EQ("is -3", conditionText(is(qint64(-3))).toStdString());
    EXPECT_EQ("is 'stop'", conditionText(is(QStringLiteral("stop"))).toStdString());
    EXPECT_EQ("not good", conditionText(notGood(1000)).toStdString());
}

TEST(AlarmSettings, IdIsThatOfPlcLabelAndCondition)
{
    const QString id = alarmId(above(80));
    EXPECT_EQ(16, id.size());
    EXPECT_EQ(id, alarmId(above(80, 5, 1000))) << "deadband and delay do not count";
    EXPECT_NE(id, alarmId(above(81)));
    EXPECT_NE(id, alarmId(below(80)));
    AlarmSettings other = above(80);
    other.plc = QStringLiteral("mill");
    EXPECT_NE(id, alarmId(other));
    other = above(80);
    other.label = QStringLiteral("Plant.flow");
    EXPECT_NE(id, alarmId(other));
    other = above(80);
    other.text = QStringLiteral("Another text");
    EXPECT_EQ(id, alarmId(other));
}

TEST(AlarmSettings, WhatMakesNoSenseIsNamed)
{
    EXPECT_EQ("", errorOf({above(80), below(10), is(true), notGood(1000)}));
    EXPECT_EQ("press: Plant.level is TRUE: the alarm stands twice",
              errorOf({is(true), above(1), is(true)}));
    AlarmSettings banded = is(true);
    banded.deadband = 1;
    EXPECT_EQ("press: Plant.level is TRUE: only a limit (above, below) has a deadband",
              errorOf({banded}));
    EXPECT_EQ("press: Plant.level not good: expected a delay: at a start no value is good yet",
              errorOf({notGood(0)}));
    EXPECT_EQ("press: Plant.level below 1.5: expected a deadband of 0 or more",
              errorOf({below(1.5, -1)}));
    EXPECT_NE("", errorOf({above(std::numeric_limits<double>::infinity())}));
    EXPECT_NE("", errorOf({above(80, 0, -1)}));
}

} // namespace
} // namespace plc::panel
