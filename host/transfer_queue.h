#ifndef PLC_HOST_TRANSFER_QUEUE_H
#define PLC_HOST_TRANSFER_QUEUE_H

#include <QtCore/QVector>

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>

#include "host/data_point.h"
#include "host/piece_tracker.h"

namespace plc {

/// RW_VAR::category of the host's own requests. The numbers that DataCom() gives for failures are
/// shifted by it.
constexpr int kCyclicCategory = 0;
constexpr int kWriteCategory = 1;
constexpr int kOneShotCategory = 2;
/// 3 marks what a session queues only to give it up.
/// Reads that look for refused values, and those that show whether replies fit their requests.
constexpr int kProbeCategory = 4;
constexpr int kInStepCategory = 5;

/// No station can be switched off under this number.
constexpr int kStationAlwaysOn = -1;

/// Entries that the driver's write list and one-shot list take; it drops further ones silently.
constexpr int kDriverListLimit = 1024;

/// Transfers that wait for the driver and transfers that it has. Which request settles which of
/// them is told from the frames. `Transfer` has a `tag`, the `point` that it moves, the `pieces`
/// that the driver cuts it into, `wasSent`, and `accepted`, the lengths of the pieces that the PLC
/// took, and `confirmed`, those of them of which that is sure.
template <typename Transfer>
class TransferQueue {
public:
    /// Takes a transfer, which waits until it is handed over. Tags ascend.
    void add(const Transfer& transfer) { m_waiting.push_back(transfer); }

    bool isEmpty() const { return m_waiting.empty() && m_underWay.empty(); }
    bool hasUnderWay() const { return !m_underWay.empty(); }
    bool hasUnderWay(int station) const
    {
        return std::any_of(m_underWay.begin(), m_underWay.end(), [station](const auto& entry) {
            return entry.second.point.station == station;
        });
    }

    /// A request with these entries goes out, for the first time or again.
    void requestSent(const QVector<FrameEntry>& entries)
    {
        for (int tag : m_pieces.requestSent(entries))
            m_underWay.at(tag).wasSent = true;
    }
    /// It was accepted, or given up. Returns the transfers that are settled by it.
    QVector<Transfer> requestAccepted() { return takeAll(m_pieces.requestAccepted()); }
    QVector<Transfer> requestAbandoned() { return takeAll(m_pieces.requestAbandoned()); }

    /// All acknowledgements so far were those of their requests.
    void confirmAccepted() { m_pieces.confirm(); }

    /// Takes out the transfer of this tag if it is under way.
    QVector<Transfer> take(int tag)
    {
        const auto found = m_underWay.find(tag);
        if (found == m_underWay.end())
            return {};
        QVector<Transfer> transfers{found->second};
        transfers.first().accepted = m_pieces.accepted(tag);
        transfers.first().confirmed = m_pieces.confirmed(tag);
        m_underWay.erase(found);
        m_pieces.remove(tag);
        return transfers;
    }
    /// Takes out all transfers that wait for this station.
    QVector<Transfer> takeWaiting(int station)
    {
        QVector<Transfer> transfers;
        std::deque<Transfer> others;
        for (const Transfer& transfer : m_waiting) {
            if (transfer.point.station == station)
                transfers.append(transfer);
            else
                others.push_back(transfer);
        }
        m_waiting.swap(others);
        return transfers;
    }
    /// Takes out everything.
    QVector<Transfer> takeAll()
    {
        QVector<Transfer> transfers;
        for (const auto& entry : m_underWay) {
            transfers.append(entry.second);
            transfers.last().accepted = m_pieces.accepted(entry.first);
            transfers.last().confirmed = m_pieces.confirmed(entry.first);
        }
        std::copy(m_waiting.begin(), m_waiting.end(), std::back_inserter(transfers));
        m_underWay.clear();
        m_waiting.clear();
        m_pieces.clear();
        return transfers;
    }

protected:
    /// The transfer that waits longest; null when none does.
    const Transfer* nextWaiting() const { return m_waiting.empty() ? nullptr : &m_waiting.front(); }
    /// Moves it to those under way.
    Transfer start()
    {
        Transfer transfer = m_waiting.front();
        m_waiting.pop_front();
        m_pieces.add(transfer.tag, transfer.pieces);
        m_underWay.emplace(transfer.tag, transfer);
        return transfer;
    }
    const std::map<int, Transfer>& underWay() const { return m_underWay; }
    int piecesUnderWay() const { return m_pieces.pieceCount(); }

private:
    QVector<Transfer> takeAll(const QVector<int>& tags)
    {
        QVector<Transfer> transfers;
        for (int tag : tags)
            transfers += take(tag);
        return transfers;
    }

    std::deque<Transfer> m_waiting;
    std::map<int, Transfer> m_underWay;
    PieceTracker m_pieces;
};

} // namespace plc

#endif
