#include "host/points/data_point.h"

#include "driver/plc_driver.h"
#include "project/label_syntax.h"
#include "project/memory_layout.h"
#include "project/value_limits.h"
#include "values/nearest_name.h"

namespace plc::host {

static_assert(project::kMostBytesOfValue == PLC_LARGEST_VALUE &&
                  project::kMostPiecesOfValue == PLC_MOST_PIECES,
              "projects are checked against the limits of the driver");
static_assert(values::kBitTypeCode == PLC_TYPE_BIT, "bits have one type code");
static_assert(project::kTextElementStride == PLC_STRING_DISTANCE,
              "projects lay arrays of texts out as the driver does");

Expected<DataPoint> DataPointFinder::find(const QString& text, project::Hints hints) const
{
    const project::CountedLabel counted = project::takeCountOff(text);
    if (counted.elements < 1) {
        return Error{QStringLiteral("%1: a number of elements is expected behind the *, not %2")
                         .arg(text, values::quoted(counted.count))};
    }
    return findElements(counted.label, counted.elements, hints);
}

Expected<DataPoint> DataPointFinder::find(const QString& label, int elements, int station) const
{
    Expected<DataPoint> point = findElements(label, elements, project::Hints::Given);
    if (point && m_settings.multiStation)
        point->station = station;
    return point;
}

Expected<void> DataPointFinder::check(const DataPoint& point) const
{
    if (point.elements < 1)
        return Error{QStringLiteral("the data point has %1 elements").arg(point.elements)};
    const Expected<DataPoint> found = find(point.label, point.elements, point.station);
    if (!found)
        return found.error();
    if (!isSamePlace(*found, point)) {
        return Error{QStringLiteral("%1: the data point is not what the label leads to in this "
                                    "program; take the one that is found by the label")
                         .arg(point.label)};
    }
    return {};
}

Expected<DataPoint> DataPointFinder::findElements(const QString& label, int elements,
                                                  project::Hints hints) const
{
    const Expected<project::LabelTarget> target = m_labels.find(label, hints);
    if (!target)
        return Error{QStringLiteral("%1: %2").arg(label, target.error().text)};
    if (elements > target->elements) {
        return Error{QStringLiteral("%1*%2: only %3 element(s) of the array are left from there on")
                         .arg(label)
                         .arg(elements)
                         .arg(target->elements)};
    }
    const Expected<void> fits =
        project::checkValueLimits(*target->variable, elements, m_settings.maxReadBytes);
    if (!fits)
        return Error{QStringLiteral("%1*%2: %3").arg(label).arg(elements).arg(fits.error().text)};
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
