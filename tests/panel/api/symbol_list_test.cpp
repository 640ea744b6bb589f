#include "panel/api/symbol_list.h"

#include <gtest/gtest.h>

#include "project/symbol_builder.h"

namespace plc::panel {
namespace {

class SymbolListTest : public testing::Test {
protected:
    /// "label kind children" of each.
    static std::string shown(const SymbolList& list)
    {
        QStringList texts;
        for (const ListedSymbol& symbol : list.symbols)
            texts.append(QStringLiteral("%1 %2 %3")
                             .arg(symbol.label, QLatin1String(kindWord(symbol.kind)))
                             .arg(symbol.children));
        if (!list.isComplete)
            texts.append(QStringLiteral("and more"));
        return texts.join(QLatin1String("; ")).toStdString();
    }
    std::string under(const char* label)
    {
        const auto found = symbolsUnder(QString::fromLatin1(label), m_symbols);
        return found ? shown(*found) : "error";
    }
    std::string search(const char* text, int limit = 100)
    {
        return shown(searchSymbols(QString::fromLatin1(text), limit, m_symbols));
    }

private:
    const project::Symbols m_symbols = *project::SymbolBuilder()
                                            .structure(QStringLiteral("Pump"), 4)
                                            .member("flow", "INT", 0)
                                            .member("level", "INT", 2)
                                            .scope(QStringLiteral("A"))
                                            .variable("one", "Pump", 1, 0)
                                            .variable("many", "Pump", 1, 8, {{1, 2}})
                                            .variable("grid", "INT", 1, 32, {{0, 1}, {5, 6}})
                                            .scope(QStringLiteral("B"))
                                            .variable("level", "INT", 2, 0)
                                            .build();
};

TEST_F(SymbolListTest, LeadsFromTheScopesToTheValues)
{
    EXPECT_EQ("A scope 3; B scope 1", under(""));
    EXPECT_EQ("A.one structure 2; A.many array 2; A.grid array 4", under("A"));
    EXPECT_EQ("A.one.flow value 0; A.one.level value 0", under("A.one"));
    EXPECT_EQ("A.many[1] structure 2; A.many[2] structure 2", under("A.many"));
    EXPECT_EQ("A.many[2].flow value 0; A.many[2].level value 0", under("A.many[2]"));
    EXPECT_EQ("A.grid[0,5] value 0; A.grid[0,6] value 0; A.grid[1,5] value 0; A.grid[1,6] value 0",
              under("A.grid"));
    EXPECT_EQ("", under("A.one.flow"));
}

TEST_F(SymbolListTest, TellsWhatLeadsToNothing)
{
    for (const char* label : {"C", "A.nope", "A.many[3]", "A.many[1,1]", "A.many.flow",
                              "A.many[1..2]", "A.one.flow.x", "A.", "[", "A.grid[0]"})
        EXPECT_EQ("error", under(label)) << label;
}

TEST_F(SymbolListTest, FindsAllWordsInAnyCase)
{
    EXPECT_EQ(
        "A.one.level value 0; A.many[1].level value 0; A.many[2].level value 0; "
        "B.level value 0",
        search("LEVEL"));
    EXPECT_EQ("A.many[2].level value 0", search("level [2]"));
    EXPECT_EQ("", search("level nope"));
}

TEST_F(SymbolListTest, EndsAtItsLimit)
{
    EXPECT_EQ("A.one.level value 0; A.many[1].level value 0; and more", search("level", 2));
    EXPECT_EQ(
        "A.one.level value 0; A.many[1].level value 0; A.many[2].level value 0; "
        "B.level value 0",
        search("level", 4))
        << "all there are";
}

/// A scope with an array of so many INTs, and one with a value behind it.
project::Symbols longArray(int elements)
{
    return *project::SymbolBuilder()
                .structure(QStringLiteral("Pump"), 2)
                .member("flow", "INT", 0)
                .scope(QStringLiteral("A"))
                .variable("values", "INT", 1, 0, {{1, elements}})
                .variable("pumps", "Pump", 1, 100000, {{1, elements}})
                .scope(QStringLiteral("B"))
                .variable("last", "INT", 2, 0)
                .build();
}

TEST(SymbolList, TellsWhereThereAreMoreThanItLists)
{
    const QString values = QStringLiteral("A.values");
    EXPECT_TRUE(symbolsUnder(values, longArray(10000))->isComplete);
    const Expected<SymbolList> more = symbolsUnder(values, longArray(10001));
    EXPECT_EQ(10000, more->symbols.size());
    EXPECT_FALSE(more->isComplete);
}

TEST(SymbolList, TellsWhereItSearchedNotAll)
{
    // Values, pumps, 99,998 pumps with a value each, and the last one: 200,000 less one.
    const QString last = QStringLiteral("last");
    const SymbolList all = searchSymbols(last, 10, longArray(99998));
    EXPECT_EQ(1, all.symbols.size());
    EXPECT_TRUE(all.isComplete);
    const SymbolList some = searchSymbols(last, 10, longArray(99999));
    EXPECT_EQ(0, some.symbols.size());
    EXPECT_FALSE(some.isComplete);
}

} // namespace
} // namespace plc::panel
