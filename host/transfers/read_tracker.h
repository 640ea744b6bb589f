#ifndef PLC_HOST_TRANSFERS_READ_TRACKER_H
#define PLC_HOST_TRANSFERS_READ_TRACKER_H

#include <QtCore/QVector>

#include <deque>
#include <functional>
#include <vector>

#include "host/driver/driver_functions.h"
#include "host/points/value_assembly.h"
#include "host/points/value_layout.h"
#include "host/transfers/transfer_outcome.h"
#include "host/wire/read_limits.h"
#include "values/export.h"

namespace plc::host {

/// Called once, when the read is settled; with the value as GetRegisterData() gives it if it is
/// done.
using ReadSettled = std::function<void(const TransferOutcome&, const QByteArray& bytes)>;

struct OneShotRead {
    int tag = 0; ///< By which its owner knows it.
    DataPoint point;
    ReadSettled settled = [](const TransferOutcome&, const QByteArray&) {};
    bool wasSent = false; ///< A request has carried a piece of it.
    int refusals = 0;     ///< Requests with a piece of it that the PLC refused.
};

/// A read that the PLC has answered for good.
struct SettledRead {
    OneShotRead read;
    QByteArray bytes; ///< Of a read that is done.
};

/// Carries out one-shot reads through the driver's list, one request at a time.
///
/// 1. A value that fits into one entry comes in one reply, whatever `maxReadBytes` is.
/// 2. The PLC refuses a request as a whole, whichever entry it does not like. The reads of a
///    refused request are asked for in halves until the refused ones stand alone; these are settled
///    after `mostRefusals` refusals, all others are done.
/// 3. Reads keep their order as far as none is refused.
class PLC_HOST_EXPORT ReadTracker {
public:
    /// `category` tells the requests of this tracker from others.
    ReadTracker(int category, int maxReadBytes, int mostRefusals);

    void add(const OneShotRead& read);
    /// Reads of which one is known to be refused: asked for in halves, before all others.
    void addSuspects(const std::vector<OneShotRead>& reads);

    /// Gives each read the tag that `tags` has at the place of its present one.
    void renumber(const QVector<int>& tags);

    bool isEmpty() const;
    /// Whether the driver has entries of it.
    bool hasUnderWay() const { return !m_batch.empty(); }
    /// Whether reads of the station were begun and are not settled, because the driver has them or
    /// they are to be asked for once more.
    bool hasUnderWay(int station) const;

    /// Hands the driver the next request's worth of entries, unless it has some that were sent.
    void handOver(const DriverFunctions& driver, int localDeviceNo);
    /// A request with so many entries goes out, for the first time or again.
    void requestSent(int entries);
    /// It was accepted with these blocks; its request was sent at `sentAt`. Returns what is
    /// settled.
    std::vector<SettledRead> requestAccepted(const QVector<QByteArray>& blocks, qint64 sentAt);
    /// The PLC refused it, which says nothing of its reads when the login is doubted. Returns what
    /// is settled.
    std::vector<SettledRead> requestRefused(int entries, bool isLoginDoubted = false);

    /// Takes out everything, or all that waits for this station.
    std::vector<OneShotRead> takeAll();
    std::vector<OneShotRead> takeWaiting(int station);

private:
    /// A read with what has come of it.
    struct Job {
        OneShotRead read;
        QVector<FrameEntry> pieces;
        int piecesDone = 0;
        ValueAssembly value;
    };
    using Group = std::deque<Job>;

    Job jobOf(const OneShotRead& read) const;
    void fillBatch(Group* source);
    static bool fits(const Job& job, ReadRequestBudget* budget);
    void handPieces(const Job& job, const DriverFunctions& driver, int localDeviceNo);
    Group takeJobs(int entries);
    void endBatchIfDone();
    void split(Group group);

    const int m_category;
    const int m_maxReadBytes;
    const int m_mostRefusals;
    Group m_waiting;
    std::vector<Group> m_suspects; ///< Each goes in requests of its own; the last one next.
    Group m_batch;                 ///< What the driver has; of a long one perhaps not all pieces.
    ReadRequestBudget m_budget;    ///< Of the batch.
    int m_piecesHanded = 0;        ///< Entries of the batch that the driver still has.
    /// The batch is complete: it was sent, or holds suspects, which others are kept away from.
    bool m_isClosed = false;
};

} // namespace plc::host

#endif
