#include "configuration/listen_address.h"

#include <gtest/gtest.h>

namespace plc::configuration {
namespace test {
namespace {

QString shown(const char* text)
{
    const std::optional<ListenAddress> found = parseListenAddress(QString::fromLatin1(text));
    return found ? QStringLiteral("%1 %2").arg(found->address).arg(found->port)
                 : QStringLiteral("none");
}

TEST(ListenAddress, OfVersion6StandsInBrackets)
{
    EXPECT_EQ("127.0.0.1 8080", shown("127.0.0.1:8080"));
    EXPECT_EQ("::1 65535", shown("[::1]:65535"));
    EXPECT_EQ("none", shown("::1:8080"));
}

TEST(ListenAddress, HasBothParts)
{
    for (const char* text : {"", "8080", ":8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536",
                             "127.0.0.1:-1", "127.0.0.1:http", "[]:80"})
        EXPECT_EQ("none", shown(text)) << text;
}

TEST(ListenAddress, OfThisMachineAloneIsLoopback)
{
    EXPECT_TRUE(isLoopback(QStringLiteral("127.0.0.1")));
    EXPECT_TRUE(isLoopback(QStringLiteral("127.255.255.255")));
    EXPECT_TRUE(isLoopback(QStringLiteral("::1")));
    for (const char* text : {"128.0.0.1", "0.0.0.0", "::", "192.168.0.1", "localhost", ""})
        EXPECT_FALSE(isLoopback(QString::fromLatin1(text))) << text;
}

} // namespace
} // namespace test
} // namespace plc::configuration
