#include "host/cli/watch_layout.h"

#include "host/cli/text_cells.h"
#include "host/cli/value_history.h"

namespace plc {
namespace {

const char kKeys[] = "?:help  w:write  p:pause  s:sort  /:filter  r:reset  q:end";

constexpr int kLinesAround = 5;      ///< Title, arrangement, heading, message and keys.
constexpr int kFewLinesAround = 2;   ///< Heading, and message or keys.
constexpr int kHeightForAround = 10; ///< Lower terminals have few lines around the table.
constexpr int kMostMessageLines = 3;
constexpr int kMarkWidth = 2; ///< Selected, and changed or stale.
constexpr int kAgeWidth = 8;
constexpr int kRangeWidth = 10; ///< Of MIN and of MAX, with a blank before each.
constexpr int kShortTrend = 10;
constexpr int kLongTrend = 31;
constexpr int kLeastValueWidth = 14;
constexpr int kLeastLabelWidth = 12;

// Terminals narrower than these go without a column.
constexpr int kWidthForAge = 32;
constexpr int kWidthForTrend = 48;
constexpr int kWidthForRange = 72;
constexpr int kWidthForLongTrend = 110;

/// How long a value counts as just changed.
constexpr qint64 kChangeShown = 1000; // ms

struct Columns {
    int label = 0;
    int value = 0;
    int trend = 0; ///< With the blank before it, as the following; 0: left out.
    int age = 0;
    int range = 0;
};

int trendWidth(int width)
{
    if (width < kWidthForTrend)
        return 0;
    return width < kWidthForLongTrend ? kShortTrend : kLongTrend;
}

Columns columnsFor(const WatchState& state, int width)
{
    Columns columns;
    columns.age = width < kWidthForAge ? 0 : kAgeWidth;
    columns.trend = trendWidth(width);
    columns.range = width < kWidthForRange ? 0 : kRangeWidth;
    const int rest = qMax(0, width - kMarkWidth - columns.age - columns.trend - 2 * columns.range);
    int longest = kLeastLabelWidth;
    for (int i = 0; i < state.count(); ++i)
        longest = qMax(longest, cellsOf(state.row(i).label));
    columns.label = qMin(longest + 1, qMax(rest / 2, rest - kLeastValueWidth));
    columns.value = rest - columns.label;
    return columns;
}

QString ageText(const std::optional<qint64>& age)
{
    if (!age)
        return QStringLiteral("never");
    const double seconds = double(*age) / 1000;
    if (*age < 1000)
        return QStringLiteral("%1 ms").arg(*age);
    if (seconds < 1000)
        return QStringLiteral("%1 s").arg(seconds, 0, 'f', 1);
    return QStringLiteral("%1 h").arg(seconds / 3600, 0, 'f', 1);
}

/// A column with a blank before it, or nothing if it is left out.
QString columnRight(const QString& text, int width)
{
    return width == 0 ? QString() : QLatin1Char(' ') + fittedRight(text, width - 1);
}

QString restOfRow(const QString& trend, const QString& age, const QString& lowest,
                  const QString& highest, const Columns& columns)
{
    const QString trendColumn =
        columns.trend == 0 ? QString() : QLatin1Char(' ') + fitted(trend, columns.trend - 1);
    return trendColumn + columnRight(age, columns.age) + columnRight(lowest, columns.range) +
           columnRight(highest, columns.range);
}

QString headingLine(const Columns& columns, int width, const Style& style)
{
    const QString text = QString(kMarkWidth, QLatin1Char(' ')) +
                         fitted(QStringLiteral("LABEL"), columns.label) +
                         fitted(QStringLiteral("VALUE"), columns.value) +
                         restOfRow(QStringLiteral("TREND"), QStringLiteral("AGE"),
                                   QStringLiteral("MIN"), QStringLiteral("MAX"), columns);
    return style.apply(Emphasis::Heading, fitted(text, width));
}

QString rowLine(const WatchRow& row, bool isSelected, const Columns& columns, int width,
                const Style& style)
{
    const bool hasChanged = row.sinceChange && *row.sinceChange < kChangeShown;
    const QChar mark = QLatin1Char(row.isStale ? '!' : hasChanged ? '*' : ' ');
    const QString label = QString(QLatin1Char(isSelected ? '>' : ' ')) + mark +
                          fittedTail(row.label, columns.label - 1) + QLatin1Char(' ');
    const QString value = fitted(row.value, columns.value);
    const QString trend =
        sparkline(row.trend.mid(qMax(0, int(row.trend.size()) - columns.trend + 1)));
    const QString rest = restOfRow(trend, ageText(row.age), row.lowest, row.highest, columns);
    // Too narrow for even these columns: without sequences, which must not be cut.
    if (cellsOf(label + value) > width)
        return fitted(label + value, width);
    if (row.isStale)
        return style.apply(Emphasis::Failure, label + value + rest);
    if (hasChanged)
        return label + style.apply(Emphasis::Changed, value) + rest;
    return isSelected ? style.apply(Emphasis::Strong, label + value + rest) : label + value + rest;
}

/// "8 of 40 values, by age, filter tank"
QString tableText(const WatchState& state)
{
    QString text = state.count() == state.all()
                       ? QStringLiteral("%1 values").arg(state.all())
                       : QStringLiteral("%1 of %2 values").arg(state.count()).arg(state.all());
    text += QStringLiteral(", ") + state.orderText();
    if (!state.filter().isEmpty())
        text += QStringLiteral(", filter ") + state.filter();
    return text;
}

QString titleLine(const WatchFrame& frame, int width, const Style& style)
{
    const QString text = fitted(QStringLiteral("%1: %2").arg(frame.title, frame.link), width);
    return frame.isLinkUp ? text : style.apply(Emphasis::Failure, text);
}

QString arrangementLine(const WatchState& state, int width, const Style& style)
{
    if (!state.isPaused())
        return fitted(tableText(state), width);
    return style.apply(Emphasis::Warning,
                       fitted(QStringLiteral("PAUSED, ") + tableText(state), width));
}

/// What is being typed, or what the keys do.
QString keysLine(const WatchState& state, int width)
{
    const QString prompt = state.prompt();
    // In the last cell of the last line some terminals scroll.
    return prompt.isEmpty() ? fitted(QString::fromLatin1(kKeys), width - 1)
                            : fittedTail(prompt, width - 1);
}

QStringList tableLines(const WatchState& state, const Columns& columns, int lines, int width,
                       const Style& style)
{
    QStringList table;
    for (int i = 0; i < lines; ++i) {
        const int position = state.firstLine() + i;
        table.append(
            position < state.count()
                ? rowLine(state.row(position), position == state.selected(), columns, width, style)
                : QString());
    }
    return table;
}

QStringList helpLines(const WatchState& state, int lines, int width)
{
    const QStringList help = watchHelp();
    QStringList shown;
    for (int i = 0; i < lines; ++i)
        shown.append(fitted(help.value(state.firstHelpLine() + i), width));
    return shown;
}

/// The message in as many lines as it takes, up to a few: what to do stands at its end.
QStringList messageLines(const QString& message, int width)
{
    QStringList lines;
    QString rest = message;
    while (lines.size() + 1 < kMostMessageLines && cellsOf(rest) > width) {
        int end = int(rest.lastIndexOf(QLatin1Char(' '), width));
        if (end < 1)
            break;
        lines.append(fitted(rest.left(end), width));
        rest = rest.mid(end + 1);
    }
    lines.append(fitted(rest, width));
    return lines;
}

} // namespace

int watchPage(int height)
{
    return qMax(0, height - (height < kHeightForAround ? kFewLinesAround : kLinesAround));
}

int watchTrendSeconds(int width)
{
    return qMax(0, trendWidth(width) - 1);
}

QStringList layOutWatch(const WatchFrame& frame, const WatchState& state, int width, int height,
                        const Style& style)
{
    const int page = watchPage(height);
    const bool isLow = height < kHeightForAround;
    const Columns columns = columnsFor(state, width);
    const QStringList message = messageLines(frame.message, width);
    // A long message hides the last lines of the table.
    const int lines = isLow ? page : qMax(0, page - int(message.size()) + 1);
    QStringList screen;
    if (!isLow)
        screen << titleLine(frame, width, style) << arrangementLine(state, width, style);
    if (state.mode() == WatchState::Mode::InHelp) {
        screen.append(style.apply(Emphasis::Heading, fitted(QStringLiteral("  KEYS"), width)));
        screen += helpLines(state, lines, width);
    } else {
        screen.append(headingLine(columns, width, style));
        screen += tableLines(state, columns, lines, width, style);
    }
    if (!isLow)
        screen += message;
    const bool showsMessage = isLow && !frame.message.isEmpty() && state.prompt().isEmpty();
    screen.append(showsMessage ? fitted(frame.message, width - 1) : keysLine(state, width));
    return screen.mid(qMax(0, int(screen.size()) - height));
}

} // namespace plc
