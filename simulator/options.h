#ifndef PLC_SIMULATOR_OPTIONS_H
#define PLC_SIMULATOR_OPTIONS_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

#include <optional>

#include "options/option.h"
#include "project/project.h"
#include "simulator/reply_faults.h"

namespace plc::simulator {

constexpr int kHighestPort = 65535;

enum class Verbosity { Quiet, Normal, Verbose };

/// What the command line of the simulator may have.
struct Options {
    QString projectFile;
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    std::optional<quint16> port; ///< Not given: the project's.
    Verbosity verbosity = Verbosity::Normal;
    quint32 seed = 1;
    int mostClients = 256;
    int plants = 1;
    int fragment = 0;
    bool join = false;
    bool refuseLogin = false;
    bool failWrites = false;
    ReplyFaults faults;
    /// Help or version text: to be printed, and nothing else done.
    QString information;

    /// Each option; the readers write into this object.
    options::Table table();
    /// What it does, how it misbehaves, and what it tells of itself.
    options::Table behaviourTable();
    options::Table faultTable();
    options::Table informationTable();

private:
    bool m_isQuiet = false;
    bool m_isVerbose = false;
    bool m_wantsHelp = false;
    bool m_wantsVersion = false;

    friend Expected<Options> readOptions(const QStringList& arguments);
};

/// Reads the command line, whose first element is the program.
Expected<Options> readOptions(const QStringList& arguments);

/// Whether the project is small enough to be simulated, so many times.
Expected<void> checkSize(const project::Project& project, int plants);

} // namespace plc::simulator

#endif
