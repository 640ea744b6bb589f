#ifndef PLC_PANEL_PLANTS_WANTED_VALUES_H
#define PLC_PANEL_PLANTS_WANTED_VALUES_H

#include <QtCore/QHash>
#include <QtCore/QVector>

#include <vector>

#include "host/points/data_point.h"

namespace plc::panel {

/// The values of a PLC that are read all the time, because somebody wants them: each has a slot, a
/// small number that stays the same for as long as it is wanted and a minute beyond. So who comes
/// back after a moment finds the value known, and lists that are looked through do not have the
/// reads laid out anew at each step. Time is an argument, in ms.
class WantedValues {
public:
    static constexpr qint64 kKeptUnused = 60000; // ms

    /// Wants a value; each call needs its release(). The same value has the same slot.
    int want(const host::DataPoint& point);
    void release(int slot, qint64 now);
    /// Gives up what nobody has wanted for long enough. Returns the slots that are free now.
    QVector<int> expire(qint64 now);

    /// The slot of a value by its text, -1: it has none.
    int find(const QString& text) const { return m_slots.value(text, kNone); }
    const host::DataPoint& point(int slot) const { return m_values[std::size_t(slot)].point; }
    /// Behind the highest slot that there ever was.
    int end() const { return int(m_values.size()); }
    /// Those with a value, ascending.
    QVector<int> used() const;
    int size() const { return int(m_slots.size()); }
    /// Whether used() has changed since the last call.
    bool takeChange();

private:
    static constexpr int kNone = -1;
    struct Wanted {
        host::DataPoint point;
        int users = 0;
        qint64 unusedSince = 0;
        bool isUsed = false;
    };

    std::vector<Wanted> m_values;
    QVector<int> m_free;
    QHash<QString, int> m_slots; ///< By DataPoint::text.
    bool m_hasChanged = false;
};

} // namespace plc::panel

#endif
