#include <gtest/gtest.h>

#include <QtCore/QVector>

#include <algorithm>

#include "support/random.h"
#include "values/nearest_name.h"

namespace plc::values::test {
namespace {

std::string nearest(const char* name, const QStringList& candidates)
{
    return nearestName(QString::fromUtf8(name), candidates).toStdString();
}

/// By the table of all distances between the beginnings of two texts.
int editDistance(const QString& from, const QString& to)
{
    const auto same = [&](int i, int j) { return from[i - 1].toLower() == to[j - 1].toLower(); };
    const int height = int(from.size());
    const int width = int(to.size());
    QVector<QVector<int>> table(height + 1, QVector<int>(width + 1));
    for (int i = 0; i <= height; ++i) {
        for (int j = 0; j <= width; ++j) {
            int& distance = table[i][j];
            if (i == 0 || j == 0) {
                distance = i + j;
                continue;
            }
            distance = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1,
                                 table[i - 1][j - 1] + (same(i, j) ? 0 : 1)});
            if (i > 1 && j > 1 && same(i, j - 1) && same(i - 1, j))
                distance = std::min(distance, table[i - 2][j - 2] + 1);
        }
    }
    return table[height][width];
}

/// The first of those that are nearest, and no further than a name may be misspelt.
QString nearestByTable(const QString& name, const QStringList& candidates)
{
    QString found;
    int least = 1 + std::max(1, int(name.size()) / 3);
    for (const QString& candidate : candidates) {
        const int distance = editDistance(name, candidate);
        if (distance >= least)
            continue;
        least = distance;
        found = candidate;
    }
    return found;
}

/// A few letters, so that many names are alike.
QString randomName(plc::test::Random* random, int longest)
{
    const QString letters = QString::fromUtf8("abBäÄß");
    QString name;
    for (int length = random->between(0, longest); length > 0; --length)
        name += letters[random->below(int(letters.size()))];
    return name;
}

TEST(NearestName, IsOneInsertionRemovalReplacementOrSwapAway)
{
    const QStringList one{QStringLiteral("speed")};
    for (const char* misspelt : {"sped", "sspeed", "spead", "seped", "SPEED", "peed", "speedy"})
        EXPECT_EQ("speed", nearest(misspelt, one)) << misspelt;
    EXPECT_EQ("", nearest("space", one)) << "two characters of five differ";
    EXPECT_EQ("äöü", nearest("ÄÖ", {QString::fromUtf8("äöü")}));
}

TEST(NearestName, IsTheNearestAndOfThoseTheFirst)
{
    const QStringList names{QStringLiteral("level"), QStringLiteral("lever"),
                            QStringLiteral("temperature"), QStringLiteral("INT")};
    EXPECT_EQ("level", nearest("levl", names));
    EXPECT_EQ("level", nearest("leve", names));
    EXPECT_EQ("lever", nearest("levr", names));
    EXPECT_EQ("INT", nearest("int", names));
    EXPECT_EQ("temperature", nearest("temprature", names));
    EXPECT_EQ("", nearest("pressure", names));
    EXPECT_EQ("", nearest("x", {}));
}

TEST(NearestName, MayDifferByAThirdOfTheName)
{
    EXPECT_EQ("abcdefxyz", nearest("abcdefghi", {QStringLiteral("abcdefxyz")}));
    EXPECT_EQ("", nearest("abcdefghi", {QStringLiteral("abcdewxyz")}));
    EXPECT_EQ("b", nearest("a", {QStringLiteral("b")})) << "one character always";
    EXPECT_EQ("b", nearest("", {QStringLiteral("ab"), QStringLiteral("b")}));
}

TEST(NearestName, HasAtMost64Characters)
{
    const QString longest(64, QLatin1Char('l'));
    EXPECT_EQ(longest, nearestName(longest.left(63), {longest}));
    EXPECT_EQ(longest, nearestName(longest, {longest}));
    EXPECT_EQ(QString(), nearestName(longest, {longest + QLatin1Char('l')}));
    EXPECT_EQ(QString(), nearestName(longest + QLatin1Char('l'), {longest}));
}

TEST(NearestName, IsThatOfTheTableOfAllDistances)
{
    plc::test::Random random(20261123);
    for (int round = 0; round < 500; ++round) {
        const int longest = random.oneIn(4) ? 64 : 8;
        const QString name = randomName(&random, longest);
        QStringList candidates;
        for (int i = 0; i < 10; ++i)
            candidates << randomName(&random, longest);
        ASSERT_EQ(nearestByTable(name, candidates), nearestName(name, candidates))
            << name.toStdString() << " among " << candidates.join(QLatin1Char(' ')).toStdString();
    }
}

} // namespace
} // namespace plc::values::test
