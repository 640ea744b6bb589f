#include "cli/watch_layout.h"

#include <algorithm>

#include "cli/label_column.h"
#include "cli/text_cells.h"
#include "cli/value_history.h"

namespace plc::cli {
namespace {

constexpr char kKeys[] = "?:help  w:write  p:pause  s:sort  /:filter  r:reset  q:end";

constexpr int kLinesAround = 5;        ///< Title, arrangement, heading, message and keys.
constexpr int kFewLinesAround = 2;     ///< Heading, and message or keys.
constexpr int kHeightForAround = 10;   ///< Lower terminals have few lines around the table.
constexpr int kFewestMessageLines = 3; ///< That a message may take, however low the terminal is.
constexpr int kPartForMessage = 3;     ///< A high one has this part of its lines for it.
constexpr int kMarkWidth = 2;          ///< Selected, and changed or stale.
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

/// `shortLabel` fits into its column.
QString rowLine(const WatchRow& row, const QString& shortLabel, bool isSelected,
                const Columns& columns, int width, const Style& style)
{
    const bool hasChanged = row.sinceChange && *row.sinceChange < kChangeShown;
    const QChar mark = QLatin1Char(row.isStale ? '!' : hasChanged ? '*' : ' ');
    const QString label =
        QString(QLatin1Char(isSelected ? '>' : ' ')) + mark + shortLabel + QLatin1Char(' ');
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

/// Cells of a line at the bottom: in the last cell of the last line some terminals scroll.
int bottomWidth(int width)
{
    return qMax(1, width - 1);
}

/// What is being typed or asked, in up to `height` lines; what the keys do if it is nothing.
QStringList promptLines(const WatchState& state, int width, int height)
{
    const QString prompt = state.prompt();
    if (prompt.isEmpty())
        return {fitted(QString::fromLatin1(kKeys), width - 1)};
    const int most = qMax(1, height);
    QStringList lines = wrapped(prompt, bottomWidth(width), Wrap::Anywhere);
    if (int(lines.size()) > most) {
        lines = lines.mid(int(lines.size()) - most);
        lines.first().replace(0, 1, QChar(0x2026));
    }
    for (QString& line : lines)
        line = fitted(line, width - 1);
    return lines;
}

QStringList tableLines(const WatchState& state, const Columns& columns, int lines, int width,
                       const Style& style)
{
    QStringList labels;
    for (int i = state.firstLine(); i < qMin(state.count(), state.firstLine() + lines); ++i)
        labels.append(state.row(i).label);
    labels = labelColumn(labels, columns.label - 1);
    QStringList table;
    for (int i = 0; i < lines; ++i) {
        const int position = state.firstLine() + i;
        table.append(i < int(labels.size())
                         ? rowLine(state.row(position), labels[i], position == state.selected(),
                                   columns, width, style)
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
QStringList messageLines(const QString& message, int width, int height)
{
    const int most = qMax(kFewestMessageLines, height / kPartForMessage);
    QStringList lines = wrapped(message, qMax(1, width), Wrap::AtBlanks);
    if (int(lines.size()) > most) {
        const QStringList rest = lines.mid(most - 1);
        lines = lines.mid(0, most - 1) << rest.join(QLatin1Char(' '));
    }
    for (QString& line : lines)
        line = fitted(line, width);
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

bool showsWhole(const QString& question, int width, int height)
{
    const QStringList lines = wrapped(question, bottomWidth(width), Wrap::Anywhere);
    const auto fits = [width](const QString& line) { return cellsOf(line) <= width - 1; };
    return int(lines.size()) <= height && std::all_of(lines.begin(), lines.end(), fits);
}

QStringList layOutWatch(const WatchFrame& frame, const WatchState& state, int width, int height,
                        const Style& style)
{
    const bool isLow = height < kHeightForAround;
    const bool isTyping = !state.prompt().isEmpty();
    const Columns columns = columnsFor(state, width);
    QStringList below;
    if (!isLow || !frame.message.isEmpty())
        below = messageLines(frame.message, width, height);
    if (!isLow || isTyping || below.isEmpty())
        below += promptLines(state, width, height);
    else
        below = QStringList{fitted(frame.message, width - 1)};
    // What is told and asked hides the last lines of the table.
    const int lines = qMax(0, watchPage(height) + (isLow ? 1 : 2) - int(below.size()));
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
    screen += below;
    return screen.mid(qMax(0, int(screen.size()) - height));
}

} // namespace plc::cli
