#include "exchange/written_value.h"

#include <cmath>
#include <type_traits>

#include "values/nearest_name.h"
#include "values/string_literal.h"

namespace plc::exchange {
namespace {

using values::ValueFormat;

bool isText(const values::Value& value)
{
    return std::holds_alternative<QString>(value);
}

/// What was given, for errors.
QString givenText(const values::Value& given)
{
    return isText(given) ? values::quoted(std::get<QString>(given)) : values::valueJson(given);
}

Expected<values::Value> otherKind(const host::DataPoint& point, const values::Value& given,
                                  const char* expected)
{
    return Error{
        QStringLiteral("%1 is no value of %2, which takes %3")
            .arg(givenText(given), QLatin1String(point.type->name), QLatin1String(expected))};
}

bool isFinite(const values::Value& value)
{
    if (const float* number = std::get_if<float>(&value))
        return std::isfinite(*number);
    if (const double* number = std::get_if<double>(&value))
        return std::isfinite(*number);
    return true;
}

/// A number, by the rules of those that users write; they know the range of each type.
Expected<values::Value> number(const host::DataPoint& point, const values::Value& given)
{
    if (isText(given) || std::holds_alternative<bool>(given))
        return otherKind(point, given, "a number");
    if (!isFinite(given))
        return Error{QStringLiteral("%1 is no number").arg(givenText(given))};
    if (point.type->format == ValueFormat::Real) {
        if (point.type->size == int(sizeof(float)) && std::holds_alternative<float>(given))
            return given;
        if (point.type->size == int(sizeof(double)) && std::holds_alternative<double>(given))
            return given;
    }
    return values::parseValue(*point.type, 0, values::valueJson(given));
}

Expected<values::Value> milliseconds(const host::DataPoint& point, const values::Value& given)
{
    if (isText(given) || std::holds_alternative<bool>(given))
        return otherKind(point, given, "a number of milliseconds");
    host::DataPoint count;
    count.type = values::findIecType(QStringLiteral("UDINT"));
    return number(count, given);
}

/// With quotes, in which any text may stand.
Expected<values::Value> text(const host::DataPoint& point, const values::Value& given)
{
    if (!isText(given))
        return otherKind(point, given, "a text");
    const bool isWide = point.type->format == ValueFormat::WideText;
    return values::parseValue(
        *point.type, point.stringLength,
        values::stringLiteral(std::get<QString>(given), QLatin1Char(isWide ? '"' : '\'')));
}

} // namespace

Expected<values::Value> writtenValue(const host::DataPoint& point, const values::Value& given)
{
    switch (point.type->format) {
        case ValueFormat::Boolean:
            if (!std::holds_alternative<bool>(given))
                return otherKind(point, given, "true or false");
            return given;
        case ValueFormat::Duration:
            return milliseconds(point, given);
        case ValueFormat::Text:
        case ValueFormat::WideText:
            return text(point, given);
        default:
            return number(point, given);
    }
}

Expected<QVector<values::Value>> writtenValues(const host::DataPoint& point,
                                               const QVector<values::Value>& given)
{
    if (point.elements > 1 && values::isText(*point.type))
        return Error{QStringLiteral("texts are written one by one, each by its own label")};
    if (int(given.size()) != point.elements) {
        return Error{
            QStringLiteral("%1 values are expected, not %2").arg(point.elements).arg(given.size())};
    }
    QVector<values::Value> result;
    result.reserve(point.elements);
    for (const values::Value& value : given) {
        const Expected<values::Value> written = writtenValue(point, value);
        if (!written)
            return written.error();
        result.append(*written);
    }
    return result;
}

} // namespace plc::exchange
