#include <gtest/gtest.h>

#include "panel/alarms/alarm_desk.h"
#include "tests/panel/alarms/alarm_examples.h"
#include "tests/support/gate.h"

namespace plc::panel {
namespace {

using test::above;
using test::at;
using test::kStart;
using values::Value;

constexpr std::chrono::minutes kLong(5);

/// Keeps occurrences while its gate is open.
class SlowStore : public AlarmStore {
public:
    Expected<void> save(const QVector<AlarmOccurrence>& added, std::optional<qint64>) override
    {
        gate.pass();
        ++saves;
        if (isFull)
            return Error{QStringLiteral("the disk is full")};
        for (const AlarmOccurrence& occurrence : added)
            occurrences.insert(occurrence.number, occurrence);
        return {};
    }
    Expected<QVector<KeptOccurrence>> kept() override { return QVector<KeptOccurrence>(); }
    Expected<QVector<AlarmOccurrence>> between(qint64, qint64, int) override
    {
        gate.pass();
        return occurrences.values().toVector();
    }
    Expected<qint64> nextNumber() override { return qint64(1); }

    plc::test::Gate gate;
    plc::test::Bell bell;
    // Looked at and set while nothing is under way.
    bool isFull = false;
    int saves = 0;
    QMap<qint64, AlarmOccurrence> occurrences;
};

class AlarmsOnASlowDisk : public testing::Test {
protected:
    AlarmsOnASlowDisk()
    {
        value(0, 0);
        value(1000, 81);
        drain();
    }
    void value(qint64 time, double value)
    {
        desk->take(QStringLiteral("press"), QStringLiteral("Plant.level"),
                   {Value(value), at(time)});
        desk->settle(at(time));
    }
    void acknowledge(const char* user, qint64 begin, qint64 now)
    {
        desk->acknowledge(alarmId(above(80)), kStart + begin, QString::fromLatin1(user), at(now),
                          [this](const AlarmDesk::Acknowledgement& done) {
                              answers += done.refusal == AlarmDesk::Refusal::None
                                             ? QStringLiteral("done;")
                                             : done.reason + QLatin1Char(';');
                          });
    }
    void ask()
    {
        desk->between(0, kStart * 2, 100, [this](const Expected<QVector<AlarmOccurrence>>& found) {
            past = found.valueOr({});
            answers += QStringLiteral("%1 found;").arg(past.size());
        });
    }
    void hang()
    {
        store->gate.setOpen(false);
        ask();
        store->gate.awaitArrival();
    }
    void drain()
    {
        store->gate.setOpen(true);
        while (!desk->isIdle()) {
            store->bell.await();
            desk->deliver();
        }
    }
    AlarmStatus status() const { return desk->engine().status(0); }
    std::string told() const { return answers.toStdString(); }

    std::shared_ptr<SlowStore> store = std::make_shared<SlowStore>();
    QString answers;
    QVector<AlarmOccurrence> past;
    std::unique_ptr<AlarmDesk> desk = std::move(*AlarmDesk::open(
        {above(80)}, store, [store = store] { store->bell.ring(); }, kStart));
};

TEST_F(AlarmsOnASlowDisk, AnAcknowledgementIsToldOnceItIsKept)
{
    hang();
    acknowledge("anna", 1000, 2000);
    EXPECT_FALSE(status().occurrence->acknowledgedAt);
    EXPECT_EQ("", told());
    drain();
    EXPECT_EQ("1 found;done;", told());
    EXPECT_EQ("anna", status().occurrence->acknowledgedBy.toStdString());
    EXPECT_EQ("anna", store->occurrences.value(1).acknowledgedBy.toStdString());
    EXPECT_EQ(QVector<int>{0}, desk->settle(at(3000)));
}

TEST_F(AlarmsOnASlowDisk, AnAcknowledgementThatIsNotKeptIsNone)
{
    hang();
    acknowledge("anna", 1000, 2000);
    store->isFull = true;
    drain();
    EXPECT_EQ("1 found;the disk is full;", told());
    EXPECT_FALSE(status().occurrence->acknowledgedAt);
    EXPECT_FALSE(store->occurrences.value(1).acknowledgedAt);
}

TEST_F(AlarmsOnASlowDisk, TheSecondWhoAcknowledgesIsToldWhoDidSoFirst)
{
    hang();
    acknowledge("anna", 1000, 2000);
    acknowledge("otto", 1000, 2001);
    drain();
    EXPECT_EQ("1 found;done;the alarm was acknowledged by anna;", told());
}

TEST_F(AlarmsOnASlowDisk, AnAlarmThatEndsWhileItsAcknowledgementIsWrittenIsNormal)
{
    hang();
    acknowledge("anna", 1000, 2000);
    value(3000, 0);
    EXPECT_EQ(AlarmState::Ended, status().state);
    drain();
    EXPECT_EQ(AlarmState::Normal, status().state);
    EXPECT_EQ("anna", store->occurrences.value(1).acknowledgedBy.toStdString());
    EXPECT_EQ(kStart + 3000, store->occurrences.value(1).end);
}

TEST_F(AlarmsOnASlowDisk, AnAlarmThatBeginsAnewWhileItsAcknowledgementIsWrittenIsNotAcknowledged)
{
    hang();
    acknowledge("anna", 1000, 2000);
    value(3000, 0);
    value(4000, 81);
    value(5000, 0);
    value(6000, 81);
    EXPECT_EQ(2, status().unacknowledgedBefore);
    drain();
    EXPECT_EQ("3 found;done;", told());
    EXPECT_EQ(3, status().occurrence->number);
    EXPECT_FALSE(status().occurrence->acknowledgedAt);
    EXPECT_EQ(1, status().unacknowledgedBefore);
    ASSERT_EQ(3, store->occurrences.size());
    EXPECT_EQ("anna", store->occurrences.value(1).acknowledgedBy.toStdString());
    EXPECT_EQ(kStart + 3000, store->occurrences.value(1).end);
    EXPECT_FALSE(store->occurrences.value(2).acknowledgedAt);
}

TEST_F(AlarmsOnASlowDisk, APastThatIsReadHasWhatIsNotWrittenYet)
{
    hang();
    value(3000, 0);
    value(4000, 81);
    ask();
    value(5000, 0);
    drain();
    EXPECT_EQ("2 found;2 found;", told());
    ASSERT_EQ(2, past.size());
    EXPECT_EQ(kStart + 5000, past[0].end);
    EXPECT_EQ(kStart + 3000, past[1].end);
    store->isFull = true;
    value(6000, 81);
    drain();
    ask();
    drain();
    EXPECT_EQ(3, past.size());
}

TEST_F(AlarmsOnASlowDisk, WhatComesMeanwhileIsWrittenAtOnce)
{
    const int before = store->saves;
    hang();
    for (int i = 0; i < 50; ++i)
        value(2000 + i, i % 2 == 0 ? 0 : 81);
    drain();
    EXPECT_EQ(before + 2, store->saves);
    EXPECT_EQ(26, store->occurrences.size());
}

TEST_F(AlarmsOnASlowDisk, RefusesWhatHasNoRoom)
{
    hang();
    for (int i = 1; i < AlarmDesk::kMostWaiting; ++i)
        ask();
    EXPECT_EQ("", told());
    desk->between(0, 1, 1, [this](const Expected<QVector<AlarmOccurrence>>& found) {
        answers += found.error().text;
    });
    EXPECT_EQ("too many questions wait; ask again later", told());
    drain();
}

TEST_F(AlarmsOnASlowDisk, TheEndWritesWhatWaits)
{
    hang();
    acknowledge("anna", 1000, 2000);
    value(3000, 0);
    store->gate.setOpen(true);
    desk->finish(kLong);
    EXPECT_EQ("1 found;done;", told());
    EXPECT_EQ("anna", store->occurrences.value(1).acknowledgedBy.toStdString());
    EXPECT_EQ(kStart + 3000, store->occurrences.value(1).end);
    acknowledge("anna", 1000, 4000);
    EXPECT_EQ("1 found;done;the program ends;", told());
}

TEST_F(AlarmsOnASlowDisk, TheEndDoesNotWaitForEver)
{
    hang();
    acknowledge("anna", 1000, 2000);
    desk->finish(std::chrono::milliseconds(1));
    EXPECT_EQ("the program ends;0 found;", told());
    desk.reset();
    store->gate.setOpen(true);
}

} // namespace
} // namespace plc::panel
