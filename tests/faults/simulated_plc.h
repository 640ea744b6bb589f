#ifndef PLC_TESTS_FAULTS_SIMULATED_PLC_H
#define PLC_TESTS_FAULTS_SIMULATED_PLC_H

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QProcess>

#include <vector>

namespace plc::faults {

/// One value of a write request that reached the PLC.
struct WriteRecord {
    int area = 0;
    quint32 address = 0; ///< In bits for a bit.
    bool isBit = false;
    QByteArray data;
    bool isTaken = false; ///< The PLC answered that it stored the value.
};

/// The program plc-simulator, and its own record of the writes that reached it, taken from its
/// trace.
class SimulatedPlc {
public:
    /// Ends the program when destroyed.
    explicit SimulatedPlc(const QString& projectFile);
    ~SimulatedPlc();

    quint16 port() const { return m_port; }

    /// The answer to a command, without its leading "ok"; what does not begin with it is kept
    /// whole. All that the PLC did before it is in the record afterwards.
    QByteArray command(const QString& line);
    QByteArray peek(int area, int address, int count);
    void poke(int area, int address, const QByteArray& bytes);

    const std::vector<WriteRecord>& writes() const { return m_writes; }
    void forgetWrites() { m_writes.clear(); }

private:
    QByteArray nextLine();
    void noteFrame(const QByteArray& line);
    void noteWrite(const QByteArray& request);

    QProcess m_process;
    quint16 m_port = 0;
    std::vector<WriteRecord> m_writes;
    /// Of each client, where the values of its unanswered request begin in the record.
    QHash<QByteArray, std::size_t> m_unanswered;
};

} // namespace plc::faults

#endif
