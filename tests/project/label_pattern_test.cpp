#include "project/label_pattern.h"

#include "tests/support/qt_printers.h"

namespace plc::project {
namespace test {
namespace {

bool isFound(const char* pattern, const char* label,
             LabelPattern::Place place = LabelPattern::Place::Inside)
{
    return LabelPattern(QString::fromUtf8(pattern), place).matches(QString::fromUtf8(label));
}

bool standsFor(const char* pattern, const char* label)
{
    return isFound(pattern, label, LabelPattern::Place::Whole);
}

TEST(LabelPattern, IsFoundAnywhereWithAndWithoutWildcards)
{
    const char label[] = "Main.axis[1..4].speed";
    for (const char* pattern :
         {"", "axis", "SPEED", "[1..4]", "main.*", "*.speed", "ax*spe", "is[?", "*axis[1..4]*",
          "Main.axis[?..4].speed", "axis*", "*.spee", "?.spe"})
        EXPECT_TRUE(isFound(pattern, label)) << pattern;
    for (const char* pattern : {"axes", "Mainxaxis", "speed*axis", "speed?", "?Main", "x*x"})
        EXPECT_FALSE(isFound(pattern, label)) << pattern;
}

TEST(LabelPattern, StandsForAWholeLabelWhereThatIsAskedFor)
{
    const char label[] = "Main.axis[1].speed";
    for (const char* pattern : {"main.axis[1].speed", "*", "Main.*", "*d", "M*a*s*d",
                                "Main.axis[?]*", "**Main***speed**", "Main.axis[1].speed*"})
        EXPECT_TRUE(standsFor(pattern, label)) << pattern;
    for (const char* pattern : {"", "axis", "Main", "Main.", "*.spee", "?Main*", "*speed?", "M?*x"})
        EXPECT_FALSE(standsFor(pattern, label)) << pattern;
    EXPECT_TRUE(standsFor("", ""));
    EXPECT_TRUE(standsFor("*", ""));
    EXPECT_FALSE(standsFor("?", ""));
}

TEST(LabelPattern, AStarTakesMoreWhereTheRestFitsOnlyLater)
{
    EXPECT_TRUE(standsFor("*ab", "aab"));
    EXPECT_TRUE(standsFor("a*bc*d", "a.b.bc.c.d"));
    EXPECT_FALSE(standsFor("a*bc*d", "a.b.c.d"));
    EXPECT_TRUE(standsFor("*.v1", "G.v1.v1"));
}

TEST(LabelPattern, OtherCharactersStandForThemselves)
{
    EXPECT_TRUE(isFound("a.b", "a.b"));
    EXPECT_FALSE(isFound("a.b", "axb"));
    EXPECT_FALSE(isFound("[1]", "1"));
    EXPECT_TRUE(isFound("\\d+", "a\\d+"));
}

TEST(LabelPattern, LetterCaseDoesNotCountBeyondAsciiEither)
{
    EXPECT_TRUE(standsFor("ANLAGE.TÜR", "Anlage.tür"));
    EXPECT_TRUE(standsFor("G.?", "G.\xF0\x9F\x94\xA5")) << "one character, beyond the first plane";
}

TEST(LabelPattern, ManyStarsEndSoon)
{
    const QString label(20000, QLatin1Char('a'));
    const QString pattern = QStringLiteral("*a").repeated(50) + QStringLiteral("*b");
    EXPECT_FALSE(LabelPattern(pattern, LabelPattern::Place::Whole).matches(label));
}

} // namespace
} // namespace test
} // namespace plc::project
