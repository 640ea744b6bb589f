#ifndef PLC_PANEL_API_HISTORY_QUERIES_H
#define PLC_PANEL_API_HISTORY_QUERIES_H

#include <QtCore/QStringList>
#include <QtCore/QThreadPool>

#include <atomic>
#include <functional>
#include <memory>

#include "panel/http/response.h"
#include "recorder/reader.h"

namespace plc::panel {

/// What is asked of the past of one PLC.
struct HistoryQuestion {
    QString plc;
    QStringList labels;
    qint64 from = 0; ///< Milliseconds since 1970-01-01T00:00:00Z; to: behind the last.
    qint64 to = 0;
    int points = 0; ///< Of each series at most.
};

/// Reads a recording, in a thread of its own: neither values nor requests wait for the disk.
///
/// Thread safety: all functions may be called by any thread.
class HistoryQueries {
public:
    static constexpr int kMostWaiting = 32;
    static constexpr int kMostRows = 500000; ///< Of a CSV.

    explicit HistoryQueries(const QString& file);
    ~HistoryQueries();

    /// {"from","to","series":[…]}
    void readSeries(const HistoryQuestion& question, const Responder& respond);
    /// Every change exactly.
    void readCsv(const HistoryQuestion& question, const Responder& respond);

    /// Other work that waits for a disk.
    void submit(const Responder& respond, std::function<Response()> work);

private:
    Expected<recorder::Reader*> reader();
    Expected<QVector<recorder::Series>> seriesOf(const HistoryQuestion& question);
    Response seriesResponse(const HistoryQuestion& question);
    Response csvResponse(const HistoryQuestion& question);

    const QString m_file;
    std::unique_ptr<recorder::Reader> m_reader; ///< Of the one thread of the pool.
    std::atomic<int> m_waiting{0};
    QThreadPool m_pool; ///< Ends before what its thread uses.
};

} // namespace plc::panel

#endif
