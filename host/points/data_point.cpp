#include "host/points/data_point.h"

#include "driver/plc_driver.h"
#include "project/value_limits.h"
#include "values/nearest_name.h"

namespace plc::host {

static_assert(project::kMostBytesOfValue == PLC_LARGEST_VALUE &&
                  project::kMostPiecesOfValue == PLC_MOST_PIECES,
              "projects are checked against the limits of the driver");

Expected<DataPoint> DataPointFinder::find(const QString& text) const
{
    const int star = int(text.lastIndexOf(QLatin1Char('*')));
    if (star < 0)
        return find(text, 1);
    const QString number = text.mid(star + 1);
    bool ok = false;
    const int elements = number.toInt(&ok, 10);
    if (!ok || elements < 1) {
        return Error{QStringLiteral("%1: a number of elements is expected behind the *, not %2")
                         .arg(text, values::quoted(number))};
    }
    return find(text.left(star), elements);
}

Expected<DataPoint> DataPointFinder::find(const QString& label, int elements, int station) const
{
    Expected<DataPoint> point = find(label, elements);
    if (point && m_settings.multiStation)
        point->station = station;
    return point;
}

Expected<DataPoint> DataPointFinder::find(const QString& label, int elements) const
{
    const Expected<project::LabelTarget> target = m_labels.find(label);
    if (!target)
        return Error{QStringLiteral("%1: %2").arg(label, target.error().text)};
    if (elements > target->elements) {
        return Error{QStringLiteral("%1*%2: only %3 element(s) of the array are left from there on")
                         .arg(label)
                         .arg(elements)
                         .arg(target->elements)};
    }
    const QString reason =
        project::valueLimitError(*target->variable, elements, m_settings.maxReadBytes);
    if (!reason.isEmpty())
        return Error{QStringLiteral("%1*%2: %3").arg(label).arg(elements).arg(reason)};
    DataPoint point;
    point.text = elements == 1 ? label : QStringLiteral("%1*%2").arg(label).arg(elements);
    point.label = label;
    point.type = target->variable->type;
    point.stringLength = target->variable->stringLength;
    point.elements = elements;
    point.area = target->area;
    point.address = m_driver.plcAddressChangeIntef(0, label);
    point.station = m_settings.defaultStation;
    point.unit = target->variable->unit;
    point.description = target->variable->description;
    if (qint64(point.address) != target->address) {
        return Error{QStringLiteral("%1: the driver finds it at address %2, the project at %3; the "
                                    "driver must be given this project's symbols")
                         .arg(label)
                         .arg(point.address)
                         .arg(target->address)};
    }
    return point;
}

} // namespace plc::host
