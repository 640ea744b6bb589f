#ifndef PLC_SIMULATOR_SIGNALS_H
#define PLC_SIMULATOR_SIGNALS_H

#include <QtCore/QHash>

#include <map>
#include <random>
#include <vector>

#include "project/label_lookup.h"
#include "simulator/plc_memory.h"

namespace plc::simulator {

/// Values that one simulator lets live at most.
constexpr qint64 kMostSignalValues = 100000;

/// Values with a signal in one element of each structure.
using SignalCounts = QHash<const project::StructureType*, qint64>;

/// Values of the project that have a signal; every element of an array and every instance of a
/// structure counts.
qint64 countSignalValues(const project::Project& project);

/// Lets the values of a project live. Ramps, sines and squares follow the time alone; counters and
/// walks go on from what is in the memory, so that they go on from what a client wrote. Constants
/// are stored once, at the start. Clocks show the time of this machine.
class Signals {
public:
    /// Both must outlive it. Equal seeds give equal walks.
    Signals(const project::Project& project, PlcMemory* memory, quint32 seed);

    /// Moves on to `milliseconds` after the start; going back changes nothing.
    void advance(qint64 milliseconds);

private:
    enum class Kind { Ramp, Sine, Square, Counter, Walk, Clock };

    /// The parameters of one signal, by their names in the project file; of another kind: 0.
    struct Parameters {
        explicit Parameters(const project::Signal& signal);

        Kind kind;
        double from, to, mean, amplitude, low, high, duty, minimum, maximum, step;
        double period, interval, phase, spread;
    };

    struct LiveValue {
        const Parameters* parameters;
        project::LabelTarget place;
        double shift;     ///< Periods ahead of the time.
        qint64 steps = 0; ///< Intervals that a counter or walk has behind it.
    };

    void addVariable(const project::Variable& variable, const project::LabelTarget& container);
    void addElement(const project::Variable& variable, const project::LabelTarget& place);
    void storeConstant(const project::Variable& variable, const project::LabelTarget& place,
                       qint64 ordinal);
    void storeStart(LiveValue* value);
    void moveTo(double seconds, LiveValue* value);
    void step(const LiveValue& value, qint64 count);
    double randomFromMinusOneToOne();

    PlcMemory* m_memory;
    std::mt19937 m_random;
    SignalCounts m_structureCounts;
    std::map<const project::Variable*, Parameters> m_parameters; ///< By declaration.
    std::vector<LiveValue> m_values;
    QHash<const project::Variable*, qint64>
        m_ordinals; ///< Elements met so far in one scope variable.
    qint64 m_now = 0;
};

} // namespace plc::simulator

#endif
