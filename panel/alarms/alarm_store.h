#ifndef PLC_PANEL_ALARMS_ALARM_STORE_H
#define PLC_PANEL_ALARMS_ALARM_STORE_H

#include <QtCore/QVector>

#include <optional>

#include "panel/alarms/alarm_engine.h"
#include "panel/alarms/alarm_occurrence.h"
#include "values/expected.h"

namespace plc::panel {

/// Where occurrences of alarms are kept. For one thread at a time; each function may wait for the
/// disk.
class AlarmStore {
public:
    virtual ~AlarmStore() = default;

    /// All or none; new ones, or known ones that have changed. What is too old is removed; by its
    /// age only at a time that is confirmed.
    virtual Expected<void> save(const QVector<AlarmOccurrence>& occurrences,
                                std::optional<qint64> confirmed) = 0;

    /// The newest of each alarm that has not ended or is not acknowledged.
    virtual Expected<QVector<KeptOccurrence>> kept() = 0;
    /// Those that were there at some time from `from` to `to`, both included: the newest first,
    /// `most` of them.
    virtual Expected<QVector<AlarmOccurrence>> between(qint64 from, qint64 to, int most) = 0;
    /// Behind all numbers that were ever given.
    virtual Expected<qint64> nextNumber() = 0;

    /// To be called now and then: whatever was moved or removed while it was open is gone on with
    /// in a new one, which begins with what is open of it; so do the other functions, whoever calls
    /// this or not. An error says why there is none.
    virtual Expected<void> look() { return {}; }
    /// How often that happened. What was kept meanwhile may not be in the new one.
    virtual int changedFiles() const { return 0; }
};

} // namespace plc::panel

#endif
