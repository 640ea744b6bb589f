#include "cli/value_changes.h"

namespace plc::cli {

QVector<int> ValueChanges::take(const host::ValueTable& values, qint64 now)
{
    QVector<int> rows;
    m_told.resize(values.size());
    for (int row = 0; row < values.size(); ++row) {
        const bool isStale = values.isStale(row, now);
        if (!values.wasRead(row) && !isStale)
            continue;
        Told& told = m_told[row];
        const bool isRefused = values.isRefused(row);
        if (told.wasTold && told.isStale == isStale && told.isRefused == isRefused &&
            told.bytes == values.bytes(row))
            continue;
        told = {true, isStale, isRefused, values.bytes(row)};
        rows.append(row);
    }
    return rows;
}

} // namespace plc::cli
