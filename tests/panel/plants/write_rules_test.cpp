#include "panel/plants/write_rules.h"

#include <gtest/gtest.h>

#include "host/points/symbol_list.h"
#include "project/symbol_builder.h"
#include "tests/support/built_driver.h"

namespace plc::panel {
namespace {

using configuration::WritableRule;
using values::Value;

class WriteRulesTest : public testing::Test {
protected:
    WriteRulesTest() : m_list(host::symbolList(m_symbols)) { m_driver.passVarName2(&m_list); }

    void make(const QVector<WritableRule>& rules)
    {
        const Expected<WriteRules> made = WriteRules::make(rules, m_symbols, m_points);
        m_error = made ? std::string() : made.error().text.toStdString();
        m_rules = made.valueOr(WriteRules());
    }
    host::DataPoint point(const char* label)
    {
        return m_points.find(QString::fromLatin1(label)).valueOr(host::DataPoint());
    }
    bool isWritable(const char* label) { return m_rules.isWritable(point(label)); }
    std::string obstacle(const char* label, const QVector<Value>& values)
    {
        return m_rules.obstacle(point(label), values).toStdString();
    }
    static WritableRule rule(const char* labels) { return {QString::fromLatin1(labels), {}, {}}; }

    std::string m_error;
    WriteRules m_rules;

private:
    const project::Symbols m_symbols = *project::SymbolBuilder()
                                            .scope(QStringLiteral("T"))
                                            .variable("level", "UINT", 1, 0)
                                            .variable("speed", "UINT", 1, 2)
                                            .variable("v", "UINT", 1, 4, {{0, 3}})
                                            .variable("ratio", "REAL", 1, 12)
                                            .scope(QStringLiteral("R"))
                                            .variable("raw", "BYTE", 1, 0, {{0, 3}})
                                            .variable("flag", "BOOL", 1, 20)
                                            .build();
    QList<Label_Type_Info> m_list;
    host::DriverFunctions m_driver = plc::test::builtDriver();
    host::DataPointFinder m_points{m_symbols, {}, m_driver};
};

TEST_F(WriteRulesTest, WithoutRulesAllMayBeWritten)
{
    EXPECT_TRUE(isWritable("T.level"));
    EXPECT_EQ("", obstacle("T.level", {Value(quint64(5))}));
}

TEST_F(WriteRulesTest, OnlyWhatTheyFitMayBeWritten)
{
    make({rule("T.s*")});
    EXPECT_TRUE(isWritable("T.speed"));
    EXPECT_FALSE(isWritable("T.level"));
    EXPECT_EQ("the configuration does not list it as writable",
              obstacle("T.level", {Value(quint64(5))}));
}

TEST_F(WriteRulesTest, NoRuleIsNothing)
{
    make({});
    EXPECT_FALSE(isWritable("T.speed"));
}

TEST_F(WriteRulesTest, OfAnElementDoNotOpenItsNeighbours)
{
    make({rule("T.v[1]")});
    EXPECT_TRUE(isWritable("T.v[1]"));
    EXPECT_FALSE(isWritable("T.v[1]*2"));
    EXPECT_FALSE(isWritable("T.v[0]"));
}

TEST_F(WriteRulesTest, LastThatFitsCounts)
{
    make({{QStringLiteral("T.*"), 0.0, 10.0}, {QStringLiteral("T.speed"), 0.0, 100.0}});
    EXPECT_EQ("", obstacle("T.speed", {Value(quint64(100))}));
    EXPECT_EQ("out of the limits 0..100", obstacle("T.speed", {Value(quint64(101))}));
    EXPECT_EQ("out of the limits 0..10", obstacle("T.level", {Value(quint64(11))}));
}

TEST_F(WriteRulesTest, TheLimitsThemselvesMayBeWrittenToAReal)
{
    // The nearest float is 13421773 * 2^-27, above 0.1.
    make({{QStringLiteral("T.ratio"), 0.1, 0.1}});
    EXPECT_EQ("", obstacle("T.ratio", {Value(0.1f)}));
    EXPECT_EQ("out of the limits 0.1..0.1",
              obstacle("T.ratio", {Value(13421774.0f / 134217728.0f)}));
}

TEST_F(WriteRulesTest, LimitsOfAnElementHoldForListsOverIt)
{
    make({rule("T.*"), {QStringLiteral("T.v[1]"), 0.0, 10.0}});
    EXPECT_EQ("", obstacle("T.v[2]*2", {Value(quint64(99)), Value(quint64(99))}));
    EXPECT_EQ("out of the limits 0..10",
              obstacle("T.v[0]*2", {Value(quint64(5)), Value(quint64(99))}));
}

TEST_F(WriteRulesTest, LimitsByAPatternHoldForListsOverWhatItFits)
{
    make({rule("T.*"), {QStringLiteral("T.v[?]"), {}, 10.0}});
    EXPECT_EQ("out of the limits ..10",
              obstacle("T.v[0]*2", {Value(quint64(5)), Value(quint64(11))}));
    EXPECT_EQ("", obstacle("T.v[0]*2", {Value(quint64(5)), Value(quint64(10))}));
    EXPECT_EQ("", obstacle("T.level", {Value(quint64(11))}));
}

TEST_F(WriteRulesTest, LimitsHoldForListsThatALaterRuleOpens)
{
    make({{QStringLiteral("T.v[1]"), 0.0, 10.0}, rule("T.v[0]*4")});
    const auto list = [](quint64 second) {
        return QVector<Value>{quint64(1), second, quint64(999), quint64(999)};
    };
    EXPECT_EQ("out of the limits 0..10", obstacle("T.v[1]", {Value(quint64(999))}));
    EXPECT_EQ("out of the limits 0..10", obstacle("T.v[0]*4", list(999)));
    EXPECT_EQ("", obstacle("T.v[0]*4", list(10)));
}

TEST_F(WriteRulesTest, LimitsOfAListHoldForEachOfItsElements)
{
    make({rule("T.*"), {QStringLiteral("T.v[0]*2"), 0.0, 10.0}});
    EXPECT_EQ("out of the limits 0..10",
              obstacle("T.v[0]*2", {Value(quint64(5)), Value(quint64(11))}));
    EXPECT_EQ("out of the limits 0..10",
              obstacle("T.v[1]*2", {Value(quint64(11)), Value(quint64(99))}));
    EXPECT_EQ("", obstacle("T.v[1]*2", {Value(quint64(10)), Value(quint64(99))}));
    EXPECT_EQ("out of the limits 0..10", obstacle("T.v[1]", {Value(quint64(11))}));
}

TEST_F(WriteRulesTest, WhatLiesOverAValueWithLimitsIsNotWritten)
{
    make({rule("*"), {QStringLiteral("T.level"), {}, 1000.0}});
    EXPECT_EQ("it lies over T.level, which has limits",
              obstacle("R.raw[0]*2", {Value(quint64(0)), Value(quint64(1))}));
    EXPECT_EQ("it lies over T.level, which has limits", obstacle("R.raw[1]", {Value(quint64(1))}));
    EXPECT_EQ("it lies over T.level, which has limits",
              obstacle("R.raw[1]*2", {Value(quint64(1)), Value(quint64(1))}));
    EXPECT_EQ("", obstacle("R.raw[2]*2", {Value(quint64(255)), Value(quint64(255))}));
    EXPECT_EQ("", obstacle("T.level", {Value(quint64(1000))}));
    EXPECT_EQ("", obstacle("T.speed", {Value(quint64(1001))}));
}

TEST_F(WriteRulesTest, LaterRuleWithoutLimitsFreesTheValuesThatItFits)
{
    make({{QStringLiteral("T.v[?]"), 0.0, 10.0}, rule("T.v[2]")});
    EXPECT_EQ("", obstacle("T.v[2]", {Value(quint64(99))}));
    EXPECT_EQ("out of the limits 0..10", obstacle("T.v[1]", {Value(quint64(99))}));
}

TEST_F(WriteRulesTest, LimitsThatAValueCannotHaveAreAnError)
{
    make({{QStringLiteral("R.flag"), 0.0, {}}});
    EXPECT_EQ("writable: R.flag is a BOOL and has no lowest or highest value; list it without",
              m_error);
    make({{QStringLiteral("T.level"), {}, 1e17}});
    EXPECT_EQ(
        "writable: T.level is a UINT, and a lowest or highest value beyond 9007199254740992 "
        "is not exact",
        m_error);
}

TEST_F(WriteRulesTest, ThatFitNothingAreAnError)
{
    make({rule("T.nope")});
    EXPECT_EQ(0u, m_error.find("writable: T.nope")) << m_error;
    make({rule("X.*")});
    EXPECT_EQ(0u, m_error.find("writable: ")) << m_error;
}

} // namespace
} // namespace plc::panel
