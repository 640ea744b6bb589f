#include <gtest/gtest.h>

#include "project/label_lookup.h"
#include "tests/project/project_text.h"
#include "values/iec_types.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

class Labels : public testing::Test {
protected:
    struct Found {
        std::string error;
        LabelTarget target;
    };

    Found find(const char* label) const
    {
        const Expected<LabelTarget> target = m_finder.find(QString::fromUtf8(label));
        return {target ? "" : target.error().text.toStdString(), target.valueOr(LabelTarget())};
    }

    void expectAt(qint64 address, qint64 elements, const char* label) const
    {
        const Found found = find(label);
        EXPECT_EQ("", found.error) << label;
        EXPECT_EQ(address, found.target.address) << label;
        EXPECT_EQ(elements, found.target.elements) << label;
    }

    const Project m_project = test::goodProject(test::projectText(
        R"({"name": "speed", "type": "INT", "area": 2, "offset": 10},
           {"name": "table", "type": "INT", "area": 1, "offset": 100, "array": [[0, 3], [1, 5]]},
           {"name": "rec", "type": "Rec", "area": 1, "offset": 200, "array": [[1, 8]]},
           {"name": "one", "type": "Rec", "area": 1, "offset": 300},
           {"name": "lamp", "type": "BIT", "area": 2, "offset": 320, "array": [[0, 15]]},
           {"name": "text", "type": "STRING", "area": 1, "offset": 400, "length": 9,
            "array": [[1, 2]]})",
        R"({"name": "Rec", "size": 12, "members": [
            {"name": "a", "type": "UDINT", "offset": 0},
            {"name": "b", "type": "REAL", "offset": 4},
            {"name": "flags", "type": "BYTE", "offset": 8, "array": [[0, 3]]}]})"));
    const LabelFinder m_finder{m_project};
};

TEST_F(Labels, LeadToAddressAreaAndRemainingElements)
{
    expectAt(10, 1, "MAIN.speed");
    EXPECT_EQ(2, find("MAIN.speed").target.area);
    expectAt(100 + (2 * 5 + 2) * 2, 8, "MAIN.table[2,3]");
    expectAt(200 + 2 * 12 + 4, 1, "MAIN.rec[3].b");
    EXPECT_EQ(1, find("MAIN.rec[3].b").target.area);
    expectAt(200 + 2 * 12 + 8 + 2, 2, "MAIN.rec[3].flags[2]");
    expectAt(304, 1, "MAIN.one.b");
    expectAt(335, 1, "MAIN.lamp[15]");
    expectAt(655, 1, "MAIN.text[2]");
}

TEST_F(Labels, NameTheDeclarationTheyEndAt)
{
    EXPECT_EQ("flags", find("MAIN.rec[1].flags[0]").target.variable->name.toStdString());
    EXPECT_STREQ("BYTE", find("MAIN.rec[1].flags[0]").target.variable->type->name);
}

TEST_F(Labels, WithoutValueSayWhy)
{
    EXPECT_EQ("expected Scope.variable", find("").error);
    EXPECT_EQ("expected Scope.variable", find("MAIN").error);
    EXPECT_EQ("the project has no \"MIAN\" (did you mean \"MAIN\"?)", find("MIAN.speed").error);
    EXPECT_EQ("the project has no \"\"", find(".speed").error);
    EXPECT_EQ("scope \"MAIN\" has no \"\"", find("MAIN.").error);
    EXPECT_EQ("scope \"MAIN\" has no \"tabel\" (did you mean \"table\"?)",
              find("MAIN.tabel").error);
    EXPECT_EQ("structure \"Rec\" has no \"flag\" (did you mean \"flags\"?)",
              find("MAIN.one.flag").error);
    EXPECT_EQ("a scope has no subscripts", find("MAIN[1].speed").error);
    EXPECT_EQ("\"speed\" is not an array", find("MAIN.speed[1]").error);
    EXPECT_EQ("\"speed\" has no members", find("MAIN.speed.x").error);
    EXPECT_EQ("the subscripts of \"rec\" must lie within [1..8]", find("MAIN.rec.a").error);
    EXPECT_EQ("the subscripts of \"rec\" must lie within [1..8]", find("MAIN.rec[0].a").error);
    EXPECT_EQ("the subscripts of \"rec\" must lie within [1..8]", find("MAIN.rec[9].a").error);
    EXPECT_EQ("the subscripts of \"table\" must lie within [0..3,1..5]",
              find("MAIN.table[1]").error);
    EXPECT_EQ("the subscripts of \"table\" must lie within [0..3,1..5]",
              find("MAIN.table[1,6]").error);
    EXPECT_EQ("\"rec\" is a structure; a label ends at one of its members",
              find("MAIN.rec[1]").error);
    EXPECT_EQ("a range of subscripts names more than one value", find("MAIN.rec[1..2].a").error);
}

TEST_F(Labels, WithBrokenSubscriptsSayWhy)
{
    const char* const pairOfBrackets =
        ": subscripts stand in one pair of brackets at the end, as in table[1,2]";
    EXPECT_EQ("subscript \"\" is not a whole number", find("MAIN.rec[].a").error);
    EXPECT_EQ("subscript \"x\" is not a whole number", find("MAIN.rec[x].a").error);
    EXPECT_EQ("subscript \" 1\" is not a whole number", find("MAIN.rec[ 1].a").error);
    EXPECT_EQ("subscript \"+1\" is not a whole number", find("MAIN.rec[+1].a").error);
    EXPECT_EQ("subscript \"-\" is not a whole number", find("MAIN.rec[-].a").error);
    EXPECT_EQ("subscript \"2147483648\" is not a whole number",
              find("MAIN.rec[2147483648].a").error);
    EXPECT_EQ("subscript \"2..1\" is not a whole number", find("MAIN.rec[2..1].a").error);
    EXPECT_EQ("subscript \"1...2\" is not a whole number", find("MAIN.rec[1...2].a").error);
    EXPECT_EQ(std::string("\"rec[1]x\"") + pairOfBrackets, find("MAIN.rec[1]x.a").error);
    EXPECT_EQ(std::string("\"table[1][2]\"") + pairOfBrackets, find("MAIN.table[1][2]").error);
    EXPECT_EQ(std::string("\"rec[1.a\"") + pairOfBrackets, find("MAIN.rec[1.a").error);
    EXPECT_EQ("\"]\" without \"[\" before it", find("MAIN.rec]1[.a").error);
}

TEST(LabelSyntax, ExpandsRanges)
{
    const auto parts = parseLabel(QStringLiteral(".a[1..2].b[0,-1..1]"));
    ASSERT_TRUE(parts);
    EXPECT_TRUE(isPattern(*parts));
    const auto labels = expandPattern(*parts, 6);
    ASSERT_TRUE(labels);
    EXPECT_EQ(".a[1].b[0,-1] .a[1].b[0,0] .a[1].b[0,1] .a[2].b[0,-1] .a[2].b[0,0] .a[2].b[0,1]",
              labels->join(QLatin1Char(' ')).toStdString());
    const auto tooMany = expandPattern(*parts, 5);
    ASSERT_FALSE(tooMany);
    EXPECT_EQ("stands for more than 5 labels", tooMany.error().text.toStdString());
}

TEST(LabelSyntax, ANameHasNoSeparators)
{
    EXPECT_TRUE(isLabelName(QStringLiteral("Füllstand_1")));
    for (const char* name : {"", "a.b", "a[", "a]", "a,b", "a=b", "a b", "a\tb", "a\"b"})
        EXPECT_FALSE(isLabelName(QString::fromUtf8(name))) << name;
}

TEST(LabelSyntax, OfAsciiANameHasAllThatIsSeenButSeparators)
{
    const QByteArray allowed(
        "!#$%&'()*+-/0123456789:;<>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ\\^_`"
        "abcdefghijklmnopqrstuvwxyz{|}~");
    for (char character = 0; character != char(127); ++character)
        EXPECT_EQ(allowed.contains(character), isLabelName(QString(QLatin1Char(character))))
            << int(character);
    for (int unseen : {0x7f, 0x85, 0xa0, 0xd800})
        EXPECT_FALSE(isLabelName(QString(QChar(unseen)))) << unseen;
}

TEST(Quoted, KeepsOnLineAndShort)
{
    EXPECT_EQ("\"a\\\"b\\\\\\u001b\"", values::quoted(QStringLiteral("a\"b\\\x1b")).toStdString());
    EXPECT_EQ(62 + 1, values::quoted(QString(1000, QLatin1Char('x'))).size());
}

} // namespace
} // namespace plc::project
