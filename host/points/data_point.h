#ifndef PLC_HOST_POINTS_DATA_POINT_H
#define PLC_HOST_POINTS_DATA_POINT_H

#include <QtCore/QString>

#include "host/driver/driver_functions.h"
#include "project/label_lookup.h"
#include "project/symbols.h"
#include "values/expected.h"
#include "values/export.h"
#include "values/iec_types.h"

namespace plc::host {

/// One value of an elementary type, or some elements of an array of them, that the host reads and
/// writes by its label.
struct DataPoint {
    QString text;  ///< As users write it: the label, and "*N" behind it for N elements.
    QString label; ///< As the driver takes it.
    const values::IecType* type = nullptr;
    int stringLength = 0; ///< Capacity in characters of a STRING or WSTRING.
    int elements = 1;
    int area = 0;
    int address = 0; ///< In bytes; in bits for BIT.
    int station = 0;
    QString unit;
    QString description;
};

/// Whether both are the same bytes of a PLC with the same meaning, by whatever text they were
/// found.
inline bool isSamePlace(const DataPoint& a, const DataPoint& b)
{
    return a.label == b.label && a.type == b.type && a.stringLength == b.stringLength &&
           a.elements == b.elements && a.area == b.area && a.address == b.address &&
           a.station == b.station;
}

/// The same, and both are shown alike.
inline bool isSameValue(const DataPoint& a, const DataPoint& b)
{
    return a.text == b.text && isSamePlace(a, b);
}

/// What of a host's settings data points depend on.
struct PointSettings {
    int maxReadBytes = 200; ///< Bytes of one entry of a read at most; above 0.
    int defaultStation = 0; ///< Of all values, but where `multiStation` is set.
    bool multiStation = false;
};

/// Finds the data points of a program. Its symbols tell the type and whether a label makes sense at
/// all; the address comes from the driver, which reads and writes by its own arithmetic.
class PLC_HOST_EXPORT DataPointFinder {
public:
    /// The driver must have the same symbols. Both must outlive the finder.
    DataPointFinder(const project::Symbols& symbols, const PointSettings& settings,
                    const DriverFunctions& driver)
        : m_settings(settings), m_labels(symbols), m_driver(driver)
    {
    }

    /// `text` is a label, or "LABEL*N" for N elements of an array from that label
    /// on.
    Expected<DataPoint> find(const QString& text,
                             project::Hints hints = project::Hints::Given) const;
    /// `elements` from a label on. `station` counts only where there are several.
    Expected<DataPoint> find(const QString& label, int elements, int station) const;

    /// Whether the data point is one that its label leads to. One that was made by hand, or by the
    /// finder of another program, may name other bytes than those that the driver goes to.
    Expected<void> check(const DataPoint& point) const;

private:
    Expected<DataPoint> findElements(const QString& label, int elements,
                                     project::Hints hints) const;

    const PointSettings m_settings;
    project::LabelFinder m_labels;
    const DriverFunctions& m_driver;
};

} // namespace plc::host

#endif
