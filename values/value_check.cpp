#include "values/value_check.h"

#include <limits>

namespace plc::values {
namespace {

QString rangeText(const IecType& type)
{
    const quint64 largest = largestUnsigned(type);
    if (type.format == ValueFormat::Signed)
        return QStringLiteral("-%1 to %2").arg(largest / 2 + 1).arg(largest / 2);
    if (type.format == ValueFormat::Hexadecimal)
        return QStringLiteral("16#0 to 16#%1").arg(QString::number(largest, 16).toUpper());
    return QStringLiteral("0 to %1").arg(largest);
}

/// What values of the type are.
QString takenKind(const IecType& type)
{
    switch (type.format) {
        case ValueFormat::Boolean:
            return QStringLiteral("true or false");
        case ValueFormat::Real:
            return type.size == int(sizeof(float)) ? QStringLiteral("a number of 32 bits")
                                                   : QStringLiteral("a number of 64 bits");
        case ValueFormat::Text:
        case ValueFormat::WideText:
            return QStringLiteral("a text");
        default:
            return QStringLiteral("a whole number");
    }
}

/// What was given; a text may be long.
QString givenKind(const Value& value)
{
    if (std::holds_alternative<QString>(value))
        return QStringLiteral("a text");
    if (std::holds_alternative<float>(value))
        return QStringLiteral("%1 of 32 bits").arg(valueJson(value));
    if (std::holds_alternative<double>(value))
        return QStringLiteral("%1 of 64 bits").arg(valueJson(value));
    return valueJson(value);
}

Error otherKind(const IecType& type, const Value& value)
{
    return {QStringLiteral("%1 takes %2, not %3")
                .arg(QLatin1String(type.name), takenKind(type), givenKind(value))};
}

bool isInRange(const IecType& type, const Value& value)
{
    const quint64 largest = largestUnsigned(type);
    const bool isSigned = type.format == ValueFormat::Signed;
    const quint64 highest = isSigned ? largest / 2 : largest;
    if (const quint64* number = std::get_if<quint64>(&value))
        return *number <= highest;
    const qint64 number = std::get<qint64>(value);
    const qint64 lowest = isSigned ? -qint64(largest / 2) - 1 : 0;
    return number >= lowest && (number < 0 || quint64(number) <= highest);
}

} // namespace

quint64 largestUnsigned(const IecType& type)
{
    return std::numeric_limits<quint64>::max() >> (64 - 8 * type.size);
}

Error outOfRange(const IecType& type, const QString& text)
{
    return {QStringLiteral("%1 is outside the range of %2, %3")
                .arg(text, QLatin1String(type.name), rangeText(type))};
}

Expected<void> checkCharacters(const IecType& type, int stringLength, const QString& characters)
{
    if (int(characters.size()) > stringLength) {
        return Error{QStringLiteral("has %1 characters and the %2 has room for %3")
                         .arg(characters.size())
                         .arg(QLatin1String(type.name))
                         .arg(stringLength)};
    }
    const ushort last = type.format == ValueFormat::WideText ? 0xFFFF : 0xFF;
    for (const QChar character : characters) {
        if (character.unicode() != 0 && character.unicode() <= last)
            continue;
        return Error{QStringLiteral("has the character U+%1, which a %2 cannot hold")
                         .arg(uint(character.unicode()), 4, 16, QLatin1Char('0'))
                         .arg(QLatin1String(type.name))};
    }
    return {};
}

Expected<void> checkValue(const IecType& type, int stringLength, const Value& value)
{
    if (isText(type)) {
        const QString* const characters = std::get_if<QString>(&value);
        if (!characters)
            return otherKind(type, value);
        const Expected<void> checked = checkCharacters(type, stringLength, *characters);
        return checked ? checked : Error{QStringLiteral("the text ") + checked.error().text};
    }
    bool isOfKind = false;
    if (type.format == ValueFormat::Boolean)
        isOfKind = std::holds_alternative<bool>(value);
    else if (type.format == ValueFormat::Real && type.size == int(sizeof(float)))
        isOfKind = std::holds_alternative<float>(value);
    else if (type.format == ValueFormat::Real)
        isOfKind = std::holds_alternative<double>(value);
    else
        isOfKind = std::holds_alternative<qint64>(value) || std::holds_alternative<quint64>(value);
    if (!isOfKind)
        return otherKind(type, value);
    const bool isWhole = isNumeric(type) && type.format != ValueFormat::Real;
    if (isWhole && !isInRange(type, value))
        return outOfRange(type, valueJson(value));
    return {};
}

} // namespace plc::values
