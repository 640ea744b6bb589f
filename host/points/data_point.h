#ifndef PLC_HOST_POINTS_DATA_POINT_H
#define PLC_HOST_POINTS_DATA_POINT_H

#include <QtCore/QString>

#include <optional>

#include "host/driver/driver_library.h"
#include "project/label_lookup.h"
#include "project/project.h"
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

/// Finds the data points of a project. The project tells the type and whether a label makes sense
/// at all; the address comes from the driver, which reads and writes by its own arithmetic.
class DataPointFinder {
public:
    /// The driver must have the project's symbols. Both must outlive the finder.
    DataPointFinder(const project::Project& project, const DriverFunctions& driver)
        : m_settings(project.settings), m_labels(project), m_driver(driver)
    {
    }

    /// `text` is a label, or "LABEL*N" for N elements of an array from that label on. On failure
    /// returns nothing and sets `error`.
    std::optional<DataPoint> find(const QString& text, QString* error) const;
    std::optional<DataPoint> find(const project::CyclicLabel& cyclic, QString* error) const;

private:
    std::optional<DataPoint> find(const QString& label, int elements, QString* error) const;

    const project::ProjectSettings& m_settings;
    project::LabelFinder m_labels;
    const DriverFunctions& m_driver;
};

} // namespace plc::host

#endif
