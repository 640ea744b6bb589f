#ifndef PLC_HOST_TRANSFERS_PIECE_TRACKER_H
#define PLC_HOST_TRANSFERS_PIECE_TRACKER_H

#include <QtCore/QVector>

#include <map>
#include <vector>

#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

/// Tells from the frames that are sent which transfers they carry. The driver reports only the one
/// at the head of a request; all others that the request carried are settled by its result as well.
class PLC_HOST_EXPORT PieceTracker {
public:
    /// Tags ascend in the order in which the transfers were handed to the driver.
    void add(int tag, const QVector<FrameEntry>& pieces);
    /// Whether a piece of the transfer was not accepted yet.
    bool contains(int tag) const;
    int pieceCount() const { return int(m_pieces.size()); }
    void remove(int tag);
    void clear();
    /// What was accepted of a transfer: lengths of its pieces.
    int accepted(int tag) const;
    /// The same, as far as it was confirmed.
    int confirmed(int tag) const;
    /// All that was accepted is sure.
    void confirm();

    /// A request with these entries goes out, for the first time or again. Returns the transfers of
    /// which it carries a piece.
    QVector<int> requestSent(const QVector<FrameEntry>& entries);
    /// It was accepted. Returns the transfers whose last piece it carried.
    QVector<int> requestAccepted();
    /// It was given up. Returns the transfers of which it carried a piece; to be removed.
    QVector<int> requestAbandoned();

private:
    struct Piece {
        int tag;
        FrameEntry entry;
        bool onWire;
    };

    /// What has become of a transfer.
    struct Progress {
        int open = 0; ///< Pieces that were not accepted.
        int accepted = 0;
        int confirmed = 0;
    };

    QVector<int> tagsOnWire() const;

    std::vector<Piece> m_pieces; ///< Those that were not accepted, in the driver's order.
    std::map<int, Progress> m_transfers;
    std::vector<int> m_unconfirmed; ///< Transfers of which something was accepted since confirm().
};

} // namespace plc::host

#endif
