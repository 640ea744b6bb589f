#include "cli/assignment.h"

#include "host/points/value_codec.h"
#include "values/nearest_name.h"

namespace plc::cli {

Expected<Assignment> parseAssignment(const host::DataPointFinder& points, const QString& text)
{
    const int sign = int(text.indexOf(QLatin1Char('=')));
    if (sign < 0)
        return Error{QStringLiteral("LABEL=VALUE is expected, not %1").arg(values::quoted(text))};
    const Expected<host::DataPoint> point = points.find(text.left(sign).trimmed());
    if (!point)
        return point.error();
    const Expected<QVector<values::Value>> values = host::parsePoint(*point, text.mid(sign + 1));
    if (!values)
        return values.error();
    return Assignment{*point, *values};
}

} // namespace plc::cli
