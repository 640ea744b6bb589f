#include "cli/watch_table.h"

#include "cli/terminal_view.h"
#include "host/points/value_codec.h"
#include "values/numeric_value.h"

namespace plc::cli {
namespace {

/// Arrays have no course: it would be of several numbers.
bool isSingle(const host::DataPoint& point)
{
    return point.elements == 1;
}

QString limitText(const host::DataPoint& point, const std::optional<values::Value>& limit)
{
    return limit ? values::valueText(*point.type, *limit) : QString();
}

} // namespace

WatchTable::WatchTable(const QString& title, const WatchState::Check& check)
    : m_title(title), m_state(check, [this](const QString& question) {
          return showsWhole(question, m_width, m_height);
      })
{
}

void WatchTable::resized(int width, int height)
{
    m_width = width;
    m_height = height;
    m_state.setPage(watchPage(height));
}

void WatchTable::refuseWrites(const QString& reason)
{
    m_state.refuseWrites(reason);
}

/// Every value that was read counts, not only those that a screen shows.
void WatchTable::valuesRead(const host::Runtime& runtime, qint64 now)
{
    const host::ValueTable& values = runtime.values();
    m_courses.resize(values.size());
    for (int row = 0; row < values.size(); ++row) {
        Course& course = m_courses[row];
        if (course.reads == values.reads(row))
            continue;
        if (course.changes != values.changes(row))
            course.changedAt = now;
        course.reads = values.reads(row);
        course.changes = values.changes(row);
        const host::DataPoint& point = values.point(row);
        if (isSingle(point))
            course.history.note(host::decodeValue(point, values.bytes(row)), now);
    }
}

void WatchTable::refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view)
{
    const host::ValueTable& values = runtime.values();
    m_courses.resize(values.size());
    QVector<WatchRow> rows;
    rows.reserve(values.size());
    for (int row = 0; row < values.size(); ++row)
        rows.append(watchRow(values, row, now));
    m_state.update(rows);
    m_link = view.linkStatus(runtime, now);
}

WatchRow WatchTable::watchRow(const host::ValueTable& values, int index, qint64 now) const
{
    const host::DataPoint& point = values.point(index);
    const Course& course = m_courses[index];
    WatchRow row;
    row.label = point.text;
    row.value = shownValue(values, index);
    row.isStale = values.isStale(index, now);
    if (!values.wasRead(index))
        return row;
    row.age = values.age(index, now);
    if (isSingle(point))
        row.number = values::numericValue(host::decodeValue(point, values.bytes(index)));
    if (course.changes > 0)
        row.sinceChange = now - course.changedAt;
    row.trend = course.history.trend(watchTrendSeconds(m_width), now);
    row.lowest = limitText(point, course.history.lowest());
    row.highest = limitText(point, course.history.highest());
    return row;
}

void WatchTable::press(const Key& key, TerminalView* view)
{
    view->forgetMessage();
    const WatchState::Action action = m_state.press(key);
    const QString text = m_state.takeMessage();
    if (!text.isEmpty())
        view->message(text);
    switch (action.kind) {
        case WatchState::Action::None:
            break;
        case WatchState::Action::Quit:
            view->carryOut(QStringLiteral("quit"));
            break;
        case WatchState::Action::Write:
            view->message(QStringLiteral("writing %1").arg(action.assignment));
            view->carryOut(QStringLiteral("write ") + action.assignment);
            break;
        case WatchState::Action::ForgetRanges:
            for (Course& course : m_courses)
                course.history.forgetRange();
            view->message(QStringLiteral("MIN and MAX begin anew"));
            break;
    }
}

QStringList WatchTable::layOut(const TerminalView& view) const
{
    return layOutWatch({m_title, m_link, view.isLinkUp(), view.lastMessage()}, m_state,
                       view.width(), view.height(), view.style());
}

} // namespace plc::cli
