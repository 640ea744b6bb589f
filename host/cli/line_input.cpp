#include "host/cli/line_input.h"

#include <unistd.h>

#include <utility>

namespace plc {
namespace {

/// Whether reading would stop the program: a terminal that another job has in use.
bool isForeignTerminal()
{
    return ::isatty(STDIN_FILENO) != 0 && ::tcgetpgrp(STDIN_FILENO) != ::getpgrp();
}

} // namespace

LineInput::LineInput(std::function<void(const QString&)> handle)
    : m_handle(std::move(handle)), m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
}

void LineInput::read()
{
    if (isForeignTerminal())
        return;
    char buffer[4096];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof(buffer));
    if (count <= 0) {
        m_notifier.setEnabled(false);
        if (!m_pending.isEmpty())
            m_handle(QString::fromUtf8(std::exchange(m_pending, QByteArray())));
        return;
    }
    m_pending.append(buffer, int(count));
    for (int end = int(m_pending.indexOf('\n')); end >= 0; end = int(m_pending.indexOf('\n'))) {
        const QString line = QString::fromUtf8(m_pending.left(end));
        m_pending.remove(0, end + 1);
        m_handle(line);
    }
}

} // namespace plc
