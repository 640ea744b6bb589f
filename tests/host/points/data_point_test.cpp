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
    EXPECT_STREQ("INT", speed.type->name);
    EXPECT_EQ(1, speed.area);
    EXPECT_EQ(4, speed.address);
    EXPECT_EQ(1, speed.elements);
    EXPECT_EQ("rpm", speed.unit);
    EXPECT_EQ(0, speed.station);
}

TEST_F(DataPointTest, ElementsFollowEachOtherThroughAllDimensions)
{
    // Rows of five: [2,3] is element 2 x 5 + 2.
    EXPECT_EQ(point("Main.table[2,3]").address, 100 + 2 * 12);
    EXPECT_EQ(108, point("Main.table[0,5]").address);
    EXPECT_EQ(110, point("Main.table[1,1]").address);
    EXPECT_EQ(138, point("Main.table[3,5]").address);
}

TEST_F(DataPointTest, MembersOfStructuresHaveTheirPlace)
{
    EXPECT_EQ(point("Main.axis[3].speed").address, 200 + 2 * 8 + 4);
    EXPECT_STREQ("DINT", point("Main.axis[3].position").type->name);
}

TEST_F(DataPointTest, SliceTakesElementsFromThatOneOn)
{
    const DataPoint slice = point("Main.table[1,2]*7");
    EXPECT_EQ("Main.table[1,2]", slice.label);
    EXPECT_EQ("Main.table[1,2]*7", slice.text);
    EXPECT_EQ(7, slice.elements);
    EXPECT_EQ(112, slice.address);
    EXPECT_EQ("Main.speed", point("Main.speed*1").text);
}

TEST_F(DataPointTest, SliceEndsWithTheArray)
{
    EXPECT_EQ(2, point("Main.table[3,4]*2").elements);
    EXPECT_EQ("Main.table[3,4]*3: only 2 element(s) of the array are left from there on",
              complaint("Main.table[3,4]*3"));
    EXPECT_EQ("Main.speed*2: only 1 element(s) of the array are left from there on",
              complaint("Main.speed*2"));
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
    EXPECT_EQ(0, runtime->points().find(label, 1, 9)->station);
    PointSettings several;
    several.multiStation = true;
    const DataPointFinder points(project, several, builtDriver());
    EXPECT_EQ(9, points.find(label, 1, 9)->station);
}

TEST(DataPointFinder, DriverWithOtherSymbolsIsNoticed)
{
    project::Project project = testProject();
    project.scopes[0].name = QStringLiteral("Unknown");
    const DataPointFinder points(project, PointSettings(), builtDriver());
    const Expected<DataPoint> found = points.find(QStringLiteral("Unknown.start"));
    ASSERT_FALSE(found);
    EXPECT_EQ(
        "Unknown.start: the driver finds it at address -1, the project at 3; the "
        "driver must be given this project's symbols",
        found.error().text);
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
    EXPECT_EQ(
        "Large.bytes[0]*8388609: 8388609 elements are 16777218 bytes as the driver reads "
        "them; one value has at most 16777216 (16 MiB)",
        complaint("Large.bytes[0]*8388609"));
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
    EXPECT_EQ("Io.start", patterns.value(0));
    EXPECT_TRUE(patterns.contains(QStringLiteral("Main.table[0..3,1..5]")));
    const int axis = int(patterns.indexOf(QStringLiteral("Main.axis[1..4].speed")));
    ASSERT_GE(axis, 0);
    EXPECT_EQ("Main.axis[1].speed", entries[axis].firstLabel);
    EXPECT_STREQ("INT", entries[axis].variable->type->name);
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
    EXPECT_EQ("", patterns(project));
    project.scopes = {{QStringLiteral("None"), {}},
                      {QStringLiteral("A"), {named("a"), part, named("b")}},
                      {QStringLiteral("None2"), {}},
                      {QStringLiteral("B"), {part}}};
    EXPECT_EQ("A.a A.part.x A.part.y A.b B.part.x B.part.y", patterns(project));
}

} // namespace
} // namespace test
} // namespace plc::host
