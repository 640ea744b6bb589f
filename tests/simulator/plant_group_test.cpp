#include "simulator/plant_group.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>

#include <set>

#include "tests/project/project_text.h"

namespace plc::simulator {
namespace {

class PlantGroupTest : public testing::Test {
protected:
    PlantGroupTest()
    {
        options.plants = 3;
        options.port = quint16(0);
    }

    int m_count = 0;
    char m_name[5] = "test";
    char* m_arguments[1] = {m_name};
    QCoreApplication m_application{m_count, m_arguments};
    const project::Project project = project::test::goodProject(
        project::test::projectText(R"({"name": "v", "area": 1, "offset": 16, "type": "INT"})"));
    Options options;
};

TEST_F(PlantGroupTest, EachPlantHasAFreePort)
{
    PlantGroup group(project, options, [] {});
    ASSERT_TRUE(group.listen());
    std::set<quint16> ports;
    for (const auto& plant : group.plants())
        ports.insert(plant->server().port());
    EXPECT_EQ(3u, ports.size());
    EXPECT_EQ(0u, ports.count(0));
}

TEST_F(PlantGroupTest, PortsFollowOneAnother)
{
    PlantGroup group(project, options, [] {});
    ASSERT_TRUE(group.listen());
    const quint16 first = group.plants()[2]->server().port();
    options.plants = 1;
    options.port = first;
    PlantGroup taken(project, options, [] {});
    EXPECT_FALSE(taken.listen());
    options.plants = 3;
    options.port = quint16(65534);
    PlantGroup beyond(project, options, [] {});
    const Expected<void> listens = beyond.listen();
    ASSERT_FALSE(listens);
    EXPECT_EQ("there is no port 65536; begin with a lower one", listens.error().text.toStdString());
}

TEST_F(PlantGroupTest, EachPlantHasItsOwnMemory)
{
    PlantGroup group(project, options, [] {});
    EXPECT_EQ("ok", group.execute("set MAIN.v 7"));
    EXPECT_EQ("ok", group.execute("plant 3"));
    EXPECT_EQ("ok 0", group.execute("get MAIN.v"));
    EXPECT_EQ("ok", group.execute("set MAIN.v 9"));
    EXPECT_EQ("ok", group.execute(" plant  1 "));
    EXPECT_EQ("ok 7", group.execute("get MAIN.v"));
}

TEST_F(PlantGroupTest, PlantThatIsNotThereIsAnError)
{
    PlantGroup group(project, options, [] {});
    for (const char* line : {"plant 0", "plant 4", "plant x", "plant -1"}) {
        EXPECT_EQ("error: expected a plant from 1 to 3",
                  group.execute(QString::fromLatin1(line)).toStdString());
    }
}

} // namespace
} // namespace plc::simulator
