#ifndef PLC_PANEL_PLANTS_LIVE_TABLE_H
#define PLC_PANEL_PLANTS_LIVE_TABLE_H

#include <QtCore/QVector>

#include <optional>
#include <vector>

#include "host/runtime/value_table.h"
#include "panel/model/live_value.h"

namespace plc::panel {

/// What is known of the values of a PLC, by slots, and which of them changed.
class LiveTable {
public:
    /// Looks at a table whose row r is the value of places[r]. `now` is by the table's clock
    /// and the same as `moment`. Returns the slots whose value or quality is another one than at
    /// the last call.
    const QVector<int>& sample(const host::ValueTable& values, const QVector<int>& places,
                               qint64 now, const Moment& moment);
    /// Nothing is known of the slot any more.
    void forget(int slot);

    const LiveValue& value(int slot) const { return m_values[std::size_t(slot)]; }
    bool has(int slot) const { return std::size_t(slot) < m_values.size(); }
    /// Each good value was asked for at this time or later; nothing: none is good.
    const std::optional<Moment>& confirmed() const { return m_confirmed; }

private:
    std::vector<LiveValue> m_values;
    QVector<int> m_changed;
    std::optional<Moment> m_confirmed;
};

} // namespace plc::panel

#endif
