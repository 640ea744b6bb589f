#include "gateway/sparkplug/metric_writer.h"

#include "exchange/shown_unit.h"
#include "gateway/sparkplug/array_bytes.h"
#include "gateway/sparkplug/data_type.h"
#include "gateway/sparkplug/utf8.h"
#include "host/points/value_codec.h"
#include "values/value_bits.h"

namespace plc::gateway {
namespace {

std::string text(const QString& text)
{
    return utf8(text).toStdString();
}

void addTextProperty(const char* key, const QString& value, wire::Metric* target)
{
    if (value.isEmpty())
        return;
    wire::PropertySet* properties = target->mutable_properties();
    properties->add_keys(key);
    wire::PropertyValue* property = properties->add_values();
    property->set_type(quint32(DataType::String));
    property->set_string_value(text(value));
}

/// The codes of the convention.
quint32 qualityCode(Quality quality)
{
    switch (quality) {
        case Quality::Good:
            return 192;
        case Quality::Stale:
            return 500;
        case Quality::Bad:
            break;
    }
    return 0;
}

void addQuality(Quality quality, wire::Metric* target)
{
    wire::PropertySet* properties = target->mutable_properties();
    properties->add_keys("Quality");
    wire::PropertyValue* property = properties->add_values();
    property->set_type(quint32(DataType::Int32));
    property->set_int_value(qualityCode(quality));
}

void writeValue(const host::DataPoint& point, const values::Value& value, wire::Metric* target)
{
    switch (elementType(point)) {
        case DataType::Boolean:
            target->set_boolean_value(std::get<bool>(value));
            return;
        case DataType::String:
            target->set_string_value(text(std::get<QString>(value)));
            return;
        case DataType::Float:
            target->set_float_value(std::get<float>(value));
            return;
        case DataType::Double:
            target->set_double_value(std::get<double>(value));
            return;
        case DataType::Int64:
        case DataType::UInt64:
            target->set_long_value(values::valueBits(value));
            return;
        default:
            // Two's complement in all 32 bits, of the smaller types, too.
            target->set_int_value(quint32(values::valueBits(value)));
            return;
    }
}

wire::Metric* addMetric(const QString& name, DataType type, quint64 alias, qint64 time,
                        wire::Payload* payload)
{
    wire::Metric* metric = payload->add_metrics();
    if (!name.isEmpty()) {
        metric->set_name(text(name));
        metric->set_datatype(quint32(type));
    }
    if (alias != 0)
        metric->set_alias(alias);
    metric->set_timestamp(quint64(time));
    return metric;
}

} // namespace

void describe(const Metric& metric, wire::Metric* target)
{
    target->set_name(text(metric.name));
    target->set_datatype(quint32(dataType(metric.point)));
    addTextProperty("engUnit", exchange::shownUnit(metric.point), target);
    addTextProperty("description", metric.point.description, target);
}

void writeSample(const Metric& metric, const Sample& sample, wire::Metric* target)
{
    target->set_timestamp(quint64(sample.time));
    if (sample.quality != Quality::Good || sample.isQualityNew)
        addQuality(sample.quality, target);
    if (sample.bytes.isEmpty()) {
        target->set_is_null(true);
        return;
    }
    const QVector<values::Value> values = host::decodeValues(metric.point, sample.bytes);
    if (metric.point.elements == 1)
        writeValue(metric.point, values.first(), target);
    else
        target->set_bytes_value(arrayBytes(metric.point, values).toStdString());
}

wire::Metric* addBoolean(const QString& name, bool value, qint64 time, wire::Payload* payload)
{
    wire::Metric* metric = addMetric(name, DataType::Boolean, 0, time, payload);
    metric->set_boolean_value(value);
    return metric;
}

wire::Metric* addNumber(const QString& name, quint64 alias, quint64 value, qint64 time,
                        wire::Payload* payload)
{
    wire::Metric* metric = addMetric(name, DataType::UInt64, alias, time, payload);
    metric->set_long_value(value);
    return metric;
}

wire::Metric* addText(const QString& name, quint64 alias, const QString& value, qint64 time,
                      wire::Payload* payload)
{
    wire::Metric* metric = addMetric(name, DataType::String, alias, time, payload);
    if (value.isNull())
        metric->set_is_null(true);
    else
        metric->set_string_value(text(value));
    return metric;
}

QByteArray serialized(const wire::Payload& payload)
{
    QByteArray bytes(int(payload.ByteSizeLong()), Qt::Uninitialized);
    payload.SerializeToArray(bytes.data(), int(bytes.size()));
    return bytes;
}

} // namespace plc::gateway
