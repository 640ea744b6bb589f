#include "values/nearest_name.h"

#include <QtCore/QHash>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "values/visible_text.h"

namespace plc::values {
namespace {

// Longer texts are no misspelt names, and comparing them would only cost time.
constexpr int kLongestComparedName = 64;
constexpr int kLongestQuotedText = 60;

ushort folded(QChar character)
{
    const ushort code = character.unicode();
    if (code < 0x80)
        return code >= 'A' && code <= 'Z' ? ushort(code | 0x20) : code;
    return character.toLower().unicode();
}

/// How many insertions, removals and replacements of single characters and swaps of neighbours turn
/// a text into other ones, whatever their case. A column of the table of distances is the bits of
/// two words, which tell where it goes up and down: H. Hyyrö, "A Bit-Vector Algorithm for Computing
/// Levenshtein and Damerau Edit Distances", Nordic Journal of Computing 10 (2003).
class EditDistance {
public:
    /// Of kLongestComparedName characters at most, as many as a word has bits.
    explicit EditDistance(const QString& text) : m_length(int(text.size()))
    {
        for (int i = 0; i < m_length; ++i)
            placesOf(folded(text[i])) |= quint64(1) << i;
    }

    /// Or any number that is not below `bound`, where the distance is not either.
    int to(const QString& other, int bound) const
    {
        const int length = int(other.size());
        if (m_length == 0 || std::abs(length - m_length) >= bound)
            return std::max(length, m_length);
        const quint64 lastPlace = quint64(1) << (m_length - 1);
        quint64 up = ~quint64(0);
        quint64 down = 0;
        quint64 diagonal = 0;
        quint64 placesBefore = 0;
        int distance = m_length;
        for (int i = 0; i < length; ++i) {
            const quint64 places = placesOf(folded(other[i]));
            const quint64 swapped = ((~diagonal & places) << 1) & placesBefore;
            diagonal = (((places & up) + up) ^ up) | places | down | swapped;
            const quint64 rises = down | ~(diagonal | up);
            const quint64 falls = diagonal & up;
            distance += (rises & lastPlace) != 0 ? 1 : (falls & lastPlace) != 0 ? -1 : 0;
            // Each of the characters that follow takes away one at most.
            if (distance - (length - i - 1) >= bound)
                return bound;
            const quint64 risesBelow = (rises << 1) | 1;
            up = (falls << 1) | ~(diagonal | risesBelow);
            down = risesBelow & diagonal;
            placesBefore = places;
        }
        return distance;
    }

private:
    quint64& placesOf(ushort character)
    {
        return character < 0x80 ? m_ascii[character] : m_others[character];
    }
    quint64 placesOf(ushort character) const
    {
        return character < 0x80 ? m_ascii[character] : m_others.value(character);
    }

    const int m_length;
    std::array<quint64, 0x80> m_ascii{}; ///< Where the text has a character, a bit for each place.
    QHash<ushort, quint64> m_others;
};

} // namespace

QString nearestName(const QString& name, const QStringList& candidates)
{
    if (name.size() > kLongestComparedName)
        return {};
    const EditDistance distanceOfName(name);
    QString nearest;
    int nearestDistance = 1 + std::max(1, int(name.size()) / 3);
    for (const QString& candidate : candidates) {
        if (candidate.size() > kLongestComparedName)
            continue;
        const int distance = distanceOfName.to(candidate, nearestDistance);
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
