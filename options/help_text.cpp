#include "options/help_text.h"

#include <QtCore/QCoreApplication>

namespace plc::options {
namespace {

constexpr int kIndent = 2;
constexpr int kHelpColumn = 26;
constexpr int kLineWidth = 80;

/// Words behind a heading; further lines begin at the same column.
QString wrapped(const QString& heading, const QString& words, int column)
{
    const QString margin(column, QLatin1Char(' '));
    QString text;
    QString line = heading;
    for (const QString& word : words.split(QLatin1Char(' '))) {
        const bool isFirst = int(line.size()) <= column;
        if (!isFirst && int(line.size()) + 1 + int(word.size()) > kLineWidth) {
            text += line + QLatin1Char('\n');
            line = margin + word;
        } else {
            line += isFirst ? word : QLatin1Char(' ') + word;
        }
    }
    return text + line;
}

} // namespace

QString helpItem(const QString& name, const QString& help)
{
    const QString heading = QString(kIndent, QLatin1Char(' ')) + name;
    const QString margin(kHelpColumn, QLatin1Char(' '));
    if (int(heading.size()) + 2 > kHelpColumn)
        return heading + QLatin1Char('\n') + wrapped(margin, help, kHelpColumn);
    return wrapped(heading.leftJustified(kHelpColumn), help, kHelpColumn);
}

QString paragraph(const QString& text)
{
    return wrapped(QString(), text, 0);
}

QString sentence(const char* help)
{
    QString text = QString::fromUtf8(help);
    text[0] = text[0].toUpper();
    return text + QLatin1Char('.');
}

QString helpText(const Table& table)
{
    QString text;
    for (const Option& option : table)
        text += helpItem(QString::fromLatin1(option.usage), QString::fromUtf8(option.help)) +
                QLatin1Char('\n');
    return text;
}

QString informationText(const CommandLine& line, const QString& program, const QString& usage,
                        const Table& table)
{
    if (line.has(QStringLiteral("help")))
        return (usage + helpText(table)).trimmed();
    return line.has(QStringLiteral("version")) ? versionText(program) : QString();
}

QString versionText(const QString& program)
{
    return program + QLatin1Char(' ') + QCoreApplication::applicationVersion();
}

} // namespace plc::options
