#include "project/label_syntax.h"

#include <algorithm>
#include <optional>

#include "values/nearest_name.h"

namespace plc::project {
namespace {

const QLatin1String kRangeSign("..");

/// Of ASCII all that is seen but what labels are taken apart at.
bool mayStandInName(QChar character)
{
    switch (character.unicode()) {
        case '.':
        case '[':
        case ']':
        case ',':
        case '=':
        case '"':
            return false;
        default:
            break;
    }
    constexpr ushort kLastSeen = '~';
    if (character.unicode() <= kLastSeen)
        return character.unicode() > ' ';
    return !character.isSpace() && character.isPrint();
}

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// A decimal number with nothing around it.
std::optional<int> parseNumber(const QString& text)
{
    const int firstDigit = text.startsWith(QLatin1Char('-')) ? 1 : 0;
    if (!std::all_of(text.begin() + firstDigit, text.end(), isDigit))
        return {};
    bool converted = false;
    const int number = text.toInt(&converted);
    return converted ? std::optional<int>(number) : std::nullopt;
}

std::optional<SubscriptRange> parseRange(const QString& text)
{
    const int sign = int(text.indexOf(kRangeSign));
    if (sign < 0) {
        const std::optional<int> number = parseNumber(text);
        return number ? std::optional<SubscriptRange>({*number, *number}) : std::nullopt;
    }
    const std::optional<int> from = parseNumber(text.left(sign));
    const std::optional<int> to = parseNumber(text.mid(sign + 2));
    if (!from || !to || *from > *to)
        return {};
    return SubscriptRange{*from, *to};
}

Expected<LabelPart> parsePart(const QString& text)
{
    LabelPart part;
    const int bracket = int(text.indexOf(QLatin1Char('[')));
    part.name = text.left(bracket);
    if (part.name.contains(QLatin1Char(']'))) {
        return Error{QStringLiteral("\"]\" without \"[\" before it")};
    }
    if (bracket < 0)
        return part;
    if (int(text.indexOf(QLatin1Char(']'))) != int(text.size()) - 1) {
        return Error{
            QStringLiteral("%1: subscripts stand in one pair of brackets at the end, as in "
                           "table[1,2]")
                .arg(values::quoted(text))};
    }
    const QString inside = text.mid(bracket + 1, text.size() - bracket - 2);
    for (const QString& piece : inside.split(QLatin1Char(','))) {
        const std::optional<SubscriptRange> range = parseRange(piece);
        if (!range) {
            return Error{
                QStringLiteral("subscript %1 is not a whole number").arg(values::quoted(piece))};
        }
        part.subscripts.append(*range);
    }
    return part;
}

/// Splits at the dots that do not stand between brackets.
QStringList splitParts(const QString& label)
{
    QStringList parts;
    int start = 0;
    bool insideBrackets = false;
    for (int position = 0; position < int(label.size()); ++position) {
        const QChar character = label[position];
        if (character == QLatin1Char('['))
            insideBrackets = true;
        else if (character == QLatin1Char(']'))
            insideBrackets = false;
        else if (character == QLatin1Char('.') && !insideBrackets) {
            parts.append(label.mid(start, position - start));
            start = position + 1;
        }
    }
    parts.append(label.mid(start));
    return parts;
}

/// Every text of `heads` followed by the subscripts of `part`, in order.
QStringList withSubscripts(const QStringList& heads, const LabelPart& part)
{
    QStringList labels = heads;
    for (int d = 0; d < int(part.subscripts.size()); ++d) {
        QStringList longer;
        const QLatin1Char separator(d == 0 ? '[' : ',');
        for (const QString& head : labels) {
            for (qint64 n = part.subscripts[d].from; n <= part.subscripts[d].to; ++n)
                longer.append(head + separator + QString::number(n));
        }
        labels = longer;
    }
    if (!part.subscripts.isEmpty()) {
        for (QString& label : labels)
            label += QLatin1Char(']');
    }
    return labels;
}

} // namespace

Expected<QVector<LabelPart>> parseLabel(const QString& label)
{
    QVector<LabelPart> parts;
    for (const QString& text : splitParts(label)) {
        const Expected<LabelPart> part = parsePart(text);
        if (!part)
            return part.error();
        parts.append(*part);
    }
    if (parts.size() < 2) {
        return Error{QStringLiteral("expected Scope.variable")};
    }
    if (!parts.first().subscripts.isEmpty()) {
        return Error{QStringLiteral("a scope has no subscripts")};
    }
    return parts;
}

bool isPattern(const QVector<LabelPart>& parts)
{
    for (const LabelPart& part : parts) {
        for (const SubscriptRange& range : part.subscripts) {
            if (range.from != range.to)
                return true;
        }
    }
    return false;
}

Expected<QStringList> expandPattern(const QVector<LabelPart>& parts, int limit)
{
    qint64 count = 1;
    for (const LabelPart& part : parts) {
        for (const SubscriptRange& range : part.subscripts) {
            count *= range.to - range.from + 1;
            if (count > limit) {
                return Error{QStringLiteral("stands for more than %1 labels").arg(limit)};
            }
        }
    }
    QStringList labels{QString()};
    for (int index = 0; index < int(parts.size()); ++index) {
        for (QString& label : labels)
            label += (index == 0 ? QString() : QStringLiteral(".")) + parts[index].name;
        labels = withSubscripts(labels, parts[index]);
    }
    return labels;
}

CountedLabel takeCountOff(const QString& text)
{
    const int star = int(text.lastIndexOf(QLatin1Char('*')));
    if (star < 0)
        return {text, QString(), 1};
    const QString count = text.mid(star + 1);
    return {text.left(star), count, std::max(0, parseNumber(count).value_or(0))};
}

bool isLabelName(const QString& name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), mayStandInName);
}

} // namespace plc::project
