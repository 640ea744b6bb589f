#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include "host/points/symbol_list.h"
#include "tests/project/project_text.h"
#include "tests/support/random.h"

// Documents near a good one: whatever a slip of the hand makes of it, it is read or refused in one
// line.

namespace plc::host {
namespace {

using plc::test::Random;

QByteArray demoPlant()
{
    QFile file(QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

/// Whether the document was read; if not, checks the error.
bool isRead(const QByteArray& json)
{
    const Expected<project::Project> project =
        project::parseProject(json, QStringLiteral("x.json"));
    if (project) {
        const QList<Label_Type_Info> symbols = symbolList(*project);
        EXPECT_EQ(project->scopes.size(), symbols.size());
    } else {
        const QString& error = project.error().text;
        EXPECT_TRUE(error.startsWith(QLatin1String("x.json: "))) << error.toStdString();
        EXPECT_FALSE(error.contains(QLatin1Char('\n'))) << error.toStdString();
    }
    return project.hasValue();
}

QJsonValue randomValue(Random* random)
{
    switch (random->below(11)) {
        case 0:
            return QJsonValue();
        case 1:
            return random->oneIn(2);
        case 2:
            return random->between(-3, 300);
        case 3:
            return 2147483647.0;
        case 4:
            return -1e300;
        case 5:
            return 0.5;
        case 6:
            return QString();
        case 7:
            return QStringLiteral("Tank");
        case 8:
            return QStringLiteral("BIT");
        case 9:
            return QJsonArray{1, 2147483646};
        default:
            return QJsonObject{{QStringLiteral("kind"), QStringLiteral("walk")}};
    }
}

/// The value with one value somewhere inside replaced or left out.
QJsonValue changed(const QJsonValue& value, Random* random)
{
    if (value.isArray() && !value.toArray().isEmpty() && !random->oneIn(8)) {
        QJsonArray array = value.toArray();
        const int index = random->below(int(array.size()));
        if (random->oneIn(10))
            array.removeAt(index);
        else
            array[index] = changed(array.at(index), random);
        return array;
    }
    if (value.isObject() && !value.toObject().isEmpty() && !random->oneIn(8)) {
        QJsonObject object = value.toObject();
        const QString key = object.keys().at(random->below(int(object.size())));
        if (random->oneIn(10))
            object.remove(key);
        else
            object[key] = changed(object.value(key), random);
        return object;
    }
    return randomValue(random);
}

TEST(RandomDocuments, WithOneByteChangedAreReadOrRefused)
{
    const QByteArray good = demoPlant();
    Random random(5);
    int read = 0;
    const int rounds = 200;
    for (int round = 0; round < rounds; ++round) {
        QByteArray json = good;
        json[random.below(int(json.size()))] = char(random.bits());
        read += isRead(json) ? 1 : 0;
    }
    EXPECT_GT(read, 0);
    EXPECT_LT(read, rounds);
}

TEST(RandomDocuments, WithOneValueChangedAreReadOrRefused)
{
    const QJsonValue good = QJsonDocument::fromJson(demoPlant()).object();
    Random random(6);
    int read = 0;
    const int rounds = 300;
    for (int round = 0; round < rounds; ++round) {
        const QJsonValue json = changed(good, &random);
        if (json.isObject())
            read += isRead(QJsonDocument(json.toObject()).toJson()) ? 1 : 0;
    }
    EXPECT_GT(read, 0);
    EXPECT_LT(read, rounds / 2);
}

} // namespace
} // namespace plc::host
