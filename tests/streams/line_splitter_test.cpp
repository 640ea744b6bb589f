#include "streams/line_splitter.h"

#include <QtCore/QStringList>

#include "tests/support/qt_printers.h"

namespace plc::streams {
namespace test {
namespace {

class LineSplitterTest : public ::testing::Test {
protected:
    QStringList lines;
    int refused = 0;
    LineSplitter splitter{8, [this](const QString& line) { lines.append(line); },
                          [this] { ++refused; }};
};

TEST_F(LineSplitterTest, GivesLinesHoweverTheyCome)
{
    splitter.feed("on");
    splitter.feed("e\ntwo\n\nth");
    EXPECT_EQ((QStringList{"one", "two", ""}), lines);
    splitter.feed("ree");
    splitter.finish();
    splitter.finish();
    EXPECT_EQ((QStringList{"one", "two", "", "three"}), lines);
    EXPECT_EQ(0, refused);
}

TEST_F(LineSplitterTest, ALineThatIsTooLongIsLeftOutToItsEnd)
{
    splitter.feed("12345678\n123456789\nnext\n");
    EXPECT_EQ((QStringList{"12345678", "next"}), lines);
    EXPECT_EQ(1, refused);
    for (int i = 0; i < 100; ++i) {
        splitter.feed("abcde");
        ASSERT_LE(splitter.pending(), 8);
    }
    EXPECT_EQ(2, refused) << "told once, before the line has ended";
    splitter.feed("rest\nlast");
    splitter.finish();
    EXPECT_EQ((QStringList{"12345678", "next", "last"}), lines);
    EXPECT_EQ(2, refused);
}

TEST_F(LineSplitterTest, TheEndOfTheInputEndsALineThatIsTooLong)
{
    splitter.feed("0123456789");
    splitter.finish();
    EXPECT_TRUE(lines.isEmpty());
    EXPECT_EQ(1, refused);
}

} // namespace
} // namespace test
} // namespace plc::streams
