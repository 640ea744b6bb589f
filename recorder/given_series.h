#ifndef PLC_RECORDER_GIVEN_SERIES_H
#define PLC_RECORDER_GIVEN_SERIES_H

#include <optional>

#include "recorder/change.h"
#include "recorder/series_table.h"

namespace plc::recorder {

/// The series of a recorder by the numbers that it told, which stay the same when it goes on in
/// another file.
class GivenSeries {
public:
    /// Of the file that is recorded into.
    void changeFile(const QVector<Series>& stored)
    {
        if (m_isInFile && !m_given)
            m_given = m_stored;
        m_isInFile = true;
        m_stored = SeriesTable(stored);
        m_ids.clear();
    }

    int find(const SeriesDescription& description) { return given().find(description); }
    /// Null for a number that no series has.
    const SeriesDescription* description(int id) const
    {
        return m_given ? m_given->description(id) : m_stored.description(id);
    }

    /// Those of the file, with those that are to come into it.
    const SeriesTable& stored() const { return m_stored; }
    /// With the numbers that the series have there.
    QVector<Change> asStored(QVector<Change> changes)
    {
        for (int i = 0; m_given && i < int(changes.size()); ++i) {
            auto id = m_ids.constFind(changes[i].series);
            if (id == m_ids.constEnd())
                id = m_ids.insert(changes[i].series,
                                  m_stored.find(*m_given->description(changes[i].series)));
            changes[i].series = *id;
        }
        return changes;
    }

private:
    SeriesTable& given() { return m_given ? *m_given : m_stored; }

    bool m_isInFile = false;
    SeriesTable m_stored;
    std::optional<SeriesTable> m_given; ///< Once its numbers are others than those of the file.
    QHash<int, int> m_ids;              ///< In the file.
};

} // namespace plc::recorder

#endif
