#include "tests/iec/iec_fixture.h"

namespace plc::iec {
namespace test {
namespace {

using testing::ElementsAre;

/// The upper bound that an expression gives; the notes if there are errors.
std::string bound(const std::string& expression, const std::string& constants = "")
{
    const std::string source = "VAR_GLOBAL CONSTANT " + constants +
                               " END_VAR\nVAR_GLOBAL v AT %MB0 : ARRAY[-100.." + expression +
                               "] OF BYTE; END_VAR";
    const Imported imported = importText(QString::fromStdString(source));
    if (imported.errors > 0)
        return imported.text();
    return std::to_string(imported.global("v").dimensions.value(0).upper);
}

TEST(Constants, WholeNumbersInAllForms)
{
    EXPECT_EQ("10", bound("10"));
    EXPECT_EQ("1000", bound("1_000"));
    EXPECT_EQ("255", bound("16#FF"));
    EXPECT_EQ("10", bound("2#1010"));
    EXPECT_EQ("8", bound("8#10"));
    EXPECT_EQ("5", bound("INT#5"));
    EXPECT_EQ("15", bound("UINT#16#0f"));
    EXPECT_EQ("-5", bound("-5"));
    EXPECT_EQ("-7", bound("INT#-7"));
}

TEST(Constants, ProductsComeBeforeSums)
{
    EXPECT_EQ("14", bound("2 + 3 * 4"));
    EXPECT_EQ("20", bound("(2 + 3) * 4"));
    EXPECT_EQ("5", bound("10 - 3 - 2"));
    EXPECT_EQ("8", bound("100 / 4 / 3"));
    EXPECT_EQ("2", bound("17 MOD 5"));
    EXPECT_EQ("-2", bound("-(1 + 1)"));
    EXPECT_EQ("3", bound("1 - -2"));
    EXPECT_EQ("0", bound("5 mod -1"));
}

TEST(Constants, StandForTheirValuesInAnyOrderAndCase)
{
    EXPECT_EQ("12", bound("last", "LAST : INT := count * 2; Count : INT := 6;"));
    EXPECT_EQ("6", bound("GVL.count", "Count : INT := 6;"));
}

TEST(Constants, OfTheProgramComeBeforeGlobalOnes)
{
    const Imported imported = importGood(R"(
        VAR_GLOBAL CONSTANT n : INT := 3; m : INT := 4; END_VAR
        PROGRAM P VAR CONSTANT n : INT := 8; END_VAR
          VAR a AT %MB0 : ARRAY[1..n, 1..m] OF BYTE; END_VAR
        END_PROGRAM
        VAR_GLOBAL b AT %MB100 : ARRAY[1..n] OF BYTE; c AT %MB200 : ARRAY[1..P.n] OF BYTE; END_VAR)");
    const project::Variable* a = imported.find(QStringLiteral("P"), QStringLiteral("a"));
    ASSERT_NE(nullptr, a);
    EXPECT_EQ("BYTE[1..8][1..4]", Imported::typeText(*a));
    EXPECT_EQ("BYTE[1..3] 0:100", imported.place("b"));
    EXPECT_EQ("BYTE[1..8] 0:200", imported.place("c"));
}

TEST(Constants, EnumeratorsCountUpFromTheOneBefore)
{
    const Imported imported = importGood(R"(
        TYPE Mode : (off, manual := 5, automatic, cleaning := automatic * 2, last); END_TYPE
        VAR_GLOBAL a AT %MB0 : ARRAY[off..automatic] OF BYTE;
          b AT %MB10 : ARRAY[1..Mode.last] OF BYTE; END_VAR)");
    EXPECT_EQ("BYTE[0..6] 0:0", imported.place("a"));
    EXPECT_EQ("BYTE[1..13] 0:10", imported.place("b"));
}

TEST(Constants, EnumeratorsOfOneNameNeedTheirEnumeration)
{
    const char* const source = R"(TYPE A : (none, one); B : (zero, none); END_TYPE
VAR_GLOBAL a AT %%MB0 : ARRAY[0..%1none] OF BYTE; END_VAR)";
    const QString text =
        QString::fromLatin1(source).replace(QLatin1String("%%"), QLatin1String("%"));
    EXPECT_THAT(importText(text.arg(QString())).notes,
                ElementsAre("2:33: error: \"none\" is declared more than once; put its enumeration "
                            "and a dot before it"));
    EXPECT_EQ("BYTE[0..1] 0:0", importText(text.arg(QStringLiteral("B."))).place("a"));
}

TEST(Constants, WhatIsWrongIsShownWhereItStands)
{
    EXPECT_THAT(bound("most", "Mast : INT := 1;"),
                testing::HasSubstr("2:36: error: found \"most\", expected a whole number or the "
                                   "name of a constant that is declared (did you mean \"Mast\"?)"));
    EXPECT_THAT(bound("1.5"), testing::HasSubstr("2:36: error: found \"1.5\", expected a whole "
                                                 "number or the name of a constant"));
    EXPECT_THAT(bound("2 +"), testing::HasSubstr("2:38: error: found nothing behind \"+\", "
                                                 "expected a whole number"));
    EXPECT_THAT(bound("2 3"), testing::HasSubstr("2:38: error: found \"3\", expected the end of "
                                                 "the expression"));
    EXPECT_THAT(bound("5 / (2 - 2)"), testing::HasSubstr("2:38: error: found a division by zero"));
    EXPECT_THAT(bound("16#FG"), testing::HasSubstr("expected a whole number of at most 64 bits"));
    EXPECT_THAT(bound("9223372036854775807 + 1"),
                testing::HasSubstr("2:56: error: found a value of more than 64 bits"));
    EXPECT_THAT(bound("9223372036854775807 * 2"), testing::HasSubstr("more than 64 bits"));
    EXPECT_THAT(bound("(-9223372036854775807 - 1) / -1"), testing::HasSubstr("more than 64 bits"));
    EXPECT_THAT(bound("-(-9223372036854775807 - 1)"), testing::HasSubstr("more than 64 bits"));
    EXPECT_THAT(bound("n", "n : REAL := 1.5;"), testing::HasSubstr("1:33: error: found \"1.5\""));
}

TEST(Constants, MadeOfThemselvesAreRefused)
{
    EXPECT_THAT(bound("a", "a : INT := b; b : INT := a + 1;"),
                testing::HasSubstr("error: constant \"a\" is made of itself"));
}

TEST(Constants, AreWorkedOutOnceHoweverOftenTheyAreUsed)
{
    // Twice the one before, thirty times: 2^18 fits, and walking down each time would not end.
    std::string constants = "c0 : INT := 1;";
    for (int i = 1; i <= 18; ++i) {
        std::string sum = "c" + std::to_string(i) + " : INT := c" + std::to_string(i - 1) + " * 2";
        for (int term = 0; term < 40; ++term)
            sum += " + c" + std::to_string(i - 1) + " - c" + std::to_string(i - 1);
        constants += sum + ";";
    }
    EXPECT_EQ("262144", bound("c18", constants));
}

TEST(Constants, DeepOnesAreRefused)
{
    EXPECT_THAT(bound(std::string(60, '(') + "1" + std::string(60, ')')),
                testing::HasSubstr("expected at most 20 parentheses in each other"));
    std::string constants = "c0 : INT := 1;";
    for (int i = 1; i <= 100; ++i)
        constants += "c" + std::to_string(i) + " : INT := c" + std::to_string(i - 1) + ";";
    EXPECT_THAT(bound("c100", constants), testing::HasSubstr("in at most 20 steps"));
    EXPECT_EQ("1", bound("c19", constants));
}

} // namespace
} // namespace test
} // namespace plc::iec
