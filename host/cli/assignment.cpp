#include "host/cli/assignment.h"

#include "host/project/nearest_name.h"
#include "host/value_codec.h"

namespace plc {

std::optional<Assignment> parseAssignment(const DataPointFinder& points, const QString& text,
                                          QString* error)
{
    const int sign = int(text.indexOf(QLatin1Char('=')));
    if (sign < 0) {
        *error = QStringLiteral("LABEL=VALUE is expected, not %1").arg(quoted(text));
        return {};
    }
    const std::optional<DataPoint> point = points.find(text.left(sign).trimmed(), error);
    if (!point)
        return {};
    const std::optional<QVector<Value>> values = parsePoint(*point, text.mid(sign + 1), error);
    return values ? std::optional<Assignment>(Assignment{*point, *values}) : std::nullopt;
}

} // namespace plc
