#ifndef PLC_RECORDER_CHANGE_QUEUE_H
#define PLC_RECORDER_CHANGE_QUEUE_H

#include <QtCore/QHash>
#include <QtCore/QVector>

#include <deque>
#include <optional>

#include "recorder/change.h"

namespace plc::recorder {

/// How much may wait for a disk that is slow.
struct QueueLimits {
    qint64 changes = 1000000;
    qint64 bytes = qint64(64) * 1024 * 1024; ///< Of values, and of what the queue itself needs.
};

/// Changes that wait to be recorded, with a limit. What it has no room for is dropped, until half
/// of the room is free again; of each series that was concerned the last change is kept, and comes
/// behind the loss.
class ChangeQueue {
public:
    explicit ChangeQueue(const QueueLimits& limits) : m_limits(limits) {}

    /// What is given to the recorder at once.
    struct Portion {
        QVector<Change> changes;
        qint64 now = 0;
        qint64 steady = 0; ///< By the clock that nobody sets.
        /// Between the portion before and this one changes were dropped; these, of one a series,
        /// are what has come of them.
        bool isBehindLoss = false;
        QVector<Change> lost;
        bool isBehindPause = false; ///< See interrupt().

        /// A new run begins with it, at its time.
        bool beginsAnew() const { return isBehindLoss || isBehindPause; }
    };

    void add(const QVector<Change>& changes, qint64 now, qint64 steady);
    /// Nothing is known from what was added last to what is added next.
    void interrupt() { m_isInterrupted = true; }
    /// The oldest portion, with those behind it that can go along; nothing when it is empty.
    std::optional<Portion> take();

    qint64 waiting() const { return m_changes; }
    /// Whether nothing waits, not even a time.
    bool isEmpty() const { return m_portions.empty(); }
    /// Changes that were dropped, in all.
    qint64 dropped() const { return m_dropped; }
    /// Whether anything was dropped that no portion tells of yet.
    bool hasUntoldLoss() const { return m_isDropping; }

private:
    static qint64 bytesOf(const QVector<Change>& changes);
    bool isFullFor(const QVector<Change>& changes) const;
    bool isHalfEmpty() const;
    void drop(const QVector<Change>& changes);
    bool goesAlong(const Portion& first) const;

    const QueueLimits m_limits;
    std::deque<Portion> m_portions;
    qint64 m_changes = 0;
    qint64 m_bytes = 0;
    bool m_isDropping = false;
    bool m_isInterrupted = false;
    QHash<int, Sample> m_lost; ///< The last dropped change of each series.
    qint64 m_dropped = 0;
};

} // namespace plc::recorder

#endif
