#ifndef PLC_CLI_TERMINAL_VIEW_H
#define PLC_CLI_TERMINAL_VIEW_H

#include <QtCore/QSocketNotifier>

#include <functional>
#include <memory>

#include "cli/run_view.h"
#include "cli/style.h"
#include "cli/terminal.h"
#include "cli/terminal_table.h"
#include "streams/signal_notifier.h"

namespace plc::cli {

/// The view that has the whole terminal, of run, watch and stats alike: it is drawn anew when the
/// terminal's size changes, gets the keys one by one, and gives the terminal back when it ends.
/// What it shows is its table.
class TerminalView : public RunView {
public:
    /// `carryOut` is called with each command line that the user enters.
    TerminalView(const QString& peer, std::function<void(const QString&)> carryOut,
                 std::unique_ptr<TerminalTable> table);

    static bool isPossible() { return Terminal::isPresent(); }

    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void writeSettled(const Assignment& assignment, const host::TransferOutcome& outcome) override;
    void valueRefused(const host::DataPoint& point, int status) override;
    void message(const QString& text) override;
    void valuesRead(const host::Runtime& runtime, qint64 now) override;
    void refresh(const host::Runtime& runtime, qint64 now) override;
    void end(const host::Runtime& runtime, qint64 now) override;
    int usualInterval() const override { return 200; }

    // For the table.

    int width() const { return m_terminal.width(); }
    int height() const { return m_terminal.height(); }
    const Style& style() const { return m_style; }
    bool isLinkUp() const { return m_linkState == host::LinkState::Up; }
    /// What happened last.
    const QString& lastMessage() const { return m_message; }
    /// "connected to HOST:PORT, 9.8 requests/s"
    QString linkStatus(const host::Runtime& runtime, qint64 now) const;
    void forgetMessage() { m_message.clear(); }
    void carryOut(const QString& line) const { m_carryOut(line); }

private:
    void draw();
    void readKeyboard();
    void handleSignal(int number);

    const QString m_peer;
    const std::function<void(const QString&)> m_carryOut;
    const Style m_style = Style::ofOutput();
    const std::unique_ptr<TerminalTable> m_table;
    Terminal m_terminal;
    std::unique_ptr<QSocketNotifier> m_keyboard;
    host::LinkState m_linkState = host::LinkState::Connecting;
    QString m_linkText;
    QString m_message;
    bool m_isEnded = false;
    streams::SignalNotifier m_signals;
};

/// A value of the table with its unit, "?" while it was never read.
QString shownValue(const host::ValueTable& values, int row);

} // namespace plc::cli

#endif
