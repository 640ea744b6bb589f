#include "cli/style.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>
#include <cstdlib>

namespace plc::cli {
namespace test {
namespace {

/// A terminal that nobody looks at.
class TerminalStyle : public ::testing::Test {
protected:
    TerminalStyle() : m_controller(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        ::grantpt(m_controller);
        ::unlockpt(m_controller);
        m_terminal = ::open(::ptsname(m_controller), O_RDWR | O_NOCTTY);
        qputenv("TERM", "xterm");
        qunsetenv("NO_COLOR");
    }
    ~TerminalStyle() override
    {
        ::close(m_terminal);
        ::close(m_controller);
    }

    std::string failure() const
    {
        return Style::of(m_terminal).apply(Emphasis::Failure, QStringLiteral("lost")).toStdString();
    }

private:
    int m_controller;
    int m_terminal = -1;
};

TEST_F(TerminalStyle, HasColours)
{
    EXPECT_EQ("\x1b[31mlost\x1b[0m", failure());
}

TEST_F(TerminalStyle, HasNoColoursWhereTheUserWantsNone)
{
    qputenv("NO_COLOR", "1");
    EXPECT_EQ("\x1b[1mlost\x1b[0m", failure());
    EXPECT_EQ(Style::Plain, Style::of(-1).capability());
}

TEST_F(TerminalStyle, HasColoursWhereTheWishForNoneIsEmpty)
{
    qputenv("NO_COLOR", "");
    EXPECT_EQ("\x1b[31mlost\x1b[0m", failure());
}

TEST_F(TerminalStyle, IsPlainOnADumbTerminal)
{
    qputenv("TERM", "dumb");
    EXPECT_EQ("lost", failure());
}

TEST(PlainStyle, IsThatOfAPipe)
{
    qputenv("TERM", "xterm");
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    EXPECT_EQ(Style::Plain, Style::of(ends[1]).capability());
    ::close(ends[0]);
    ::close(ends[1]);
}

constexpr Emphasis kAll[] = {Emphasis::Success, Emphasis::Warning, Emphasis::Failure,
                             Emphasis::Changed, Emphasis::Faint,   Emphasis::Strong,
                             Emphasis::Heading};

TEST(PlainStyle, LeavesTextAlone)
{
    for (const Emphasis emphasis : kAll)
        EXPECT_EQ("a b", Style(Style::Plain).apply(emphasis, QStringLiteral("a b")));
}

TEST(MonochromeStyle, HasNoSequenceForAColour)
{
    for (const Emphasis emphasis : kAll) {
        const QString text = Style(Style::Monochrome).apply(emphasis, QStringLiteral("a b"));
        EXPECT_TRUE(text.contains(QStringLiteral("a b")));
        EXPECT_FALSE(text.contains(QStringLiteral("\x1b[3"))) << text.toStdString();
        EXPECT_FALSE(text.contains(QStringLiteral(";3"))) << text.toStdString();
    }
}

} // namespace
} // namespace test
} // namespace plc::cli
