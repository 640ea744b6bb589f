#include "project/label_expansion.h"

#include <algorithm>

#include "project/label_pattern.h"
#include "project/label_syntax.h"
#include "project/symbol_walk.h"

namespace plc::project {
namespace {

/// More than anyone looks at; an argument that stands for so many is a mistake.
constexpr int kMostLabels = 10000;
/// Elements of one array that are compared with a pattern.
constexpr int kMostElements = 1000000;

bool isNumber(const QString& text)
{
    const auto isDigit = [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    };
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), isDigit);
}

/// What stands before the star of "TEXT*N"; empty where the text has another form.
QString beforeCount(const QString& text)
{
    const int star = int(text.indexOf(QLatin1Char('*')));
    if (star < 1 || !isNumber(text.mid(star + 1)))
        return QString();
    const QString before = text.left(star);
    return hasWildcard(before) ? QString() : before;
}

/// All labels of an entry, which stands for all elements of its arrays.
std::optional<QStringList> labelsOf(const SymbolEntry& entry, int limit, QString* error)
{
    if (entry.pattern == entry.firstLabel)
        return QStringList{entry.pattern};
    const std::optional<QVector<LabelPart>> parts = parseLabel(entry.pattern, error);
    return parts ? expandPattern(*parts, limit, error) : std::nullopt;
}

} // namespace

bool isElementCount(const QString& text, const LabelFinder& labels)
{
    const QString label = beforeCount(text);
    QString reason;
    return !label.isEmpty() && labels.find(label, &reason);
}

bool LabelExpander::isElementCount(const QString& text)
{
    if (beforeCount(text).isEmpty())
        return false;
    if (!m_labels)
        m_labels.emplace(m_symbols);
    return plc::project::isElementCount(text, *m_labels);
}

std::optional<QStringList> LabelExpander::matching(const QString& text, QString* error)
{
    const LabelPattern pattern(text, LabelPattern::Place::Whole);
    QStringList matching;
    for (const SymbolEntry& entry : symbolEntries(m_symbols)) {
        const std::optional<QStringList> labels = labelsOf(entry, kMostElements, error);
        if (!labels)
            return {};
        for (const QString& label : *labels) {
            if (pattern.matches(label))
                matching.append(label);
        }
        if (int(matching.size()) > kMostLabels) {
            *error = QStringLiteral("%1 stands for more than %2 values; name fewer")
                         .arg(text)
                         .arg(kMostLabels);
            return {};
        }
    }
    // Perhaps a count behind a label with a mistake in it, which its lookup explains.
    if (matching.isEmpty() && !beforeCount(text).isEmpty())
        return QStringList{text};
    if (matching.isEmpty()) {
        *error =
            QStringLiteral("%1: no label of the project matches; plc symbols lists them").arg(text);
        return {};
    }
    return matching;
}

std::optional<QStringList> LabelExpander::expand(const QString& text, QString* error)
{
    if (hasWildcard(text))
        return isElementCount(text) ? QStringList{text} : matching(text, error);
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

} // namespace plc::project
