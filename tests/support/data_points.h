#ifndef PLC_TESTS_SUPPORT_DATA_POINTS_H
#define PLC_TESTS_SUPPORT_DATA_POINTS_H

#include "host/points/data_point.h"
#include "values/iec_types.h"

namespace plc::test {

/// Of "INT", "REAL*3", "STRING(20)*2".
inline host::DataPoint dataPoint(const char* type)
{
    QString name = QString::fromLatin1(type);
    host::DataPoint point;
    point.elements =
        name.contains(QLatin1Char('*')) ? name.section(QLatin1Char('*'), 1).toInt() : 1;
    name = name.section(QLatin1Char('*'), 0, 0);
    if (name.contains(QLatin1Char('(')))
        point.stringLength = name.section(QLatin1Char('('), 1).remove(QLatin1Char(')')).toInt();
    point.type = values::findIecType(name.section(QLatin1Char('('), 0, 0));
    return point;
}

} // namespace plc::test

#endif
