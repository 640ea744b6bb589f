#ifndef PLC_CLI_TERMINAL_H
#define PLC_CLI_TERMINAL_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <termios.h>

#include "cli/text_cells.h"

namespace plc::cli {

/// The terminal that the program runs on, as a screen of lines: a second screen, so that what stood
/// on the first one comes back; without a cursor; and keys come one by one and are not shown.
class Terminal {
public:
    static bool isPresent();

    Terminal() { enter(); }
    ~Terminal() { leave(); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Takes the screen and the keys, and gives them back.
    void enter();
    void leave();
    bool hasKeys() const { return m_hasKeys; }

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Asks the terminal for its size again and forgets what is on the screen.
    void measure();
    /// Shows these lines from the top; writes those that differ from what is on the screen.
    void show(const QStringList& lines);
    /// Lines behind each other, for when the screen was given back.
    void print(const QStringList& lines) const;

private:
    QByteArray encoded(const QString& line) const;

    const bool m_isUtf8 = localeIsUtf8();
    bool m_isEntered = false;
    bool m_hasKeys = false;
    termios m_savedModes = {};
    int m_width = 80;
    int m_height = 24;
    QStringList m_shown;
};

} // namespace plc::cli

#endif
