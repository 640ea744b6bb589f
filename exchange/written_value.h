#ifndef PLC_EXCHANGE_WRITTEN_VALUE_H
#define PLC_EXCHANGE_WRITTEN_VALUE_H

#include <QtCore/QVector>

#include "host/points/data_point.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::exchange {

/// The value of a data point that a consumer means by `given`: a truth value for BOOL and BIT, a
/// text for STRING and WSTRING, milliseconds for TIME, a number for the others. It must be in the
/// range of the type; a number that is none (NaN, infinite) is refused.
Expected<values::Value> writtenValue(const host::DataPoint& point, const values::Value& given);

/// As many as the data point has elements. Texts are written one by one, each as a data point of
/// its own.
Expected<QVector<values::Value>> writtenValues(const host::DataPoint& point,
                                               const QVector<values::Value>& given);

} // namespace plc::exchange

#endif
