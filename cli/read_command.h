#ifndef PLC_CLI_READ_COMMAND_H
#define PLC_CLI_READ_COMMAND_H

#include <QtCore/QVector>

#include "cli/link_command.h"

namespace plc::cli {

/// `plc read`: reads labels once, all together.
class ReadCommand : public LinkCommand {
public:
    explicit ReadCommand(const CommandContext& context) : LinkCommand(context) {}

private:
    struct Item {
        host::DataPoint point;
        host::TransferOutcome outcome;
        QByteArray bytes;
    };

    bool prepare() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;

    void settled(int index, const host::TransferOutcome& outcome, const QByteArray& bytes);
    void report();
    static QStringList csvFields(const Item& item);

    QVector<Item> m_items;
    int m_open = 0; ///< Items that are not settled.
};

} // namespace plc::cli

#endif
