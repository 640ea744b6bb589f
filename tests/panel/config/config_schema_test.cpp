#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

#include "panel/config/settings.h"

// The schema is for editors; the loader does not read it. These keep the two together.

namespace plc::panel {
namespace {

QJsonObject schema()
{
    QFile file(QStringLiteral(PLC_SOURCE_DIR "/docs/panel-config.schema.json"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    EXPECT_TRUE(document.isObject());
    return document.object();
}

QJsonObject at(QJsonObject object, const char* path)
{
    for (const QString& key : QString::fromLatin1(path).split(QLatin1Char('/'))) {
        if (!key.isEmpty())
            object = object.value(key).toObject();
    }
    return object;
}

/// What the loader takes for known keys, as its complaint about an unknown one lists them.
QSet<QString> loaderKeys(QByteArray json)
{
    const Expected<PanelSettings> settings =
        parseSettings(json.replace('\'', '"'), QStringLiteral("c"));
    EXPECT_FALSE(settings);
    const QString error = settings ? QString() : settings.error().text;
    const QString intro = QStringLiteral("expected one of ");
    EXPECT_TRUE(error.contains(intro)) << error.toStdString();
    const QStringList keys =
        error.mid(error.indexOf(intro) + intro.size()).split(QStringLiteral(", "));
    return {keys.begin(), keys.end()};
}

void expectKeys(const char* path, const QByteArray& json)
{
    const QJsonObject object = at(schema(), path);
    const QStringList keys = object.value(QLatin1String("properties")).toObject().keys();
    EXPECT_EQ(loaderKeys(json), QSet<QString>(keys.begin(), keys.end())) << path;
    EXPECT_EQ(QJsonValue(false), object.value(QLatin1String("additionalProperties"))) << path;
}

TEST(PanelConfigSchema, HasTheKeysOfTheLoader)
{
    expectKeys("", "{'plcs':[],'?':1}");
    expectKeys("properties/tls", "{'plcs':[],'tls':{'certificate':'c','key':'k','?':1}}");
    expectKeys("properties/record", "{'plcs':[],'record':{'file':'f','?':1}}");
    expectKeys("$defs/plc", "{'plcs':[{'name':'a','project':'p','?':1}]}");
    expectKeys("$defs/alarm",
               "{'plcs':[{'name':'a','project':'p','alarms':[{'label':'x','?':1}]}]}");
}

} // namespace
} // namespace plc::panel
