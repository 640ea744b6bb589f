#include "host/points/data_point.h"

#include "project/symbol_walk.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

class DataPointTest : public HostTest {
protected:
    QString complaint(const char* text)
    {
        const Expected<DataPoint> found = runtime->points().find(QString::fromUtf8(text));
        EXPECT_FALSE(found) << text;
        return found ? QString() : found.error().text;
    }
};

TEST_F(DataPointTest, KnowsTypePlaceAndUnit)
{
    const DataPoint speed = point("Main.speed");
    EXPECT_STREQ(speed.type->name, "INT");
    EXPECT_EQ(speed.area, 1);
    EXPECT_EQ(speed.address, 4);
    EXPECT_EQ(speed.elements, 1);
    EXPECT_EQ(speed.unit, "rpm");
    EXPECT_EQ(speed.station, 0);
}

TEST_F(DataPointTest, ElementsFollowEachOtherThroughAllDimensions)
{
    // Rows of five: [2,3] is element 2 x 5 + 2.
    EXPECT_EQ(point("Main.table[2,3]").address, 100 + 2 * 12);
    EXPECT_EQ(point("Main.table[0,5]").address, 108);
    EXPECT_EQ(point("Main.table[1,1]").address, 110);
    EXPECT_EQ(point("Main.table[3,5]").address, 138);
}

TEST_F(DataPointTest, MembersOfStructuresHaveTheirPlace)
{
    EXPECT_EQ(point("Main.axis[3].speed").address, 200 + 2 * 8 + 4);
    EXPECT_STREQ(point("Main.axis[3].position").type->name, "DINT");
}

TEST_F(DataPointTest, SliceTakesElementsFromThatOneOn)
{
    const DataPoint slice = point("Main.table[1,2]*7");
    EXPECT_EQ(slice.label, "Main.table[1,2]");
    EXPECT_EQ(slice.text, "Main.table[1,2]*7");
    EXPECT_EQ(slice.elements, 7);
    EXPECT_EQ(slice.address, 112);
    EXPECT_EQ(point("Main.speed*1").text, "Main.speed");
}

TEST_F(DataPointTest, SliceEndsWithTheArray)
{
    EXPECT_EQ(point("Main.table[3,4]*2").elements, 2);
    EXPECT_EQ(complaint("Main.table[3,4]*3"),
              "Main.table[3,4]*3: only 2 element(s) of the array are left from there on");
    EXPECT_EQ(complaint("Main.speed*2"),
              "Main.speed*2: only 1 element(s) of the array are left from there on");
}

TEST_F(DataPointTest, WrongLabelsAreExplained)
{
    EXPECT_THAT(complaint("Main.sped").toStdString(),
                ::testing::AllOf(::testing::HasSubstr("Main.sped: "),
                                 ::testing::HasSubstr("did you mean \"speed\"?")));
    EXPECT_THAT(complaint("Mian.speed").toStdString(), ::testing::HasSubstr("\"Main\""));
    for (const char* text :
         {"", "Main", "Main.", ".speed", "Main.speed.x", "Main.speed[0]", "Main.table",
          "Main.table[0]", "Main.table[4,1]", "Main.table[0,0]", "Main.axis[1]", "Main.axis.speed",
          "Main.axis[1].sped", "Main.table[0,1]*0", "Main.table[0,1]*-1", "Main.table[0,1]*x",
          "Main.table[0,1]*", "Main.table[0..3,1]"})
        EXPECT_THAT(complaint(text).toStdString(), ::testing::HasSubstr(text)) << text;
}

TEST_F(DataPointTest, CyclicLabelKeepsItsStationWhereThereAreSeveral)
{
    const QString label = QStringLiteral("Main.speed");
    EXPECT_EQ(runtime->points().find(label, 1, 9)->station, 0);
    PointSettings several;
    several.multiStation = true;
    const DataPointFinder points(project, several, builtDriver());
    EXPECT_EQ(points.find(label, 1, 9)->station, 9);
}

TEST(DataPointFinder, DriverWithOtherSymbolsIsNoticed)
{
    project::Project project = testProject();
    project.scopes[0].name = QStringLiteral("Unknown");
    const DataPointFinder points(project, PointSettings(), builtDriver());
    const Expected<DataPoint> found = points.find(QStringLiteral("Unknown.start"));
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().text,
              "Unknown.start: the driver finds it at address -1, the project at 3; the "
              "driver must be given this project's symbols");
}

TEST(DataPointFinder, SliceThatTheDriverWouldNotReadIsRefused)
{
    project::Project project = testProject();
    project::Variable bytes;
    bytes.name = QStringLiteral("bytes");
    bytes.type = values::findIecType(QStringLiteral("BYTE"));
    bytes.dimensions = {{0, 2147483646}};
    project.scopes = {{QStringLiteral("Large"), {bytes}}};
    const DataPointFinder points(project, PointSettings(), builtDriver());
    const auto complaint = [&points](const char* text) {
        const Expected<DataPoint> found = points.find(QString::fromLatin1(text));
        EXPECT_FALSE(found);
        return found ? std::string() : found.error().text.toStdString();
    };
    // The driver's buffer has two bytes for each BYTE.
    EXPECT_EQ(complaint("Large.bytes[0]*8388609"),
              "Large.bytes[0]*8388609: 8388609 elements are 16777218 bytes as the driver reads "
              "them; one value has at most 16777216 (16 MiB)");
    EXPECT_THAT(complaint("Large.bytes[0]*2147483647"),
                ::testing::HasSubstr("at most 16777216 (16 MiB)"));
    // One less would do, and is looked for in the driver, which has no symbols here.
    EXPECT_THAT(complaint("Large.bytes[0]*8388608"), ::testing::HasSubstr("address -1"));
}

TEST(SymbolWalk, TakesStructuresApartAndKeepsBounds)
{
    const project::Project project = testProject();
    QVector<project::SymbolEntry> entries;
    QStringList patterns;
    for (const project::SymbolEntry& entry : project::symbolEntries(project)) {
        entries.append(entry);
        patterns.append(entry.pattern);
    }
    EXPECT_EQ(patterns.value(0), "Io.start");
    EXPECT_TRUE(patterns.contains(QStringLiteral("Main.table[0..3,1..5]")));
    const int axis = int(patterns.indexOf(QStringLiteral("Main.axis[1..4].speed")));
    ASSERT_GE(axis, 0);
    EXPECT_EQ(entries[axis].firstLabel, "Main.axis[1].speed");
    EXPECT_STREQ(entries[axis].variable->type->name, "INT");
}

TEST(SymbolWalk, GoesOnBehindStructuresAndEmptyScopes)
{
    const auto patterns = [](const project::Project& symbols) {
        QStringList found;
        for (const project::SymbolEntry& entry : project::symbolEntries(symbols))
            found.append(entry.pattern);
        return found.join(QLatin1Char(' ')).toStdString();
    };
    const auto named = [](const char* name) {
        project::Variable variable;
        variable.name = QString::fromLatin1(name);
        return variable;
    };
    auto structure = std::make_shared<project::StructureType>();
    structure->members = {named("x"), named("y")};
    project::Variable part = named("part");
    part.structure = structure;
    project::Project project;
    EXPECT_EQ(patterns(project), "");
    project.scopes = {{QStringLiteral("None"), {}},
                      {QStringLiteral("A"), {named("a"), part, named("b")}},
                      {QStringLiteral("None2"), {}},
                      {QStringLiteral("B"), {part}}};
    EXPECT_EQ(patterns(project), "A.a A.part.x A.part.y A.b B.part.x B.part.y");
}

} // namespace
} // namespace test
} // namespace plc::host
