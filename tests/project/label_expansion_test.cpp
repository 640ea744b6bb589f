#include "project/label_expansion.h"

#include "tests/project/test_project.h"

namespace plc::project {
namespace test {

namespace {

class LabelExpansionTest : public ::testing::Test {
protected:
    std::string expanded(const char* text)
    {
        return shown(expander.expand(QString::fromUtf8(text)));
    }

    /// The same in a project of variables with numbers in their names.
    static std::string numbered(const char* text)
    {
        const Expected<Project> project = parseProject(R"({
            "name": "Numbered", "areas": [{"index": 1, "size": 64}],
            "scopes": [{"name": "N", "variables": [
              {"name": "v1", "type": "INT", "area": 1, "offset": 0},
              {"name": "v2", "type": "INT", "area": 1, "offset": 2},
              {"name": "v11", "type": "INT", "area": 1, "offset": 4}]}]})",
                                                       QStringLiteral("numbered"));
        return shown(LabelExpander(*project).expand(QString::fromUtf8(text)));
    }

    static std::string shown(const Expected<QStringList>& labels)
    {
        return labels ? labels->join(QLatin1Char(' ')).toStdString()
                      : labels.error().text.toStdString();
    }

    const Project project = testProject();
    LabelExpander expander{project};
};

TEST_F(LabelExpansionTest, ALabelStandsForItself)
{
    EXPECT_EQ("Main.speed", expanded("Main.speed"));
    EXPECT_EQ("Main.axis[2].speed", expanded("Main.axis[2].speed"));
    EXPECT_EQ("no label at all", expanded("no label at all"));
}

TEST_F(LabelExpansionTest, ElementsOfAnArrayStayTogether)
{
    EXPECT_EQ("Main.bytes[0]*5", expanded("Main.bytes[0]*5"));
}

TEST_F(LabelExpansionTest, ANumberBehindAStarCountsElementsOnlyBehindALabel)
{
    EXPECT_EQ("Main.table[0,5] Main.table[1,5] Main.table[2,5] Main.table[3,5]",
              expanded("Main.t*,5]"));
    EXPECT_EQ("Big.t*1", expanded("Big.t*1")) << "to be explained by its lookup";
    EXPECT_EQ("Main.table[1,1]*1", expanded("Main.table[1,1]*1"));
    EXPECT_EQ("N.v1 N.v11", numbered("*1"));
    EXPECT_EQ("N.v1 N.v11", numbered("N.v*1"));
    EXPECT_EQ("N.v1*1", numbered("N.v1*1")) << "one element of N.v1";
    EXPECT_EQ("N.v11", numbered("N.v?*1"));
}

TEST_F(LabelExpansionTest, WildcardsStandForAllThatMatch)
{
    EXPECT_EQ("Main.axis[1].speed Main.axis[2].speed Main.axis[3].speed Main.axis[4].speed",
              expanded("Main.axis*.speed"));
    EXPECT_EQ("Main.ulong", expanded("main.?long"));
    EXPECT_EQ("Main.table[0,1] Main.table[0,2] Main.table[0,3] Main.table[0,4] Main.table[0,5]",
              expanded("*.table[0,?]"));
}

TEST_F(LabelExpansionTest, RangesStandForEachOfTheirNumbers)
{
    EXPECT_EQ("Main.axis[2].speed Main.axis[3].speed", expanded("Main.axis[2..3].speed"));
    EXPECT_EQ("Main.table[0,4] Main.table[0,5] Main.table[1,4] Main.table[1,5]",
              expanded("Main.table[0..1,4..5]"));
}

TEST_F(LabelExpansionTest, WhatMatchesNothingIsExplained)
{
    EXPECT_EQ("Main.tank*: no label of the project matches; plc symbols lists them",
              expanded("Main.tank*"));
}

TEST_F(LabelExpansionTest, TooManyAreRefused)
{
    EXPECT_THAT(expanded("Main.table[0..100000,1]"), ::testing::HasSubstr("10000"));
}

} // namespace
} // namespace test
} // namespace plc::project
