#ifndef PLC_TESTS_GATEWAY_FAULTS_HOST_CONSUMER_H
#define PLC_TESTS_GATEWAY_FAULTS_HOST_CONSUMER_H

#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <QtCore/QByteArray>

struct mosquitto;
struct mosquitto_message;

namespace plc::faults {

/// A good value as a consumer was told it.
struct ToldValue {
    QByteArray device;
    QByteArray name;
    qint64 time = 0; ///< ms
    qint64 value = 0;
    bool isHistorical = false;
};

/// The primary host "scada" of the group "works", which connects again whenever it loses the broker
/// and says that it is online once it has subscribed.
class HostConsumer {
public:
    explicit HostConsumer(int port);
    ~HostConsumer();
    HostConsumer(const HostConsumer&) = delete;
    HostConsumer& operator=(const HostConsumer&) = delete;

    /// All that was told since the beginning.
    std::vector<ToldValue> told() const;
    /// What broke the convention: malformed payloads, holes in seq, data before births.
    std::vector<std::string> problems() const;

private:
    void run();
    void converse();
    void sayOnline(mosquitto* handle);
    void take(const QByteArray& topic, const QByteArray& payload);
    void complain(const QByteArray& topic, const std::string& text);

    const int m_port;
    std::atomic<bool> m_isEnding{false};

    // The thread only:
    QByteArray m_connectedAt;
    bool m_isBorn = false;
    quint64 m_seq = 0;
    std::map<QByteArray, std::map<quint64, QByteArray>> m_namesByDevice;

    mutable std::mutex m_mutex;
    std::vector<ToldValue> m_told;
    std::vector<std::string> m_problems;
    std::thread m_thread;
};

} // namespace plc::faults

#endif
