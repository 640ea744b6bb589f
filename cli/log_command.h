#ifndef PLC_CLI_LOG_COMMAND_H
#define PLC_CLI_LOG_COMMAND_H

#include <QtCore/QTimer>
#include <QtCore/QVector>

#include <memory>

#include "cli/command.h"
#include "cli/cyclic_command.h"
#include "cli/value_changes.h"
#include "log/log_writer.h"
#include "recorder/attention.h"

namespace plc::cli {

struct LogOptions : CyclicOptions {
    QString output;         ///< The log, or the CSV file of an export.
    QString exported;       ///< The database to be exported; empty: values are logged.
    QString converted;      ///< The log to be made a recording of; empty: values are logged.
    QString format;         ///< What is exported; empty: CSV.
    QString plc;            ///< Name of the PLC in the database; empty: that of the project's file.
    QString from;           ///< Begin of what is exported; empty: all.
    QString to;             ///< Its end.
    int every = 0;          ///< ms from record to record; 0: changes.
    qint64 rotateSize = 0;  ///< Bytes; 0: as large as it gets.
    qint64 rotateEvery = 0; ///< ms; 0: without end.
    int keep = 0;           ///< Older files; 0: all.

    options::Table table() override;
    Expected<void> check() override;
    bool lacksProject() const override
    {
        return exported.isEmpty() && converted.isEmpty() && CyclicOptions::lacksProject();
    }

private:
    options::Table loggingTable();
    options::Table conversionTable();
};

/// Whether the log's file is a database, by its suffix, and not CSV.
bool isDatabase(const QString& logFile);

extern const Command kLogCommand;

/// `plc log`: keeps values in a file, as they change or at an interval. What was read is written
/// once a second.
class LogCommand : public CyclicCommand {
public:
    LogCommand(const LogOptions& options, const CommandContext& context, host::DriverClaim driver)
        : CyclicCommand(options, context, std::move(driver)), m_options(options)
    {
    }

private:
    bool prepare() override;
    void aboutToBegin() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSettled() override;
    void valueRefused(int row) override;
    void valueGivenAgain(int row) override;
    void aboutToEnd() override;
    void ended() override;
    /// What the log does not have is told by the exit code.
    bool hasFailed() const override { return m_writer && m_writer->backlog().sum() > 0; }

    Expected<std::unique_ptr<log::LogWriter>> openWriter(bool* isMediumFailing);
    Expected<std::unique_ptr<log::LogWriter>> openDatabase(bool* isMediumFailing);
    void collectChanges();
    void collectFirst();
    void collectAll();
    void collect(int row);
    void write();
    void tellWriting(const Expected<void>& written);

    const LogOptions& m_options;
    std::unique_ptr<log::LogWriter> m_writer;
    recorder::Attention m_attention;
    ValueChanges m_changes;
    QVector<bool> m_hasBegun;          ///< Rows that have a record, of those logged at an interval.
    int m_begun = 0;                   ///< How many they are.
    QVector<log::LogRecord> m_records; ///< That are not written yet.
    qint64 m_given = 0;                ///< To the log.
    QString m_failure;                 ///< Why it cannot be written at present; empty: it can.
    QTimer m_writing;
    QTimer m_sampling;
};

} // namespace plc::cli

#endif
