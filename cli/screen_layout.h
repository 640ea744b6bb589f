#ifndef PLC_CLI_SCREEN_LAYOUT_H
#define PLC_CLI_SCREEN_LAYOUT_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "cli/style.h"

namespace plc::cli {

/// A value as the screen shows it.
struct ScreenRow {
    QString label;
    QString value; ///< With its unit.
    QString age;
    QString rate;
    bool isStale = false;
};

/// Everything on the screen.
struct ScreenContent {
    QString title;
    QString status; ///< Of link and traffic.
    QVector<ScreenRow> rows;
    QString message; ///< What happened last.
    QString prompt;  ///< The command being typed, or what the keys do.
};

/// The content in a terminal of this size: title, status, as many rows as fit from `firstRow` on
/// (in several columns where it is wide), message and prompt. Exactly `height` lines, none of them
/// wider than the terminal. Stale rows are shown as failures.
QStringList layOutScreen(const ScreenContent& content, int width, int height, int firstRow,
                         const Style& style);

/// Rows that fit at a time.
int rowsOnScreen(int width, int height);

} // namespace plc::cli

#endif
