#ifndef PLC_CLI_COMMAND_H
#define PLC_CLI_COMMAND_H

#include <array>
#include <limits>
#include <memory>

#include "cli/command_options.h"

namespace plc::cli {

constexpr int kAnyNumber = std::numeric_limits<int>::max();

/// What a command takes behind its name.
struct Arguments {
    const char* usage; ///< "[LABEL...]"
    int fewest;
    int most;
    const char* expected; ///< "any number of labels"
    options::Completion completion;
};

/// Completes a label of the project, and behind `write` an assignment.
constexpr options::Completion kCompleteLabel = "_plc_complete_label \"$command\"";

/// A command of the program: how it is written, what help tells of it, and what carries it out.
struct Command {
    const char* name;
    Arguments arguments;
    const char* summary;              ///< A few lines for the list of all commands.
    std::array<const char*, 4> notes; ///< Paragraphs below its options; null where there are fewer.
    std::unique_ptr<CommandOptions> (*makeOptions)();
    /// Takes what makeOptions() made. Returns the exit code.
    int (*execute)(const CommandOptions& options);
};

/// Makes the options of one command.
template <typename OptionsOfCommand>
std::unique_ptr<CommandOptions> makeOptions()
{
    return std::make_unique<OptionsOfCommand>();
}

/// A function of one command's own options as Command::execute.
template <typename OptionsOfCommand, int (*carryOut)(const OptionsOfCommand&)>
int execute(const CommandOptions& options)
{
    return carryOut(static_cast<const OptionsOfCommand&>(options));
}

// Notes of more than one command.

inline constexpr char kLabelNote[] =
    "A label is SCOPE.VARIABLE with subscripts and members as declared, such as\n"
    "Plant.tank[3].level. LABEL*N stands for N elements of an array from that one on;\n"
    "their values are written as 1,2,3.";
inline constexpr char kPatternNote[] =
    "A label may also be a pattern with * and ?, or have a range: Plant.tank*.level,\n"
    "Plant.tank[1..3].level. Put such labels in quotes: shells take brackets and\n"
    "stars for patterns of file names.";
inline constexpr char kValueNote[] =
    "Values: TRUE, -5, 16#FF, 1.5, T#1m30s, 'text' (the quotes may be left out). What\n"
    "is no number is written as REAL#nan, REAL#inf or LREAL#-inf only.";
inline constexpr char kDurationNote[] =
    "A DURATION is 500ms, 10s or 1m30s; a number alone is in ms.";
inline constexpr char kCyclicDurationNote[] =
    "A DURATION is 500ms, 10s or 1m30s; a number alone is ms, and seconds for --for.";

} // namespace plc::cli

#endif
