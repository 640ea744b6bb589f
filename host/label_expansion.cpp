#include "host/label_expansion.h"

#include <QtCore/QRegularExpression>

#include "host/project/label_syntax.h"
#include "host/symbol_walk.h"

namespace plc {
namespace {

/// More than anyone looks at; an argument that stands for so many is a mistake.
constexpr int kMostLabels = 10000;
/// Elements of one array that are compared with a pattern.
constexpr int kMostElements = 1000000;

bool isElementCount(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^[^*?]*\\*\\d+$"));
    return pattern.match(text).hasMatch();
}

bool hasWildcard(const QString& text)
{
    return text.contains(QLatin1Char('*')) || text.contains(QLatin1Char('?'));
}

/// All labels of an entry, which stands for all elements of its arrays.
std::optional<QStringList> labelsOf(const SymbolEntry& entry, int limit, QString* error)
{
    const std::optional<QVector<LabelPart>> parts = parseLabel(entry.pattern, error);
    return parts ? expandPattern(*parts, limit, error) : std::nullopt;
}

std::optional<QStringList> matchingLabels(const Project& project, const QString& pattern,
                                          QString* error)
{
    QStringList matching;
    for (const SymbolEntry& entry : symbolEntries(project)) {
        const std::optional<QStringList> labels = labelsOf(entry, kMostElements, error);
        if (!labels)
            return {};
        for (const QString& label : *labels) {
            if (matchesPattern(label, pattern))
                matching.append(label);
        }
        if (int(matching.size()) > kMostLabels) {
            *error = QStringLiteral("%1 stands for more than %2 values; name fewer")
                         .arg(pattern)
                         .arg(kMostLabels);
            return {};
        }
    }
    if (matching.isEmpty()) {
        *error = QStringLiteral("%1: no label of the project matches; plc symbols lists them")
                     .arg(pattern);
        return {};
    }
    return matching;
}

} // namespace

std::optional<QStringList> expandLabel(const Project& project, const QString& text, QString* error)
{
    if (isElementCount(text))
        return QStringList{text};
    if (hasWildcard(text))
        return matchingLabels(project, text, error);
    // What is no label at all is explained by who looks it up.
    QString reason;
    const std::optional<QVector<LabelPart>> parts = parseLabel(text, &reason);
    if (!parts || !isPattern(*parts))
        return QStringList{text};
    std::optional<QStringList> labels = expandPattern(*parts, kMostLabels, &reason);
    if (!labels)
        *error = QStringLiteral("%1: %2").arg(text, reason);
    return labels;
}

} // namespace plc
