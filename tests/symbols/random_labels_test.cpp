#include "model/label_model.h"
#include "model/library_side.h"
#include "tests/symbols/label_fixture.h"

namespace plc::test {
namespace {

using RandomLabels = DriverTest;

/// The model of the tests, asked in the library's terms.
class ModelResolver {
public:
    explicit ModelResolver(const QList<Label_Type_Info>& scopes)
    {
        m_model.pass(model::fromQt(scopes));
    }

    Resolution resolve(const QString& label) const
    {
        model::Place place;
        place.dataType = quint8(kKeptType);
        place.address = kKeptAddress;
        place.areaIndex = kKeptArea;
        const int result = m_model.resolve(model::fromQt(label), place);
        return Resolution{result, place.dataType, place.address, place.areaIndex};
    }

private:
    model::LabelModel m_model;
};

/// Plants of few names, so that names repeat, and labels that mostly fit them.
class RandomPlant {
public:
    explicit RandomPlant(quint32 seed) : m_random(seed) {}

    QList<Label_Type_Info> scopes()
    {
        QList<Label_Type_Info> list;
        for (int i = m_random.between(1, 5); i > 0; --i) {
            Label_Type_Info record = scope(name(), records(0, m_random.below(7)));
            spoilCount(record.typeDef[0]);
            if (m_random.oneIn(20))
                record.typeDef.clear();
            list.append(record);
        }
        return list;
    }

    QString label(const QList<Label_Type_Info>& scopes)
    {
        if (m_random.oneIn(200))
            return QString();
        const Label_Type_Info& chosen = scopes.at(m_random.below(int(scopes.size())));
        QString text = m_random.oneIn(15) ? name() : chosen.name;
        if (m_random.oneIn(10))
            text += "[" + QString::number(m_random.below(3)) + "]";
        if (m_random.oneIn(50))
            return text;
        const Label_Type_Info* level = chosen.typeDef.isEmpty() ? nullptr : &chosen.typeDef.at(0);
        for (int depth = 0; depth < 6 && !m_random.oneIn(12); ++depth) {
            const Label_Type_Info* next = nullptr;
            if (level && !level->members.isEmpty() && !m_random.oneIn(12))
                next = &level->members.at(m_random.below(int(level->members.size())));
            text += "." + (next ? next->name : name());
            text += subscript(next);
            level = next && !next->typeDef.isEmpty() ? &next->typeDef.at(0) : nullptr;
            if (!level && m_random.below(3) != 0)
                break;
        }
        return text;
    }

private:
    QString name()
    {
        static const char* const names[] = {"", "a", "b", "c", "A", "ab", "x]y", "p[1]"};
        return names[m_random.below(m_random.oneIn(8) ? 8 : 4)];
    }

    int number()
    {
        static const int extremes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
        return m_random.oneIn(10) ? extremes[m_random.below(7)] : m_random.between(-30, 300);
    }

    void spoilCount(Label_Type_Info& record)
    {
        if (m_random.oneIn(8))
            record.memberCount = quint32(number());
    }

    void makeArray(Label_Type_Info& record)
    {
        static const int bases[] = {10, 10, 10, 10, 0, 16, 2, 1, 37, -10};
        record.typeFlags = quint16(record.typeFlags | kArrayFlag);
        record.dimCount = m_random.oneIn(15) ? m_random.between(-1, 5) : m_random.between(1, 3);
        record.arrayBounds.append(bases[m_random.below(10)]);
        for (int i = 0; i < 2 * record.dimCount; ++i)
            record.arrayBounds.append(m_random.oneIn(12) ? number() : m_random.between(-2, 6));
        if (m_random.oneIn(15))
            record.arrayBounds.removeLast();
    }

    QList<Label_Type_Info> records(int level, int count)
    {
        QList<Label_Type_Info> list;
        for (int i = 0; i < count; ++i) {
            Label_Type_Info record = variable(name(), 0, number(), m_random.between(-2, 9));
            const bool deeper = level < 4 && m_random.below(3) == 0;
            record.typeFlags = quint16(deeper              ? 12
                                       : m_random.oneIn(9) ? m_random.below(256)
                                                           : m_random.below(19));
            if (deeper && !m_random.oneIn(20))
                record.typeDef.append(definition(level));
            if (m_random.below(3) == 0)
                makeArray(record);
            if (m_random.oneIn(25)) {
                record.typeFlags = quint16(record.typeFlags | kStructureFlag);
                record.members = records(4, 3);
                record.memberCount = 3;
            }
            if (m_random.oneIn(6))
                record.typeFlags = quint16(record.typeFlags | (m_random.below(64) << 10));
            if (m_random.oneIn(25))
                record.areaInfo.clear();
            list.append(record);
        }
        return list;
    }

    Label_Type_Info definition(int level)
    {
        Label_Type_Info record = structure(number(), records(level + 1, m_random.below(5)));
        spoilCount(record);
        if (m_random.oneIn(15))
            record.typeFlags = quint16(m_random.below(0x400));
        if (m_random.oneIn(25))
            makeArray(record);
        return record;
    }

    QString subscript(const Label_Type_Info* record)
    {
        const bool isArray = record && (record->typeFlags & kArrayFlag) != 0;
        if (isArray == m_random.oneIn(10))
            return QString();
        int dimensions = isArray && record->dimCount > 0 ? record->dimCount : 1;
        if (m_random.oneIn(12))
            dimensions = m_random.between(1, 4);
        QStringList pieces;
        for (int i = 0; i < dimensions; ++i)
            pieces.append(piece());
        QString text = "[" + pieces.join(",") + "]";
        if (m_random.oneIn(25))
            text.remove(m_random.below(int(text.size())), 1);
        if (m_random.oneIn(40))
            text += "x";
        return text;
    }

    QString piece()
    {
        if (m_random.oneIn(25))
            return "";
        if (m_random.oneIn(25))
            return "0x" + QString::number(m_random.below(30), 16);
        if (m_random.oneIn(25))
            return " " + QString::number(m_random.below(30)) + " ";
        return QString::number(m_random.oneIn(12) ? number() : m_random.between(-2, 8));
    }

    Random m_random;
};

TEST_F(RandomLabels, ResolveAsTheModelResolvesThem)
{
    int outcomes[13] = {};
    for (quint32 seed = 1; seed <= 400; ++seed) {
        RandomPlant plant(seed);
        const QList<Label_Type_Info> scopes = plant.scopes();
        forgetSymbols();
        passSymbols(scopes);
        const ModelResolver model(scopes);
        for (int i = 0; i < 150; ++i) {
            const QString label = plant.label(scopes);
            const Resolution expected = model.resolve(label);
            ASSERT_EQ(expected, resolve(label)) << label.toStdString() << ", seed " << seed;
            ++outcomes[expected.result];
        }
    }
    // The plants are worth the walk only when every outcome comes up.
    for (int result : {0, 1, 2, 3, 6, 7, 10, 11, 12})
        EXPECT_GT(outcomes[result], 20) << "result " << result;
}

TEST_F(RandomLabels, StayRightWhileTheTableIsFilledAgainAndAgain)
{
    RandomPlant plant(4711);
    QList<Label_Type_Info> history;
    for (int round = 0; round < 200; ++round) {
        const QList<Label_Type_Info> scopes = plant.scopes();
        passSymbols(scopes);
        history += scopes;
        const ModelResolver model(history);
        for (int i = 0; i < 40; ++i) {
            const QString label = plant.label(history);
            ASSERT_EQ(model.resolve(label), resolve(label)) << label.toStdString();
        }
    }
}

TEST_F(RandomLabels, TextOfBracketsCommasAndDotsResolvesAsTheModelResolvesIt)
{
    const QList<Label_Type_Info> scopes = {
        mainScope(), scope("", {variable("", 4, 10, 3), arrayOf(variable("a", 3, 9, 1), {10, 0, 9}),
                                arrayOf(structured("", 5, structure(7, {variable("a", 5, 1)}), 2),
                                        {10, 1, 4})})};
    passSymbols(scopes);
    const ModelResolver model(scopes);
    Random random(99);
    const QString alphabet = "a12.[],-";
    for (int i = 0; i < 60000; ++i) {
        QString label = random.oneIn(2) ? "." : "MAIN.rec";
        for (int length = random.below(12); length > 0; --length)
            label += alphabet.at(random.below(int(alphabet.size())));
        PLC_driver.labels.prefetch(label); // whatever its text is, it changes nothing
        ASSERT_EQ(model.resolve(label), resolve(label)) << label.toStdString();
    }
}

} // namespace
} // namespace plc::test
