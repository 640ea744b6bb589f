#include "cli/assignment.h"

#include "host/points/value_codec.h"
#include "values/nearest_name.h"

namespace plc::cli {

Expected<Assignment> parseAssignment(const host::DataPointFinder& points, const QString& text)
{
    const int sign = int(text.indexOf(QLatin1Char('=')));
    if (sign < 0)
        return Error{QStringLiteral("LABEL=VALUE is expected, not %1").arg(values::quoted(text))};
    QString error;
    const std::optional<host::DataPoint> point = points.find(text.left(sign).trimmed(), &error);
    if (!point)
        return Error{error};
    const std::optional<QVector<values::Value>> values =
        host::parsePoint(*point, text.mid(sign + 1), &error);
    if (!values)
        return Error{error};
    return Assignment{*point, *values};
}

} // namespace plc::cli
