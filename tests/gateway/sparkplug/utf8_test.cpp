#include "gateway/sparkplug/utf8.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

std::optional<QString> read(const QByteArray& bytes)
{
    return fromUtf8(bytes.constData(), std::size_t(bytes.size()));
}

TEST(Utf8, WritesAllCharacters)
{
    EXPECT_EQ(QByteArray("a\xC3\xB6\xE2\x82\xAC\xF0\x9F\x98\x80"), utf8(QString::fromUtf8("aö€😀")));
}

TEST(Utf8, HalfACharacterIsReplaced)
{
    const QString halves = QString(QChar(0xD83D)) + QLatin1Char('x') + QChar(0xDE00);
    EXPECT_EQ(QByteArray("\xEF\xBF\xBDx\xEF\xBF\xBD"), utf8(halves));
}

TEST(Utf8, ReadsWhatItWrites)
{
    EXPECT_EQ(QString::fromUtf8("aö€😀"), read("a\xC3\xB6\xE2\x82\xAC\xF0\x9F\x98\x80"));
    EXPECT_EQ(QString(), read(""));
    EXPECT_EQ(QString(1, QChar(0)), read(QByteArray("\0", 1)));
}

TEST(Utf8, RefusesWhatWouldBecomeAnotherText)
{
    EXPECT_FALSE(read("\xFF"));
    EXPECT_FALSE(read("a\xC3"));
    EXPECT_FALSE(read("\xC0\x80"));     // zero in two bytes
    EXPECT_FALSE(read("\xED\xA0\x80")); // half a character
    EXPECT_FALSE(
        read("\xEF\xBB\xBF"
             "a")); // a byte order mark, which Qt would leave out
}

} // namespace
} // namespace plc::gateway
