#include "panel/access/audit_writer.h"

#include <algorithm>

#include "values/steady_time.h"

namespace plc::panel {
namespace {

/// Records that are written at once, and their bytes.
constexpr int kMostAtOnce = 500;
constexpr qint64 kMostBytesAtOnce = qint64(1024) * 1024;

qint64 sizeOf(const AuditRecord& record)
{
    constexpr qint64 kWithoutTexts = 500;
    qint64 letters = 0;
    for (const QString* text : {&record.action, &record.user, &record.address, &record.plc,
                                &record.label, &record.oldValue, &record.seenValue,
                                &record.newValue, &record.id, &record.outcome, &record.reason})
        letters += text->size();
    return kWithoutTexts + qint64(sizeof(QChar)) * letters;
}

} // namespace

AuditWriter::AuditWriter(std::shared_ptr<AuditMedium> medium, service::DiskThread::Wake wake,
                         const Limits& limits)
    : m_medium(std::move(medium)), m_limits(limits), m_disk(std::move(wake))
{
}

/// Why a record is not taken; empty: it is.
QString AuditWriter::obstacle(const AuditRecord& record) const
{
    if (m_hasEnded)
        return QStringLiteral("the program ends");
    const bool isAsked = record.phase == AuditRecord::Requested;
    const std::size_t waiting = m_waiting.size() + m_underWay.size();
    if (waiting >= std::size_t(isAsked ? m_limits.asked : m_limits.all) ||
        m_waitingBytes >= (isAsked ? m_limits.askedBytes : m_limits.allBytes))
        return QStringLiteral("%1 records wait for the disk already").arg(waiting);
    return {};
}

void AuditWriter::append(const AuditRecord& record, Kept kept)
{
    if (const QString problem = obstacle(record); !problem.isEmpty())
        return kept(Error{problem});
    const qint64 bytes = sizeOf(record);
    m_waitingBytes += bytes;
    m_waiting.push_back({record, std::move(kept), bytes});
    if (m_underWay.empty())
        write();
}

void AuditWriter::write()
{
    if (m_waiting.empty()) {
        m_busySince.reset();
        return;
    }
    m_busySince = values::steadyTime();
    QVector<AuditRecord> records;
    qint64 bytes = 0;
    while (!m_waiting.empty() && int(records.size()) < kMostAtOnce && bytes < kMostBytesAtOnce) {
        Waiting& next = m_waiting.front();
        bytes += next.bytes;
        records.append(std::move(next.record));
        m_underWay.push_back(std::move(next.kept));
        m_waiting.pop_front();
    }
    m_waitingBytes -= bytes;
    m_disk.submit([this, medium = m_medium, records] {
        const AuditAppended appended = medium->append(records);
        return [this, appended, flaw = medium->takeFlaw()] { takeAppended(appended, flaw); };
    });
}

/// What waits is on its way while those are told who handed in what was written.
void AuditWriter::takeAppended(const AuditAppended& appended, const QString& flaw)
{
    if (!flaw.isEmpty())
        m_flaw = flaw;
    const std::vector<Kept> told = std::exchange(m_underWay, {});
    write();
    for (std::size_t i = 0; i < told.size(); ++i)
        told[i](int(i) < appended.kept ? Expected<void>() : Expected<void>(appended.failure));
}

void AuditWriter::reopen(qint64 time, Kept reopened)
{
    if (m_hasEnded)
        return reopened(Error{QStringLiteral("the program ends")});
    m_reopening.push_back(std::move(reopened));
    m_disk.submit([this, medium = m_medium, time] {
        const Expected<void> outcome = medium->reopen(time);
        return [this, outcome, flaw = medium->takeFlaw()] {
            if (!flaw.isEmpty())
                m_flaw = flaw;
            const Kept told = std::move(m_reopening.front());
            m_reopening.erase(m_reopening.begin());
            told(outcome);
        };
    });
}

void AuditWriter::finish(std::chrono::milliseconds patience)
{
    m_disk.finish(patience);
    m_hasEnded = true;
    std::vector<Kept> untold = std::exchange(m_reopening, {});
    std::move(m_underWay.begin(), m_underWay.end(), std::back_inserter(untold));
    m_underWay.clear();
    for (Waiting& waiting : m_waiting)
        untold.push_back(std::move(waiting.kept));
    m_waiting.clear();
    for (const Kept& kept : untold)
        kept(Error{QStringLiteral("the disk did not answer before the program ended")});
}

} // namespace plc::panel
