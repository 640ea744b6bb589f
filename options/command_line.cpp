#include "options/command_line.h"

#include <QtCore/QCommandLineParser>

#include <algorithm>

#include "options/readers.h"

namespace plc::options {
namespace {

QStringList namesOf(const Option& option)
{
    QStringList names{option.name()};
    if (!option.letter().isEmpty())
        names.prepend(option.letter());
    return names;
}

bool isBlank(const QString& text)
{
    return text.trimmed().isEmpty();
}

} // namespace

Expected<CommandLine> CommandLine::parse(const QStringList& arguments, const Table& known)
{
    QCommandLineParser parser;
    for (const Option& option : known)
        parser.addOption(QCommandLineOption(namesOf(option), QString(), option.placeholder()));
    if (!parser.parse(arguments))
        return Error{parser.errorText() + QStringLiteral(" --help lists the options.")};
    CommandLine line;
    line.m_arguments = parser.positionalArguments();
    for (const Option& option : known) {
        const QString name = option.name();
        if (parser.isSet(name))
            line.m_given.insert(name, option.hasValue() ? parser.values(name) : QStringList());
    }
    return line;
}

QStringList CommandLine::namesBeside(const Table& table) const
{
    QStringList names;
    for (const QString& name : m_given.keys()) {
        if (!findOption(table, name))
            names.append(name);
    }
    return names;
}

Expected<void> CommandLine::read(const Table& table) const
{
    for (const Option& option : table) {
        const Given given{option.name(), m_given.value(option.name())};
        if (!has(given.name))
            continue;
        // An empty value is a variable of a script that was never set, and does not mean what the
        // option's absence means.
        if (std::any_of(given.values.begin(), given.values.end(), isBlank))
            return Error{QStringLiteral("--%1 has an empty value; give one, or leave the option "
                                        "out")
                             .arg(given.name)};
        if (const Expected<void> isRead = option.read(given); !isRead)
            return isRead.error();
    }
    return {};
}

Table informationOptions(bool* wantsHelp, bool* wantsVersion)
{
    return {{"-h, --help", "print this help", flag(wantsHelp), kCompleteNothing,
             "Print how the program is used."},
            {"-v, --version", "print the version", flag(wantsVersion)}};
}

} // namespace plc::options
