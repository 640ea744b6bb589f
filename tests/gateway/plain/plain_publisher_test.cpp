#include "gateway/plain/plain_fixture.h"

namespace plc::gateway {
namespace {

const NodeState kState{QStringLiteral("1.0"), 0, 0};

const QString kOnline =
    QStringLiteral(" {\"online\":true,\"time\":\"1970-01-01T00:00:00.000Z\"} retained");
const QString kOffline =
    QStringLiteral(" {\"online\":false,\"time\":\"1970-01-01T00:00:00.000Z\"} retained");
const QString kNodeOnline = QStringLiteral(
    "works/hall/state {\"online\":true,\"version\":\"1.0\",\"stored\":0,\"dropped\":0,"
    "\"time\":\"1970-01-01T00:00:00.000Z\"} retained");

QString valueLine(const char* path, const char* value, const char* more = "")
{
    return QStringLiteral(
               "works/hall/%1 {\"value\":%2,\"time\":\"1970-01-01T00:00:00.000Z\","
               "\"quality\":\"good\"%3}")
        .arg(QString::fromLatin1(path), QString::fromLatin1(value), QString::fromLatin1(more));
}

using PlainSession = PlainFixture;

TEST_F(PlainSession, LeavesAWillThatTheBrokerKeeps)
{
    const std::optional<Message> will = m_publisher.nextWill(5);
    ASSERT_TRUE(will);
    EXPECT_EQ("works/hall/state {\"online\":false} retained", line(*will));
}

TEST_F(PlainSession, OpensWithAllDevicesOffline)
{
    m_publisher.nextWill(0);
    EXPECT_FALSE(m_publisher.mayPublish());
    m_publisher.connected();
    EXPECT_TRUE(m_publisher.mayPublish());
    EXPECT_FALSE(m_publisher.isToLeave());
    EXPECT_EQ((QStringList{QStringLiteral("works/hall/pump/state") + kOffline,
                           QStringLiteral("works/hall/oven/state") + kOffline, kNodeOnline}),
              lines(m_publisher.opening(kState, 0)));
}

TEST_F(PlainSession, TellsValuesBeforeTheDeviceIsOnline)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    m_publisher.opening(kState, 0);
    EXPECT_EQ((QStringList{valueLine("pump/P/speed", "5"), valueLine("pump/P/set", "6"),
                           QStringLiteral("works/hall/pump/state") + kOnline}),
              lines(m_publisher.deviceBegins(1, {good(0, "0500"), good(1, "0600")}, 0)));
}

TEST_F(PlainSession, TellsChangesAndHistory)
{
    begin();
    EXPECT_EQ(QStringList{valueLine("pump/P/speed", "-1")},
              lines(m_publisher.changes(1, {good(0, "FFFF")}, 0)));
    EXPECT_EQ((QStringList{valueLine("pump/P/speed", "1", ",\"historical\":true"),
                           valueLine("pump/P/speed", "2", ",\"historical\":true")}),
              lines(m_publisher.history(1, {good(0, "0100"), good(0, "0200")}, 0)));
}

TEST_F(PlainSession, TellsNothingOfDevicesThatHaveNotBegun)
{
    EXPECT_TRUE(m_publisher.deviceBegins(1, {good(0, "0500")}, 0).isEmpty());
    begin();
    EXPECT_TRUE(m_publisher.changes(2, {good(0, "01")}, 0).isEmpty());
    EXPECT_TRUE(m_publisher.history(2, {good(0, "01")}, 0).isEmpty());
    EXPECT_TRUE(m_publisher.changes(9, {good(0, "01")}, 0).isEmpty());
    EXPECT_TRUE(m_publisher.changes(1, {good(2, "01"), good(-1, "01")}, 0).isEmpty());
    EXPECT_TRUE(m_publisher.deviceEnds(2, 0).isEmpty());
}

TEST_F(PlainSession, EndsDevicesOnceAndAtTheClosing)
{
    begin();
    m_publisher.deviceBegins(2, {good(0, "01")}, 0);
    EXPECT_EQ(QStringList{QStringLiteral("works/hall/pump/state") + kOffline},
              lines(m_publisher.deviceEnds(1, 0)));
    EXPECT_TRUE(m_publisher.deviceEnds(1, 0).isEmpty());
    EXPECT_EQ((QStringList{QStringLiteral("works/hall/oven/state") + kOffline,
                           QStringLiteral("works/hall/state") + kOffline}),
              lines(m_publisher.closing(0)));
    EXPECT_TRUE(m_publisher.changes(2, {good(0, "01")}, 0).isEmpty());
}

TEST_F(PlainSession, ClosesNothingWithoutAConnection)
{
    m_publisher.nextWill(0);
    EXPECT_TRUE(m_publisher.closing(0).isEmpty());
}

TEST_F(PlainSession, TellsTheNodeWhenItDiffers)
{
    begin();
    EXPECT_TRUE(m_publisher.nodeChanges(kState, 0).isEmpty());
    EXPECT_EQ(QStringList{QStringLiteral(
                  "works/hall/state {\"online\":true,\"version\":\"1.0\",\"stored\":7,"
                  "\"dropped\":0,\"time\":\"1970-01-01T00:00:00.000Z\"} retained")},
              lines(m_publisher.nodeChanges(NodeState{QStringLiteral("1.0"), 7, 0}, 0)));
}

TEST_F(PlainSession, EscapesNamesInTopics)
{
    m_publisher.addDevice(3, device("A+", {metric("P/50%", "BOOL")}));
    begin();
    EXPECT_EQ((QStringList{valueLine("A%2B/P/50%25", "true"),
                           QStringLiteral("works/hall/A%2B/state") + kOnline}),
              lines(m_publisher.deviceBegins(3, {good(0, "01")}, 0)));
}

TEST_F(PlainSession, HasTheBrokerKeepStatesOfItsDevicesOnly)
{
    EXPECT_TRUE(m_publisher.isKept(QStringLiteral("works/hall/state")));
    EXPECT_TRUE(m_publisher.isKept(QStringLiteral("works/hall/pump/state")));
    // Values are kept when they are to be retained.
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/pump/P/speed")));
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/press/state")));
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/attic/state")));
    m_publisher.removeDevice(1);
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/pump/state")));
    m_publisher.addDevice(4, device("A+", {}));
    EXPECT_TRUE(m_publisher.isKept(QStringLiteral("works/hall/A%2B/state")));
}

class RetainedValues : public PlainFixture {
protected:
    RetainedValues() : PlainFixture(true) {}
};

TEST_F(RetainedValues, AreTheLiveOnesOnly)
{
    begin();
    EXPECT_EQ(QStringList{valueLine("pump/P/speed", "-1") + QStringLiteral(" retained")},
              lines(m_publisher.changes(1, {good(0, "FFFF")}, 0)));
    EXPECT_EQ(QStringList{valueLine("pump/P/speed", "1", ",\"historical\":true")},
              lines(m_publisher.history(1, {good(0, "0100")}, 0)));
}

TEST_F(RetainedValues, AreKeptWhileTheirDeviceHasThem)
{
    EXPECT_TRUE(m_publisher.isKept(QStringLiteral("works/hall/pump/P/speed")));
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/pump/P/pressure")));
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/oven/P/speed")));
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/pump/P/speed/outcome")));
    m_publisher.removeDevice(1);
    m_publisher.addDevice(3, device("pump", {metric("P/set", "INT")}));
    EXPECT_FALSE(m_publisher.isKept(QStringLiteral("works/hall/pump/P/speed")));
    EXPECT_TRUE(m_publisher.isKept(QStringLiteral("works/hall/pump/P/set")));
}

} // namespace
} // namespace plc::gateway
