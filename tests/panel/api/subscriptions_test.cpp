#include "panel/api/subscriptions.h"

#include <gtest/gtest.h>

#include "tests/support/file_test.h"

namespace plc::panel {
namespace test {
namespace {

class SubscriptionsTest : public plc::test::FileTest {
protected:
    /// Of no PLC, which subscriptions tell value by value.
    static QVector<ValueName> names(int count, const char* first = "0")
    {
        QVector<ValueName> names{{QStringLiteral("none"), QString::fromLatin1(first)}};
        for (int i = 1; i < count; ++i)
            names.append({QStringLiteral("none"), QString::number(i)});
        return names;
    }
    QString add(const QVector<ValueName>& names, const char* owner = "vera")
    {
        const Expected<QString> id = subscriptions.add(names, QString::fromLatin1(owner));
        EXPECT_TRUE(succeeds(id)) << error.toStdString();
        return id.valueOr({});
    }
    static std::function<bool()> always()
    {
        return [] { return true; };
    }

    qint64 now = 1000;
    Plants plants;
    Subscriptions subscriptions{&plants, [this] { return now; }};
};

TEST_F(SubscriptionsTest, TellOfEachValueWhyItIsNotThere)
{
    const QString id = add(names(2));
    ASSERT_TRUE(subscriptions.items(id));
    ASSERT_EQ(2, subscriptions.items(id)->size());
    EXPECT_EQ(-1, subscriptions.items(id)->at(1).slot);
    EXPECT_EQ("there is no such PLC", subscriptions.items(id)->at(1).error.toStdString());
    EXPECT_FALSE(subscriptions.items(QStringLiteral("x")));
    EXPECT_FALSE(subscriptions.open(QStringLiteral("x"), always()));
    EXPECT_FALSE(subscriptions.remove(QStringLiteral("x")));
}

TEST_F(SubscriptionsTest, EqualListsShareTheirContent)
{
    const QString first = add(names(2));
    const QString second = add(names(2));
    EXPECT_NE(first, second);
    EXPECT_EQ(2, subscriptions.size());
    ASSERT_TRUE(subscriptions.items(first));
    EXPECT_EQ(subscriptions.items(first), subscriptions.items(second));
    EXPECT_NE(subscriptions.items(first), subscriptions.items(add(names(3))));
    EXPECT_TRUE(subscriptions.remove(first));
    ASSERT_TRUE(subscriptions.items(second));
    EXPECT_EQ(2, subscriptions.items(second)->size());
}

TEST_F(SubscriptionsTest, EndWhenNobodyReadThemForAMinute)
{
    const QString idle = add(names(1));
    const QString read = add(names(2));
    const std::shared_ptr<EventStream> stream = subscriptions.open(read, always());
    ASSERT_TRUE(stream);
    EXPECT_EQ(1, subscriptions.streams());
    now += Subscriptions::kKeptIdle - 1;
    subscriptions.passSecond();
    EXPECT_TRUE(subscriptions.items(idle));
    now += 1;
    subscriptions.passSecond();
    EXPECT_FALSE(subscriptions.items(idle));
    EXPECT_TRUE(subscriptions.items(read));
}

TEST_F(SubscriptionsTest, StreamsEndOnceTheyAreNotAllowedAnyMore)
{
    bool isAllowed = true;
    const auto stream = subscriptions.open(add(names(1)), [&isAllowed] { return isAllowed; });
    subscriptions.passSecond();
    EXPECT_TRUE(stream->isOpen());
    isAllowed = false;
    subscriptions.passSecond();
    EXPECT_FALSE(stream->isOpen());
}

TEST_F(SubscriptionsTest, AreNoMoreThanThereMayBe)
{
    for (int i = 0; i < Subscriptions::kMostSubscriptions; ++i)
        add({}, QByteArray::number(i % 10).constData());
    EXPECT_FALSE(succeeds(subscriptions.add({}, QStringLiteral("another"))));
    EXPECT_EQ("there are too many subscriptions; end some", error.toStdString());
    subscriptions.clear();
    EXPECT_EQ(0, subscriptions.size());
    add({});
}

TEST_F(SubscriptionsTest, FollowNoMoreValuesInAllThanTheyMay)
{
    constexpr int kLists = Subscriptions::kMostInAll / Subscriptions::kMostValues;
    QString last;
    for (int i = 0; i < kLists; ++i) {
        const QByteArray number = QByteArray::number(i);
        last = add(names(Subscriptions::kMostValues, ("first" + number).constData()), number);
    }
    EXPECT_FALSE(succeeds(subscriptions.add(names(1), QStringLiteral("another"))));
    EXPECT_EQ("more than 200000 values would be followed; end some subscriptions",
              error.toStdString());
    EXPECT_EQ(kLists, subscriptions.size());
    // What is followed already costs nothing.
    add(names(Subscriptions::kMostValues, "first0"), "another");
    subscriptions.remove(last);
    add(names(1), "another");
}

TEST_F(SubscriptionsTest, LeaveTheOthersTheirsWhateverOneTakes)
{
    const QVector<ValueName> all = names(Subscriptions::kMostValues);
    const QString first = add(all);
    add(names(Subscriptions::kMostValues, "first1"));
    add(names(Subscriptions::kMostOfOwner - 2 * Subscriptions::kMostValues, "first2"));
    EXPECT_FALSE(succeeds(subscriptions.add(names(1), QStringLiteral("vera"))));
    EXPECT_EQ(
        "more than 50000 values would be followed for one user or address; end some "
        "subscriptions",
        error.toStdString());
    // Equal lists of one count once, and others count for themselves.
    const QString again = add(all);
    add(names(Subscriptions::kMostValues), "otto");
    subscriptions.remove(first);
    EXPECT_FALSE(succeeds(subscriptions.add(names(1), QStringLiteral("vera"))));
    subscriptions.remove(again);
    add(names(1));
}

TEST_F(SubscriptionsTest, OfOneAreNoMoreThanHisShare)
{
    for (int i = 0; i < Subscriptions::kMostSubscriptionsOfOwner; ++i)
        add({});
    EXPECT_FALSE(succeeds(subscriptions.add({}, QStringLiteral("vera"))));
    EXPECT_EQ("there are too many subscriptions of one user or address; end some",
              error.toStdString());
    add({}, "otto");
    now += Subscriptions::kKeptIdle;
    subscriptions.passSecond();
    EXPECT_EQ(0, subscriptions.size());
    add({});
}

} // namespace
} // namespace test
} // namespace plc::panel
