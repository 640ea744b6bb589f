#ifndef PLC_GATEWAY_SPARKPLUG_ARRAY_BYTES_H
#define PLC_GATEWAY_SPARKPLUG_ARRAY_BYTES_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "host/points/data_point.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::gateway {

/// Several elements as one metric carries them: numbers one behind the other, least significant
/// byte first; truth values as bits, the first in the highest bit of its byte, behind their count
/// in four bytes; texts in UTF-8, each with a zero behind it.
QByteArray arrayBytes(const host::DataPoint& point, const QVector<values::Value>& values);

/// The values of a data point that is no text from such bytes, which must hold all of its elements
/// and nothing else.
Expected<QVector<values::Value>> arrayValues(const host::DataPoint& point, const QByteArray& bytes);

} // namespace plc::gateway

#endif
