#ifndef PLC_HOST_CLI_SCREEN_VIEW_H
#define PLC_HOST_CLI_SCREEN_VIEW_H

#include <QtCore/QSocketNotifier>

#include <functional>
#include <memory>

#include "host/cli/key_reader.h"
#include "host/cli/run_view.h"
#include "host/cli/screen_layout.h"
#include "host/cli/signal_notifier.h"
#include "host/cli/terminal.h"

namespace plc {

/// Shows the values in place on a terminal and takes commands from its keys.
class ScreenView : public RunView {
public:
    static bool isPossible() { return Terminal::isPresent(); }

    /// `carryOut` is called with each command line that the user enters.
    ScreenView(const QString& title, const QString& peer,
               std::function<void(const QString&)> carryOut);

    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;
    void writeSettled(const Assignment& assignment, const TransferOutcome& outcome) override;
    void message(const QString& text) override;
    void refresh(const Runtime& runtime, qint64 now) override;
    void end(const Runtime& runtime, qint64 now) override;
    int usualInterval() const override { return 200; }

private:
    void readKeyboard();
    void press(const Key& key);
    void beginTyping();
    void pressInCommand(const Key& key);
    void scroll(int rows);
    void handleSignal(int number);
    void draw();

    const QString m_peer;
    const std::function<void(const QString&)> m_carryOut;
    const Style m_style = Style::ofOutput();
    Terminal m_terminal;
    std::unique_ptr<QSocketNotifier> m_keyboard;
    ScreenContent m_content;
    QString m_linkText;
    int m_firstRow = 0;
    bool m_isTyping = false;
    QString m_typed;
    bool m_isEnded = false;
    SignalNotifier m_signals;
};

} // namespace plc

#endif
