#include "gateway/config/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/gateway/config/settings_text.h"
#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {
namespace {

using SettingsFile = plc::test::FileTest;

TEST(Settings, ShortestConfigurationHasTheDefaults)
{
    const GatewaySettings settings = goodSettings(settingsText());
    EXPECT_EQ("G", settings.group.toStdString());
    EXPECT_EQ("N", settings.node.toStdString());
    EXPECT_EQ(PublicationFormat::Sparkplug, settings.format);
    EXPECT_EQ("", settings.primaryHost.toStdString());
    EXPECT_FALSE(settings.retainsValues);
    EXPECT_EQ(10, settings.keepAlive);
    EXPECT_EQ("s", settings.storeFile.toStdString());
    EXPECT_EQ(104857600, settings.storeSize);
    EXPECT_EQ(2000, settings.historyRate);
    EXPECT_EQ("", settings.auditFile.toStdString());
    EXPECT_EQ("", settings.metrics.address.toStdString());
    EXPECT_EQ("", settings.metrics.socket.toStdString());
    EXPECT_EQ("", settings.statusSocket.toStdString());
    ASSERT_EQ(1, settings.brokers.size());
    EXPECT_EQ("b", settings.brokers[0].host.toStdString());
    EXPECT_EQ(1883, settings.brokers[0].port);
    EXPECT_FALSE(settings.brokers[0].isVersion5);
    EXPECT_FALSE(settings.brokers[0].tls);
    ASSERT_EQ(1, settings.devices.size());
    EXPECT_EQ("D", settings.devices[0].name.toStdString());
    EXPECT_EQ("p", settings.devices[0].project.toStdString());
    EXPECT_FALSE(settings.devices[0].address);
    EXPECT_FALSE(settings.devices[0].port);
    EXPECT_EQ(0, settings.devices[0].labels.size());
    EXPECT_EQ(1000, settings.devices[0].cycleTime);
}

TEST(Settings, TakeAllKeysOfAProcess)
{
    const GatewaySettings settings = goodSettings(
        settingsText(R"("format": "json", "retain": true, "keepAlive": 30, "audit": "a",
                        "metrics": {"listen": "[::1]:9108"}, "status": "t")",
                     R"("store": {"file": "f", "size": "3M", "rate": 50})"));
    EXPECT_EQ(PublicationFormat::Plain, settings.format);
    EXPECT_TRUE(settings.retainsValues);
    EXPECT_EQ(30, settings.keepAlive);
    EXPECT_EQ("f", settings.storeFile.toStdString());
    EXPECT_EQ(3 * 1024 * 1024, settings.storeSize);
    EXPECT_EQ(50, settings.historyRate);
    EXPECT_EQ("a", settings.auditFile.toStdString());
    EXPECT_EQ("::1", settings.metrics.address.toStdString());
    EXPECT_EQ(9108, settings.metrics.port);
    EXPECT_EQ("t", settings.statusSocket.toStdString());
    EXPECT_EQ("scada",
              goodSettings(settingsText(R"("primaryHost": "scada")")).primaryHost.toStdString());
    EXPECT_EQ(
        "m",
        goodSettings(settingsText(R"("metrics": {"socket": "m"})")).metrics.socket.toStdString());
}

TEST(Settings, TakeAllKeysOfABroker)
{
    const GatewaySettings settings = goodSettings(brokerText(
        R"("host": "b", "port": 1884, "protocol": "5", "user": "u", "passwordFile": "w"},
           {"host": "c", "tls": {}},
           {"host": "d", "tls": {"authorities": "x", "certificate": "y", "key": "z"}, "port": 1)"));
    ASSERT_EQ(3, settings.brokers.size());
    EXPECT_EQ(1884, settings.brokers[0].port);
    EXPECT_TRUE(settings.brokers[0].isVersion5);
    EXPECT_EQ("u", settings.brokers[0].user.toStdString());
    EXPECT_EQ("w", settings.brokers[0].passwordFile.toStdString());
    EXPECT_EQ(8883, settings.brokers[1].port);
    ASSERT_TRUE(settings.brokers[1].tls);
    EXPECT_EQ("", settings.brokers[1].tls->authorities.toStdString());
    EXPECT_EQ(1, settings.brokers[2].port);
    EXPECT_EQ("x", settings.brokers[2].tls->authorities.toStdString());
    EXPECT_EQ("y", settings.brokers[2].tls->certificate.toStdString());
    EXPECT_EQ("z", settings.brokers[2].tls->key.toStdString());
}

TEST(Settings, TakeAllKeysOfADevice)
{
    const GatewaySettings settings = goodSettings(deviceText(
        R"("name": "Press 1", "project": "p", "address": "10.0.0.1", "port": 1300,
           "labels": ["a.b", "a.*"], "cycle": "1m30s",
           "deadband": [{"labels": "a.c", "deadband": 0.5}],
           "writable": ["a.d", {"labels": "a.e", "lowest": -1, "highest": 50}]},
           {"name": "Press 2", "project": "q", "cycle": 250)"));
    ASSERT_EQ(2, settings.devices.size());
    const DeviceSettings& device = settings.devices[0];
    EXPECT_EQ("10.0.0.1", device.address.value_or(QString()).toStdString());
    EXPECT_EQ(1300, device.port.value_or(0));
    EXPECT_EQ("a.b,a.*", QStringList(device.labels.begin(), device.labels.end())
                             .join(QLatin1Char(','))
                             .toStdString());
    EXPECT_EQ(90000, device.cycleTime);
    ASSERT_EQ(1, device.deadbands.size());
    EXPECT_EQ("a.c", device.deadbands[0].labels.toStdString());
    EXPECT_EQ(0.5, device.deadbands[0].deadband);
    ASSERT_EQ(2, device.writable.size());
    EXPECT_EQ("a.d", device.writable[0].labels.toStdString());
    EXPECT_FALSE(device.writable[0].lowest);
    EXPECT_FALSE(device.writable[0].highest);
    EXPECT_EQ(-1, device.writable[1].lowest.value_or(0));
    EXPECT_EQ(50, device.writable[1].highest.value_or(0));
    EXPECT_EQ(250, settings.devices[1].cycleTime);
}

TEST_F(SettingsFile, PathsLieBesideIt)
{
    const QString file = path("gateway.json");
    files.put(file,
              R"({"group": "G", "node": "N", "audit": "/var/a", "status": "s",
                  "brokers": [{"host": "b", "user": "u", "passwordFile": "w",
                               "tls": {"authorities": "x", "certificate": "y", "key": "/z"}}],
                  "store": {"file": "$STATE_DIRECTORY/f"}, "metrics": {"socket": "m"},
                  "devices": [{"name": "D", "project": "../p.json"}]})");
    ::qunsetenv("STATE_DIRECTORY");
    const Expected<GatewaySettings> settings = loadSettings(file);
    ASSERT_TRUE(succeeds(settings)) << error.toStdString();
    EXPECT_EQ(path("w"), settings->brokers[0].passwordFile);
    EXPECT_EQ(path("x"), settings->brokers[0].tls->authorities);
    EXPECT_EQ(path("y"), settings->brokers[0].tls->certificate);
    EXPECT_EQ("/z", settings->brokers[0].tls->key.toStdString());
    EXPECT_EQ("/var/a", settings->auditFile.toStdString());
    EXPECT_EQ(path("s"), settings->statusSocket);
    EXPECT_EQ(path("m"), settings->metrics.socket);
    EXPECT_EQ(path("../p.json"), settings->devices[0].project);
    EXPECT_EQ("$STATE_DIRECTORY/f", settings->storeFile.toStdString());

    ::qputenv("STATE_DIRECTORY", "/var/lib/plc-gateway/a");
    EXPECT_EQ("/var/lib/plc-gateway/a/f",
              loadSettings(file).valueOr(GatewaySettings()).storeFile.toStdString());
    ::qunsetenv("STATE_DIRECTORY");
}

TEST_F(SettingsFile, PathsAreAbsoluteAlsoWhenTheFileIsNamedByItsNameAlone)
{
    files.put(path("gateway.json"), settingsText().constData());
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(path(".")));
    const Expected<GatewaySettings> settings = loadSettings(QStringLiteral("gateway.json"));
    EXPECT_EQ(QDir::current().filePath(QStringLiteral("s")),
              settings.valueOr(GatewaySettings()).storeFile);
    QDir::setCurrent(before);
}

TEST_F(SettingsFile, WhatCannotBeReadIsNamed)
{
    EXPECT_FALSE(succeeds(loadSettings(path("none.json"))));
    EXPECT_EQ(path("none.json") + ": cannot be read: No such file or directory", error);
    EXPECT_FALSE(succeeds(loadSettings(path("."))));
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith(": is a folder, expected a configuration"));
}

} // namespace
} // namespace test
} // namespace plc::gateway
