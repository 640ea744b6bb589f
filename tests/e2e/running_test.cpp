// A host that keeps running: cyclic reads, writes among them, stations, outages, several clients.

#include <QtCore/QElapsedTimer>

#include <csignal>

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

// The filler makes one entry of 996 bytes of area 1, which leaves no room in its request: R.b is
// read by a request of its own and so can be switched off by its station.
constexpr char kRunningProject[] = R"({
  'name': 'Running',
  'settings': {'replyTimeout': 20000, 'reconnectDelay': 50, 'reconnectDelayLimit': 100,
               'staleAfter': 600, 'multiStation': true, 'maxReadBytes': 1000},
  'areas': [{'index': 1, 'size': 1000}, {'index': 2, 'size': 256}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0},
    {'name': 'b', 'type': 'INT', 'area': 2, 'offset': 100},
    {'name': 'command', 'type': 'INT', 'area': 1, 'offset': 200},
    {'name': 'filler', 'type': 'INT', 'area': 1, 'offset': 202, 'array': [[1, 397]]}]}],
  'cyclic': ['R.a', {'label': 'R.b', 'station': 7}, 'R.command',
             {'label': 'R.filler[1]', 'elements': 397}]
})";

QString value(const char* label, const char* text)
{
    return QStringLiteral("\"label\":\"%1\",\"type\":\"INT\",\"value\":%2,")
        .arg(QLatin1String(label), QLatin1String(text));
}

const QString kFresh = QStringLiteral("\"stale\":false");
const QString kStale = QStringLiteral("\"stale\":true");
const QString kUp = QStringLiteral("\"state\":\"up\"");
const QString kDown = QStringLiteral("\"state\":\"down\"");

class Running : public Plant {
protected:
    void startAll(const QStringList& options = {})
    {
        writeProject(kRunningProject);
        startSimulator();
        poke(1, 0, "0001");
        poke(2, 100, "0002");
        m_host = startHost(options);
    }
    std::unique_ptr<LineProcess> startHost(const QStringList& options = {})
    {
        return start("run", QStringList{QStringLiteral("--json"), QStringLiteral("--interval"),
                                        QStringLiteral("20"), QStringLiteral("--cycle"),
                                        QStringLiteral("20")} +
                                options);
    }
    LineProcess& host() { return *m_host; }
    ::testing::AssertionResult shows(const QStringList& parts)
    {
        if (!host().waitForLine(parts).isEmpty())
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
               << "no line with " << parts.join(' ').toStdString() << "\n"
               << host().errors().toStdString();
    }

private:
    std::unique_ptr<LineProcess> m_host;
};

TEST_F(Running, ShowsValuesAsTheyChangeInThePlc)
{
    startAll();
    ASSERT_TRUE(shows({value("R.a", "1"), kFresh}));
    poke(1, 0, "FFFF");
    ASSERT_TRUE(shows({value("R.a", "-1"), kFresh}));
}

TEST_F(Running, WritesAreSentWhileReadsRun)
{
    startAll();
    ASSERT_TRUE(shows({value("R.command", "0"), kFresh}));
    host().send(QStringLiteral("write R.command=258"));
    ASSERT_TRUE(shows({QStringLiteral("\"event\":\"write\""), QStringLiteral("R.command"),
                       QStringLiteral("\"outcome\":\"done\"")}));
    EXPECT_EQ("01 02", peek(1, 200, 2));
    ASSERT_TRUE(shows({value("R.command", "258"), kFresh}));
}

TEST_F(Running, EveryOfManyWritesToOnePlaceIsSettledInOrder)
{
    startAll();
    ASSERT_TRUE(shows({value("R.command", "0"), kFresh}));
    for (int i = 1; i <= 50; ++i)
        host().send(QStringLiteral("write R.command=%1").arg(i));
    for (int i = 1; i <= 50; ++i) {
        ASSERT_TRUE(shows({QStringLiteral("\"event\":\"write\""),
                           QStringLiteral("\"value\":%1,\"outcome\":\"done\"").arg(i)}));
    }
    EXPECT_EQ("00 32", peek(1, 200, 2));
}

TEST_F(Running, ValuesGoStaleWhileThePlcIsAwayAndFreshWhenItIsBack)
{
    startAll();
    ASSERT_TRUE(shows({value("R.b", "2"), kFresh}));
    EXPECT_EQ("", simulator().command(QStringLiteral("offline")));
    ASSERT_TRUE(shows({kDown}));
    ASSERT_TRUE(shows({value("R.b", "2"), kStale}));
    poke(2, 100, "0009");
    EXPECT_EQ("", simulator().command(QStringLiteral("online")));
    ASSERT_TRUE(shows({value("R.b", "9"), kFresh}));
}

TEST_F(Running, AWriteWhileThePlcIsAwayFailsAtOnceAndIsNotCarriedOutLater)
{
    startAll();
    ASSERT_TRUE(shows({value("R.command", "0"), kFresh}));
    EXPECT_EQ("", simulator().command(QStringLiteral("offline")));
    ASSERT_TRUE(shows({kDown}));
    host().send(QStringLiteral("write R.command=5"));
    ASSERT_TRUE(
        shows({QStringLiteral("\"event\":\"write\""), QStringLiteral("\"outcome\":\"unsent\"")}));
    poke(1, 0, "0008");
    EXPECT_EQ("", simulator().command(QStringLiteral("online")));
    ASSERT_TRUE(shows({value("R.a", "8"), kFresh}));
    EXPECT_EQ("00 00", peek(1, 200, 2));
}

TEST_F(Running, AWriteUnderWayWhenThePlcGoesAwayIsReportedAsNotKnown)
{
    // Nothing is read again: the write has not to wait for the reply to a read.
    startAll({QStringLiteral("--cycle"), QStringLiteral("3600000")});
    ASSERT_TRUE(shows({value("R.command", "0"), kFresh}));
    EXPECT_EQ("", simulator().command(QStringLiteral("delay 15000")));
    host().send(QStringLiteral("write R.command=5"));
    // The request has arrived when the memory has changed; its reply waits.
    QElapsedTimer patience;
    patience.start();
    while (peek(1, 200, 2) != "00 05" && patience.elapsed() < kPatience) {
    }
    EXPECT_EQ("", simulator().command(QStringLiteral("disconnect")));
    ASSERT_TRUE(
        shows({QStringLiteral("\"event\":\"write\""), QStringLiteral("\"outcome\":\"lost\"")}));
}

TEST_F(Running, ARefusedWriteIsReportedWithItsStatus)
{
    startAll();
    ASSERT_TRUE(shows({value("R.command", "0"), kFresh}));
    EXPECT_EQ("", simulator().command(QStringLiteral("fail-writes on")));
    host().send(QStringLiteral("write R.command=5"));
    ASSERT_TRUE(
        shows({QStringLiteral("\"event\":\"write\""), QStringLiteral("\"outcome\":\"refused\""),
               QStringLiteral("status 0x0040")}));
    EXPECT_EQ("00 00", peek(1, 200, 2));
    EXPECT_EQ("", simulator().command(QStringLiteral("fail-writes off")));
    host().send(QStringLiteral("write R.command=6"));
    ASSERT_TRUE(
        shows({QStringLiteral("\"event\":\"write\""), QStringLiteral("\"outcome\":\"done\"")}));
}

TEST_F(Running, AStationSwitchedOffGoesStaleAloneAndComesBack)
{
    startAll();
    ASSERT_TRUE(shows({value("R.b", "2"), kFresh}));
    host().send(QStringLiteral("station 7 off"));
    ASSERT_TRUE(shows({value("R.b", "2"), kStale}));
    poke(1, 0, "0003");
    poke(2, 100, "0004");
    ASSERT_TRUE(shows({value("R.a", "3"), kFresh}));
    host().send(QStringLiteral("station 7 on"));
    ASSERT_TRUE(shows({value("R.b", "4"), kFresh}));
}

TEST_F(Running, AStationThatIsOffFromTheStartIsNotRead)
{
    startAll({QStringLiteral("--station-off"), QStringLiteral("7")});
    ASSERT_TRUE(shows({QStringLiteral("R.b"), QStringLiteral("\"value\":null"), kStale}));
    host().send(QStringLiteral("station 7 on"));
    ASSERT_TRUE(shows({value("R.b", "2"), kFresh}));
}

TEST_F(Running, InterruptEndsCleanly)
{
    startAll();
    ASSERT_TRUE(shows({value("R.a", "1"), kFresh}));
    ASSERT_EQ(0, kill(pid_t(host().pid()), SIGINT));
    EXPECT_EQ(0, host().exitCode());
    EXPECT_TRUE(host().restOfOutput().join(' ').contains(QStringLiteral("\"event\":\"end\"")));
}

TEST_F(Running, TerminationEndsCleanlyAlsoWhileThePlcIsAway)
{
    startAll();
    EXPECT_EQ("", simulator().command(QStringLiteral("offline")));
    ASSERT_TRUE(shows({kDown}));
    ASSERT_EQ(0, kill(pid_t(host().pid()), SIGTERM));
    EXPECT_EQ(0, host().exitCode());
}

TEST_F(Running, SeveralHostsSeeEachOthersWrites)
{
    startAll();
    ASSERT_TRUE(shows({value("R.command", "0"), kFresh}));
    const std::unique_ptr<LineProcess> other = startHost();
    ASSERT_FALSE(other->waitForLine({value("R.command", "0")}).isEmpty());
    other->send(QStringLiteral("write R.command=77"));
    ASSERT_TRUE(shows({value("R.command", "77"), kFresh}));
    host().send(QStringLiteral("write R.command=78"));
    EXPECT_FALSE(other->waitForLine({value("R.command", "78")}).isEmpty());
}

TEST_F(Running, TwoThousandScatteredLabelsAreAllReadRight)
{
    // An INT every 16 bytes.
    constexpr int kLabels = 2000;
    QByteArray variables, cyclic;
    for (int i = 0; i < kLabels; ++i) {
        const QByteArray separator = i > 0 ? "," : "";
        variables += separator + "{'name':'v" + QByteArray::number(i) +
                     "','type':'INT','area':1,'offset':" + QByteArray::number(16 * i) +
                     ",'signal':{'kind':'constant','value':" + QByteArray::number(i) + "}}";
        cyclic += separator + "'R.v" + QByteArray::number(i) + "'";
    }
    writeProject(
        "{'name':'Many','areas':[{'index':1,'size':32000}],'scopes':[{'name':'R',"
        "'variables':[" +
        variables + "]}],'cyclic':[" + cyclic + "]}");
    startSimulator();
    // On a busy machine the next pass would be due before the first one is shown.
    const Outcome outcome = run("run", {QStringLiteral("--once"), QStringLiteral("--json"),
                                        QStringLiteral("--cycle"), QStringLiteral("3600000")});
    ASSERT_EQ(0, outcome.exitCode) << outcome.errors.toStdString();
    int right = 0;
    for (const QString& line : outcome.lines) {
        const QJsonObject object = parseJson(line);
        const QString expected =
            QStringLiteral("R.v%1").arg(object.value(QLatin1String("value")).toInt(-1));
        right += object.value(QLatin1String("label")).toString() == expected ? 1 : 0;
    }
    EXPECT_EQ(kLabels, right);
    // Joined over the gaps of 14 bytes, 13 variables would make an entry of 194 bytes, five of
    // which fit into a request: 67 variables at most with a last short entry, so 30 requests. An
    // entry for each variable takes 99 to a request, and so 2000 / 99 = 20.2.
    EXPECT_EQ(21, status("requests") - 2) << "without the two of the login";
}

} // namespace
} // namespace plc::test
