#include "cli/text_cells.h"

#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

TEST(TextCells, ShortTextsAreFilledUpWithBlanks)
{
    EXPECT_EQ("abc  ", fitted(text("abc"), 5));
    EXPECT_EQ("abc  ", fittedTail(text("abc"), 5));
    EXPECT_EQ("  abc", fittedRight(text("abc"), 5));
    EXPECT_EQ("", fitted(text(""), 0));
}

TEST(TextCells, LongTextsAreCutOffBehindAnEllipsis)
{
    EXPECT_EQ(fitted(text("abcdef"), 5), text("abcd…"));
    EXPECT_EQ(fittedTail(text("abcdef"), 5), text("…cdef"));
    EXPECT_EQ(fittedRight(text("abcdef"), 5), text("abcd…"));
    EXPECT_EQ(fitted(text("abcdef"), 1), text("…"));
    EXPECT_EQ("", fitted(text("abcdef"), 0));
    EXPECT_EQ("", fittedTail(text("abcdef"), 0));
}

TEST(TextCells, WideCharactersTakeTwoCellsAndAreNotSplit)
{
    EXPECT_EQ(4, cellsOf(text("液位")));
    EXPECT_EQ(fitted(text("液位"), 5), text("液位 "));
    EXPECT_EQ(fitted(text("液位高"), 5), text("液位…"));
    EXPECT_EQ(fitted(text("液位高"), 4), text("液… "));
    EXPECT_EQ(fittedTail(text("液位高"), 4), text("…高 "));
    EXPECT_EQ(2, cellsOf(text("\xF0\x9F\x94\xA5"))) << "beyond the first plane";
    EXPECT_EQ(fitted(text("\xF0\x9F\x94\xA5"), 2), text("\xF0\x9F\x94\xA5"));
}

TEST(TextCells, MarksOverCharactersTakeNone)
{
    EXPECT_EQ(1, cellsOf(text("e\xCC\x81")));
    EXPECT_EQ(fitted(text("e\xCC\x81"), 3), text("e\xCC\x81  "));
}

TEST(TextCells, ControlCharactersDoNotReachTheTerminal)
{
    EXPECT_EQ("a\\u001b[2J\\u000a ", fitted(text("a\x1b[2J\n"), 17));
    EXPECT_EQ("\\u009b ", fitted(QString(QChar(0x9B)), 7));
    EXPECT_EQ("\\u202e12 ", fitted(text("\xE2\x80\xAE"
                                        "12"),
                                   9));
    EXPECT_EQ(6, cellsOf(QString(QChar(0x202E))));
}

TEST(TextCells, AsciiHasAStandInForEachCell)
{
    EXPECT_EQ("12 m?/h", asciiCells(text("12 m³/h")));
    EXPECT_EQ("abc~", asciiCells(text("abc…")));
    EXPECT_EQ("_.:-=+*#", asciiCells(text("▁▂▃▄▅▆▇█")));
    EXPECT_EQ("??e", asciiCells(text("液e\xCC\x81")));
    EXPECT_EQ("\x1b[7mx", asciiCells(text("\x1b[7mx"))) << "sequences pass";
}

TEST(TextCells, TheFirstLocaleVariableThatIsSetCounts)
{
    qunsetenv("LC_ALL");
    qunsetenv("LC_CTYPE");
    qunsetenv("LANG");
    EXPECT_FALSE(localeIsUtf8());
    qputenv("LANG", "de_DE.UTF-8");
    EXPECT_TRUE(localeIsUtf8());
    qputenv("LC_CTYPE", "de_DE@euro");
    EXPECT_FALSE(localeIsUtf8());
    qputenv("LC_ALL", "C.utf8");
    EXPECT_TRUE(localeIsUtf8());
    qputenv("LC_ALL", "C");
    EXPECT_FALSE(localeIsUtf8());
}

} // namespace
} // namespace test
} // namespace plc::cli
