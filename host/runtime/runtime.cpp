#include "host/runtime/runtime.h"

#include <QtCore/QHash>

#include <algorithm>
#include <utility>

#include "host/driver/request_records.h"
#include "host/points/symbol_list.h"
#include "host/points/value_codec.h"
#include "host/points/value_layout.h"
#include "host/transfers/result_text.h"
#include "host/wire/read_limits.h"

namespace plc::host {
namespace {

/// Times that a read is asked for alone, or with others, before its refusal is believed. A PLC that
/// is busy for a moment refuses once.
constexpr int kMostReadRetries = 2;

ComInfo driverSettings(const RuntimeSettings& settings, int hostTag)
{
    ComInfo info;
    info.maxReadBytes = settings.maxReadBytes;
    info.defaultStation = settings.defaultStation;
    info.retryLimit = settings.retryLimit;
    info.multiStation = settings.multiStation ? 1 : 0;
    info.writeMode = PLC_WRITE_MODE_QUEUE;
    info.hostTag = hostTag;
    return info;
}

TransferOutcome outcomeOfLoss(bool wasSent, const QString& reason)
{
    return wasSent ? TransferOutcome::lost(reason) : TransferOutcome::notSent(reason);
}

/// Where the bytes of an entry lie; those of a bit in the word that its number names.
FrameEntry placeOf(FrameEntry entry)
{
    constexpr quint32 kBitsPerWord = 16;
    if (entry.isBit)
        entry.address /= kBitsPerWord;
    return entry;
}

int readRetries(const RuntimeSettings& settings)
{
    return qMin(settings.retryLimit, kMostReadRetries);
}

/// For each point its place in `former`, each once at most; below 0 for one that is not there.
QVector<int> placesOfSame(const QVector<DataPoint>& points, const QVector<DataPoint>& former)
{
    QHash<QString, int> places;
    for (int place = 0; place < int(former.size()); ++place)
        places.insert(former[place].text, place);
    QVector<int> result;
    result.reserve(points.size());
    for (const DataPoint& point : points) {
        const auto found = places.find(point.text);
        const bool isThere = found != places.end() && isSameValue(former[*found], point);
        result.append(isThere ? *found : -1);
        if (isThere)
            places.erase(found);
    }
    return result;
}

/// A read whose reply no acknowledgement of this connection had the size of.
RW_VAR inStepRead(FrameEntry place, const Session& session, const ComInfo& settings)
{
    place.length = 1;
    while (session.hasAcknowledged(readReplySize({place})))
        ++place.length;

    RW_VAR read;
    read.category = kInStepCategory;
    read.deviceNo = settings.localDeviceNo;
    read.station = PLC_ALL_STATIONS;
    read.areaIndex = place.area;
    read.address = int(place.address);
    read.length = int(place.length);
    return read;
}

} // namespace

Runtime::Runtime(DriverClaim driver, const RuntimeSettings& settings,
                 const project::Symbols& symbols, RuntimeListener* listener)
    : m_claim(std::move(driver)),
      m_driver(m_claim.functions()),
      m_listener(listener),
      m_settings(driverSettings(settings, m_reports.hostTag())),
      m_staleAfter(settings.staleAfter),
      m_isReadOnly(settings.readOnly),
      m_symbols(symbolList(symbols)),
      m_points(symbols, settings, m_driver),
      m_reads(kOneShotCategory, m_settings.maxReadBytes, readRetries(settings)),
      m_cyclic(m_driver, m_settings, kProbeCategory, readRetries(settings)),
      m_session(m_driver, &m_settings, settings.times, this)
{
    m_driver.setComInfo(&m_settings);
    m_driver.registCallBackFuncIntf(&ReportRoute::deliver, nullptr);
    m_driver.passVarName2(&m_symbols);
}

Runtime::~Runtime()
{
    // The listener may be ending, too.
    m_listener = &m_nobody;
    // The driver forgets what it has queued, and the next runtime on it finds nothing of this one.
    m_session.stop();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        // What is queued from inside a settling ends at once.
        m_linkDownReason = QStringLiteral("the host has ended");
    }
    settleAll(m_linkDownReason);
    leaveDriver();
}

/// The session has emptied the lists of writes and one-shot reads already.
void Runtime::leaveDriver()
{
    QList<HostVarItem> nothing;
    m_driver.reCreatReadVarList(&nothing);
    m_driver.enCommStation(PLC_ALL_STATIONS, PLC_STATION_ON);
    // A scope cannot be taken away from the driver, but replaced by one that has nothing.
    for (Label_Type_Info& scope : m_symbols)
        scope.typeDef.clear();
    m_driver.passVarName2(&m_symbols);
    m_driver.registCallBackFuncIntf(nullptr, nullptr);
    m_driver.setComInfo(nullptr);
}

RuntimeSnapshot Runtime::snapshot(qint64 now) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    RuntimeSnapshot snapshot{m_linkState, m_linkDownReason, m_cyclicPoints, {}};
    snapshot.values.reserve(m_values.size());
    for (int row = 0; row < m_values.size(); ++row)
        snapshot.values.append(m_values.reading(row, now));
    return snapshot;
}

void Runtime::readCyclically(const QVector<DataPoint>& points, qint64 now)
{
    const QVector<int> formerRows = placesOfSame(points, m_cyclicPoints);
    m_cyclic.start(points, formerRows);
    m_session.setCyclicEntries(m_cyclic.entries());
    ValueTable values(points, m_staleAfter, longestEntry(m_settings.maxReadBytes), now);
    values.takeOver(m_values, formerRows);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cyclicPoints = points;
        m_values = std::move(values);
    }
    renumberNews(formerRows);
    // One that had nothing to read waits for nothing.
    m_session.wake(now);
}

/// The listener may have replaced the values while there was more to tell of the former ones.
void Runtime::renumberNews(const QVector<int>& formerRows)
{
    for (RowNews& news : m_news)
        news.row = int(formerRows.indexOf(news.row));
    m_news.erase(std::remove_if(m_news.begin(), m_news.end(),
                                [](const RowNews& news) { return news.row < 0; }),
                 m_news.end());
}

void Runtime::tellNews()
{
    while (!m_news.isEmpty()) {
        const RowNews news = m_news.takeFirst();
        if (news.isGiven)
            m_listener->valueGivenAgain(news.row);
        else
            m_listener->valueRefused(news.row);
    }
}

void Runtime::write(const DataPoint& point, const QVector<values::Value>& values, qint64 now,
                    WriteSettled settled)
{
    Write write;
    write.tag = ++m_lastTag;
    write.settled = std::move(settled);
    ++m_openWrites;
    const QString reason = prepareWrite(point, values, &write);
    if (!reason.isEmpty()) {
        settle(write, TransferOutcome::notSent(reason));
        return;
    }
    m_writes.add(std::move(write));
    m_session.wake(now);
}

/// Empty, or why the write cannot even be queued. The driver writes what it is given to where the
/// label leads, whatever the data point says; here alone it is seen to that both are the same.
QString Runtime::prepareWrite(const DataPoint& point, const QVector<values::Value>& values,
                              Write* write)
{
    if (m_isReadOnly)
        return readOnlyText();
    QString reason = obstacle(point);
    if (!reason.isEmpty())
        return reason;
    Expected<WriteBuffer> buffer = encodeValues(point, values);
    if (!buffer)
        return buffer.error().text;
    write->label = point.label;
    write->station = point.station;
    write->elementSize = qMax(1, point.type->size);
    write->buffer = std::move(*buffer);
    write->pieces = WritePieces(point, write->buffer.wireBytes);
    if (write->pieces.size() <= PLC_LIST_LIMIT)
        return QString();
    return QStringLiteral(
               "it takes %1 entries and the driver queues %2 at most; write fewer elements at a "
               "time")
        .arg(write->pieces.size())
        .arg(PLC_LIST_LIMIT);
}

void Runtime::readOnce(const DataPoint& point, qint64 now, ReadSettled settled)
{
    OneShotRead read;
    read.point = point;
    if (settled)
        read.settled = std::move(settled);
    const QString reason = obstacle(point);
    if (!reason.isEmpty()) {
        settle({read}, TransferOutcome::notSent(reason));
        return;
    }
    m_reads.add(read);
    m_session.wake(now);
}

void Runtime::switchStation(int station, bool on, qint64 now)
{
    m_stationsGoingOff.remove(station);
    m_cyclic.switchStation(station, on);
    m_session.setCyclicEntries(m_cyclic.entries());
    if (on) {
        m_stationsOff.remove(station);
        m_driver.enCommStation(station, PLC_STATION_ON);
        m_session.wake(now);
        return;
    }
    // What is queued from inside a settling ends at once.
    if (!m_stationsOff.contains(station))
        m_stationsGoingOff.insert(station);
    const QString reason = QStringLiteral("station %1 is switched off").arg(station);
    settle(m_writes.takeWaiting(station), TransferOutcome::notSent(reason));
    // Some may have been asked for, and refused together with others.
    for (const OneShotRead& read : m_reads.takeWaiting(station))
        settle({read}, outcomeOfLoss(read.wasSent, reason));
    switchOffWhereIdle();
}

/// Writes and one-shot reads of a station that is off are dropped by the driver without a word, so
/// it goes off when none is left.
void Runtime::switchOffWhereIdle()
{
    const QSet<int> stations = m_stationsGoingOff;
    for (int station : stations) {
        if (m_writes.hasUnderWay(station) || m_reads.hasUnderWay(station) ||
            m_cyclic.probes().hasUnderWay(station))
            continue;
        m_driver.enCommStation(station, PLC_STATION_OFF);
        m_stationsGoingOff.remove(station);
        m_stationsOff.insert(station);
    }
}

/// Why a transfer cannot even be queued; empty if it can.
QString Runtime::obstacle(const DataPoint& point)
{
    if (!m_linkDownReason.isEmpty())
        return QStringLiteral("the link is down: %1").arg(m_linkDownReason);
    if (isStationOff(point.station))
        return QStringLiteral("station %1 is switched off").arg(point.station);
    const Expected<void> checked = m_checkedPoints.check(m_points, point);
    return checked ? QString() : checked.error().text;
}

bool Runtime::prepareRequest(qint64 now, bool passIsDue)
{
    switchOffWhereIdle();
    handOverWrites();
    // What is asked for now might get the reply that is still due to the doubted write.
    if (m_isInDoubt) {
        askWhetherInStep(passIsDue);
        return true;
    }
    if (!m_writes.hasUnderWay() && !m_asksWhetherInStep)
        handOverReads(now, passIsDue);
    return m_writes.hasUnderWay() || m_asksWhetherInStep || m_reads.hasUnderWay() ||
           m_cyclic.probes().hasUnderWay();
}

void Runtime::handOverWrites()
{
    // The driver sends writes first. A read that it had besides would go out together with the one
    // that shows whether replies fit, and its refusal would be taken for that of the write. It has
    // one that waits for a login.
    if (m_reads.hasUnderWay() || m_cyclic.probes().hasUnderWay())
        return;
    if (m_writesInARow >= PLC_REQUESTS_IN_A_ROW && hasWaitingReads())
        return;
    if (m_isInDoubt)
        m_writes.goOn(m_driver, m_lastTagBeforeDoubt);
    else
        m_writes.handOver(m_driver);
}

bool Runtime::hasWaitingReads() const
{
    return !m_reads.isEmpty() || !m_cyclic.probes().isEmpty();
}

/// The driver has the entries of one request at a time: of the host's reads, or of a probe. A probe
/// never goes before a cyclic read that is due and waited for another probe.
void Runtime::handOverReads(qint64 now, bool passIsDue)
{
    const bool mayProbe = !passIsDue || !m_lastWasProbe || m_cyclic.entries() == 0;
    if (!m_cyclic.probes().hasUnderWay())
        m_reads.handOver(m_driver, m_settings.localDeviceNo);
    if (!m_reads.hasUnderWay() && mayProbe)
        m_cyclic.probe(now);
}

/// Has something read whose reply no acknowledgement can be mistaken for. A cyclic read that goes
/// out anyway does as well.
void Runtime::askWhetherInStep(bool passIsDue)
{
    if (passIsDue && m_cyclic.entries() > 0 && m_stationsOff.isEmpty() &&
        !m_cyclicReadsProveNothing)
        return;
    if (std::exchange(m_asksWhetherInStep, true))
        return;
    RW_VAR read = inStepRead(m_readable, m_session, m_settings);
    m_driver.addListOnceReadVar(&read, PLC_APPEND_ALWAYS);
}

void Runtime::requestSent(const SentRequest& request)
{
    ++m_counters.requests;
    const int entries = int(request.content.entries.size());
    if (request.content.service == Service::Write) {
        m_writesInARow = qMin(m_writesInARow + 1, PLC_REQUESTS_IN_A_ROW);
        m_writes.requestSent(request.content.entries);
        if (m_readable.length == 0)
            m_readable = placeOf(request.content.entries.first());
    } else if (request.content.service == Service::Read && request.category == kOneShotCategory) {
        m_writesInARow = 0;
        m_reads.requestSent(entries);
    } else if (request.content.service == Service::Read && request.category == kProbeCategory) {
        m_writesInARow = 0;
        m_cyclic.probeSent(entries);
    } else if (request.content.service == Service::Read && request.category == kCyclicCategory) {
        m_cyclic.requestSent(request.content.entries);
    }
    if (request.content.service == Service::Read)
        m_lastWasProbe = request.category == kProbeCategory;
    m_listener->requestSent(request);
}

void Runtime::requestAnswered(const SentRequest& request, const Answer& answer,
                              const QByteArray& reply, qint64 now)
{
    ++(answer.kind == Answer::Accepted ? m_counters.accepted : m_counters.refused);
    m_requestRate.count(now);
    m_listener->requestAnswered(request, answer, reply);
    if (answer.isInStep)
        settleDoubted();
    if (answer.mayBeCopy && !std::exchange(m_isInDoubt, true))
        m_lastTagBeforeDoubt = m_lastTag;
    if (request.content.service == Service::Read)
        settleReadRequest(request, answer, reply, now);
    else if (request.content.service == Service::Write)
        settleWriteRequest(answer);
    if (answer.kind == Answer::Accepted || answer.kind == Answer::Abandoned)
        settleReports(answer);
    m_session.setCyclicEntries(m_cyclic.entries());
    m_listener->requestSettled();
}

void Runtime::settleWriteRequest(const Answer& answer)
{
    const TransferOutcome outcome = writeOutcome(answer);
    std::vector<Write> settled;
    if (answer.kind == Answer::Accepted)
        settled = m_writes.requestAccepted();
    else if (answer.kind == Answer::Abandoned)
        settled = m_writes.requestAbandoned();
    if (m_isInDoubt) {
        m_doubted.push_back({std::move(settled), outcome});
        return;
    }
    m_writes.confirmAccepted();
    settle(settled, outcome);
}

/// The driver turns down each reply to a repeated request that is not as long as the first one,
/// also one in which the PLC says that it has carried the request out.
TransferOutcome Runtime::writeOutcome(const Answer& answer)
{
    const bool wasCalledGood = m_wasGoodTurnedDown || answer.status == 0;
    m_wasGoodTurnedDown = wasCalledGood && answer.kind == Answer::Retried;
    if (!wasCalledGood || answer.kind != Answer::Abandoned)
        return transferOutcome(answer);
    return TransferOutcome::lost(QStringLiteral(
        "the PLC refused it first and then called it good, in a reply of another size"));
}

void Runtime::settleReadRequest(const SentRequest& request, const Answer& answer,
                                const QByteArray& reply, qint64 now)
{
    const QVector<FrameEntry>& entries = request.content.entries;
    if (answer.kind != Answer::Accepted && answer.kind != Answer::Refused)
        return;
    const bool isAccepted = answer.kind == Answer::Accepted;
    const QVector<QByteArray> blocks =
        isAccepted ? readReplyBlocks(reply, entries) : QVector<QByteArray>();
    // Of the read that shows whether replies fit, only the size counts.
    if (isAccepted && request.category != kInStepCategory)
        showValues(request, blocks, now);
    // It may have gone along with another one-shot read.
    if (request.category != kCyclicCategory)
        m_asksWhetherInStep = false;
    if (request.category == kOneShotCategory) {
        const std::vector<SettledRead> settled =
            isAccepted ? m_reads.requestAccepted(blocks, request.sentAt)
                       : m_reads.requestRefused(int(entries.size()), answer.isLoginDoubted);
        for (const SettledRead& read : settled)
            read.read.settled(transferOutcome(answer), read.bytes);
    } else {
        settleCyclicRequest(request, answer, blocks, now);
    }
}

void Runtime::settleCyclicRequest(const SentRequest& request, const Answer& answer,
                                  const QVector<QByteArray>& blocks, qint64 now)
{
    const QVector<FrameEntry>& entries = request.content.entries;
    const bool isAccepted = answer.kind == Answer::Accepted;
    if (request.category == kCyclicCategory) {
        m_cyclicReadsProveNothing = m_isInDoubt;
        if (!isAccepted)
            m_cyclic.requestRefused(entries, answer.isLoginDoubted);
    } else if (request.category == kProbeCategory && isAccepted) {
        m_cyclic.probeAccepted(blocks, request.sentAt);
    } else if (request.category == kProbeCategory) {
        for (int row : m_cyclic.probeRefused(int(entries.size()), now, answer.isLoginDoubted)) {
            const bool wasKnown = m_values.isRefused(row);
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_values.refused(row, answer.status);
            }
            if (!wasKnown)
                m_news.append({row, false});
        }
        tellNews();
    }
}

void Runtime::showValues(const SentRequest& request, const QVector<QByteArray>& blocks, qint64 now)
{
    if (!request.content.entries.isEmpty())
        m_readable = request.content.entries.first();
    QVector<int> given;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        given = m_values.replyAccepted(request.content.entries, blocks, request.sentAt, now);
    }
    for (int row : std::as_const(given))
        m_news.append({row, true});
    tellNews();
}

/// The replies fit their requests: each write got its own.
void Runtime::settleDoubted()
{
    m_isInDoubt = false;
    m_cyclicReadsProveNothing = false;
    m_writes.confirmAccepted();
    const std::vector<DoubtedWrites> doubted = std::exchange(m_doubted, {});
    for (const DoubtedWrites& settled : doubted)
        settle(settled.writes, settled.outcome);
}

/// The driver's own reports settle what the frames have not: a login that is abandoned takes the
/// head of the batch with it that it was to precede. Reads are settled by the frames alone: of a
/// refused one the driver only knows that it is over.
void Runtime::settleReports(const Answer& answer)
{
    for (const DriverReport& report : m_reports.take()) {
        TransferOutcome outcome = transferOutcome(answer);
        outcome.kind =
            report.status == PLC_STATUS_DONE ? TransferOutcome::Done : TransferOutcome::Refused;
        if (report.category == kWriteCategory)
            settle(m_writes.takeReported(report.tag), outcome);
    }
}

void Runtime::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_linkState = state;
        if (state == LinkState::Up)
            m_linkDownReason.clear();
        else if (state == LinkState::Down)
            m_linkDownReason = reason;
    }
    if (state == LinkState::Up)
        m_cyclic.linkUp();
    if (state == LinkState::Down) {
        if (retryDelay >= 0)
            ++m_counters.linkLosses;
        m_reports.take();
    }
    m_listener->linkChanged(state, reason, retryDelay);
    if (state == LinkState::Down)
        giveUpTransfers(reason);
}

void Runtime::giveUpTransfers(const QString& reason)
{
    m_isInDoubt = false;
    m_wasGoodTurnedDown = false;
    m_asksWhetherInStep = false;
    m_cyclicReadsProveNothing = false;
    m_readable = FrameEntry();
    settleAll(reason);
    m_cyclic.linkDown();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_values.linkLost();
    }
    m_session.setCyclicEntries(m_cyclic.entries());
    switchOffWhereIdle();
}

void Runtime::settleAll(const QString& reason)
{
    const std::vector<DoubtedWrites> doubted = std::exchange(m_doubted, {});
    for (const DoubtedWrites& unsure : doubted)
        settle(unsure.writes, TransferOutcome::lost(reason));
    for (const Write& write : m_writes.takeAll())
        settle(write, outcomeOfLoss(write.wasSent, reason));
    for (const OneShotRead& read : m_reads.takeAll())
        settle({read}, outcomeOfLoss(read.wasSent, reason));
}

void Runtime::settle(const Write& write, const TransferOutcome& outcome)
{
    --m_openWrites;
    if (!write.settled)
        return;
    if (outcome.isDone()) {
        write.settled(outcome);
        return;
    }
    const bool isSure = outcome.kind != TransferOutcome::LinkLost;
    TransferOutcome itsOutcome = outcome;
    itsOutcome.taken = (isSure ? write.accepted : write.confirmed) / write.elementSize;
    write.settled(itsOutcome);
}

void Runtime::settle(const std::vector<Write>& writes, const TransferOutcome& outcome)
{
    for (const Write& write : writes)
        settle(write, outcome);
}

void Runtime::settle(const std::vector<OneShotRead>& reads, const TransferOutcome& outcome)
{
    for (const OneShotRead& read : reads)
        read.settled(outcome, QByteArray());
}

} // namespace plc::host
