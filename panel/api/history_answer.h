#ifndef PLC_PANEL_API_HISTORY_ANSWER_H
#define PLC_PANEL_API_HISTORY_ANSWER_H

#include "panel/api/recorded_labels.h"

namespace plc::panel {

/// What is asked of the past of one PLC.
struct HistoryQuestion {
    AskedLabels asked;
    qint64 from = 0; ///< Milliseconds since 1970-01-01T00:00:00Z; to: behind the last.
    qint64 to = 0;
    int points = 0; ///< Of each series at most.
};

/// How much one answer may have; it is in memory as a whole.
struct HistoryLimits {
    qint64 bytes = qint64(32) * 1000 * 1000;
    qint64 changes = 100000; ///< Of a series of which no aggregates are made.
    qint64 rows = 500000;    ///< Of a CSV.
};

/// {"from","to","series":[…]}
Response seriesAnswer(recorder::Reader* reader, const HistoryQuestion& question,
                      const HistoryLimits& limits);

/// Every change exactly, as CSV.
Response csvAnswer(recorder::Reader* reader, const HistoryQuestion& question,
                   const HistoryLimits& limits);

} // namespace plc::panel

#endif
