#include "cli/stats_view.h"

#include <utility>

#include "cli/text_cells.h"

namespace plc::cli {

StatsView::StatsView(const QString& title, const QString& peer,
                     std::function<void(const QString&)> carryOut)
    : TerminalView(peer, std::move(carryOut)), m_title(title)
{
}

void StatsView::show(const StatsReport& report, const host::Runtime& runtime, qint64 now)
{
    m_report = report;
    refresh(runtime, now);
}

void StatsView::refresh(const host::Runtime& runtime, qint64 now)
{
    m_link = linkStatus(runtime, now);
    draw();
}

void StatsView::press(const Key& key)
{
    if (key.name == Key::Character && key.text == QLatin1String("q"))
        carryOut(QStringLiteral("quit"));
}

QStringList StatsView::layOut() const
{
    QStringList lines = {m_title, m_link, QString()};
    lines += statsLines(m_report);
    // What does not fit is cut off at the bottom, above the line for the keys.
    lines = lines.mid(0, qMax(0, height() - 1));
    for (QString& line : lines)
        line = fitted(line, width());
    while (int(lines.size()) < height() - 1)
        lines.append(QString());
    // In the last cell of the last line some terminals scroll.
    return lines << fitted(QStringLiteral("q: end"), width() - 1);
}

} // namespace plc::cli
