#include "symbols/symbol_index.h"

#include "support/random.h"
#include "support/symbol_fixture.h"

namespace plc {
namespace test {
namespace {

/// Offset of the variable that the index finds; -1: no such scope, -2: no such variable.
int offsetIn(const SymbolIndex& index, const QString& scopeName, const QString& variableName)
{
    const SymbolIndex::Scope* found = index.findScope(LabelText(scopeName));
    if (!found)
        return -1;
    const Label_Type_Info* record = found->findVariable(LabelText(variableName));
    return record ? record->offset : -2;
}

TEST(ScopeIndex, EmptyIndexKnowsNoScope)
{
    SymbolIndex index;
    EXPECT_EQ(nullptr, index.findScope(LabelText(QString("MAIN"))));
    EXPECT_EQ(nullptr, index.findScope(LabelText()));
}

TEST(ScopeIndex, FindsVariablesByScopeAndName)
{
    SymbolIndex index;
    index.insert(scope("A", {variable("x", 4, 10), variable("y", 4, 20)}));
    index.insert(scope("B", {variable("x", 4, 30)}));
    EXPECT_EQ(10, offsetIn(index, "A", "x"));
    EXPECT_EQ(20, offsetIn(index, "A", "y"));
    EXPECT_EQ(30, offsetIn(index, "B", "x"));
    EXPECT_EQ(-2, offsetIn(index, "B", "y"));
    EXPECT_EQ(-1, offsetIn(index, "C", "x"));
    EXPECT_EQ(-1, offsetIn(index, "a", "x"));
    EXPECT_EQ(-2, offsetIn(index, "A", "X"));
}

TEST(ScopeIndex, EmptyAndNullNamesAreOne)
{
    SymbolIndex index;
    index.insert(scope(QString(), {variable(QString(), 4, 10)}));
    EXPECT_EQ(10, offsetIn(index, "", ""));
    EXPECT_EQ(10, offsetIn(index, QString(), QString()));
    index.insert(scope("", {variable("", 4, 20)}));
    EXPECT_EQ(20, offsetIn(index, QString(), QString()));
}

TEST(ScopeIndex, FirstOfEqualVariablesWins)
{
    SymbolIndex index;
    index.insert(scope("A", {variable("x", 4, 10), variable("x", 4, 20)}));
    EXPECT_EQ(10, offsetIn(index, "A", "x"));
}

TEST(ScopeIndex, LaterScopeOfANameReplacesTheEarlierWholly)
{
    SymbolIndex index;
    index.insert(scope("A", {variable("x", 4, 10), variable("y", 4, 20)}));
    index.insert(scope("A", {variable("y", 4, 30)}));
    EXPECT_EQ(-2, offsetIn(index, "A", "x"));
    EXPECT_EQ(30, offsetIn(index, "A", "y"));
}

TEST(ScopeIndex, OnlyVariablesWithinTheMemberCountAreFound)
{
    Label_Type_Info record = scope("A", {variable("x", 4, 10), variable("y", 4, 20)});
    record.typeDef[0].memberCount = 1;
    SymbolIndex index;
    index.insert(record);
    EXPECT_EQ(10, offsetIn(index, "A", "x"));
    EXPECT_EQ(-2, offsetIn(index, "A", "y"));
    record.typeDef[0].memberCount = 0xFFFFFFFF;
    index.insert(record);
    EXPECT_EQ(20, offsetIn(index, "A", "y"));
    EXPECT_EQ(-2, offsetIn(index, "A", "z"));
}

TEST(ScopeIndex, TellsAScopeWithoutTypeFromOneWithoutVariables)
{
    Label_Type_Info bare;
    bare.name = "BARE";
    SymbolIndex index;
    index.insert(bare);
    index.insert(scope("EMPTY", {}));
    ASSERT_NE(nullptr, index.findScope(LabelText(QString("BARE"))));
    ASSERT_NE(nullptr, index.findScope(LabelText(QString("EMPTY"))));
    EXPECT_FALSE(index.findScope(LabelText(QString("BARE")))->hasType());
    EXPECT_TRUE(index.findScope(LabelText(QString("EMPTY")))->hasType());
    EXPECT_EQ(-2, offsetIn(index, "BARE", "x"));
    EXPECT_EQ(-2, offsetIn(index, "EMPTY", "x"));
    index.insert(scope("BARE", {variable("x", 4, 10)}));
    EXPECT_EQ(10, offsetIn(index, "BARE", "x"));
}

TEST(ScopeIndex, KeepsTheRecordsAliveThatItFinds)
{
    SymbolIndex index;
    {
        QList<Label_Type_Info> variables = {variable("x", 4, 10)};
        Label_Type_Info record = scope(QString("A").repeated(3), variables);
        index.insert(record);
        record.typeDef[0].members[0].offset = 99;
        record.typeDef[0].members[0].name = "changed";
        record.name = "changed";
    }
    EXPECT_EQ(10, offsetIn(index, "AAA", "x"));
    EXPECT_EQ(-1, offsetIn(index, "changed", "x"));
}

TEST(ScopeIndex, FindsAsASearchFromTheFrontDoesWhileItIsFilledAgain)
{
    Random random(5);
    SymbolIndex index;
    QMap<QString, Label_Type_Info> plain;
    for (int round = 0; round < 300; ++round) {
        QList<Label_Type_Info> variables;
        for (int i = random.below(60); i > 0; --i)
            variables.append(
                variable(QString::number(random.below(80), 36), 4, random.below(9999)));
        Label_Type_Info record = scope(QString::number(random.below(40), 36), variables);
        record.typeDef[0].memberCount = quint32(random.below(70));
        index.insert(record);
        plain.insert(record.name, record);
        for (int i = 0; i < 60; ++i) {
            const QString scopeName = QString::number(random.below(45), 36);
            const QString name = QString::number(random.below(85), 36);
            int expected = -1;
            if (plain.contains(scopeName)) {
                expected = -2;
                const Label_Type_Info type = plain.value(scopeName).typeDef.at(0);
                for (int k = 0; k < int(type.members.size()) && quint32(k) < type.memberCount;
                     ++k) {
                    if (expected == -2 && type.members.at(k).name == name)
                        expected = type.members.at(k).offset;
                }
            }
            ASSERT_EQ(expected, offsetIn(index, scopeName, name));
        }
    }
}

// --- The table of names below it ---

TEST(NameTable, EmptyTableFindsNothing)
{
    NameIndex<const int> names;
    EXPECT_EQ(nullptr, names.find(LabelText()));
    EXPECT_EQ(nullptr, names.find(LabelText(QString("a"))));
}

TEST(NameTable, FirstOfEqualNamesStays)
{
    const QString name = "a";
    const int first = 1;
    const int second = 2;
    NameIndex<const int> names;
    names.insert(LabelText(name), &first);
    names.insert(LabelText(name), &second);
    EXPECT_EQ(&first, names.find(LabelText(name)));
}

TEST(NameTable, ForgetsAllWhenCleared)
{
    const QString name = "a";
    const int value = 1;
    NameIndex<const int> names;
    names.insert(LabelText(name), &value);
    names.clear();
    EXPECT_EQ(nullptr, names.find(LabelText(name)));
    names.insert(LabelText(name), &value);
    EXPECT_EQ(&value, names.find(LabelText(name)));
}

TEST(NameTable, HoldsAHundredThousandNames)
{
    const int count = 100000;
    QList<QString> texts;
    std::vector<int> values(count);
    NameIndex<const int> names;
    for (int i = 0; i < count; ++i)
        texts.append(QString("Station%1.Motor%2").arg(i / 100).arg(i % 100));
    for (int i = 0; i < count; ++i)
        names.insert(LabelText(texts.at(i)), &values[size_t(i)]);
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(&values[size_t(i)], names.find(LabelText(texts.at(i))));
    EXPECT_EQ(nullptr, names.find(LabelText(QString("Station0.Motor100"))));
}

TEST(NameTable, ReservingBeforehandChangesNothing)
{
    const QString name = "a";
    const int value = 1;
    NameIndex<const int> names;
    names.reserve(0);
    EXPECT_EQ(nullptr, names.find(LabelText(name)));
    names.reserve(1000);
    names.insert(LabelText(name), &value);
    names.reserve(10);
    EXPECT_EQ(&value, names.find(LabelText(name)));
}

TEST(NameTable, NamesOfEqualHashAreKeptApart)
{
    // Among a million names of two characters some must share their 32-bit hash or at least a slot;
    // each is still found as itself.
    QMap<quint32, QString> byHash;
    QString one;
    QString other;
    for (int high = 0; high < 1024 && one.isEmpty(); ++high) {
        for (int low = 0; low < 1024; ++low) {
            const QString text = QString(QChar(ushort(0x100 + high))) + QChar(ushort(0x100 + low));
            const quint32 hash = hashName(LabelText(text));
            if (byHash.contains(hash)) {
                one = byHash.value(hash);
                other = text;
                break;
            }
            byHash.insert(hash, text);
        }
    }
    if (one.isEmpty())
        GTEST_SKIP() << "no two of these names share a hash";
    const int first = 1;
    const int second = 2;
    NameIndex<const int> names;
    names.insert(LabelText(one), &first);
    EXPECT_EQ(nullptr, names.find(LabelText(other)));
    names.insert(LabelText(other), &second);
    EXPECT_EQ(&first, names.find(LabelText(one)));
    EXPECT_EQ(&second, names.find(LabelText(other)));
}

} // namespace
} // namespace test
} // namespace plc
