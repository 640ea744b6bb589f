#include "cli/stats_table.h"

#include "cli/terminal_view.h"
#include "cli/text_cells.h"

namespace plc::cli {

void StatsTable::refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view)
{
    m_link = view.linkStatus(runtime, now);
}

void StatsTable::press(const Key& key, TerminalView* view)
{
    if (key.name == Key::Character && key.text == QLatin1String("q"))
        view->carryOut(QStringLiteral("quit"));
}

QStringList StatsTable::layOut(const TerminalView& view) const
{
    QStringList lines = {m_title, m_link, QString()};
    lines += statsLines(m_report);
    // What does not fit is cut off at the bottom, above the line for the keys.
    lines = lines.mid(0, qMax(0, view.height() - 1));
    for (QString& line : lines)
        line = fitted(line, view.width());
    while (int(lines.size()) < view.height() - 1)
        lines.append(QString());
    // In the last cell of the last line some terminals scroll.
    return lines << fitted(QStringLiteral("q: end"), view.width() - 1);
}

} // namespace plc::cli
