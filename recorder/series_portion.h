#ifndef PLC_RECORDER_SERIES_PORTION_H
#define PLC_RECORDER_SERIES_PORTION_H

#include <QtCore/QMap>
#include <QtCore/QPair>

#include <optional>

#include "recorder/change_batch.h"

namespace plc::recorder {

/// A series in a run.
using RunAndSeries = QPair<qint64, int>;

/// The changes of some series out of batches that hold those of all: of as many as fit into a
/// number of bytes, in the order of runs and series. What does not fit comes with the next portion,
/// for which the batches are read again.
class SeriesPortion {
public:
    /// Encoded: as samples they would take ten times the memory.
    using Changes = QMap<RunAndSeries, BatchEncoder>;

    /// `mostBytes`: of encoded changes. One series is taken however much it has.
    explicit SeriesPortion(qint64 mostBytes) : m_most(mostBytes) {}

    /// Whether the changes of this series belong here, as far as is known yet.
    bool wants(const RunAndSeries& key) const;
    /// A change of a series that is wanted. The last series go where there are too many bytes.
    void append(const RunAndSeries& key, const Sample& sample);
    const Changes& changes() const { return m_changes; }
    /// Whether nothing was left out.
    bool isLast() const { return !m_end; }
    /// Lets go of what it holds, and takes from now on what comes behind that.
    void goOn();

private:
    void dropLast();

    const qint64 m_most;
    qint64 m_bytes = 0;
    Changes m_changes;
    std::optional<RunAndSeries> m_begin; ///< The first of this portion; nothing: the first of all.
    std::optional<RunAndSeries> m_end;   ///< The first that was left out.
};

} // namespace plc::recorder

#endif
