#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "panel/alarms/alarm_desk.h"
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

/// Histories whose files are moved and removed while they are written into.
class MovedHistory : public plc::test::FileTest {
protected:
    MovedHistory() { start(); }

    void start()
    {
        desk.reset();
        Expected<std::unique_ptr<AlarmHistory>> history = AlarmHistory::open(file, {});
        ASSERT_TRUE(succeeds(history)) << error.toStdString();
        Expected<std::unique_ptr<AlarmDesk>> opened = AlarmDesk::open(
            {above(80)}, std::move(*history), [this] { bell.ring(); }, kStart);
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
    void passTime(qint64 time)
    {
        desk->settle(at(time));
        drain();
    }
    void value(qint64 time, double value)
    {
        desk->take(QStringLiteral("press"), QStringLiteral("Plant.level"),
                   {Value(value), at(time)});
        passTime(time);
    }
    void acknowledge(qint64 begin, qint64 now)
    {
        QString reason = QStringLiteral("not answered");
        desk->acknowledge(alarmId(above(80)), kStart + begin, QStringLiteral("anna"), at(now),
                          [&](const AlarmDesk::Acknowledgement& done) { reason = done.reason; });
        drain();
        EXPECT_EQ("", reason.toStdString());
    }
    /// "NUMBER: BEGIN to END by USER", the newest first.
    static std::string text(const QVector<AlarmOccurrence>& all)
    {
        std::string text;
        for (const AlarmOccurrence& one : all) {
            text += text.empty() ? "" : ", ";
            text += std::to_string(one.number) + ": " + std::to_string(one.begin - kStart) + " to";
            text += one.end ? " " + std::to_string(*one.end - kStart) : "";
            text += one.acknowledgedAt ? " by " + one.acknowledgedBy.toStdString() : "";
        }
        return text;
    }
    std::string past()
    {
        std::string found = "not answered";
        desk->between(0, kStart * 2, 100, [&](const Expected<QVector<AlarmOccurrence>>& answer) {
            found = answer ? text(*answer) : answer.error().text.toStdString();
        });
        drain();
        return found;
    }
    /// In a file that nobody has open.
    std::string pastIn(const QString& path)
    {
        Expected<std::unique_ptr<AlarmHistory>> history = AlarmHistory::open(path, {});
        if (!succeeds(history))
            return error.toStdString();
        return text((*history)->between(0, kStart * 2, 100).valueOr({}));
    }
    /// An occurrence that was acknowledged, one that was not, and one that has not ended.
    void raise()
    {
        value(1000, 81);
        acknowledge(1000, 1500);
        value(2000, 0);
        value(3000, 82);
        value(4000, 0);
        value(5000, 83);
    }

    plc::test::Bell bell;
    QString file = path("alarms");
    std::unique_ptr<AlarmDesk> desk;
};

TEST_F(MovedHistory, IsGoneOnWithInANewOneThatBeginsWithWhatIsOpen)
{
    raise();
    ASSERT_TRUE(QFile::rename(file, path("moved")));
    passTime(6000);
    EXPECT_EQ("3: 5000 to, 2: 3000 to 4000", past());
    acknowledge(5000, 6500);
    value(7000, 0);
    value(8000, 84);
    const std::string all = "4: 8000 to, 3: 5000 to 7000 by anna, 2: 3000 to 4000";
    EXPECT_EQ(all, past());
    desk.reset();
    EXPECT_EQ(all, pastIn(file));
    EXPECT_EQ("3: 5000 to, 2: 3000 to 4000, 1: 1000 to 2000 by anna", pastIn(path("moved")));
    // Without the journal, which stays where it was when the file alone is moved.
    EXPECT_EQ("alarms moved", names());
}

TEST_F(MovedHistory, IsLookedForOnceASecond)
{
    raise();
    EXPECT_EQ(0, desk->changedFiles());
    ASSERT_TRUE(QFile::remove(file));
    desk->settle(at(5999));
    drain();
    EXPECT_EQ(0, desk->changedFiles());
    passTime(6000);
    EXPECT_EQ(1, desk->changedFiles());
    passTime(7000);
    EXPECT_EQ(1, desk->changedFiles());
}

TEST_F(MovedHistory, GivesNoNumberAgain)
{
    raise();
    acknowledge(5000, 5500);
    value(6000, 0);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::remove(file + QStringLiteral("-wal")));
    passTime(7000);
    EXPECT_EQ("", past()) << "nothing was open";
    start();
    value(20000, 0);
    value(21000, 81);
    EXPECT_EQ("4: 21000 to", past());
}

TEST_F(MovedHistory, KnowsBehindARestartWhatWasNotAcknowledged)
{
    raise();
    ASSERT_TRUE(QFile::rename(file, path("moved")));
    passTime(6000);
    start();
    EXPECT_EQ(1, desk->engine().status(0).unacknowledgedBefore);
    ASSERT_TRUE(desk->engine().status(0).occurrence);
    EXPECT_EQ(kStart + 5000, desk->engine().status(0).occurrence->begin);
}

TEST_F(MovedHistory, AnErrorStaysAsLongAsNoneCanBeBegun)
{
    QDir folder(files.path("."));
    ASSERT_TRUE(folder.mkdir(QStringLiteral("in")));
    file = path("in/alarms");
    start();
    raise();
    ASSERT_TRUE(folder.rename(QStringLiteral("in"), QStringLiteral("out")));
    passTime(6000);
    EXPECT_THAT(desk->failure().toStdString(),
                testing::HasSubstr("in/alarms: the history of alarms was moved or removed while it "
                                   "was open, and none can be begun in its place: "));
    value(7000, 0);
    ASSERT_TRUE(folder.mkdir(QStringLiteral("in")));
    passTime(8000);
    EXPECT_EQ("", desk->failure().toStdString());
    EXPECT_EQ("3: 5000 to 7000, 2: 3000 to 4000", past());
    EXPECT_EQ("3: 5000 to, 2: 3000 to 4000, 1: 1000 to 2000 by anna", pastIn(path("out/alarms")));
}

TEST_F(MovedHistory, IsGoneOnWithWhereItIsMovedBack)
{
    raise();
    ASSERT_TRUE(QFile::rename(file, path("moved")));
    passTime(6000);
    value(7000, 0);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::rename(path("moved"), file));
    passTime(8000);
    EXPECT_EQ(2, desk->changedFiles());
    EXPECT_EQ("3: 5000 to 7000, 2: 3000 to 4000, 1: 1000 to 2000 by anna", past());
}

TEST_F(MovedHistory, AnotherOneThatStandsThereIsLeftAsItIs)
{
    raise();
    QString other = path("other");
    desk.reset();
    ASSERT_TRUE(QFile::copy(file, other));
    std::swap(file, other);
    start();
    value(10000, 0);
    value(11000, 81);
    desk.reset();
    const std::string before = pastIn(file);
    std::swap(file, other);
    start();
    ASSERT_TRUE(QFile::rename(file, path("moved")));
    ASSERT_TRUE(QFile::rename(other, file));
    passTime(20000);
    EXPECT_THAT(desk->failure().toStdString(),
                testing::EndsWith("another history lies there; move it away, or start again to go "
                                  "on with it"));
    EXPECT_EQ(before, pastIn(file));
    ASSERT_TRUE(QFile::remove(file));
    passTime(21000);
    EXPECT_EQ("", desk->failure().toStdString());
}

TEST_F(MovedHistory, ThatIsDamagedIsGoneOnWithInANewOne)
{
    desk.reset();
    AlarmOccurrence one;
    one.alarm = alarmId(above(80));
    QVector<AlarmOccurrence> many;
    for (; one.number < 1000; ++one.number)
        many.append(one);
    {
        const Expected<std::unique_ptr<AlarmHistory>> filled = AlarmHistory::open(file, {});
        ASSERT_TRUE(succeeds((*filled)->save(many, {}))) << error.toStdString();
    }
    const Expected<std::unique_ptr<AlarmHistory>> history = AlarmHistory::open(file, {});
    // Behind the first page, which is known already.
    constexpr int kPage = 4096;
    QFile damaged(file);
    ASSERT_TRUE(damaged.open(QIODevice::ReadWrite) && damaged.seek(kPage));
    damaged.write(QByteArray(int(damaged.size()) - kPage, 'x'));
    damaged.close();
    EXPECT_FALSE(succeeds((*history)->kept()));
    ASSERT_TRUE(QFile::rename(file, path("moved")));
    EXPECT_TRUE(succeeds((*history)->look())) << error.toStdString();
    EXPECT_EQ(1000, (*history)->nextNumber().valueOr(0));
}

} // namespace
} // namespace plc::panel
