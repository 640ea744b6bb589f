#ifndef PLC_PANEL_ACCESS_AUDIT_WRITER_H
#define PLC_PANEL_ACCESS_AUDIT_WRITER_H

#include <QtCore/QVector>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "panel/access/audit_file.h"
#include "service/disk_thread.h"

namespace plc::panel {

/// Brings records onto the disk without anybody waiting for that: a thread of its own writes all
/// that wait at once. Who hands one in is told what became of it, in the order in which they were
/// handed in.
///
/// For one thread.
class AuditWriter {
public:
    struct Limits {
        // Records that wait, and their bytes, until no more may be asked for,
        int asked = 2000;
        qint64 askedBytes = qint64(16) * 1024 * 1024;
        // and until there is no room either for what came of it.
        int all = 20000;
        qint64 allBytes = qint64(64) * 1024 * 1024;
    };
    /// Told once of each record: it is on the disk, or why it is not known to be there.
    using Kept = std::function<void(const Expected<void>&)>;

    /// `wake` is called by another thread: deliver() is to be called by this one.
    AuditWriter(std::shared_ptr<AuditMedium> medium, service::DiskThread::Wake wake,
                const Limits& limits);

    /// `kept` is called by deliver() or finish(), and at once where there is no room.
    void append(const AuditRecord& record, Kept kept);
    /// As AuditMedium::reopen(), behind what is being written.
    void reopen(qint64 time, Kept reopened);

    void deliver() { m_disk.deliver(); }
    /// Waits until all records are on the disk, with those that are handed in meanwhile. False:
    /// that takes longer than `patience`.
    bool drain(std::chrono::milliseconds patience) { return m_disk.drain(patience); }
    /// The same; who handed in what takes longer is told so. Behind it no more is taken.
    void finish(std::chrono::milliseconds patience);

    /// Of a medium that was gone on with, once; empty: nothing.
    QString takeFlaw() { return std::exchange(m_flaw, {}); }
    /// Since when the disk has owed an answer, as values::steadyTime() counts; nothing: it owes
    /// none.
    std::optional<qint64> busySince() const { return m_busySince; }

private:
    struct Waiting {
        AuditRecord record;
        Kept kept;
        qint64 bytes = 0;
    };

    QString obstacle(const AuditRecord& record) const;
    void write();
    void takeAppended(const AuditAppended& appended, const QString& flaw);

    const std::shared_ptr<AuditMedium> m_medium;
    const Limits m_limits;
    std::deque<Waiting> m_waiting;
    qint64 m_waitingBytes = 0;
    std::vector<Kept> m_underWay; ///< Of the records that are being written.
    std::vector<Kept> m_reopening;
    std::optional<qint64> m_busySince;
    QString m_flaw;
    bool m_hasEnded = false;
    service::DiskThread m_disk; ///< The last member: it uses the others.
};

} // namespace plc::panel

#endif
