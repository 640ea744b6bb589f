#ifndef PLC_CLI_VALUE_CHANGES_H
#define PLC_CLI_VALUE_CHANGES_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "host/runtime/value_table.h"

namespace plc::cli {

/// Tells which values of a table there is something new of: they were read for the first time, have
/// changed, became stale, were refused, or are fresh again.
class ValueChanges {
public:
    /// The rows with news since the last call, in their order.
    QVector<int> take(const host::ValueTable& values, qint64 now);

private:
    /// A value as it was told last.
    struct Told {
        bool wasTold = false;
        bool isStale = false;
        bool isRefused = false;
        QByteArray bytes;
    };

    QVector<Told> m_told;
};

} // namespace plc::cli

#endif
