#include "cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "cli/console.h"

namespace plc::cli {
namespace {

constexpr char kEnterScreen[] = "\x1b[?1049h\x1b[?25l\x1b[2J";
constexpr char kLeaveScreen[] = "\x1b[?25h\x1b[?1049l";
constexpr char kClearToEnd[] = "\x1b[K";

/// Keys belong to the job that the user works with.
bool ownsKeys()
{
    return ::isatty(STDIN_FILENO) != 0 && ::tcgetpgrp(STDIN_FILENO) == ::getpgrp();
}

} // namespace

bool Terminal::isPresent()
{
    return ::isatty(STDOUT_FILENO) != 0;
}

void Terminal::enter()
{
    if (m_isEntered)
        return;
    m_isEntered = true;
    m_hasKeys = ownsKeys() && ::tcgetattr(STDIN_FILENO, &m_savedModes) == 0;
    if (m_hasKeys) {
        termios modes = m_savedModes;
        modes.c_lflag &= ~tcflag_t(ICANON | ECHO);
        modes.c_cc[VMIN] = 1;
        modes.c_cc[VTIME] = 0;
        ::tcsetattr(STDIN_FILENO, TCSANOW, &modes);
    }
    printBytes(kEnterScreen);
    measure();
}

void Terminal::leave()
{
    if (!m_isEntered)
        return;
    m_isEntered = false;
    printBytes(kLeaveScreen);
    if (m_hasKeys)
        ::tcsetattr(STDIN_FILENO, TCSANOW, &m_savedModes);
}

void Terminal::measure()
{
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0) {
        m_width = size.ws_col;
        m_height = size.ws_row;
    }
    m_shown.clear();
    printBytes("\x1b[2J");
}

void Terminal::show(const QStringList& lines)
{
    QByteArray bytes;
    const int count = qMin(m_height, qMax(int(lines.size()), int(m_shown.size())));
    for (int i = 0; i < count; ++i) {
        const QString line = lines.value(i);
        if (i < int(m_shown.size()) && m_shown[i] == line)
            continue;
        bytes += "\x1b[" + QByteArray::number(i + 1) + ";1H" + encoded(line) + kClearToEnd;
    }
    m_shown = lines;
    printBytes(bytes);
}

void Terminal::print(const QStringList& lines) const
{
    QByteArray bytes;
    for (const QString& line : lines)
        bytes += encoded(line) + '\n';
    printBytes(bytes);
}

QByteArray Terminal::encoded(const QString& line) const
{
    return m_isUtf8 ? line.toUtf8() : asciiCells(line);
}

} // namespace plc::cli
