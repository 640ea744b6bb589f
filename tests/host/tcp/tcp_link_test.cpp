#include "host/tcp/tcp_link.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtNetwork/QTcpServer>

#include <algorithm>

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

/// Lives longer than all that needs an event loop.
class Application {
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_count, m_arguments};
};

/// A link to a server of the test, in one event loop.
class TcpLinkTest : private Application, public HostTest {
protected:
    TcpLinkTest()
    {
        EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
        project.settings.reconnectDelay = 1;
        runtime.reset();
        runtime = std::make_unique<Runtime>(takenDriver(), settings(), project, this);
        link =
            std::make_unique<TcpLink>(&session(), QStringLiteral("127.0.0.1"), server.serverPort());
    }

    /// Turns the event loop until this is so; the limit of ctest ends what never becomes so.
    template <typename Condition>
    void until(Condition condition)
    {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
    void accept()
    {
        until([this] { return server.hasPendingConnections(); });
        peer.reset(server.nextPendingConnection());
    }
    QByteArray receive(int size)
    {
        until([this, size] { return peer->bytesAvailable() >= size; });
        return peer->read(size);
    }
    void serveLogin()
    {
        receive(20);
        peer->write(identificationReply());
        receive(23);
        peer->write(fileReply());
    }

    QTcpServer server;
    std::unique_ptr<QTcpSocket> peer;
    std::unique_ptr<TcpLink> link;
};

TEST_F(TcpLinkTest, ReadsOverTheSocket)
{
    cycle({"Main.speed"});
    link->start();
    accept();
    serveLogin();
    EXPECT_EQ(hex("00 00 00 04"), receive(26).mid(14, 4));
    peer->write(readReply({hex("12 34")}));
    until([this] { return shown("Main.speed") == QLatin1String("4660"); });
}

TEST_F(TcpLinkTest, ReplyInSingleBytesIsPutTogether)
{
    cycle({"Main.speed"});
    link->start();
    accept();
    serveLogin();
    receive(26);
    for (const char byte : readReply({hex("12 34")})) {
        peer->write(&byte, 1);
        peer->flush();
        QCoreApplication::processEvents();
    }
    until([this] { return shown("Main.speed") == QLatin1String("4660"); });
}

TEST_F(TcpLinkTest, ConnectsAnewOnAnotherSocketWhenThePeerCloses)
{
    cycle({"Main.speed"});
    link->start();
    accept();
    serveLogin();
    receive(26);
    peer->close();
    accept();
    EXPECT_TRUE(std::any_of(linkEvents.begin(), linkEvents.end(),
                            [](const LinkEvent& event) { return event.state == LinkState::Down; }));
    serveLogin();
    receive(26);
    peer->write(readReply({hex("12 34")}));
    until([this] { return shown("Main.speed") == QLatin1String("4660"); });
}

TEST_F(TcpLinkTest, RefusedConnectionIsReported)
{
    server.close();
    link->start();
    until([this] { return !linkEvents.empty() && linkEvents.back().state == LinkState::Down; });
    EXPECT_FALSE(linkEvents.back().reason.isEmpty());
    EXPECT_EQ(1, linkEvents.back().retryDelay);
}

TEST_F(TcpLinkTest, WritesFromOutsideAreSentByPumping)
{
    link->start();
    accept();
    until([this] { return session().linkState() == LinkState::Up; });
    now = link->now();
    write("Main.speed", "7");
    link->pump();
    serveLogin();
    EXPECT_EQ(hex("00 07"), receive(28).mid(22, 2));
    peer->write(writeReply());
    until([this] { return !writes.empty(); });
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(TcpLinkTest, StopClosesTheConnection)
{
    cycle({"Main.speed"});
    link->start();
    accept();
    receive(20);
    link->stop();
    until([this] { return peer->state() == QAbstractSocket::UnconnectedState; });
    EXPECT_EQ(LinkState::Down, session().linkState());
}

} // namespace
} // namespace test
} // namespace plc::host
