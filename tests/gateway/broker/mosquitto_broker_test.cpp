#include "gateway/broker/mosquitto_broker.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QThread>
#include <QtNetwork/QTcpServer>

#include <functional>
#include <memory>

#include "gateway/broker/mosquitto_connection.h"
#include "tests/gateway/support/mosquitto_process.h"

namespace plc::gateway {
namespace {

constexpr int kPatience = 30000; // ms

/// Writes down what a connection tells.
class Diary : public BrokerListener {
public:
    void brokerConnected() override { ++connections; }
    void brokerLost(const QString& reason) override { losses.append(reason); }
    void messageArrived(const Message& message) override { messages.append(message); }
    void messagesDropped(quint64 count) override { dropped += count; }
    void confirmed(quint64 mark) override { marks.append(mark); }

    int connections = 0;
    QStringList losses;
    QVector<Message> messages;
    quint64 dropped = 0;
    QVector<quint64> marks;
};

bool waitUntil(const std::function<bool()>& isSo)
{
    QElapsedTimer clock;
    clock.start();
    while (!isSo()) {
        if (clock.hasExpired(kPatience))
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    }
    return true;
}

class MosquittoBrokerTest : public testing::TestWithParam<bool> {
protected:
    void SetUp() override { ASSERT_TRUE(m_process.start()); }

    BrokerSettings settings() const
    {
        BrokerSettings result;
        result.host = QStringLiteral("127.0.0.1");
        result.port = m_process.port();
        result.isVersion5 = GetParam();
        return result;
    }
    void watch(const QString& topic)
    {
        m_watcher.open(settings(), {}, {{topic, 1}});
        ASSERT_TRUE(waitUntil([this] { return m_watched.connections == 1; }));
    }
    void connect(const std::optional<Message>& will = {})
    {
        m_broker.open(settings(), will, {});
        ASSERT_TRUE(waitUntil([this] { return m_diary.connections == 1; }));
    }

    int m_count = 0;
    char m_name[5] = "test";
    char* m_arguments[1] = {m_name};
    QCoreApplication m_application{m_count, m_arguments};
    // It drops nothing itself, however late a client reads.
    test::MosquittoProcess m_process{"allow_anonymous true\nmax_queued_messages 0\n"};
    Diary m_diary;
    Diary m_watched;
    MosquittoBroker m_broker{QStringLiteral("one"), 10, &m_diary};
    MosquittoBroker m_watcher{QStringLiteral("two"), 10, &m_watched};
};

TEST_P(MosquittoBrokerTest, MessagesArriveInOrderAndAreConfirmed)
{
    watch(QStringLiteral("values/#"));
    connect();
    for (const int qos : {0, 1}) {
        m_watched.messages.clear();
        for (int i = 0; i < 200; ++i)
            m_broker.publish({QStringLiteral("values/a"), QByteArray::number(i), qos, false});
        m_broker.askConfirmation(quint64(7 + qos));
        ASSERT_TRUE(waitUntil([&] { return m_diary.marks.size() == 1 + qos; }));
        EXPECT_EQ(quint64(7 + qos), m_diary.marks[qos]);
        ASSERT_TRUE(waitUntil([this] { return m_watched.messages.size() == 200; }));
        for (int i = 0; i < 200; ++i)
            ASSERT_EQ(QByteArray::number(i), m_watched.messages[i].payload);
    }
}

TEST_P(MosquittoBrokerTest, CloseSendsWhatWasPublishedAndWithVersion5TheWillBehindIt)
{
    watch(QStringLiteral("#"));
    connect(Message{QStringLiteral("will"), "gone", 1, false});
    m_broker.publish({QStringLiteral("last"), "words", 0, false});
    m_broker.close();
    ASSERT_TRUE(waitUntil([this] { return m_diary.losses.size() == 1; }));
    EXPECT_EQ("closed", m_diary.losses[0]);
    const int expected = GetParam() ? 2 : 1;
    ASSERT_TRUE(waitUntil([&] { return m_watched.messages.size() == expected; }));
    EXPECT_EQ("last", m_watched.messages[0].topic);
    if (GetParam()) {
        EXPECT_EQ("will", m_watched.messages[1].topic);
    }
    // Nothing comes behind it: what another publishes is next.
    m_watcher.publish({QStringLiteral("next"), "words", 0, false});
    ASSERT_TRUE(waitUntil([&] { return m_watched.messages.size() == expected + 1; }));
    EXPECT_EQ("next", m_watched.messages.last().topic);
}

TEST_P(MosquittoBrokerTest, CloseWaitsUntilTheBrokerHasTakenEverything)
{
    constexpr int kMessages = 200;
    watch(QStringLiteral("#"));
    connect(Message{QStringLiteral("will"), "gone", 1, false});
    for (int i = 0; i < kMessages; ++i)
        m_broker.publish({QStringLiteral("last"), QByteArray::number(i), 1, true});
    m_broker.close();
    ASSERT_TRUE(waitUntil([this] { return m_diary.losses.size() == 1; }));
    EXPECT_EQ("closed", m_diary.losses[0]);
    // The broker tells what it took in its order, so the next message of another is behind it.
    m_watcher.publish({QStringLiteral("next"), "words", 1, false});
    ASSERT_TRUE(waitUntil([this] {
        return !m_watched.messages.isEmpty() && m_watched.messages.last().topic == "next";
    }));
    ASSERT_EQ(kMessages + (GetParam() ? 2 : 1), m_watched.messages.size());
    for (int i = 0; i < kMessages; ++i)
        ASSERT_EQ(QByteArray::number(i), m_watched.messages[i].payload);
}

TEST_P(MosquittoBrokerTest, MoreMessagesThanPacketNumbersAreConfirmed)
{
    constexpr int kMessages = 70000; // A packet has a number of 16 bits.
    connect();
    for (int i = 0; i < kMessages; ++i)
        m_broker.publish({QStringLiteral("values/a"), "1", 1, false});
    m_broker.askConfirmation(1);
    ASSERT_TRUE(waitUntil([this] { return !m_diary.marks.isEmpty(); }));
    EXPECT_TRUE(m_diary.losses.isEmpty());
}

TEST_P(MosquittoBrokerTest, MessagesKeepTheirOrderBeyondWhatIsInFlight)
{
    constexpr int kMessages = 5000;
    // At QoS 0 the broker tells them as they come.
    m_watcher.open(settings(), {}, {{QStringLiteral("values/#"), 0}});
    ASSERT_TRUE(waitUntil([this] { return m_watched.connections == 1; }));
    connect();
    for (int i = 0; i < kMessages; ++i)
        m_broker.publish({QStringLiteral("values/a"), QByteArray::number(i), 1, false});
    m_broker.askConfirmation(1);
    ASSERT_TRUE(waitUntil([this] { return m_diary.marks.size() == 1; }));
    m_broker.publish({QStringLiteral("values/b"), "last", 0, false});
    ASSERT_TRUE(waitUntil([this] {
        return !m_watched.messages.isEmpty() && m_watched.messages.last().payload == "last";
    }));
    // Some may be missing at a watcher that does not keep up, but none overtakes another.
    int before = -1;
    for (int i = 0; i + 1 < int(m_watched.messages.size()); ++i) {
        const int number = m_watched.messages[i].payload.toInt();
        ASSERT_LT(before, number);
        before = number;
    }
}

TEST_P(MosquittoBrokerTest, NothingIsKeptForAGatewayThatIsNotThere)
{
    watch(QStringLiteral("none"));
    const QVector<Subscription> commands{{QStringLiteral("commands"), 1}};
    m_broker.open(settings(), {}, commands);
    ASSERT_TRUE(waitUntil([this] { return m_diary.connections == 1; }));
    m_broker.drop(QStringLiteral("on purpose"));
    ASSERT_TRUE(waitUntil([this] { return m_diary.losses.size() == 1; }));
    m_watcher.publish({QStringLiteral("commands"), "old", 1, false});
    m_watcher.askConfirmation(1);
    ASSERT_TRUE(waitUntil([this] { return m_watched.marks.size() == 1; }));
    m_broker.open(settings(), {}, commands);
    ASSERT_TRUE(waitUntil([this] { return m_diary.connections == 2; }));
    m_watcher.publish({QStringLiteral("commands"), "new", 1, false});
    ASSERT_TRUE(waitUntil([this] { return !m_diary.messages.isEmpty(); }));
    EXPECT_EQ("new", m_diary.messages[0].payload);
}

TEST_P(MosquittoBrokerTest, DropLeavesTheWillToTheBroker)
{
    watch(QStringLiteral("#"));
    connect(Message{QStringLiteral("will"), "gone", 1, false});
    m_broker.drop(QStringLiteral("on purpose"));
    // The broker tells the one, the connection's own thread the other: either may come first.
    ASSERT_TRUE(
        waitUntil([this] { return m_watched.messages.size() == 1 && m_diary.losses.size() == 1; }));
    EXPECT_EQ("will", m_watched.messages[0].topic);
    EXPECT_EQ("gone", m_watched.messages[0].payload);
    EXPECT_EQ(QStringList{QStringLiteral("on purpose")}, m_diary.losses);
}

TEST_P(MosquittoBrokerTest, BrokerThatDiesIsLostAndWhatFollowsIsNotConfirmed)
{
    connect();
    m_process.kill();
    m_broker.publish({QStringLiteral("values/a"), "1", 0, false});
    m_broker.askConfirmation(1);
    ASSERT_TRUE(waitUntil([this] { return m_diary.losses.size() == 1; }));
    EXPECT_TRUE(m_diary.marks.isEmpty());
}

TEST_P(MosquittoBrokerTest, BrokerThatIsNotThereIsToldWithItsReason)
{
    m_process.kill();
    m_broker.open(settings(), {}, {});
    ASSERT_TRUE(waitUntil([this] { return m_diary.losses.size() == 1; }));
    EXPECT_EQ("Connection refused", m_diary.losses[0]);
    EXPECT_EQ(0, m_diary.connections);
}

TEST_P(MosquittoBrokerTest, BrokerThatSaysNothingIsToldToBeSilent)
{
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    BrokerSettings nobody = settings();
    nobody.port = silent.serverPort();
    // Shorter than the time in which a connection is to be made.
    MosquittoBroker broker(QStringLiteral("four"), 5, &m_diary);
    broker.open(nobody, {}, {});
    ASSERT_TRUE(waitUntil([this] { return m_diary.losses.size() == 1; }));
    EXPECT_EQ("the broker has fallen silent", m_diary.losses[0]);
}

TEST_P(MosquittoBrokerTest, ConnectionsFollowEachOther)
{
    for (int i = 1; i <= 3; ++i) {
        m_broker.open(settings(), {}, {{QStringLiteral("a"), 1}});
        ASSERT_TRUE(waitUntil([&] { return m_diary.connections == i; }));
        m_broker.close();
        ASSERT_TRUE(waitUntil([&] { return m_diary.losses.size() == i; }));
    }
}

TEST_P(MosquittoBrokerTest, ManyMessagesAreCountedBeyondTheLimit)
{
    constexpr int kMostWaiting = 1000;
    const auto slow = std::make_shared<MosquittoConnection>(
        QStringLiteral("slow"), 10, settings(), std::nullopt,
        QVector<Subscription>{{QStringLiteral("flood"), 1}}, [] {});
    slow->start();
    connect();
    int arrived = 0;
    quint64 dropped = 0;
    const auto take = [&] {
        int count = 0;
        bool isConnected = false;
        for (const BrokerEvent& event : slow->takeEvents()) {
            isConnected = isConnected || event.kind == BrokerEvent::Connected;
            count += event.kind == BrokerEvent::Arrived ? 1 : 0;
            dropped += event.kind == BrokerEvent::Dropped ? event.number : 0;
        }
        EXPECT_LE(count, kMostWaiting);
        arrived += count;
        return isConnected;
    };
    ASSERT_TRUE(waitUntil(take));
    quint64 sent = 0;
    // What comes while nobody takes it: as often as it needs to be more than may wait.
    ASSERT_TRUE(waitUntil([&] {
        for (int i = 0; i < 3 * kMostWaiting; ++i, ++sent)
            m_broker.publish({QStringLiteral("flood"), "x", 0, false});
        QThread::msleep(100);
        const int before = arrived;
        take();
        return dropped > 0 && arrived - before == kMostWaiting;
    }));
    ASSERT_TRUE(waitUntil([&] {
        take();
        return quint64(arrived) + dropped == sent;
    }));
}

TEST_P(MosquittoBrokerTest, VitalMessageArrivesInAFloodOfOthers)
{
    constexpr int kMostWaiting = 1000;
    constexpr int kMostRounds = 20;
    const auto slow = std::make_shared<MosquittoConnection>(
        QStringLiteral("slow"), 10, settings(), std::nullopt,
        QVector<Subscription>{{QStringLiteral("flood"), 0},
                              {QStringLiteral("v1.0/state"), 1, true}},
        [] {});
    slow->start();
    connect();
    std::deque<BrokerEvent> events;
    ASSERT_TRUE(waitUntil([&] {
        events = slow->takeEvents();
        return !events.empty();
    }));
    ASSERT_EQ(BrokerEvent::Connected, events.front().kind);
    quint64 dropped = 0;
    // Again, where it was taken before more had come than may wait.
    for (int round = 1; round <= kMostRounds && dropped == 0; ++round) {
        const QByteArray state = QByteArray::number(round);
        for (int i = 0; i < 3 * kMostWaiting; ++i)
            m_broker.publish({QStringLiteral("flood"), "x", 0, false});
        m_broker.publish({QStringLiteral("v1.0/state"), state, 1, true});
        m_broker.askConfirmation(quint64(round));
        ASSERT_TRUE(waitUntil([&] { return m_diary.marks.size() == round; }));
        // What is taken only now has it behind what there was room for.
        QThread::msleep(500);
        bool isThere = false;
        ASSERT_TRUE(waitUntil([&] {
            for (const BrokerEvent& event : slow->takeEvents()) {
                isThere = isThere || event.message.payload == state;
                dropped += event.kind == BrokerEvent::Dropped ? event.number : 0;
            }
            return isThere;
        }));
    }
    EXPECT_GT(dropped, 0u);
}

TEST_P(MosquittoBrokerTest, FloodOfVitalMessagesEndsTheConnection)
{
    const auto slow = std::make_shared<MosquittoConnection>(
        QStringLiteral("slow"), 10, settings(), std::nullopt,
        QVector<Subscription>{{QStringLiteral("state"), 1, true}}, [] {});
    slow->start();
    connect();
    ASSERT_TRUE(waitUntil([&] { return !slow->takeEvents().empty(); }));
    for (int i = 0; i < 101; ++i)
        m_broker.publish({QStringLiteral("state"), "x", 1, false});
    ASSERT_TRUE(slow->waitForEnd(kPatience));
    const std::deque<BrokerEvent> events = slow->takeEvents();
    ASSERT_EQ(101u, events.size());
    EXPECT_EQ("more came on state than can be taken", events.back().reason);
}

/// Begins another connection as soon as one has messages.
class Jumper : public Diary {
public:
    void messageArrived(const Message& message) override
    {
        Diary::messageArrived(message);
        if (messages.size() == 1)
            begin();
    }
    std::function<void()> begin;
};

TEST_P(MosquittoBrokerTest, NothingOfAConnectionIsToldWhenTheNextHasBegun)
{
    Jumper jumper;
    MosquittoBroker broker(QStringLiteral("five"), 10, &jumper);
    jumper.begin = [&] {
        broker.drop(QStringLiteral("on purpose"));
        broker.open(settings(), {}, {});
    };
    broker.open(settings(), {}, {{QStringLiteral("a"), 1}});
    ASSERT_TRUE(waitUntil([&] { return jumper.connections == 1; }));
    connect();
    m_broker.publish({QStringLiteral("a"), "1", 1, false});
    m_broker.publish({QStringLiteral("a"), "2", 1, false});
    m_broker.askConfirmation(1);
    // Both are there when they are taken.
    QThread::msleep(500);
    ASSERT_TRUE(waitUntil([&] { return jumper.connections == 2; }));
    EXPECT_EQ(1, jumper.messages.size());
}

TEST_P(MosquittoBrokerTest, EndWhileConnectedIsHarmless)
{
    MosquittoBroker broker(QStringLiteral("three"), 10, &m_diary);
    broker.open(settings(), {}, {});
    broker.waitForEnd(1);
}

INSTANTIATE_TEST_SUITE_P(Versions, MosquittoBrokerTest, testing::Bool(),
                         [](const auto& version) { return version.param ? "Mqtt5" : "Mqtt311"; });

} // namespace
} // namespace plc::gateway
