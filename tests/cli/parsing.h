#ifndef PLC_TESTS_CLI_PARSING_H
#define PLC_TESTS_CLI_PARSING_H

#include "cli/command_line.h"

namespace plc::cli::test {

/// Reads command lines as the program does.
class Parsing : public ::testing::Test {
protected:
    /// What the command line leads to, or the complaint.
    static Expected<Invocation> parse(const QStringList& arguments)
    {
        return readCommandLine(QStringList{QStringLiteral("plc")} + arguments);
    }

    /// The options of a good command line. `OptionsOfCommand` must be those of its command.
    template <typename OptionsOfCommand>
    static OptionsOfCommand optionsOf(const QStringList& arguments)
    {
        const Expected<Invocation> invocation = parse(arguments);
        if (!invocation) {
            ADD_FAILURE() << invocation.error().text.toStdString();
            return OptionsOfCommand();
        }
        const auto* options = dynamic_cast<const OptionsOfCommand*>(invocation->options.get());
        if (!options) {
            ADD_FAILURE() << "another command's options";
            return OptionsOfCommand();
        }
        return *options;
    }

    static QString complaint(const QStringList& arguments)
    {
        const Expected<Invocation> invocation = parse(arguments);
        EXPECT_FALSE(invocation);
        return invocation ? QString() : invocation.error().text;
    }
};

} // namespace plc::cli::test

#endif
