#ifndef PLC_CLI_STATS_TABLE_H
#define PLC_CLI_STATS_TABLE_H

#include "cli/stats_report.h"
#include "cli/terminal_table.h"

namespace plc::cli {

/// What goes over a link, as `plc stats` shows it while it does.
class StatsTable : public TerminalTable {
public:
    explicit StatsTable(const QString& title) : m_title(title) {}

    /// Shown from the next refresh on.
    void setReport(const StatsReport& report) { m_report = report; }

    void press(const Key& key, TerminalView* view) override;
    QStringList layOut(const TerminalView& view) const override;
    void resized(int, int) override {}
    void refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view) override;

private:
    const QString m_title;
    QString m_link;
    StatsReport m_report;
};

} // namespace plc::cli

#endif
