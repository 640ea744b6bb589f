#include "host/transfers/piece_tracker.h"

#include <algorithm>
#include <utility>

namespace plc::host {
namespace {

int lengthOf(const std::map<int, int>& lengths, int tag)
{
    const auto found = lengths.find(tag);
    return found == lengths.end() ? 0 : found->second;
}

} // namespace

void PieceTracker::add(int tag, const QVector<FrameEntry>& pieces)
{
    for (const FrameEntry& piece : pieces)
        m_pieces.append({tag, piece, false});
}

bool PieceTracker::contains(int tag) const
{
    return std::any_of(m_pieces.begin(), m_pieces.end(),
                       [tag](const Piece& piece) { return piece.tag == tag; });
}

void PieceTracker::remove(int tag)
{
    m_accepted.erase(tag);
    m_confirmed.erase(tag);
    m_pieces.erase(std::remove_if(m_pieces.begin(), m_pieces.end(),
                                  [tag](const Piece& piece) { return piece.tag == tag; }),
                   m_pieces.end());
}

void PieceTracker::clear()
{
    m_pieces.clear();
    m_accepted.clear();
    m_confirmed.clear();
}

int PieceTracker::accepted(int tag) const
{
    return lengthOf(m_accepted, tag);
}

int PieceTracker::confirmed(int tag) const
{
    return lengthOf(m_confirmed, tag);
}

QVector<int> PieceTracker::requestSent(const QVector<FrameEntry>& entries)
{
    for (Piece& piece : m_pieces)
        piece.onWire = false;
    for (const FrameEntry& entry : entries) {
        const auto match = std::find_if(
            m_pieces.begin(), m_pieces.end(),
            [&entry](const Piece& piece) { return !piece.onWire && piece.entry.samePlace(entry); });
        if (match != m_pieces.end())
            match->onWire = true;
    }
    return tagsOnWire();
}

QVector<int> PieceTracker::requestAccepted()
{
    const QVector<int> tags = tagsOnWire();
    for (const Piece& piece : std::as_const(m_pieces)) {
        if (piece.onWire)
            m_accepted[piece.tag] += int(piece.entry.length);
    }
    m_pieces.erase(std::remove_if(m_pieces.begin(), m_pieces.end(),
                                  [](const Piece& piece) { return piece.onWire; }),
                   m_pieces.end());
    QVector<int> settled;
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

QVector<int> PieceTracker::tagsOnWire() const
{
    QVector<int> tags;
    for (const Piece& piece : m_pieces) {
        if (piece.onWire && !tags.contains(piece.tag))
            tags.append(piece.tag);
    }
    return tags;
}

} // namespace plc::host
