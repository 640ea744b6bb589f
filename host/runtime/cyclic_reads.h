#ifndef PLC_HOST_RUNTIME_CYCLIC_READS_H
#define PLC_HOST_RUNTIME_CYCLIC_READS_H

#include <QtCore/QSet>
#include <QtCore/QVector>

#include <vector>

#include "host/runtime/scan_layout.h"
#include "host/transfers/read_tracker.h"
#include "values/export.h"

namespace plc::host {

/// The record that AddListReadVar() takes for an entry.
PLC_HOST_EXPORT RW_VAR cyclicRecord(const ScanEntry& entry, const QString& label,
                                    const ComInfo& settings);

/// The values that are read again and again, as entries of the driver's cyclic list, and what
/// becomes of those that the PLC refuses.
///
/// States of a value:
/// 1. Listed: an entry of the driver's list reads it. So all begin.
/// 2. Suspect: a request that carried it was refused. Its entry leaves the list, and it is asked
/// for
///    in halves with the others of that request: by probes, which are one-shot reads, one between
///    two cyclic requests at most.
/// 3. Good again: the PLC gave it to a probe; it is listed when the search is over, or before when
///    many wait for that.
/// 4. Refused: the PLC refused it alone. It is asked for alone now and then, and with the others
/// once
///    the link was lost, because the PLC may have another program then.
///
/// Where nothing that was suspected is refused alone, it was what lies between the values: no gap
/// beside them is read again.
class PLC_HOST_EXPORT CyclicReads {
public:
    /// From one probe of a refused value to the next one of the same value.
    static constexpr int kRetryInterval = 10000; // ms
    /// From one probe of any refused value to the next, however many there are.
    static constexpr int kShortestRetryPause = 1000; // ms

    /// `probeCategory` tells probes from other requests.
    CyclicReads(const DriverFunctions& driver, const ComInfo& settings, int probeCategory,
                int mostRefusals);

    /// Replaces the values; their rows are their places in `points`. The driver's list follows.
    /// What was found of values that stay holds: the value of row r was that of row formerRows[r],
    /// each of which stands once at most, or none where that is below 0.
    void start(const QVector<DataPoint>& points, const QVector<int>& formerRows);

    /// Entries of the driver's list.
    int entries() const { return int(m_entries.size()); }
    /// A cyclic request with these entries goes out.
    void requestSent(const QVector<FrameEntry>& entries);
    /// It was refused, which says nothing of its values when the login is doubted.
    void requestRefused(const QVector<FrameEntry>& entries, bool isLoginDoubted = false);

    const ReadTracker& probes() const { return m_probes; }
    /// Hands the driver the next probe, if there is one.
    void probe(qint64 now);
    /// When the next probe of a refused value is due; -1: none.
    qint64 retryAt() const;
    void probeSent(int entries) { m_probes.requestSent(entries); }
    void probeAccepted(const QVector<QByteArray>& blocks, qint64 sentAt);
    /// Returns the rows that are refused now.
    QVector<int> probeRefused(int entries, qint64 now, bool isLoginDoubted = false);

    void linkUp();
    void linkDown();
    /// Values of stations that are off are not read.
    void switchStation(int station, bool on);

private:
    enum class State { Listed, Suspect, Good, Refused };
    struct Row {
        DataPoint point;
        ScanValue value;
        State state = State::Listed;
    };

    void suspect(const QVector<int>& rows, int refusals);
    bool isStationOff(int row) const;
    QVector<int>::const_iterator nextRefused() const;
    void endSearchIfDone();
    void list();
    void rotateBehindLast();
    void fillDriver();

    const DriverFunctions& m_driver;
    const ComInfo& m_settings;
    const int m_mostRefusals;
    std::vector<Row> m_rows;
    QVector<ScanEntry> m_entries; ///< As in the driver's list, but for its rotation.
    ByteRange m_lastRead;         ///< The entry that was asked for last.
    ReadTracker m_probes;
    QVector<int> m_searched;     ///< Rows of the present search.
    bool m_foundRefused = false; ///< In the present search.
    int m_waitingGood = 0;       ///< Rows that are good again.
    QSet<int> m_stationsOff;
    QVector<int> m_refused; ///< In the order in which they are tried again.
    qint64 m_retryAt = 0;
};

} // namespace plc::host

#endif
