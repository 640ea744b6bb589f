#include "iec/description.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace plc::iec {
namespace {

constexpr int kLongestDescription = 500;
constexpr int kLongestUnit = 16;

bool decorates(QChar character)
{
    static const QString signs = QStringLiteral("*/!-=#+_~|<");
    return character.isSpace() || signs.contains(character);
}

/// `line` without ornaments; those at the end go only where they are set apart, so that "m³/h -"
/// keeps its unit.
QString withoutOrnaments(const QString& line)
{
    int start = 0;
    while (start < int(line.size()) && decorates(line[start]))
        ++start;
    int end = int(line.size());
    while (end > start && decorates(line[end - 1]))
        --end;
    // "-5 to 5" begins with a sign.
    const bool isSigned = start > 0 && start < int(line.size()) && line[start].isDigit() &&
                          line[start - 1] == QLatin1Char('-');
    return line.mid(isSigned ? start - 1 : start, end - start + (isSigned ? 1 : 0));
}

QString plainText(const Comment& comment)
{
    if (comment.text.trimmed().startsWith(QLatin1Char('@')))
        return {};
    QStringList lines;
    const QStringList raw = comment.text.split(QLatin1Char('\n'));
    for (const QString& line : raw) {
        const QString plain = withoutOrnaments(line).simplified();
        if (!plain.isEmpty())
            lines.append(plain);
    }
    return lines.join(QLatin1Char(' '));
}

} // namespace

QString plainText(const QVector<Comment>& comments)
{
    QStringList texts;
    for (const Comment& comment : comments) {
        const QString text = plainText(comment);
        if (!text.isEmpty())
            texts.append(text);
    }
    return texts.join(QLatin1Char(' ')).left(kLongestDescription);
}

QString descriptionAbove(const Token& token)
{
    QVector<Comment> above;
    int line = token.position.line;
    for (int i = int(token.comments.size()) - 1; i >= 0; --i) {
        const Comment& comment = token.comments[i];
        if (!comment.standsFirst || comment.lastLine < line - 1)
            break;
        above.prepend(comment);
        line = comment.firstLine;
    }
    return plainText(above);
}

QString descriptionBehind(const QVector<Comment>& comments, int line)
{
    QVector<Comment> behind;
    std::copy_if(comments.begin(), comments.end(), std::back_inserter(behind),
                 [line](const Comment& comment) { return comment.firstLine == line; });
    return plainText(behind);
}

QString takeUnit(QString* description)
{
    const int start = int(description->lastIndexOf(QLatin1Char('[')));
    if (start < 0 || !description->endsWith(QLatin1Char(']')))
        return {};
    QString unit = description->mid(start + 1, description->size() - start - 2);
    const bool isUnit = !unit.isEmpty() && unit.size() <= kLongestUnit &&
                        !unit.contains(QLatin1Char(' ')) && !unit.contains(QLatin1String("..")) &&
                        !unit.contains(QLatin1Char(','));
    if (!isUnit)
        return {};
    *description = description->left(start).trimmed();
    return unit;
}

} // namespace plc::iec
