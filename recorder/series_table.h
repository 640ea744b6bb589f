#ifndef PLC_RECORDER_SERIES_TABLE_H
#define PLC_RECORDER_SERIES_TABLE_H

#include <QtCore/QHash>
#include <QtCore/QVector>

#include "database/sqlite_database.h"
#include "recorder/series.h"

namespace plc::recorder {

/// All series of a recording, in the order of their numbers; nothing when they cannot be read.
std::optional<QVector<Series>> loadSeries(database::SqliteDatabase* database);

bool insertSeries(database::SqliteDatabase* database, const Series& series);

/// Finds the numbers of series.
class SeriesTable {
public:
    SeriesTable() = default;
    explicit SeriesTable(const QVector<Series>& series);

    /// The number of the series, which is added where it is new.
    int find(const SeriesDescription& description);
    int size() const { return int(m_series.size()); }
    const Series& operator[](int index) const { return m_series[index]; }
    /// Null for a number that no series has.
    const SeriesDescription* description(int id) const;

private:
    void add(const Series& series);

    QVector<Series> m_series;
    QHash<QString, QVector<int>> m_byLabel; ///< Indices.
    QHash<int, int> m_byId;                 ///< Indices.
    int m_lastId = 0;
};

} // namespace plc::recorder

#endif
