#include "configuration/label_places.h"

#include <gtest/gtest.h>

#include "project/symbol_builder.h"

namespace plc::configuration {
namespace test {
namespace {

class LabelPlacesTest : public ::testing::Test {
protected:
    LabelPlacesTest()
    {
        for (const char* label : {"T.level", "T.v*4", "T.speed"})
            m_places.append(QString::fromLatin1(label));
    }

    QVector<int> fitting(const char* text)
    {
        const Expected<QVector<int>> places = m_places.fitting(QString::fromLatin1(text));
        return places ? *places : QVector<int>();
    }
    QString errorOf(const char* text)
    {
        const Expected<QVector<int>> places = m_places.fitting(QString::fromLatin1(text));
        return places ? QString() : places.error().text;
    }

private:
    const project::Symbols m_symbols = *project::SymbolBuilder()
                                            .scope(QStringLiteral("T"))
                                            .variable("level", "UINT", 1, 0)
                                            .variable("speed", "UINT", 1, 2)
                                            .variable("v", "UINT", 1, 4, {{0, 4}})
                                            .build();
    LabelPlaces m_places{m_symbols};
};

TEST_F(LabelPlacesTest, AreThoseThatALabelOrAPatternFits)
{
    EXPECT_EQ(QVector<int>{2}, fitting("T.speed"));
    EXPECT_EQ((QVector<int>{0, 2}), fitting("T.*e*"));
    EXPECT_EQ((QVector<int>{0, 1, 2}), fitting("*"));
}

TEST_F(LabelPlacesTest, OfAnArrayAreWholeValuesAlone)
{
    EXPECT_EQ(QVector<int>{1}, fitting("T.v*4"));
    EXPECT_TRUE(errorOf("T.v[1]").startsWith("T.v[1] is none of its values"));
}

TEST_F(LabelPlacesTest, ThatNothingFitsAreAnError)
{
    EXPECT_EQ("X.* fits none of its values", errorOf("X.*"));
    EXPECT_TRUE(errorOf("T.leve").contains("T.level"));
}

} // namespace
} // namespace test
} // namespace plc::configuration
