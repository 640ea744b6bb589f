#include "project/label_syntax.h"

#include <gtest/gtest.h>

namespace plc::project {
namespace test {
namespace {

/// What comes of `text`, as "label|elements|text behind the star".
std::string counted(const char* text)
{
    const CountedLabel counted = takeCountOff(QString::fromUtf8(text));
    return QStringLiteral("%1|%2|%3")
        .arg(counted.label)
        .arg(counted.elements)
        .arg(counted.count)
        .toStdString();
}

TEST(CountOfElements, IsOneWhereNoneStands)
{
    EXPECT_EQ("T.tank[3]|1|", counted("T.tank[3]"));
    EXPECT_EQ("|1|", counted(""));
}

TEST(CountOfElements, StandsBehindTheLastStar)
{
    EXPECT_EQ("T.tank[3]|2|2", counted("T.tank[3]*2"));
    EXPECT_EQ("T.tank[1,2]|7|007", counted("T.tank[1,2]*007"));
    EXPECT_EQ("T.*|2|2", counted("T.**2"));
    EXPECT_EQ("|5|5", counted("*5"));
}

TEST(CountOfElements, IsAWholeNumberFromOneOn)
{
    EXPECT_EQ("T.a|0|", counted("T.a*"));
    EXPECT_EQ("T.a|0|0", counted("T.a*0"));
    EXPECT_EQ("T.a|0|-1", counted("T.a*-1"));
    EXPECT_EQ("T.a|0|1x", counted("T.a*1x"));
    EXPECT_EQ("T.a|0|x", counted("T.a*x"));
    EXPECT_EQ("T.a|0|1.5", counted("T.a*1.5"));
}

TEST(CountOfElements, IsNoMoreThanANumberOf32BitsHolds)
{
    EXPECT_EQ("T.a|2147483647|2147483647", counted("T.a*2147483647"));
    EXPECT_EQ("T.a|0|2147483648", counted("T.a*2147483648"));
    EXPECT_EQ("T.a|0|999999999999", counted("T.a*999999999999"));
}

TEST(CountOfElements, HasDigitsOnly)
{
    EXPECT_EQ("T.a|0| 2", counted("T.a* 2"));
    EXPECT_EQ("T.a|0|2 ", counted("T.a*2 "));
    EXPECT_EQ("T.a|0|+2", counted("T.a*+2"));
    EXPECT_EQ("T.a |2|2", counted("T.a *2")) << "what is wrong with the label, its lookup tells";
    EXPECT_EQ("T.a|0|\u0662", counted("T.a*\u0662")) << "a digit of another script";
}

TEST(CountOfElements, IsNoneWithinBrackets)
{
    EXPECT_EQ("T.a[|0|2]", counted("T.a[*2]"));
    EXPECT_EQ("T.a[*]|3|3", counted("T.a[*]*3"));
}

} // namespace
} // namespace test
} // namespace plc::project
