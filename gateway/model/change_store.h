#ifndef PLC_GATEWAY_MODEL_CHANGE_STORE_H
#define PLC_GATEWAY_MODEL_CHANGE_STORE_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include "gateway/model/metric.h"
#include "values/expected.h"

namespace plc::gateway {

/// A change that waits for a broker. Names instead of places: when it is sent, the configuration
/// may be another one.
struct StoredChange {
    qint64 number = 0; ///< Its place in the store; given by the store, never used again.
    QString device;
    QString metric;
    QString type; ///< See typeText(); the bytes mean nothing to a metric of another type.
    qint64 time = 0;
    Quality quality = Quality::Good;
    bool isQualityNew = false;
    QByteArray bytes;
};

/// Bytes on disk below which no store is made.
constexpr qint64 kSmallestStore = qint64(1024) * 1024;
/// All of it is read when it is opened.
constexpr qint64 kLargestStore = qint64(10) * 1024 * 1024 * 1024;

/// Changes that no consumer has, in the order in which they were found, beyond the end of the
/// process.
class ChangeStore {
public:
    virtual ~ChangeStore() = default;

    /// All or none. Where there is no room, the oldest go first, and are counted as dropped. An
    /// error means that these changes are not kept: the disk is full or does not work.
    virtual Expected<void> append(const QVector<StoredChange>& changes) = 0;
    /// The oldest behind `number`, `count` of them at most.
    virtual QVector<StoredChange> oldest(qint64 behind, int count) = 0;
    /// These have reached the broker.
    virtual void removeUpTo(qint64 number) = 0;
    /// So have these, from the first to the last, while older ones may wait.
    virtual void removeRange(qint64 first, qint64 last) = 0;
    /// The number of the newest that was ever appended; 0: none.
    virtual qint64 last() const = 0;
    virtual quint64 size() const = 0;
    /// Counts changes that are lost for another reason than a full store.
    virtual void countDropped(quint64 changes) = 0;
    /// Since the store was made; across restarts as far as the disk allows.
    virtual quint64 dropped() const = 0;

    /// The number behind the last one taken, 0 to 255 in a circle, also across restarts: what tells
    /// the death of one connection from that of another.
    virtual int takeSessionNumber() = 0;
};

} // namespace plc::gateway

#endif
