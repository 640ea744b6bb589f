#include "gateway/operation/metrics_text.h"
#include "values/prometheus_label.h"

#include <initializer_list>
#include <utility>

namespace plc::gateway {
namespace {

constexpr double kMillisecond = 1e-3; // s

QByteArray numberText(double number)
{
    return QByteArray::number(number, 'g', 15);
}

QByteArray numberText(quint64 number)
{
    return QByteArray::number(number);
}

using Labels = std::initializer_list<std::pair<const char*, QString>>;

/// Families of samples, each with its explanation.
class Writer {
public:
    void begin(const char* name, const char* type, const char* help)
    {
        m_name = name;
        m_text +=
            QByteArray("# HELP ") + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
    }
    template <typename Number>
    void add(const Labels& labels, Number number, const char* suffix = "")
    {
        m_text += m_name + suffix;
        const char* before = "{";
        for (const auto& [label, value] : labels) {
            m_text += before + QByteArray(label) + "=\"" + values::prometheusLabel(value) + '"';
            before = ",";
        }
        m_text += labels.size() > 0 ? "} " : " ";
        m_text += numberText(number) + '\n';
    }
    template <typename Number>
    void single(const char* name, const char* type, const char* help, Number number)
    {
        begin(name, type, help);
        add({}, number);
    }

    QByteArray m_text;

private:
    QByteArray m_name;
};

/// A number of each device.
template <typename Number>
struct DeviceFamily {
    const char* name;
    const char* type;
    const char* help;
    Number DeviceStatistics::*field;
};

const DeviceFamily<double> kDeviceTimes[] = {
    {"plc_gateway_device_oldest_value_age_seconds", "gauge", "Age of the oldest good value.",
     &DeviceStatistics::oldestAge},
    {"plc_gateway_device_cycle_seconds", "gauge", "Duration of the last pass over all values.",
     &DeviceStatistics::cycleTime}};

const DeviceFamily<quint64> kDeviceCounts[] = {
    {"plc_gateway_device_requests_total", "counter", "Requests sent to the PLC.",
     &DeviceStatistics::requests},
    {"plc_gateway_device_link_losses_total", "counter", "Times that the link was lost.",
     &DeviceStatistics::linkLosses},
    {"plc_gateway_device_messages_total", "counter", "Messages published of the PLC.",
     &DeviceStatistics::messages},
    {"plc_gateway_device_changes_published_total", "counter", "Changes published as they happened.",
     &DeviceStatistics::changesPublished},
    {"plc_gateway_device_changes_stored_total", "counter", "Changes stored for later.",
     &DeviceStatistics::changesStored}};

template <typename Number, std::size_t count>
void addFamilies(const DeviceFamily<Number> (&families)[count],
                 const QVector<DeviceStatistics>& devices, Writer* writer)
{
    for (const DeviceFamily<Number>& family : families) {
        writer->begin(family.name, family.type, family.help);
        for (const DeviceStatistics& device : devices)
            writer->add({{"device", device.name}}, device.*family.field);
    }
}

void addDevices(const QVector<DeviceStatistics>& devices, Writer* writer)
{
    writer->begin("plc_gateway_device_up", "gauge", "Whether the link to the PLC stands.");
    for (const DeviceStatistics& device : devices)
        writer->add({{"device", device.name}}, quint64(device.isUp));
    writer->begin("plc_gateway_device_values", "gauge", "Values of the PLC by quality.");
    for (const DeviceStatistics& device : devices) {
        const std::pair<const char*, int> counts[] = {
            {"good", device.good}, {"stale", device.stale}, {"bad", device.bad}};
        for (const auto& [quality, count] : counts)
            writer->add({{"device", device.name}, {"quality", QLatin1String(quality)}},
                        quint64(count));
    }
    addFamilies(kDeviceTimes, devices, writer);
    addFamilies(kDeviceCounts, devices, writer);
    writer->begin("plc_gateway_device_writes_total", "counter",
                  "Writes that consumers asked for, by how they ended.");
    for (const DeviceStatistics& device : devices) {
        const std::pair<const char*, quint64> counts[] = {{"done", device.writes.done},
                                                          {"refused", device.writes.refused},
                                                          {"unknown", device.writes.unknown}};
        for (const auto& [outcome, count] : counts)
            writer->add({{"device", device.name}, {"outcome", QLatin1String(outcome)}}, count);
    }
}

void addBroker(const BrokerStatistics& broker, Writer* writer)
{
    writer->single("plc_gateway_broker_connected", "gauge", "Whether a broker is connected.",
                   quint64(broker.isConnected));
    writer->single("plc_gateway_publishing", "gauge",
                   "Whether values are published: a broker is connected, and the primary host is "
                   "there, where one is configured.",
                   quint64(broker.isPublishing));
    const double since = broker.isConnected ? double(broker.since) * kMillisecond : 0;
    writer->single("plc_gateway_broker_connected_since_timestamp_seconds", "gauge",
                   "When the connection to the broker began; 0 without one.", since);
    writer->single("plc_gateway_broker_connections_total", "counter",
                   "Connections to brokers that came about.", broker.connections);
    writer->single("plc_gateway_messages_total", "counter", "Messages published.", broker.messages);
    writer->single("plc_gateway_message_bytes_total", "counter", "Bytes of published payloads.",
                   broker.bytes);
    writer->single("plc_gateway_rebirths_total", "counter", "Births that consumers asked for.",
                   broker.rebirths);
    writer->single("plc_gateway_complaints_total", "counter",
                   "Messages from the broker that made no sense.", broker.complaints);
    writer->single("plc_gateway_write_outcomes_dropped_total", "counter",
                   "Outcomes of writes that consumers will not see.", broker.lostOutcomes);
}

void addStore(const StoreStatistics& store, Writer* writer)
{
    writer->single("plc_gateway_store_changes", "gauge", "Changes that wait for a broker.",
                   store.waiting);
    writer->single("plc_gateway_store_stored_total", "counter", "Changes put into the store.",
                   store.stored);
    writer->single("plc_gateway_store_sent_total", "counter", "Changes sent from the store.",
                   store.sent);
    writer->single("plc_gateway_store_dropped_total", "counter",
                   "Changes that no consumer will see, since the store was made.", store.dropped);
    writer->single("plc_gateway_store_working", "gauge", "Whether the store takes changes.",
                   quint64(store.problem.isEmpty()));
}

void addAudit(const AuditStatistics& audit, Writer* writer)
{
    writer->single("plc_gateway_audit_working", "gauge",
                   "Whether writes can be recorded; they are refused otherwise.",
                   quint64(audit.problem.isEmpty()));
    writer->single("plc_gateway_audit_lines_waiting", "gauge",
                   "Lines that the audit file has not taken yet.", audit.waiting);
    writer->single("plc_gateway_unanswered_requests_total", "counter",
                   "Requests to write what is not writable, refused without an outcome.",
                   audit.unanswered);
}

void addLatency(const Histogram& latency, Writer* writer)
{
    writer->begin("plc_gateway_latency_seconds", "histogram",
                  "From the request of a value until its change was handed over.");
    for (std::size_t i = 0; i < Histogram::kBounds.size(); ++i) {
        const QString bound = QString::number(Histogram::kBounds[i]);
        writer->add({{"le", bound}}, latency.upTo(i), "_bucket");
    }
    writer->add({{"le", QStringLiteral("+Inf")}}, latency.count(), "_bucket");
    writer->add({}, latency.sum(), "_sum");
    writer->add({}, latency.count(), "_count");
}

} // namespace

QByteArray metricsText(const GatewayStatistics& statistics)
{
    Writer writer;
    writer.begin("plc_gateway_info", "gauge", "Which gateway this is.");
    writer.add(
        {{"version", statistics.version}, {"group", statistics.group}, {"node", statistics.node}},
        quint64(1));
    addBroker(statistics.broker, &writer);
    addStore(statistics.store, &writer);
    addAudit(statistics.audit, &writer);
    addLatency(statistics.latency, &writer);
    addDevices(statistics.devices, &writer);
    writer.single("process_start_time_seconds", "gauge", "When the process began.",
                  double(statistics.started) * kMillisecond);
    writer.single("process_cpu_seconds_total", "counter", "Processor time taken.",
                  statistics.process.processorTime);
    writer.single("process_resident_memory_bytes", "gauge", "Resident memory.",
                  quint64(statistics.process.residentBytes));
    return writer.m_text;
}

} // namespace plc::gateway
