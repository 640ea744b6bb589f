#ifndef PLC_EXCHANGE_SHOWN_UNIT_H
#define PLC_EXCHANGE_SHOWN_UNIT_H

#include <QtCore/QString>

#include "host/points/data_point.h"

namespace plc::exchange {

/// The unit in which a value is told; empty if there is none. TIME is told in milliseconds.
inline QString shownUnit(const host::DataPoint& point)
{
    const bool isTime = point.type->format == values::ValueFormat::Duration;
    return point.unit.isEmpty() && isTime ? QStringLiteral("ms") : point.unit;
}

} // namespace plc::exchange

#endif
