// What plc --capture keeps of a session, as Wireshark shows it.

#include <gmock/gmock.h>

#include <QtCore/QFileInfo>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <sys/socket.h>

#include "tests/e2e/plant.h"
#include "tests/wireshark/dissection.h"

namespace plc::test {
namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kProject[] = R"({
  'name': 'Captured',
  'settings': {'replyTimeout': 20000, 'reconnectDelay': 20, 'reconnectDelayLimit': 20},
  'areas': [{'index': 3, 'size': 64}],
  'scopes': [{'name': 'MAIN', 'variables': [
    {'name': 'speed', 'type': 'INT', 'area': 3, 'offset': 10}]}],
  'cyclic': ['MAIN.speed']
})";

const QString kSpeed = QStringLiteral("MAIN.speed");
const QStringList kTwoPasses = {QStringLiteral("-2")};
/// The ports are the system's choice, and may be those by which another protocol is known.
const QStringList kAnyPort = {QStringLiteral("-o"), QStringLiteral("tcp.try_heuristic_first:TRUE")};
const QStringList kCheckedSums = {QStringLiteral("-o"), QStringLiteral("ip.check_checksum:TRUE"),
                                  QStringLiteral("-o"), QStringLiteral("tcp.check_checksum:TRUE")};

// Wireshark's tcp.completeness: SYN 1, SYN-ACK 2, ACK 4, data 8, FIN 16, RST 32.
constexpr char kClosed[] = "31";
constexpr char kReset[] = "47";

class Capture : public Plant {
protected:
    Capture() { writeProject(kProject); }

    QString file() const { return m_folder.filePath(QStringLiteral("session.pcapng")); }
    QStringList captured(const QStringList& arguments) const
    {
        return QStringList{QStringLiteral("--capture"), file()} + arguments;
    }
    std::vector<Row> rows(std::initializer_list<const char*> fields,
                          const QStringList& options = {}) const
    {
        return dissectedFields(file(), fields, kAnyPort + options);
    }
    /// The completeness of each connection, in their order.
    std::vector<Row> connections() const
    {
        return rows({"tcp.completeness"},
                    kTwoPasses + filter("tcp.flags.syn == 1 && tcp.flags.ack == 0"));
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(Capture, HoldsEveryFrameOfARead)
{
    startSimulator();
    poke(3, 10, "04D2");
    const Outcome outcome = run("read", captured({kSpeed}));
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_THAT(rows({"codesys_block.reply", "codesys_block.service", "codesys_block.status",
                      "codesys_block.entry.area", "codesys_block.entry.address",
                      "codesys_block.entry.length", "codesys_block.entry.value"}),
                ElementsAre(Row{"0", "0x01", "", "", "", "", ""},
                            Row{"1", "0x01", "0x0000", "", "", "", ""},
                            Row{"0", "0x31", "", "", "", "", ""},
                            Row{"1", "0x31", "0x0000", "", "", "", ""},
                            Row{"0", "0x2e", "", "3", "10", "2", ""},
                            Row{"1", "0x2e", "0x0000", "3", "10", "2", "04d2"}));
    EXPECT_THAT(rows({"frame.number"}, kTwoPasses + filter("codesys_block && _ws.expert")),
                IsEmpty());
}

TEST_F(Capture, HoldsAWriteWithItsValue)
{
    startSimulator();
    const Outcome outcome = run("write", captured({kSpeed + QStringLiteral("=1200")}));
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_THAT(
        rows({"codesys_block.reply", "codesys_block.entry.area", "codesys_block.entry.address",
              "codesys_block.entry.value", "codesys_block.status"},
             filter("codesys_block.service == 0x3c")),
        ElementsAre(Row{"0", "3", "10", "04b0", ""}, Row{"1", "", "", "", "0x0000"}));
}

TEST_F(Capture, IsAWholeConnectionWithItsRealAddresses)
{
    startSimulator();
    ASSERT_EQ(0, run("read", captured({kSpeed})).exitCode);
    EXPECT_THAT(connections(), ElementsAre(Row{kClosed}));
    EXPECT_THAT(rows({"frame.number", "_ws.expert.message"}, filter("tcp.analysis.flags")),
                IsEmpty());
    EXPECT_THAT(rows({"ip.checksum.status", "tcp.checksum.status"}, kCheckedSums + filter("tcp")),
                Each(Row{"1", "1"}));
    EXPECT_THAT(
        rows({"ip.src", "ip.dst", "tcp.dstport"}, filter("frame.number == 1")),
        ElementsAre(Row{"127.0.0.1", "127.0.0.1", arguments("read", {}).last().toStdString()}));
    const std::vector<Row> ports = rows({"tcp.srcport"}, filter("frame.number == 1"));
    ASSERT_THAT(ports, SizeIs(1));
    EXPECT_THAT(std::stoi(ports[0][0]), Ge(1024));
}

TEST_F(Capture, NamesTheProgram)
{
    startSimulator();
    ASSERT_EQ(0, run("read", captured({kSpeed})).exitCode);
    QFile capture(file());
    ASSERT_TRUE(capture.open(QIODevice::ReadOnly));
    EXPECT_TRUE(capture.readAll().contains("plc 1."));
}

TEST_F(Capture, HoldsBothConnectionsWhenThePlcWasAwayInBetween)
{
    startSimulator();
    // The long cycle leaves the host idle when it is told to quit: a connection that ends while a
    // reply is on its way is reset.
    const std::unique_ptr<LineProcess> host = start(
        "run", captured({QStringLiteral("--json"), QStringLiteral("--interval"),
                         QStringLiteral("20"), QStringLiteral("--cycle"), QStringLiteral("5000")}));
    ASSERT_FALSE(host->waitForLine({QStringLiteral("\"value\":0,")}).isEmpty());
    EXPECT_EQ("", simulator().command(QStringLiteral("offline")));
    ASSERT_FALSE(host->waitForLine({QStringLiteral("\"state\":\"down\"")}).isEmpty());
    poke(3, 10, "0009");
    EXPECT_EQ("", simulator().command(QStringLiteral("online")));
    ASSERT_FALSE(host->waitForLine({QStringLiteral("\"value\":9,")}).isEmpty());
    host->send(QStringLiteral("quit"));
    EXPECT_EQ(0, host->exitCode());
    EXPECT_THAT(connections(), ElementsAre(AnyOf(Row{kClosed}, Row{kReset}), Row{kClosed}));
    // Each logged in by itself.
    EXPECT_THAT(rows({"tcp.stream"}, filter("codesys_block.service == 0x01 && "
                                            "codesys_block.reply == 0")),
                ElementsAre(Row{"0"}, Row{"1"}));
    EXPECT_THAT(rows({"frame.number"}, filter("tcp.stream == 0 && codesys_block.entry.value == "
                                              "00:09")),
                IsEmpty());
    EXPECT_THAT(rows({"frame.number"}, filter("tcp.stream == 1 && codesys_block.entry.value == "
                                              "00:09")),
                SizeIs(Ge(1u)));
}

TEST_F(Capture, IsReadableWhenTheHostIsKilled)
{
    startSimulator();
    {
        // The end of this block kills it.
        const std::unique_ptr<LineProcess> host =
            start("run", captured({QStringLiteral("--json"), QStringLiteral("--interval"),
                                   QStringLiteral("20")}));
        ASSERT_FALSE(host->waitForLine({QStringLiteral("\"value\":0,")}).isEmpty());
    }
    const std::vector<Row> values =
        rows({"codesys_block.entry.value"}, filter("codesys_block.entry.value"));
    EXPECT_THAT(values, SizeIs(Ge(1u)));
    EXPECT_THAT(values, Each(Row{"0000"}));
    EXPECT_THAT(connections(), ElementsAre(Row{"15"})); // without an end
}

/// A PLC that answers the first request in a way of its own.
class PeerOfOneConnection {
public:
    PeerOfOneConnection() { m_server.listen(QHostAddress::LocalHost); }
    quint16 port() const { return m_server.serverPort(); }
    /// Waits for the first request.
    QTcpSocket* client()
    {
        m_server.waitForNewConnection(kPatience);
        QTcpSocket* const socket = m_server.nextPendingConnection();
        if (socket)
            socket->waitForReadyRead(kPatience);
        return socket;
    }

private:
    QTcpServer m_server;
};

TEST_F(Capture, ShowsThatThePlcClosedFirst)
{
    PeerOfOneConnection plc;
    usePort(plc.port());
    const std::unique_ptr<LineProcess> host = start("read", captured({kSpeed}));
    QTcpSocket* const client = plc.client();
    ASSERT_NE(nullptr, client);
    client->readAll();
    client->close();
    EXPECT_EQ(1, host->exitCode());
    EXPECT_THAT(connections(), ElementsAre(Row{kClosed}));
    EXPECT_THAT(rows({"tcp.srcport"}, filter("tcp.flags.fin == 1")),
                ElementsAre(Row{std::to_string(plc.port())}, ::testing::_));
}

TEST_F(Capture, ShowsThatThePlcBrokeTheConnectionOff)
{
    PeerOfOneConnection plc;
    usePort(plc.port());
    const std::unique_ptr<LineProcess> host = start("read", captured({kSpeed}));
    QTcpSocket* const client = plc.client();
    ASSERT_NE(nullptr, client);
    const linger atOnce = {1, 0};
    ::setsockopt(int(client->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    client->abort();
    EXPECT_EQ(1, host->exitCode());
    EXPECT_THAT(connections(), ElementsAre(Row{kReset}));
    EXPECT_THAT(rows({"tcp.srcport"}, filter("tcp.flags.reset == 1")),
                ElementsAre(Row{std::to_string(plc.port())}));
}

TEST_F(Capture, ThatCannotBeWrittenEndsBeforeTheLinkIsUsed)
{
    startSimulator();
    for (const QString& path : {QStringLiteral("/nowhere/session.pcapng"),
                                QStringLiteral("/dev/full"), QStringLiteral("/")}) {
        const Outcome outcome = run("read", {kSpeed, QStringLiteral("--capture"), path});
        EXPECT_EQ(path == QLatin1String("/dev/full") ? 1 : 2, outcome.exitCode)
            << testing::PrintToString(outcome);
        EXPECT_TRUE(
            outcome.errors.startsWith(QStringLiteral("plc: cannot write the capture ") + path))
            << testing::PrintToString(outcome);
        EXPECT_TRUE(outcome.lines.isEmpty());
    }
    EXPECT_EQ(0, status("requests"));
}

TEST_F(Capture, IsNotTouchedByWrongUsage)
{
    startSimulator();
    EXPECT_EQ(2, run("read", captured({QStringLiteral("MAIN.sped")})).exitCode);
    EXPECT_FALSE(QFileInfo::exists(file()));
}

} // namespace
} // namespace plc::test
