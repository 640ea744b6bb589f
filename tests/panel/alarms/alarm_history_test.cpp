#include "panel/alarms/alarm_history.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/panel/alarms/alarm_examples.h"
#include "tests/support/file_test.h"
#include "values/value_bits.h"

namespace plc::panel {
namespace {

using test::kStart;
using values::Value;

class AlarmHistoryTest : public plc::test::FileTest {
protected:
    std::unique_ptr<AlarmHistory> open(const AlarmHistoryLimits& limits = {})
    {
        Expected<std::unique_ptr<AlarmHistory>> history = AlarmHistory::open(file, limits);
        EXPECT_TRUE(succeeds(history)) << error.toStdString();
        return history ? std::move(*history) : nullptr;
    }
    static AlarmOccurrence occurrence(qint64 number, qint64 begin, std::optional<qint64> end = {})
    {
        AlarmOccurrence made;
        made.number = number;
        made.alarm = QStringLiteral("a1");
        made.plc = QStringLiteral("press");
        made.label = QStringLiteral("Plant.level");
        made.text = QString::fromUtf8("Füllstand");
        made.condition = QStringLiteral("above 80");
        made.begin = kStart + begin;
        if (end)
            made.end = kStart + *end;
        return made;
    }
    static AlarmOccurrence acknowledged(AlarmOccurrence made)
    {
        made.acknowledgedBy = QStringLiteral("anna");
        made.acknowledgedAt = made.begin + 1;
        return made;
    }
    void save(AlarmHistory& history, const QVector<AlarmOccurrence>& list, qint64 now = 0)
    {
        EXPECT_TRUE(succeeds(history.save(list, kStart + now))) << error.toStdString();
    }
    /// "3 2 1"
    static std::string numbers(const Expected<QVector<AlarmOccurrence>>& found)
    {
        std::string text;
        for (const AlarmOccurrence& one : found.valueOr({}))
            text += (text.empty() ? "" : " ") + std::to_string(one.number);
        return text;
    }
    static std::string all(AlarmHistory& history)
    {
        return numbers(history.between(0, std::numeric_limits<qint64>::max(), 1000));
    }

    QString file = path("alarms.sqlite");
};

TEST_F(AlarmHistoryTest, KeepsAllOfAnOccurrenceBeyondTheEndOfTheProcess)
{
    AlarmOccurrence saved = acknowledged(occurrence(4, 1000, 2000));
    saved.isBeginUnseen = true;
    saved.hasRestart = true;
    saved.value = Value(81.5F);
    save(*open(), {saved});
    const Expected<QVector<AlarmOccurrence>> found = open()->between(kStart, kStart + 5000, 10);
    ASSERT_TRUE(found);
    ASSERT_EQ(1, found->size());
    const AlarmOccurrence& read = found->first();
    EXPECT_EQ(4, read.number);
    EXPECT_EQ(saved.alarm, read.alarm);
    EXPECT_EQ(saved.plc, read.plc);
    EXPECT_EQ(saved.label, read.label);
    EXPECT_EQ(saved.text, read.text);
    EXPECT_EQ(saved.condition, read.condition);
    EXPECT_EQ(kStart + 1000, read.begin);
    EXPECT_EQ(kStart + 2000, *read.end);
    EXPECT_EQ("anna", read.acknowledgedBy.toStdString());
    EXPECT_EQ(kStart + 1001, *read.acknowledgedAt);
    EXPECT_EQ(81.5F, std::get<float>(*read.value));
    EXPECT_TRUE(read.isBeginUnseen);
    EXPECT_FALSE(read.isEndUnseen);
    EXPECT_FALSE(read.hasGap);
    EXPECT_TRUE(read.hasRestart);
    EXPECT_FALSE(read.isWatchLost);
}

TEST_F(AlarmHistoryTest, KeepsValuesOfEachKindExactly)
{
    const QVector<Value> values = {true,
                                   std::numeric_limits<qint64>::min(),
                                   std::numeric_limits<quint64>::max(),
                                   -0.0F,
                                   1e308,
                                   QString::fromUtf8("Größe 'x'"),
                                   QString()};
    QVector<AlarmOccurrence> list;
    for (const Value& value : values) {
        list.append(occurrence(list.size() + 1, list.size()));
        list.last().value = value;
    }
    list.append(occurrence(list.size() + 1, list.size()));
    std::unique_ptr<AlarmHistory> history = open();
    save(*history, list);
    const QVector<AlarmOccurrence> found = history->between(0, kStart + 100, 100).valueOr({});
    ASSERT_EQ(values.size() + 1, found.size());
    EXPECT_FALSE(found[0].value);
    for (int i = 0; i < int(values.size()); ++i) {
        const Value& read = *found[int(values.size()) - i].value;
        EXPECT_TRUE(values[i] == read) << i;
        EXPECT_EQ(values::valueBits(values[i]), values::valueBits(read)) << i;
    }
}

TEST_F(AlarmHistoryTest, IsAskedByTime)
{
    std::unique_ptr<AlarmHistory> history = open();
    save(*history, {occurrence(1, 1000, 2000), occurrence(2, 3000, 9000), occurrence(3, 5000)});
    EXPECT_EQ("1", numbers(history->between(kStart + 2000, kStart + 2999, 10)));
    EXPECT_EQ("", numbers(history->between(kStart + 2001, kStart + 2999, 10)));
    EXPECT_EQ("3 2", numbers(history->between(kStart + 6000, kStart + 7000, 10)));
    EXPECT_EQ("3", numbers(history->between(kStart + 9001, kStart + 9999, 10))) << "has not ended";
    EXPECT_EQ("3 2", numbers(history->between(kStart, kStart + 7000, 2))) << "the newest first";
}

TEST_F(AlarmHistoryTest, AChangedOccurrenceIsOne)
{
    std::unique_ptr<AlarmHistory> history = open();
    save(*history, {occurrence(1, 1000)});
    save(*history, {occurrence(1, 1000, 2000)});
    const QVector<AlarmOccurrence> found = history->between(0, kStart + 5000, 10).valueOr({});
    ASSERT_EQ(1, found.size());
    EXPECT_EQ(kStart + 2000, *found[0].end);
}

TEST_F(AlarmHistoryTest, GivesBehindARestartWhatHasNotEndedOrIsNotAcknowledged)
{
    AlarmOccurrence other = occurrence(4, 4000, 4500);
    other.alarm = QStringLiteral("b2");
    AlarmOccurrence done = acknowledged(occurrence(5, 5000, 5500));
    done.alarm = QStringLiteral("c3");
    save(*open(), {acknowledged(occurrence(1, 1000, 1500)), occurrence(2, 2000, 2500),
                   occurrence(3, 3000), other, done});
    std::unique_ptr<AlarmHistory> history = open();
    const Expected<QVector<KeptOccurrence>> kept = history->kept();
    ASSERT_TRUE(kept);
    ASSERT_EQ(2, kept->size());
    EXPECT_EQ(3, (*kept)[0].newest.number);
    EXPECT_EQ(1, (*kept)[0].unacknowledgedBefore) << "number 2: before number 1 all is done";
    EXPECT_EQ(4, (*kept)[1].newest.number);
    EXPECT_EQ(0, (*kept)[1].unacknowledgedBefore);
    EXPECT_EQ(6, history->nextNumber().valueOr(0));
}

TEST_F(AlarmHistoryTest, ANewTextOfAnAlarmDoesNotChangeThePast)
{
    std::unique_ptr<AlarmHistory> history = open();
    AlarmOccurrence renamed = occurrence(2, 2000);
    renamed.text = QStringLiteral("Level");
    save(*history, {occurrence(1, 1000, 1500), renamed});
    const QVector<AlarmOccurrence> found = history->between(0, kStart + 5000, 10).valueOr({});
    EXPECT_EQ("Level", found[0].text.toStdString());
    EXPECT_EQ("Füllstand", found[1].text.toStdString());
    EXPECT_EQ(1, history->kept().valueOr({}).size());
}

TEST_F(AlarmHistoryTest, IsBoundedByCount)
{
    std::unique_ptr<AlarmHistory> history = open({3, 1000000});
    for (int i = 1; i <= 5; ++i)
        save(*history, {acknowledged(occurrence(i, i * 10, i * 10 + 5))});
    EXPECT_EQ("5 4 3", all(*history));
    EXPECT_EQ(6, history->nextNumber().valueOr(0));
}

TEST_F(AlarmHistoryTest, IsBoundedByAge)
{
    std::unique_ptr<AlarmHistory> history = open({1000, 10000});
    save(*history, {acknowledged(occurrence(1, 0, 100)), acknowledged(occurrence(2, 50, 101))},
         10000);
    EXPECT_EQ("2 1", all(*history));
    save(*history, {}, 10101);
    EXPECT_EQ("2", all(*history));
}

TEST_F(AlarmHistoryTest, NeverForgetsWhatHasNotEndedOrWaitsForSomebody)
{
    std::unique_ptr<AlarmHistory> history = open({1, 10});
    AlarmOccurrence open = acknowledged(occurrence(1, 0));
    AlarmOccurrence waiting = occurrence(2, 0, 5);
    waiting.alarm = QStringLiteral("b2");
    AlarmOccurrence before = occurrence(3, 0, 5);
    before.alarm = QStringLiteral("c3");
    AlarmOccurrence newest = occurrence(4, 0, 5);
    newest.alarm = QStringLiteral("c3");
    save(*history, {open, waiting, before, newest}, 1000000);
    EXPECT_EQ("4 2 1", all(*history));
}

TEST_F(AlarmHistoryTest, NumbersAreNotGivenAgainWhenTheNewestHaveGone)
{
    std::unique_ptr<AlarmHistory> history = open({1000, 10});
    save(*history, {acknowledged(occurrence(9, 0, 5))}, 1000000);
    EXPECT_EQ("", all(*history));
    EXPECT_EQ(10, history->nextNumber().valueOr(0));
}

TEST_F(AlarmHistoryTest, FilesOfBeforeGetTheIndexByWhichTheOldIsFound)
{
    const char kIndex[] = "SELECT count(*) FROM sqlite_master WHERE name = 'occurrenceEnded'";
    open();
    {
        database::SqliteDatabase older;
        ASSERT_TRUE(older.open(file, false));
        ASSERT_TRUE(older.execute("DROP INDEX occurrenceEnded"));
    }
    open();
    database::SqliteDatabase database;
    ASSERT_TRUE(database.open(file, false));
    EXPECT_EQ(1, database.number(kIndex).value_or(0));
}

TEST_F(AlarmHistoryTest, IsOfOneProcess)
{
    const std::unique_ptr<AlarmHistory> history = open();
    EXPECT_FALSE(succeeds(AlarmHistory::open(file, {})));
    EXPECT_EQ(file +
                  ": the history of alarms is in use by another process; give each panel one of "
                  "its own",
              error);
}

TEST_F(AlarmHistoryTest, OtherFilesAreRefused)
{
    files.put(file, "no database, but longer than nothing");
    EXPECT_FALSE(succeeds(AlarmHistory::open(file, {})));
    EXPECT_TRUE(error.startsWith(file)) << error.toStdString();
    file = path("other.sqlite");
    {
        database::SqliteDatabase other;
        ASSERT_TRUE(other.open(file, true));
        ASSERT_TRUE(other.execute("CREATE TABLE t(x)"));
    }
    const std::string before = files.content(file);
    EXPECT_FALSE(succeeds(AlarmHistory::open(file, {})));
    EXPECT_TRUE(error.contains("is no history of alarms")) << error.toStdString();
    EXPECT_EQ(before, files.content(file)) << "which its journal mode is part of";
    file = path("newer.sqlite");
    open();
    {
        database::SqliteDatabase newer;
        ASSERT_TRUE(newer.open(file, true));
        ASSERT_TRUE(newer.execute("PRAGMA user_version = 2"));
    }
    EXPECT_FALSE(succeeds(AlarmHistory::open(file, {})));
    EXPECT_TRUE(error.contains("by another version of this program (2, here 1)"))
        << error.toStdString();
}

} // namespace
} // namespace plc::panel
