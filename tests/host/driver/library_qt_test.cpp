#include "host/driver/library_qt.h"

#include <QtCore/QBuffer>
#include <QtCore/QFile>

#include <random>

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

using ::testing::Contains;
using ::testing::Optional;

QByteArray contentOf(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return file.readAll();
}

std::optional<QStringList> neededBy(QByteArray content)
{
    QBuffer file(&content);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return neededLibraries(&file);
}

QString coreOf(int qt)
{
    return QStringLiteral("libQt%1Core.so.%1").arg(qt);
}

TEST(LibraryQt, NeededLibrariesAreReadFromTheFile)
{
    EXPECT_THAT(neededBy(contentOf(PLC_LIBRARY)), Optional(Contains(coreOf(QT_VERSION_MAJOR))));
    EXPECT_THAT(neededBy(contentOf(PLC_OTHER_QT_LIBRARY)),
                Optional(Contains(coreOf(PLC_OTHER_QT))));
}

TEST(LibraryQt, WhatIsNoSharedLibraryHasNone)
{
    EXPECT_FALSE(neededBy(QByteArray()));
    EXPECT_FALSE(neededBy(QByteArray(4096, '\0')));
    EXPECT_FALSE(neededBy("{\"name\": \"no library\"}"));
}

TEST(LibraryQt, LibraryOfAnotherWordSizeOrByteOrderIsNotRead)
{
    constexpr int kWordSize = 4, kByteOrder = 5;
    for (const int place : {kWordSize, kByteOrder}) {
        QByteArray content = contentOf(PLC_OTHER_QT_LIBRARY);
        content[place] = char(3 - content.at(place)); // 1 and 2 stand for the two kinds
        EXPECT_FALSE(neededBy(content)) << place;
    }
}

TEST(LibraryQt, CutFileGivesAllNamesOrNone)
{
    const QByteArray whole = contentOf(PLC_OTHER_QT_LIBRARY);
    const std::optional<QStringList> all = neededBy(whole);
    ASSERT_TRUE(all);
    int refused = 0;
    for (int size = 0; size < int(whole.size()); size += 16) {
        const std::optional<QStringList> names = neededBy(whole.left(size));
        refused += names ? 0 : 1;
        EXPECT_TRUE(!names || *names == *all) << size;
    }
    EXPECT_GT(refused, 4) << "the header alone is longer than three steps";
}

TEST(LibraryQt, DamagedFileIsReadWithinItsBounds)
{
    const QByteArray whole = contentOf(PLC_OTHER_QT_LIBRARY);
    std::mt19937 random(1);
    constexpr int kHeaders = 1024; // where damage changes places and sizes
    for (int round = 0; round < 2000; ++round) {
        QByteArray damaged = whole;
        for (int i = 0; i < 4; ++i)
            damaged[int(random() % kHeaders)] = char(random());
        neededBy(damaged);
    }
}

TEST(LibraryQt, MajorVersionStandsBehindTheNameOfTheCoreLibrary)
{
    const auto major = [](const char* name) {
        return qtMajorAmong({QStringLiteral("libc.so.6"), QLatin1String(name)});
    };
    EXPECT_EQ(4, major("libQtCore.so.4"));
    EXPECT_EQ(5, major("libQt5Core.so.5"));
    EXPECT_EQ(6, major("libQt6Core.so.6"));
    EXPECT_EQ(5, major("libQt5CorePanel.so.5")) << "with a name of the panel maker's";
    EXPECT_EQ(major("libQt5Network.so.5"), std::nullopt);
    EXPECT_EQ(major("libmyQt5Core.so.5"), std::nullopt);
    EXPECT_EQ(qtMajorAmong({coreOf(5), coreOf(6)}), std::nullopt);
    EXPECT_EQ(qtMajorAmong({}), std::nullopt);
}

} // namespace
} // namespace test
} // namespace plc::host
