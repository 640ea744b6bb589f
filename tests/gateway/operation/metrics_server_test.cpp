#include "gateway/operation/metrics_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QtNetwork/QLocalSocket>
#include <QtNetwork/QTcpSocket>

#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr int kPatience = 30000; // ms

/// All that the server sends until it hangs up.
template <typename Socket>
std::string exchange(Socket& socket, const QByteArray& request)
{
    EXPECT_TRUE(socket.waitForConnected(kPatience)) << socket.errorString().toStdString();
    socket.write(request);
    QByteArray reply;
    while (socket.waitForReadyRead(kPatience))
        reply += socket.readAll();
    return (reply + socket.readAll()).toStdString();
}

QByteArray request(const QByteArray& line)
{
    return line + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n";
}

class MetricsServerTest : public plc::test::FileTest {
protected:
    std::unique_ptr<MetricsServer> start(const char* address = "127.0.0.1")
    {
        MetricsSettings settings;
        settings.address = QString::fromLatin1(address);
        return started(settings);
    }
    std::unique_ptr<MetricsServer> started(const MetricsSettings& settings)
    {
        Expected<std::unique_ptr<MetricsServer>> server = MetricsServer::start(settings);
        return succeeds(server) ? std::move(*server) : nullptr;
    }
    MetricsSettings onSocket() const
    {
        MetricsSettings settings;
        settings.socket = path("metrics");
        return settings;
    }
    std::string answer(const MetricsServer& server, const QByteArray& sent,
                       const char* address = "127.0.0.1")
    {
        QTcpSocket socket;
        socket.connectToHost(QString::fromLatin1(address), server.port());
        return exchange(socket, sent);
    }
};

TEST_F(MetricsServerTest, GivesTheTextAsItIsNow)
{
    const auto server = start();
    ASSERT_TRUE(server) << error.toStdString();
    server->setText("a 1\n");
    const std::string first = answer(*server, request("GET /metrics"));
    EXPECT_THAT(first, StartsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_THAT(first, HasSubstr("Content-Type: text/plain; version=0.0.4; charset=utf-8\r\n"));
    EXPECT_THAT(first, EndsWith("\r\n\r\na 1\n"));
    server->setText("a 2\n");
    EXPECT_THAT(answer(*server, request("GET /metrics")), EndsWith("\r\n\r\na 2\n"));
    EXPECT_THAT(answer(*server, request("HEAD /metrics")), EndsWith("\r\n\r\n"));
}

TEST_F(MetricsServerTest, GivesNothingElse)
{
    const auto server = start();
    ASSERT_TRUE(server) << error.toStdString();
    server->setText("a 1\n");
    EXPECT_THAT(answer(*server, request("GET /")), StartsWith("HTTP/1.1 404 "));
    EXPECT_THAT(answer(*server, request("GET /metrics/../etc/passwd")),
                StartsWith("HTTP/1.1 404 "));
    const std::string refused = answer(*server, request("DELETE /metrics"));
    EXPECT_THAT(refused, StartsWith("HTTP/1.1 405 "));
    EXPECT_THAT(refused, HasSubstr("Allow: GET, HEAD\r\n"));
    EXPECT_THAT(answer(*server, "\x01\x02 rubbish\r\n\r\n"), StartsWith("HTTP/1."));
    EXPECT_THAT(answer(*server, request("GET /metrics")), EndsWith("a 1\n"));
}

TEST_F(MetricsServerTest, EndsConnectionsOfTooLargeRequests)
{
    const auto server = start();
    ASSERT_TRUE(server) << error.toStdString();
    EXPECT_THAT(answer(*server, "GET /metrics HTTP/1.1\r\nX: " + QByteArray(100000, 'x')),
                ::testing::AnyOf("", StartsWith("HTTP/1.1 4")));
}

TEST_F(MetricsServerTest, ServesAgainWhenOneOfItsConnectionsEnds)
{
    const auto server = start();
    ASSERT_TRUE(server) << error.toStdString();
    server->setText("a 1\n");
    std::vector<std::unique_ptr<QTcpSocket>> idle;
    for (int i = 0; i < MetricsServer::kMostConnections; ++i) {
        idle.push_back(std::make_unique<QTcpSocket>());
        idle.back()->connectToHost(QStringLiteral("127.0.0.1"), server->port());
        ASSERT_TRUE(idle.back()->waitForConnected(kPatience));
        // Served once, so that it is certain that the server has this connection.
        idle.back()->write("GET /metrics HTTP/1.1\r\nHost: localhost\r\n\r\n");
        ASSERT_TRUE(idle.back()->waitForReadyRead(kPatience));
    }
    idle.clear();
    EXPECT_THAT(answer(*server, request("GET /metrics")), EndsWith("a 1\n"));
}

TEST_F(MetricsServerTest, ListensOnIpv6)
{
    const auto server = start("::1");
    if (!server)
        GTEST_SKIP() << "this machine has no IPv6: " << error.toStdString();
    server->setText("a 1\n");
    EXPECT_THAT(answer(*server, request("GET /metrics"), "::1"), EndsWith("a 1\n"));
}

TEST_F(MetricsServerTest, APortThatIsTakenIsNamed)
{
    const auto server = start();
    ASSERT_TRUE(server);
    MetricsSettings same;
    same.address = QStringLiteral("127.0.0.1");
    same.port = server->port();
    EXPECT_FALSE(started(same));
    EXPECT_EQ(error, QStringLiteral("metrics: 127.0.0.1 port %1: cannot be listened on: Address "
                                    "already in use")
                         .arg(server->port()));
}

TEST_F(MetricsServerTest, ListensOnASocketForOwnerAndGroup)
{
    auto server = started(onSocket());
    ASSERT_TRUE(server) << error.toStdString();
    server->setText("a 1\n");
    struct stat status = {};
    ASSERT_EQ(0, ::stat(path("metrics").toLocal8Bit().constData(), &status));
    EXPECT_EQ(0660u, status.st_mode & 0777u);
    QLocalSocket socket;
    socket.connectToServer(path("metrics"));
    EXPECT_THAT(exchange(socket, request("GET /metrics")), EndsWith("a 1\n"));
    server.reset();
    EXPECT_FALSE(QFile::exists(path("metrics")));
}

TEST_F(MetricsServerTest, ASocketThatIsListenedOnIsNotTaken)
{
    const auto server = started(onSocket());
    ASSERT_TRUE(server) << error.toStdString();
    EXPECT_FALSE(started(onSocket()));
    EXPECT_EQ("metrics: " + path("metrics") + ": another process listens there", error);
    EXPECT_TRUE(QFile::exists(path("metrics")));
}

TEST_F(MetricsServerTest, AFileIsNotTakenForASocket)
{
    files.put(path("metrics"), "mine");
    EXPECT_FALSE(started(onSocket()));
    EXPECT_THAT(error.toStdString(), EndsWith("exists and is no socket; name another path"));
    EXPECT_EQ("mine", files.content(path("metrics")));
}

} // namespace
} // namespace test
} // namespace plc::gateway
