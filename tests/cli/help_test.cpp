#include "cli/help.h"

#include "cli/commands.h"
#include "tests/cli/parsing.h"
#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

using Help = Parsing;

std::string helpOf(const QStringList& arguments)
{
    const Expected<Invocation> help =
        readCommandLine(QStringList{QStringLiteral("plc")} + arguments);
    return help ? help->information.toStdString() : help.error().text.toStdString();
}

TEST_F(Help, ListsEveryCommand)
{
    for (const Command* command : allCommands()) {
        EXPECT_THAT(helpOf({"--help"}),
                    ::testing::HasSubstr(std::string("\n  plc ") + command->name + " " +
                                         command->arguments.usage));
    }
}

TEST_F(Help, OfACommandTellsItsOptionsAlone)
{
    EXPECT_THAT(helpOf({"plan", "--help"}),
                ::testing::StartsWith("usage: plc plan [OPTION...] [PROJECT]\n"));
    EXPECT_THAT(helpOf({"plan", "--help"}), ::testing::HasSubstr("\n  --rtt DURATION "));
    EXPECT_THAT(helpOf({"plan", "--help"}), ::testing::HasSubstr("\n  -p, --project FILE "));
    EXPECT_THAT(helpOf({"plan", "--help"}), ::testing::Not(::testing::HasSubstr("--trace")));
    EXPECT_THAT(helpOf({"--help", "write"}), ::testing::HasSubstr("Values: TRUE"));
}

TEST_F(Help, OfTheImportTellsNoOptionsOfAProject)
{
    const std::string help = helpOf({"import", "--help"});
    EXPECT_THAT(help, ::testing::HasSubstr("\n  --merge FILE "));
    EXPECT_THAT(help, ::testing::HasSubstr("\n  -h, --help "));
    for (const char* option : {"--project", "--driver", "--json"})
        EXPECT_THAT(help, ::testing::Not(::testing::HasSubstr(option)));
}

TEST_F(Help, DoesNotMindWhatElseTheCommandNeeds)
{
    EXPECT_THAT(helpOf({"read", "--port", "x", "--help"}), ::testing::StartsWith("usage: "));
    EXPECT_THAT(helpOf({"raed", "--help"}), ::testing::StartsWith("\"raed\" is no command"));
}

TEST_F(Help, FitsATerminal)
{
    QStringList texts{programHelp()};
    for (const Command* command : allCommands())
        texts.append(commandHelp(*command));
    for (const QString& text : texts) {
        for (const QString& line : text.split(QLatin1Char('\n')))
            EXPECT_LE(line.size(), 80) << line.toStdString();
    }
}

/// A command line is taken apart before its command is known, and completed by the name alone.
TEST_F(Help, OptionsOfOneNameAreWrittenAndCompletedAlikeInAllCommands)
{
    const options::Table all = allOptions();
    for (const Command* command : allCommands()) {
        const std::unique_ptr<CommandOptions> options = command->makeOptions();
        for (const options::Option& option : options->table()) {
            const options::Option* first = options::findOption(all, option.name());
            ASSERT_TRUE(first) << option.usage;
            EXPECT_STREQ(first->usage, option.usage) << command->name;
            EXPECT_STREQ(first->completion, option.completion) << option.usage << command->name;
        }
    }
}

} // namespace
} // namespace test
} // namespace plc::cli
