#ifndef PLC_HOST_TRANSFERS_WRITE_TRACKER_H
#define PLC_HOST_TRANSFERS_WRITE_TRACKER_H

#include <QtCore/QVector>

#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "host/driver/driver_functions.h"
#include "host/points/value_codec.h"
#include "host/points/value_layout.h"
#include "host/transfers/piece_tracker.h"
#include "host/transfers/transfer_outcome.h"
#include "host/transfers/write_places.h"
#include "values/export.h"

namespace plc::host {

/// Called once, when the write is settled.
using WriteSettled = std::function<void(const TransferOutcome&)>;

struct Write {
    Tag tag = 0;
    QString label; ///< As the driver takes it.
    int station = 0;
    int elementSize = 1; ///< In bytes; 1 for BIT.
    WriteBuffer buffer;
    WritePieces pieces;   ///< That the driver cuts it into.
    WriteSettled settled; ///< May be empty.
    bool wasSent = false; ///< A request has carried a piece of it.
    int accepted = 0;     ///< Bytes (elements of BIT) that the PLC took.
    int confirmed = 0;    ///< The part of it that is sure.
};

/// Writes that wait for the driver and writes that it has. Which request settles which of them is
/// told from the frames. Holds writes back until the driver can carry them out unharmed:
///
/// - The driver replaces a queued write by one of the same station, address and length, even while
///   the first is under way and whatever the areas are; so no write goes to a place while another
///   one to it is unsettled.
/// - Behind a bit the driver would state no length for any other write of the same request, and
///   behind another write it would write a bit as a byte to the address that its number makes; so
///   bits never share the driver's list with other writes.
/// - After a failure the driver forgets the further pieces of the first write of a request only; so
///   a write of several pieces goes alone.
/// - The driver compares each write with all that it has queued; so it gets no more than the next
///   request can carry.
///
/// Writes keep their order.
class PLC_HOST_EXPORT WriteTracker {
public:
    /// Takes a write, which waits until it is handed over. Tags ascend.
    void add(Write write) { m_waiting.push_back(std::move(write)); }

    bool hasUnderWay() const { return !m_underWay.empty(); }
    bool hasUnderWay(int station) const;

    /// Hands the driver the writes that may go now.
    void handOver(const DriverFunctions& driver);
    /// The same with those up to this tag that go together with what the driver has. So writes that
    /// were queued together go on while it is in doubt whether the first of them are done.
    void goOn(const DriverFunctions& driver, Tag lastTag);

    /// A request with these entries goes out, for the first time or again.
    void requestSent(const QVector<FrameEntry>& entries);
    /// It was accepted, or given up. Returns the writes that are settled by it.
    std::vector<Write> requestAccepted() { return takeAll(m_pieces.requestAccepted()); }
    std::vector<Write> requestAbandoned() { return takeAll(m_pieces.requestAbandoned()); }
    /// All acknowledgements so far were those of their requests.
    void confirmAccepted();

    /// Takes out the write that the driver reports by this number if it is under way; its place is
    /// free.
    std::vector<Write> takeReported(int reported);
    /// Takes out all writes that wait for this station.
    std::vector<Write> takeWaiting(int station);
    /// Takes out everything.
    std::vector<Write> takeAll();

private:
    bool mayGo(const Write& write) const;
    void start(const DriverFunctions& driver);
    void noteProgress(Write* write) const;
    std::vector<Write> takeAll(const QVector<Tag>& tags);

    std::deque<Write> m_waiting;
    std::vector<Write> m_underWay; ///< By ascending tags, as those that wait.
    WritePlaces m_places; ///< Of the first pieces of those under way, or accepted and in doubt.
    PieceTracker m_pieces;
};

} // namespace plc::host

#endif
