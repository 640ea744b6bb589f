#include "cli/screen_view.h"

#include <utility>

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

ScreenView::ScreenView(const QString& title, const QString& peer,
                       std::function<void(const QString&)> carryOut)
    : TerminalView(peer, std::move(carryOut))
{
    m_content.title = title;
}

void ScreenView::refresh(const host::Runtime& runtime, qint64 now)
{
    const host::ValueTable& values = runtime.values();
    m_content.rows.resize(values.size());
    for (int i = 0; i < values.size(); ++i)
        m_content.rows[i] = screenRow(values, i, now);
    m_content.status = linkStatus(runtime, now);
    draw();
}

void ScreenView::press(const Key& key)
{
    if (m_isTyping)
        pressInCommand(key);
    else
        pressInTable(key);
}

void ScreenView::pressInTable(const Key& key)
{
    const int page = qMax(1, rowsOnScreen(width(), height()));
    const int all = int(m_content.rows.size());
    if (key.name == Key::Character && key.text == QLatin1String("q")) {
        carryOut(QStringLiteral("quit"));
    } else if (key.name == Key::Character && key.text == QLatin1String(":")) {
        m_isTyping = true;
        m_typed.clear();
        forgetMessage();
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

void ScreenView::pressInCommand(const Key& key)
{
    if (typeKey(key, &m_typed))
        m_isTyping = false;
    if (key.name == Key::Enter)
        carryOut(m_typed);
}

void ScreenView::scroll(int rows)
{
    const int page = rowsOnScreen(width(), height());
    m_firstRow = qBound(0, m_firstRow + rows, qMax(0, int(m_content.rows.size()) - page));
}

QStringList ScreenView::layOut() const
{
    ScreenContent content = m_content;
    content.message = lastMessage();
    // Of what is being typed the end must be in sight.
    content.prompt = m_isTyping
                         ? fittedTail(QLatin1Char(':') + m_typed + QLatin1Char('_'), width() - 1)
                         : QString::fromLatin1(kKeys);
    return layOutScreen(content, width(), height(), m_firstRow, style());
}

} // namespace plc::cli
