#include "cli/value_history.h"

#include <limits>

#include "tests/support/qt_printers.h"
#include "values/numeric_value.h"

namespace plc::cli {
namespace test {
namespace {

/// A trend as text: a number for each second, - for none.
std::string shown(const QVector<std::optional<double>>& trend)
{
    std::string text;
    for (const std::optional<double>& number : trend)
        text += (text.empty() ? "" : " ") + (number ? std::to_string(int(*number)) : "-");
    return text;
}

TEST(NumericValue, IsNothingForTextsAndWhatIsNoNumber)
{
    EXPECT_EQ(1.0, values::numericValue(values::Value(true)));
    EXPECT_EQ(-5.0, values::numericValue(values::Value(qint64(-5))));
    EXPECT_EQ(5.0, values::numericValue(values::Value(quint64(5))));
    EXPECT_EQ(0.5, values::numericValue(values::Value(0.5f)));
    EXPECT_EQ(values::numericValue(values::Value(QStringLiteral("5"))), std::nullopt);
    EXPECT_EQ(values::numericValue(values::Value(std::numeric_limits<double>::quiet_NaN())),
              std::nullopt);
    EXPECT_EQ(values::numericValue(values::Value(std::numeric_limits<float>::infinity())),
              std::nullopt);
}

TEST(ValueHistory, KeepsTheLowestAndTheHighest)
{
    ValueHistory history;
    EXPECT_FALSE(history.lowest());
    EXPECT_FALSE(history.highest());
    for (int value : {5, -3, 4, 9, 8})
        history.note(qint64(value), 0);
    EXPECT_EQ(history.lowest(), std::optional<values::Value>(qint64(-3)));
    EXPECT_EQ(history.highest(), std::optional<values::Value>(qint64(9)));
}

TEST(ValueHistory, TheRangeBeginsAnewWithTheNextValue)
{
    ValueHistory history;
    history.note(qint64(5), 0);
    history.forgetRange();
    EXPECT_FALSE(history.lowest());
    history.note(qint64(7), 0);
    EXPECT_EQ(history.lowest(), std::optional<values::Value>(qint64(7)));
    EXPECT_EQ(history.highest(), std::optional<values::Value>(qint64(7)));
}

TEST(ValueHistory, TextsAndNanLeaveNoTrace)
{
    ValueHistory history;
    history.note(QStringLiteral("12"), 0);
    history.note(std::numeric_limits<double>::quiet_NaN(), 0);
    EXPECT_FALSE(history.lowest());
    EXPECT_EQ("- -", shown(history.trend(2, 0)));
}

TEST(ValueHistory, TheTrendHasTheLastValueOfEachSecondAndGaps)
{
    ValueHistory history;
    history.note(qint64(1), 1000);
    history.note(qint64(2), 1999);
    history.note(qint64(3), 2000);
    history.note(qint64(4), 4500);
    EXPECT_EQ("2 3 - 4", shown(history.trend(4, 4999)));
    EXPECT_EQ("3 - 4 -", shown(history.trend(4, 5000)));
    EXPECT_EQ("4", shown(history.trend(1, 4500)));
    EXPECT_EQ("", shown(history.trend(0, 4500)));
}

TEST(ValueHistory, OfTheTimeBeforeItsStartThereIsNothing)
{
    ValueHistory history;
    history.note(qint64(7), 0);
    EXPECT_EQ("- - 7", shown(history.trend(3, 500)));
}

TEST(ValueHistory, WhatIsOlderThanAMinuteIsForgotten)
{
    ValueHistory history;
    history.note(qint64(7), 0);
    EXPECT_EQ("7 -", shown(history.trend(60, 59999)).substr(0, 3));
    EXPECT_EQ("- -", shown(history.trend(60, 60000)).substr(0, 3));
    EXPECT_EQ(60, history.trend(1000, 60000).size());
}

TEST(Sparkline, ScalesFromTheLowestToTheHighest)
{
    EXPECT_EQ(QString::fromUtf8("▁▂▃▄▅▆▇█"), sparkline({0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0}));
    EXPECT_EQ(QString::fromUtf8("▁█"), sparkline({-10.0, 10.0}));
    EXPECT_EQ(QString::fromUtf8("▁█"), sparkline({-1.7e308, 1.7e308}));
}

TEST(Sparkline, IsFlatWhereNothingChanges)
{
    EXPECT_EQ(QString::fromUtf8("▁▁"), sparkline({5.0, 5.0}));
}

TEST(Sparkline, HasBlanksWhereThereIsNoValue)
{
    EXPECT_EQ(QString::fromUtf8(" ▁ █"), sparkline({std::nullopt, 1.0, std::nullopt, 2.0}));
    EXPECT_EQ("  ", sparkline({std::nullopt, std::nullopt}));
    EXPECT_EQ("", sparkline({}));
}

} // namespace
} // namespace test
} // namespace plc::cli
