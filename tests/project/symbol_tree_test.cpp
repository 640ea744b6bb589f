#include "project/symbol_tree.h"

#include <gmock/gmock.h>

#include "tests/project/project_text.h"
#include "values/iec_types.h"

namespace plc::project {
namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kVariables[] = R"(
    {"name": "pump", "type": "Pump", "area": 1, "offset": 100, "array": [[1, 3]]},
    {"name": "lamp", "type": "BIT", "area": 2, "offset": 35},
    {"name": "text", "type": "STRING", "length": 9, "area": 2, "offset": 20})";
constexpr char kStructures[] = R"(
    {"name": "Motor", "size": 4, "members": [{"name": "speed", "type": "INT", "offset": 2}]},
    {"name": "Pump", "size": 12, "members": [
      {"name": "flow", "type": "REAL", "offset": 0},
      {"name": "motors", "type": "Motor", "offset": 4, "array": [[0, 1]]}]})";

class SymbolTree : public ::testing::Test {
protected:
    /// One line for each node, two blanks for each level: "label area:address".
    std::vector<std::string> lines(const char* pattern = "", int depth = 0)
    {
        std::vector<std::string> lines;
        walkSymbolTree(project, QLatin1String(pattern), depth, [&lines](const SymbolNode& node) {
            lines.push_back(
                std::string(size_t(2 * (node.level - 1)), ' ') + node.label.toStdString() +
                (node.variable
                     ? " " + std::to_string(node.area) + ":" + std::to_string(node.address)
                     : ""));
        });
        return lines;
    }

    Project project = goodProject(projectText(kVariables, kStructures));
};

TEST_F(SymbolTree, TakesStructuresApartWithTheAddressesOfFirstElements)
{
    EXPECT_THAT(lines(),
                ElementsAre("MAIN", "  MAIN.pump[1..3] 1:100", "    MAIN.pump[1..3].flow 1:100",
                            "    MAIN.pump[1..3].motors[0..1] 1:104",
                            "      MAIN.pump[1..3].motors[0..1].speed 1:106", "  MAIN.lamp 2:35",
                            "  MAIN.text 2:20"));
}

TEST_F(SymbolTree, EndsAtItsDepth)
{
    EXPECT_THAT(lines("", 1), ElementsAre("MAIN"));
    EXPECT_THAT(lines("", 2), ElementsAre("MAIN", "  MAIN.pump[1..3] 1:100", "  MAIN.lamp 2:35",
                                          "  MAIN.text 2:20"));
    EXPECT_EQ(lines(), lines("", 4));
}

TEST_F(SymbolTree, ShowsWhatMatchesAndWhatItIsPartOf)
{
    EXPECT_THAT(lines("*.SPEED"), ElementsAre("MAIN", "  MAIN.pump[1..3] 1:100",
                                              "    MAIN.pump[1..3].motors[0..1] 1:104",
                                              "      MAIN.pump[1..3].motors[0..1].speed 1:106"));
    EXPECT_THAT(lines("lam"), ElementsAre("MAIN", "  MAIN.lamp 2:35"));
    EXPECT_THAT(lines("*.speed", 2), ElementsAre("MAIN", "  MAIN.pump[1..3] 1:100"));
    EXPECT_THAT(lines("none"), IsEmpty());
}

TEST_F(SymbolTree, TellsTheLastOfWhatIsShown)
{
    std::vector<std::string> last;
    walkSymbolTree(project, QStringLiteral("M*o*"), 0, [&last](const SymbolNode& node) {
        if (node.isLast)
            last.push_back(node.label.toStdString());
    });
    // Of the pump flow matches too, of the scope neither lamp nor text.
    EXPECT_THAT(last, ElementsAre("MAIN", "MAIN.pump[1..3]", "MAIN.pump[1..3].motors[0..1]",
                                  "MAIN.pump[1..3].motors[0..1].speed"));
}

TEST_F(SymbolTree, ShowsTheFirstLevelsOfStructuresThatMultiply)
{
    // 50^16 values: nobody waits for a walk through all of them.
    Project large;
    auto inner = std::make_shared<StructureType>();
    inner->name = QStringLiteral("S1");
    Variable value;
    value.type = values::findIecType(QStringLiteral("BYTE"));
    value.name = QStringLiteral("value");
    inner->members = QVector<Variable>(50, value);
    for (int level = 2; level <= 16; ++level) {
        Variable member;
        member.name = QStringLiteral("member");
        member.structure = inner;
        inner = std::make_shared<StructureType>();
        inner->name = QStringLiteral("S%1").arg(level);
        inner->members = QVector<Variable>(50, member);
    }
    Variable top;
    top.name = QStringLiteral("top");
    top.structure = inner;
    large.scopes.append({QStringLiteral("G"), {top}});
    int nodes = 0;
    walkSymbolTree(large, QString(), 3, [&nodes](const SymbolNode&) { ++nodes; });
    EXPECT_EQ(1 + 1 + 50, nodes);
}

TEST_F(SymbolTree, NamesTypes)
{
    const QVector<Variable>& variables = project.scopes[0].variables;
    EXPECT_EQ("Pump", typeName(variables[0]).toStdString());
    EXPECT_EQ("BIT", typeName(variables[1]).toStdString());
    EXPECT_EQ("STRING(9)", typeName(variables[2]).toStdString());
}

} // namespace
} // namespace test
} // namespace plc::project
