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
    EXPECT_EQ("up, down, up, down", keysOf("\x1b[A\x1b[B\x1bOA\x1bOB"));
    EXPECT_EQ("page up, page down", keysOf("\x1b[5~\x1b[6~"));
    EXPECT_EQ("home, end, home, end, home, end", keysOf("\x1b[H\x1b[F\x1bOH\x1bOF\x1b[1~\x1b[4~"));
    EXPECT_EQ("enter, enter, backspace, backspace", keysOf("\r\n\x7f\x08"));
    EXPECT_EQ("escape", keysOf("\x1b"));
}

TEST(KeyReader, CharactersStandForThemselvesInUtf8)
{
    EXPECT_EQ("q, :, \xC3\xA9", keysOf("q:\xC3\xA9"));
    EXPECT_EQ("a, up, b", keysOf("a\x1b[Ab"));
}

TEST(KeyReader, WhatItDoesNotKnowIsOneOtherKey)
{
    EXPECT_EQ("other, x", keysOf("\x1b[15~x"));
    EXPECT_EQ("other, x", keysOf("\x1b[1;5Cx"));
    EXPECT_EQ("other, other", keysOf("\x01\x1b["));
    EXPECT_EQ("", keysOf(""));
}

const Style kScreenStyle(Style::Coloured);

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
                const QStringList lines = layOutScreen(screen, width, height, 0, kScreenStyle);
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
    const QStringList lines = layOutScreen(content(3), 60, 10, 0, kScreenStyle);
    ASSERT_EQ(10, lines.size());
    EXPECT_EQ("Plant", lines[0].trimmed());
    EXPECT_EQ("connected, 3 values", lines[1].trimmed());
    EXPECT_EQ("Main.value1          10 rpm                   12 ms   9.9/s ", lines[4]);
    EXPECT_EQ("all well", lines[8].trimmed());
    EXPECT_EQ("keys", lines[9].trimmed());
}

TEST(ScreenLayout, SaysWhichValuesAreInSight)
{
    EXPECT_EQ(19, rowsOnScreen(80, 24));
    const QStringList lines = layOutScreen(content(150), 80, 24, 100, kScreenStyle);
    EXPECT_EQ("connected, values 101 to 119 of 150", lines[1].trimmed());
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("Main.value100 ")));
}

TEST(ScreenLayout, WideTerminalHasColumnsFilledOneAfterTheOther)
{
    EXPECT_EQ(38, rowsOnScreen(160, 24));
    const QStringList lines = layOutScreen(content(150), 160, 24, 0, kScreenStyle);
    EXPECT_TRUE(lines[3].startsWith(QStringLiteral("Main.value0 ")));
    EXPECT_TRUE(lines[3].mid(80).startsWith(QStringLiteral("Main.value19 ")));
}

TEST(ScreenLayout, StaleRowsAreRed)
{
    ScreenContent screen = content(2);
    screen.rows[1].isStale = true;
    const QStringList lines = layOutScreen(screen, 60, 10, 0, kScreenStyle);
    EXPECT_FALSE(lines[3].contains(QChar(0x1b)));
    EXPECT_TRUE(lines[4].startsWith(QStringLiteral("\x1b[31mMain.value1 ")));
    EXPECT_TRUE(lines[4].contains(QStringLiteral("\x1b[0m")));
}

TEST(ScreenLayout, OfALongLabelTheEndIsShownAndOfALongValueTheBeginning)
{
    ScreenContent screen = content(1);
    screen.rows[0].label = QString(200, QLatin1Char('x'));
    screen.rows[0].value = QString(200, QLatin1Char('7'));
    const QString line = layOutScreen(screen, 60, 10, 0, kScreenStyle)[3];
    EXPECT_TRUE(line.startsWith(QString::fromUtf8("…xxxxxxxxxxxxxxxxxxx 7777")))
        << line.toStdString();
    EXPECT_EQ(41, line.lastIndexOf(QChar(0x2026)));
}

TEST(ScreenLayout, LongLabelsInSightDiffer)
{
    ScreenContent screen = content(2);
    screen.rows[0].label = QStringLiteral("Plant.tank[1].outlet.valve.speed");
    screen.rows[1].label = QStringLiteral("Plant.tank[2].outlet.valve.speed");
    const QStringList lines = layOutScreen(screen, 60, 10, 0, kScreenStyle);
    EXPECT_TRUE(lines[3].contains(QStringLiteral("[1"))) << lines[3].toStdString();
    EXPECT_TRUE(lines[4].contains(QStringLiteral("[2"))) << lines[4].toStdString();
}

} // namespace
} // namespace test
} // namespace plc::cli
