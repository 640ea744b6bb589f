#ifndef PLC_RECORDER_RECENT_SAMPLES_H
#define PLC_RECORDER_RECENT_SAMPLES_H

#include <QtCore/QHash>
#include <QtCore/QPair>
#include <QtCore/QVector>

#include "database/sqlite_database.h"
#include "recorder/sample_block.h"

namespace plc::recorder {

/// What the batches have of some series, put together by series and run as it will be in blocks.
class RecentSamples {
public:
    /// Goes through the batches once. Returns false after a failure of the database.
    bool load(database::SqliteDatabase* database, const QVector<int>& series);
    /// In the form of a block; empty where there are none.
    QByteArray block(int series, qint64 run) const { return m_blocks[{series, run}].block(); }

private:
    QHash<QPair<int, qint64>, SampleEncoder> m_blocks;
};

} // namespace plc::recorder

#endif
