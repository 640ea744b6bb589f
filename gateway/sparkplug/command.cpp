#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include "gateway/sparkplug/command.h"

#include "exchange/written_value.h"
#include "gateway/sparkplug/array_bytes.h"
#include "gateway/sparkplug/data_type.h"
#include "gateway/sparkplug/utf8.h"

namespace plc::gateway {
namespace {

using google::protobuf::internal::WireFormatLite;

/// Metrics in the payload, or one more than may be there. -1: the bytes are no payload.
int countMetrics(const QByteArray& payload)
{
    google::protobuf::io::CodedInputStream input(
        reinterpret_cast<const std::uint8_t*>(payload.constData()), int(payload.size()));
    const std::uint32_t metricTag = WireFormatLite::MakeTag(
        wire::Command::kMetricsFieldNumber, WireFormatLite::WIRETYPE_LENGTH_DELIMITED);
    int metrics = 0;
    while (metrics <= kMostMetricsOfCommand) {
        const std::uint32_t tag = input.ReadTag();
        if (tag == 0)
            return input.ConsumedEntireMessage() ? metrics : -1;
        if (tag == metricTag)
            ++metrics;
        if (!WireFormatLite::SkipField(&input, tag))
            return -1;
    }
    return metrics;
}

Error otherField(DataType type)
{
    return {QStringLiteral("the value is not in the field that is for %1")
                .arg(dataTypeName(quint32(type)))};
}

bool isSigned(DataType type)
{
    return type == DataType::Int8 || type == DataType::Int16 || type == DataType::Int32 ||
           type == DataType::Int64;
}

/// Some hosts put all unsigned numbers of 32 bits, and some all numbers, into the field of 64 bits.
Expected<values::Value> wholeNumber(DataType type, const wire::CommandMetric& command)
{
    const bool is64 = type == DataType::Int64 || type == DataType::UInt64;
    if (command.has_long_value()) {
        return isSigned(type) ? values::Value(qint64(command.long_value()))
                              : values::Value(quint64(command.long_value()));
    }
    if (!command.has_int_value() || is64)
        return otherField(type);
    return isSigned(type) ? values::Value(qint64(qint32(command.int_value())))
                          : values::Value(quint64(command.int_value()));
}

Expected<values::Value> scalarOf(DataType type, const wire::CommandMetric& command)
{
    switch (type) {
        case DataType::Boolean:
            if (command.has_boolean_value())
                return values::Value(command.boolean_value());
            return otherField(type);
        case DataType::Float:
            if (command.has_float_value())
                return values::Value(command.float_value());
            return otherField(type);
        case DataType::Double:
            if (command.has_double_value())
                return values::Value(command.double_value());
            return otherField(type);
        case DataType::String: {
            if (!command.has_string_value())
                return otherField(type);
            const std::string& bytes = command.string_value();
            const std::optional<QString> text = fromUtf8(bytes.data(), bytes.size());
            if (!text)
                return Error{QStringLiteral("the text is no UTF-8")};
            return values::Value(*text);
        }
        default:
            return wholeNumber(type, command);
    }
}

Expected<QVector<values::Value>> givenValues(const host::DataPoint& point,
                                             const wire::CommandMetric& command)
{
    if (point.elements == 1) {
        const Expected<values::Value> value = scalarOf(elementType(point), command);
        if (!value)
            return value.error();
        return QVector<values::Value>{*value};
    }
    if (values::isText(*point.type))
        return Error{QStringLiteral("texts are written one by one, each by its own label")};
    if (!command.has_bytes_value())
        return otherField(dataType(point));
    const std::string& bytes = command.bytes_value();
    return arrayValues(point, QByteArray::fromRawData(bytes.data(), int(bytes.size())));
}

} // namespace

Expected<wire::Command> parseCommand(const QByteArray& payload)
{
    if (payload.size() > kMostBytesOfCommand) {
        return Error{QStringLiteral("it has %1 bytes, more than %2")
                         .arg(payload.size())
                         .arg(kMostBytesOfCommand)};
    }
    const int metrics = countMetrics(payload);
    if (metrics > kMostMetricsOfCommand)
        return Error{QStringLiteral("it has more than %1 metrics").arg(kMostMetricsOfCommand)};
    wire::Command command;
    if (metrics < 0 || !command.ParseFromArray(payload.constData(), int(payload.size())))
        return Error{QStringLiteral("its bytes are no Sparkplug payload")};
    if (metrics == 0)
        return Error{QStringLiteral("it has no metrics")};
    return command;
}

Expected<QVector<values::Value>> commandedValues(const Metric& metric,
                                                 const wire::CommandMetric& command)
{
    const quint32 type = quint32(dataType(metric.point));
    if (command.has_datatype() && command.datatype() != type) {
        return Error{QStringLiteral("the value is told to be %1, the metric is %2")
                         .arg(dataTypeName(command.datatype()), dataTypeName(type))};
    }
    if (command.is_null())
        return Error{QStringLiteral("null is no value that can be written")};
    const Expected<QVector<values::Value>> given = givenValues(metric.point, command);
    if (!given)
        return given.error();
    return exchange::writtenValues(metric.point, *given);
}

} // namespace plc::gateway
