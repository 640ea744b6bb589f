#include "gateway/model/metric_name.h"

#include "values/iec_types.h"

namespace plc::gateway {

QString metricName(const host::DataPoint& point)
{
    QString name;
    name.reserve(int(point.label.size()) + 8);
    for (const QChar character : point.label) {
        if (character == QLatin1Char('.') || character == QLatin1Char('[') ||
            character == QLatin1Char(','))
            name += QLatin1Char('/');
        else if (character != QLatin1Char(']') && !character.isSpace())
            name += character;
    }
    if (point.elements > 1) {
        const qint64 first = name.mid(name.lastIndexOf(QLatin1Char('/')) + 1).toLongLong();
        name += QStringLiteral("..%1").arg(first + point.elements - 1);
    }
    return name;
}

QString typeText(const host::DataPoint& point)
{
    QString text = QString::fromLatin1(point.type->name);
    if (values::isText(*point.type))
        text += QStringLiteral("(%1)").arg(point.stringLength);
    if (point.elements > 1)
        text += QStringLiteral("*%1").arg(point.elements);
    return text;
}

} // namespace plc::gateway
