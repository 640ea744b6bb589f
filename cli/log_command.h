#ifndef PLC_CLI_LOG_COMMAND_H
#define PLC_CLI_LOG_COMMAND_H

#include <QtCore/QTimer>
#include <QtCore/QVector>

#include <memory>

#include "cli/cyclic_command.h"
#include "cli/value_changes.h"
#include "log/log_writer.h"

namespace plc::cli {

/// `plc log`: keeps values in a file, as they change or at an interval. What was read is written
/// once a second.
class LogCommand : public CyclicCommand {
public:
    explicit LogCommand(const CommandContext& context) : CyclicCommand(context) {}

private:
    bool prepare() override;
    void begin() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSettled() override;
    void valueRefused(int row) override;
    void valueGivenAgain(int row) override;
    void aboutToEnd() override { write(); }
    void ended() override;

    std::unique_ptr<log::LogWriter> openWriter(QString* error, bool* isMediumFailing) const;
    void collectChanges();
    void collectFirst();
    void collectAll();
    void collect(int row);
    void write();

    std::unique_ptr<log::LogWriter> m_writer;
    ValueChanges m_changes;
    QVector<bool> m_hasBegun;          ///< Rows that have a record, of those logged at an interval.
    int m_begun = 0;                   ///< How many they are.
    QVector<log::LogRecord> m_records; ///< That are not written yet.
    qint64 m_written = 0;
    QTimer m_writing;
    QTimer m_sampling;
};

/// `plc log --export`: turns a log in a database into a CSV file. Needs no PLC. Returns the exit
/// code.
int exportDatabase(const Options& options);

} // namespace plc::cli

#endif
