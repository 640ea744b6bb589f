#include "host/symbol_walk.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace plc {
namespace {

QString bracketed(const QStringList& subscripts)
{
    return subscripts.isEmpty()
               ? QString()
               : QLatin1Char('[') + subscripts.join(QLatin1Char(',')) + QLatin1Char(']');
}

QString firstSubscripts(const Variable& variable)
{
    QStringList texts;
    for (const ArrayDimension& dimension : variable.dimensions)
        texts.append(QString::number(dimension.lower));
    return bracketed(texts);
}

void append(const QVector<Variable>& variables, const SymbolEntry& parent,
            QVector<SymbolEntry>* entries)
{
    for (const Variable& variable : variables) {
        SymbolEntry entry;
        entry.pattern = parent.pattern + QLatin1Char('.') + variable.name + boundsText(variable);
        entry.firstLabel =
            parent.firstLabel + QLatin1Char('.') + variable.name + firstSubscripts(variable);
        entry.variable = &variable;
        if (variable.structure)
            append(variable.structure->members, entry, entries);
        else
            entries->append(entry);
    }
}

} // namespace

QString boundsText(const Variable& variable)
{
    QStringList texts;
    for (const ArrayDimension& dimension : variable.dimensions)
        texts.append(QStringLiteral("%1..%2").arg(dimension.lower).arg(dimension.upper));
    return bracketed(texts);
}

QVector<SymbolEntry> symbolEntries(const Project& project)
{
    QVector<SymbolEntry> entries;
    for (const ScopeDefinition& scope : project.scopes)
        append(scope.variables, SymbolEntry{scope.name, scope.name, nullptr}, &entries);
    return entries;
}

bool matchesPattern(const QString& text, const QString& pattern)
{
    const bool hasWildcard =
        pattern.contains(QLatin1Char('*')) || pattern.contains(QLatin1Char('?'));
    if (!hasWildcard)
        return text.contains(pattern, Qt::CaseInsensitive);
    QString expression = QRegularExpression::escape(pattern);
    expression.replace(QStringLiteral("\\*"), QStringLiteral(".*"));
    expression.replace(QStringLiteral("\\?"), QStringLiteral("."));
    const QRegularExpression matcher(QRegularExpression::anchoredPattern(expression),
                                     QRegularExpression::CaseInsensitiveOption);
    return matcher.match(text).hasMatch();
}

} // namespace plc
