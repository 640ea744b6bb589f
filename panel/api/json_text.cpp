#include "panel/api/json_text.h"

#include <charconv>
#include <cmath>

#include "exchange/written_value.h"
#include "host/points/value_codec.h"

namespace plc::panel {
namespace {

using values::Value;

constexpr int kLosesDigits = 8; // bytes of an integer

template <typename Number>
void appendPlain(Number number, QByteArray* json)
{
    char text[64];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, number);
    json->append(text, int(end.ptr - text));
}

template <typename Real>
void appendPlainOr(const char* otherwise, Real number, QByteArray* json)
{
    // -0 is a whole number to many parsers, and those know one zero only.
    if (number == Real(0) && std::signbit(number))
        json->append("-0.0");
    else if (std::isfinite(number))
        appendPlain(number, json);
    else
        json->append(otherwise);
}

template <typename Real>
void appendReal(Real number, QByteArray* json)
{
    appendPlainOr(std::isnan(number) ? "\"nan\""
                  : number > 0       ? "\"inf\""
                                     : "\"-inf\"",
                  number, json);
}

bool isLong(const values::IecType& type)
{
    return type.size == kLosesDigits && type.format != values::ValueFormat::Real;
}

template <typename Integer>
void appendInteger(const values::IecType& type, Integer number, QByteArray* json)
{
    if (isLong(type))
        json->append('"');
    appendPlain(number, json);
    if (isLong(type))
        json->append('"');
}

bool needsEscape(ushort unit)
{
    constexpr ushort kFirstPlain = 0x20;
    return unit < kFirstPlain || unit == '"' || unit == '\\' || unit >= 0x7f;
}

} // namespace

void appendNumber(qint64 number, QByteArray* json)
{
    appendPlain(number, json);
}

void appendFiniteNumber(double number, QByteArray* json)
{
    appendPlainOr("null", number, json);
}

void appendText(const QString& text, QByteArray* json)
{
    const bool isPlain = std::none_of(text.begin(), text.end(),
                                      [](QChar unit) { return needsEscape(unit.unicode()); });
    if (isPlain) {
        json->append('"');
        json->append(text.toLatin1());
        json->append('"');
    } else {
        json->append(values::jsonText(text).toUtf8());
    }
}

void appendTexts(const QStringList& texts, QByteArray* json)
{
    json->append('[');
    for (const QString& text : texts) {
        if (!json->endsWith('['))
            json->append(',');
        appendText(text, json);
    }
    json->append(']');
}

void appendTime(qint64 time, QByteArray* json)
{
    if (time == 0)
        json->append("null");
    else
        appendNumber(time, json);
}

void appendValue(const values::IecType& type, const Value& value, QByteArray* json)
{
    if (const bool* truth = std::get_if<bool>(&value))
        json->append(*truth ? "true" : "false");
    else if (const qint64* whole = std::get_if<qint64>(&value))
        appendInteger(type, *whole, json);
    else if (const quint64* natural = std::get_if<quint64>(&value))
        appendInteger(type, *natural, json);
    else if (const float* real = std::get_if<float>(&value))
        appendReal(*real, json);
    else if (const double* lreal = std::get_if<double>(&value))
        appendReal(*lreal, json);
    else
        appendText(std::get<QString>(value), json);
}

void appendValue(const host::DataPoint& point, const QByteArray& bytes, QByteArray* json)
{
    if (bytes.isEmpty()) {
        json->append("null");
        return;
    }
    if (point.elements == 1) {
        appendValue(*point.type, host::decodeValue(point, bytes), json);
        return;
    }
    for (int i = 0; i < point.elements; ++i) {
        json->append(i == 0 ? '[' : ',');
        appendValue(*point.type, host::decodeValue(point, bytes, i), json);
    }
    json->append(']');
}

QByteArray valueText(const host::DataPoint& point, const QVector<Value>& values)
{
    QByteArray json;
    for (int i = 0; i < int(values.size()); ++i) {
        if (point.elements > 1)
            json.append(i == 0 ? '[' : ',');
        appendValue(*point.type, values[i], &json);
    }
    if (point.elements > 1)
        json.append(']');
    return json;
}

void appendKey(const char* key, QByteArray* json)
{
    if (!json->endsWith('{'))
        json->append(',');
    json->append('"').append(key).append("\":");
}

void appendTruth(const char* key, std::optional<bool> truth, QByteArray* json)
{
    appendKey(key, json);
    json->append(!truth ? "null" : *truth ? "true" : "false");
}

void appendMember(const char* key, const QString& text, QByteArray* json)
{
    appendKey(key, json);
    appendText(text, json);
}

void appendMember(const char* key, qint64 number, QByteArray* json)
{
    appendKey(key, json);
    appendNumber(number, json);
}

Expected<QVector<Value>> valuesOfClient(const host::DataPoint& point, const QVector<Value>& given)
{
    QVector<Value> values = given;
    for (Value& value : values) {
        const QString* digits = std::get_if<QString>(&value);
        if (!digits || !isLong(*point.type))
            continue;
        const Expected<Value> number = values::parseValue(*point.type, 0, *digits);
        if (!number)
            return number.error();
        value = *number;
    }
    return exchange::writtenValues(point, values);
}

} // namespace plc::panel
