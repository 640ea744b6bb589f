// What anyone can send to a gateway through a broker: any bytes on any topic become writes that
// are sound, or refusals that can be told.

#include <memory>

#include "exchange/flat_json.h"
#include "fuzz_input.h"
#include "gateway/exchange/outcome_json.h"
#include "gateway/plain/plain_publisher.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "host/points/value_codec.h"
#include "promise.h"
#include "values/value_bits.h"
#include "values/visible_text.h"

namespace {

using plc::fuzz::FuzzInput;
using plc::fuzz::require;
using namespace plc::gateway;

constexpr int kDevice = 1;
constexpr int kLongestComplaint = 1000;

QString text(const QByteArray& bytes)
{
    return QString::fromUtf8(bytes);
}

Metric metric(const char* type, int elements)
{
    Metric metric;
    metric.point.type = plc::values::findIecType(QString::fromLatin1(type));
    metric.point.stringLength = 8;
    metric.point.elements = elements;
    metric.name = QString::fromLatin1(elements == 1 ? "P/" : "P/some/") + QString::fromLatin1(type);
    return metric;
}

/// Each type, as one value and as three.
Device device()
{
    Device device;
    device.name = QStringLiteral("d");
    for (const int elements : {1, 3}) {
        for (const plc::values::IecType* type = plc::values::iecTypes(); type->name; ++type)
            device.metrics.append(metric(type->name, elements));
    }
    return device;
}

void checkValue(const plc::host::DataPoint& point, const plc::values::Value& value)
{
    if (plc::values::isText(*point.type)) {
        const QString& characters = std::get<QString>(value);
        require(int(characters.size()) <= point.stringLength, "a text fits into its variable");
        require(!characters.contains(QChar(0)), "a text has no end within");
        return;
    }
    const quint64 bits = plc::values::valueBits(value);
    require(plc::values::valueOfBits(*point.type, bits) == value, "a number fits into its type");
}

void checkWrite(const Device& device, const WriteRequest& write)
{
    require(write.device == kDevice || write.device == -1, "a write is for a device or for none");
    if (!write.error.isEmpty()) {
        require(write.values.isEmpty(), "a write that is refused has no values");
        require(int(write.error.size()) <= kLongestComplaint, "a reason can be told");
        return;
    }
    require(write.metric >= 0 && write.metric < int(device.metrics.size()), "a write has a metric");
    const Metric& metric = device.metrics[write.metric];
    require(write.name == metric.name, "a write is told by the metric's name");
    require(int(write.values.size()) == metric.point.elements, "each element has a value");
    for (const plc::values::Value& value : write.values)
        checkValue(metric.point, value);
    require(bool(plc::host::encodeValues(metric.point, write.values)), "a write can be sent");
}

void checkOutcome(const WriteRequest& write, Publisher& publisher)
{
    WriteOutcome outcome;
    outcome.device = write.device;
    outcome.metric = write.metric;
    outcome.name = write.name;
    outcome.id = write.id;
    outcome.reason = write.error;
    require(publisher.outcome(outcome, 1).size() == 1, "each write has an outcome");
    const plc::Expected<plc::exchange::FlatJson> json =
        plc::exchange::parseFlatJson(outcomeJson(outcome, QStringLiteral("d")).toUtf8());
    require(bool(json), "an outcome is JSON");
    require(bool(json->member("outcome")), "an outcome says what it is");
}

void check(const Device& device, const Message& message, Publisher& publisher)
{
    const Received received = publisher.received(message, 1);
    require(int(received.complaint.size()) <= kLongestComplaint, "a complaint can be told");
    require(plc::values::visibleText(received.complaint) == received.complaint,
            "a complaint is shown and not obeyed");
    require(!message.isRetained || received.writes.isEmpty(), "nothing retained is carried out");
    require(received.writes.size() <= 1000, "writes are bounded");
    for (const WriteRequest& write : received.writes) {
        checkWrite(device, write);
        checkOutcome(write, publisher);
    }
    publisher.mayPublish();
    publisher.isToLeave();
}

std::unique_ptr<Publisher> publisher(bool isPlain)
{
    if (isPlain)
        return std::make_unique<PlainPublisher>(
            PlainIdentity{QStringLiteral("g"), QStringLiteral("n"), false});
    return std::make_unique<SparkplugPublisher>(
        SparkplugIdentity{QStringLiteral("g"), QStringLiteral("n"), QStringLiteral("h")},
        [] { return 0; });
}

/// A topic that means something, or any.
QString topic(FuzzInput& input, const Device& device, bool isPlain)
{
    const int kind = input.byte();
    if (kind == 0)
        return text(input.bytes(input.byte()));
    if (isPlain) {
        const Metric& metric = device.metrics[kind % int(device.metrics.size())];
        return QStringLiteral("g/n/d/%1/set").arg(metric.name);
    }
    switch (kind % 4) {
        case 0:
            return QStringLiteral("spBv1.0/g/NCMD/n");
        case 1:
            return QStringLiteral("spBv1.0/STATE/h");
        case 2:
            return QStringLiteral("spBv1.0/g/DCMD/n/") + text(input.bytes(input.byte()));
        default:
            return QStringLiteral("spBv1.0/g/DCMD/n/d");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Device kAll = device();
    FuzzInput input(data, size);
    const int flags = input.byte();
    const bool isPlain = (flags & 1) != 0;
    const std::unique_ptr<Publisher> gateway = publisher(isPlain);
    gateway->addDevice(kDevice, kAll);
    gateway->nextWill(1);
    gateway->connected();
    gateway->opening(NodeState(), 1);
    gateway->deviceBegins(kDevice, {}, 1);
    Message message;
    message.isRetained = (flags & 2) != 0;
    message.topic = topic(input, kAll, isPlain);
    message.payload = input.bytes(int(size));
    check(kAll, message, *gateway);
    return 0;
}
