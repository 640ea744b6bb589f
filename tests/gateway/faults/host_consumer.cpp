#include "gateway/faults/host_consumer.h"

#include <mosquitto.h>

#include <QtCore/QDateTime>

#include <chrono>

#include "gateway/support/sparkplug_reader.h"

namespace plc::faults {
namespace {

constexpr char kStateTopic[] = "spBv1.0/STATE/scada";
constexpr int kKeepAlive = 60; // s
constexpr int kLoopTime = 50;  // ms
constexpr auto kPause = std::chrono::milliseconds(100);
constexpr int kGood = 192;

} // namespace

HostConsumer::HostConsumer(int port) : m_port(port)
{
    mosquitto_lib_init();
    m_thread = std::thread([this] { run(); });
}

HostConsumer::~HostConsumer()
{
    m_isEnding = true;
    m_thread.join();
}

std::vector<ToldValue> HostConsumer::told() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_told;
}

std::vector<std::string> HostConsumer::problems() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_problems;
}

void HostConsumer::run()
{
    while (!m_isEnding) {
        converse();
        std::this_thread::sleep_for(kPause);
    }
}

/// One connection, from its beginning to its end.
void HostConsumer::converse()
{
    mosquitto* const handle = mosquitto_new(nullptr, true, this);
    m_isBorn = false;
    const QByteArray now = QByteArray::number(QDateTime::currentMSecsSinceEpoch());
    m_connectedAt = R"("timestamp":)" + now + "}";
    const QByteArray will = R"({"online":false,)" + m_connectedAt;
    mosquitto_will_set(handle, kStateTopic, int(will.size()), will.constData(), 1, true);
    mosquitto_connect_callback_set(handle, [](mosquitto* connected, void*, int code) {
        if (code == 0)
            mosquitto_subscribe(connected, nullptr, "spBv1.0/works/#", 1);
    });
    mosquitto_subscribe_callback_set(handle,
                                     [](mosquitto* subscribed, void* self, int, int, const int*) {
                                         static_cast<HostConsumer*>(self)->sayOnline(subscribed);
                                     });
    mosquitto_message_callback_set(
        handle, [](mosquitto*, void* self, const mosquitto_message* message) {
            static_cast<HostConsumer*>(self)->take(
                message->topic,
                QByteArray(static_cast<const char*>(message->payload), message->payloadlen));
        });
    int code = mosquitto_connect(handle, "127.0.0.1", m_port, kKeepAlive);
    while (code == MOSQ_ERR_SUCCESS && !m_isEnding)
        code = mosquitto_loop(handle, kLoopTime, 1);
    mosquitto_destroy(handle);
}

void HostConsumer::sayOnline(mosquitto* handle)
{
    const QByteArray birth = R"({"online":true,)" + m_connectedAt;
    mosquitto_publish(handle, nullptr, kStateTopic, int(birth.size()), birth.constData(), 1, true);
}

void HostConsumer::complain(const QByteArray& topic, const std::string& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_problems.push_back(topic.toStdString() + ": " + text);
}

/// "spBv1.0/works/KIND/NODE[/DEVICE]"
void HostConsumer::take(const QByteArray& topic, const QByteArray& bytes)
{
    const QList<QByteArray> parts = topic.split('/');
    const QByteArray kind = parts.value(2);
    const QByteArray device = parts.value(4);
    const test::ReadPayload payload = test::readPayload(bytes);
    if (!payload.isGood)
        complain(topic, "malformed");
    if (kind == "NDEATH" || kind.endsWith("CMD"))
        return;
    const bool isBirth = kind == "NBIRTH";
    const quint64 expected = isBirth ? 0 : (m_seq + 1) % 256;
    if (!isBirth && !m_isBorn)
        complain(topic, "before a birth of the node");
    else if (payload.seq != expected)
        complain(topic, "seq " + std::to_string(payload.seq.value_or(999)) + " where " +
                            std::to_string(expected) + " is expected");
    m_seq = payload.seq.value_or(0);
    m_isBorn = true;
    if (isBirth)
        m_namesByDevice.clear();
    if (device.isEmpty())
        return;
    if (kind == "DBIRTH")
        m_namesByDevice[device].clear();
    if (m_namesByDevice.count(device) == 0)
        complain(topic, "before a birth of the device");
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const test::ReadMetric& metric : payload.metrics) {
        QByteArray& name = m_namesByDevice[device][metric.alias.value_or(0)];
        if (kind == "DBIRTH")
            name = metric.name;
        if (name.isEmpty())
            m_problems.push_back(topic.toStdString() + ": an alias without a birth");
        if (metric.number && !metric.isNull && metric.quality == kGood)
            m_told.push_back(
                {device, name, metric.time, qint64(*metric.number), metric.isHistorical});
    }
    if (kind == "DDEATH")
        m_namesByDevice.erase(device);
}

} // namespace plc::faults
