#ifndef PLC_PANEL_API_VALUE_READS_H
#define PLC_PANEL_API_VALUE_READS_H

#include <QtCore/QStringList>

#include <functional>

#include "panel/plants/plant.h"

namespace plc::panel {

/// What was found of a value that was asked for.
struct FoundValue {
    QString label;         ///< As it was asked for.
    host::DataPoint point; ///< Unless there is an error.
    LiveValue value;
    QString error; ///< Why the label leads to nothing.
};

/// Values of one PLC: those that are read all the time as they are known, others are asked for now.
/// `finished` is called once, perhaps at once; `time` gives milliseconds since 1970.
void readValues(Plant* plant, const QStringList& labels, const std::function<qint64()>& time,
                std::function<void(const QVector<FoundValue>&)> finished);

} // namespace plc::panel

#endif
