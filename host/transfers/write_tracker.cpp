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
        const Write& write = start();
        QByteArray bytes = write.buffer.bytes;
        driver.setRegisterData(write.point.label, 0, QString(), write.point.station, &bytes,
                               write.buffer.count, kWriteCategory, write.tag);
    }
}

/// Moves the write that waits longest to those under way.
const Write& WriteTracker::start()
{
    const int tag = m_waiting.front().tag;
    const Write& write = m_underWay.emplace(tag, std::move(m_waiting.front())).first->second;
    m_waiting.pop_front();
    m_pieces.add(tag, write.pieces);
    m_places.add(write.pieces.first());
    return write;
}

void WriteTracker::requestSent(const QVector<FrameEntry>& entries)
{
    for (int tag : m_pieces.requestSent(entries))
        m_underWay.at(tag).wasSent = true;
}

void WriteTracker::noteProgress(Write* write) const
{
    write->accepted = m_pieces.accepted(write->tag);
    write->confirmed = m_pieces.confirmed(write->tag);
}

void WriteTracker::moveOut(int tag, QVector<Write>* writes)
{
    const auto found = m_underWay.find(tag);
    if (found == m_underWay.end())
        return;
    writes->append(std::move(found->second));
    m_underWay.erase(found);
    noteProgress(&writes->last());
    m_places.remove(writes->last().pieces.first());
    m_pieces.remove(tag);
}

QVector<Write> WriteTracker::take(int tag)
{
    return takeAll({tag});
}

QVector<Write> WriteTracker::takeAll(const QVector<int>& tags)
{
    QVector<Write> writes;
    writes.reserve(tags.size());
    for (int tag : tags)
        moveOut(tag, &writes);
    return writes;
}

QVector<Write> WriteTracker::takeWaiting(int station)
{
    const auto first = std::stable_partition(
        m_waiting.begin(), m_waiting.end(),
        [station](const Write& write) { return write.point.station != station; });
    QVector<Write> writes;
    std::move(first, m_waiting.end(), std::back_inserter(writes));
    m_waiting.erase(first, m_waiting.end());
    return writes;
}

QVector<Write> WriteTracker::takeAll()
{
    QVector<Write> writes;
    for (auto& entry : m_underWay) {
        noteProgress(&entry.second);
        writes.append(std::move(entry.second));
    }
    std::move(m_waiting.begin(), m_waiting.end(), std::back_inserter(writes));
    m_underWay.clear();
    m_waiting.clear();
    m_places.clear();
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
           !m_places.isTaken(piece);
}

} // namespace plc::host
