#ifndef PLC_SIMULATOR_CONTROL_COMMANDS_H
#define PLC_SIMULATOR_CONTROL_COMMANDS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

#include "project/label_lookup.h"
#include "simulator/plc_memory.h"
#include "simulator/plc_server.h"

namespace plc::simulator {

/// Commands that steer a running simulator, one a line. Every answer begins with "ok" or "error:".
class ControlCommands {
public:
    /// All must outlive it; `stop` ends the simulator.
    ControlCommands(const project::Project& project, PlcMemory* memory, PlcServer* server,
                    ConnectionSettings* settings, std::function<void()> stop);

    /// Carries out one line and returns the answer, which has no line end; empty for an empty line.
    QString execute(const QString& line);

private:
    struct Command {
        const char* usage; ///< Begins with the name.
        const char* purpose;
        int arguments; ///< The last takes all that is left of the line.
        QString (ControlCommands::*run)(const QStringList& arguments);
    };
    static const Command kCommands[];

    QString set(const QStringList& arguments);
    QString get(const QStringList& arguments);
    QString poke(const QStringList& arguments);
    QString peek(const QStringList& arguments);
    QString delay(const QStringList& arguments);
    QString fragment(const QStringList& arguments);
    QString join(const QStringList& arguments);
    QString drop(const QStringList& arguments);
    QString late(const QStringList& arguments);
    QString half(const QStringList& arguments);
    QString duplicate(const QStringList& arguments);
    QString refuseLogin(const QStringList& arguments);
    QString failWrites(const QStringList& arguments);
    QString disconnectClients(const QStringList& arguments);
    QString offline(const QStringList& arguments);
    QString online(const QStringList& arguments);
    QString status(const QStringList& arguments);
    QString help(const QStringList& arguments);
    QString stop(const QStringList& arguments);

    project::LabelFinder m_finder;
    PlcMemory* m_memory;
    PlcServer* m_server;
    ConnectionSettings* m_settings;
    std::function<void()> m_stop;
};

} // namespace plc::simulator

#endif
