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
    const CountedLabel counted = takeCountOff(text);
    return isNumber(counted.count) && !hasWildcard(counted.label) ? counted.label : QString();
}

/// All labels of an entry, which stands for all elements of its arrays.
Expected<QStringList> labelsOf(const SymbolEntry& entry, int limit)
{
    if (entry.pattern == entry.firstLabel)
        return QStringList{entry.pattern};
    const Expected<QVector<LabelPart>> parts = parseLabel(entry.pattern);
    if (!parts)
        return parts.error();
    return expandPattern(*parts, limit);
}

} // namespace

bool isElementCount(const QString& text, const LabelFinder& labels)
{
    const QString label = beforeCount(text);
    return !label.isEmpty() && labels.find(label);
}

bool LabelExpander::isElementCount(const QString& text)
{
    if (beforeCount(text).isEmpty())
        return false;
    if (!m_labels)
        m_labels.emplace(m_symbols);
    return plc::project::isElementCount(text, *m_labels);
}

Expected<QStringList> LabelExpander::matching(const QString& text)
{
    const LabelPattern pattern(text, LabelPattern::Place::Whole);
    QStringList matching;
    for (const SymbolEntry& entry : symbolEntries(m_symbols)) {
        const Expected<QStringList> labels = labelsOf(entry, kMostElements);
        if (!labels)
            return labels.error();
        for (const QString& label : *labels) {
            if (pattern.matches(label))
                matching.append(label);
        }
        if (int(matching.size()) > kMostLabels) {
            return Error{QStringLiteral("%1 stands for more than %2 values; name fewer")
                             .arg(text)
                             .arg(kMostLabels)};
        }
    }
    // Perhaps a count behind a label with a mistake in it, which its lookup explains.
    if (matching.isEmpty() && !beforeCount(text).isEmpty())
        return QStringList{text};
    if (matching.isEmpty()) {
        return Error{QStringLiteral("%1: no label of the project matches; plc symbols lists them")
                         .arg(text)};
    }
    return matching;
}

Expected<QStringList> LabelExpander::expand(const QString& text)
{
    if (hasWildcard(text))
        return isElementCount(text) ? QStringList{text} : matching(text);
    // What is no label at all is explained by who looks it up.
    const Expected<QVector<LabelPart>> parts = parseLabel(text);
    if (!parts || !isPattern(*parts))
        return QStringList{text};
    Expected<QStringList> labels = expandPattern(*parts, kMostLabels);
    if (!labels)
        return Error{QStringLiteral("%1: %2").arg(text, labels.error().text)};
    return labels;
}

} // namespace plc::project
