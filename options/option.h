#ifndef PLC_OPTIONS_OPTION_H
#define PLC_OPTIONS_OPTION_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>

#include "values/expected.h"

namespace plc::options {

/// What the command line has of an option.
struct Given {
    QString name;       ///< The long one, without dashes.
    QStringList values; ///< One for each time that it is given; none of a flag.

    /// Of several the last one counts.
    QString text() const { return values.last(); }
};

/// Takes over what was given, or tells what is wrong with it.
using Reader = std::function<Expected<void>(const Given&)>;

/// Words of the shell that complete a value: a function of bash-completion and its arguments.
using Completion = const char*;
constexpr Completion kCompleteNothing = "";
constexpr Completion kCompleteFile = "_filedir";
constexpr Completion kCompleteProject = "_filedir json";
constexpr Completion kCompleteCsvFile = "_filedir csv";
constexpr Completion kCompleteHost = "_known_hosts_real -- \"$cur\"";

/// One option of a program or of one of its commands: all that is to be known of it.
struct Option {
    /// As help shows it: "-o, --output FILE", "--json". Without a placeholder it is a flag.
    const char* usage;
    /// What it does, in words that can stand behind the name: "end after this time".
    const char* help;
    Reader read;
    Completion completion = kCompleteNothing;
    /// What the manual tells instead of `help`, in whole sentences. A text between backquotes
    /// stands out; options, commands and placeholders among such texts are known.
    const char* manual = nullptr;

    QString name() const;        ///< "output"
    QString letter() const;      ///< "o", or empty.
    QString placeholder() const; ///< "FILE", empty for a flag.
    bool hasValue() const { return !placeholder().isEmpty(); }
};

/// Options in the order in which help shows them.
using Table = QVector<Option>;

/// The option of this name, or null.
const Option* findOption(const Table& table, const QString& name);

/// Adds those options of `further` whose names `table` does not have yet.
void addNew(const Table& further, Table* table);

} // namespace plc::options

#endif
