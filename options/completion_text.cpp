#include "options/completion_text.h"

#include <QtCore/QMap>

namespace plc::options {

QString completionCases(const Table& table, int indent)
{
    QMap<QString, QStringList> patterns; // by what completes them
    for (const Option& option : table) {
        if (!option.hasValue())
            continue;
        QStringList& ofAll = patterns[QString::fromLatin1(option.completion)];
        if (!option.letter().isEmpty())
            ofAll.append(QLatin1Char('-') + option.letter());
        ofAll.append(QStringLiteral("--") + option.name());
    }
    const QString margin(indent, QLatin1Char(' '));
    QString text;
    for (auto each = patterns.constBegin(); each != patterns.constEnd(); ++each) {
        text += margin + each->join(QStringLiteral(" | ")) + QStringLiteral(")\n");
        if (!each.key().isEmpty())
            text += margin + QStringLiteral("    ") + each.key() + QLatin1Char('\n');
        text += margin + QStringLiteral("    return\n") + margin + QStringLiteral("    ;;\n");
    }
    return text;
}

QString completionNames(const Table& table)
{
    QStringList names;
    for (const Option& option : table)
        names.append(QStringLiteral("--") + option.name());
    return names.join(QLatin1Char(' '));
}

} // namespace plc::options
