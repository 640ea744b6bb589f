#ifndef PLC_TESTS_E2E_TERMINAL_PROCESS_H
#define PLC_TESTS_E2E_TERMINAL_PROCESS_H

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <csignal>
#include <cstring>

#include <QtCore/QElapsedTimer>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <vector>

#include "tests/e2e/line_process.h"

namespace plc::test {

/// What a terminal shows, of the sequences that plc writes: moving to a line, clearing, and
/// colours, which are left out.
class Screen {
public:
    void feed(const QByteArray& bytes)
    {
        m_pending += bytes;
        while (!m_pending.isEmpty()) {
            const int used = m_pending[0] == kEscape ? sequence() : character();
            if (used == 0)
                return; // the rest is still to come
            m_pending.remove(0, used);
        }
    }
    QString line(int number) const { return QString::fromUtf8(m_lines.value(number)); }
    QString text() const
    {
        QByteArray all;
        for (const QByteArray& line : m_lines)
            all += line + '\n';
        return QString::fromUtf8(all);
    }

private:
    static constexpr char kEscape = 0x1B;

    int character()
    {
        const char byte = m_pending[0];
        if (byte == '\n')
            moveTo(m_line + 1);
        else if (byte != '\r')
            m_lines[m_line] += byte;
        return 1;
    }
    int sequence()
    {
        int end = 2;
        while (end < int(m_pending.size()) && uchar(m_pending[end]) < 0x40)
            ++end;
        if (end >= int(m_pending.size()))
            return 0;
        const QByteArray parameters = m_pending.mid(2, end - 2);
        if (m_pending[end] == 'H')
            moveTo(parameters.split(';').first().toInt() - 1);
        else if (m_pending[end] == 'J')
            m_lines.fill(QByteArray());
        return end + 1;
    }
    /// Every line is written as a whole.
    void moveTo(int line)
    {
        m_line = line;
        if (m_lines.size() <= m_line)
            m_lines.resize(m_line + 1);
        m_lines[m_line].clear();
    }

    QByteArray m_pending;
    QVector<QByteArray> m_lines = QVector<QByteArray>(1);
    int m_line = 0;
};

/// A program on a terminal of its own, which the test plays the user of.
class TerminalProcess {
public:
    /// `environment` holds NAME=VALUE to be added.
    TerminalProcess(const QString& program, const QStringList& arguments, int width, int height,
                    const QStringList& environment)
    {
        winsize size = sizeOf(width, height);
        if (::openpty(&m_user, &m_program, nullptr, nullptr, &size) != 0)
            return;
        ::tcgetattr(m_program, &m_modes);
        const std::vector<QByteArray> texts = encoded(QStringList{program} + arguments);
        const std::vector<QByteArray> variables = encoded(environment);
        m_pid = ::fork();
        if (m_pid == 0)
            become(texts, variables);
    }
    ~TerminalProcess()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        ::close(m_user);
        ::close(m_program);
    }
    TerminalProcess(const TerminalProcess&) = delete;
    TerminalProcess& operator=(const TerminalProcess&) = delete;

    void type(const char* keys)
    {
        const ssize_t written = ::write(m_user, keys, std::strlen(keys));
        static_cast<void>(written);
    }
    void resize(int width, int height)
    {
        // The kernel tells the program.
        const winsize size = sizeOf(width, height);
        ::ioctl(m_user, TIOCSWINSZ, &size);
    }
    void signal(int number) const { ::kill(m_pid, number); }

    /// Waits until `isThere` of the screen is true. False when that does not come.
    template <typename Condition>
    bool waitFor(Condition isThere)
    {
        QElapsedTimer patience;
        patience.start();
        while (!isThere(m_screen)) {
            if (patience.elapsed() > kPatience || !read(kPatience))
                return false;
        }
        return true;
    }
    bool waitForText(const char* text)
    {
        return waitFor([text](const Screen& screen) {
            return screen.text().contains(QString::fromUtf8(text));
        });
    }
    const Screen& screen() const { return m_screen; }
    /// All bytes that the program wrote.
    const QByteArray& output() const { return m_output; }

    /// Waits for the end; reads what is left. -1 when it was killed or runs on.
    int exitCode()
    {
        QElapsedTimer patience;
        patience.start();
        int status = 0;
        while (::waitpid(m_pid, &status, WNOHANG) == 0) {
            if (patience.elapsed() > kPatience)
                return -1;
            read(10);
        }
        m_pid = -1;
        while (read(0)) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    /// Whether the terminal's modes are those from before the start.
    bool isRestored() const
    {
        termios now = {};
        ::tcgetattr(m_program, &now);
        return now.c_lflag == m_modes.c_lflag && now.c_iflag == m_modes.c_iflag &&
               now.c_oflag == m_modes.c_oflag;
    }

private:
    static winsize sizeOf(int width, int height)
    {
        winsize size = {};
        size.ws_col = static_cast<unsigned short>(width);
        size.ws_row = static_cast<unsigned short>(height);
        return size;
    }
    static std::vector<QByteArray> encoded(const QStringList& list)
    {
        std::vector<QByteArray> texts;
        for (const QString& text : list)
            texts.push_back(text.toLocal8Bit());
        return texts;
    }

    /// In the child: takes the terminal and runs the program.
    [[noreturn]] void become(const std::vector<QByteArray>& texts,
                             const std::vector<QByteArray>& variables) const
    {
        ::setsid();
        ::ioctl(m_program, TIOCSCTTY, 0);
        for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(m_program, descriptor);
        ::close(m_user);
        ::close(m_program);
        for (const QByteArray& variable : variables)
            ::putenv(const_cast<char*>(variable.constData()));
        std::vector<char*> arguments;
        for (const QByteArray& text : texts)
            arguments.push_back(const_cast<char*>(text.constData()));
        arguments.push_back(nullptr);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }

    /// Whether anything came within this time.
    bool read(int timeout)
    {
        pollfd descriptor = {m_user, POLLIN, 0};
        if (::poll(&descriptor, 1, timeout) <= 0)
            return false;
        char buffer[4096];
        const ssize_t count = ::read(m_user, buffer, sizeof(buffer));
        if (count <= 0)
            return false;
        const QByteArray bytes(buffer, int(count));
        m_output += bytes;
        m_screen.feed(bytes);
        return true;
    }

    int m_user = -1;    ///< The side of screen and keyboard.
    int m_program = -1; ///< The side of the program, open so that its modes can be seen.
    termios m_modes = {};
    pid_t m_pid = -1;
    Screen m_screen;
    QByteArray m_output;
};

} // namespace plc::test

#endif
