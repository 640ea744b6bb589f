#ifndef PLC_PANEL_API_WRITE_DESK_H
#define PLC_PANEL_API_WRITE_DESK_H

#include <QtCore/QHash>
#include <QtCore/QString>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "panel/access/audit_chain.h"
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
    QString oldText;       ///< JSON of the value that the user saw; null: not told.
    QString user;
    QString address;
};

/// A write, and how it ended.
struct WriteRecord {
    WriteRequest request;
    QByteArray value; ///< JSON, as it was sent.
    QByteArray old;   ///< JSON; empty: not known.
    bool isSettled = false;
    WriteOutcome outcome;
};

/// Carries out writes, and keeps how they ended.
///
/// 1. An id is carried out once. Who asks again gets the outcome of the first.
/// 2. Each write has exactly one outcome.
/// 3. What is sent to a PLC goes to the audit before; where that fails, nothing is sent. Each
///    outcome goes to it as well.
///
/// For the thread of the PLCs.
class WriteDesk : public std::enable_shared_from_this<WriteDesk> {
public:
    static constexpr int kMostKept = 20000;
    static constexpr int kMostOpen = 100; ///< Of one PLC.

    using Audit = std::function<Expected<void>(const AuditRecord&)>;
    using Clock = std::function<qint64()>;
    using Settled = std::function<void(const WriteRecord&)>;

    WriteDesk(Plants* plants, Audit audit, Clock time);

    enum class Refusal { None, Senseless, NoSuchPlc, OtherContent };
    struct Taken {
        Refusal refusal = Refusal::None;
        QString reason;
    };
    /// `settled` is called once, perhaps at once, unless the request is refused.
    Taken take(const WriteRequest& request, Settled settled);
    /// Null: there was none of this id.
    const WriteRecord* find(const QString& id) const;

    /// How many ended how.
    quint64 count(WriteOutcome::Kind kind) const { return m_counts[kind]; }
    /// Why the last outcome is not in the audit; empty: it is.
    const QString& auditError() const { return m_auditError; }

private:
    struct Kept {
        WriteRecord record;
        std::vector<Settled> waiting;
    };

    Taken begin(const WriteRequest& request, Plant* plant, Settled settled);
    void settle(const QString& id, const WriteOutcome& outcome);
    bool audit(const WriteRecord& record, AuditRecord::Phase phase);
    void forgetOld();

    Plants* const m_plants;
    const Audit m_audit;
    const Clock m_time;
    QHash<QString, std::shared_ptr<Kept>> m_writes; ///< By their ids.
    std::deque<QString> m_order;                    ///< Of m_writes, the oldest first.
    quint64 m_counts[4] = {};
    QString m_auditError;
};

} // namespace plc::panel

#endif
