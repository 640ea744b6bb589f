#include "panel/alarms/alarm_desk.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "panel/alarms/alarm_history.h"
#include "tests/panel/alarms/alarm_examples.h"
#include "tests/support/file_test.h"
#include "tests/support/gate.h"

namespace plc::panel {
namespace {

using test::above;
using test::at;
using test::kStart;
using values::Value;

class AlarmDeskTest : public plc::test::FileTest {
protected:
    AlarmDeskTest() { start(0); }

    void start(qint64 now)
    {
        desk.reset();
        Expected<std::unique_ptr<AlarmHistory>> history = AlarmHistory::open(file, {});
        ASSERT_TRUE(succeeds(history)) << error.toStdString();
        Expected<std::unique_ptr<AlarmDesk>> opened = AlarmDesk::open(
            {above(80)}, std::move(*history), [this] { bell.ring(); }, kStart + now);
        ASSERT_TRUE(succeeds(opened)) << error.toStdString();
        desk = std::move(*opened);
        drain();
    }
    void drain()
    {
        while (!desk->isIdle()) {
            bell.await();
            desk->deliver();
        }
    }
    QVector<int> settle(const Moment& now)
    {
        const QVector<int> changed = desk->settle(now);
        drain();
        return changed;
    }
    /// With a clock that is wrong by `set`.
    void value(qint64 time, double value, qint64 set = 0)
    {
        desk->take(QStringLiteral("press"), QStringLiteral("Plant.level"),
                   {Value(value), at(time, set)});
        settle(at(time, set));
    }
    AlarmDesk::Acknowledgement acknowledge(qint64 begin, qint64 now)
    {
        return acknowledge(alarmId(above(80)), begin, now);
    }
    AlarmDesk::Acknowledgement acknowledge(const QString& id, qint64 begin, qint64 now)
    {
        AlarmDesk::Acknowledgement answer;
        desk->acknowledge(id, kStart + begin, QStringLiteral("anna"), at(now),
                          [&](const AlarmDesk::Acknowledgement& done) { answer = done; });
        drain();
        return answer;
    }
    QVector<AlarmOccurrence> all()
    {
        QVector<AlarmOccurrence> past;
        desk->between(0, kStart * 2, 100, [&](const Expected<QVector<AlarmOccurrence>>& found) {
            past = found.valueOr({});
        });
        drain();
        return past;
    }

    plc::test::Bell bell;
    QString file = path("alarms.sqlite");
    std::unique_ptr<AlarmDesk> desk;
};

TEST_F(AlarmDeskTest, WhatIsAcknowledgedStaysSoBehindARestart)
{
    value(1000, 0);
    value(2000, 81);
    EXPECT_EQ(AlarmDesk::Refusal::None, acknowledge(2000, 3000).refusal);
    EXPECT_EQ(QVector<int>{0}, settle(at(3000)));
    start(10000);
    const AlarmStatus status = desk->engine().status(0);
    EXPECT_EQ(AlarmState::Unknown, status.state);
    ASSERT_TRUE(status.occurrence);
    EXPECT_EQ(kStart + 2000, status.occurrence->begin);
    EXPECT_EQ("anna", status.occurrence->acknowledgedBy.toStdString());
    EXPECT_TRUE(status.occurrence->hasRestart);
    value(11000, 0);
    EXPECT_EQ(AlarmState::Normal, desk->engine().status(0).state);
    ASSERT_EQ(1, all().size());
    EXPECT_EQ(kStart + 11000, *all()[0].end);
    EXPECT_TRUE(all()[0].isEndUnseen);
}

TEST_F(AlarmDeskTest, AnOccurrenceBehindARestartHasANumberOfItsOwn)
{
    value(1000, 81);
    value(2000, 0);
    start(3000);
    value(4000, 0);
    value(5000, 81);
    ASSERT_EQ(2, all().size());
    EXPECT_EQ(2, all()[0].number);
    EXPECT_EQ(1, desk->engine().status(0).unacknowledgedBefore);
}

TEST_F(AlarmDeskTest, RefusesWhatIsNotThere)
{
    EXPECT_EQ(AlarmDesk::Refusal::NotThat, acknowledge(0, 0).refusal);
    EXPECT_EQ(AlarmDesk::Refusal::NoSuchAlarm, acknowledge(QStringLiteral("x"), 0, 0).refusal);
}

/// Whether files may grow; as on a disk that is full.
void letFilesGrow(bool mayGrow)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &limit));
    limit.rlim_cur = mayGrow ? limit.rlim_max : 0;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
}

TEST_F(AlarmDeskTest, GoesOnWithoutItsHistoryAndMakesUpForItLater)
{
    value(0, 0);
    value(500, 81);
    EXPECT_EQ("", desk->failure().toStdString());
    letFilesGrow(false);
    const AlarmDesk::Acknowledgement refused = acknowledge(500, 600);
    EXPECT_EQ(AlarmDesk::Refusal::NotKept, refused.refusal);
    EXPECT_TRUE(refused.reason.startsWith(file)) << refused.reason.toStdString();
    EXPECT_FALSE(desk->engine().status(0).occurrence->acknowledgedAt);
    value(1000, 0);
    EXPECT_TRUE(desk->failure().startsWith(file)) << desk->failure().toStdString();
    EXPECT_EQ(AlarmState::Ended, desk->engine().status(0).state);
    ASSERT_EQ(1, all().size());
    EXPECT_EQ(kStart + 1000, all()[0].end.value_or(0)) << "though it is not in the file";
    letFilesGrow(true);
    settle(at(2000));
    EXPECT_EQ("", desk->failure().toStdString());
    start(3000);
    ASSERT_EQ(1, all().size());
    EXPECT_EQ(kStart + 1000, all()[0].end.value_or(0));
}

TEST_F(AlarmDeskTest, TriesAFailingHistoryOnceASecond)
{
    value(0, 0);
    letFilesGrow(false);
    value(1000, 81);
    EXPECT_NE("", desk->failure().toStdString());
    letFilesGrow(true);
    value(1500, 0);
    settle(at(1999));
    EXPECT_NE("", desk->failure().toStdString()) << "not tried yet";
    ASSERT_EQ(1, all().size());
    EXPECT_EQ(kStart + 1500, all()[0].end.value_or(0));
    settle(at(2000));
    EXPECT_EQ("", desk->failure().toStdString());
    start(3000);
    EXPECT_EQ(1, all().size());
}

TEST_F(AlarmDeskTest, WaitsForNoClockThatWasSetBack)
{
    value(5000, 0);
    letFilesGrow(false);
    value(6000, 81);
    EXPECT_NE("", desk->failure().toStdString());
    letFilesGrow(true);
    settle(at(7000, -5000));
    EXPECT_EQ("", desk->failure().toStdString());
}

TEST_F(AlarmDeskTest, TriesNoSoonerByAClockThatWasSetForth)
{
    value(5000, 0);
    letFilesGrow(false);
    value(6000, 81);
    letFilesGrow(true);
    settle(at(6999, 3600000));
    EXPECT_NE("", desk->failure().toStdString());
}

TEST(AlarmDesk, WorksWithoutAHistory)
{
    const std::unique_ptr<AlarmDesk> desk =
        std::move(*AlarmDesk::open({above(80)}, nullptr, {}, kStart));
    desk->take(QStringLiteral("press"), QStringLiteral("Plant.level"), {Value(81.0), at(0)});
    EXPECT_EQ(QVector<int>{0}, desk->settle(at(0)));
    int found = -1;
    desk->between(0, kStart, 10, [&](const Expected<QVector<AlarmOccurrence>>& past) {
        found = int(past.valueOr({}).size());
    });
    EXPECT_EQ(1, found);
    std::optional<AlarmDesk::Refusal> refusal;
    desk->acknowledge(alarmId(above(80)), kStart, QStringLiteral("anna"), at(0),
                      [&](const AlarmDesk::Acknowledgement& done) { refusal = done.refusal; });
    EXPECT_EQ(AlarmDesk::Refusal::None, refusal);
    EXPECT_TRUE(desk->engine().status(0).occurrence->acknowledgedAt);
}

TEST_F(AlarmDeskTest, AClockThatIsWrongRemovesNothingFromTheHistoryByItsAge)
{
    constexpr qint64 kHour = 3600000;
    constexpr qint64 kFuture = 500 * 24 * kHour; // the history keeps 400 days
    value(1000, 0);
    value(2000, 81);
    value(3000, 0);
    EXPECT_EQ(AlarmDesk::Refusal::None, acknowledge(2000, 3000).refusal);
    value(4000, 81, kFuture);
    value(kHour + 3999, 0, kFuture);
    EXPECT_EQ(2, all().size());
    EXPECT_EQ(kStart + 2000, all().last().begin);
    // It is taken for right when it was not set for an hour.
    value(kHour + 4000, 81, kFuture);
    EXPECT_EQ(2, all().size());
    EXPECT_NE(kStart + 2000, all().last().begin);
}

} // namespace
} // namespace plc::panel
