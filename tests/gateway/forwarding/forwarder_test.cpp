#include "gateway/forwarding/forwarder.h"

#include <gtest/gtest.h>

#include <deque>
#include <utility>

#include "tests/gateway/forwarding/fakes.h"
#include "values/iec_types.h"

namespace plc::gateway {
namespace {

constexpr int kTick = 250; // ms

class ForwarderTest : public testing::Test {
protected:
    ForwarderTest()
    {
        for (const char* name : {"a", "b"}) {
            Device device;
            device.name = QString::fromLatin1(name);
            for (const char* metric : {"x", "y"}) {
                Metric entry;
                entry.name = QString::fromLatin1(metric);
                entry.point.type = values::findIecType(QStringLiteral("INT"));
                device.metrics.append(entry);
            }
            forwarder.addDevice(name[0], device, nothingKnown());
        }
    }

    static QVector<Sample> nothingKnown()
    {
        return {{0, 0, Quality::Stale, true, {}}, {1, 0, Quality::Stale, true, {}}};
    }
    static Sample good(int metric, qint64 time, const char* value)
    {
        return {metric, time, Quality::Good, false, value};
    }
    static Sample stale(int metric, qint64 time, const char* value)
    {
        return {metric, time, Quality::Stale, true, value};
    }
    void update(char device, const QVector<Sample>& samples, bool isAlive = true)
    {
        forwarder.update(device, isAlive, samples, now, now);
    }
    void connect() { forwarder.connected(now, now); }
    void lose() { forwarder.lost(now); }
    void pass(int milliseconds)
    {
        for (int i = 0; i < milliseconds; i += kTick) {
            now += kTick;
            forwarder.tick(now, now);
        }
    }
    void confirmAll()
    {
        if (!broker.marks.isEmpty())
            forwarder.confirmed(broker.marks.last());
    }
    QStringList published() { return broker.take(); }

    qint64 now = 1000;
    test::TextPublisher publisher;
    test::HandBroker broker;
    test::MemoryStore store;
    Forwarder forwarder{&publisher, &broker, &store, 1000, QStringLiteral("1")};
};

TEST_F(ForwarderTest, SessionBeginsWithTheNodeAndTheDevicesThatAreThere)
{
    update('a', {good(0, 900, "1")});
    connect();
    EXPECT_EQ((QStringList{"open", "begin a x=1 y=~?"}), published());
}

TEST_F(ForwarderTest, ChangeOfABegunDeviceIsPublishedAtOnceAndOnce)
{
    connect();
    update('a', {good(0, 900, "1")});
    update('a', {good(0, 1900, "2"), good(1, 1900, "5")});
    pass(1000);
    EXPECT_EQ((QStringList{"open", "begin a x=1 y=~?", "a x=2@1900 y=5@1900"}), published());
}

TEST_F(ForwarderTest, NothingIsPublishedBeforeConsumersAreThere)
{
    publisher.mayPublishNow = false;
    connect();
    update('a', {good(0, 900, "1")});
    EXPECT_EQ(QStringList(), published());
    publisher.mayPublishNow = true;
    forwarder.beginIfWanted(now, now);
    EXPECT_EQ((QStringList{"open", "begin a x=1 y=~?"}), published());
}

TEST_F(ForwarderTest, DeviceThatGoesAwayIsEndedOnceAndComesBackWithItsValues)
{
    connect();
    update('a', {good(0, 900, "1")});
    published();
    update('a', {stale(0, 5000, "1")}, false);
    update('a', {}, false);
    pass(500);
    update('a', {good(0, 9000, "7")});
    EXPECT_EQ((QStringList{"a x=~1@5000", "end a", "begin a x=7 y=~?"}), published());
    EXPECT_EQ(0u, store.size());
}

TEST_F(ForwarderTest, ChangesWithoutABrokerComeAsHistoryInTheirOrder)
{
    update('a', {good(0, 1, "1")});
    update('b', {good(1, 2, "2")});
    update('a', {good(0, 3, "3")});
    pass(500);
    EXPECT_EQ(3u, store.size());
    connect();
    EXPECT_EQ((QStringList{"open", "begin a x=3 y=~?", "begin b x=~? y=2"}), published());
    pass(500);
    EXPECT_EQ((QStringList{"old a x=1@1", "old b y=2@2", "old a x=3@3"}), published());
    EXPECT_EQ(3u, store.size());
    confirmAll();
    EXPECT_EQ(0u, store.size());
}

TEST_F(ForwarderTest, UnconfirmedChangesAreSentAgainAfterALoss)
{
    connect();
    update('a', {good(0, 1, "1")});
    pass(250);
    confirmAll();
    update('a', {good(0, 2, "2")});
    pass(250);
    update('a', {good(0, 3, "3")});
    lose();
    EXPECT_EQ(2u, store.size());
    published();
    connect();
    pass(500);
    EXPECT_EQ((QStringList{"open", "begin a x=3 y=~?", "old a x=2@2 x=3@3"}), published());
}

TEST_F(ForwarderTest, WhatIsNotConfirmedForASecondIsInTheStoreUntilItIs)
{
    connect();
    update('a', {good(0, 1, "1")});
    pass(750);
    EXPECT_EQ(0u, store.size());
    pass(250);
    EXPECT_EQ(1u, store.size());
    confirmAll();
    EXPECT_EQ(0u, store.size());
    published();
    pass(1000);
    EXPECT_EQ(QStringList(), published());
}

TEST_F(ForwarderTest, LostHistoryIsSentAgain)
{
    update('a', {good(0, 1, "1")});
    connect();
    pass(500);
    lose();
    EXPECT_EQ(1u, store.size());
    published();
    connect();
    pass(500);
    EXPECT_EQ((QStringList{"open", "begin a x=1 y=~?", "old a x=1@1"}), published());
}

TEST_F(ForwarderTest, DeviceThatIsAwayIsAnnouncedForItsHistoryAndEndedBehindIt)
{
    update('a', {good(0, 1, "1")});
    update('a', {stale(0, 2, "1")}, false);
    connect();
    EXPECT_EQ(QStringList{"open"}, published());
    pass(500);
    EXPECT_EQ((QStringList{"begin a x=~1 y=~?", "old a x=1@1 x=~1@2"}), published());
    update('a', {}, false);
    EXPECT_EQ(QStringList(), published());
    confirmAll();
    pass(250);
    EXPECT_EQ(QStringList{"end a"}, published());
}

TEST_F(ForwarderTest, HistoryIsSentAtALimitedRate)
{
    for (int i = 0; i < 3000; ++i)
        update('a', {good(0, i, "1")});
    connect();
    for (int i = 0; i < 4; ++i) {
        pass(kTick);
        confirmAll();
    }
    // 1,000 changes a second.
    EXPECT_NEAR(2000.0, double(store.size()), 251.0);
}

TEST_F(ForwarderTest, BrokerThatDoesNotKeepUpGetsTheLastOfEachWhenItHas)
{
    connect();
    update('a', {good(0, 1, "1"), good(1, 1, "1")});
    pass(5500);
    ASSERT_TRUE(forwarder.isCongested());
    published();
    update('a', {good(0, 2, "2")});
    update('a', {good(0, 3, "3")});
    pass(500);
    EXPECT_EQ(QStringList(), published());
    confirmAll();
    pass(kTick);
    EXPECT_FALSE(forwarder.isCongested());
    EXPECT_EQ("a x=3@3", published().value(0));
    pass(500);
    confirmAll();
    pass(500);
    EXPECT_EQ(0u, store.size());
}

TEST_F(ForwarderTest, HistoryWaitsWhileLiveChangesAreNotConfirmed)
{
    update('a', {good(0, 1, "1")});
    pass(500);
    connect();
    update('a', {good(0, 2, "2")});
    pass(kTick);
    const QStringList first = published();
    EXPECT_TRUE(first.contains(QStringLiteral("old a x=1@1")));
    lose();
    connect();
    now += 2000; // What was published for the beginning is not confirmed.
    published();
    forwarder.tick(now, now);
    EXPECT_EQ(QStringList(), published());
}

TEST_F(ForwarderTest, RebirthComesTwiceASecondAtMost)
{
    update('a', {good(0, 1, "1")});
    connect();
    published();
    for (int i = 0; i < 8; ++i) {
        forwarder.wantRebirth(now, now);
        forwarder.wantRebirth(now, now);
        pass(kTick);
    }
    EXPECT_EQ(4, published().filter(QStringLiteral("open")).size());
}

TEST_F(ForwarderTest, RebirthComesAtOnceWhereNoneWasBefore)
{
    update('a', {good(0, 1, "1")});
    connect();
    pass(1000);
    published();
    forwarder.wantRebirth(now, now);
    EXPECT_EQ((QStringList{"open", "begin a x=1 y=~?"}), published());
}

TEST_F(ForwarderTest, ChangesThatNoMetricFitsAnyMoreAreCountedAndGone)
{
    ASSERT_TRUE(store.append({{0, "gone", "x", "INT", 1, Quality::Good, false, "1"},
                              {0, "a", "z", "INT", 1, Quality::Good, false, "1"},
                              {0, "a", "x", "DINT", 1, Quality::Good, false, "1"},
                              {0, "a", "x", "INT", 1, Quality::Good, false, "1"}}));
    connect();
    pass(500);
    confirmAll();
    EXPECT_EQ(3u, store.dropped());
    EXPECT_EQ(0u, store.size());
    EXPECT_TRUE(published().contains(QStringLiteral("old a x=1@1")));
}

TEST_F(ForwarderTest, StoreOfStrangersAloneIsEmptied)
{
    ASSERT_TRUE(store.append({{0, "gone", "x", "INT", 1, Quality::Good, false, "1"}}));
    connect();
    confirmAll();
    pass(500);
    confirmAll();
    EXPECT_EQ(1u, store.dropped());
    EXPECT_EQ(0u, store.size());
}

TEST_F(ForwarderTest, FailingStoreIsToldAndTriedAgain)
{
    store.isFailing = true;
    update('a', {good(0, 1, "1")});
    pass(1000);
    EXPECT_EQ("disk full", forwarder.storeError());
    store.isFailing = false;
    pass(500);
    EXPECT_EQ(QString(), forwarder.storeError());
    EXPECT_EQ(1u, store.size());
    EXPECT_EQ(0u, store.dropped());
}

TEST_F(ForwarderTest, WhatMemoryCannotHoldForAFailingStoreIsCounted)
{
    store.isFailing = true;
    for (int i = 0; i < 50010; ++i)
        update('a', {good(0, i, "1")});
    pass(500);
    EXPECT_EQ(10u, store.dropped());
    store.isFailing = false;
    pass(500);
    ASSERT_EQ(50000u, store.size());
    EXPECT_EQ(10, store.oldest(0, 1).first().time);
}

TEST_F(ForwarderTest, OutcomeIsToldAgainWhereItMayBeLost)
{
    WriteOutcome outcome;
    outcome.id = QStringLiteral("7");
    forwarder.tell(outcome, now, now);
    connect();
    EXPECT_EQ((QStringList{"open", "outcome 7"}), published());
    lose();
    connect();
    EXPECT_EQ((QStringList{"open", "outcome 7"}), published());
    pass(kTick);
    confirmAll();
    lose();
    connect();
    EXPECT_EQ(QStringList{"open"}, published());
}

TEST_F(ForwarderTest, OutcomesThatAreTooManyToBeKeptAreCounted)
{
    WriteOutcome outcome;
    connect();
    for (int i = 0; i < 10000; ++i) {
        outcome.id = QString::number(i);
        forwarder.tell(outcome, now, now);
    }
    lose();
    EXPECT_EQ(0u, forwarder.counters().lostOutcomes);
    for (int i = 10000; i < 10003; ++i) {
        outcome.id = QString::number(i);
        forwarder.tell(outcome, now, now);
    }
    EXPECT_EQ(3u, forwarder.counters().lostOutcomes);
    published();
    connect();
    const QStringList told = published();
    EXPECT_EQ(10001, told.size());
    EXPECT_EQ("outcome 3", told.value(1));
    EXPECT_EQ("outcome 10002", told.last());
}

TEST_F(ForwarderTest, RemovedDeviceIsEndedAndWhatWasOnItsWayIsStored)
{
    connect();
    update('a', {good(0, 1, "1")});
    update('b', {good(0, 1, "1")});
    pass(kTick);
    update('a', {good(0, 2, "2")});
    published();
    forwarder.removeDevice('a', now, now);
    EXPECT_EQ(QStringList{"end a"}, published());
    forwarder.flush(now);
    QStringList stored;
    for (const StoredChange& change : store.oldest(0, 10))
        stored.append(change.device + QString::fromLatin1(change.bytes));
    // That of b is there because it was published before, until it is confirmed.
    EXPECT_EQ((QStringList{"b1", "a1", "a2"}), stored);
    update('b', {good(0, 2, "2")});
    EXPECT_EQ(QStringList{"b x=2@2"}, published());
}

TEST_F(ForwarderTest, OthersGoOnAndAreConfirmedWhenADeviceIsRemoved)
{
    connect();
    update('b', {good(0, 1, "1")});
    WriteOutcome outcome;
    outcome.id = QStringLiteral("7");
    forwarder.tell(outcome, now, now);
    forwarder.removeDevice('a', now, now);
    pass(kTick);
    confirmAll();
    EXPECT_FALSE(forwarder.hasUnconfirmed());
    published();
    lose();
    EXPECT_EQ(0u, store.size());
    connect();
    EXPECT_EQ((QStringList{"open", "begin b x=1 y=~?"}), published());
}

TEST_F(ForwarderTest, BrokerThatDoesNotKeepUpGetsNoBirths)
{
    connect();
    update('a', {good(0, 1, "1")});
    pass(5500);
    ASSERT_TRUE(forwarder.isCongested());
    published();
    forwarder.wantRebirth(now, now);
    pass(1000);
    EXPECT_EQ(QStringList(), published());
    confirmAll();
    pass(2 * kTick);
    EXPECT_EQ((QStringList{"open", "begin a x=1 y=~?"}), published());
}

TEST_F(ForwarderTest, ChangesCountAsStoredOfTheirDeviceWhenTheStoreHasThem)
{
    store.isFailing = true;
    update('a', {good(0, 1, "1"), good(1, 1, "1")});
    update('b', {good(0, 1, "1")});
    pass(2000);
    EXPECT_EQ(0u, forwarder.counters('a').stored);
    store.isFailing = false;
    pass(500);
    EXPECT_EQ(2u, forwarder.counters('a').stored);
    EXPECT_EQ(1u, forwarder.counters('b').stored);
    EXPECT_EQ(3u, forwarder.counters().stored);
}

TEST_F(ForwarderTest, ChangesOnTheWayAreCountedAsStoredOnceThoughTheStoreFailsForLong)
{
    connect();
    update('a', {good(0, 1, "1")});
    store.isFailing = true;
    pass(3000);
    EXPECT_EQ(0u, forwarder.counters('a').stored);
    store.isFailing = false;
    pass(kTick);
    EXPECT_EQ(1u, forwarder.counters('a').stored);
}

TEST_F(ForwarderTest, ChangeThatNoMetricFitsIsCountedOnceThoughTheBrokerIsLost)
{
    ASSERT_TRUE(store.append({{0, "gone", "x", "INT", 1, Quality::Good, false, "1"},
                              {0, "a", "x", "INT", 1, Quality::Good, false, "1"}}));
    for (int i = 0; i < 3; ++i) {
        connect();
        pass(500);
        lose();
    }
    EXPECT_EQ(0u, store.dropped());
    connect();
    pass(500);
    confirmAll();
    EXPECT_EQ(1u, store.dropped());
    EXPECT_EQ(0u, store.size());
}

TEST_F(ForwarderTest, RebirthTellsTheStoreAsItIsThen)
{
    connect();
    pass(1000);
    EXPECT_EQ(0u, publisher.opened.dropped);
    store.countDropped(4);
    forwarder.wantRebirth(now, now);
    EXPECT_EQ(4u, publisher.opened.dropped);
}

/// A way on which everything is confirmed after some time.
class SlowWay : public ForwarderTest {
protected:
    void pass(int milliseconds, int delay)
    {
        for (int i = 0; i < milliseconds; i += kTick) {
            if (now % 500 == 0)
                update('a', {good(0, now, QByteArray::number(++m_value).constData())});
            ForwarderTest::pass(kTick);
            for (; m_asked < int(broker.marks.size()); ++m_asked)
                m_open.push_back({now + delay, broker.marks[m_asked]});
            while (!m_open.empty() && m_open.front().first <= now) {
                forwarder.confirmed(m_open.front().second);
                m_open.pop_front();
            }
        }
    }
    /// Each change that was sent, as often as it was.
    QHash<QString, int> sent()
    {
        QHash<QString, int> times;
        for (const QString& message : published()) {
            const QStringList words = message.split(QLatin1Char(' '));
            for (const QString& word : words) {
                if (word.contains(QLatin1Char('@')))
                    ++times[word];
            }
        }
        return times;
    }

private:
    int m_value = 0;
    int m_asked = 0;
    std::deque<std::pair<qint64, quint64>> m_open;
};

TEST_F(SlowWay, HistoryGetsOnAndNothingDeliveredIsDropped)
{
    for (const int delay : {1000, 2000, 4000}) {
        store.limit = 2000;
        SlowWay::pass(600000, delay); // 1,200 changes without a broker.
        EXPECT_GE(store.size(), 1200u);
        connect();
        // At least 200 within 4 s and two ticks.
        SlowWay::pass(60000, delay);
        // What was stored is there; of what is on its way a copy is.
        EXPECT_LE(store.size(), 2u * unsigned(delay) / 1000u + 2u) << delay;
        EXPECT_EQ(0u, store.dropped()) << delay;
        // For each loss what was on its way comes again.
        lose();
    }
}

TEST_F(SlowWay, NothingIsSentTwice)
{
    connect();
    update('a', {good(0, 1, "1")});
    SlowWay::pass(10000, 1000);
    sent();
    for (const int delay : {750, 1000, 1250, 3000}) {
        SlowWay::pass(60000, delay);
        const QHash<QString, int> times = sent();
        EXPECT_GE(times.size(), 119) << delay;
        for (auto each = times.begin(); each != times.end(); ++each)
            ASSERT_EQ(1, each.value()) << delay << ": " << each.key().toStdString();
    }
}

TEST_F(SlowWay, DeviceThatIsAwayEndsWhenItsHistoryHasArrived)
{
    update('b', {good(0, 1, "1")});
    update('b', {stale(0, 2, "1")}, false);
    connect();
    SlowWay::pass(30000, 3000);
    const QStringList all = published();
    EXPECT_TRUE(all.contains(QStringLiteral("old b x=1@1 x=~1@2")));
    EXPECT_TRUE(all.contains(QStringLiteral("end b")));
}

/// A broker "b" that keeps messages on these topics.
class OldTopics : public TopicRecord {
public:
    QStringList topics(const QString& broker) const override
    {
        return broker == QLatin1String("b") ? known : QStringList();
    }
    void add(const QString&, const QStringList& topics) override { known += topics; }
    void remove(const QString&, const QStringList& topics) override
    {
        for (const QString& topic : topics)
            known.removeAll(topic);
    }

    QStringList known;
};

TEST_F(ForwarderTest, WhatTheBrokerKeepsOfFormerRunsIsRemovedBeforeTheSessionOpens)
{
    OldTopics record;
    record.known = QStringList{"gone", "here"};
    publisher.strangers = {QStringLiteral("gone")};
    Forwarder other(&publisher, &broker, &store, 1000, QStringLiteral("1"), &record);
    other.connected(now, now, QStringLiteral("b"));
    // A removal has no payload.
    EXPECT_EQ((QStringList{"", "open"}), published());
    EXPECT_EQ((QStringList{"gone", "here"}), record.known);
    other.confirmed(broker.marks.last());
    EXPECT_EQ(QStringList{"here"}, record.known);
    other.wantRebirth(now + 1000, now);
    EXPECT_EQ(QStringList{"open"}, published());
}

TEST_F(ForwarderTest, WhatTheBrokerKeepsIsRemovedWhenItHasNoDeviceAnyMore)
{
    OldTopics record;
    record.known = QStringList{"gone"};
    Forwarder other(&publisher, &broker, &store, 1000, QStringLiteral("1"), &record);
    other.connected(now, now, QStringLiteral("b"));
    EXPECT_EQ(QStringList{"open"}, published());
    publisher.strangers = {QStringLiteral("gone")};
    other.removeStrangers(now);
    EXPECT_EQ(QStringList{""}, published());
    other.tick(now, now);
    other.confirmed(broker.marks.last());
    EXPECT_EQ(QStringList(), record.known);
}

} // namespace
} // namespace plc::gateway
