#ifndef PLC_CLI_READ_COMMAND_H
#define PLC_CLI_READ_COMMAND_H

#include <QtCore/QVector>

#include "cli/command.h"
#include "cli/link_command.h"
#include "cli/value_lines.h"

namespace plc::cli {

struct ReadOptions : LinkOptions {
    QString labelFile; ///< CSV with further labels; empty: none.
    bool csv = false;

    options::Table table() override;
    Expected<void> check() override;
    QString fileOfArguments() const override { return labelFile; }
};

extern const Command kReadCommand;

/// `plc read`: reads labels once, all together.
class ReadCommand : public LinkCommand {
public:
    ReadCommand(const ReadOptions& options, const CommandContext& context, host::DriverClaim driver)
        : LinkCommand(options, context, std::move(driver)), m_options(options)
    {
    }

private:
    bool prepare() override;
    void begin() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;

    void settled(int index, const host::TransferOutcome& outcome, const QByteArray& bytes);
    void report();
    static QStringList csvFields(const ReadValue& read);

    const ReadOptions& m_options;
    QVector<ReadValue> m_reads;
    int m_open = 0; ///< Reads that are not settled.
};

} // namespace plc::cli

#endif
