#ifndef PLC_VALUES_PROMETHEUS_LABEL_H
#define PLC_VALUES_PROMETHEUS_LABEL_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::values {

/// A text as it stands in the quotes of a label of Prometheus.
inline QByteArray prometheusLabel(const QString& text)
{
    QByteArray escaped = text.toUtf8();
    return escaped.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
}

} // namespace plc::values

#endif
