#include "values/nearest_name.h"

#include <QtCore/QVector>

#include <algorithm>

#include "values/visible_text.h"

namespace plc::values {
namespace {

// Longer texts are no misspelt names, and comparing them would only cost time.
constexpr int kLongestComparedName = 64;
constexpr int kLongestQuotedText = 60;

/// Insertions, removals and replacements of single characters and swaps of neighbours that turn one
/// text into the other.
int editDistance(const QString& from, const QString& to)
{
    const int width = int(to.size()) + 1;
    QVector<int> beforeLast(width), last(width), current(width);
    for (int column = 0; column < width; ++column)
        last[column] = column;
    for (int line = 1; line <= int(from.size()); ++line) {
        current[0] = line;
        for (int column = 1; column < width; ++column) {
            const bool equal = from[line - 1] == to[column - 1];
            const bool swapped = line > 1 && column > 1 && from[line - 1] == to[column - 2] &&
                                 from[line - 2] == to[column - 1];
            current[column] = std::min(
                {last[column] + 1, current[column - 1] + 1, last[column - 1] + (equal ? 0 : 1)});
            if (swapped)
                current[column] = std::min(current[column], beforeLast[column - 2] + 1);
        }
        beforeLast = last;
        last = current;
    }
    return last.last();
}

} // namespace

QString nearestName(const QString& name, const QStringList& candidates)
{
    if (name.size() > kLongestComparedName)
        return {};
    QString nearest;
    int nearestDistance = 1 + std::max(1, int(name.size()) / 3);
    for (const QString& candidate : candidates) {
        if (candidate.size() > kLongestComparedName)
            continue;
        const int distance = editDistance(name.toLower(), candidate.toLower());
        if (distance < nearestDistance) {
            nearest = candidate;
            nearestDistance = distance;
        }
    }
    return nearest;
}

QString nearestNameHint(const QString& name, const QStringList& candidates)
{
    const QString nearest = nearestName(name, candidates);
    return nearest.isEmpty() ? QString()
                             : QStringLiteral(" (did you mean %1?)").arg(quoted(nearest));
}

QString quoted(const QString& text)
{
    QString result = QStringLiteral("\"");
    for (const QChar character : text.left(kLongestQuotedText)) {
        if (character == QLatin1Char('"') || character == QLatin1Char('\\'))
            result += QLatin1Char('\\');
        if (character.isPrint() && !isObeyed(character.unicode()))
            result += character;
        else
            result +=
                QStringLiteral("\\u%1").arg(int(character.unicode()), 4, 16, QLatin1Char('0'));
    }
    if (text.size() > kLongestQuotedText)
        result += QStringLiteral("…");
    return result + QLatin1Char('"');
}

} // namespace plc::values
