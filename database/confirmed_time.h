#ifndef PLC_DATABASE_CONFIRMED_TIME_H
#define PLC_DATABASE_CONFIRMED_TIME_H

#include <QtCore/QtGlobal>

#include <optional>

namespace plc::database {

/// A time of day that may be trusted so far that things are removed by their age: the clock of the
/// computer may be set wrong for a while. It is taken as it is once it went along with a clock that
/// nobody sets for an hour; from then on, whatever it is set to, what is confirmed passes as fast
/// as that one.
class ConfirmedTime {
public:
    static constexpr qint64 kProbation = qint64(3600) * 1000; // ms
    /// Clocks are slewed without being set.
    static constexpr qint64 kDeviation = qint64(10) * 1000; // ms

    /// `now` by the computer's clock, `steady` by one that nobody sets, both in ms. Returns the
    /// latest time that is confirmed, never one behind `now`; nothing before the first hour.
    std::optional<qint64> update(qint64 now, qint64 steady);

private:
    std::optional<qint64> m_confirmed;
    qint64 m_last = 0; ///< By the steady clock, as is the next.
    std::optional<qint64> m_since;
    qint64 m_offset = 0; ///< Between the clocks, since then.
};

} // namespace plc::database

#endif
