#ifndef PLC_RECORDER_REMOVAL_H
#define PLC_RECORDER_REMOVAL_H

#include <QtCore/QVector>

#include <optional>

#include "database/sqlite_database.h"
#include "recorder/run.h"

namespace plc::recorder {

/// Where a recording begins, once its oldest part was removed.
struct Horizon {
    qint64 run = 0;
    qint64 time = 0;
};

inline bool operator<(const Horizon& a, const Horizon& b)
{
    return a.run < b.run || (a.run == b.run && a.time < b.time);
}

std::optional<Horizon> loadHorizon(database::SqliteDatabase* database);

/// The horizon behind the oldest so many bytes of the blocks; nothing when they cannot be read.
std::optional<Horizon> horizonOfBytes(database::SqliteDatabase* database, qint64 bytes);

/// The horizon at a time, in the last run that was recorded there. Without runs that of nothing.
Horizon horizonOfTime(const QVector<Run>& runs, qint64 time);

/// Removes what is older, inside a transaction in which there are no batches. What the series held
/// at the horizon stays.
bool removeBefore(database::SqliteDatabase* database, const Horizon& horizon);

} // namespace plc::recorder

#endif
