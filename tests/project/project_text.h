#ifndef PLC_TESTS_PROJECT_PROJECT_TEXT_H
#define PLC_TESTS_PROJECT_PROJECT_TEXT_H

#include <gtest/gtest.h>

#include <QtCore/QByteArray>

#include "project/project.h"

namespace plc::project {
namespace test {

/// A project document with these structures and variables of the scope MAIN; area 1 has 1000 bytes,
/// area 2 has 100.
inline QByteArray projectText(const QByteArray& variables, const QByteArray& structures = "",
                              const QByteArray& cyclic = "")
{
    return R"({"name": "test", "areas": [{"index": 1, "size": 1000}, {"index": 2, "size": 100}],
               "structures": [)" +
           structures + R"(], "scopes": [{"name": "MAIN", "variables": [)" + variables +
           R"(]}], "cyclic": [)" + cyclic + "]}";
}

/// The error that the document gives, without the file name in front; empty if it is good.
inline std::string errorOf(const QByteArray& json)
{
    const Expected<Project> project = parseProject(json, QStringLiteral("test.json"));
    if (project)
        return "";
    const std::string text = project.error().text.toStdString();
    const std::string file = "test.json: ";
    EXPECT_EQ(file, text.substr(0, file.size()));
    EXPECT_EQ(std::string::npos, text.find('\n'));
    return text.substr(std::min(file.size(), text.size()));
}

/// The project of a document that must be good.
inline Project goodProject(const QByteArray& json)
{
    const Expected<Project> project = parseProject(json, QStringLiteral("test.json"));
    EXPECT_TRUE(project) << project.error().text.toStdString();
    return project.valueOr(Project());
}

} // namespace test
} // namespace plc::project

#endif
