#include "panel/plants/label_spelling.h"

#include <gtest/gtest.h>

#include "values/iec_types.h"

namespace plc::panel {
namespace test {
namespace {

class LabelSpelling : public ::testing::Test {
protected:
    LabelSpelling()
    {
        project::Variable tank;
        tank.name = QStringLiteral("tank");
        tank.type = values::findIecType(QStringLiteral("INT"));
        tank.dimensions = {{1, 4}};
        program.scopes = {{QStringLiteral("T"), {tank}}};
    }
    std::string found(const char* text) const
    {
        const project::LabelFinder finder(program);
        const Expected<QString> label = textInProgram(finder, QString::fromUtf8(text));
        return (label ? *label : label.error().text).toStdString();
    }

    project::Symbols program;
};

TEST_F(LabelSpelling, SubscriptsArePlainNumbers)
{
    EXPECT_EQ("T.tank[3]", spelt(QStringLiteral("T.tank[03]")).toStdString());
    EXPECT_EQ("T.tank[3]*2", spelt(QStringLiteral("T.tank[03]*2")).toStdString());
    EXPECT_EQ("T.tank[1..3]", spelt(QStringLiteral("T.tank[1..3]")).toStdString());
    EXPECT_EQ("no label]", spelt(QStringLiteral("no label]")).toStdString());
}

TEST_F(LabelSpelling, WhatTheProgramHasIsFoundByItsOneSpelling)
{
    EXPECT_EQ("T.tank[3]", found("T.tank[03]"));
    EXPECT_EQ("T.tank[3]*2", found("T.tank[03]*2"));
    EXPECT_EQ("T.tank[4]", found("T.tank[4]*1"));
}

TEST_F(LabelSpelling, WhatItLacksIsToldWithTheReason)
{
    EXPECT_EQ("T.tnk: scope \"T\" has no \"tnk\" (did you mean \"tank\"?)", found("T.tnk"));
    EXPECT_EQ("T.tank[3]*3: only 2 element(s) of the array are left from there on",
              found("T.tank[3]*3"));
    EXPECT_EQ("T.tank[3]*x: a number of elements is expected behind the *", found("T.tank[3]*x"));
    EXPECT_EQ("T.tank[3]*0: a number of elements is expected behind the *", found("T.tank[3]*0"));
}

} // namespace
} // namespace test
} // namespace plc::panel
