#ifndef PLC_SIMULATOR_OPTIONS_H
#define PLC_SIMULATOR_OPTIONS_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

#include <optional>

#include "project/project.h"
#include "simulator/reply_faults.h"

namespace plc::simulator {

enum class Verbosity { Quiet, Normal, Verbose };

/// The command line of the simulator.
struct Options {
    QString projectFile;
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    std::optional<quint16> port; ///< Not given: the project's.
    Verbosity verbosity = Verbosity::Normal;
    quint32 seed = 1;
    int mostClients = 256;
    int fragment = 0;
    bool join = false;
    bool refuseLogin = false;
    bool failWrites = false;
    ReplyFaults faults;
    /// Help or version text: to be printed, and nothing else done.
    QString information;
};

/// Reads the command line, whose first element is the program. Returns nothing and sets `error` if
/// it is wrong.
std::optional<Options> readOptions(const QStringList& arguments, QString* error);

/// Whether the project is small enough to be simulated; sets `error` if not.
bool checkSize(const project::Project& project, QString* error);

} // namespace plc::simulator

#endif
