#include "host/runtime/cyclic_reads.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace plc::host {
namespace {

/// As many good values wait to be listed before the list is laid out anew during a search.
constexpr int kMostWaitingGood = 64;

/// In place of the row of a value that is not read any more.
constexpr int kGone = -1;

/// Those that are still there.
QVector<int> renumbered(const QVector<int>& former, const QVector<int>& rows)
{
    QVector<int> present;
    for (int row : former) {
        if (rows[row] != kGone)
            present.append(rows[row]);
    }
    return present;
}

bool isBehind(const ByteRange& a, const ByteRange& b)
{
    return std::tie(a.area, a.start) > std::tie(b.area, b.start);
}

bool isSamePlace(const FrameEntry& sent, const ByteRange& range)
{
    return sent.area == quint16(range.area) && sent.address == range.start &&
           sent.length == range.size;
}

} // namespace

RW_VAR cyclicRecord(const ScanEntry& entry, const QString& label, const ComInfo& settings)
{
    RW_VAR record;
    record.aux1 = PLC_NO_HOST_REQUEST;
    record.deviceNo = settings.localDeviceNo;
    record.label = label;
    record.station = entry.station;
    record.areaIndex = entry.range.area;
    record.address = int(entry.range.start);
    record.length = int(entry.range.size);
    return record;
}

CyclicReads::CyclicReads(const DriverFunctions& driver, const ComInfo& settings, int probeCategory,
                         int mostRefusals)
    : m_driver(driver),
      m_settings(settings),
      m_mostRefusals(mostRefusals),
      m_probes(probeCategory, settings.maxReadBytes, mostRefusals)
{
}

void CyclicReads::start(const QVector<DataPoint>& points, const QVector<int>& formerRows)
{
    const std::vector<Row> former = std::exchange(m_rows, {});
    QVector<int> rows(int(former.size()), kGone);
    for (int row = 0; row < int(points.size()); ++row) {
        const int formerRow = formerRows.value(row, kGone);
        Row added = {points[row], scanValue(row, points[row], m_settings.maxReadBytes),
                     State::Listed};
        if (formerRow >= 0) {
            rows[formerRow] = row;
            added.state = former[size_t(formerRow)].state;
            added.value.mayBridgeGaps = former[size_t(formerRow)].value.mayBridgeGaps;
        }
        m_rows.push_back(added);
    }
    m_searched = renumbered(m_searched, rows);
    m_refused = renumbered(m_refused, rows);
    // Those of values that are gone come to their end.
    m_probes.renumber(rows);
    list();
    endSearchIfDone();
}

void CyclicReads::requestSent(const QVector<FrameEntry>& entries)
{
    if (entries.isEmpty())
        return;
    m_lastRead = {entries.last().area, entries.last().address, entries.last().length};
}

void CyclicReads::requestRefused(const QVector<FrameEntry>& entries, bool isLoginDoubted)
{
    QVector<int> rows;
    for (const ScanEntry& entry : m_entries) {
        const bool wasSent = std::any_of(
            entries.begin(), entries.end(),
            [&entry](const FrameEntry& sent) { return isSamePlace(sent, entry.range); });
        if (wasSent)
            rows += entry.rows;
    }
    // A long value stands in several entries.
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    suspect(rows, isLoginDoubted ? 0 : 1);
    const auto isSuspected = [this](const ScanEntry& entry) {
        return m_rows[size_t(entry.rows.first())].state != State::Listed;
    };
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(), isSuspected),
                    m_entries.end());
    rotateBehindLast();
    fillDriver();
}

void CyclicReads::suspect(const QVector<int>& rows, int refusals)
{
    std::vector<OneShotRead> reads;
    for (int row : rows) {
        m_rows[size_t(row)].state = State::Suspect;
        OneShotRead read;
        read.tag = row;
        read.point = m_rows[size_t(row)].point;
        read.refusals = refusals;
        reads.push_back(read);
    }
    m_searched += rows;
    m_probes.addSuspects(reads);
}

void CyclicReads::probe(qint64 now)
{
    const qint64 retryAt = this->retryAt();
    if (retryAt >= 0 && now >= retryAt) {
        const auto tried = std::count_if(m_refused.constBegin(), m_refused.constEnd(),
                                         [this](int row) { return !isStationOff(row); });
        m_retryAt = now + qMax(kShortestRetryPause, kRetryInterval / int(tried));
        suspect({m_refused.takeAt(int(nextRefused() - m_refused.constBegin()))}, m_mostRefusals);
    }
    m_probes.handOver(m_driver, m_settings.localDeviceNo);
}

qint64 CyclicReads::retryAt() const
{
    return m_probes.isEmpty() && nextRefused() != m_refused.constEnd() ? m_retryAt : -1;
}

/// The driver drops what is meant for a station that is off.
bool CyclicReads::isStationOff(int row) const
{
    return m_stationsOff.contains(m_rows[size_t(row)].value.station);
}

/// The first that the PLC may be asked for; nearly always the first of all.
QVector<int>::const_iterator CyclicReads::nextRefused() const
{
    return std::find_if(m_refused.constBegin(), m_refused.constEnd(),
                        [this](int row) { return !isStationOff(row); });
}

void CyclicReads::probeAccepted(const QVector<QByteArray>& blocks, qint64 sentAt)
{
    for (const SettledRead& settled : m_probes.requestAccepted(blocks, sentAt)) {
        if (settled.read.tag == kGone)
            continue;
        m_rows[size_t(settled.read.tag)].state = State::Good;
        ++m_waitingGood;
    }
    if (m_waitingGood >= kMostWaitingGood)
        list();
    endSearchIfDone();
}

QVector<int> CyclicReads::probeRefused(int entries, qint64 now, bool isLoginDoubted)
{
    QVector<int> rows;
    for (const SettledRead& settled : m_probes.requestRefused(entries, isLoginDoubted)) {
        const int row = settled.read.tag;
        if (row == kGone)
            continue;
        rows.append(row);
        m_rows[size_t(row)].state = State::Refused;
        if (m_refused.isEmpty())
            m_retryAt = now + kRetryInterval;
        m_refused.append(row);
        m_foundRefused = true;
    }
    endSearchIfDone();
    return rows;
}

void CyclicReads::endSearchIfDone()
{
    if (!m_probes.isEmpty() || m_searched.isEmpty())
        return;
    if (!m_foundRefused) {
        for (int row : std::as_const(m_searched))
            m_rows[size_t(row)].value.mayBridgeGaps = false;
    }
    m_searched.clear();
    m_foundRefused = false;
    if (m_waitingGood > 0)
        list();
}

void CyclicReads::linkUp()
{
    const auto first = std::stable_partition(m_refused.begin(), m_refused.end(),
                                             [this](int row) { return isStationOff(row); });
    QVector<int> rows;
    std::copy(first, m_refused.end(), std::back_inserter(rows));
    m_refused.erase(first, m_refused.end());
    if (!rows.isEmpty())
        suspect(rows, 0);
}

/// Where a search was broken off it begins anew, by the next refusal.
void CyclicReads::linkDown()
{
    m_probes.takeAll();
    m_searched.clear();
    m_foundRefused = false;
    bool isAnyListed = false;
    for (Row& row : m_rows) {
        if (row.state != State::Suspect && row.state != State::Good)
            continue;
        row.state = State::Listed;
        isAnyListed = true;
    }
    if (isAnyListed)
        list();
}

/// The driver looks at the station of the first entry of a request alone, so entries of a station
/// that is off leave its list.
void CyclicReads::switchStation(int station, bool on)
{
    if (on)
        m_stationsOff.remove(station);
    else
        m_stationsOff.insert(station);
    for (const OneShotRead& read : m_probes.takeWaiting(station)) {
        if (read.tag == kGone)
            continue;
        m_rows[size_t(read.tag)].state = State::Good;
        m_foundRefused = true; // nothing is known of it, nor of the gaps beside it
    }
    list();
    endSearchIfDone();
}

/// Lays out all values that are not suspected or refused and whose station is on.
void CyclicReads::list()
{
    QVector<ScanValue> values;
    for (Row& row : m_rows) {
        if (row.state == State::Good)
            row.state = State::Listed;
        if (row.state == State::Listed && !isStationOff(row.value.row))
            values.append(row.value);
    }
    m_waitingGood = 0;
    m_entries = layOutScan(values, m_settings.maxReadBytes);
    rotateBehindLast();
    fillDriver();
}

/// Puts the entry behind the one that was asked for last to the front, so that the pass goes on
/// where it was.
void CyclicReads::rotateBehindLast()
{
    if (m_lastRead.size == 0)
        return;
    std::sort(m_entries.begin(), m_entries.end(),
              [](const ScanEntry& a, const ScanEntry& b) { return isBehind(b.range, a.range); });
    const auto next =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [this](const ScanEntry& entry) { return isBehind(entry.range, m_lastRead); });
    std::rotate(m_entries.begin(), next, m_entries.end());
}

void CyclicReads::fillDriver()
{
    QList<HostVarItem> nothing;
    m_driver.reCreatReadVarList(&nothing);
    for (const ScanEntry& entry : std::as_const(m_entries)) {
        const QString& label = m_rows[size_t(entry.rows.first())].point.label;
        RW_VAR record = cyclicRecord(entry, label, m_settings);
        m_driver.addListReadVar(&record);
    }
}

} // namespace plc::host
