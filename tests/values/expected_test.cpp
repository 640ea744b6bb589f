#include "values/expected.h"

#include <gtest/gtest.h>

#include <memory>

namespace plc {
namespace {

Expected<int> half(int number)
{
    if (number % 2 != 0)
        return Error{QStringLiteral("%1 is odd").arg(number)};
    return number / 2;
}

Expected<void> checkEven(int number)
{
    const Expected<int> result = half(number);
    return result ? Expected<void>() : Expected<void>(result.error());
}

TEST(Expected, HoldsAValue)
{
    const Expected<int> result = half(10);
    ASSERT_TRUE(result);
    EXPECT_EQ(5, *result);
    EXPECT_EQ(5, result.valueOr(7));
}

TEST(Expected, HoldsTheReasonWhyThereIsNone)
{
    const Expected<int> result = half(3);
    ASSERT_FALSE(result);
    EXPECT_EQ("3 is odd", result.error().text.toStdString());
    EXPECT_EQ(7, result.valueOr(7));
}

TEST(Expected, MayHoldNothingButSuccess)
{
    EXPECT_TRUE(checkEven(4));
    ASSERT_FALSE(checkEven(5));
    EXPECT_EQ("5 is odd", checkEven(5).error().text.toStdString());
}

TEST(Expected, ATextIsAValueOfItsOwn)
{
    const Expected<QString> text = QString();
    EXPECT_TRUE(text);
    EXPECT_EQ(QString(), *text);
}

TEST(Expected, GivesItsValueAway)
{
    Expected<std::unique_ptr<int>> owner = std::make_unique<int>(3);
    const std::unique_ptr<int> taken = *std::move(owner);
    ASSERT_TRUE(taken);
    EXPECT_EQ(3, *taken);
}

TEST(Expected, AValueThatIsNotThereIsNoRandomOne)
{
    const Expected<int> result = half(3);
    EXPECT_THROW((void)*result, std::bad_variant_access);
}

} // namespace
} // namespace plc
