#include "service/service_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "tests/support/file_test.h"

namespace plc::service {
namespace {

/// A service manager that listens as systemd does.
class ServiceManagerTest : public plc::test::FileTest {
protected:
    ServiceManagerTest()
    {
        const QByteArray name = path("notify").toLocal8Bit();
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
        m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
        EXPECT_EQ(0, ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address));
        ::qputenv("NOTIFY_SOCKET", name);
    }
    ~ServiceManagerTest() override
    {
        ::qunsetenv("NOTIFY_SOCKET");
        ::qunsetenv("WATCHDOG_USEC");
        ::qunsetenv("WATCHDOG_PID");
        ::close(m_socket);
    }
    /// The next message; empty: there is none.
    std::string told() const
    {
        char text[1000];
        const ssize_t size = ::recv(m_socket, text, sizeof text, 0);
        return size < 0 ? std::string() : std::string(text, std::size_t(size));
    }

    ServiceManager manager;

private:
    int m_socket = -1;
};

TEST_F(ServiceManagerTest, IsToldOfEachStep)
{
    manager.readyWithin(90);
    EXPECT_EQ("EXTEND_TIMEOUT_USEC=90000000", told());
    manager.ready();
    EXPECT_EQ("READY=1", told());
    manager.alive();
    EXPECT_EQ("WATCHDOG=1", told());
    manager.reloading();
    EXPECT_THAT(told(), ::testing::MatchesRegex("RELOADING=1\nMONOTONIC_USEC=[0-9]+"));
    manager.stopping();
    EXPECT_EQ("STOPPING=1", told());
    EXPECT_EQ("", told());
}

TEST_F(ServiceManagerTest, IsToldAStatusOnce)
{
    manager.status(QStringLiteral("3 of 3 PLCs"));
    manager.status(QStringLiteral("3 of 3 PLCs"));
    EXPECT_EQ("STATUS=3 of 3 PLCs", told());
    EXPECT_EQ("", told());
    manager.status(QStringLiteral("2 of 3 PLCs"));
    EXPECT_EQ("STATUS=2 of 3 PLCs", told());
}

TEST_F(ServiceManagerTest, AStatusIsOneLine)
{
    manager.status(QStringLiteral("a\nREADY=1"));
    EXPECT_EQ("STATUS=a\\u000aREADY=1", told());
}

TEST_F(ServiceManagerTest, WatchesWithHalfOfItsPatience)
{
    EXPECT_FALSE(ServiceManager::watchdogInterval());
    ::qputenv("WATCHDOG_USEC", "30000000");
    EXPECT_EQ(15000, ServiceManager::watchdogInterval().value_or(0));
    ::qputenv("WATCHDOG_PID", "1"); // another process
    EXPECT_FALSE(ServiceManager::watchdogInterval());
}

TEST_F(ServiceManagerTest, IsNotMissed)
{
    ::qunsetenv("NOTIFY_SOCKET");
    manager.ready();
    manager.stopping();
    EXPECT_EQ("", told());
}

} // namespace
} // namespace plc::service
