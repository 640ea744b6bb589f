#ifndef PLC_CLI_STATS_REPORT_H
#define PLC_CLI_STATS_REPORT_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "host/report/link_statistics.h"

namespace plc::cli {

/// What `plc stats` tells.
struct StatsReport {
    host::LinkStatistics link;
    quint64 bytesSent = 0;
    quint64 bytesReceived = 0;
    quint64 values = 0;  ///< Read so far; a value that was read twice counts twice.
    qint64 duration = 0; ///< ms
};

QStringList statsLines(const StatsReport& report);

/// One JSON object; times in milliseconds.
QString statsJson(const StatsReport& report);

} // namespace plc::cli

#endif
