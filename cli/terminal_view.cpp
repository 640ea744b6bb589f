#include "cli/terminal_view.h"

#include <unistd.h>
#include <csignal>

#include <algorithm>
#include <utility>

#include "cli/value_lines.h"
#include "host/points/value_codec.h"

namespace plc::cli {
namespace {

bool isBlank(const QString& line)
{
    return line.trimmed().isEmpty();
}

} // namespace

TerminalView::TerminalView(const QString& peer, std::function<void(const QString&)> carryOut,
                           std::unique_ptr<TerminalTable> table)
    : m_peer(peer),
      m_carryOut(std::move(carryOut)),
      m_table(std::move(table)),
      m_signals({SIGWINCH, SIGTSTP}, [this](int number) { handleSignal(number); })
{
    m_table->resized(width(), height());
    if (!m_terminal.hasKeys())
        return;
    m_keyboard = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(m_keyboard.get(), &QSocketNotifier::activated, m_keyboard.get(),
                     [this] { readKeyboard(); });
}

void TerminalView::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    m_linkState = state;
    m_linkText = linkText(state, m_peer, reason, retryDelay);
}

void TerminalView::writeSettled(const Assignment& assignment, const host::TransferOutcome& outcome)
{
    message(QStringLiteral("write ") + writeLine(assignment, outcome));
}

void TerminalView::valueRefused(const host::DataPoint& point, int status)
{
    message(refusedValueText(point, status));
}

void TerminalView::message(const QString& text)
{
    m_message = text;
    draw();
}

void TerminalView::valuesRead(const host::Runtime& runtime, qint64 now)
{
    m_table->valuesRead(runtime, now);
}

void TerminalView::refresh(const host::Runtime& runtime, qint64 now)
{
    m_table->refresh(runtime, now, *this);
    draw();
}

QString TerminalView::linkStatus(const host::Runtime& runtime, qint64 now) const
{
    return QStringLiteral("%1, %2 requests/s")
        .arg(m_linkText)
        .arg(runtime.requestsPerSecond(now), 0, 'f', 1);
}

void TerminalView::end(const host::Runtime& runtime, qint64 now)
{
    QStringList lines = m_table->layOut(*this);
    m_isEnded = true;
    if (m_keyboard)
        m_keyboard->setEnabled(false);
    m_terminal.leave();
    // The last screen stays in sight; its prompt makes room for the summary.
    lines.removeLast();
    lines.erase(std::remove_if(lines.begin(), lines.end(), isBlank), lines.end());
    m_terminal.print(lines << summaryText(runtime.counters(), now));
}

void TerminalView::readKeyboard()
{
    char buffer[256];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof(buffer));
    if (count <= 0) {
        m_keyboard->setEnabled(false);
        return;
    }
    for (const Key& key : readKeys(QByteArray(buffer, int(count))))
        m_table->press(key, this);
    draw();
}

void TerminalView::handleSignal(int number)
{
    if (number == SIGTSTP) {
        m_terminal.leave();
        ::raise(SIGSTOP);
        m_terminal.enter();
    } else {
        m_terminal.measure();
    }
    m_table->resized(width(), height());
    draw();
}

void TerminalView::draw()
{
    if (!m_isEnded)
        m_terminal.show(m_table->layOut(*this));
}

QString shownValue(const host::ValueTable& values, int row)
{
    if (!values.wasRead(row))
        return QStringLiteral("?");
    const host::DataPoint& point = values.point(row);
    return host::pointText(point, host::decodeValues(point, values.bytes(row))) + unitText(point);
}

} // namespace plc::cli
