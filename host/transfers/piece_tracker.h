#ifndef PLC_HOST_TRANSFERS_PIECE_TRACKER_H
#define PLC_HOST_TRANSFERS_PIECE_TRACKER_H

#include <QtCore/QVector>

#include <vector>

#include "host/transfers/tag.h"
#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

/// Tells from the frames that are sent which transfers they carry. The driver reports only the one
/// at the head of a request; all others that the request carried are settled by its result as well.
class PLC_HOST_EXPORT PieceTracker {
public:
    /// What has become of a transfer.
    struct Progress {
        int open = 0;      ///< Pieces that were not accepted.
        int accepted = 0;  ///< Lengths of the others.
        int confirmed = 0; ///< The part of it that is sure.
    };

    /// The next piece of a transfer. Tags ascend in the order in which the transfers are handed to
    /// the driver, and the pieces of one are added one behind the other.
    void add(Tag tag, const FramePlace& piece);
    int pieceCount() const { return int(m_pieces.size()); }
    Progress progress(Tag tag) const;
    /// `tags` ascend.
    void remove(const QVector<Tag>& tags);
    void clear();
    /// All that was accepted is sure.
    void confirm();

    /// A request with these entries goes out, for the first time or again. Returns the transfers of
    /// which it carries a piece.
    QVector<Tag> requestSent(const QVector<FrameEntry>& entries);
    /// It was accepted. Returns the transfers whose last piece it carried.
    QVector<Tag> requestAccepted();
    /// It was given up. Returns the transfers of which it carried a piece; to be removed.
    QVector<Tag> requestAbandoned() { return tagsOnWire(); }

private:
    struct Piece {
        Tag tag;
        FramePlace place;
        bool onWire;
    };
    struct Transfer {
        Tag tag;
        Progress progress;
    };

    QVector<Tag> tagsOnWire() const;

    std::vector<Piece> m_pieces;       ///< Those that were not accepted, in the driver's order.
    std::vector<Transfer> m_transfers; ///< By ascending tags, as the pieces are.
};

} // namespace plc::host

#endif
