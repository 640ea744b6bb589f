#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
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

/// Each object of the schema that lists properties, by its place: "/$defs/plc".
QMap<QString, QJsonObject> objectsWithin(const QJsonValue& value, const QString& place = {})
{
    QMap<QString, QJsonObject> found;
    const auto addWithin = [&](const QString& key, const QJsonValue& part) {
        const QMap<QString, QJsonObject> within =
            objectsWithin(part, place + QLatin1Char('/') + key);
        for (auto one = within.begin(); one != within.end(); ++one)
            found.insert(one.key(), *one);
    };
    const QJsonObject object = value.toObject();
    const QJsonArray list = value.toArray();
    if (object.contains(QLatin1String("properties")))
        found.insert(place, object);
    for (auto member = object.begin(); member != object.end(); ++member)
        addWithin(member.key(), member.value());
    for (int i = 0; i < int(list.size()); ++i)
        addWithin(QString::number(i), list[i]);
    return found;
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

/// A PLC with an unknown key in it.
QByteArray plcWith(const char* members)
{
    return QByteArray("{'plcs':[{'name':'a','project':'p',") + members + "}]}";
}

TEST(PanelConfigSchema, HasTheKeysOfTheLoader)
{
    const QMap<QString, QByteArray> unknown{
        {QString(), "{'plcs':[],'?':1}"},
        {QStringLiteral("/properties/tls"),
         "{'plcs':[],'tls':{'certificate':'c','key':'k','?':1}}"},
        {QStringLiteral("/properties/record"), "{'plcs':[],'record':{'file':'f','?':1}}"},
        {QStringLiteral("/$defs/plc"), plcWith("'?':1")},
        {QStringLiteral("/$defs/plc/properties/deadband/items"),
         plcWith("'deadband':[{'labels':'x','deadband':1,'?':1}]")},
        {QStringLiteral("/$defs/plc/properties/writable/items/oneOf/1"),
         plcWith("'writable':[{'labels':'x','?':1}]")},
        {QStringLiteral("/$defs/alarm"), plcWith("'alarms':[{'label':'x','?':1}]")}};
    const QMap<QString, QJsonObject> objects = objectsWithin(schema());
    EXPECT_EQ(unknown.keys(), objects.keys()) << "all objects of the schema, and no others";
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        SCOPED_TRACE(object.key().toStdString());
        const QStringList keys = object->value(QLatin1String("properties")).toObject().keys();
        EXPECT_EQ(loaderKeys(unknown.value(object.key())), QSet<QString>(keys.begin(), keys.end()));
        EXPECT_EQ(QJsonValue(false), object->value(QLatin1String("additionalProperties")));
    }
}

} // namespace
} // namespace plc::panel
