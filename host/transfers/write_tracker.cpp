#include "host/transfers/write_tracker.h"

#include <algorithm>
#include <iterator>

#include "host/driver/request_records.h"

namespace plc::host {
namespace {

bool isSplit(const Write& write)
{
    return write.pieces.size() > 1;
}

bool overlap(const FrameEntry& a, const FrameEntry& b)
{
    return a.area == b.area && qint64(a.address) < qint64(b.address) + b.length &&
           qint64(b.address) < qint64(a.address) + a.length;
}

/// Whether the driver would take the second for a new value of the first, or their order counts.
bool isSamePlace(const FrameEntry& a, const FrameEntry& b)
{
    return (a.address == b.address && a.length == b.length) || overlap(a, b);
}

} // namespace

bool WriteTracker::hasUnderWay(int station) const
{
    return std::any_of(m_underWay.begin(), m_underWay.end(), [station](const auto& entry) {
        return entry.second.point.station == station;
    });
}

void WriteTracker::handOver(const DriverFunctions& driver)
{
    while (!m_waiting.empty() && mayGo(m_waiting.front())) {
        const Write write = start();
        QByteArray bytes = write.buffer.bytes;
        driver.setRegisterData(write.point.label, 0, QString(), write.point.station, &bytes,
                               write.buffer.count, kWriteCategory, write.tag);
    }
}

/// Moves the write that waits longest to those under way.
Write WriteTracker::start()
{
    Write write = m_waiting.front();
    m_waiting.pop_front();
    m_pieces.add(write.tag, write.pieces);
    m_underWay.emplace(write.tag, write);
    return write;
}

void WriteTracker::requestSent(const QVector<FrameEntry>& entries)
{
    for (int tag : m_pieces.requestSent(entries))
        m_underWay.at(tag).wasSent = true;
}

Write WriteTracker::withProgress(Write write) const
{
    write.accepted = m_pieces.accepted(write.tag);
    write.confirmed = m_pieces.confirmed(write.tag);
    return write;
}

QVector<Write> WriteTracker::take(int tag)
{
    const auto found = m_underWay.find(tag);
    if (found == m_underWay.end())
        return {};
    const QVector<Write> writes{withProgress(found->second)};
    m_underWay.erase(found);
    m_pieces.remove(tag);
    return writes;
}

QVector<Write> WriteTracker::takeAll(const QVector<int>& tags)
{
    QVector<Write> writes;
    for (int tag : tags)
        writes += take(tag);
    return writes;
}

QVector<Write> WriteTracker::takeWaiting(int station)
{
    const auto first = std::stable_partition(
        m_waiting.begin(), m_waiting.end(),
        [station](const Write& write) { return write.point.station != station; });
    QVector<Write> writes;
    std::copy(first, m_waiting.end(), std::back_inserter(writes));
    m_waiting.erase(first, m_waiting.end());
    return writes;
}

QVector<Write> WriteTracker::takeAll()
{
    QVector<Write> writes;
    for (const auto& entry : m_underWay)
        writes.append(withProgress(entry.second));
    std::copy(m_waiting.begin(), m_waiting.end(), std::back_inserter(writes));
    m_underWay.clear();
    m_waiting.clear();
    m_pieces.clear();
    return writes;
}

bool WriteTracker::mayGo(const Write& write) const
{
    if (!hasUnderWay())
        return true;
    const Write& other = m_underWay.begin()->second;
    if (isSplit(write) || isSplit(other))
        return false;
    const FrameEntry& piece = write.pieces.first();
    return piece.isBit == other.pieces.first().isBit && m_pieces.pieceCount() < PLC_LIST_LIMIT &&
           !collides(piece);
}

bool WriteTracker::collides(const FrameEntry& piece) const
{
    return std::any_of(m_underWay.begin(), m_underWay.end(), [&piece](const auto& entry) {
        return isSamePlace(piece, entry.second.pieces.first());
    });
}

} // namespace plc::host
