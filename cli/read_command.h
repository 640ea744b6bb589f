#ifndef PLC_CLI_READ_COMMAND_H
#define PLC_CLI_READ_COMMAND_H

#include <QtCore/QVector>

#include "cli/command.h"
#include "cli/link_command.h"

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
    struct Item {
        host::DataPoint point;
        host::TransferOutcome outcome;
        QByteArray bytes;
    };

    bool prepare() override;
    void begin() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;

    void settled(int index, const host::TransferOutcome& outcome, const QByteArray& bytes);
    void report();
    static QStringList csvFields(const Item& item);

    const ReadOptions& m_options;
    QVector<Item> m_items;
    int m_open = 0; ///< Items that are not settled.
};

} // namespace plc::cli

#endif
