#include "symbols/symbol_index.h"

#include <QtCore/QMap>

#include "support/random.h"
#include "support/symbol_fixture.h"

namespace plc::test {
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
    names.insert(name, 1);
    names.insert(name, 2);
    EXPECT_EQ(1, valueOf(names, "a"));
}

TEST(NameTable, ForgetsAllWhenCleared)
{
    const QString name = "a";
    NameIndex<int> names;
    names.insert(name, 1);
    names.clear();
    EXPECT_EQ(-1, valueOf(names, "a"));
    names.insert(name, 2);
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
        names.insert(texts.at(i), i);
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
            names.insert(texts.at(i), i);
        for (int i = 0; i < 200; ++i)
            ASSERT_EQ(i < count ? i : -1, valueOf(names, texts.at(i))) << count;
    }
}

TEST(NameTable, NamesOfEveryLengthAreTakenWhole)
{
    // Names that differ in the last character only; short ones are copied, long ones are shared.
    QList<QString> texts;
    for (int length = 1; length <= 100; ++length) {
        texts.append(QString(length - 1, 'n') + 'a');
        texts.append(QString(length - 1, 'n') + 'b');
    }
    NameIndex<int> names;
    for (int i = 0; i < texts.size(); ++i)
        names.insert(texts.at(i), i);
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
    names.insert(text, 1);
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
    names.insert(name, 1);
    names.reserve(1000);
    EXPECT_EQ(1, valueOf(names, "a"));
    names.reserve(10);
    EXPECT_EQ(1, valueOf(names, "a"));
}

TEST(NameTable, LongNamesOutliveTheirText)
{
    NameIndex<int> names;
    QString text(100, 'n');
    names.insert(text, 1);
    EXPECT_FALSE(text.isDetached()) << "the table holds no share of the name";
    text[0] = 'x';
    EXPECT_EQ(1, valueOf(names, QString(100, 'n')));
    EXPECT_EQ(-1, valueOf(names, text));
}

TEST(NameTable, LongNamesAreLetGoWhenCleared)
{
    NameIndex<int> names;
    const QString text(100, 'n');
    names.insert(text, 1);
    names.insert(text, 2);
    names.clear();
    EXPECT_TRUE(text.isDetached());
}

/// Sends every name to the same place.
struct OneHashForAll {
    quint32 operator()(const LabelText&) const { return 5; }
};

TEST(NameTable, NamesOfEqualHashAreKeptApart)
{
    // Of equal and of different sizes, copied and shared ones.
    const QList<QString> texts = {"one",
                                  "two",
                                  "",
                                  "three",
                                  QString(100, 'a'),
                                  QString(99, 'a') + 'b',
                                  'b' + QString(99, 'a'),
                                  QString(101, 'a')};
    NameIndex<int, OneHashForAll> names;
    for (int i = 0; i < int(texts.size()); ++i) {
        EXPECT_EQ(nullptr, names.find(LabelText(texts.at(i)))) << i;
        names.insert(texts.at(i), i);
    }
    for (int i = 0; i < int(texts.size()); ++i) {
        const int* const found = names.find(LabelText(texts.at(i)));
        ASSERT_NE(nullptr, found) << i;
        EXPECT_EQ(i, *found);
    }
    EXPECT_EQ(nullptr, names.find(LabelText(QString("six"))));
}

// --- Names that somebody has chosen ---

constexpr int kManyNames = 5000;

/// Slots that a search for one of the names looks at, on an average.
double meanSearchLength(const QList<QString>& texts, quint64 key)
{
    NameIndex<int> names{KeyedHash(key)};
    for (int i = 0; i < int(texts.size()); ++i)
        names.insert(texts.at(i), i);
    double sum = 0;
    for (int i = 0; i < int(texts.size()); ++i)
        sum += names.searchLength(LabelText(texts.at(i)));
    return sum / int(texts.size());
}

/// Names that `hash` crowds into a sixty-fourth of a table.
template <typename Hash>
QList<QString> crowded(Hash hash)
{
    constexpr quint32 kSlots = 8192;
    QList<QString> texts;
    for (int i = 0; int(texts.size()) < kManyNames; ++i) {
        const QString text = QString::number(i, 36);
        if ((hash(LabelText(text)) & (kSlots - 1)) < kSlots / 64)
            texts.append(text);
    }
    return texts;
}

QList<QString> ordinaryNames()
{
    QList<QString> texts;
    for (int i = 0; i < kManyNames; ++i)
        texts.append(QString("Station%1.Value").arg(i));
    return texts;
}

TEST(ChosenNames, ThatCrowdUnderOneKeyAreOrdinaryUnderAnother)
{
    const QList<QString> chosen = crowded(KeyedHash(1));
    ASSERT_GT(meanSearchLength(chosen, 1), 1000);
    const QList<QString> ordinary = ordinaryNames();
    for (quint64 key = 2; key < 10; ++key)
        EXPECT_LT(meanSearchLength(chosen, key), 4 * meanSearchLength(ordinary, key)) << key;
}

/// A hash without a key, as anybody can compute it.
quint32 multiplied(const LabelText& name)
{
    quint64 hash = quint64(name.size);
    for (int i = 0; i < name.size; ++i)
        hash = foldedProduct(hash ^ name.text[i].unicode(), Q_UINT64_C(0x9E3779B97F4A7C15));
    return quint32(hash);
}

TEST(ChosenNames, ThatCrowdUnderAKnownHashAreOrdinary)
{
    const QList<QString> chosen = crowded(multiplied);
    for (quint64 key = 1; key < 5; ++key)
        EXPECT_LT(meanSearchLength(chosen, key), 8) << key;
}

TEST(ChosenNames, OfAnyRegularityAreOrdinary)
{
    for (int size = 1; size <= 40; ++size) {
        for (int place = 0; place < size; ++place) {
            QList<QString> texts;
            for (int i = 0; i < 200; ++i) {
                QString text(size, 'n');
                text[place] = QChar(1000 + 256 * i);
                texts.append(text);
            }
            EXPECT_LT(meanSearchLength(texts, 3), 12) << size << ", " << place;
        }
    }
}

} // namespace
} // namespace plc::test
