#include "panel/api/write_desk.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDataStream>
#include <QtCore/QtEndian>

#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"
#include "panel/api/json_text.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

constexpr int kLongestId = 64;
constexpr int kLongestLabel = 1000;

/// What tells a write from another one, bit by bit: NaN is the same as itself.
QByteArray contentOf(const WriteRequest& request)
{
    QByteArray content;
    QDataStream stream(&content, QIODevice::WriteOnly);
    stream << request.plc << request.label << request.isList << request.areExact;
    for (const values::Value& value : request.values) {
        stream << quint8(value.index());
        std::visit([&stream](const auto& plain) { stream << plain; }, value);
    }
    return QCryptographicHash::hash(content, QCryptographicHash::Sha256);
}

/// Bytes that an ended write takes, about.
qint64 sizeOf(const WriteRecord& record)
{
    constexpr int kWithoutTexts = 600;
    return kWithoutTexts + record.value.size() + record.old.size() +
           2 * (record.request.label.size() + record.outcome.reason.size());
}

WriteOutcome outcomeOf(const host::DataPoint& point, const host::TransferOutcome& ending,
                       qint64 time)
{
    WriteOutcome outcome;
    outcome.time = time;
    outcome.status = ending.status;
    switch (ending.kind) {
        case host::TransferOutcome::Done:
            outcome.kind = WriteOutcome::Done;
            break;
        case host::TransferOutcome::Refused:
            outcome.kind = WriteOutcome::Refused;
            break;
        case host::TransferOutcome::LinkLost:
            outcome.kind = WriteOutcome::Unknown;
            break;
        case host::TransferOutcome::NotSent:
            outcome.kind = WriteOutcome::NotSent;
            break;
    }
    if (!ending.isDone())
        outcome.reason = host::writeOutcomeText(point, ending);
    return outcome;
}

/// What the PLC is known to have; empty: nothing is.
QByteArray knownValue(const Plant& plant, const host::DataPoint& point)
{
    const int slot = plant.findSlot(point.text);
    QByteArray json;
    if (slot >= 0 && plant.value(slot).quality == Quality::Good)
        appendValue(point, plant.value(slot).bytes, &json);
    return json;
}

/// What is kept of an id for longer than its outcome.
quint64 traceOf(const QString& id)
{
    const QByteArray hash = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Sha256);
    return qFromBigEndian<quint64>(hash.constData());
}

QString textOrNull(const QByteArray& json)
{
    return json.isEmpty() ? QString() : QString::fromUtf8(json);
}

} // namespace

WriteDesk::WriteDesk(Plants* plants, Audit audit, Clock time, const Limits& limits)
    : m_plants(plants), m_audit(std::move(audit)), m_time(std::move(time)), m_limits(limits)
{
}

const WriteRecord* WriteDesk::find(const QString& id) const
{
    const auto found = m_writes.constFind(id);
    return found == m_writes.constEnd() ? nullptr : &(*found)->record;
}

bool WriteDesk::isForgotten(const QString& id) const
{
    return m_forgotten.contains(traceOf(id));
}

WriteDesk::Taken WriteDesk::take(const WriteRequest& request, Settled settled)
{
    if (request.id.isEmpty() || request.id.size() > kLongestId)
        return {Refusal::Senseless,
                QStringLiteral("\"id\": a text of 1 to %1 characters is expected").arg(kLongestId)};
    const auto known = m_writes.find(request.id);
    if (known != m_writes.end()) {
        if ((*known)->content != contentOf(request))
            return {Refusal::OtherContent,
                    QStringLiteral("another write had the id %1").arg(values::quoted(request.id))};
        if ((*known)->record.isSettled)
            settled((*known)->record);
        else
            (*known)->waiting.push_back(std::move(settled));
        return {};
    }
    if (request.label.size() > kLongestLabel)
        return {Refusal::Senseless, QStringLiteral("there is no label this long")};
    if (isForgotten(request.id))
        return {Refusal::NotKept, QString::fromLatin1(kOutcomeIsNotKept)};
    Plant* const plant = m_plants->find(request.plc);
    if (!plant)
        return {Refusal::NoSuchPlc,
                QStringLiteral("there is no PLC %1").arg(values::quoted(request.plc))};
    return begin(request, plant, std::move(settled));
}

WriteDesk::Taken WriteDesk::begin(const WriteRequest& request, Plant* plant, Settled settled)
{
    const Expected<host::DataPoint> point = plant->find(request.label);
    if (!point)
        return {Refusal::Senseless, point.error().text};
    if (!request.areExact && request.isList != (point->elements > 1))
        return {Refusal::Senseless,
                point->elements > 1
                    ? QStringLiteral("a list of %1 values is expected").arg(point->elements)
                    : QStringLiteral("one value is expected, not a list")};
    const Expected<QVector<values::Value>> values =
        request.areExact ? request.values : valuesOfClient(*point, request.values);
    if (!values)
        return {Refusal::Senseless, values.error().text};

    auto kept = std::make_shared<Kept>();
    kept->record.request = request;
    kept->content = contentOf(request);
    kept->record.value = valueText(*point, *values);
    kept->record.old = knownValue(*plant, *point);
    kept->waiting.push_back(std::move(settled));
    m_writes.insert(request.id, kept);
    m_order.push_back(request.id);

    const Target target{*point, *values};
    QString problem = obstacle(plant, target);
    if (problem.isEmpty() && m_open.value(request.plc) >= kMostOpen)
        problem = QStringLiteral("too many writes are under way");
    if (!problem.isEmpty()) {
        settle(request.id, WriteOutcome::notSent(problem, m_time()));
        return {};
    }
    kept->isOpen = true;
    ++m_open[request.plc];
    m_audit(lineOf(kept->record, AuditRecord::Requested),
            [desk = weak_from_this(), id = request.id, target](const Expected<void>& isAudited) {
                if (const std::shared_ptr<WriteDesk> there = desk.lock())
                    there->send(id, target, isAudited);
            });
    return {};
}

/// Why it must not be written; empty: it may be.
QString WriteDesk::obstacle(const Plant* plant, const Target& target) const
{
    if (m_isStopping)
        return QStringLiteral("the program ends");
    if (!plant)
        return QStringLiteral("the PLC is not there any more");
    return plant->writeObstacle(target.point, target.values);
}

/// The disk may have taken long: what was no obstacle then may be one now.
void WriteDesk::send(const QString& id, const Target& target, const Expected<void>& isAudited)
{
    const std::shared_ptr<Kept> kept = m_writes.value(id);
    if (!kept || kept->stage != Stage::Asked)
        return;
    Plant* const plant = m_plants->find(kept->record.request.plc);
    QString problem;
    if (!isAudited)
        problem = QStringLiteral("the audit cannot be written, so nothing is: %1")
                      .arg(isAudited.error().text);
    else
        problem = obstacle(plant, target);
    if (!problem.isEmpty())
        return settle(id, WriteOutcome::notSent(problem, m_time()));
    kept->stage = Stage::Sent;
    // A PLC may end behind the desk, and settles then what is open.
    plant->write(
        target.point, target.values,
        [desk = weak_from_this(), id, point = target.point](const host::TransferOutcome& ending) {
            if (const std::shared_ptr<WriteDesk> there = desk.lock())
                there->settle(id, outcomeOf(point, ending, there->m_time()));
        });
}

void WriteDesk::stop()
{
    m_isStopping = true;
    const std::deque<QString> ids = m_order;
    for (const QString& id : ids) {
        if (m_writes.value(id) && m_writes.value(id)->stage == Stage::Asked)
            settle(id, WriteOutcome::notSent(QStringLiteral("the program ends"), m_time()));
    }
}

/// Who waits for it is told once the audit has it, or cannot have it.
void WriteDesk::settle(const QString& id, const WriteOutcome& outcome)
{
    const std::shared_ptr<Kept> kept = m_writes.value(id);
    if (!kept || kept->stage == Stage::Ended || kept->stage == Stage::Told)
        return;
    kept->stage = Stage::Ended;
    kept->record.outcome = outcome;
    ++m_counts[outcome.kind];
    m_audit(lineOf(kept->record, AuditRecord::Outcome),
            [desk = weak_from_this(), id](const Expected<void>&) {
                if (const std::shared_ptr<WriteDesk> there = desk.lock())
                    there->tell(id);
            });
}

void WriteDesk::tell(const QString& id)
{
    const std::shared_ptr<Kept> kept = m_writes.value(id);
    if (!kept || kept->stage != Stage::Ended)
        return;
    kept->stage = Stage::Told;
    kept->record.isSettled = true;
    if (kept->isOpen)
        --m_open[kept->record.request.plc];
    kept->record.request.values.clear();
    kept->record.request.seenText.clear();
    m_keptBytes += sizeOf(kept->record);
    forgetOld();
    const std::vector<Settled> waiting = std::exchange(kept->waiting, {});
    for (const Settled& settled : waiting)
        settled(kept->record);
}

AuditRecord WriteDesk::lineOf(const WriteRecord& record, AuditRecord::Phase phase) const
{
    AuditRecord line;
    line.time = m_time();
    line.phase = phase;
    line.user = record.request.user;
    line.address = record.request.address;
    line.plc = record.request.plc;
    line.label = record.request.label;
    line.oldValue = textOrNull(record.old);
    line.seenValue = record.request.seenText;
    line.newValue = textOrNull(record.value);
    line.id = record.request.id;
    if (phase == AuditRecord::Outcome) {
        line.outcome = QLatin1String(outcomeWord(record.outcome.kind));
        line.reason = record.outcome.reason;
    }
    return line;
}

/// Writes under way stay.
void WriteDesk::forgetOld()
{
    const auto isTooMuch = [this] {
        return int(m_order.size()) > m_limits.kept || m_keptBytes > m_limits.keptBytes;
    };
    while (isTooMuch() && m_writes.value(m_order.front())->record.isSettled) {
        m_keptBytes -= sizeOf(m_writes.value(m_order.front())->record);
        const quint64 trace = traceOf(m_order.front());
        m_forgotten.insert(trace);
        m_forgottenOrder.push_back(trace);
        m_writes.remove(m_order.front());
        m_order.pop_front();
    }
    while (int(m_forgottenOrder.size()) > m_limits.known) {
        m_forgotten.remove(m_forgottenOrder.front());
        m_forgottenOrder.pop_front();
    }
}

} // namespace plc::panel
