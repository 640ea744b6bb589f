#include "cli/screen_layout.h"

#include "cli/label_column.h"
#include "cli/text_cells.h"

namespace plc::cli {
namespace {

constexpr int kLinesAround = 5;  ///< Title, status, heading, message and prompt.
constexpr int kColumnWidth = 78; ///< From twice this on there are two columns, and so on.
constexpr int kAgeWidth = 9;
constexpr int kRateWidth = 8;

int columnsOnScreen(int width)
{
    return qMax(1, width / kColumnWidth);
}

int linesForRows(int height)
{
    return qMax(0, height - kLinesAround);
}

/// What values of this width leave for label and value.
int labelAndValueWidth(int width)
{
    return qMax(0, width - kAgeWidth - kRateWidth);
}

/// Cells of a label in a row of this width.
int labelWidth(int width)
{
    return labelAndValueWidth(width) / 2 - 1;
}

/// Label, which fits already, value, age and rate in exactly `width` characters.
QString rowText(const ScreenRow& row, const QString& shortLabel, int width)
{
    const int valueWidth = labelAndValueWidth(width) - labelWidth(width) - 1;
    const QString text = fitted(shortLabel, labelWidth(width)) + QLatin1Char(' ') +
                         fitted(row.value, valueWidth) + row.age.rightJustified(kAgeWidth) +
                         row.rate.rightJustified(kRateWidth);
    return fitted(text, width);
}

QString headingLine(int width, const Style& style)
{
    ScreenRow heading;
    heading.label = QStringLiteral("LABEL");
    heading.value = QStringLiteral("VALUE");
    heading.age = QStringLiteral("AGE");
    heading.rate = QStringLiteral("RATE");
    const int columns = columnsOnScreen(width);
    QString line;
    for (int column = 0; column < columns; ++column)
        line += fitted(rowText(heading, heading.label, width / columns - 1), width / columns);
    return style.apply(Emphasis::Heading, fitted(line, width));
}

/// The labels in sight, so that they can be told apart.
QStringList shownLabels(const ScreenContent& content, int width, int lines, int firstRow)
{
    const int columns = columnsOnScreen(width);
    QStringList labels;
    for (const ScreenRow& row : content.rows.mid(firstRow, columns * lines))
        labels.append(row.label);
    return labelColumn(labels, labelWidth(width / columns - 1));
}

/// `labels` are those in sight, in their order.
QString rowsLine(const ScreenContent& content, const QStringList& labels, int width, int lines,
                 int firstRow, int line, const Style& style)
{
    const int columns = columnsOnScreen(width);
    QString text;
    for (int column = 0; column < columns; ++column) {
        const int index = firstRow + column * lines + line;
        if (index >= int(content.rows.size()))
            break;
        const ScreenRow& row = content.rows[index];
        const QString cell = rowText(row, labels[index - firstRow], width / columns - 1);
        text += row.isStale ? style.apply(Emphasis::Failure, cell) : cell;
        text += QLatin1Char(' ');
    }
    return text;
}

QString positionText(const ScreenContent& content, int shown, int firstRow)
{
    const int count = int(content.rows.size());
    if (shown >= count)
        return QStringLiteral("%1 values").arg(count);
    return QStringLiteral("values %1 to %2 of %3")
        .arg(firstRow + 1)
        .arg(qMin(count, firstRow + shown))
        .arg(count);
}

} // namespace

int rowsOnScreen(int width, int height)
{
    return columnsOnScreen(width) * linesForRows(height);
}

QStringList layOutScreen(const ScreenContent& content, int width, int height, int firstRow,
                         const Style& style)
{
    const int lines = linesForRows(height);
    const QString position = positionText(content, rowsOnScreen(width, height), firstRow);
    const QStringList labels = shownLabels(content, width, lines, firstRow);
    QStringList screen;
    screen.append(fitted(content.title, width));
    screen.append(fitted(QStringLiteral("%1, %2").arg(content.status, position), width));
    screen.append(headingLine(width, style));
    for (int line = 0; line < lines; ++line)
        screen.append(rowsLine(content, labels, width, lines, firstRow, line, style));
    screen.append(fitted(content.message, width));
    // In the last cell of the last line some terminals scroll.
    screen.append(fitted(content.prompt, width - 1));
    return screen.mid(qMax(0, int(screen.size()) - height));
}

} // namespace plc::cli
