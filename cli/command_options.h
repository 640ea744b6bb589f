#ifndef PLC_CLI_COMMAND_OPTIONS_H
#define PLC_CLI_COMMAND_OPTIONS_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "options/option.h"
#include "project/project.h"

namespace plc::cli {

/// What every command takes. Those of one command, with its table, stand beside it.
struct CommandOptions {
    QStringList arguments; ///< Behind the command.
    bool wantsHelp = false;
    bool wantsVersion = false;

    virtual ~CommandOptions() = default;

    /// The table of the command; its readers write into this object.
    virtual options::Table table();
    /// Tells what does not go together in what was read.
    virtual Expected<void> check() { return {}; }
    /// Whether the command needs a project, and none is given.
    virtual bool lacksProject() const { return false; }
    /// The file with further arguments; empty: none.
    virtual QString fileOfArguments() const { return QString(); }
};

/// Those of a command that works on a project.
struct ProjectOptions : CommandOptions {
    QString projectFile = qEnvironmentVariable("PLC_PROJECT");
    QString driverFile; ///< Empty: to be looked for.
    bool json = false;

    options::Table table() override;
    bool lacksProject() const override { return projectFile.isEmpty(); }
    /// Puts what stands here instead of what the project has.
    virtual void applyTo(project::Project* project) const { Q_UNUSED(project) }
};

/// Those of a command that connects to the PLC.
struct LinkOptions : ProjectOptions {
    QString address;       ///< Empty: the project's.
    int port = 0;          ///< 0: the project's.
    int timeout = 0;       ///< ms; 0: the project's.
    bool readOnly = false; ///< Whatever the project says.
    bool trace = false;
    QString captureFile; ///< Empty: none.
    bool force = false;  ///< Files that exist are replaced.

    options::Table table() override;
    Expected<void> check() override;
    void applyTo(project::Project* project) const override;
};

constexpr int kUsualCycleTime = 100; ///< ms

/// Those of a command that reads values again and again.
struct CyclicOptions : LinkOptions {
    QString labelFile;               ///< CSV with further labels; empty: none.
    int duration = 0;                ///< ms; 0: without end.
    int cycleTime = kUsualCycleTime; ///< ms
    QVector<int> stationsOff;

    options::Table table() override;
    QString fileOfArguments() const override { return labelFile; }
};

constexpr int kLongestTime = 24 * 60 * 60 * 1000; ///< ms

/// The option --labels.
options::Option labelFileOption(QString* labelFile);

/// The option --interval of a command, with what it does in `help` and `manual`.
options::Option intervalOption(int* interval, const char* help, const char* manual);

/// The option --csv.
options::Option csvOption(bool* csv);

/// Why --csv and --json are not given together.
Error csvAndJson();

} // namespace plc::cli

#endif
