#include "cli/screen_table.h"

#include "cli/terminal_view.h"
#include "cli/text_cells.h"

namespace plc::cli {
namespace {

constexpr char kKeys[] =
    "arrows, PgUp, PgDn: scroll   :write LABEL=VALUE   :station N off|on   q: end";

QString ageText(qint64 milliseconds)
{
    if (milliseconds < 1000)
        return QStringLiteral("%1 ms").arg(milliseconds);
    return QStringLiteral("%1 s").arg(double(milliseconds) / 1000, 0, 'f', 1);
}

ScreenRow screenRow(const host::ValueTable& values, int index, qint64 now)
{
    ScreenRow row;
    row.label = values.point(index).text;
    row.isStale = values.isStale(index, now);
    row.value = shownValue(values, index);
    if (row.isStale)
        row.value += QStringLiteral(" stale");
    if (!values.wasRead(index))
        return row;
    row.age = ageText(values.age(index, now));
    row.rate = QStringLiteral("%1/s").arg(values.readsPerSecond(index, now), 0, 'f', 1);
    return row;
}

} // namespace

ScreenTable::ScreenTable(const QString& title)
{
    m_content.title = title;
}

void ScreenTable::resized(int width, int height)
{
    m_page = rowsOnScreen(width, height);
    scroll(0);
}

void ScreenTable::refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view)
{
    const host::ValueTable& values = runtime.values();
    m_content.rows.resize(values.size());
    for (int i = 0; i < values.size(); ++i)
        m_content.rows[i] = screenRow(values, i, now);
    m_content.status = view.linkStatus(runtime, now);
}

void ScreenTable::press(const Key& key, TerminalView* view)
{
    if (m_isTyping)
        pressInCommand(key, view);
    else
        pressInTable(key, view);
}

void ScreenTable::pressInTable(const Key& key, TerminalView* view)
{
    const int page = qMax(1, m_page);
    const int all = int(m_content.rows.size());
    if (key.name == Key::Character && key.text == QLatin1String("q")) {
        view->carryOut(QStringLiteral("quit"));
    } else if (key.name == Key::Character && key.text == QLatin1String(":")) {
        m_isTyping = true;
        m_typed.clear();
        view->forgetMessage();
    } else if (key.name == Key::Character && key.text == QLatin1String(" ")) {
        scroll(page);
    } else if (key.name == Key::Up || key.name == Key::Down) {
        scroll(key.name == Key::Up ? -1 : 1);
    } else if (key.name == Key::PageUp || key.name == Key::PageDown) {
        scroll(key.name == Key::PageUp ? -page : page);
    } else if (key.name == Key::Home || key.name == Key::End) {
        scroll(key.name == Key::Home ? -all : all);
    }
}

void ScreenTable::pressInCommand(const Key& key, TerminalView* view)
{
    if (typeKey(key, &m_typed))
        m_isTyping = false;
    if (key.name == Key::Enter)
        view->carryOut(m_typed);
}

void ScreenTable::scroll(int rows)
{
    m_firstRow = qBound(0, m_firstRow + rows, qMax(0, int(m_content.rows.size()) - m_page));
}

QStringList ScreenTable::layOut(const TerminalView& view) const
{
    ScreenContent content = m_content;
    content.message = view.lastMessage();
    // Of what is being typed the end must be in sight.
    content.prompt =
        m_isTyping ? fittedTail(QLatin1Char(':') + m_typed + QLatin1Char('_'), view.width() - 1)
                   : QString::fromLatin1(kKeys);
    return layOutScreen(content, view.width(), view.height(), m_firstRow, view.style());
}

} // namespace plc::cli
