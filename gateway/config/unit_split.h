#ifndef PLC_GATEWAY_CONFIG_UNIT_SPLIT_H
#define PLC_GATEWAY_CONFIG_UNIT_SPLIT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "values/expected.h"

namespace plc::gateway {

/// PLCs of one process, unless told otherwise.
constexpr int kUsualDevices = 50;

/// What a list of PLCs is divided by.
struct SplitTask {
    /// A configuration with one device, which has what all devices share.
    QByteArray pattern;
    QString patternName; ///< Stands for the file in errors.
    /// CSV with the columns name, project, address, port and cycle in any order, of which only the
    /// name must be there; an empty field stands for what the pattern's device has.
    QString list;
    QString listName;
    int devices = kUsualDevices; ///< Of one process at most.
    /// Where the pattern lies, and where the configurations will. Projects, passwords, keys and
    /// certificates stay where they are: their relative paths, also those of the list, lead from
    /// the one, and will lead from the other. Empty: from the same folder.
    QString patternFolder;
    QString folder;
};

/// The configuration of one process.
struct UnitConfiguration {
    QString fileName; ///< "Hall-1-01.json"
    QByteArray json;
};

/// A configuration for the first 50 PLCs of the list, one for the next 50, and so on: PLCs that are
/// added at the end of the list leave all others where they are. The second one has the node
/// NODE-02, the pattern's port for metrics plus one, and of what the process itself writes paths
/// with -02 behind their name, except such as lie in the service's own folders. An error names file
/// and line.
Expected<QVector<UnitConfiguration>> splitUnits(const SplitTask& task);

/// What writeUnits() did; names of files.
struct UnitChanges {
    QStringList added;
    QStringList replaced;
    QStringList unchanged;
    /// Numbered files of the same node that the units do not have: of a longer list, once.
    QStringList leftOver;
};

/// Writes the configurations into a folder, each whole or not at all. Files that are there with
/// another content are replaced only if `replaces`; else they are an error, and nothing is written.
Expected<UnitChanges> writeUnits(const QVector<UnitConfiguration>& units, const QString& folder,
                                 bool replaces);

} // namespace plc::gateway

#endif
