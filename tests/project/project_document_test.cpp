#include "project/project_document.h"

#include <gmock/gmock.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include "tests/project/project_text.h"

namespace plc::project {
namespace test {
namespace {

QJsonObject objectOf(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

/// A project, of which `text` is a file.
Project symbolsOf(const QByteArray& variables, const QByteArray& structures = "")
{
    return goodProject(projectText(variables, structures));
}

TEST(ProjectDocument, IsWrittenInLinesWithItsKeysInOrder)
{
    const Project symbols = symbolsOf(
        R"({"name": "tank", "type": "Tank", "area": 1, "offset": 4, "array": [[1, 2], [0, 3]]},
           {"name": "bits", "type": "WORD", "area": 2, "offset": 0, "unit": "°C",
            "description": "a \"b\""},
           {"name": "text", "type": "STRING", "length": 5, "area": 2, "offset": 1,
            "overlay": true})",
        R"({"name": "Tank", "size": 6, "description": "One",
            "members": [{"name": "level", "type": "REAL", "offset": 0}]})");
    EXPECT_EQ(R"({
  "name": "Line",
  "areas": [
    {"index": 1, "size": 1000},
    {"index": 2, "size": 100}
  ],
  "structures": [
    {"name": "Tank", "size": 6, "description": "One", "members": [
      {"name": "level", "type": "REAL", "offset": 0}
    ]}
  ],
  "scopes": [
    {"name": "MAIN", "variables": [
      {"name": "tank", "type": "Tank", "array": [[1, 2], [0, 3]], "area": 1, "offset": 4},
      {"name": "bits", "type": "WORD", "area": 2, "offset": 0, "unit": "°C", "description": "a \"b\""},
      {"name": "text", "type": "STRING", "length": 5, "area": 2, "offset": 1, "overlay": true}
    ]}
  ]
}
)",
              documentText(projectDocument(QStringLiteral("Line"), symbols)).toStdString());
}

TEST(ProjectDocument, KeepsAllOfTheDemoWhenItIsWritten)
{
    QFile file(QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject document = objectOf(file.readAll());
    const QByteArray text = documentText(document);
    EXPECT_EQ(document, objectOf(text));
    goodProject(text);
}

TEST(MergedDocument, KeepsEverythingThatIsNotDeclared)
{
    QJsonObject document = objectOf(R"({
        "name": "Old", "plc": {"address": "10.0.0.5"}, "settings": {"retryLimit": 5},
        "areas": [{"index": 1, "size": 500, "description": "Process"}, {"index": 7, "size": 5000}],
        "structures": [{"name": "Other", "size": 2,
                        "members": [{"name": "x", "type": "INT", "offset": 0}]}],
        "scopes": [{"name": "MAIN", "description": "All", "variables": [
            {"name": "old", "type": "INT", "area": 7, "offset": 0},
            {"name": "speed", "type": "INT", "area": 7, "offset": 10, "unit": "rpm",
             "description": "Speed", "signal": {"kind": "constant", "value": 5}}]},
          {"name": "Second", "variables": []}],
        "cyclic": ["MAIN.speed"]})");
    mergeSymbols(symbolsOf(R"({"name": "speed", "type": "DINT", "area": 1, "offset": 8},
                              {"name": "new", "type": "INT", "area": 2, "offset": 0})"),
                 &document);
    EXPECT_EQ(objectOf(R"({
        "name": "Old", "plc": {"address": "10.0.0.5"}, "settings": {"retryLimit": 5},
        "areas": [{"index": 1, "size": 1000, "description": "Process"}, {"index": 7, "size": 5000},
                  {"index": 2, "size": 100}],
        "structures": [{"name": "Other", "size": 2,
                        "members": [{"name": "x", "type": "INT", "offset": 0}]}],
        "scopes": [{"name": "MAIN", "description": "All", "variables": [
            {"name": "old", "type": "INT", "area": 7, "offset": 0},
            {"name": "speed", "type": "DINT", "area": 1, "offset": 8, "unit": "rpm",
             "description": "Speed", "signal": {"kind": "constant", "value": 5}},
            {"name": "new", "type": "INT", "area": 2, "offset": 0}]},
          {"name": "Second", "variables": []}],
        "cyclic": ["MAIN.speed"]})"),
              document)
        << documentText(document).constData();
}

TEST(MergedDocument, ReplacesStructuresButKeepsWhatIsSaidOfTheirMembers)
{
    QJsonObject document = objectOf(R"({"name": "Old", "areas": [], "scopes": [],
        "structures": [{"name": "Tank", "size": 8, "description": "A tank", "members": [
            {"name": "level", "type": "REAL", "offset": 0, "unit": "%"},
            {"name": "gone", "type": "INT", "offset": 4}]}]})");
    mergeSymbols(symbolsOf(R"({"name": "t", "type": "Tank", "area": 1, "offset": 0})",
                           R"({"name": "Tank", "size": 12, "members": [
                               {"name": "level", "type": "LREAL", "offset": 0},
                               {"name": "open", "type": "BOOL", "offset": 8}]})"),
                 &document);
    const QJsonArray structures = document.value(QLatin1String("structures")).toArray();
    ASSERT_EQ(1, structures.size());
    EXPECT_EQ(objectOf(R"({"name": "Tank", "size": 12, "description": "A tank", "members": [
                           {"name": "level", "type": "LREAL", "offset": 0, "unit": "%"},
                           {"name": "open", "type": "BOOL", "offset": 8}]})"),
              structures.first().toObject());
}

TEST(MergedDocument, IsTheSameAfterTheSecondTime)
{
    const Project symbols = symbolsOf(R"({"name": "a", "type": "INT", "area": 1, "offset": 8})");
    QJsonObject document = projectDocument(QStringLiteral("x"), symbols);
    const QJsonObject once = document;
    mergeSymbols(symbols, &document);
    EXPECT_EQ(once, document);
}

} // namespace
} // namespace test
} // namespace plc::project
