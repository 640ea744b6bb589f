#ifndef PLC_OPTIONS_COMMAND_LINE_H
#define PLC_OPTIONS_COMMAND_LINE_H

#include <QtCore/QMap>

#include "options/option.h"

namespace plc::options {

/// A command line that is taken apart into options and arguments, but not understood yet.
class CommandLine {
public:
    /// `arguments` begin with the program. `known` are all options that may stand in it, wherever;
    /// others are an error, and so is a value that is missing.
    static Expected<CommandLine> parse(const QStringList& arguments, const Table& known);

    const QStringList& arguments() const { return m_arguments; }
    bool has(const QString& name) const { return m_given.contains(name); }

    /// The options that are given and that `table` does not have.
    QStringList namesBeside(const Table& table) const;

    /// Has each option that is given read by its reader. Tells the first that is wrong.
    Expected<void> read(const Table& table) const;

private:
    QStringList m_arguments;
    QMap<QString, QStringList> m_given; ///< By the long names.
};

/// Each program has these.
Table informationOptions(bool* wantsHelp, bool* wantsVersion);

} // namespace plc::options

#endif
