#include "cli/assignment.h"

#include "host/points/value_codec.h"
#include "values/nearest_name.h"

namespace plc::cli {

std::optional<Assignment> parseAssignment(const host::DataPointFinder& points, const QString& text,
                                          QString* error)
{
    const int sign = int(text.indexOf(QLatin1Char('=')));
    if (sign < 0) {
        *error = QStringLiteral("LABEL=VALUE is expected, not %1").arg(values::quoted(text));
        return {};
    }
    const std::optional<host::DataPoint> point = points.find(text.left(sign).trimmed(), error);
    if (!point)
        return {};
    const std::optional<QVector<values::Value>> values =
        host::parsePoint(*point, text.mid(sign + 1), error);
    return values ? std::optional<Assignment>(Assignment{*point, *values}) : std::nullopt;
}

} // namespace plc::cli
