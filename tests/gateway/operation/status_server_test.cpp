#include "gateway/operation/status_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtNetwork/QLocalSocket>

#include <thread>

#include "gateway/operation/status_document.h"
#include "tests/gateway/operation/statistics_example.h"
#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class StatusServerTest : public plc::test::FileTest {
protected:
    std::unique_ptr<StatusServer> start(const QByteArray& document)
    {
        Expected<std::unique_ptr<StatusServer>> server =
            StatusServer::start(socket, [document] { return document; });
        return succeeds(server) ? std::move(*server) : nullptr;
    }
    /// As another process reads it, while this one serves.
    Expected<GatewayStatistics> read() const
    {
        Expected<GatewayStatistics> statistics = Error{};
        QEventLoop loop;
        std::thread reader([&] {
            statistics = readStatus(socket);
            QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
        });
        loop.exec();
        reader.join();
        return statistics;
    }

    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_count, m_arguments};
    const QString socket = path("status");
};

TEST(StatusDocument, ReadsBackAsItWas)
{
    const GatewayStatistics before = exampleStatistics();
    const Expected<GatewayStatistics> after = parseStatus(statusDocument(before));
    ASSERT_TRUE(after) << after.error().text.toStdString();
    EXPECT_EQ(statusDocument(before), statusDocument(*after));
    EXPECT_EQ(before.node, after->node);
    EXPECT_EQ(before.time, after->time);
    EXPECT_EQ(before.process.residentBytes, after->process.residentBytes);
    EXPECT_EQ(before.broker.bytes, after->broker.bytes);
    EXPECT_EQ(before.store.dropped, after->store.dropped);
    ASSERT_EQ(2, after->devices.size());
    EXPECT_EQ(before.devices[0].name, after->devices[0].name);
    EXPECT_EQ(before.devices[0].oldestAge, after->devices[0].oldestAge);
    EXPECT_EQ(before.devices[0].writes.unknown, after->devices[0].writes.unknown);
    EXPECT_EQ(before.devices[1].problem, after->devices[1].problem);
    EXPECT_FALSE(after->devices[1].isUp);
}

TEST(StatusDocument, OfAnotherVersionIsReadAsFarAsItGoes)
{
    const Expected<GatewayStatistics> statistics = parseStatus(
        R"({"node": "N", "news": [1], "devices": [{"name": "D"}], "broker": 3, "time": -1e300})");
    ASSERT_TRUE(statistics);
    EXPECT_EQ("N", statistics->node.toStdString());
    EXPECT_EQ("D", statistics->devices[0].name.toStdString());
    EXPECT_EQ(0, statistics->time);
    EXPECT_FALSE(parseStatus(""));
    EXPECT_FALSE(parseStatus("no json"));
}

TEST_F(StatusServerTest, TellsWhoeverAsks)
{
    const auto server = start(statusDocument(exampleStatistics()));
    ASSERT_TRUE(server) << error.toStdString();
    for (int i = 0; i < 2 * StatusServer::kMostConnections; ++i) {
        const Expected<GatewayStatistics> statistics = read();
        ASSERT_TRUE(succeeds(statistics)) << error.toStdString();
        EXPECT_EQ("Plant North", statistics->group.toStdString());
    }
}

TEST_F(StatusServerTest, TellsAllOfALongDocument)
{
    GatewayStatistics many = exampleStatistics();
    for (int i = 0; i < 2000; ++i)
        many.devices.append(many.devices[0]);
    ASSERT_GT(statusDocument(many).size(), 500000);
    const auto server = start(statusDocument(many));
    ASSERT_TRUE(server) << error.toStdString();
    const Expected<GatewayStatistics> statistics = read();
    ASSERT_TRUE(succeeds(statistics)) << error.toStdString();
    EXPECT_EQ(2002, statistics->devices.size());
}

TEST_F(StatusServerTest, IsForOwnerAndGroupAndLeavesNothingBehind)
{
    auto server = start("{}");
    ASSERT_TRUE(server) << error.toStdString();
    struct stat status = {};
    ASSERT_EQ(0, ::stat(socket.toLocal8Bit().constData(), &status));
    EXPECT_EQ(0660u, status.st_mode & 0777u);
    server.reset();
    EXPECT_FALSE(QFile::exists(socket));
}

TEST_F(StatusServerTest, ReplacesTheSocketOfAProcessThatIsGone)
{
    const auto first = start("{}");
    ASSERT_TRUE(first);
    EXPECT_FALSE(start("{}"));
    EXPECT_THAT(error.toStdString(), EndsWith("status: another process listens there"));
    QLocalServer gone;
    ASSERT_TRUE(gone.listen(path("gone")));
    // As a killed process leaves it: the file without one that listens.
    ASSERT_TRUE(QFile::rename(path("gone"), path("left")));
    gone.close();
    Expected<std::unique_ptr<StatusServer>> second =
        StatusServer::start(path("left"), [] { return QByteArray("{}"); });
    EXPECT_TRUE(succeeds(second)) << error.toStdString();
}

TEST_F(StatusServerTest, NobodyThereIsTold)
{
    EXPECT_FALSE(succeeds(readStatus(socket)));
    EXPECT_THAT(error.toStdString(), HasSubstr("status: no gateway answers there ("));
}

} // namespace
} // namespace test
} // namespace plc::gateway
