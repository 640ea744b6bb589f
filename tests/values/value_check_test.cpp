#include "values/value_check.h"

#include <gtest/gtest.h>

namespace plc::values {
namespace {

/// What does not fit; empty if all does.
std::string misfit(const char* type, const Value& value, int room = 0)
{
    const Expected<void> checked = checkValue(*findIecType(QString::fromLatin1(type)), room, value);
    return checked ? std::string() : checked.error().text.toStdString();
}

TEST(ValueCheck, IntegersOfEitherKindFitWithinTheRange)
{
    EXPECT_EQ("", misfit("UINT", quint64(65535)));
    EXPECT_EQ("", misfit("UINT", qint64(65535)));
    EXPECT_EQ("65536 is outside the range of UINT, 0 to 65535", misfit("UINT", quint64(65536)));
    EXPECT_EQ("-1 is outside the range of UINT, 0 to 65535", misfit("UINT", qint64(-1)));
    EXPECT_EQ("", misfit("SINT", qint64(-128)));
    EXPECT_EQ("", misfit("SINT", quint64(127)));
    EXPECT_EQ("-129 is outside the range of SINT, -128 to 127", misfit("SINT", qint64(-129)));
    EXPECT_EQ("128 is outside the range of SINT, -128 to 127", misfit("SINT", quint64(128)));
    EXPECT_EQ("256 is outside the range of BYTE, 16#0 to 16#FF", misfit("BYTE", quint64(256)));
    EXPECT_EQ("4294967296 is outside the range of TIME, 0 to 4294967295",
              misfit("TIME", quint64(4294967296)));
}

TEST(ValueCheck, TheEndsOfSixtyFourBitsFit)
{
    EXPECT_EQ("", misfit("LINT", std::numeric_limits<qint64>::min()));
    EXPECT_EQ("", misfit("LINT", std::numeric_limits<qint64>::max()));
    EXPECT_EQ(
        "9223372036854775808 is outside the range of LINT, "
        "-9223372036854775808 to 9223372036854775807",
        misfit("LINT", quint64(9223372036854775808U)));
    EXPECT_EQ("", misfit("ULINT", std::numeric_limits<quint64>::max()));
    EXPECT_NE("", misfit("ULINT", std::numeric_limits<qint64>::min()));
}

TEST(ValueCheck, KindsAreNotConverted)
{
    EXPECT_EQ("UINT takes a whole number, not 99999.5 of 64 bits", misfit("UINT", 99999.5));
    EXPECT_EQ("UINT takes a whole number, not true", misfit("UINT", true));
    EXPECT_EQ("REAL takes a number of 32 bits, not 1.5 of 64 bits", misfit("REAL", 1.5));
    EXPECT_EQ("LREAL takes a number of 64 bits, not 1.5 of 32 bits", misfit("LREAL", 1.5F));
    EXPECT_EQ("LREAL takes a number of 64 bits, not 1", misfit("LREAL", qint64(1)));
    EXPECT_EQ("BOOL takes true or false, not 1", misfit("BOOL", quint64(1)));
    EXPECT_EQ("BIT takes true or false, not a text", misfit("BIT", QStringLiteral("TRUE")));
    EXPECT_EQ("STRING takes a text, not 7", misfit("STRING", quint64(7), 10));
    EXPECT_EQ("", misfit("REAL", std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ("", misfit("BIT", false));
}

TEST(ValueCheck, TextsFitIntoTheirRoom)
{
    EXPECT_EQ("", misfit("STRING", QStringLiteral("abcd"), 4));
    EXPECT_EQ("the text has 5 characters and the STRING has room for 4",
              misfit("STRING", QStringLiteral("abcde"), 4));
    EXPECT_EQ("the text has the character U+20ac, which a STRING cannot hold",
              misfit("STRING", QString(QChar(0x20AC)), 4));
    EXPECT_EQ("", misfit("WSTRING", QString(QChar(0x20AC)), 4));
    EXPECT_EQ("the text has the character U+0000, which a WSTRING cannot hold",
              misfit("WSTRING", QString(QChar(0)), 4));
}

} // namespace
} // namespace plc::values
