#include "gateway/forwarding/kept_topics.h"

#include <gtest/gtest.h>

#include <QtCore/QMap>

namespace plc::gateway {
namespace {

const QString kBroker = QStringLiteral("a:1883");

class MemoryRecord : public TopicRecord {
public:
    QStringList topics(const QString& broker) const override { return m_topics.value(broker); }
    void add(const QString& broker, const QStringList& topics) override
    {
        m_topics[broker] += topics;
        m_topics[broker].sort();
    }
    void remove(const QString& broker, const QStringList& topics) override
    {
        for (const QString& topic : topics)
            m_topics[broker].removeAll(topic);
    }

private:
    QMap<QString, QStringList> m_topics;
};

class KeptTopicsTest : public testing::Test {
protected:
    KeptTopicsTest() { topics.begin(kBroker); }

    static Message message(const char* topic, bool isRetained = true)
    {
        return {QString::fromLatin1(topic), "1", 1, isRetained};
    }
    /// The topics that are removed when these are wanted.
    QStringList removed(const QStringList& wanted)
    {
        QStringList list;
        const auto isWanted = [&](const QString& topic) { return wanted.contains(topic); };
        for (const Message& each : topics.removals(isWanted)) {
            EXPECT_TRUE(each.payload.isEmpty());
            EXPECT_TRUE(each.isRetained);
            EXPECT_EQ(1, each.qos);
            list.append(each.topic);
        }
        return list;
    }

    MemoryRecord record;
    KeptTopics topics{&record};
};

TEST_F(KeptTopicsTest, AreRecordedWhereTheBrokerKeepsThem)
{
    topics.note({message("x"), message("y", false), message("z"), message("x")});
    EXPECT_EQ((QStringList{"x", "z"}), record.topics(kBroker));
    topics.begin(QStringLiteral("b:1883"));
    topics.note({message("y")});
    EXPECT_EQ((QStringList{"x", "z"}), record.topics(kBroker));
    EXPECT_EQ(QStringList{"y"}, record.topics(QStringLiteral("b:1883")));
}

TEST_F(KeptTopicsTest, OfFormerRunsAreRemovedWhereNobodyWantsThem)
{
    record.add(kBroker, {"x", "y", "z"});
    topics.begin(kBroker);
    EXPECT_EQ((QStringList{"x", "z"}), removed({"y"}));
    // They are on their way.
    EXPECT_EQ(QStringList(), removed({"y"}));
    EXPECT_EQ((QStringList{"x", "y", "z"}), record.topics(kBroker));
    topics.confirmed(topics.lastRemoval());
    EXPECT_EQ(QStringList{"y"}, record.topics(kBroker));
}

TEST_F(KeptTopicsTest, AreRemovedAgainWhereTheRemovalMayBeLost)
{
    topics.note({message("x")});
    EXPECT_EQ(QStringList{"x"}, removed({}));
    topics.begin(kBroker);
    EXPECT_EQ(QStringList{"x"}, removed({}));
}

TEST_F(KeptTopicsTest, StayRecordedWhenTheyArePublishedBehindTheirRemoval)
{
    topics.note({message("x")});
    EXPECT_EQ(QStringList{"x"}, removed({}));
    const quint64 first = topics.lastRemoval();
    topics.note({message("x")});
    topics.confirmed(first);
    EXPECT_EQ(QStringList{"x"}, record.topics(kBroker));
    EXPECT_EQ(QStringList{"x"}, removed({}));
    // The confirmation of the first removal says nothing of the second.
    topics.confirmed(first);
    EXPECT_EQ(QStringList{"x"}, record.topics(kBroker));
    topics.confirmed(topics.lastRemoval());
    EXPECT_EQ(QStringList(), record.topics(kBroker));
}

} // namespace
} // namespace plc::gateway
