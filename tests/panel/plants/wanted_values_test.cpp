#include "panel/plants/wanted_values.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

constexpr qint64 kMinute = 60000;

host::DataPoint point(const char* text)
{
    host::DataPoint result;
    result.text = QString::fromLatin1(text);
    return result;
}

TEST(WantedValues, HaveOneSlotForAllWhoWantThem)
{
    WantedValues values;
    const int first = values.want(point("a"));
    const int second = values.want(point("b"));
    EXPECT_NE(first, second);
    EXPECT_EQ(first, values.want(point("a")));
    EXPECT_EQ(2, values.size());
    EXPECT_EQ((QVector<int>{first, second}), values.used());
}

TEST(WantedValues, AreKeptForAMinuteBehindTheLastOne)
{
    WantedValues values;
    const int slot = values.want(point("a"));
    values.want(point("a"));
    values.release(slot, 1000);
    EXPECT_TRUE(values.expire(1000 + 2 * kMinute).isEmpty()) << "one still wants it";
    values.release(slot, 5000);
    EXPECT_TRUE(values.expire(5000 + kMinute - 1).isEmpty());
    EXPECT_EQ(QVector<int>{slot}, values.expire(5000 + kMinute));
    EXPECT_EQ(-1, values.find(QStringLiteral("a")));
    EXPECT_EQ(0, values.size());
}

TEST(WantedValues, ThatAreWantedAgainWithinTheMinuteStay)
{
    WantedValues values;
    const int slot = values.want(point("a"));
    values.release(slot, 0);
    EXPECT_EQ(slot, values.want(point("a")));
    EXPECT_TRUE(values.expire(2 * kMinute).isEmpty());
}

TEST(WantedValues, TellWhetherOthersAreToBeRead)
{
    WantedValues values;
    EXPECT_FALSE(values.takeChange());
    const int slot = values.want(point("a"));
    EXPECT_TRUE(values.takeChange());
    values.want(point("a"));
    values.release(slot, 0);
    EXPECT_FALSE(values.takeChange());
    values.release(slot, 0);
    values.expire(kMinute);
    EXPECT_TRUE(values.takeChange());
}

TEST(WantedValues, TakeTheSlotsThatAreFree)
{
    WantedValues values;
    const int slot = values.want(point("a"));
    values.release(slot, 0);
    values.expire(kMinute);
    EXPECT_EQ(slot, values.want(point("b")));
    EXPECT_EQ("b", values.point(slot).text.toStdString());
    EXPECT_EQ(1, values.end());
}

} // namespace
} // namespace plc::panel
