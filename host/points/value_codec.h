#ifndef PLC_HOST_POINTS_VALUE_CODEC_H
#define PLC_HOST_POINTS_VALUE_CODEC_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <optional>

#include "host/points/data_point.h"
#include "values/value_text.h"

namespace plc::host {

/// The elements of a data point, from the buffer that GetRegisterData() fills.
QVector<values::Value> decodeValues(const DataPoint& point, const QByteArray& buffer);

/// What SetRegisterData() takes.
struct WriteBuffer {
    QByteArray bytes;
    int count = 0;
    int wireBytes = 0; ///< Bytes that go to the PLC; for BIT the bits.
};

WriteBuffer encodeValues(const DataPoint& point, const QVector<values::Value>& values);

/// One value as valueText() shows it; several as "[1, 2, 3]".
QString pointText(const DataPoint& point, const QVector<values::Value>& values);

/// One value as valueJson() shows it; several as an array.
QString pointJson(const DataPoint& point, const QVector<values::Value>& values);

/// As many values as the data point has elements; several separated by commas, with or without
/// brackets around them. On failure returns nothing and sets `error`, which names the label.
std::optional<QVector<values::Value>> parsePoint(const DataPoint& point, const QString& text,
                                                 QString* error);

} // namespace plc::host

#endif
