#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <vector>

#include "tests/simulator/running_simulator.h"
#include "tests/support/random.h"

namespace plc::simulator {
namespace {

using test::bytes;
using test::Client;
using test::hex;
using test::waitUntil;

constexpr const char* kReadTwoBytes = "2e 00 00 00 00 01 00 01 00 00 00 10 00 00 00 02";
constexpr const char* kTwoBytes = "bb bb 00 00 00 09 00 00 00 00 00 01 00 10 11";

class PlcServerTest : public test::RunningSimulator {};

TEST_F(PlcServerTest, ServesLoginReadAndWrite)
{
    Client client(m_server.port());
    client.logIn();
    EXPECT_EQ(kTwoBytes, hex(client.exchange(client.request(kReadTwoBytes))));
    EXPECT_EQ(
        "bb bb 00 00 00 02 00 00",
        hex(client.exchange(client.request("3c 00 00 00 00 01 00 01 00 00 00 11 00 00 00 01 ee"))));
    EXPECT_EQ("bb bb 00 00 00 09 00 00 00 00 00 01 00 10 ee",
              hex(client.exchange(client.request(kReadTwoBytes))));
    EXPECT_EQ(5, m_settings.requests);
    EXPECT_EQ(5, m_accesses);
    EXPECT_EQ(0, m_settings.refused);
}

TEST_F(PlcServerTest, UnderstandsRequestsSplitAtEveryByte)
{
    Client client(m_server.port());
    client.logIn();
    const QByteArray request = client.request(kReadTwoBytes);
    for (int split = 1; split < int(request.size()); ++split) {
        client.send(request.left(split));
        QCoreApplication::processEvents();
        ASSERT_EQ(kTwoBytes, hex(client.exchange(request.mid(split)))) << split;
    }
}

TEST_F(PlcServerTest, AnswersRequestsInTheOrderInWhichTheyCameTogether)
{
    Client client(m_server.port());
    client.logIn();
    QByteArray requests;
    for (int i = 0; i < 200; ++i) {
        QByteArray request = client.request(kReadTwoBytes);
        request[17] = char(i);
        requests += request;
    }
    client.send(requests);
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(i, quint8(client.receiveReply()[13]));
}

TEST_F(PlcServerTest, EverySessionHasInformationBytesOfItsOwn)
{
    Client first(m_server.port());
    Client second(m_server.port());
    first.logIn();
    second.logIn();
    EXPECT_NE(hex(first.trailer()), hex(second.trailer()));
    EXPECT_NE(first.trailer()[2], first.trailer()[3]);
    EXPECT_EQ("bb bb 00 00 00 02 00 10", hex(second.exchange(first.request(kReadTwoBytes))));
    EXPECT_EQ(1, m_settings.refused);
}

TEST_F(PlcServerTest, LoginOfOneConnectionIsNotThatOfAnother)
{
    Client first(m_server.port());
    first.logIn();
    Client second(m_server.port());
    EXPECT_EQ("bb bb 00 00 00 02 00 10", hex(second.exchange(first.request(kReadTwoBytes))));
}

TEST_F(PlcServerTest, InformationBytesOfManySessionsDifferAndAreNeverEqual)
{
    std::set<std::string> seen;
    for (int i = 0; i < 600; ++i) {
        Client client(m_server.port());
        client.logIn();
        ASSERT_NE(client.trailer()[2], client.trailer()[3]) << i;
        ASSERT_TRUE(seen.insert(hex(client.trailer())).second) << i;
        client.socket().abort();
    }
}

TEST_F(PlcServerTest, DisconnectsWhoSendsNoFrames)
{
    Client client(m_server.port());
    client.send("GET / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(waitUntil([&] { return !client.isConnected(); }));
    EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 0; }));
}

TEST_F(PlcServerTest, RefusesAnOversizedFrameByItsHeader)
{
    Client client(m_server.port());
    client.send(bytes("bb bb 00 01 00 00"));
    EXPECT_EQ("bb bb 00 00 00 02 00 02", hex(client.receiveReply()));
    EXPECT_TRUE(waitUntil([&] { return !client.isConnected(); }));
}

TEST_F(PlcServerTest, ForgetsClientsThatGoInTheMiddleOfARequest)
{
    for (int size = 0; size < 12; ++size) {
        Client client(m_server.port());
        client.send(bytes(test::kIdentification).left(size));
        EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 1; }));
        client.socket().abort();
        EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 0; }));
    }
}

TEST_F(PlcServerTest, Serves200ClientsAtOnce)
{
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 200; ++i) {
        clients.push_back(std::make_unique<Client>(m_server.port()));
        clients.back()->logIn();
    }
    EXPECT_EQ(200, m_server.clients());
    for (int round = 0; round < 5; ++round) {
        for (const auto& client : clients)
            client->send(client->request(kReadTwoBytes));
        for (const auto& client : clients)
            ASSERT_EQ(kTwoBytes, hex(client->receiveReply()));
    }
    clients.clear();
    EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 0; }));
}

TEST_F(PlcServerTest, TurnsAwayClientsBeyondTheirNumber)
{
    m_server.setMostClients(1);
    Client first(m_server.port());
    first.logIn();
    Client second(m_server.port());
    EXPECT_TRUE(waitUntil([&] { return !second.isConnected(); }));
    EXPECT_EQ(kTwoBytes, hex(first.exchange(first.request(kReadTwoBytes))));
}

TEST_F(PlcServerTest, TellsOnceThatItTurnsClientsAway)
{
    QStringList notices;
    m_server.setNotice([&](const QString& text) { notices.append(text); });
    m_server.setMostClients(1);
    {
        Client first(m_server.port());
        first.logIn();
        Client second(m_server.port());
        Client third(m_server.port());
        EXPECT_TRUE(waitUntil([&] { return !second.isConnected() && !third.isConnected(); }));
        EXPECT_EQ(QStringList{QStringLiteral(
                      "clients are turned away: 1 are connected; --max-clients allows more")},
                  notices);
    }
    EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 0; }));
    Client fourth(m_server.port());
    fourth.logIn();
    Client fifth(m_server.port());
    EXPECT_TRUE(waitUntil([&] { return !fifth.isConnected(); }));
    EXPECT_EQ(2, notices.size());
}

TEST_F(PlcServerTest, DoesNotServeAheadOfAClientThatReadsNoReplies)
{
    Client client(m_server.port());
    client.logIn();
    client.socket().setReadBufferSize(1024);
    // Each request of 26 bytes asks for a reply of a thousand.
    const QByteArray request = client.request("2e 00 00 00 00 01 00 01 00 00 00 00 00 00 03 e8");
    const int sent = 40000;
    for (int i = 0; i < sent; ++i)
        client.socket().write(request);
    // Round trips of another client tell when nothing more is served.
    Client other(m_server.port());
    qint64 before = -1;
    while (before + 1 != m_settings.requests) {
        before = m_settings.requests;
        other.exchange(bytes(test::kIdentification));
    }
    EXPECT_LT(m_settings.requests, sent / 2);
    client.socket().setReadBufferSize(0);
    const qint64 all = qint64(sent) * (12 + 1 + 1000);
    qint64 received = 0;
    EXPECT_TRUE(waitUntil([&] {
        received += client.socket().readAll().size();
        return received == all;
    })) << received;
}

/// Sends so many requests for the largest reply, of which the client reads none, and returns the
/// most that the simulator kept meanwhile.
qint64 mostKeptFor(int requests, Client* client, const PlcServer& server,
                   const ConnectionSettings& settings)
{
    client->socket().setReadBufferSize(1024);
    // 65 entries of 1000 bytes: a reply of 65,077 bytes to a request of 668.
    QByteArray entries = bytes("2e 00 00 00 00 41");
    for (int entry = 0; entry < 65; ++entry)
        entries += bytes("00 01 00 00 00 00 00 00 03 e8");
    const QByteArray request = client->request(entries.toHex().constData());
    for (int i = 0; i < requests; ++i)
        client->socket().write(request);
    Client other(server.port());
    qint64 most = 0;
    qint64 before = -1;
    while (before + 1 != settings.requests) {
        before = settings.requests;
        other.exchange(bytes(test::kIdentification));
        most = std::max(most, server.keptBytes());
    }
    return most;
}

constexpr qint64 kPromisedMemory = 1200000;

TEST_F(PlcServerTest, KeepsNoMoreThanPromisedOfJoinedRepliesThatNobodyReads)
{
    Client client(m_server.port());
    client.logIn();
    m_settings.join = true;
    const qint64 kept = mostKeptFor(1000, &client, m_server, m_settings);
    EXPECT_LT(kept, kPromisedMemory);
    EXPECT_GT(kept, 65077) << "something waits";
    client.socket().setReadBufferSize(0);
    qint64 received = 0;
    EXPECT_TRUE(waitUntil([&] {
        received += client.socket().readAll().size();
        return received == qint64(1000) * 65077;
    })) << received;
}

TEST_F(PlcServerTest, KeepsNoMoreThanPromisedOfJoinedRepliesThatComeLateAndTwice)
{
    Client client(m_server.port());
    client.logIn();
    m_settings.join = true;
    m_faults.delayReply(1, 3600000);
    for (int reply = 1; reply <= 16; ++reply)
        m_faults.duplicateReply(reply);
    const qint64 kept = mostKeptFor(100, &client, m_server, m_settings);
    EXPECT_LT(kept, kPromisedMemory);
    EXPECT_GT(kept, 2 * 65077) << "a reply waits, twice";
}

TEST_F(PlcServerTest, SendsRepliesInPieces)
{
    m_settings.fragment = 1;
    Client client(m_server.port());
    client.logIn();
    EXPECT_EQ(kTwoBytes, hex(client.exchange(client.request(kReadTwoBytes))));
    m_settings.fragment = 7;
    client.send(client.request(kReadTwoBytes) + client.request(kReadTwoBytes));
    EXPECT_EQ(kTwoBytes, hex(client.receiveReply()));
    EXPECT_EQ(kTwoBytes, hex(client.receiveReply()));
}

TEST_F(PlcServerTest, JoinsRepliesToRequestsThatCameTogether)
{
    Client client(m_server.port());
    client.logIn();
    m_settings.join = true;
    int arrivals = 0;
    QObject::connect(&client.socket(), &QTcpSocket::readyRead, [&] { ++arrivals; });
    client.send(client.request(kReadTwoBytes) + client.request(kReadTwoBytes));
    EXPECT_TRUE(waitUntil([&] { return client.bytesAvailable() >= 15; }));
    EXPECT_EQ(30, client.bytesAvailable());
    EXPECT_EQ(1, arrivals);
}

TEST_F(PlcServerTest, DelaysReplies)
{
    Client client(m_server.port());
    client.logIn();
    m_faults.setDelay(80);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(kTwoBytes, hex(client.exchange(client.request(kReadTwoBytes))));
    EXPECT_GE(clock.elapsed(), 79);
}

TEST_F(PlcServerTest, CarriesOutARequestWhoseReplyIsLost)
{
    Client client(m_server.port());
    client.logIn();
    m_faults.dropNext(1);
    client.send(client.request("3c 00 00 00 00 01 00 01 00 00 00 10 00 00 00 01 77"));
    EXPECT_EQ("bb bb 00 00 00 09 00 00 00 00 00 01 00 77 11",
              hex(client.exchange(client.request(kReadTwoBytes))));
    EXPECT_EQ(0, client.bytesAvailable());
}

TEST_F(PlcServerTest, StaysSilentAfterHalfAReplyButServesOthers)
{
    Client client(m_server.port());
    client.logIn();
    m_faults.halveReply(1);
    client.send(client.request(kReadTwoBytes) + client.request(kReadTwoBytes));
    EXPECT_EQ("bb bb 00 00 00 09 00", hex(client.receive(7)));
    client.send(client.request(kReadTwoBytes));
    Client other(m_server.port());
    other.logIn();
    EXPECT_EQ(kTwoBytes, hex(other.exchange(other.request(kReadTwoBytes))));
    EXPECT_EQ(0, client.bytesAvailable());
    EXPECT_TRUE(client.isConnected());
}

TEST_F(PlcServerTest, SendsAReplyTwice)
{
    Client client(m_server.port());
    client.logIn();
    m_faults.duplicateReply(1);
    EXPECT_EQ(kTwoBytes, hex(client.exchange(client.request(kReadTwoBytes))));
    EXPECT_EQ(kTwoBytes, hex(client.receiveReply()));
}

TEST_F(PlcServerTest, ForgetsADelayedReplyWhoseClientHasGone)
{
    m_faults.setDelay(20);
    {
        Client client(m_server.port());
        client.send(bytes(test::kIdentification));
        EXPECT_TRUE(waitUntil([&] { return m_settings.requests == 1; }));
    }
    EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 0; }));
    Client later(m_server.port());
    EXPECT_EQ(206, later.exchange(bytes(test::kIdentification)).size());
}

TEST_F(PlcServerTest, GoesOfflineAndComesBackAtTheSamePort)
{
    const quint16 port = m_server.port();
    Client client(port);
    client.logIn();
    m_server.goOffline();
    EXPECT_FALSE(m_server.isOnline());
    EXPECT_TRUE(waitUntil([&] { return !client.isConnected(); }));
    QTcpSocket refused;
    refused.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    EXPECT_TRUE(waitUntil([&] { return refused.state() == QAbstractSocket::UnconnectedState; }));
    EXPECT_TRUE(m_server.goOnline());
    EXPECT_TRUE(m_server.goOnline()) << "once more";
    EXPECT_EQ(port, m_server.port());
    Client again(port);
    again.logIn();
    EXPECT_EQ(kTwoBytes, hex(again.exchange(again.request(kReadTwoBytes))));
}

TEST_F(PlcServerTest, SaysWhyItCannotListen)
{
    PlcServer second(&m_settings);
    const Expected<void> listens =
        second.listen(QHostAddress(QHostAddress::LocalHost), m_server.port());
    ASSERT_FALSE(listens);
    const QString error = listens.error().text;
    EXPECT_EQ(0,
              error.indexOf(QStringLiteral("cannot listen on 127.0.0.1:%1: ").arg(m_server.port())))
        << error.toStdString();
}

TEST_F(PlcServerTest, SurvivesRandomStreams)
{
    plc::test::Random random(99);
    for (int round = 0; round < 300; ++round) {
        Client client(m_server.port());
        QByteArray stream;
        for (int frame = random.below(4); frame >= 0; --frame) {
            QByteArray next = bytes(random.oneIn(2) ? test::kIdentification : test::kFileRequest);
            if (random.oneIn(3))
                next[random.below(int(next.size()))] = char(random.bits());
            if (random.oneIn(4))
                next.truncate(random.below(int(next.size())));
            stream += next;
        }
        client.send(stream);
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(waitUntil([&] { return m_server.clients() == 0; }));
    Client client(m_server.port());
    client.logIn();
    EXPECT_EQ(kTwoBytes, hex(client.exchange(client.request(kReadTwoBytes))));
}

TEST_F(PlcServerTest, TracesEveryFrame)
{
    std::vector<std::string> seen;
    m_settings.trace = [&](const QString&, char direction, const QByteArray& frame) {
        seen.push_back(direction + hex(frame.left(8)));
    };
    Client client(m_server.port());
    client.exchange(bytes(test::kIdentification));
    EXPECT_EQ((std::vector<std::string>{">bb bb 00 00 00 0e 01 00", "<bb bb 00 00 00 c8 00 00"}),
              seen);
}

} // namespace
} // namespace plc::simulator
