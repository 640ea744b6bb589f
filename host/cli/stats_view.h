#ifndef PLC_HOST_CLI_STATS_VIEW_H
#define PLC_HOST_CLI_STATS_VIEW_H

#include "host/cli/stats_report.h"
#include "host/cli/terminal_view.h"

namespace plc {

/// Shows what goes over a link on a terminal, while it does.
class StatsView : public TerminalView {
public:
    /// `carryOut` is called with "quit" when the user wants an end.
    StatsView(const QString& title, const QString& peer,
              std::function<void(const QString&)> carryOut);

    void show(const StatsReport& report, const Runtime& runtime, qint64 now);

private:
    void valuesRead(const Runtime&, qint64) override {}
    void refresh(const Runtime& runtime, qint64 now) override;
    void press(const Key& key) override;
    QStringList layOut() const override;
    void resized() override {}

    const QString m_title;
    QString m_link;
    StatsReport m_report;
};

} // namespace plc

#endif
