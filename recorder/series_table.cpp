#include "recorder/series_table.h"

#include <algorithm>

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

std::optional<QVector<Series>> loadSeries(SqliteDatabase* database)
{
    SqliteStatement rows(*database,
                         "SELECT id, source, label, type, elements, capacity, unit, deadband"
                         " FROM series ORDER BY id");
    if (!rows.isPrepared())
        return {};
    QVector<Series> all;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step()) {
        Series series;
        series.id = int(rows.number(0));
        series.description.source = rows.text(1);
        series.description.label = rows.text(2);
        series.description.type = values::findIecType(rows.text(3));
        series.description.elements = int(rows.number(4));
        series.description.stringLength = int(rows.number(5));
        series.description.unit = rows.text(6);
        series.description.deadband = rows.real(7);
        all.append(series);
    }
    return step == SqliteStatement::Done ? std::optional(all) : std::nullopt;
}

bool insertSeries(SqliteDatabase* database, const Series& series)
{
    const SeriesDescription& description = series.description;
    SqliteStatement insert(*database, "INSERT INTO series VALUES(?, ?, ?, ?, ?, ?, ?, ?)");
    if (!insert.isPrepared())
        return false;
    insert.bind(0, qint64(series.id))
        .bind(1, description.source)
        .bind(2, description.label)
        .bind(3, description.type ? QString::fromLatin1(description.type->name) : QString())
        .bind(4, qint64(description.elements))
        .bind(5, qint64(description.stringLength))
        .bind(6, description.unit)
        .bind(7, std::optional<double>(description.deadband));
    return insert.step() == SqliteStatement::Done;
}

SeriesTable::SeriesTable(const QVector<Series>& series)
{
    for (const Series& one : series)
        add(one);
}

int SeriesTable::find(const SeriesDescription& description)
{
    for (int index : m_byLabel.value(description.label)) {
        if (m_series[index].description == description)
            return m_series[index].id;
    }
    add({m_lastId + 1, description});
    return m_lastId;
}

const SeriesDescription* SeriesTable::description(int id) const
{
    const auto found = m_byId.constFind(id);
    return found == m_byId.constEnd() ? nullptr : &m_series[*found].description;
}

void SeriesTable::add(const Series& series)
{
    m_byLabel[series.description.label].append(int(m_series.size()));
    m_byId.insert(series.id, int(m_series.size()));
    m_series.append(series);
    m_lastId = std::max(m_lastId, series.id);
}

} // namespace plc::recorder
