#ifndef PLC_HOST_POINTS_FRESHNESS_H
#define PLC_HOST_POINTS_FRESHNESS_H

#include <QtCore/QVector>

#include "values/export.h"

namespace plc::host {

/// When each byte of a value was last read. A value that two requests share is as old as the older
/// of them.
class PLC_HOST_EXPORT Freshness {
public:
    static constexpr qint64 kNever = -1;

    /// A value of this many bytes, none of which was read yet.
    explicit Freshness(quint32 size) : m_runs{{0, size, kNever}} {}

    /// The bytes from `start` up to `end` were read at time `now`. Returns whether any of them
    /// belongs to the value.
    bool cover(qint64 start, qint64 end, qint64 now);
    /// Time of the byte that was read longest ago, or kNever.
    qint64 oldest() const;

private:
    struct Run {
        quint32 start;
        quint32 end;
        qint64 time;
    };

    static void append(QVector<Run>* runs, quint32 start, quint32 end, qint64 time);

    QVector<Run> m_runs; ///< Ascending, without gaps.
};

} // namespace plc::host

#endif
