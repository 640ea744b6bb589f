#ifndef PLC_HOST_REPORT_LINK_STATISTICS_H
#define PLC_HOST_REPORT_LINK_STATISTICS_H

#include <QtCore/QMap>

#include "host/link/session.h"
#include "host/report/latency_histogram.h"
#include "values/export.h"

namespace plc::host {

/// What went over a link and how it fared. Times in nanoseconds since any start.
class PLC_HOST_EXPORT LinkStatistics {
public:
    /// Reasons for which the link was lost that are counted each by itself; further ones together.
    static constexpr int kMostReasons = 20;

    void requestSent(qint64 now);
    void requestAnswered(const SentRequest& request, const Answer& answer, qint64 now);
    void linkChanged(LinkState state, const QString& reason, int retryDelay);

    quint64 requests() const { return m_requests; }
    quint64 accepted() const { return m_accepted; }
    quint64 refused() const { return m_refused; }
    /// Requests whose link was lost before a whole reply had come.
    quint64 unanswered() const { return m_unanswered; }
    /// Requests that were sent again after a reply that was refused.
    quint64 retries() const { return m_retries; }
    quint64 logins() const { return m_logins; }
    quint64 reconnects() const { return m_connections == 0 ? 0 : m_connections - 1; }
    const LatencyHistogram& roundTrips() const { return m_roundTrips; }
    /// Round trips from the end of the login to the first values, of the connection where they were
    /// most; 0: no values have come yet.
    quint64 roundTripsToValues() const { return m_tripsToValues; }
    /// How often the PLC refused a read, by the status in its reply; -1: without one.
    const QMap<int, quint64>& refusals() const { return m_refusals; }
    /// How often a request was given up, by the number that DataCom() gave.
    const QMap<int, quint64>& failures() const { return m_failures; }
    const QMap<QString, quint64>& lossReasons() const { return m_lossReasons; }

private:
    void countTripToValues(const SentRequest& request, const Answer& answer);

    quint64 m_requests = 0;
    quint64 m_accepted = 0;
    quint64 m_refused = 0;
    quint64 m_unanswered = 0;
    quint64 m_retries = 0;
    quint64 m_logins = 0;
    quint64 m_connections = 0;
    bool m_isAwaiting = false;
    qint64 m_sentAt = 0;
    LatencyHistogram m_roundTrips;
    bool m_awaitsValues = false;   ///< No values have come over this connection.
    quint64 m_tripsSinceLogin = 0; ///< While they are awaited.
    quint64 m_tripsToValues = 0;
    QMap<int, quint64> m_refusals;
    QMap<int, quint64> m_failures;
    QMap<QString, quint64> m_lossReasons;
};

} // namespace plc::host

#endif
