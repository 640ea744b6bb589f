#include "host/transfers/piece_tracker.h"

#include <algorithm>
#include <utility>

namespace plc::host {

void PieceTracker::add(int tag, const QVector<FrameEntry>& pieces)
{
    for (const FrameEntry& piece : pieces)
        m_pieces.push_back({tag, piece, false});
    m_transfers[tag].open += int(pieces.size());
}

bool PieceTracker::contains(int tag) const
{
    const auto found = m_transfers.find(tag);
    return found != m_transfers.end() && found->second.open > 0;
}

void PieceTracker::remove(int tag)
{
    const auto found = m_transfers.find(tag);
    if (found == m_transfers.end())
        return;
    if (found->second.open > 0) {
        m_pieces.erase(std::remove_if(m_pieces.begin(), m_pieces.end(),
                                      [tag](const Piece& piece) { return piece.tag == tag; }),
                       m_pieces.end());
    }
    m_transfers.erase(found);
}

void PieceTracker::clear()
{
    m_pieces.clear();
    m_transfers.clear();
    m_unconfirmed.clear();
}

int PieceTracker::accepted(int tag) const
{
    const auto found = m_transfers.find(tag);
    return found == m_transfers.end() ? 0 : found->second.accepted;
}

int PieceTracker::confirmed(int tag) const
{
    const auto found = m_transfers.find(tag);
    return found == m_transfers.end() ? 0 : found->second.confirmed;
}

void PieceTracker::confirm()
{
    for (int tag : m_unconfirmed) {
        const auto found = m_transfers.find(tag);
        if (found != m_transfers.end())
            found->second.confirmed = found->second.accepted;
    }
    m_unconfirmed.clear();
}

QVector<int> PieceTracker::requestSent(const QVector<FrameEntry>& entries)
{
    for (Piece& piece : m_pieces)
        piece.onWire = false;
    // A request nearly always carries the first pieces, in their order.
    auto firstLeft = m_pieces.begin();
    for (const FrameEntry& entry : entries) {
        const auto match = std::find_if(firstLeft, m_pieces.end(), [&entry](const Piece& piece) {
            return !piece.onWire && piece.entry.samePlace(entry);
        });
        if (match != m_pieces.end())
            match->onWire = true;
        while (firstLeft != m_pieces.end() && firstLeft->onWire)
            ++firstLeft;
    }
    return tagsOnWire();
}

QVector<int> PieceTracker::requestAccepted()
{
    const QVector<int> tags = tagsOnWire();
    for (const Piece& piece : std::as_const(m_pieces)) {
        if (!piece.onWire)
            continue;
        Progress& progress = m_transfers[piece.tag];
        progress.accepted += int(piece.entry.length);
        --progress.open;
    }
    m_unconfirmed.insert(m_unconfirmed.end(), tags.begin(), tags.end());
    m_pieces.erase(std::remove_if(m_pieces.begin(), m_pieces.end(),
                                  [](const Piece& piece) { return piece.onWire; }),
                   m_pieces.end());
    QVector<int> settled;
    settled.reserve(tags.size());
    for (int tag : tags) {
        if (!contains(tag))
            settled.append(tag);
    }
    return settled;
}

QVector<int> PieceTracker::requestAbandoned()
{
    return tagsOnWire();
}

/// Pieces of one transfer stand one behind the other.
QVector<int> PieceTracker::tagsOnWire() const
{
    QVector<int> tags;
    for (const Piece& piece : m_pieces) {
        if (piece.onWire && (tags.isEmpty() || tags.last() != piece.tag))
            tags.append(piece.tag);
    }
    return tags;
}

} // namespace plc::host
