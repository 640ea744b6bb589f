#include <gtest/gtest.h>

#include <map>

#include "panel/recipes/recipe_restore.h"
#include "tests/panel/recipes/model_plc.h"
#include "tests/support/random.h"

namespace plc::panel {
namespace {

using test::integer;
using test::letters;
using Outcome = RecipePlc::Outcome;

constexpr int kRuns = 3000;
constexpr int kValues = 8;

/// A PLC on a bad line, which keeps what really happened.
class BadLinePlc : public RecipePlc {
public:
    explicit BadLinePlc(std::uint32_t seed) : m_random(seed)
    {
        for (int i = 0; i < kValues; ++i)
            values[QString(QChar('a' + i))] = m_random.below(kValues) + 1;
    }
    void read(const QString& label, ReadSettled settled) override
    {
        ++m_asked;
        if (m_random.oneIn(25))
            isLinkUp = false;
        if (!isLinkUp)
            return settled({{}, QStringLiteral("lost"), true});
        if (m_random.oneIn(15))
            return settled({{}, QStringLiteral("refused"), false});
        lastRead[label] = m_asked;
        settled({integer(values[label]), {}, false});
    }
    void write(const QString& label, const QVector<values::Value>& written,
               WriteSettled settled) override
    {
        ++m_asked;
        if (m_random.oneIn(25))
            isLinkUp = false;
        if (!isLinkUp)
            return settled({Outcome::NotSent, QStringLiteral("lost"), true});
        EXPECT_EQ(0, attempts[label]) << "written twice";
        ++attempts[label];
        if (m_random.oneIn(10))
            return settled({Outcome::Refused, QStringLiteral("refused"), false});
        const bool isLost = m_random.oneIn(15);
        if (!isLost || m_random.oneIn(2))
            carryOut(label, written);
        if (!isLost)
            return settled({Outcome::Done, {}, false});
        isLinkUp = false;
        settled({Outcome::Unknown, QStringLiteral("lost"), true});
    }

    std::map<QString, qint64> values;
    std::map<QString, int> attempts;
    std::map<QString, int> carriedOut;
    std::map<QString, int> lastRead;
    std::map<QString, int> lastWrite;
    bool isLinkUp = true;

private:
    void carryOut(const QString& label, const QVector<values::Value>& written)
    {
        ++carriedOut[label];
        lastWrite[label] = m_asked;
        // Sometimes the PLC's own program has another opinion.
        values[label] = m_random.oneIn(12) ? 100 : std::get<qint64>(written[0]);
    }

    plc::test::Random m_random;
    int m_asked = 0;
};

/// Whether what is reported of a value was so in the PLC.
void check(const RestoredValue& value, BadLinePlc& plc, qint64 before)
{
    const int attempts = plc.attempts[value.label];
    const int carriedOut = plc.carriedOut[value.label];
    switch (value.outcome) {
        case Outcome::Done:
            EXPECT_EQ(1, carriedOut);
            break;
        case Outcome::Refused:
            EXPECT_EQ(1, attempts);
            EXPECT_EQ(0, carriedOut);
            break;
        case Outcome::Unknown:
            EXPECT_EQ(1, attempts);
            EXPECT_FALSE(value.isVerified);
            break;
        case Outcome::NotSent:
            EXPECT_EQ(0, attempts);
            EXPECT_FALSE(value.reason.isEmpty());
            break;
    }
    if (value.before) {
        EXPECT_TRUE(isSameContent(integer(before), *value.before));
    }
    if (value.isEqual) {
        EXPECT_EQ(0, attempts) << "nothing was to be written";
    }
    if (value.isVerified == true) {
        EXPECT_TRUE(isSameContent(value.saved, integer(plc.values[value.label])));
        EXPECT_GT(plc.lastRead[value.label], plc.lastWrite[value.label]) << "not read back";
    }
    if (value.isVerified == false) {
        EXPECT_FALSE(isSameContent(value.saved, integer(plc.values[value.label])));
    }
    if (value.after) {
        EXPECT_TRUE(isSameContent(*value.after, integer(plc.values[value.label])));
    }
}

TEST(RandomFaults, AReportTellsWhatWasSoInThePlc)
{
    std::map<Outcome, int> seen;
    for (std::uint32_t seed = 1; seed <= kRuns && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const auto plc = std::make_shared<BadLinePlc>(seed);
        const std::map<QString, qint64> before = plc->values;
        RestoreReport report;
        RecipeRestore::start(QStringLiteral("1"), letters(kValues), plc,
                             [&report](const RestoreReport& done) { report = done; });
        ASSERT_EQ(kValues, int(report.values.size()));
        EXPECT_EQ(kValues, report.written + report.equal + report.notWritten + report.notKnown);
        for (const RestoredValue& value : report.values) {
            check(value, *plc, before.at(value.label));
            ++seen[value.outcome];
        }
    }
    // Each kind of ending was there.
    EXPECT_GT(seen[Outcome::Done], kRuns / 10);
    EXPECT_GT(seen[Outcome::Refused], kRuns / 10);
    EXPECT_GT(seen[Outcome::Unknown], kRuns / 100);
    EXPECT_GT(seen[Outcome::NotSent], kRuns / 10);
}

} // namespace
} // namespace plc::panel
