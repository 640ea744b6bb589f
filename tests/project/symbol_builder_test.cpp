#include "project/symbol_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/label_lookup.h"
#include "tests/project/project_text.h"
#include "values/iec_types.h"

namespace plc::project {
namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

SymbolBuilder plant()
{
    SymbolBuilder builder;
    builder.structure(text("Tank"), 8)
        .member(text("level"), text("REAL"), 0)
        .member(text("state"), text("INT"), 4, {{0, 1}})
        .scope(text("Plant"))
        .variable(text("tank"), text("Tank"), 3, 100, {{1, 6}})
        .variable(text("name"), text("STRING(19)"), 3, 200)
        .variable(text("lamp"), text("BIT"), 0, 35);
    return builder;
}

std::string complaint(SymbolBuilder& builder)
{
    const Expected<Symbols> symbols = builder.build();
    EXPECT_FALSE(symbols);
    return symbols ? std::string() : symbols.error().text.toStdString();
}

TEST(SymbolBuilder, LabelLeadsToAreaAddressTypeAndSize)
{
    const Expected<Symbols> symbols = plant().build();
    ASSERT_TRUE(symbols) << symbols.error().text.toStdString();
    const LabelFinder labels(*symbols);
    const Expected<LabelTarget> state = labels.find(text("Plant.tank[3].state[1]"));
    ASSERT_TRUE(state) << state.error().text.toStdString();
    EXPECT_EQ(3, state->area);
    EXPECT_EQ(100 + 2 * 8 + 4 + 2, state->address);
    EXPECT_STREQ("INT", state->variable->type->name);
    EXPECT_EQ(2, state->size);
    const Expected<LabelTarget> name = labels.find(text("Plant.name"));
    ASSERT_TRUE(name) << name.error().text.toStdString();
    EXPECT_EQ(20, name->size);
    EXPECT_EQ(19, name->variable->stringLength);
    const Expected<LabelTarget> lamp = labels.find(text("Plant.lamp"));
    ASSERT_TRUE(lamp) << lamp.error().text.toStdString();
    EXPECT_EQ(35, lamp->address);
    EXPECT_EQ(0, lamp->size);
}

TEST(SymbolBuilder, GlobalVariablesHaveAScopeWithoutName)
{
    const Expected<Symbols> symbols =
        SymbolBuilder().scope(QString()).variable(text("x"), text("INT"), 0, 0).build();
    ASSERT_TRUE(symbols);
    EXPECT_TRUE(LabelFinder(*symbols).find(text(".x")));
}

TEST(SymbolBuilder, FirstMistakeIsTold)
{
    SymbolBuilder builder = plant();
    builder.variable(text("a"), text("RAEL"), 0, 0).variable(text("b"), text("INT"), -1, 0);
    EXPECT_EQ("Plant.a: \"RAEL\" is no IEC type and no structure that stands before",
              complaint(builder));
}

struct Mistake {
    const char* name;
    void (*make)(SymbolBuilder*);
    const char* told;
};

class SymbolBuilderMistakes : public ::testing::TestWithParam<Mistake> {};

TEST_P(SymbolBuilderMistakes, AreTold)
{
    SymbolBuilder builder = plant();
    GetParam().make(&builder);
    EXPECT_THAT(complaint(builder), ::testing::HasSubstr(GetParam().told));
}

constexpr Mistake kMistakes[] = {
    {"StructureNamedAsAType", [](SymbolBuilder* b) { b->structure(text("INT"), 2); },
     "INT: \"INT\" is no name of a structure"},
    {"StructureTwice", [](SymbolBuilder* b) { b->structure(text("Tank"), 2); },
     "Tank: there are two structures of this name"},
    {"StructureWithoutSize", [](SymbolBuilder* b) { b->structure(text("S"), 0); },
     "S: a structure has at least 1 byte, not 0"},
    {"StructureWithoutMember", [](SymbolBuilder* b) { b->structure(text("S"), 4); },
     "S: a structure has at least one member"},
    {"MemberWithoutStructure", [](SymbolBuilder* b) { b->member(text("m"), text("INT"), 0); },
     "m: a member stands behind its structure"},
    {"MemberTwice",
     [](SymbolBuilder* b) {
         b->structure(text("S"), 4)
             .member(text("m"), text("INT"), 0)
             .member(text("m"), text("INT"), 2);
     },
     "S.m: there are two members of this name"},
    {"MemberBehindTheEnd",
     [](SymbolBuilder* b) { b->structure(text("S"), 4).member(text("m"), text("DINT"), 1); },
     "S.m: it ends at byte 5, but the structure has 4 bytes"},
    {"BitAsMember",
     [](SymbolBuilder* b) { b->structure(text("S"), 4).member(text("m"), text("BIT"), 0); },
     "S.m: members have byte offsets"},
    {"ScopeTwice", [](SymbolBuilder* b) { b->scope(text("Plant")); },
     "Plant: there are two scopes of this name"},
    {"ScopeWithoutAName", [](SymbolBuilder* b) { b->scope(text("a.b")); },
     "a.b: \"a.b\" is no name of a scope"},
    {"VariableTwice", [](SymbolBuilder* b) { b->variable(text("name"), text("INT"), 0, 0); },
     "Plant.name: there are two variables of this name"},
    {"VariableInAStructure",
     [](SymbolBuilder* b) {
         b->structure(text("S"), 4)
             .member(text("m"), text("INT"), 0)
             .variable(text("v"), text("INT"), 0, 0);
     },
     "v: a variable stands behind its scope"},
    {"VariableWithoutAName", [](SymbolBuilder* b) { b->variable(text("a b"), text("INT"), 0, 0); },
     "Plant.a b: \"a b\" is no name"},
    {"AreaThatNoFrameCarries",
     [](SymbolBuilder* b) { b->variable(text("v"), text("INT"), 65536, 0); },
     "Plant.v: areas have the numbers 0 to 65535, not 65536"},
    {"AddressBelowZero", [](SymbolBuilder* b) { b->variable(text("v"), text("INT"), 0, -1); },
     "Plant.v: -1 is no address"},
    {"TextWithoutLength", [](SymbolBuilder* b) { b->variable(text("v"), text("STRING"), 0, 0); },
     "Plant.v: \"STRING\" is no type; a text has its length in brackets"},
    {"NumberWithLength", [](SymbolBuilder* b) { b->variable(text("v"), text("INT(3)"), 0, 0); },
     "Plant.v: \"INT(3)\" is no type"},
    {"DimensionThatEndsBeforeItBegins",
     [](SymbolBuilder* b) {
         b->variable(text("v"), text("INT"), 0, 0, {{2, 1}});
     },
     "Plant.v: a dimension ends at 1, before it begins at 2"},
    {"TooManyElements",
     [](SymbolBuilder* b) {
         b->variable(text("v"), text("INT"), 0, 0, {{1, 65536}, {1, 65536}});
     },
     "Plant.v: an array has at most 2147483647 elements"},
    {"LongTextsInAnArray",
     [](SymbolBuilder* b) {
         b->variable(text("v"), text("STRING(255)"), 0, 0, {{1, 2}});
     },
     "Plant.v: texts of an array have at most 255 bytes"},
};

INSTANTIATE_TEST_SUITE_P(All, SymbolBuilderMistakes, ::testing::ValuesIn(kMistakes),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(SymbolBuilder, MakesWhatTheProjectFileDeclares)
{
    const Symbols built = *plant().build();
    EXPECT_EQ(1, built.structures.size());
    EXPECT_EQ(8, built.structures[0]->size);
    ASSERT_EQ(1, built.scopes.size());
    EXPECT_EQ(3, built.scopes[0].variables.size());
    EXPECT_EQ(built.structures[0], built.scopes[0].variables[0].structure);
}

} // namespace
} // namespace plc::project
