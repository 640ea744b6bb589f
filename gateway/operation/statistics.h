#ifndef PLC_GATEWAY_OPERATION_STATISTICS_H
#define PLC_GATEWAY_OPERATION_STATISTICS_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <algorithm>
#include <array>

#include "service/process_usage.h"

namespace plc::gateway {

// What a gateway knows of its own work. Counts begin with the process unless told otherwise; times
// are milliseconds since 1970-01-01T00:00:00Z, durations are seconds.

/// A duration in milliseconds as statistics have it.
inline double inSeconds(qint64 milliseconds)
{
    return double(milliseconds) / 1000.0;
}

/// How many durations were how long.
class Histogram {
public:
    static constexpr std::array<double, 11> kBounds = {0.005, 0.01, 0.025, 0.05, 0.1, 0.25,
                                                       0.5,   1,    2.5,   5,    10};

    void add(double seconds)
    {
        const auto bound = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
        ++m_counts[std::size_t(bound - kBounds.begin())];
        m_sum += seconds;
    }
    /// Of those that took kBounds[bound] at most; behind the last bound of all.
    quint64 upTo(std::size_t bound) const
    {
        quint64 count = 0;
        for (std::size_t i = 0; i <= bound; ++i)
            count += m_counts[i];
        return count;
    }
    quint64 count() const { return upTo(kBounds.size()); }
    double sum() const { return m_sum; }

private:
    std::array<quint64, kBounds.size() + 1> m_counts = {};
    double m_sum = 0;
};

/// Writes that consumers asked for, by how they ended.
struct WriteStatistics {
    quint64 done = 0;
    quint64 refused = 0;
    quint64 unknown = 0;
};

struct DeviceStatistics {
    QString name;
    QString address;   ///< "192.168.0.12:1200"
    bool isUp = false; ///< The link stands and the login succeeded.
    qint64 since = 0;  ///< Since when it is up, or down; 0: it never was up.
    QString problem;   ///< Why it is not up.
    int good = 0;      ///< Values by quality.
    int stale = 0;
    int bad = 0;
    double oldestAge = 0; ///< Of its good values.
    double cycleTime = 0; ///< Of the last pass over all values.
    quint64 requests = 0;
    quint64 linkLosses = 0;
    quint64 messages = 0;         ///< Published.
    quint64 changesPublished = 0; ///< Live ones.
    quint64 changesStored = 0;
    WriteStatistics writes;
};

struct BrokerStatistics {
    QString name; ///< "broker.example.com:8883"
    bool isConnected = false;
    bool isPublishing = false; ///< It is given values: the primary host is there, too.
    qint64 since = 0;          ///< Since when it is connected, or not; 0: it never was.
    QString problem;
    quint64 connections = 0;  ///< That came about.
    quint64 messages = 0;     ///< Published.
    quint64 bytes = 0;        ///< Of their payloads.
    quint64 rebirths = 0;     ///< Births that consumers asked for.
    quint64 complaints = 0;   ///< Messages from it that make no sense.
    quint64 lostOutcomes = 0; ///< Of writes, which consumers will not see.
};

struct StoreStatistics {
    quint64 waiting = 0;
    quint64 stored = 0;
    quint64 sent = 0;
    quint64 dropped = 0; ///< Since the store was made.
    QString problem;
};

struct AuditStatistics {
    quint64 waiting = 0; ///< Lines that the file has not taken yet.
    quint64 unanswered =
        0;           ///< Requests for what is not writable that were refused without outcome.
    QString problem; ///< Why writes are refused.
};

struct GatewayStatistics {
    QString version;
    QString group;
    QString node;
    qint64 started = 0;
    qint64 time = 0; ///< When this was so.
    BrokerStatistics broker;
    StoreStatistics store;
    AuditStatistics audit;
    QVector<DeviceStatistics> devices;
    /// From the request of a value until its change was handed over to be sent.
    Histogram latency;
    service::ProcessUsage process;
};

} // namespace plc::gateway

#endif
