#include "cli/line_input.h"

#include <unistd.h>

#include <utility>

namespace plc::cli {
namespace {

/// Whether reading would stop the program: a terminal that another job has in use.
bool isForeignTerminal()
{
    return ::isatty(STDIN_FILENO) != 0 && ::tcgetpgrp(STDIN_FILENO) != ::getpgrp();
}

} // namespace

LineInput::LineInput(streams::LineSplitter::Handle handle, streams::LineSplitter::Refuse refuse)
    : m_lines(kLongestInputLine, std::move(handle), std::move(refuse)),
      m_notifier(STDIN_FILENO, QSocketNotifier::Read)
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
        m_lines.finish();
        return;
    }
    m_lines.feed(QByteArray(buffer, int(count)));
}

} // namespace plc::cli
