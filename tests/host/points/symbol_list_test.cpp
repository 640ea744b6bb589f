#include <gtest/gtest.h>

#include <map>
#include <string>

#include "driver/Communication_Protocol.h"
#include "driver/label_access.h"
#include "host/points/symbol_list.h"
#include "project/label_lookup.h"
#include "project/memory_layout.h"
#include "tests/project/project_text.h"
#include "values/iec_types.h"

namespace plc::host {
namespace {

/// Address, area and type as the driver finds them.
ControlInformationM resolved(const QString& label)
{
    ControlInformationM info = {};
    EXPECT_EQ(0, get_label_address_info(label, info)) << label.toStdString();
    return info;
}

void expectAgreement(const project::Project& project, const QString& label)
{
    const Expected<project::LabelTarget> target = project::LabelFinder(project).find(label);
    ASSERT_TRUE(target) << label.toStdString() << ": " << target.error().text.toStdString();
    const ControlInformationM info = resolved(label);
    EXPECT_EQ(target->address, info.address) << label.toStdString();
    EXPECT_EQ(target->area, info.areaIndex) << label.toStdString();
    EXPECT_EQ(target->variable->type->code, int(info.dataType)) << label.toStdString();
}

project::Project tableProject()
{
    return project::test::goodProject(project::test::projectText(
        R"({"name": "table", "type": "INT", "area": 1, "offset": 100, "array": [[0, 3], [1, 5]]},
           {"name": "cube", "type": "Rec", "area": 1, "offset": 200,
            "array": [[-1, 1], [2, 3], [0, 2]]},
           {"name": "lamp", "type": "BIT", "area": 2, "offset": 163})",
        R"({"name": "Rec", "size": 12, "members": [
            {"name": "a", "type": "UDINT", "offset": 0},
            {"name": "m", "type": "Inner", "offset": 4, "array": [[1, 2], [1, 2]]}]},
           {"name": "Inner", "size": 2, "members": [{"name": "x", "type": "BYTE", "offset": 1}]})"));
}

TEST(SymbolList, GivesEachDimensionTheBoundBehindItsLastElement)
{
    const QList<Label_Type_Info> symbols = symbolList(tableProject());
    ASSERT_EQ(1, symbols.size());
    EXPECT_EQ("MAIN", symbols[0].name.toStdString());
    ASSERT_EQ(1, symbols[0].typeDef.size());
    const Label_Type_Info& variables = symbols[0].typeDef[0];
    ASSERT_EQ(3u, variables.memberCount);
    ASSERT_EQ(3, variables.members.size());
    const Label_Type_Info& table = variables.members[0];
    EXPECT_EQ("table", table.name.toStdString());
    EXPECT_EQ(0x103, table.typeFlags);
    EXPECT_EQ(100, table.offset);
    EXPECT_EQ(2, table.dimCount);
    EXPECT_EQ((QList<int>{10, 0, 4, 1, 6}), table.arrayBounds);
    EXPECT_EQ((QList<int>{1}), table.areaInfo);
    EXPECT_TRUE(table.typeDef.isEmpty());
}

TEST(SymbolList, GivesStructuresTheirDefinition)
{
    const Label_Type_Info cube = symbolList(tableProject())[0].typeDef[0].members[1];
    EXPECT_EQ(0x10c, cube.typeFlags);
    ASSERT_EQ(1, cube.typeDef.size());
    const Label_Type_Info& definition = cube.typeDef[0];
    EXPECT_EQ(0x200, definition.typeFlags);
    EXPECT_EQ(12, definition.offset);
    EXPECT_EQ(2u, definition.memberCount);
    EXPECT_EQ("a", definition.members[0].name.toStdString());
    EXPECT_EQ(6, definition.members[0].typeFlags);
    EXPECT_TRUE(definition.members[0].areaInfo.isEmpty());
    EXPECT_EQ(0x10c, definition.members[1].typeFlags);
    EXPECT_EQ(2, definition.members[1].typeDef[0].offset);
}

TEST(SymbolList, LetsTheDriverFindEveryElementWhereTheProjectPutsIt)
{
    const project::Project project = tableProject();
    QList<Label_Type_Info> symbols = symbolList(project);
    PassVarName_2(&symbols);
    // Two rows do not share a place: 1 * 5 + 0 elements of 2 bytes.
    EXPECT_EQ(110, resolved(QStringLiteral("MAIN.table[1,1]")).address);
    EXPECT_EQ(108, resolved(QStringLiteral("MAIN.table[0,5]")).address);
    for (const char* pattern : {"MAIN.table[0..3,1..5]", "MAIN.cube[-1..1,2..3,0..2].a",
                                "MAIN.cube[-1..1,2..3,0..2].m[1..2,1..2].x"}) {
        const auto parts = project::parseLabel(QString::fromLatin1(pattern));
        ASSERT_TRUE(parts);
        const auto labels = project::expandPattern(*parts, 1000);
        ASSERT_TRUE(labels);
        for (const QString& label : *labels)
            expectAgreement(project, label);
    }
    expectAgreement(project, QStringLiteral("MAIN.lamp"));
}

TEST(SymbolList, LetsTheDriverFindTheWholeDemoPlant)
{
    const Expected<project::Project> project =
        project::loadProject(QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"));
    ASSERT_TRUE(project) << project.error().text.toStdString();
    QList<Label_Type_Info> symbols = symbolList(*project);
    PassVarName_2(&symbols);
    for (const project::CyclicLabel& cyclic : project->cyclic)
        expectAgreement(*project, cyclic.label);
}

/// values/ knows the driver's type codes by number: it uses nothing of the driver.
TEST(SymbolList, TypesHaveTheCodesOfTheDriversHeader)
{
    const std::map<std::string, int> codes = {
        {"BOOL", PLC_TYPE_BOOL},   {"BYTE", PLC_TYPE_BYTE},     {"SINT", PLC_TYPE_SINT},
        {"USINT", PLC_TYPE_USINT}, {"INT", PLC_TYPE_INT},       {"UINT", PLC_TYPE_UINT},
        {"WORD", PLC_TYPE_WORD},   {"DINT", PLC_TYPE_DINT},     {"UDINT", PLC_TYPE_UDINT},
        {"REAL", PLC_TYPE_REAL},   {"DWORD", PLC_TYPE_DWORD},   {"TIME", PLC_TYPE_DWORD},
        {"LREAL", PLC_TYPE_LREAL}, {"LINT", PLC_TYPE_LWORD},    {"ULINT", PLC_TYPE_LWORD},
        {"LWORD", PLC_TYPE_LWORD}, {"STRING", PLC_TYPE_STRING}, {"WSTRING", PLC_TYPE_WSTRING},
        {"BIT", PLC_TYPE_BIT}};
    size_t types = 0;
    for (const values::IecType* type = values::iecTypes(); type->name; ++type, ++types) {
        const auto code = codes.find(type->name);
        ASSERT_NE(codes.end(), code) << type->name;
        EXPECT_EQ(code->second, type->code) << type->name;
    }
    EXPECT_EQ(codes.size(), types);
}

} // namespace
} // namespace plc::host
