#include "cli/key_reader.h"
#include "cli/screen_layout.h"
#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

std::string keyNames(const char* bytes, int size)
{
    const char* const names[] = {"character", "enter",     "backspace", "escape", "up",   "down",
                                 "page up",   "page down", "home",      "end",    "other"};
    std::string text;
    for (const Key& key : readKeys(QByteArray(bytes, size))) {
        text += text.empty() ? "" : ", ";
        text += key.name == Key::Character ? key.text.toStdString() : names[key.name];
    }
    return text;
}

template <size_t Size>
std::string keysOf(const char (&bytes)[Size])
{
    return keyNames(bytes, int(Size) - 1);
}

TEST(KeyReader, NamesTheKeysOfCommonTerminals)
{
    EXPECT_EQ(keysOf("\x1b[A\x1b[B\x1bOA\x1bOB"), "up, down, up, down");
    EXPECT_EQ(keysOf("\x1b[5~\x1b[6~"), "page up, page down");
    EXPECT_EQ(keysOf("\x1b[H\x1b[F\x1bOH\x1bOF\x1b[1~\x1b[4~"), "home, end, home, end, home, end");
    EXPECT_EQ(keysOf("\r\n\x7f\x08"), "enter, enter, backspace, backspace");
    EXPECT_EQ(keysOf("\x1b"), "escape");
}

TEST(KeyReader, CharactersStandForThemselvesInUtf8)
{
    EXPECT_EQ(keysOf("q:\xC3\xA9"), "q, :, \xC3\xA9");
    EXPECT_EQ(keysOf("a\x1b[Ab"), "a, up, b");
}

TEST(KeyReader, WhatItDoesNotKnowIsOneOtherKey)
{
    EXPECT_EQ(keysOf("\x1b[15~x"), "other, x");
    EXPECT_EQ(keysOf("\x1b[1;5Cx"), "other, x");
    EXPECT_EQ(keysOf("\x01\x1b["), "other, other");
    EXPECT_EQ(keysOf(""), "");
}

const Style kColoured(Style::Coloured);

ScreenContent content(int rows)
{
    ScreenContent content;
    content.title = QStringLiteral("Plant");
    content.status = QStringLiteral("connected");
    for (int i = 0; i < rows; ++i) {
        ScreenRow row;
        row.label = QStringLiteral("Main.value%1").arg(i);
        row.value = QStringLiteral("%1 rpm").arg(i * 10);
        row.age = QStringLiteral("12 ms");
        row.rate = QStringLiteral("9.9/s");
        content.rows.append(row);
    }
    content.message = QStringLiteral("all well");
    content.prompt = QStringLiteral("keys");
    return content;
}

/// Characters that the terminal shows, without the sequences for colours.
int shownWidth(QString line)
{
    for (const char* sequence : {"\x1b[31m", "\x1b[7m", "\x1b[0m"})
        line.remove(QString::fromLatin1(sequence));
    return int(line.size());
}

TEST(ScreenLayout, FitsEveryTerminal)
{
    for (int width : {1, 2, 10, 39, 80, 155, 156, 157, 300}) {
        for (int height : {1, 2, 5, 6, 24, 100}) {
            for (int rows : {0, 1, 18, 500}) {
                ScreenContent screen = content(rows);
                if (rows > 0)
                    screen.rows[0].isStale = true;
                const QStringList lines = layOutScreen(screen, width, height, 0, kColoured);
                ASSERT_LE(lines.size(), height);
                for (const QString& line : lines)
                    ASSERT_LE(shownWidth(line), width)
                        << width << 'x' << height << ": " << line.toStdString();
            }
        }
    }
}

TEST(ScreenLayout, ShowsEachValueWithItsAgeAndRate)
{
    const QStringList lines = layOutScreen(content(3), 60, 10, 0, kColoured);
    ASSERT_EQ(lines.size(), 10);
    EXPECT_EQ(lines[0].trimmed(), "Plant");
    EXPECT_EQ(lines[1].trimmed(), "connected, 3 values");
    EXPECT_EQ(lines[4], "Main.value1          10 rpm                   12 ms   9.9/s ");
    EXPECT_EQ(lines[8].trimmed(), "all well");
    EXPECT_EQ(lines[9].trimmed(), "keys");
}

TEST(ScreenLayout, SaysWhichValuesAreInSight)
{
    EXPECT_EQ(rowsOnScreen(80, 24), 19);
    const QStringList lines = layOutScreen(content(150), 80, 24, 100, kColoured);
    EXPECT_EQ(lines[1].trimmed(), "connected, values 101 to 119 of 150");
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("Main.value100 ")));
}

TEST(ScreenLayout, WideTerminalHasColumnsFilledOneAfterTheOther)
{
    EXPECT_EQ(rowsOnScreen(160, 24), 38);
    const QStringList lines = layOutScreen(content(150), 160, 24, 0, kColoured);
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("Main.value0 ")));
    EXPECT_TRUE(lines[3].mid(80).startsWith(QStringLiteral("Main.value19 ")));
}

TEST(ScreenLayout, StaleRowsAreRed)
{
    ScreenContent screen = content(2);
    screen.rows[1].isStale = true;
    const QStringList lines = layOutScreen(screen, 60, 10, 0, kColoured);
    EXPECT_FALSE(lines[3].contains(QChar(0x1b)));
    EXPECT_TRUE(lines[4].startsWith(QStringLiteral("\x1b[31mMain.value1 ")));
    EXPECT_TRUE(lines[4].contains(QStringLiteral("\x1b[0m")));
}

TEST(ScreenLayout, OfALongLabelTheEndIsShownAndOfALongValueTheBeginning)
{
    ScreenContent screen = content(1);
    screen.rows[0].label = QString(200, QLatin1Char('x'));
    screen.rows[0].value = QString(200, QLatin1Char('7'));
    const QString line = layOutScreen(screen, 60, 10, 0, kColoured)[3];
    EXPECT_TRUE(line.startsWith(QString::fromUtf8("…xxxxxxxxxxxxxxxxxxx 7777")))
        << line.toStdString();
    EXPECT_EQ(line.lastIndexOf(QChar(0x2026)), 41);
}

TEST(ScreenLayout, LongLabelsInSightDiffer)
{
    ScreenContent screen = content(2);
    screen.rows[0].label = QStringLiteral("Plant.tank[1].outlet.valve.speed");
    screen.rows[1].label = QStringLiteral("Plant.tank[2].outlet.valve.speed");
    const QStringList lines = layOutScreen(screen, 60, 10, 0, kColoured);
    EXPECT_TRUE(lines[3].contains(QStringLiteral("[1"))) << lines[3].toStdString();
    EXPECT_TRUE(lines[4].contains(QStringLiteral("[2"))) << lines[4].toStdString();
}

} // namespace
} // namespace test
} // namespace plc::cli
