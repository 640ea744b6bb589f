#ifndef PLC_CLI_TEXT_CELLS_H
#define PLC_CLI_TEXT_CELLS_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace plc::cli {

// Texts as terminals show them, in cells: Chinese, Japanese and Korean characters take two, marks
// that are put over others none.

int cellsOf(const QString& text);

/// `text` in exactly `width` cells, its end cut off behind an ellipsis where it is too long.
/// What would move the cursor or reorder the line is shown as visibleText() does.
QString fitted(const QString& text, int width);

/// As fitted(), with the beginning cut off: of labels the end tells more.
QString fittedTail(const QString& text, int width);

/// `text` at the right end of `width` cells, cut off as by fitted().
QString fittedRight(const QString& text, int width);

/// Where a text that is longer than a line goes on in the next.
enum class Wrap {
    Anywhere, ///< Nothing is left out: the lines one behind the other are the text.
    AtBlanks  ///< Behind the last blank of a line if there is one; that blank is left out.
};

/// `text` in as many lines of at most `width` cells as it takes, not filled up with blanks; at
/// least one. A character that is wider than a line gets one of its own.
QStringList wrapped(const QString& text, int width, Wrap wrap);

/// `text` for a terminal that shows ASCII only: the blocks of a trend become signs of different
/// height, an ellipsis ~, and each cell of other characters a question mark.
QByteArray asciiCells(const QString& text);

/// Whether programs are to write UTF-8, by the locale's environment variables.
bool localeIsUtf8();

} // namespace plc::cli

#endif
