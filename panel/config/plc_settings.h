#ifndef PLC_PANEL_CONFIG_PLC_SETTINGS_H
#define PLC_PANEL_CONFIG_PLC_SETTINGS_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "configuration/label_rules.h"
#include "panel/alarms/alarm_settings.h"

namespace plc::panel {

/// One PLC of a panel.
struct PlcSettings {
    QString name;
    QString project;                ///< Path of the project file.
    std::optional<QString> address; ///< In place of the project's.
    std::optional<quint16> port;
    int cycleTime = 1000;    ///< ms from the start of one pass to that of the next.
    QVector<QString> record; ///< Labels and patterns; empty: those that the project reads.
    QVector<configuration::DeadbandRule> deadbands; ///< Of the recorder. The last that fits counts.
    /// What may be written; the last that fits a label counts. Nothing: all that the project has.
    std::optional<QVector<configuration::WritableRule>> writable;
    QVector<AlarmSettings> alarms;
};

} // namespace plc::panel

#endif
