#include "host/transfers/piece_tracker.h"

#include <algorithm>

#include "host/transfers/tag_walk.h"

namespace plc::host {
namespace {

template <typename Element>
void removeMet(const QVector<Tag>& tags, std::vector<Element>* elements)
{
    TagWalk removed(tags);
    elements->erase(
        std::remove_if(elements->begin(), elements->end(),
                       [&removed](const Element& each) { return removed.meets(each.tag); }),
        elements->end());
}

} // namespace

void PieceTracker::add(Tag tag, const FramePlace& piece)
{
    if (m_transfers.empty() || m_transfers.back().tag != tag)
        m_transfers.push_back({tag, Progress()});
    ++m_transfers.back().progress.open;
    m_pieces.push_back({tag, piece, false});
}

PieceTracker::Progress PieceTracker::progress(Tag tag) const
{
    const auto found = std::lower_bound(
        m_transfers.begin(), m_transfers.end(), tag,
        [](const Transfer& transfer, Tag wanted) { return transfer.tag < wanted; });
    return found != m_transfers.end() && found->tag == tag ? found->progress : Progress();
}

void PieceTracker::remove(const QVector<Tag>& tags)
{
    removeMet(tags, &m_pieces);
    removeMet(tags, &m_transfers);
}

void PieceTracker::clear()
{
    m_pieces.clear();
    m_transfers.clear();
}

void PieceTracker::confirm()
{
    for (Transfer& transfer : m_transfers)
        transfer.progress.confirmed = transfer.progress.accepted;
}

QVector<Tag> PieceTracker::requestSent(const QVector<FrameEntry>& entries)
{
    for (Piece& piece : m_pieces)
        piece.onWire = false;
    // A request nearly always carries the first pieces, in their order.
    auto firstLeft = m_pieces.begin();
    for (const FrameEntry& entry : entries) {
        const auto match = std::find_if(firstLeft, m_pieces.end(), [&entry](const Piece& piece) {
            return !piece.onWire && piece.place.samePlace(entry);
        });
        if (match != m_pieces.end())
            match->onWire = true;
        while (firstLeft != m_pieces.end() && firstLeft->onWire)
            ++firstLeft;
    }
    return tagsOnWire();
}

QVector<Tag> PieceTracker::requestAccepted()
{
    QVector<Tag> settled;
    settled.reserve(int(m_transfers.size()));
    auto transfer = m_transfers.begin();
    for (const Piece& piece : m_pieces) {
        if (!piece.onWire)
            continue;
        while (transfer->tag != piece.tag)
            ++transfer;
        transfer->progress.accepted += int(piece.place.length);
        if (--transfer->progress.open == 0)
            settled.append(piece.tag);
    }
    m_pieces.erase(std::remove_if(m_pieces.begin(), m_pieces.end(),
                                  [](const Piece& piece) { return piece.onWire; }),
                   m_pieces.end());
    return settled;
}

/// Pieces of one transfer stand one behind the other.
QVector<Tag> PieceTracker::tagsOnWire() const
{
    QVector<Tag> tags;
    tags.reserve(int(m_pieces.size()));
    for (const Piece& piece : m_pieces) {
        if (piece.onWire && (tags.isEmpty() || tags.last() != piece.tag))
            tags.append(piece.tag);
    }
    return tags;
}

} // namespace plc::host
