#include "host/transfers/write_tracker.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "host/driver/request_records.h"
#include "host/transfers/tag_walk.h"

namespace plc::host {
namespace {

/// Entries that one request carries at most, each of at least one byte.
constexpr int kMostEntries =
    qMin(PLC_MOST_WRITE_ENTRIES, PLC_REQUEST_BUDGET / (PLC_WRITE_ENTRY_OVERHEAD + 1));

/// By what the driver reports a write: its numbers begin again, when none of those under way has
/// the same any more.
int reportedTag(Tag tag)
{
    return int(tag & std::numeric_limits<int>::max());
}

bool isSplit(const Write& write)
{
    return write.pieces.size() > 1;
}

} // namespace

bool WriteTracker::hasUnderWay(int station) const
{
    return std::any_of(m_underWay.begin(), m_underWay.end(),
                       [station](const Write& write) { return write.station == station; });
}

void WriteTracker::handOver(const DriverFunctions& driver)
{
    while (!m_waiting.empty() && mayGo(m_waiting.front()))
        start(driver);
}

void WriteTracker::goOn(const DriverFunctions& driver, Tag lastTag)
{
    while (hasUnderWay() && !m_waiting.empty() && m_waiting.front().tag <= lastTag &&
           mayGo(m_waiting.front()))
        start(driver);
}

/// Hands over the write that waits longest.
void WriteTracker::start(const DriverFunctions& driver)
{
    m_underWay.push_back(std::move(m_waiting.front()));
    m_waiting.pop_front();
    Write& write = m_underWay.back();
    for (int i = 0; i < write.pieces.size(); ++i)
        m_pieces.add(write.tag, write.pieces.at(i));
    m_places.add(write.pieces.first());
    driver.setRegisterData(write.label, 0, QString(), write.station, &write.buffer.bytes,
                           write.buffer.count, kWriteCategory, reportedTag(write.tag));
}

void WriteTracker::requestSent(const QVector<FrameEntry>& entries)
{
    const QVector<Tag> tags = m_pieces.requestSent(entries);
    TagWalk sent(tags);
    for (Write& write : m_underWay)
        write.wasSent |= sent.meets(write.tag);
}

void WriteTracker::noteProgress(Write* write) const
{
    const PieceTracker::Progress progress = m_pieces.progress(write->tag);
    write->accepted = progress.accepted;
    write->confirmed = progress.confirmed;
}

void WriteTracker::confirmAccepted()
{
    m_pieces.confirm();
    m_places.clear();
    for (const Write& write : m_underWay)
        m_places.add(write.pieces.first());
}

std::vector<Write> WriteTracker::takeReported(int reported)
{
    QVector<Tag> tags;
    for (const Write& write : m_underWay) {
        if (reportedTag(write.tag) == reported)
            tags.append(write.tag);
    }
    std::vector<Write> taken = takeAll(tags);
    for (const Write& write : taken)
        m_places.remove(write.pieces.first());
    return taken;
}

std::vector<Write> WriteTracker::takeAll(const QVector<Tag>& tags)
{
    std::vector<Write> taken;
    std::vector<Write> staying;
    taken.reserve(size_t(tags.size()));
    TagWalk ended(tags);
    for (Write& write : m_underWay) {
        if (ended.meets(write.tag)) {
            noteProgress(&write);
            taken.push_back(std::move(write));
        } else {
            staying.push_back(std::move(write));
        }
    }
    m_underWay = std::move(staying);
    m_pieces.remove(tags);
    return taken;
}

std::vector<Write> WriteTracker::takeWaiting(int station)
{
    const auto first =
        std::stable_partition(m_waiting.begin(), m_waiting.end(),
                              [station](const Write& write) { return write.station != station; });
    std::vector<Write> taken(std::make_move_iterator(first),
                             std::make_move_iterator(m_waiting.end()));
    m_waiting.erase(first, m_waiting.end());
    return taken;
}

std::vector<Write> WriteTracker::takeAll()
{
    for (Write& write : m_underWay)
        noteProgress(&write);
    std::vector<Write> writes = std::exchange(m_underWay, {});
    std::move(m_waiting.begin(), m_waiting.end(), std::back_inserter(writes));
    m_waiting.clear();
    m_places.clear();
    m_pieces.clear();
    return writes;
}

bool WriteTracker::mayGo(const Write& write) const
{
    if (!hasUnderWay())
        return true;
    const Write& other = m_underWay.front();
    if (isSplit(write) || isSplit(other))
        return false;
    const FramePlace piece = write.pieces.first();
    return piece.isBit == other.pieces.first().isBit && m_pieces.pieceCount() < kMostEntries &&
           !m_places.isTaken(piece);
}

} // namespace plc::host
