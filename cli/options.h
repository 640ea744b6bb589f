#ifndef PLC_CLI_OPTIONS_H
#define PLC_CLI_OPTIONS_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <optional>

#include "iec/importer.h"

namespace plc::cli {

enum class Command {
    Run,
    Watch,
    Log,
    Read,
    Write,
    Resolve,
    Symbols,
    Import,
    Plan,
    Diagnose,
    Stats
};

/// Options of `plc log`.
struct LogOptions {
    QString output;         ///< The log, or the CSV file of an export.
    QString exported;       ///< The database to be exported; empty: values are logged.
    int every = 0;          ///< ms from record to record; 0: changes.
    qint64 rotateSize = 0;  ///< Bytes; 0: as large as it gets.
    qint64 rotateEvery = 0; ///< ms; 0: without end.
    int keep = 0;           ///< Older files; 0: all.
};

/// Options of `plc symbols`.
struct SymbolsOptions {
    bool tree = false;
    int depth = 0; ///< Levels of the tree; 0: all.
    bool check = false;
    int gap = 1; ///< Bytes of the smallest gap that is listed.
};

/// Options of `plc import`.
struct ImportOptions {
    iec::ImportOptions places;
    QString output; ///< Empty: the standard output.
    QString merged; ///< The project that the symbols are put into; empty: a new one.
    QString name;   ///< Of a new project; empty: that of the first file.
    bool allWarnings = false;
};

/// Whether the log's file is a database, by its suffix, and not CSV.
bool isDatabase(const QString& logFile);

/// The command line, checked.
struct Options {
    Command command = Command::Run;
    QStringList arguments; ///< Behind the command.
    QString projectFile;
    QString driverFile; ///< Empty: to be looked for.
    QString address;    ///< Empty: the project's.
    int port = 0;       ///< 0: the project's.
    int timeout = 0;    ///< ms; 0: the project's.
    bool json = false;
    bool csv = false;
    QString labelFile; ///< CSV with further arguments; empty: none.
    bool trace = false;
    QString captureFile;   ///< Empty: none.
    bool readOnly = false; ///< Whatever the project says.
    bool force = false;    ///< Files that exist are replaced.
    bool once = false;
    int duration = 0;    ///< ms; 0: without end.
    int interval = 0;    ///< ms; 0: as suits the kind of output.
    int cycleTime = 100; ///< ms
    QVector<int> stationsOff;
    LogOptions log;
    SymbolsOptions symbols;
    ImportOptions import;
    double roundTrip = 1;   ///< ms
    double bandwidth = 100; ///< Mbit/s
    /// What is asked for instead of a command: help or the version.
    QString information;
};

/// Reads the command line. On failure returns nothing and sets `error`.
std::optional<Options> readOptions(const QStringList& arguments, QString* error);

} // namespace plc::cli

#endif
