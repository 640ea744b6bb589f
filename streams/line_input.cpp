#include "streams/line_input.h"

#include <unistd.h>

#include <QtCore/QTimer>

#include <utility>

namespace plc::streams {
namespace {

constexpr int kForeignTerminalPause = 200; // ms

/// Whether reading would stop the program: a terminal that another job has in use.
bool isForeignTerminal(int descriptor)
{
    return ::isatty(descriptor) != 0 && ::tcgetpgrp(descriptor) != ::getpgrp();
}

} // namespace

LineInput::LineInput(int descriptor, LineSplitter::Handle handle, LineSplitter::Refuse refuse)
    : m_descriptor(descriptor),
      m_lines(kLongestInputLine, std::move(handle), std::move(refuse)),
      m_notifier(descriptor, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
}

void LineInput::read()
{
    if (isForeignTerminal(m_descriptor)) {
        // What is typed there stays readable until its own job reads it.
        m_notifier.setEnabled(false);
        QTimer::singleShot(kForeignTerminalPause, &m_notifier,
                           [this] { m_notifier.setEnabled(true); });
        return;
    }
    char buffer[4096];
    const ssize_t count = ::read(m_descriptor, buffer, sizeof(buffer));
    if (count <= 0) {
        m_notifier.setEnabled(false);
        m_lines.finish();
        return;
    }
    m_lines.feed(QByteArray(buffer, int(count)));
}

} // namespace plc::streams
