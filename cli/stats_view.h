#ifndef PLC_CLI_STATS_VIEW_H
#define PLC_CLI_STATS_VIEW_H

#include "cli/stats_report.h"
#include "cli/terminal_view.h"

namespace plc::cli {

/// Shows what goes over a link on a terminal, while it does.
class StatsView : public TerminalView {
public:
    /// `carryOut` is called with "quit" when the user wants an end.
    StatsView(const QString& title, const QString& peer,
              std::function<void(const QString&)> carryOut);

    void show(const StatsReport& report, const host::Runtime& runtime, qint64 now);

private:
    void valuesRead(const host::Runtime&, qint64) override {}
    void refresh(const host::Runtime& runtime, qint64 now) override;
    void press(const Key& key) override;
    QStringList layOut() const override;
    void resized() override {}

    const QString m_title;
    QString m_link;
    StatsReport m_report;
};

} // namespace plc::cli

#endif
