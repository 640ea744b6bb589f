#include <gtest/gtest.h>

#include "project/symbol_selection.h"
#include "tests/project/project_text.h"

namespace plc::project {
namespace {

using test::goodProject;
using test::projectText;

std::vector<std::string> namesOf(const Symbols& symbols)
{
    std::vector<std::string> names;
    for (const std::shared_ptr<const StructureType>& structure : symbols.structures)
        names.push_back(structure->name.toStdString());
    for (const ScopeDefinition& scope : symbols.scopes) {
        for (const Variable& variable : scope.variables)
            names.push_back((scope.name + QLatin1Char('.') + variable.name).toStdString());
    }
    return names;
}

Project structuredProject()
{
    return goodProject(projectText(
        R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [[1, 3]]},
           {"name": "b", "type": "INT", "area": 1, "offset": 10},
           {"name": "c", "type": "Outer", "area": 1, "offset": 20})",
        R"({"name": "Outer", "size": 4, "members": [{"name": "i", "type": "Inner", "offset": 0}]},
           {"name": "Other", "size": 2, "members": [{"name": "x", "type": "INT", "offset": 0}]},
           {"name": "Inner", "size": 4, "members": [{"name": "x", "type": "INT", "offset": 0}]})"));
}

TEST(SymbolSelection, HoldsTheVariablesOfTheLabelsAlone)
{
    const Project project = structuredProject();
    const QStringList labels{QStringLiteral("MAIN.a[2]"), QStringLiteral("MAIN.nothing"),
                             QStringLiteral("Else.a"), QStringLiteral("no label")};
    EXPECT_EQ(std::vector<std::string>{"MAIN.a"}, namesOf(symbolsFor(labels, project)));
    EXPECT_TRUE(namesOf(symbolsFor({}, project)).empty());
}

TEST(SymbolSelection, HoldsTheStructuresThatTheVariablesAreMadeOf)
{
    EXPECT_EQ((std::vector<std::string>{"Inner", "Outer", "MAIN.c"}),
              namesOf(symbolsFor({QStringLiteral("MAIN.c.i.x")}, structuredProject())));
}

} // namespace
} // namespace plc::project
