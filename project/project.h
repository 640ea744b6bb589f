#ifndef PLC_PROJECT_PROJECT_H
#define PLC_PROJECT_PROJECT_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "project/symbols.h"
#include "values/expected.h"

namespace plc::project {

struct ProjectSettings {
    int maxReadBytes = 200; ///< bytes of one read entry at most
    int defaultStation = 0;
    bool multiStation = false;
    int retryLimit = 2;        ///< failed replies tolerated in one transaction
    int connectTimeout = 3000; ///< ms
    int replyTimeout = 1000;   ///< ms, for a whole reply
    int reconnectDelay = 500;  ///< ms after the first failure; doubled up to reconnectDelayLimit
    int reconnectDelayLimit = 10000; ///< ms
    int staleAfter = 3000;           ///< ms after which a value is shown as stale
    bool readOnly = false;           ///< nothing is ever written
};

/// A cyclically read value: a label, and for an array slice the elements from that label on.
struct CyclicLabel {
    QString label;
    int elements = 1;
    int station = 0; ///< counts only while settings.multiStation is set
};

struct Project : Symbols {
    QString name;
    QString address = QStringLiteral("127.0.0.1");
    quint16 port = 1200;
    ProjectSettings settings;
    QVector<MemoryArea> areas;
    QVector<CyclicLabel> cyclic;
};

/// Whether variables of scopes may share memory without being marked as overlays.
enum class SharedMemoryRule { Refused, Allowed };

/// Reads and checks the project file at `path`. An error is one line that names the file, the path
/// in the document (`/scopes/0/variables/3/type`), what was found and what was expected.
Expected<Project> loadProject(const QString& path,
                              SharedMemoryRule rule = SharedMemoryRule::Refused);

/// What the PLC of the project file at `path` is called where nobody has named it: as the file,
/// without its last ending. Values are recorded by this name.
QString plcName(const QString& path);

/// As loadProject() from bytes; `name` stands for the file in errors.
Expected<Project> parseProject(const QByteArray& json, const QString& name,
                               SharedMemoryRule rule = SharedMemoryRule::Refused);

} // namespace plc::project

#endif
