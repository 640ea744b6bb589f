#include "values/visible_text.h"

#include <gtest/gtest.h>

#include "project/project_document.h"
#include "values/nearest_name.h"
#include "values/string_literal.h"
#include "values/value_text.h"

namespace plc::values {
namespace test {
namespace {

std::string visible(const char16_t* text)
{
    return visibleText(QString::fromUtf16(text)).toStdString();
}

TEST(VisibleText, LeavesWhatIsShownAsItIs)
{
    EXPECT_EQ("", visible(u""));
    EXPECT_EQ("m\xC2\xB3/h \xE6\xB6\xB2 a\\b", visible(u"m\u00b3/h \u6db2 a\\b"));
    // Joiners belong to scripts and emoji; pairs of surrogates are characters.
    EXPECT_EQ(
        "a\xE2\x80\x8D"
        "b\xF0\x9F\x98\x80",
        visible(u"a\u200db\U0001F600"));
}

TEST(VisibleText, EscapesControlsOfBothSets)
{
    EXPECT_EQ("\\u001b[2J\\u0007", visible(u"\u001b[2J\u0007"));
    EXPECT_EQ("a\\u000a\\u000d\\u0009b", visible(u"a\n\r\tb"));
    EXPECT_EQ("\\u001f ~\\u007f\\u0080\\u009b\\u009f\xC2\xA0",
              visible(u"\u001f ~\u007f\u0080\u009b\u009f\u00a0"));
    EXPECT_EQ("\\u0000", visibleText(QString(QChar(0))).toStdString());
}

TEST(VisibleText, EscapesWhatTurnsTextAroundOrEndsLines)
{
    EXPECT_EQ("\\u061c\\u200e\\u200f", visible(u"\u061c\u200e\u200f"));
    EXPECT_EQ("\\u202a\\u202b\\u202c\\u202d\\u202e", visible(u"\u202a\u202b\u202c\u202d\u202e"));
    EXPECT_EQ("\\u2066\\u2067\\u2068\\u2069", visible(u"\u2066\u2067\u2068\u2069"));
    EXPECT_EQ("\\u2028\\u2029", visible(u"\u2028\u2029"));
}

TEST(VisibleText, EscapesHalvesOfCharacters)
{
    const QChar high(0xD83D), low(0xDE00);
    EXPECT_EQ("\\ud83d", visibleText(QString(high)).toStdString());
    EXPECT_EQ("\\ude00a", visibleText(QString(low) + QLatin1Char('a')).toStdString());
    EXPECT_EQ("\\ude00\\ud83d", visibleText(QString(low) + high).toStdString());
    EXPECT_EQ("\\ud83d\xF0\x9F\x98\x80", visibleText(QString(high) + high + low).toStdString());
}

TEST(VisibleText, IsThatOfJsonAndReadsBackFromIt)
{
    EXPECT_EQ("\"\\u001b\\u007f\\u009b\\u202e\\u2028\\\"\"",
              jsonText(QString::fromUtf16(u"\u001b\u007f\u009b\u202e\u2028\"")).toStdString());
}

TEST(VisibleText, OfQuotedTextsHasSeparatorsOfLines)
{
    EXPECT_EQ("\"a\\u2028\\u2029\\u202e\"",
              quoted(QString::fromUtf16(u"a\u2028\u2029\u202e")).toStdString());
}

TEST(VisibleText, OfLiteralsIsThatOfThePlc)
{
    const QString wide = QString::fromUtf16(u"a\u202e\u2028\u009b") + QChar(0xD800);
    const QString literal = stringLiteral(wide, QLatin1Char('"'));
    EXPECT_EQ("\"a$202E$2028$009B$D800\"", literal.toStdString());
    EXPECT_EQ(wide, parseStringLiteral(literal).valueOr(QString()));
}

} // namespace
} // namespace test
} // namespace plc::values
