#ifndef PLC_BENCH_COMPARE_CHILD_PROCESS_H
#define PLC_BENCH_COMPARE_CHILD_PROCESS_H

#include <QtCore/QStringList>

#include <sys/types.h>

namespace plc::bench {

/// A server or proxy in a process of its own, so that its processor time is not the client's. It
/// prints its port first and ends with this process.
class ChildProcess {
public:
    ChildProcess(const QString& program, const QStringList& arguments);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    quint16 port() const { return m_port; }

private:
    pid_t m_id = -1;
    quint16 m_port = 0;
};

} // namespace plc::bench

#endif
