#include "host/cli/screen_view.h"

#include <unistd.h>
#include <csignal>

#include <utility>

#include "host/cli/console.h"
#include "host/cli/value_lines.h"
#include "host/value_codec.h"

namespace plc {
namespace {

const char kKeys[] = "arrows, PgUp, PgDn: scroll   :write LABEL=VALUE   :station N off|on   q: end";

QString ageText(qint64 milliseconds)
{
    if (milliseconds < 1000)
        return QStringLiteral("%1 ms").arg(milliseconds);
    return QStringLiteral("%1 s").arg(double(milliseconds) / 1000, 0, 'f', 1);
}

ScreenRow screenRow(const ValueTable& values, int index, qint64 now)
{
    const DataPoint& point = values.point(index);
    ScreenRow row;
    row.label = point.text;
    row.isStale = values.isStale(index, now);
    if (!values.wasRead(index)) {
        row.value = row.isStale ? QStringLiteral("? stale") : QStringLiteral("?");
        return row;
    }
    row.value = pointText(point, decodeValues(point, values.bytes(index))) + unitText(point);
    if (row.isStale)
        row.value += QStringLiteral(" stale");
    row.age = ageText(values.age(index, now));
    row.rate = QStringLiteral("%1/s").arg(values.readsPerSecond(index, now), 0, 'f', 1);
    return row;
}

} // namespace

ScreenView::ScreenView(const QString& title, const QString& peer,
                       std::function<void(const QString&)> carryOut)
    : m_peer(peer),
      m_carryOut(std::move(carryOut)),
      m_signals({SIGWINCH, SIGTSTP}, [this](int number) { handleSignal(number); })
{
    m_content.title = title;
    if (!m_terminal.hasKeys())
        return;
    m_keyboard = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(m_keyboard.get(), &QSocketNotifier::activated, m_keyboard.get(),
                     [this] { readKeyboard(); });
}

void ScreenView::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    m_linkText = linkText(state, m_peer, reason, retryDelay);
}

void ScreenView::writeSettled(const Assignment& assignment, const TransferOutcome& outcome)
{
    message(QStringLiteral("write ") + writeLine(assignment, outcome));
}

void ScreenView::message(const QString& text)
{
    m_content.message = text;
    draw();
}

void ScreenView::refresh(const Runtime& runtime, qint64 now)
{
    const ValueTable& values = runtime.values();
    m_content.rows.resize(values.size());
    for (int i = 0; i < values.size(); ++i)
        m_content.rows[i] = screenRow(values, i, now);
    m_content.status = QStringLiteral("%1, %2 requests/s")
                           .arg(m_linkText)
                           .arg(runtime.requestsPerSecond(now), 0, 'f', 1);
    draw();
}

void ScreenView::end(const Runtime& runtime, qint64 now)
{
    const QStringList lines =
        layOutScreen(m_content, m_terminal.width(), m_terminal.height(), m_firstRow, m_style);
    m_isEnded = true;
    if (m_keyboard)
        m_keyboard->setEnabled(false);
    m_terminal.leave();
    // The last screen stays in sight; its prompt makes room for the summary.
    for (int i = 0; i + 1 < int(lines.size()); ++i)
        print(lines[i]);
    print(summaryText(runtime.counters(), now));
}

void ScreenView::readKeyboard()
{
    char buffer[256];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof(buffer));
    if (count <= 0) {
        m_keyboard->setEnabled(false);
        return;
    }
    for (const Key& key : readKeys(QByteArray(buffer, int(count)))) {
        if (m_isTyping)
            pressInCommand(key);
        else
            press(key);
    }
    draw();
}

void ScreenView::press(const Key& key)
{
    const int page = qMax(1, rowsOnScreen(m_terminal.width(), m_terminal.height()));
    const int all = int(m_content.rows.size());
    if (key.name == Key::Character && key.text == QLatin1String("q"))
        m_carryOut(QStringLiteral("quit"));
    else if (key.name == Key::Character && key.text == QLatin1String(":"))
        beginTyping();
    else if (key.name == Key::Character && key.text == QLatin1String(" "))
        scroll(page);
    else if (key.name == Key::Up || key.name == Key::Down)
        scroll(key.name == Key::Up ? -1 : 1);
    else if (key.name == Key::PageUp || key.name == Key::PageDown)
        scroll(key.name == Key::PageUp ? -page : page);
    else if (key.name == Key::Home || key.name == Key::End)
        scroll(key.name == Key::Home ? -all : all);
}

void ScreenView::beginTyping()
{
    m_isTyping = true;
    m_typed.clear();
    m_content.message.clear();
}

void ScreenView::pressInCommand(const Key& key)
{
    switch (key.name) {
        case Key::Character:
            m_typed += key.text;
            break;
        case Key::Backspace:
            m_typed.chop(1);
            break;
        case Key::Enter:
            m_isTyping = false;
            m_carryOut(m_typed);
            break;
        case Key::Escape:
            m_isTyping = false;
            break;
        default:
            break;
    }
}

void ScreenView::scroll(int rows)
{
    const int page = rowsOnScreen(m_terminal.width(), m_terminal.height());
    m_firstRow = qBound(0, m_firstRow + rows, qMax(0, int(m_content.rows.size()) - page));
}

void ScreenView::handleSignal(int number)
{
    if (number == SIGTSTP) {
        m_terminal.leave();
        ::raise(SIGSTOP);
        m_terminal.enter();
    } else {
        m_terminal.measure();
    }
    scroll(0);
    draw();
}

void ScreenView::draw()
{
    if (m_isEnded)
        return;
    m_content.prompt =
        m_isTyping ? QLatin1Char(':') + m_typed + QLatin1Char('_') : QString::fromLatin1(kKeys);
    m_terminal.show(
        layOutScreen(m_content, m_terminal.width(), m_terminal.height(), m_firstRow, m_style));
}

} // namespace plc
