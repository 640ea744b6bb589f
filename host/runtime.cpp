#include "host/runtime.h"

#include <utility>

#include "host/project/symbol_list.h"
#include "host/result_text.h"
#include "host/value_codec.h"
#include "host/value_layout.h"

namespace plc {
namespace {

/// ComInfo::writeMode that sends writes to the PLC.
constexpr int kQueueWrites = 2;
/// Status that the driver's callback gives for what it carried out.
constexpr int kReportDone = 1;

/// The driver's callback has no argument for its receiver.
Runtime* receiverOfReports = nullptr;

ComInfo driverSettings(const ProjectSettings& project)
{
    ComInfo settings;
    settings.maxReadBytes = project.maxReadBytes;
    settings.defaultStation = project.defaultStation;
    settings.retryLimit = project.retryLimit;
    settings.multiStation = project.multiStation ? 1 : 0;
    settings.writeMode = kQueueWrites;
    return settings;
}

SessionTimes sessionTimes(const ProjectSettings& project, int cycleTime)
{
    SessionTimes times;
    times.connectTimeout = project.connectTimeout;
    times.replyTimeout = project.replyTimeout;
    times.reconnectDelay = project.reconnectDelay;
    times.reconnectDelayLimit = project.reconnectDelayLimit;
    times.cycleTime = cycleTime;
    return times;
}

TransferOutcome outcomeOfLoss(bool wasSent, const QString& reason)
{
    return wasSent ? TransferOutcome::lost(reason) : TransferOutcome::notSent(reason);
}

} // namespace

Runtime::Runtime(const DriverFunctions& driver, const Project& project, int cycleTime,
                 RuntimeListener* listener)
    : m_driver(driver),
      m_listener(listener),
      m_settings(driverSettings(project.settings)),
      m_staleAfter(project.settings.staleAfter),
      m_isReadOnly(project.settings.readOnly),
      m_symbols(symbolList(project)),
      m_points(project, driver),
      m_session(driver, &m_settings, sessionTimes(project.settings, cycleTime), this)
{
    receiverOfReports = this;
    m_driver.setComInfo(&m_settings);
    m_driver.registCallBackFuncIntf(&Runtime::noteReport, nullptr);
    m_driver.passVarName2(&m_symbols);
}

Runtime::~Runtime()
{
    m_driver.registCallBackFuncIntf(nullptr, nullptr);
    m_driver.setComInfo(nullptr);
    receiverOfReports = nullptr;
}

void Runtime::readCyclically(const QVector<DataPoint>& points, qint64 now)
{
    QList<HostVarItem> items;
    for (const DataPoint& point : points)
        items.append(cyclicItem(point));
    m_session.setCyclicEntries(m_driver.reCreatReadVarList(&items));
    m_values = ValueTable(points, m_staleAfter, now,
                          [this](const DataPoint& point) { return fetch(point); });
}

void Runtime::write(const DataPoint& point, const QVector<Value>& values, qint64 now,
                    WriteSettled settled)
{
    Write write;
    write.tag = ++m_lastTag;
    write.point = point;
    write.buffer = encodeValues(point, values);
    write.pieces = writePieces(point, write.buffer.wireBytes);
    write.settled = std::move(settled);
    const QString reason =
        m_isReadOnly ? readOnlyText() : obstacle(point.station, int(write.pieces.size()));
    if (!reason.isEmpty()) {
        settle({write}, TransferOutcome::notSent(reason));
        return;
    }
    m_writes.add(write);
    m_session.wake(now);
}

void Runtime::readOnce(const DataPoint& point, qint64 now, ReadSettled settled)
{
    OneShotRead read;
    read.tag = ++m_lastTag;
    read.point = point;
    read.pieces = oneShotPieces(point, m_settings.maxReadBytes);
    read.settled = std::move(settled);
    const QString reason = obstacle(point.station, int(read.pieces.size()));
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
    if (on) {
        m_stationsOff.remove(station);
        m_driver.enCommStation(station, 1);
        m_session.wake(now);
        return;
    }
    const TransferOutcome outcome =
        TransferOutcome::notSent(QStringLiteral("station %1 is switched off").arg(station));
    settle(m_writes.takeWaiting(station), outcome);
    settle(m_reads.takeWaiting(station), outcome);
    if (!m_stationsOff.contains(station))
        m_stationsGoingOff.insert(station);
    switchOffWhereIdle();
}

/// Writes and one-shot reads of a station that is off are dropped by the driver without a word, so
/// it goes off when none is left.
void Runtime::switchOffWhereIdle()
{
    const QSet<int> stations = m_stationsGoingOff;
    for (int station : stations) {
        if (m_writes.hasUnderWay(station) || m_reads.hasUnderWay(station))
            continue;
        m_driver.enCommStation(station, 0);
        m_stationsGoingOff.remove(station);
        m_stationsOff.insert(station);
    }
}

/// Why a transfer of so many pieces cannot even be queued; empty if it can.
QString Runtime::obstacle(int station, int pieces) const
{
    if (!m_linkDownReason.isEmpty())
        return QStringLiteral("the link is down: %1").arg(m_linkDownReason);
    if (m_stationsOff.contains(station) || m_stationsGoingOff.contains(station))
        return QStringLiteral("station %1 is switched off").arg(station);
    if (pieces > kDriverListLimit) {
        return QStringLiteral(
                   "it takes %1 entries and the driver queues %2 at most; move fewer "
                   "elements at a time")
            .arg(pieces)
            .arg(kDriverListLimit);
    }
    return QString();
}

bool Runtime::prepareRequest()
{
    switchOffWhereIdle();
    m_writes.handOver(m_driver);
    const TransferOutcome refused = TransferOutcome::notSent(
        QStringLiteral("the driver does not take it; read fewer values at a time"));
    // Whoever is told of a refused read may queue another one.
    for (;;) {
        const QVector<OneShotRead> reads = m_reads.handOver(m_driver, m_settings.localDeviceNo);
        if (reads.isEmpty())
            break;
        settle(reads, refused);
    }
    return m_writes.hasUnderWay() || m_reads.hasUnderWay();
}

void Runtime::requestSent(const SentRequest& request)
{
    ++m_counters.requests;
    if (request.content.service == Service::Write)
        m_writes.requestSent(request.content.entries);
    else if (request.category == kOneShotCategory && request.content.service == Service::Read)
        m_reads.requestSent(request.content.entries);
    m_listener->requestSent(request);
}

void Runtime::requestAnswered(const SentRequest& request, const Answer& answer,
                              const QByteArray& reply, qint64 now)
{
    const bool isAccepted = answer.kind == Answer::Accepted;
    ++(isAccepted ? m_counters.accepted : m_counters.refused);
    m_requestRate.count(now);
    m_listener->requestAnswered(request, answer, reply);
    if (isAccepted && request.content.service == Service::Read)
        m_values.replyAccepted(request.content.entries, now);
    if (isAccepted || answer.kind == Answer::Abandoned) {
        settleRequest(request, answer);
        settleReports(answer);
    }
    m_listener->requestSettled();
}

void Runtime::settleRequest(const SentRequest& request, const Answer& answer)
{
    const bool isAccepted = answer.kind == Answer::Accepted;
    const TransferOutcome outcome = transferOutcome(answer);
    if (request.content.service == Service::Write) {
        settle(isAccepted ? m_writes.requestAccepted() : m_writes.requestAbandoned(), outcome);
    } else if (request.category == kOneShotCategory && request.content.service == Service::Read) {
        settle(isAccepted ? m_reads.requestAccepted() : m_reads.requestAbandoned(), outcome);
    }
}

/// The driver's own reports settle what the frames have not: a login that is abandoned takes the
/// head of the batch with it that it was to precede.
void Runtime::settleReports(const Answer& answer)
{
    const QVector<Report> reports = std::exchange(m_reports, {});
    for (const Report& report : reports) {
        TransferOutcome outcome = transferOutcome(answer);
        outcome.kind =
            report.status == kReportDone ? TransferOutcome::Done : TransferOutcome::Refused;
        if (report.category == kWriteCategory)
            settle(m_writes.take(report.tag), outcome);
        else if (report.category == kOneShotCategory)
            settle(m_reads.take(report.tag), outcome);
    }
}

void Runtime::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    if (state == LinkState::Up)
        m_linkDownReason.clear();
    if (state == LinkState::Down) {
        if (retryDelay >= 0)
            ++m_counters.linkLosses;
        m_linkDownReason = reason;
        m_reports.clear();
    }
    m_listener->linkChanged(state, reason, retryDelay);
    if (state != LinkState::Down)
        return;
    for (const Write& write : m_writes.takeAll())
        settle({write}, outcomeOfLoss(write.wasSent, reason));
    for (const OneShotRead& read : m_reads.takeAll())
        settle({read}, outcomeOfLoss(read.wasSent, reason));
    switchOffWhereIdle();
}

void Runtime::noteReport(int, int category, int tag, int status)
{
    receiverOfReports->m_reports.append({category, tag, status});
}

void Runtime::settle(const QVector<Write>& writes, const TransferOutcome& outcome) const
{
    for (const Write& write : writes)
        write.settled(outcome);
}

void Runtime::settle(const QVector<OneShotRead>& reads, const TransferOutcome& outcome) const
{
    for (const OneShotRead& read : reads)
        read.settled(outcome, outcome.isDone() ? fetch(read.point) : QByteArray());
}

QByteArray Runtime::fetch(const DataPoint& point) const
{
    QByteArray bytes;
    m_driver.getRegisterData(point.label, 0, 0, 0, &bytes, readCount(point));
    return bytes;
}

} // namespace plc
