#ifndef PLC_TESTS_GATEWAY_FAULTS_CLOCK_SHIFT_H
#define PLC_TESTS_GATEWAY_FAULTS_CLOCK_SHIFT_H

#include <QtCore/QProcessEnvironment>
#include <QtCore/QTemporaryFile>

namespace plc::faults {

/// The wall clock of the programs that are started with environment(), which can be set while they
/// run.
class ClockShift {
public:
    ClockShift();

    QProcessEnvironment environment() const;
    /// It is ahead by so many ms from now on; behind by as many below 0.
    void set(qint64 ahead);

private:
    QTemporaryFile m_file;
};

} // namespace plc::faults

#endif
