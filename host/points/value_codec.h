#ifndef PLC_HOST_POINTS_VALUE_CODEC_H
#define PLC_HOST_POINTS_VALUE_CODEC_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "host/points/data_point.h"
#include "values/expected.h"
#include "values/export.h"
#include "values/value_text.h"

namespace plc::host {

/// The elements of a data point, from the buffer that GetRegisterData() fills.
PLC_HOST_EXPORT QVector<values::Value> decodeValues(const DataPoint& point,
                                                    const QByteArray& buffer);

/// One of them; of a data point that is no array the first, which is all there is.
PLC_HOST_EXPORT values::Value decodeValue(const DataPoint& point, const QByteArray& buffer,
                                          int index = 0);

/// What SetRegisterData() takes.
struct WriteBuffer {
    QByteArray bytes;
    int count = 0;
    int wireBytes = 0; ///< Bytes that go to the PLC; for BIT the bits.
};

/// An error if these are not exactly the values of the data point: another number of them, of
/// another kind, out of the range of its type, or a text that has no room.
PLC_HOST_EXPORT Expected<WriteBuffer> encodeValues(const DataPoint& point,
                                                   const QVector<values::Value>& values);

/// One value as valueText() shows it; several as "[1, 2, 3]".
PLC_HOST_EXPORT QString pointText(const DataPoint& point, const QVector<values::Value>& values);

/// One value as valueJson() shows it; several as an array.
PLC_HOST_EXPORT QString pointJson(const DataPoint& point, const QVector<values::Value>& values);

/// As many values as the data point has elements; several separated by commas, with or without
/// brackets around them. An error names the label.
PLC_HOST_EXPORT Expected<QVector<values::Value>> parsePoint(const DataPoint& point,
                                                            const QString& text);

} // namespace plc::host

#endif
