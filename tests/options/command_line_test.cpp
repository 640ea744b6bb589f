#include "options/command_line.h"

#include "options/readers.h"
#include "tests/support/qt_printers.h"

namespace plc::options {
namespace test {
namespace {

class CommandLineTest : public ::testing::Test {
protected:
    /// What is wrong with a command line, or nothing once it is read.
    QString read(const QStringList& arguments)
    {
        const Expected<CommandLine> line =
            CommandLine::parse(QStringList{QStringLiteral("program")} + arguments, m_table);
        if (!line)
            return line.error().text;
        m_arguments = line->arguments();
        const Expected<void> isRead = line->read(m_table);
        return isRead ? QString() : isRead.error().text;
    }

    QString m_file = QStringLiteral("default");
    bool m_isOn = false;
    quint16 m_port = 7;
    QVector<int> m_numbers;
    qint64 m_size = 0;
    double m_time = 0;
    QStringList m_arguments;
    const Table m_table{{"-f, --file FILE", "a file", text(&m_file)},
                        {"--on", "a flag", flag(&m_isOn)},
                        {"--port N", "a number", integer(&m_port, 1, 65535)},
                        {"--number N", "numbers", integers(&m_numbers, 0, 9)},
                        {"--size SIZE", "a size", size(&m_size)},
                        {"--time DURATION", "a time", duration(&m_time, {kSecond, 0, 60000})}};
};

TEST_F(CommandLineTest, WhatIsNotGivenStaysAsItIs)
{
    EXPECT_EQ("", read({"a", "b"}));
    EXPECT_EQ("default", m_file);
    EXPECT_FALSE(m_isOn);
    EXPECT_EQ(7, m_port);
    EXPECT_EQ((QStringList{"a", "b"}), m_arguments);
}

TEST_F(CommandLineTest, OptionsStandAnywhereInAllTheirForms)
{
    EXPECT_EQ("", read({"-f", "x", "a", "--on", "--port=99", "--number", "1", "--number", "3",
                        "--size", "2k", "--time", "1.5", "--", "--b"}));
    EXPECT_EQ("x", m_file);
    EXPECT_TRUE(m_isOn);
    EXPECT_EQ(99, m_port);
    EXPECT_EQ((QVector<int>{1, 3}), m_numbers);
    EXPECT_EQ(2048, m_size);
    EXPECT_EQ(1500, m_time);
    EXPECT_EQ((QStringList{"a", "--b"}), m_arguments);
}

TEST_F(CommandLineTest, TheLastOfSeveralCounts)
{
    EXPECT_EQ("", read({"--file", "x", "-f", "y"}));
    EXPECT_EQ("y", m_file);
}

TEST_F(CommandLineTest, WhatIsWrongIsNamed)
{
    EXPECT_EQ("Unknown option 'bogus'. --help lists the options.", read({"--bogus"}));
    EXPECT_EQ("--file has an empty value; give one, or leave the option out", read({"-f", " "}));
    EXPECT_EQ("--port takes a number from 1 to 65535, not \"0\"", read({"--port", "0"}));
    EXPECT_EQ("--number takes a number from 0 to 9, not \"x\"",
              read({"--number", "1", "--number", "x"}));
    EXPECT_EQ(
        "--time takes a duration such as 500ms, 10s or 1m30s or a number of seconds, from "
        "0s to 1m, not \"2m\"",
        read({"--time", "2m"}));
}

TEST_F(CommandLineTest, OptionsBesideATableAreNamed)
{
    const Expected<CommandLine> line =
        CommandLine::parse({"program", "--on", "--port", "1"}, m_table);
    ASSERT_TRUE(line);
    EXPECT_EQ(QStringList{"on"}, line->namesBeside({m_table[0], m_table[2]}));
}

} // namespace
} // namespace test
} // namespace plc::options
