#ifndef PLC_BENCH_MANY_SIMULATORS_H
#define PLC_BENCH_MANY_SIMULATORS_H

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <vector>

namespace plc::bench {

/// The tanks of a plant, and the values of each.
constexpr int kTanks = 32;
constexpr int kValuesOfTank = 7;
constexpr int kValues = kTanks * kValuesOfTank;
constexpr int kTankBytes = 4 * kValuesOfTank;

/// What a value of a plant is, from the first value of the first tank on; no two are the same.
constexpr float valueOf(int plant, int row)
{
    return float(1000 * plant + row + 1);
}

/// Simulated PLCs, each a process of its own, with a plant of kValues values.
class Simulators {
public:
    explicit Simulators(int count);
    ~Simulators();

    quint16 port(int index) const { return m_ports[size_t(index)]; }
    /// Ends it at once, as a power failure does.
    void kill(int index);
    /// Starts it again at its port.
    void start(int index);

private:
    QString projectFile(int index) const;

    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<QProcess>> m_processes;
    std::vector<quint16> m_ports;
};

} // namespace plc::bench

#endif
