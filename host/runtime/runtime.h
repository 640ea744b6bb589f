#ifndef PLC_HOST_RUNTIME_RUNTIME_H
#define PLC_HOST_RUNTIME_RUNTIME_H

#include <QtCore/QMap>
#include <QtCore/QSet>
#include <QtCore/QVector>

#include <mutex>

#include "host/driver/driver_claim.h"
#include "host/driver/report_route.h"
#include "host/link/session.h"
#include "host/points/checked_points.h"
#include "host/runtime/cyclic_reads.h"
#include "host/runtime/runtime_settings.h"
#include "host/runtime/runtime_snapshot.h"
#include "host/runtime/value_table.h"
#include "host/transfers/read_tracker.h"
#include "host/transfers/transfer_outcome.h"
#include "host/transfers/write_tracker.h"
#include "project/symbols.h"
#include "values/export.h"

namespace plc::host {

/// What a runtime tells. Called from inside its events; may queue further writes and reads, and
/// replace the cyclic values.
class PLC_HOST_EXPORT RuntimeListener {
public:
    virtual ~RuntimeListener() = default;

    virtual void linkChanged(LinkState state, const QString& reason, int retryDelay)
    {
        Q_UNUSED(state)
        Q_UNUSED(reason)
        Q_UNUSED(retryDelay)
    }
    virtual void requestSent(const SentRequest& request) { Q_UNUSED(request) }
    virtual void requestAnswered(const SentRequest& request, const Answer& answer,
                                 const QByteArray& reply)
    {
        Q_UNUSED(request)
        Q_UNUSED(answer)
        Q_UNUSED(reply)
    }
    /// The values of the answered request are in the table, and its transfers are settled.
    virtual void requestSettled() {}
    /// The PLC refuses to give this cyclic value, alone as well, for the first time; or gives it
    /// again after that.
    virtual void valueRefused(int row) { Q_UNUSED(row) }
    virtual void valueGivenAgain(int row) { Q_UNUSED(row) }
};

/// What was exchanged since the start.
struct TrafficCounters {
    quint64 requests = 0;
    quint64 accepted = 0;
    quint64 refused = 0; ///< Replies that were not accepted.
    quint64 linkLosses = 0;
};

/// A host around the driver: sets it up for a PLC, reads the cyclic values into a table, carries
/// out writes and one-shot reads and tells how each ended. Time comes in as an argument, in
/// milliseconds of a clock that never goes back; bytes go in and out through session().
///
/// 1. A driver library serves one runtime at a time, which has taken it; see DriverClaim. Several
///    runtimes in a process have a copy of the library each, see DriverLibrary::loadCopy(), and
///    share nothing. The next one on a library finds it as if it were new: no requests, no
///    symbols and no station off. Bytes of before may be in the driver's image, which is not
///    looked at.
/// 2. One thread owns a runtime, and makes all calls. snapshot() alone may be called from any; for
///    writes of other threads there is RuntimeFront.
/// 3. Every write and one-shot read is settled exactly once: when its outcome is known, when the
///    link is lost or stopped, or when the runtime ends.
/// 4. The listener is not called any more when the runtime ends; what settles then is.
class PLC_HOST_EXPORT Runtime : private SessionObserver {
public:
    /// `symbols` and `listener` must outlive the runtime.
    Runtime(DriverClaim driver, const RuntimeSettings& settings, const project::Symbols& symbols,
            RuntimeListener* listener);
    ~Runtime() override;

    Session& session() { return m_session; }
    const DataPointFinder& points() const { return m_points; }
    const ValueTable& values() const { return m_values; }
    /// All values and the state of the link. May be called from any thread.
    RuntimeSnapshot snapshot(qint64 now) const;
    const TrafficCounters& counters() const { return m_counters; }
    double requestsPerSecond(qint64 now) const { return m_requestRate.perSecond(now); }

    /// Replaces the cyclically read values. What is known of those that stay is kept.
    void readCyclically(const QVector<DataPoint>& points, qint64 now);

    /// Queue a write or a one-shot read. It is settled exactly once; at once, without being sent,
    /// if the link is down, the station off, the data point none of points(), or if the values are
    /// not exactly those that it takes. Nobody hears of it where `settled` is empty.
    void write(const DataPoint& point, const QVector<values::Value>& values, qint64 now,
               WriteSettled settled);
    void readOnce(const DataPoint& point, qint64 now, ReadSettled settled);
    /// Writes that are not settled.
    int openWrites() const { return m_openWrites; }

    /// Switches a station off or on. Writes that wait for a station going off end unsent; what the
    /// driver already has is carried out first.
    void switchStation(int station, bool on, qint64 now);
    /// Whether nothing is asked of the station any more.
    bool isStationOff(int station) const
    {
        return m_stationsOff.contains(station) || m_stationsGoingOff.contains(station);
    }

private:
    bool prepareRequest(qint64 now, bool passIsDue) override;
    qint64 preparesAt() const override { return m_cyclic.retryAt(); }
    void requestSent(const SentRequest& request) override;
    void requestAnswered(const SentRequest& request, const Answer& answer, const QByteArray& reply,
                         qint64 now) override;
    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;

    QString obstacle(const DataPoint& point);
    QString prepareWrite(const DataPoint& point, const QVector<values::Value>& values,
                         Write* write);
    void switchOffWhereIdle();
    void handOverWrites();
    bool hasWaitingReads() const;
    void handOverReads(qint64 now, bool passIsDue);
    void askWhetherInStep(bool passIsDue);
    void settleWriteRequest(const Answer& answer);
    TransferOutcome writeOutcome(const Answer& answer);
    void settleReadRequest(const SentRequest& request, const Answer& answer,
                           const QByteArray& reply, qint64 now);
    void settleCyclicRequest(const SentRequest& request, const Answer& answer,
                             const QVector<QByteArray>& blocks, qint64 now);
    void showValues(const SentRequest& request, const QVector<QByteArray>& blocks, qint64 now);
    void renumberNews(const QVector<int>& formerRows);
    void tellNews();
    void settleReports(const Answer& answer);
    void settleDoubted();
    void giveUpTransfers(const QString& reason);
    void settleAll(const QString& reason);
    void leaveDriver();
    void settle(const Write& write, const TransferOutcome& outcome);
    void settle(const std::vector<Write>& writes, const TransferOutcome& outcome);
    static void settle(const std::vector<OneShotRead>& reads, const TransferOutcome& outcome);

    const DriverClaim m_claim; ///< Given back behind all others.
    const DriverFunctions& m_driver;
    RuntimeListener* m_listener;
    RuntimeListener m_nobody; ///< Listens while the runtime ends.
    ReportRoute m_reports;
    ComInfo m_settings;
    const int m_staleAfter;
    const bool m_isReadOnly;
    QList<Label_Type_Info> m_symbols;
    DataPointFinder m_points;
    CheckedPoints m_checkedPoints;
    /// Held by this thread while m_cyclicPoints, m_values, m_linkState or m_linkDownReason change,
    /// and by others while they read them.
    mutable std::mutex m_mutex;
    QVector<DataPoint> m_cyclicPoints; ///< Those of m_values, shared with snapshots.
    ValueTable m_values;
    /// A row of which the listener is still to be told.
    struct RowNews {
        int row;
        bool isGiven; ///< Again; otherwise the PLC refuses it.
    };
    QVector<RowNews> m_news;
    LinkState m_linkState = LinkState::Down;
    WriteTracker m_writes;
    ReadTracker m_reads;
    CyclicReads m_cyclic;
    int m_openWrites = 0;
    /// Writes whose outcome is told once it is sure that the reply was their own.
    struct DoubtedWrites {
        std::vector<Write> writes;
        TransferOutcome outcome;
    };
    std::vector<DoubtedWrites> m_doubted;
    bool m_isInDoubt = false;
    Tag m_lastTagBeforeDoubt = 0;
    bool m_wasGoodTurnedDown = false;       ///< A good reply to the write that is repeated.
    bool m_asksWhetherInStep = false;       ///< The driver has the read that shows it.
    bool m_cyclicReadsProveNothing = false; ///< Their replies have the size of the doubted one.
    bool m_lastWasProbe = false;
    int m_writesInARow = 0; ///< Requests since the last one-shot read, as far as they count.
    FrameEntry m_readable;  ///< A place that the PLC gave, or at least took.
    Tag m_lastTag = 0;
    QString
        m_linkDownReason; ///< Why the PLC is away; empty while it is not, or is not known to be.
    /// Stations that are off, and those that go off when the driver has nothing more for them.
    QSet<int> m_stationsOff;
    QSet<int> m_stationsGoingOff;
    TrafficCounters m_counters;
    RateMeter m_requestRate;
    Session m_session;
};

} // namespace plc::host

#endif
