#include "recorder/series.h"

#include "host/points/value_codec.h"
#include "values/numeric_value.h"

namespace plc::recorder {
namespace {

host::DataPoint pointOf(const SeriesDescription& series)
{
    host::DataPoint point;
    point.type = series.type;
    point.elements = series.elements;
    point.stringLength = series.stringLength;
    return point;
}

const values::IecType& typeNamed(const char* name)
{
    return *values::findIecType(std::string_view(name));
}

/// The number that a value's text stands for: 1.5, -5, TRUE, 16#FF, T#1m30s.
std::optional<double> numberOfText(const QString& text)
{
    const bool isDuration = text.startsWith(QLatin1String("T#"));
    const bool isFlag = text == QLatin1String("TRUE") || text == QLatin1String("FALSE");
    const bool hasBase = text.contains(QLatin1Char('#'));
    const char* const name = isFlag ? "BOOL" : isDuration ? "TIME" : hasBase ? "LWORD" : "LREAL";
    const Expected<values::Value> value = values::parseValue(typeNamed(name), 0, text);
    return value ? values::numericValue(*value) : std::nullopt;
}

} // namespace

bool operator==(const SeriesDescription& a, const SeriesDescription& b)
{
    return a.source == b.source && a.label == b.label && a.type == b.type &&
           a.elements == b.elements && a.stringLength == b.stringLength && a.unit == b.unit &&
           !(a.deadband < b.deadband) && !(b.deadband < a.deadband);
}

SeriesDescription describe(const host::DataPoint& point, const QString& source)
{
    SeriesDescription series;
    series.source = source;
    series.label = point.text;
    series.type = point.type;
    series.elements = point.elements;
    series.stringLength = point.stringLength;
    series.unit = point.unit;
    return series;
}

QVector<values::Value> seriesValues(const SeriesDescription& series, const QByteArray& bytes)
{
    if (!series.type)
        return {QString::fromUtf8(bytes)};
    return host::decodeValues(pointOf(series), bytes);
}

QString seriesText(const SeriesDescription& series, const QByteArray& bytes)
{
    if (!series.type)
        return QString::fromUtf8(bytes);
    return bytes.isEmpty() ? QString()
                           : host::pointText(pointOf(series), seriesValues(series, bytes));
}

bool isNumeric(const SeriesDescription& series)
{
    return series.type && series.elements == 1 && !values::isText(*series.type);
}

SeriesNumbers::SeriesNumbers(const SeriesDescription& series) : m_point(pointOf(series)) {}

std::optional<double> SeriesNumbers::number(const QByteArray& bytes) const
{
    const std::optional<ExactNumber> number = exactNumber(bytes);
    return number ? std::optional<double>(number->nearest) : std::nullopt;
}

std::optional<ExactNumber> SeriesNumbers::exactNumber(const QByteArray& bytes) const
{
    if (bytes.isEmpty())
        return {};
    if (!m_point.type) {
        const std::optional<double> number = numberOfText(QString::fromUtf8(bytes));
        return number ? std::optional<ExactNumber>({*number, 0}) : std::nullopt;
    }
    if (m_point.elements != 1 || values::isText(*m_point.type))
        return {};
    return recorder::exactNumber(host::decodeValue(m_point, bytes));
}

} // namespace plc::recorder
