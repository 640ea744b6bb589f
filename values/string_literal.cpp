#include "values/string_literal.h"

#include <optional>

#include "values/nearest_name.h"
#include "values/visible_text.h"

namespace plc::values {
namespace {

const QLatin1Char kEscape('$');

struct NamedEscape {
    char letter;
    ushort character;
};

constexpr NamedEscape kNamedEscapes[] = {
    {'L', 0x0A}, {'N', 0x0A}, {'P', 0x0C}, {'R', 0x0D}, {'T', 0x09}};

/// As it stands in a literal; `isShown` is false for what would be lost on a screen.
QString escaped(QChar character, QChar quote, bool isShown)
{
    if (character == kEscape || character == quote)
        return QString(kEscape) + character;
    for (const NamedEscape& escape : kNamedEscapes) {
        if (character.unicode() == escape.character)
            return QString(kEscape) + QLatin1Char(escape.letter);
    }
    if (isShown)
        return QString(character);
    const int digits = quote == QLatin1Char('"') ? 4 : 2;
    return QString(kEscape) +
           QStringLiteral("%1").arg(character.unicode(), digits, 16, QLatin1Char('0')).toUpper();
}

/// The character that the escape at `position` stands for; moves `position` behind it.
std::optional<QChar> unescaped(const QString& text, int* position, QChar quote)
{
    const QChar letter = text[*position].toUpper();
    if (letter == kEscape || letter == QLatin1Char('\'') || letter == QLatin1Char('"')) {
        ++*position;
        return letter;
    }
    for (const NamedEscape& escape : kNamedEscapes) {
        if (letter == QLatin1Char(escape.letter)) {
            ++*position;
            return QChar(escape.character);
        }
    }
    const int digits = quote == QLatin1Char('"') ? 4 : 2;
    const QString number = text.mid(*position, digits);
    bool ok = false;
    const uint code = number.toUInt(&ok, 16);
    if (!ok || int(number.size()) != digits)
        return {};
    *position += digits;
    return QChar(ushort(code));
}

} // namespace

QString stringLiteral(const QString& text, QChar quote)
{
    QString literal(quote);
    for (int i = 0; i < int(text.size()); ++i) {
        const bool isShown = !isObeyed(text[i].unicode()) && !isLoneSurrogate(text, i);
        literal += escaped(text[i], quote, isShown);
    }
    return literal + quote;
}

Expected<QString> parseStringLiteral(const QString& literal)
{
    if (!literal.startsWith(QLatin1Char('\'')) && !literal.startsWith(QLatin1Char('"')))
        return literal;
    const QChar quote = literal[0];
    QString text;
    int position = 1;
    while (position < int(literal.size()) && literal[position] != quote) {
        if (literal[position] != kEscape) {
            text += literal[position++];
            continue;
        }
        ++position;
        const std::optional<QChar> character =
            position < int(literal.size()) ? unescaped(literal, &position, quote) : std::nullopt;
        if (!character) {
            return Error{
                QStringLiteral("%1 has an unknown escape behind $; $$ stands for the sign $")
                    .arg(quoted(literal))};
        }
        text += *character;
    }
    if (position != int(literal.size()) - 1) {
        return Error{
            QStringLiteral("%1 does not end with the quote it begins with").arg(quoted(literal))};
    }
    return text;
}

} // namespace plc::values
