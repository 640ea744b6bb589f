#ifndef PLC_PANEL_API_WRITE_DESK_H
#define PLC_PANEL_API_WRITE_DESK_H

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "panel/access/audit_writer.h"
#include "panel/model/write_outcome.h"
#include "panel/plants/plants.h"

namespace plc::panel {

/// What a client wants to be written.
struct WriteRequest {
    QString id; ///< Of the client; no other write has it.
    QString plc;
    QString label;
    QVector<values::Value> values; ///< As the client gave them.
    bool isList = false;
    bool areExact = false; ///< The values are of the type already.
    QString seenText;      ///< JSON of the value that the user saw, as auditText(); null: not told.
    QString user;
    QString address;
};

/// A write, and how it ended.
struct WriteRecord {
    WriteRequest request;
    QByteArray value;       ///< JSON, as it was sent.
    QByteArray old;         ///< JSON; empty: not known.
    bool isSettled = false; ///< Its outcome is known and went to the audit.
    WriteOutcome outcome;
};

/// Carries out writes, and keeps how they ended.
///
/// 1. An id is carried out once. Who asks again gets the outcome of the first, or is told that it
/// is
///    not kept any more.
/// 2. Each write has exactly one outcome.
/// 3. What is sent to a PLC is in the audit before; where that fails, nothing is sent. Each
///    outcome goes to it as well, before it is told. Nobody waits for the audit meanwhile.
/// 4. What goes to a PLC does so in the order in which it was taken.
///
/// For the thread of the PLCs.
class WriteDesk : public std::enable_shared_from_this<WriteDesk> {
public:
    struct Limits {
        int kept = 20000;                            ///< Writes whose outcome is kept.
        qint64 keptBytes = qint64(32) * 1024 * 1024; ///< Of those that ended.
        int known = 500000;                          ///< Ids whose outcome is not kept.
    };
    static constexpr int kMostOpen = 100; ///< Of one PLC, with those that wait for the audit.
    static constexpr char kOutcomeIsNotKept[] =
        "there was a write of this id; how it ended is not kept any more";

    /// Has a record kept; calls the function once, behind all that were handed in before and are
    /// kept, perhaps at once.
    using Audit = std::function<void(const AuditRecord&, AuditWriter::Kept)>;
    using Clock = std::function<qint64()>;
    using Settled = std::function<void(const WriteRecord&)>;

    WriteDesk(Plants* plants, Audit audit, Clock time, const Limits& limits);

    enum class Refusal { None, Senseless, NoSuchPlc, OtherContent, NotKept };
    struct Taken {
        Refusal refusal = Refusal::None;
        QString reason;
    };
    /// `settled` is called once, perhaps at once, unless the request is refused.
    Taken take(const WriteRequest& request, Settled settled);
    /// What waits for the audit is not sent any more.
    void stop();

    /// Null: there was none of this id.
    const WriteRecord* find(const QString& id) const;
    /// Whether there was one whose outcome is not kept any more.
    bool isForgotten(const QString& id) const;

    /// How many ended how.
    quint64 count(WriteOutcome::Kind kind) const { return m_counts[kind]; }

private:
    enum class Stage {
        Asked, ///< The audit is to have it.
        Sent,
        Ended, ///< The audit is to have its outcome.
        Told
    };
    struct Kept {
        WriteRecord record; ///< Without the values of the request once it has ended.
        QByteArray content; ///< contentOf() the request.
        Stage stage = Stage::Asked;
        bool isOpen = false; ///< Counted among those of its PLC.
        std::vector<Settled> waiting;
    };
    /// What is to be written where.
    struct Target {
        host::DataPoint point;
        QVector<values::Value> values;
    };

    Taken begin(const WriteRequest& request, Plant* plant, Settled settled);
    void send(const QString& id, const Target& target, const Expected<void>& isAudited);
    QString obstacle(const Plant* plant, const Target& target) const;
    void settle(const QString& id, const WriteOutcome& outcome);
    void tell(const QString& id);
    AuditRecord lineOf(const WriteRecord& record, AuditRecord::Phase phase) const;
    void forgetOld();

    Plants* const m_plants;
    const Audit m_audit;
    const Clock m_time;
    const Limits m_limits;
    QHash<QString, std::shared_ptr<Kept>> m_writes; ///< By their ids.
    std::deque<QString> m_order;                    ///< Of m_writes, the oldest first.
    QSet<quint64> m_forgotten;                      ///< What ids are, of which the outcome went.
    std::deque<quint64> m_forgottenOrder;
    qint64 m_keptBytes = 0;
    QHash<QString, int> m_open; ///< Of each PLC.
    quint64 m_counts[4] = {};
    bool m_isStopping = false;
};

} // namespace plc::panel

#endif
