#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

#include "options/readers.h"
#include "tests/gateway/config/settings_text.h"

// The schema is for editors; the loader does not read it. These keep the two together.

namespace plc::gateway {
namespace test {
namespace {

using Names = QSet<QString>;

QByteArray content(const char* path)
{
    QFile file(QStringLiteral(PLC_SOURCE_DIR "/") + QString::fromLatin1(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return file.readAll();
}

QJsonObject at(QJsonObject object, const char* path)
{
    for (const QString& key : QString::fromLatin1(path).split(QLatin1Char('/'))) {
        if (!key.isEmpty())
            object = object.value(key).toObject();
    }
    return object;
}

Names names(const QStringList& list)
{
    return Names(list.begin(), list.end());
}

/// What the loader takes for known keys, as its complaint about an unknown one lists them.
QStringList loaderKeys(const QByteArray& documentWithUnknownKey)
{
    const QString error = QString::fromStdString(errorOf(documentWithUnknownKey));
    const QString intro = QStringLiteral("expected one of ");
    EXPECT_TRUE(error.contains(intro)) << error.toStdString();
    return error.mid(error.indexOf(intro) + intro.size()).split(QStringLiteral(", "));
}

class ConfigSchema : public testing::Test {
protected:
    void expectKeys(const char* path, const QByteArray& documentWithUnknownKey) const
    {
        const QJsonObject object = at(m_schema, path);
        const QStringList keys = loaderKeys(documentWithUnknownKey);
        EXPECT_EQ(names(object.value(QLatin1String("properties")).toObject().keys()), names(keys))
            << path;
        EXPECT_EQ(QJsonValue(false), object.value(QLatin1String("additionalProperties"))) << path;
        // The loader names those that it requires first.
        QStringList required;
        for (const QJsonValue& key : object.value(QLatin1String("required")).toArray())
            required.append(key.toString());
        EXPECT_EQ(required, keys.mid(0, required.size())) << path;
    }
    QJsonObject property(const char* path) const { return at(m_schema, path); }

    const QJsonObject m_schema =
        QJsonDocument::fromJson(content("docs/gateway-config.schema.json")).object();
};

TEST_F(ConfigSchema, KnowsTheKeysOfTheLoader)
{
    expectKeys("", R"({"xyz": 1})");
    expectKeys("properties/brokers/items", brokerText(R"("xyz": 1)"));
    expectKeys("properties/brokers/items/properties/tls",
               brokerText(R"("host": "b", "tls": {"xyz": 1})"));
    expectKeys("properties/store", settingsText(R"("audit": "a")", R"("store": {"xyz": 1})"));
    expectKeys("properties/metrics", settingsText(R"("metrics": {"xyz": 1})"));
    expectKeys("properties/devices/items", deviceText(R"("xyz": 1)"));
    const QByteArray device = R"("name": "D", "project": "p", )";
    expectKeys("properties/devices/items/properties/deadband/items",
               deviceText(device + R"("deadband": [{"xyz": 1}])"));
    const QJsonArray forms = property("properties/devices/items/properties/writable/items")
                                 .value(QLatin1String("anyOf"))
                                 .toArray();
    EXPECT_EQ(names(forms[1].toObject().value(QLatin1String("properties")).toObject().keys()),
              names(loaderKeys(deviceText(device + R"("writable": [{"xyz": 1}])"))));
}

TEST_F(ConfigSchema, DefaultsAreThoseOfTheLoader)
{
    const GatewaySettings defaults = goodSettings(settingsText());
    const auto defaultOf = [this](const char* path) {
        return property(path).value(QLatin1String("default"));
    };
    EXPECT_EQ("sparkplug", defaultOf("properties/format").toString().toStdString());
    EXPECT_EQ(defaults.keepAlive, defaultOf("properties/keepAlive").toInt());
    EXPECT_EQ(defaults.retainsValues, defaultOf("properties/retain").toBool(true));
    EXPECT_EQ(defaults.historyRate, defaultOf("properties/store/properties/rate").toInt());
    EXPECT_EQ(std::optional(defaults.storeSize),
              options::sizeOf(defaultOf("properties/store/properties/size").toString()));
    EXPECT_EQ("1s",
              defaultOf("properties/devices/items/properties/cycle").toString().toStdString());
    EXPECT_EQ(1000, defaults.devices[0].cycleTime);
    EXPECT_EQ(kMostDevices,
              property("properties/devices").value(QLatin1String("maxItems")).toInt());
}

/// The keys of a schema and of all that it holds.
void collectKeys(const QJsonValue& schema, QStringList* keys)
{
    if (schema.isArray()) {
        for (const QJsonValue& part : schema.toArray())
            collectKeys(part, keys);
        return;
    }
    const QJsonObject object = schema.toObject();
    keys->append(object.value(QLatin1String("properties")).toObject().keys());
    for (const QString& key : object.keys())
        collectKeys(object.value(key), keys);
}

TEST_F(ConfigSchema, TheGuideNamesEveryKey)
{
    const QString guide = QString::fromUtf8(content("docs/gateway.md"));
    QStringList keys;
    collectKeys(m_schema, &keys);
    EXPECT_GT(keys.size(), 30);
    for (const QString& key : names(keys)) {
        // `key`, `key.member` or `member.key`
        const bool isNamed = guide.contains('`' + key + '`') || guide.contains('`' + key + '.') ||
                             guide.contains('.' + key + '`');
        EXPECT_TRUE(isNamed || key == QLatin1String("$schema")) << key.toStdString();
    }
}

TEST_F(ConfigSchema, TheConfigurationOfTheGuideIsGood)
{
    const QByteArray guide = content("docs/gateway.md");
    const int begin = int(guide.indexOf("```json\n{\n  \"group\"")) + int(sizeof "```json");
    EXPECT_EQ("", errorOf(guide.mid(begin, guide.indexOf("```", begin) - begin)));
}

TEST_F(ConfigSchema, TheExampleIsGood)
{
    EXPECT_EQ("", errorOf(content("docs/examples/gateway.json")));
}

} // namespace
} // namespace test
} // namespace plc::gateway
