#ifndef PLC_TESTS_FAULTS_FAULTY_PROXY_H
#define PLC_TESTS_FAULTS_FAULTY_PROXY_H

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <functional>

#include "faults/fault_plan.h"

namespace plc::faults {

/// Times in milliseconds that the faults keep to.
struct FaultTimes {
    int inTime = 0; ///< A reply this late is still taken.
    int tooLate = 0;
    int deafness = 0;
};

/// Stands between a host and a PLC and does to their bytes what a plan says.
class FaultyProxy : public QObject {
public:
    FaultyProxy(quint16 plcPort, FaultPlan* plan, const FaultTimes& times);

    quint16 port() const { return m_port; }
    /// What went wrong so far, for the report of a run that fails.
    const QStringList& history() const { return m_history; }

private:
    class Connection;

    void accept();
    void stopListeningFor(int milliseconds);
    void note(const QString& text) { m_history.append(text); }

    const quint16 m_plcPort;
    FaultPlan* const m_plan;
    const FaultTimes m_times;
    QTcpServer m_server;
    quint16 m_port = 0;
    QStringList m_history;
};

} // namespace plc::faults

#endif
