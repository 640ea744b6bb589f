#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/gateway/config/settings_text.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

std::string errorOfName(const QByteArray& name)
{
    return errorOf(deviceText(R"("project": "p", "name": )" + name));
}

TEST(SettingsErrors, UnknownKeyIsRefusedWithTheNearestOne)
{
    EXPECT_EQ(
        "/keepalive: unknown key \"keepalive\" (did you mean \"keepAlive\"?), expected one of "
        "group, node, brokers, store, devices, $schema, format, retain, primaryHost, "
        "keepAlive, audit, metrics, status",
        errorOf(settingsText(R"("keepalive": 3)")));
}

TEST(SettingsErrors, MissingKeysAreNamed)
{
    EXPECT_EQ("key \"group\" is missing", errorOf("{}"));
    EXPECT_EQ("/devices/0: key \"project\" is missing", errorOf(deviceText(R"("name": "D")")));
    EXPECT_EQ("/brokers/0: key \"host\" is missing", errorOf(brokerText("")));
    EXPECT_EQ("/store: key \"file\" is missing",
              errorOf(settingsText(R"("audit": "a")", R"("store": {})")));
}

TEST(SettingsErrors, WhatIsNoJsonTellsTheLine)
{
    EXPECT_THAT(errorOf("{\n\"group\" 1}"), HasSubstr("line 2"));
    EXPECT_THAT(errorOf(R"({"group": "a", "group": "b"})"), HasSubstr("group"));
}

TEST(SettingsErrors, NamesFitIntoTopics)
{
    EXPECT_EQ("/devices/0/name: found \"\", expected a name", errorOfName(R"("")"));
    EXPECT_EQ("/devices/0/name: found \"  \", expected a name", errorOfName(R"("  ")"));
    for (const char* name : {R"("a+b")", R"("a#")", R"("a/b")"}) {
        EXPECT_THAT(errorOfName(name), EndsWith("expected a name without + # /, which separate and "
                                                "replace the levels of topics"));
    }
    for (const char* name : {R"("a\u0000")", R"("a\nb")", R"("\ud83d")", R"("\u202e")"})
        EXPECT_THAT(errorOfName(name), EndsWith("expected a name of characters that can be shown"));
    EXPECT_EQ("", errorOfName(R"("Größe 中 \ud83d\ude00 $1")"));
    EXPECT_EQ("", errorOfName('"' + QByteArray(256, 'x') + '"'));
    EXPECT_THAT(errorOfName('"' + QByteArray(257, 'x') + '"'),
                EndsWith("expected a name of at most 256 bytes"));
    EXPECT_THAT(errorOf(R"({"group": "STATE", "node": "N", "brokers": [], "store": {},
                            "devices": []})"),
                EndsWith("found \"STATE\", expected a name other than STATE that does not begin "
                         "with $"));
    EXPECT_THAT(errorOf(settingsText(R"("primaryHost": "a/b")")), HasSubstr("/primaryHost: "));
}

TEST(SettingsErrors, DevicesDifferAlsoInLowerCase)
{
    EXPECT_EQ("/devices/1/name: two devices are called \"a\"",
              errorOf(deviceText(R"("name": "a", "project": "p"}, {"name": "a", "project": "q")")));
    EXPECT_EQ(
        "/devices/1/name: device \"ölpresse\" differs from \"Ölpresse\" only in upper and lower "
        "case, which many consumers do not tell apart",
        errorOf(deviceText(R"("name": "Ölpresse", "project": "p"},
                              {"name": "ölpresse", "project": "q")")));
}

TEST(SettingsErrors, ThereIsABrokerAndADevice)
{
    EXPECT_EQ("/brokers: found no broker, expected at least one",
              errorOf(R"({"group": "G", "node": "N", "brokers": [], "store": {"file": "s"},
                          "devices": []})"));
    EXPECT_EQ("/devices: found no device, expected at least one",
              errorOf(R"({"group": "G", "node": "N", "brokers": [{"host": "b"}],
                          "store": {"file": "s"}, "devices": []})"));
}

TEST(SettingsErrors, SixtyFourDevicesAreEnough)
{
    QByteArray devices = R"("name": "0", "project": "p")";
    for (int i = 1; i < 64; ++i)
        devices += R"(}, {"name": ")" + QByteArray::number(i) + R"(", "project": "p")";
    EXPECT_EQ("", errorOf(deviceText(devices)));
    EXPECT_EQ(
        "/devices: found 65 devices, expected at most 64; plc-gateway split divides them "
        "between processes",
        errorOf(deviceText(devices + R"(}, {"name": "x", "project": "p")")));
}

TEST(SettingsErrors, WritesAreRecorded)
{
    QByteArray text = deviceText(R"("name": "D", "project": "p", "writable": ["a"])");
    EXPECT_EQ("", errorOf(text));
    EXPECT_EQ(
        "/devices/0/writable: values can be written only where each write is recorded: name a "
        "file as \"audit\"",
        errorOf(text.replace(R"("audit": "a",)", "")));
}

TEST(SettingsErrors, MetricsAreForThisMachine)
{
    const auto listen = [](const QByteArray& address) {
        return errorOf(settingsText(R"("metrics": {"listen": ")" + address + R"("})"));
    };
    EXPECT_EQ("", listen("127.0.0.1:9108"));
    EXPECT_EQ("", listen("127.8.0.1:1"));
    EXPECT_EQ("", listen("[::1]:65535"));
    for (const char* address :
         {"0.0.0.0:9108", "192.168.0.1:9108", "[::]:9108", "::1:9108", "127.0.0.1", "127.0.0.1:0",
          "127.0.0.1:65536", "127.0.0.1:", ":9108", "", "localhost:9108", "128.0.0.1:9108"}) {
        EXPECT_EQ(listen(address), "/metrics/listen: found \"" + std::string(address) +
                                       "\", expected an address of this machine alone with a port, "
                                       "such as 127.0.0.1:9108");
    }
    EXPECT_EQ("/metrics: found an object, expected one of the keys \"listen\" and \"socket\"",
              errorOf(settingsText(R"("metrics": {"listen": "127.0.0.1:1", "socket": "s"})")));
    EXPECT_EQ("", errorOf(settingsText(R"("status": ")" + QByteArray(107, 'x') + "\"")));
    EXPECT_THAT(errorOf(settingsText(R"("status": ")" + QByteArray(108, 'x') + "\"")),
                EndsWith("expected a path of a socket, of at most 107 bytes"));
}

TEST(SettingsErrors, PortsDurationsAndSizesAreInRange)
{
    EXPECT_EQ("/brokers/0/port: found 0, expected a whole number from 1 to 65535",
              errorOf(brokerText(R"("host": "b", "port": 0)")));
    EXPECT_EQ("/devices/0/port: found 65536, expected a whole number from 1 to 65535",
              errorOf(deviceText(R"("name": "D", "project": "p", "port": 65536)")));
    for (const char* cycle :
         {"9", "\"9ms\"", "\"25h\"", "86400001", "\"soon\"", "10.5", "true", "-1"}) {
        EXPECT_THAT(
            errorOf(deviceText(R"("name": "D", "project": "p", "cycle": )" + QByteArray(cycle))),
            EndsWith("expected a number of ms or a duration such as \"500ms\" or \"1m30s\", from "
                     "10ms to 1d"))
            << cycle;
    }
    EXPECT_EQ("", errorOf(deviceText(R"("name": "D", "project": "p", "cycle": 10)")));
    EXPECT_EQ("", errorOf(deviceText(R"("name": "D", "project": "p", "cycle": "24h")")));
    for (const char* size : {"1048575", "\"1023k\"", "\"much\"", "null", "\"0M\""}) {
        EXPECT_THAT(errorOf(settingsText(R"("audit": "a")", R"("store": {"file": "s", "size": )" +
                                                                QByteArray(size) + "}")),
                    EndsWith("expected a number of bytes or a text such as \"100M\", at least "
                             "1048576"))
            << size;
    }
    EXPECT_EQ(
        "", errorOf(settingsText(R"("audit": "a")", R"("store": {"file": "s", "size": 1048576})")));
    EXPECT_EQ("",
              errorOf(settingsText(R"("audit": "a")", R"("store": {"file": "s", "size": "10G"})")));
    EXPECT_EQ(
        "/store/size: found 10737418241, expected at most 10G",
        errorOf(settingsText(R"("audit": "a")", R"("store": {"file": "s", "size": 10737418241})")));
    EXPECT_EQ("/keepAlive: found 4, expected a whole number from 5 to 3600",
              errorOf(settingsText(R"("keepAlive": 4)")));
}

TEST(SettingsErrors, DeadbandsAndLimitsMakeSense)
{
    EXPECT_EQ("/devices/0/deadband/0/deadband: found -0.1, expected a number of at least 0",
              errorOf(deviceText(R"("name": "D", "project": "p",
                                    "deadband": [{"labels": "a", "deadband": -0.1}])")));
    EXPECT_EQ(
        "/devices/0/writable/0: found a lowest value of 2, expected at most the highest one, "
        "1",
        errorOf(deviceText(R"("name": "D", "project": "p",
                                    "writable": [{"labels": "a", "lowest": 2, "highest": 1}])")));
    EXPECT_EQ(
        "/devices/0/writable/0: found 1, expected a label or an object with the key "
        "\"labels\"",
        errorOf(deviceText(R"("name": "D", "project": "p", "writable": [1])")));
    EXPECT_EQ(
        "/devices/0/labels: found no label, expected at least one; without the key it is what "
        "the project reads",
        errorOf(deviceText(R"("name": "D", "project": "p", "labels": [])")));
}

TEST(SettingsErrors, CredentialsAreComplete)
{
    EXPECT_EQ("/brokers/0/passwordFile: a password needs a user, which the key \"user\" names",
              errorOf(brokerText(R"("host": "b", "passwordFile": "w")")));
    EXPECT_EQ("/brokers/0/tls: a certificate and its key are given together or not at all",
              errorOf(brokerText(R"("host": "b", "tls": {"key": "k"})")));
    EXPECT_EQ("/brokers/0/protocol: found \"4\", expected \"3.1.1\" or \"5\"",
              errorOf(brokerText(R"("host": "b", "protocol": "4")")));
}

TEST(SettingsErrors, KeysOfOneFormatAreRefusedInTheOther)
{
    EXPECT_EQ("/retain: Sparkplug retains no values; \"retain\" is for the format \"json\"",
              errorOf(settingsText(R"("retain": true)")));
    EXPECT_EQ("", errorOf(settingsText(R"("retain": false)")));
    EXPECT_EQ("/primaryHost: \"primaryHost\" is for the format \"sparkplug\"",
              errorOf(settingsText(R"("format": "json", "primaryHost": "h")")));
    EXPECT_EQ("/format: found \"xml\", expected \"sparkplug\" or \"json\"",
              errorOf(settingsText(R"("format": "xml")")));
}

} // namespace
} // namespace test
} // namespace plc::gateway
