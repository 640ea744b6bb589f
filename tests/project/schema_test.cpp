#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

#include "project/signal_kinds.h"
#include "tests/project/project_text.h"
#include "values/iec_types.h"

// The schema is for editors; the loader does not read it. These keep the two together.

namespace plc::project {
namespace {

using Names = QSet<QString>;

QJsonObject at(QJsonObject object, const char* path)
{
    for (const QString& key : QString::fromLatin1(path).split(QLatin1Char('/')))
        object = object.value(key).toObject();
    return object;
}

Names names(const QStringList& list)
{
    return Names(list.begin(), list.end());
}

Names names(const QJsonValue& list)
{
    Names result;
    for (const QJsonValue& name : list.toArray())
        result.insert(name.toString());
    return result;
}

/// What the loader takes for known keys, as its complaint about an unknown one lists them.
Names loaderKeys(const QByteArray& documentWithUnknownKey)
{
    const QString error = QString::fromStdString(test::errorOf(documentWithUnknownKey));
    const QString intro = QStringLiteral("expected one of ");
    EXPECT_TRUE(error.contains(intro)) << error.toStdString();
    return names(error.mid(error.indexOf(intro) + intro.size()).split(QStringLiteral(", ")));
}

class Schema : public testing::Test {
protected:
    Schema()
    {
        QFile file(QStringLiteral(PLC_SOURCE_DIR "/docs/project-file.schema.json"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        m_schema = QJsonDocument::fromJson(file.readAll()).object();
        EXPECT_FALSE(m_schema.isEmpty());
    }

    void expectKeys(const char* path, const QByteArray& documentWithUnknownKey) const
    {
        const QJsonObject object = path[0] == 0 ? m_schema : at(m_schema, path);
        EXPECT_EQ(names(object.value(QLatin1String("properties")).toObject().keys()),
                  loaderKeys(documentWithUnknownKey))
            << path;
        EXPECT_TRUE(object.contains(QLatin1String("additionalProperties"))) << path;
    }

    QJsonObject m_schema;
};

TEST_F(Schema, KnowsTheKeysOfTheLoader)
{
    const QByteArray rest = R"("name": "n", "areas": [], "scopes": []})";
    expectKeys("", R"({"xyz": 1, )" + rest);
    expectKeys("properties/plc", R"({"plc": {"xyz": 1}, )" + rest);
    expectKeys("properties/settings", R"({"settings": {"xyz": 1}, )" + rest);
    expectKeys("properties/areas/items", R"({"name": "n", "areas": [{"xyz": 1}], "scopes": []})");
    expectKeys("properties/structures/items", R"({"structures": [{"xyz": 1}], )" + rest);
    expectKeys("properties/scopes/items", R"({"name": "n", "areas": [], "scopes": [{"xyz": 1}]})");
    expectKeys("$defs/variable", test::projectText(R"({"xyz": 1})"));
    expectKeys("$defs/member",
               test::projectText("", R"({"name": "S", "size": 1, "members": [{"xyz": 1}]})"));
}

TEST_F(Schema, KnowsTheTypes)
{
    Names types;
    for (const values::IecType* type = values::iecTypes(); type->name; ++type)
        types.insert(QString::fromLatin1(type->name));
    EXPECT_EQ(types, names(at(m_schema, "$defs/type")
                               .value(QLatin1String("anyOf"))
                               .toArray()[0]
                               .toObject()
                               .value(QLatin1String("enum"))));
}

TEST_F(Schema, KnowsTheSignalsAndTheirParameters)
{
    Names kinds;
    for (const QJsonValue& value :
         at(m_schema, "$defs/signal").value(QLatin1String("oneOf")).toArray()) {
        const QJsonObject form = value.toObject();
        const QString name = at(form, "properties/kind").value(QLatin1String("const")).toString();
        const SignalKind* kind = findSignalKind(name);
        ASSERT_NE(nullptr, kind) << name.toStdString();
        kinds.insert(name);
        Names required{QStringLiteral("kind")};
        Names known{QStringLiteral("kind")};
        for (const SignalParameter* each = kind->parameters; each->name; ++each) {
            known.insert(QString::fromLatin1(each->name));
            if (each->required)
                required.insert(QString::fromLatin1(each->name));
        }
        if (name == QLatin1String(kConstantSignal)) {
            known.insert(QStringLiteral("value"));
            required.insert(QStringLiteral("value"));
        }
        EXPECT_EQ(known, names(at(form, "properties").keys())) << name.toStdString();
        EXPECT_EQ(required, names(form.value(QLatin1String("required")))) << name.toStdString();
    }
    EXPECT_EQ(names(signalKindNames()), kinds);
}

TEST_F(Schema, DefaultsOfTheSettingsAreThoseOfTheLoader)
{
    const ProjectSettings defaults;
    const QJsonObject settings = at(m_schema, "properties/settings/properties");
    const auto defaultOf = [&settings](const char* key) {
        return settings.value(QLatin1String(key)).toObject().value(QLatin1String("default"));
    };
    EXPECT_EQ(defaults.maxReadBytes, defaultOf("maxReadBytes").toInt());
    EXPECT_EQ(defaults.defaultStation, defaultOf("defaultStation").toInt(-1));
    EXPECT_EQ(defaults.multiStation, defaultOf("multiStation").toBool(true));
    EXPECT_EQ(defaults.retryLimit, defaultOf("retryLimit").toInt());
    EXPECT_EQ(defaults.connectTimeout, defaultOf("connectTimeout").toInt());
    EXPECT_EQ(defaults.replyTimeout, defaultOf("replyTimeout").toInt());
    EXPECT_EQ(defaults.reconnectDelay, defaultOf("reconnectDelay").toInt());
    EXPECT_EQ(defaults.reconnectDelayLimit, defaultOf("reconnectDelayLimit").toInt());
    EXPECT_EQ(defaults.staleAfter, defaultOf("staleAfter").toInt());
    EXPECT_EQ(defaults.readOnly, defaultOf("readOnly").toBool(true));
}

} // namespace
} // namespace plc::project
