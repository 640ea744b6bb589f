#include "symbols/symbol_index.h"

#include "support/random.h"
#include "support/symbol_fixture.h"

namespace plc {
namespace test {
namespace {

/// Offset of the variable that the index finds; -1: no such scope, -2: no such variable.
int offsetIn(const SymbolIndex& index, const QString& scopeName, const QString& variableName)
{
    const SymbolIndex::Scope* inScope = index.findScope(LabelText(scopeName));
    if (!inScope)
        return -1;
    const SymbolIndex::Variable* found = inScope->findVariable(LabelText(variableName));
    return found ? inScope->recordOf(*found).offset : -2;
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

TEST(ScopeIndex, HasAtHandWhatTheRecordsSay)
{
    Label_Type_Info word = variable("word", 0x103, -7, 5);
    Label_Type_Info homeless = variable("homeless", 4, 8);
    homeless.areaInfo.clear();
    SymbolIndex index;
    index.insert(scope("A", {word, homeless}));
    const SymbolIndex::Scope* found = index.findScope(LabelText(QString("A")));
    ASSERT_NE(nullptr, found);
    const SymbolIndex::Variable* first = found->findVariable(LabelText(QString("word")));
    const SymbolIndex::Variable* second = found->findVariable(LabelText(QString("homeless")));
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_EQ("word", found->recordOf(*first).name);
    EXPECT_EQ(-7, first->address);
    EXPECT_EQ(0x103, first->typeFlags);
    EXPECT_TRUE(first->hasArea);
    EXPECT_EQ(5, first->areaIndex);
    EXPECT_EQ(8, second->address);
    EXPECT_FALSE(second->hasArea);
}

// --- The table of names below it ---

/// The value under `name`; -1 when there is none.
int valueOf(const NameIndex<int>& names, const QString& name)
{
    const int* value = names.find(LabelText(name));
    return value ? *value : -1;
}

TEST(NameTable, EmptyTableFindsNothing)
{
    NameIndex<int> names;
    EXPECT_EQ(-1, valueOf(names, QString()));
    EXPECT_EQ(-1, valueOf(names, "a"));
}

TEST(NameTable, FirstOfEqualNamesStays)
{
    const QString name = "a";
    NameIndex<int> names;
    names.insert(LabelText(name), 1);
    names.insert(LabelText(name), 2);
    EXPECT_EQ(1, valueOf(names, "a"));
}

TEST(NameTable, ForgetsAllWhenCleared)
{
    const QString name = "a";
    NameIndex<int> names;
    names.insert(LabelText(name), 1);
    names.clear();
    EXPECT_EQ(-1, valueOf(names, "a"));
    names.insert(LabelText(name), 2);
    EXPECT_EQ(2, valueOf(names, "a"));
}

TEST(NameTable, HoldsAHundredThousandNames)
{
    const int count = 100000;
    QList<QString> texts;
    for (int i = 0; i < count; ++i)
        texts.append(QString("Station%1.Motor%2").arg(i / 100).arg(i % 100));
    NameIndex<int> names;
    for (int i = 0; i < count; ++i)
        names.insert(LabelText(texts.at(i)), i);
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(i, valueOf(names, texts.at(i)));
    EXPECT_EQ(-1, valueOf(names, "Station0.Motor100"));
}

TEST(NameTable, HoldsEveryNumberOfNames)
{
    QList<QString> texts;
    for (int i = 0; i < 200; ++i)
        texts.append(QString::number(i));
    for (int count = 0; count <= 200; ++count) {
        NameIndex<int> names;
        if (count % 2)
            names.reserve(count);
        for (int i = 0; i < count; ++i)
            names.insert(LabelText(texts.at(i)), i);
        for (int i = 0; i < 200; ++i)
            ASSERT_EQ(i < count ? i : -1, valueOf(names, texts.at(i))) << count;
    }
}

TEST(NameTable, NamesOfEveryLengthAreTakenWhole)
{
    // Names that differ in the last character only; short ones are copied, long ones are not.
    QList<QString> texts;
    for (int length = 1; length <= 100; ++length) {
        texts.append(QString(length - 1, 'n') + 'a');
        texts.append(QString(length - 1, 'n') + 'b');
    }
    NameIndex<int> names;
    for (int i = 0; i < texts.size(); ++i)
        names.insert(LabelText(texts.at(i)), i);
    for (int i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(i, valueOf(names, texts.at(i)));
        EXPECT_EQ(-1, valueOf(names, texts.at(i) + 'a'));
        EXPECT_EQ(-1, valueOf(names, texts.at(i).left(texts.at(i).size() - 1) + 'c'));
    }
}

TEST(NameTable, ShortNamesOutliveTheirText)
{
    NameIndex<int> names;
    QString text = "Level";
    names.insert(LabelText(text), 1);
    text.replace(0, 1, "X");
    EXPECT_EQ(1, valueOf(names, "Level"));
    EXPECT_EQ(-1, valueOf(names, "Xevel"));
}

TEST(NameTable, ReservingKeepsWhatIsThere)
{
    const QString name = "a";
    NameIndex<int> names;
    names.reserve(0);
    EXPECT_EQ(-1, valueOf(names, "a"));
    names.insert(LabelText(name), 1);
    names.reserve(1000);
    EXPECT_EQ(1, valueOf(names, "a"));
    names.reserve(10);
    EXPECT_EQ(1, valueOf(names, "a"));
}

TEST(NameTable, NamesOfEqualHashAreKeptApart)
{
    // Of 400,000 names some 18 pairs are to be expected that share their 32-bit hash.
    Random random(77);
    QHash<quint32, QString> byHash;
    QString one;
    QString other;
    for (int i = 0; i < 400000 && one.isEmpty(); ++i) {
        const QString text = QString::number(quint64(random.bits()) << 32 | random.bits(), 36);
        const quint32 hash = hashName(LabelText(text));
        if (byHash.contains(hash) && byHash.value(hash) != text) {
            one = byHash.value(hash);
            other = text;
        }
        byHash.insert(hash, text);
    }
    ASSERT_FALSE(one.isEmpty());
    NameIndex<int> names;
    names.insert(LabelText(one), 1);
    EXPECT_EQ(-1, valueOf(names, other));
    names.insert(LabelText(other), 2);
    EXPECT_EQ(1, valueOf(names, one));
    EXPECT_EQ(2, valueOf(names, other));
}

} // namespace
} // namespace test
} // namespace plc
