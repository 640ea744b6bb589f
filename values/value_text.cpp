#include "values/value_text.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "values/duration_text.h"
#include "values/nearest_name.h"
#include "values/string_literal.h"
#include "values/value_check.h"
#include "values/visible_text.h"

namespace plc::values {
namespace {

/// Magnitudes from which on numbers are written with an exponent: integers up to there are exact.
template <typename Real>
constexpr Real kLargestPlain = sizeof(Real) == sizeof(float) ? Real(1e7) : Real(1e15);
template <typename Real>
constexpr Real kSmallestPlain = Real(1e-4);

/// What is before a literal of this type to say which one it is.
template <typename Real>
const QLatin1String kTypePrefix(sizeof(Real) == sizeof(float) ? "REAL#" : "LREAL#");

/// "nan", "inf" or "-inf", perhaps with the sign of a NaN.
template <typename Real>
QString plainText(Real value)
{
    char buffer[64];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

/// The fewest digits that read back as the same number; what is no number with its type, without
/// which it is not taken.
template <typename Real>
QString realText(Real value)
{
    if (!std::isfinite(value))
        return kTypePrefix<Real> + plainText(value);
    const Real magnitude = std::fabs(value);
    const bool isPlain = magnitude == Real(0) ||
                         (magnitude >= kSmallestPlain<Real> && magnitude < kLargestPlain<Real>);
    char buffer[64];
    const std::to_chars_result result =
        std::to_chars(buffer, buffer + sizeof(buffer), value,
                      isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

QString hexadecimalText(const IecType& type, quint64 value)
{
    const QString digits =
        QStringLiteral("%1").arg(value, 2 * type.size, 16, QLatin1Char('0')).toUpper();
    return QStringLiteral("16#") + digits;
}

/// Digits of a number in `base`, with single underscores between them left out.
QString withoutUnderscores(const QString& digits)
{
    if (digits.startsWith(QLatin1Char('_')) || digits.endsWith(QLatin1Char('_')) ||
        digits.contains(QStringLiteral("__")))
        return QString();
    return QString(digits).remove(QLatin1Char('_'));
}

struct BasePrefix {
    const char* text;
    int base;
};

constexpr BasePrefix kBasePrefixes[] = {{"16#", 16}, {"8#", 8}, {"2#", 2}, {"0x", 16}, {"0X", 16}};

/// An integer as it was written: sign and magnitude.
struct WrittenInteger {
    bool isNegative = false;
    quint64 magnitude = 0;
};

enum class IntegerForm { Good, TooLarge, NotANumber };

IntegerForm parseInteger(const QString& text, WrittenInteger* number)
{
    QString digits = text;
    int base = 10;
    if (digits.startsWith(QLatin1Char('-')) || digits.startsWith(QLatin1Char('+'))) {
        number->isNegative = digits.startsWith(QLatin1Char('-'));
        digits.remove(0, 1);
    }
    for (const BasePrefix& prefix : kBasePrefixes) {
        if (digits.startsWith(QLatin1String(prefix.text))) {
            base = prefix.base;
            digits.remove(0, int(qstrlen(prefix.text)));
            break;
        }
    }
    const QByteArray plain = withoutUnderscores(digits).toUtf8();
    const char* end = plain.constData() + plain.size();
    const std::from_chars_result result =
        std::from_chars(plain.constData(), end, number->magnitude, base);
    if (plain.isEmpty() || result.ptr != end)
        return IntegerForm::NotANumber;
    return result.ec == std::errc() ? IntegerForm::Good : IntegerForm::TooLarge;
}

Expected<Value> parseWhole(const IecType& type, const QString& text)
{
    WrittenInteger number;
    const IntegerForm form = parseInteger(text, &number);
    if (form == IntegerForm::NotANumber) {
        return Error{QStringLiteral("%1 is no whole number, which %2 takes")
                         .arg(quoted(text), QLatin1String(type.name))};
    }
    const quint64 largest = largestUnsigned(type);
    if (type.format != ValueFormat::Signed) {
        const bool fits =
            number.magnitude <= largest && (!number.isNegative || number.magnitude == 0);
        if (form == IntegerForm::TooLarge || !fits)
            return outOfRange(type, text);
        return Value(number.magnitude);
    }
    const quint64 limit = number.isNegative ? largest / 2 + 1 : largest / 2;
    if (form == IntegerForm::TooLarge || number.magnitude > limit)
        return outOfRange(type, text);
    // The least number has no positive counterpart.
    if (number.isNegative && number.magnitude > 0)
        return Value(-qint64(number.magnitude - 1) - 1);
    return Value(qint64(number.magnitude));
}

Expected<Value> parseBoolean(const IecType& type, const QString& text)
{
    const QString folded = text.toUpper();
    if (folded == QLatin1String("TRUE") || folded == QLatin1String("1"))
        return Value(true);
    if (folded == QLatin1String("FALSE") || folded == QLatin1String("0"))
        return Value(false);
    return Error{QStringLiteral("%1 is no %2; TRUE, FALSE, 1 or 0 is expected")
                     .arg(quoted(text), QLatin1String(type.name))};
}

template <typename Real>
Expected<Value> parseReal(const IecType& type, const QString& text)
{
    const bool hasType = text.startsWith(kTypePrefix<Real>, Qt::CaseInsensitive);
    QByteArray bytes = (hasType ? text.mid(kTypePrefix<Real>.size()) : text).toLatin1();
    if (bytes.startsWith('+'))
        bytes.remove(0, 1);
    Real value = 0;
    const char* end = bytes.constData() + bytes.size();
    const std::from_chars_result result = std::from_chars(bytes.constData(), end, value);
    if (bytes.isEmpty() || result.ptr != end) {
        return Error{QStringLiteral("%1 is no number such as -1.5 or 2e6, which %2 takes")
                         .arg(quoted(text), QLatin1String(type.name))};
    }
    if (result.ec != std::errc()) {
        return Error{QStringLiteral("%1 cannot be held by %2: too large or too near to 0")
                         .arg(text, QLatin1String(type.name))};
    }
    // A name that was not replaced or a spreadsheet's empty cell reads like this.
    if (!hasType && !std::isfinite(value)) {
        return Error{QStringLiteral("%1 is no number; write %2%3 if it is meant")
                         .arg(quoted(text), kTypePrefix<Real>, plainText(value))};
    }
    return Value(value);
}

Expected<Value> parseTime(const IecType& type, const QString& text)
{
    const std::optional<quint64> milliseconds = parseDuration(text);
    if (!milliseconds) {
        return Error{QStringLiteral("%1 is no duration such as T#1m30s or T#500ms, which %2 takes")
                         .arg(quoted(text), QLatin1String(type.name))};
    }
    const quint64 largest = largestUnsigned(type);
    if (*milliseconds > largest) {
        return Error{QStringLiteral("%1 is longer than %2 can hold, %3")
                         .arg(text, QLatin1String(type.name), durationText(largest))};
    }
    return Value(*milliseconds);
}

Expected<Value> parseText(const IecType& type, int stringLength, const QString& text)
{
    const Expected<QString> characters = parseStringLiteral(text);
    if (!characters)
        return characters.error();
    const Expected<void> checked = checkCharacters(type, stringLength, *characters);
    if (!checked)
        return Error{QStringLiteral("%1 %2").arg(quoted(text), checked.error().text)};
    return Value(*characters);
}

/// The JSON of each kind of value.
struct JsonWriter {
    QString operator()(bool value) const
    {
        return value ? QStringLiteral("true") : QStringLiteral("false");
    }
    QString operator()(qint64 value) const { return QString::number(value); }
    QString operator()(quint64 value) const { return QString::number(value); }
    QString operator()(float value) const { return real(value); }
    QString operator()(double value) const { return real(value); }
    QString operator()(const QString& value) const { return jsonText(value); }

private:
    template <typename Real>
    static QString real(Real value)
    {
        // -0 is a whole number to many parsers, and those know one zero only.
        if (value == Real(0) && std::signbit(value))
            return QStringLiteral("-0.0");
        return std::isfinite(value) ? realText(value) : jsonText(plainText(value));
    }
};

} // namespace

QString valueText(const IecType& type, const Value& value)
{
    switch (type.format) {
        case ValueFormat::Boolean:
            return std::get<bool>(value) ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
        case ValueFormat::Signed:
            return QString::number(std::get<qint64>(value));
        case ValueFormat::Unsigned:
            return QString::number(std::get<quint64>(value));
        case ValueFormat::Hexadecimal:
            return hexadecimalText(type, std::get<quint64>(value));
        case ValueFormat::Real:
            return std::holds_alternative<float>(value) ? realText(std::get<float>(value))
                                                        : realText(std::get<double>(value));
        case ValueFormat::Duration:
            return durationText(std::get<quint64>(value));
        case ValueFormat::Text:
            return stringLiteral(std::get<QString>(value), QLatin1Char('\''));
        case ValueFormat::WideText:
            return stringLiteral(std::get<QString>(value), QLatin1Char('"'));
    }
    return QString();
}

QString valueJson(const Value& value)
{
    return std::visit(JsonWriter(), value);
}

QString jsonText(const QString& text)
{
    QString json(QLatin1Char('"'));
    for (const QChar character : text) {
        if (character == QLatin1Char('"') || character == QLatin1Char('\\'))
            json += QLatin1Char('\\') + QString(character);
        else if (isObeyed(character.unicode()) || character.isSurrogate())
            json += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            json += character;
    }
    return json + QLatin1Char('"');
}

Expected<Value> parseValue(const IecType& type, int stringLength, const QString& written)
{
    // Blanks around a text may belong to it.
    const QString text = isText(type) ? written : written.trimmed();
    switch (type.format) {
        case ValueFormat::Boolean:
            return parseBoolean(type, text);
        case ValueFormat::Signed:
        case ValueFormat::Unsigned:
        case ValueFormat::Hexadecimal:
            return parseWhole(type, text);
        case ValueFormat::Real:
            return type.size == int(sizeof(float)) ? parseReal<float>(type, text)
                                                   : parseReal<double>(type, text);
        case ValueFormat::Duration:
            return parseTime(type, text);
        case ValueFormat::Text:
        case ValueFormat::WideText:
            return parseText(type, stringLength, text);
    }
    return Error{QStringLiteral("%1 has no notation").arg(QLatin1String(type.name))};
}

} // namespace plc::values
