#ifndef PLC_CLI_SCREEN_TABLE_H
#define PLC_CLI_SCREEN_TABLE_H

#include "cli/screen_layout.h"
#include "cli/terminal_table.h"

namespace plc::cli {

/// The values in place, as `plc run` shows them, and commands from the keys.
class ScreenTable : public TerminalTable {
public:
    explicit ScreenTable(const QString& title);

    void press(const Key& key, TerminalView* view) override;
    QStringList layOut(const TerminalView& view) const override;
    void resized(int width, int height) override;
    void refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view) override;

private:
    void pressInTable(const Key& key, TerminalView* view);
    void pressInCommand(const Key& key, TerminalView* view);
    void scroll(int rows);

    int m_page = 0; ///< Rows that the terminal has room for.
    ScreenContent m_content;
    int m_firstRow = 0;
    bool m_isTyping = false;
    QString m_typed;
};

} // namespace plc::cli

#endif
