#include "host/project/nearest_name.h"

#include <QtCore/QVector>

#include <algorithm>

namespace plc {
namespace {

// Longer texts are no misspelt names, and comparing them would only cost time.
constexpr int kLongestComparedName = 64;
constexpr int kLongestQuotedText = 60;

/// Single-character insertions, removals and replacements that turn one text into the other.
int editDistance(const QString& from, const QString& to)
{
    QVector<int> row(int(to.size()) + 1);
    for (int column = 0; column < int(row.size()); ++column)
        row[column] = column;
    for (int line = 0; line < int(from.size()); ++line) {
        int diagonal = row[0];
        row[0] = line + 1;
        for (int column = 0; column < int(to.size()); ++column) {
            const int replaced = diagonal + (from[line] == to[column] ? 0 : 1);
            diagonal = row[column + 1];
            row[column + 1] = std::min({replaced, row[column] + 1, diagonal + 1});
        }
    }
    return row.last();
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
        if (character.isPrint())
            result += character;
        else
            result +=
                QStringLiteral("\\u%1").arg(int(character.unicode()), 4, 16, QLatin1Char('0'));
    }
    if (text.size() > kLongestQuotedText)
        result += QStringLiteral("…");
    return result + QLatin1Char('"');
}

} // namespace plc
