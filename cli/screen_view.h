#ifndef PLC_CLI_SCREEN_VIEW_H
#define PLC_CLI_SCREEN_VIEW_H

#include "cli/screen_layout.h"
#include "cli/terminal_view.h"

namespace plc::cli {

/// Shows the values in place on a terminal and takes commands from its keys.
class ScreenView : public TerminalView {
public:
    ScreenView(const QString& title, const QString& peer,
               std::function<void(const QString&)> carryOut);

    void valuesRead(const host::Runtime&, qint64) override {}
    void refresh(const host::Runtime& runtime, qint64 now) override;

private:
    void press(const Key& key) override;
    QStringList layOut() const override;
    void resized() override { scroll(0); }

    void pressInTable(const Key& key);
    void pressInCommand(const Key& key);
    void scroll(int rows);

    ScreenContent m_content;
    int m_firstRow = 0;
    bool m_isTyping = false;
    QString m_typed;
};

} // namespace plc::cli

#endif
