#include "panel/recipes/recipe_restore.h"

#include <gtest/gtest.h>

#include "tests/panel/recipes/model_plc.h"
#include "values/value_bits.h"

namespace plc::panel {
namespace {

using test::content;
using test::integer;
using test::letters;
using test::ModelPlc;
using Outcome = RecipePlc::Outcome;

class RecipeRestoreTest : public ::testing::Test {
protected:
    void set(const char* label, qint64 value)
    {
        plc->values[QString::fromLatin1(label)] = integer(value);
    }
    void restore(const Recipe& recipe)
    {
        RecipeRestore::start(QStringLiteral("1"), recipe, plc, [this](const RestoreReport& done) {
            EXPECT_FALSE(report) << "twice";
            report = done;
        });
        plc->settle();
        ASSERT_TRUE(report);
    }
    static std::string valueText(const std::optional<RecipeContent>& content)
    {
        return content ? std::to_string(std::get<qint64>(content->values[0])) : "-";
    }
    /// "a 1: 5>1 done verified", or "a 1: ->- notSent false (reason)"
    std::string shown(int place) const
    {
        const RestoredValue& value = report->values[std::size_t(place)];
        std::string text = value.label.toStdString() + " " + valueText(value.saved) + ": " +
                           valueText(value.before) + ">" + valueText(value.after) + " " +
                           recipeOutcomeText(value.outcome).toStdString();
        text += !value.isVerified ? " null" : *value.isVerified ? " true" : " false";
        return value.reason.isEmpty() ? text : text + " (" + value.reason.toStdString() + ")";
    }
    std::string counts() const
    {
        return std::to_string(report->written) + " written, " + std::to_string(report->equal) +
               " equal, " + std::to_string(report->notWritten) + " not, " +
               std::to_string(report->notKnown) + " unknown";
    }

    std::shared_ptr<ModelPlc> plc = std::make_shared<ModelPlc>();
    std::optional<RestoreReport> report;
};

TEST_F(RecipeRestoreTest, ANanIsRestoredBitByBit)
{
    const auto nan = [](quint64 bits) {
        return content("REAL", {values::valueOfBits(*test::typeOf("REAL").type, bits)});
    };
    Recipe recipe = letters(0);
    recipe.entries = {{QStringLiteral("a"), nan(0x7fc00001)},
                      {QStringLiteral("b"), nan(0xff800001)}};
    plc->values[QStringLiteral("a")] = nan(0x7fc00002);
    plc->values[QStringLiteral("b")] = nan(0xff800001);
    restore(recipe);
    EXPECT_EQ("1 written, 1 equal, 0 not, 0 unknown", counts());
    EXPECT_EQ(true, report->values[0].isVerified);
    EXPECT_EQ(0x7fc00001U, values::valueBits(plc->values[QStringLiteral("a")].values[0]));
}

TEST_F(RecipeRestoreTest, WritesOnlyWhatDiffersOneAfterTheOtherAndReadsItBack)
{
    set("a", 5);
    set("b", 2);
    set("c", 6);
    restore(letters(3));
    EXPECT_EQ("a 1: 5>1 done true", shown(0));
    EXPECT_EQ("b 2: 2>- notSent true (the PLC has the saved value)", shown(1));
    EXPECT_EQ("c 3: 6>3 done true", shown(2));
    EXPECT_EQ("2 written, 1 equal, 0 not, 0 unknown", counts());
    EXPECT_EQ("read a,write a,read a,read b,read c,write c,read c",
              plc->log.join(QLatin1Char(',')).toStdString());
}

TEST_F(RecipeRestoreTest, ARefusedWriteIsReadBackTooAndTheRestGoesOn)
{
    set("a", 5);
    set("b", 5);
    plc->writings[QStringLiteral("a")] = {Outcome::Refused, QStringLiteral("status 9"), false};
    restore(letters(2));
    EXPECT_EQ("a 1: 5>5 refused false (status 9)", shown(0));
    EXPECT_EQ("b 2: 5>2 done true", shown(1));
    EXPECT_EQ("1 written, 0 equal, 1 not, 0 unknown", counts());
}

TEST_F(RecipeRestoreTest, WhatWasNotSentIsNotReadBackAndTheRestGoesOn)
{
    set("a", 5);
    set("b", 5);
    plc->writings[QStringLiteral("a")] = {Outcome::NotSent, QStringLiteral("not writable"), false};
    restore(letters(2));
    EXPECT_EQ("a 1: 5>- notSent false (not writable)", shown(0));
    EXPECT_EQ("b 2: 5>2 done true", shown(1));
}

TEST_F(RecipeRestoreTest, AWriteThatThePlcTookAndChangedIsNotVerified)
{
    set("a", 5);
    plc->onWrite = [this](const QString&) { set("a", 4); };
    restore(letters(1));
    EXPECT_EQ("a 1: 5>4 done false (the PLC took the write and has another value)", shown(0));
}

TEST_F(RecipeRestoreTest, AWriteThatCannotBeReadBackIsNotVerified)
{
    set("a", 5);
    set("b", 5);
    plc->onWrite = [this](const QString& label) {
        if (label == QLatin1String("a"))
            plc->values.erase(label);
    };
    restore(letters(2));
    EXPECT_EQ("a 1: 5>- done null (could not be read back: the PLC refuses it)", shown(0));
    EXPECT_EQ("b 2: 5>2 done true", shown(1));
}

TEST_F(RecipeRestoreTest, BehindALinkThatIsLostInAWriteNothingIsSent)
{
    set("a", 5);
    set("b", 5);
    set("c", 5);
    plc->writings[QStringLiteral("b")] = {Outcome::Unknown, QStringLiteral("closed"), true};
    restore(letters(3));
    EXPECT_EQ("a 1: 5>1 done true", shown(0));
    EXPECT_EQ("b 2: 5>- unknown null (closed)", shown(1));
    EXPECT_EQ("c 3: ->- notSent null (the link was lost before: closed)", shown(2));
    EXPECT_EQ("1 written, 0 equal, 1 not, 1 unknown", counts());
}

TEST_F(RecipeRestoreTest, BehindALinkThatIsLostInAReadNothingIsSent)
{
    set("a", 5);
    set("b", 5);
    plc->isLinkUp = false;
    restore(letters(2));
    EXPECT_EQ("a 1: ->- notSent null (could not be read before: no link)", shown(0));
    EXPECT_EQ("b 2: ->- notSent null (the link was lost before: no link)", shown(1));
    EXPECT_EQ("read a", plc->log.join(QLatin1Char(',')).toStdString());
}

TEST_F(RecipeRestoreTest, ALinkThatIsLostBeforeTheReadBackLeavesTheWriteUnverified)
{
    set("a", 5);
    set("b", 5);
    plc->onWrite = [this](const QString&) { plc->isLinkUp = false; };
    restore(letters(2));
    EXPECT_EQ("a 1: 5>- done null (could not be read back: no link)", shown(0));
    EXPECT_EQ("b 2: ->- notSent null (the link was lost before: no link)", shown(1));
}

TEST_F(RecipeRestoreTest, AValueThatCannotBeReadIsNotWritten)
{
    set("b", 5);
    restore(letters(2));
    EXPECT_EQ("a 1: ->- notSent null (could not be read before: the PLC refuses it)", shown(0));
    EXPECT_EQ("b 2: 5>2 done true", shown(1));
}

TEST_F(RecipeRestoreTest, AValueOfAnotherTypeIsNotWritten)
{
    plc->values[QStringLiteral("a")] = content("DINT", {qint64(1)});
    restore(letters(1));
    EXPECT_EQ("a 1: 1>- notSent false (the value is DINT now and was INT when it was saved)",
              shown(0));
    EXPECT_EQ("read a", plc->log.join(QLatin1Char(',')).toStdString());
    EXPECT_EQ("0 written, 0 equal, 1 not, 0 unknown", counts());
}

/// Settles within the call.
class SwiftPlc : public RecipePlc {
public:
    void read(const QString&, ReadSettled settled) override
    {
        settled({integer(m_value), {}, false});
    }
    void write(const QString&, const QVector<values::Value>& values, WriteSettled settled) override
    {
        m_value = std::get<qint64>(values[0]);
        settled({Outcome::Done, {}, false});
    }

private:
    qint64 m_value = 0;
};

TEST(RecipeRestore, APlcThatSettlesAtOnceNeedsNoStackForEachValue)
{
    Recipe recipe = letters(1);
    for (int i = 0; i < 100000; ++i)
        recipe.entries.append({QString::number(i), integer(2 + i % 7)});
    int written = 0;
    RecipeRestore::start(QStringLiteral("1"), recipe, std::make_shared<SwiftPlc>(),
                         [&written](const RestoreReport& report) { written = report.written; });
    EXPECT_EQ(100001, written);
}

} // namespace
} // namespace plc::panel
