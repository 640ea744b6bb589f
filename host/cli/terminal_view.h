#ifndef PLC_HOST_CLI_TERMINAL_VIEW_H
#define PLC_HOST_CLI_TERMINAL_VIEW_H

#include <QtCore/QSocketNotifier>

#include <functional>
#include <memory>

#include "host/cli/key_reader.h"
#include "host/cli/run_view.h"
#include "host/cli/signal_notifier.h"
#include "host/cli/style.h"
#include "host/cli/terminal.h"

namespace plc {

/// A view that has the whole terminal: it is drawn anew when the terminal's size changes, gets the
/// keys one by one, and gives the terminal back when it ends.
class TerminalView : public RunView {
public:
    static bool isPossible() { return Terminal::isPresent(); }

    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;
    void writeSettled(const Assignment& assignment, const TransferOutcome& outcome) override;
    void valueRefused(const DataPoint& point, int status) override;
    void message(const QString& text) override;
    void end(const Runtime& runtime, qint64 now) override;
    int usualInterval() const override { return 200; }

protected:
    /// `carryOut` is called with each command line that the user enters.
    TerminalView(const QString& peer, std::function<void(const QString&)> carryOut);

    virtual void press(const Key& key) = 0;
    /// The lines for a terminal of width() and height().
    virtual QStringList layOut() const = 0;
    /// width() and height() have changed.
    virtual void resized() = 0;

    int width() const { return m_terminal.width(); }
    int height() const { return m_terminal.height(); }
    const Style& style() const { return m_style; }
    bool isLinkUp() const { return m_linkState == LinkState::Up; }
    /// What happened last.
    const QString& lastMessage() const { return m_message; }
    /// "connected to HOST:PORT, 9.8 requests/s"
    QString linkStatus(const Runtime& runtime, qint64 now) const;
    void forgetMessage() { m_message.clear(); }
    void carryOut(const QString& line) const { m_carryOut(line); }
    void draw();

private:
    void readKeyboard();
    void handleSignal(int number);

    const QString m_peer;
    const std::function<void(const QString&)> m_carryOut;
    const Style m_style = Style::ofOutput();
    Terminal m_terminal;
    std::unique_ptr<QSocketNotifier> m_keyboard;
    LinkState m_linkState = LinkState::Connecting;
    QString m_linkText;
    QString m_message;
    bool m_isEnded = false;
    SignalNotifier m_signals;
};

/// A value of the table with its unit, "?" while it was never read.
QString shownValue(const ValueTable& values, int row);

} // namespace plc

#endif
