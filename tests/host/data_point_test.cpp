#include "host/data_point.h"

#include "host/symbol_walk.h"
#include "tests/host/host_fixture.h"

namespace plc {
namespace test {
namespace {

class DataPointTest : public HostTest {
protected:
    QString complaint(const char* text)
    {
        QString error;
        EXPECT_FALSE(runtime->points().find(QString::fromUtf8(text), &error)) << text;
        return error;
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
    CyclicLabel cyclic;
    cyclic.label = QStringLiteral("Main.speed");
    cyclic.station = 9;
    QString error;
    EXPECT_EQ(runtime->points().find(cyclic, &error)->station, 0);
    project.settings.multiStation = true;
    EXPECT_EQ(runtime->points().find(cyclic, &error)->station, 9);
}

TEST(DataPointFinder, DriverWithOtherSymbolsIsNoticed)
{
    Project project = testProject();
    project.scopes[0].name = QStringLiteral("Unknown");
    const DataPointFinder points(project, builtDriver());
    QString error;
    EXPECT_FALSE(points.find(QStringLiteral("Unknown.start"), &error));
    EXPECT_EQ(error,
              "Unknown.start: the driver finds it at address -1, the project at 3; the "
              "driver must be given this project's symbols");
}

TEST(SymbolWalk, TakesStructuresApartAndKeepsBounds)
{
    const Project project = testProject();
    const QVector<SymbolEntry> entries = symbolEntries(project);
    QStringList patterns;
    for (const SymbolEntry& entry : entries)
        patterns.append(entry.pattern);
    EXPECT_EQ(patterns.value(0), "Io.start");
    EXPECT_TRUE(patterns.contains(QStringLiteral("Main.table[0..3,1..5]")));
    const int axis = int(patterns.indexOf(QStringLiteral("Main.axis[1..4].speed")));
    ASSERT_GE(axis, 0);
    EXPECT_EQ(entries[axis].firstLabel, "Main.axis[1].speed");
    EXPECT_STREQ(entries[axis].variable->type->name, "INT");
}

TEST(SymbolWalk, PatternsMatchAnywhereUnlessTheyHaveWildcards)
{
    const QString text = QStringLiteral("Main.axis[1..4].speed");
    for (const char* pattern : {"", "axis", "SPEED", "[1..4]", "main.*", "*.speed", "*axis[1..4]*",
                                "Main.axis[?..4].speed"})
        EXPECT_TRUE(matchesPattern(text, QString::fromLatin1(pattern))) << pattern;
    for (const char* pattern : {"axes", "axis*", "*.spee", "?.speed", "Mainxaxis"})
        EXPECT_FALSE(matchesPattern(text, QString::fromLatin1(pattern))) << pattern;
}

} // namespace
} // namespace test
} // namespace plc
