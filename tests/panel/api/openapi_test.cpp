#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <map>
#include <set>

#include "panel/access/role_name.h"
#include "panel/api/api_routes.h"

namespace plc::panel {
namespace {

QJsonObject document()
{
    QFile file(QStringLiteral(PLC_SOURCE_DIR "/docs/openapi.json"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll(), &error).object();
    EXPECT_EQ(QJsonParseError::NoError, error.error) << error.errorString().toStdString();
    return object;
}

std::string textOf(const QJsonValue& value)
{
    return value.toString().toStdString();
}

std::string roleText(Role role)
{
    return role == Role::None ? "none" : roleName(role).toStdString();
}

/// "GET /api/v1/plcs" -> "viewer" of what the server serves; without the page.
std::map<std::string, std::string> served()
{
    std::map<std::string, std::string> found;
    for (const Route& route : apiRoutes({}))
        found[methodName(route.method) + (" " + route.pattern.toStdString())] =
            roleText(route.least);
    return found;
}

QJsonObject paths()
{
    return document()[QStringLiteral("paths")].toObject();
}

TEST(OpenApi, PathsMethodsAndRolesAreThoseOfTheServer)
{
    std::map<std::string, std::string> documented;
    const QJsonObject all = paths();
    for (auto path = all.begin(); path != all.end(); ++path) {
        const QJsonObject operations = path.value().toObject();
        for (auto operation = operations.begin(); operation != operations.end(); ++operation)
            documented[operation.key().toUpper().toStdString() + " " + path.key().toStdString()] =
                textOf(operation.value().toObject()[QStringLiteral("x-role")]);
    }
    EXPECT_EQ(served(), documented);
}

TEST(OpenApi, WhatChangesMayBeAskedTooOftenOrOfAnotherRun)
{
    const QJsonObject all = paths();
    int changing = 0;
    for (const Route& route : apiRoutes({})) {
        if (route.kind != Route::Changes)
            continue;
        ++changing;
        const QJsonObject responses =
            all[QString::fromLatin1(route.pattern)]
                .toObject()[QString::fromLatin1(methodName(route.method)).toLower()]
                .toObject()[QStringLiteral("responses")]
                .toObject();
        for (const char* status : {"401", "403", "412", "429", "503"})
            EXPECT_TRUE(responses.contains(QLatin1String(status)))
                << methodName(route.method) << ' ' << route.pattern.toStdString() << ' ' << status;
    }
    EXPECT_EQ(5, changing);
}

TEST(OpenApi, EachParameterOfAPathIsDescribed)
{
    const QJsonObject all = paths();
    for (auto path = all.begin(); path != all.end(); ++path) {
        const bool hasParameter = path.key().contains(QLatin1Char('{'));
        const QString name =
            path.key().section(QLatin1Char('{'), 1).section(QLatin1Char('}'), 0, 0);
        const QJsonObject operations = path.value().toObject();
        for (const QJsonValue operation : operations) {
            std::set<std::string> described;
            const QJsonArray parameters =
                operation.toObject()[QStringLiteral("parameters")].toArray();
            for (const QJsonValue parameter : parameters) {
                const QJsonObject each = parameter.toObject();
                if (textOf(each[QStringLiteral("in")]) == "path")
                    described.insert(textOf(each[QStringLiteral("name")]));
            }
            EXPECT_EQ(
                hasParameter ? std::set<std::string>{name.toStdString()} : std::set<std::string>{},
                described)
                << path.key().toStdString();
        }
    }
}

void gatherReferences(const QJsonValue& value, std::set<std::string>* references)
{
    if (value.isArray()) {
        const QJsonArray list = value.toArray();
        for (const QJsonValue each : list)
            gatherReferences(each, references);
    }
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (member.key() == QLatin1String("$ref"))
            references->insert(textOf(member.value()));
        gatherReferences(member.value(), references);
    }
}

TEST(OpenApi, WhatIsReferredToIsThereAndAllThatIsThereIsReferredTo)
{
    const QJsonObject whole = document();
    std::set<std::string> references;
    gatherReferences(whole, &references);
    std::set<std::string> present;
    for (const char* kind : {"schemas", "responses", "parameters"}) {
        const QJsonObject all =
            whole[QStringLiteral("components")].toObject()[QLatin1String(kind)].toObject();
        for (const QString& name : all.keys())
            present.insert("#/components/" + std::string(kind) + "/" + name.toStdString());
    }
    EXPECT_EQ(present, references);
}

} // namespace
} // namespace plc::panel
