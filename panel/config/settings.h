#ifndef PLC_PANEL_CONFIG_SETTINGS_H
#define PLC_PANEL_CONFIG_SETTINGS_H

#include <QtCore/QStringList>

#include "panel/config/plc_settings.h"
#include "values/expected.h"

namespace plc::panel {

/// More of them would make one process too large to lose.
constexpr int kMostPlcs = 64;

/// What is kept of the past.
struct RecordSettings {
    QString file;    ///< Empty: nothing is recorded.
    qint64 size = 0; ///< Bytes on disk at most; 0: the recorder's own limit.
    qint64 age = 0;  ///< ms; 0: as long as there is room.
};

/// The configuration of a panel. Paths are absolute: in the file they may stand relative to its
/// folder, or to one of the service manager's, see configuration::resolvedPath().
struct PanelSettings {
    QString address = QStringLiteral("127.0.0.1"); ///< Empty: no TCP.
    quint16 port = 8080;
    QStringList hosts; ///< Names by which browsers reach it, beside the address and localhost.
    QString socket;    ///< Path of a Unix socket; empty: none.
    QString certificate;
    QString key;
    QString usersFile; ///< Empty: whoever reaches the panel may do everything.
    QString auditFile; ///< Empty: none.
    RecordSettings record;
    bool isReadOnly = false;
    QString recipes; ///< Folder; empty: there are none.
    QVector<PlcSettings> plcs;
};

/// Reads and checks a configuration. An error is one line that names the file, the path in the
/// document (`/plcs/0/name`), what was found and what was expected.
Expected<PanelSettings> loadSettings(const QString& path);

/// As loadSettings() from bytes; `name` stands for the file in errors, relative paths stay so.
Expected<PanelSettings> parseSettings(const QByteArray& json, const QString& name);

/// A PLC of each project, named as its file without the ending. An error names two of one name.
Expected<QVector<PlcSettings>> plcsOfProjects(const QStringList& projects);

} // namespace plc::panel

#endif
