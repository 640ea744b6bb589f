#ifndef PLC_TESTS_GATEWAY_CONFIG_SETTINGS_TEXT_H
#define PLC_TESTS_GATEWAY_CONFIG_SETTINGS_TEXT_H

#include <gtest/gtest.h>

#include "gateway/config/settings.h"

namespace plc::gateway {
namespace test {

/// A configuration with one broker and one device, these `more` keys, and this store.
inline QByteArray settingsText(const QByteArray& more = R"("$schema": "x")",
                               const QByteArray& store = R"("store": {"file": "s"})")
{
    return R"({"group": "G", "node": "N", "brokers": [{"host": "b"}], )" + store + ", " + more +
           R"(, "devices": [{"name": "D", "project": "p"}]})";
}

/// A configuration with these brokers; the first one's braces stand around the text.
inline QByteArray brokerText(const QByteArray& broker)
{
    return R"({"group": "G", "node": "N", "store": {"file": "s"}, "brokers": [{)" + broker +
           R"(}], "devices": [{"name": "D", "project": "p"}]})";
}

/// A configuration that records writes, with these devices; the first one's braces stand around
/// the text.
inline QByteArray deviceText(const QByteArray& device)
{
    return R"({"group": "G", "node": "N", "store": {"file": "s"}, "audit": "a",
               "brokers": [{"host": "b"}], "devices": [{)" +
           device + "}]}";
}

/// The error that the text gives, without the file name in front; empty if it is good.
inline std::string errorOf(const QByteArray& json)
{
    const Expected<GatewaySettings> settings = parseSettings(json, QStringLiteral("g.json"));
    if (settings)
        return "";
    const std::string text = settings.error().text.toStdString();
    const std::string file = "g.json: ";
    EXPECT_EQ(file, text.substr(0, file.size()));
    EXPECT_EQ(std::string::npos, text.find('\n'));
    return text.substr(std::min(file.size(), text.size()));
}

inline GatewaySettings goodSettings(const QByteArray& json)
{
    const Expected<GatewaySettings> settings = parseSettings(json, QStringLiteral("g.json"));
    EXPECT_TRUE(settings) << settings.error().text.toStdString();
    return settings.valueOr(GatewaySettings());
}

} // namespace test
} // namespace plc::gateway

#endif
