#ifndef PLC_CLI_WATCH_LAYOUT_H
#define PLC_CLI_WATCH_LAYOUT_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "cli/style.h"
#include "cli/watch_state.h"

namespace plc::cli {

/// What stands around the table.
struct WatchFrame {
    QString title;
    QString link; ///< State of link and traffic.
    bool isLinkUp = false;
    QString message; ///< What happened last.
};

/// The watched values in a terminal of this size: title and link, how the table is arranged, the
/// table from the first line in sight on, message, and what the keys do or what is being typed. A
/// question takes as many lines as it needs; of a value being typed at least the end is shown.
/// Exactly `height` lines, none of them wider than the terminal. A narrow terminal has fewer
/// columns, a low one less around the table.
QStringList layOutWatch(const WatchFrame& frame, const WatchState& state, int width, int height,
                        const Style& style);

/// Whether a terminal of this size shows all of a question.
bool showsWhole(const QString& question, int width, int height);

/// Lines for the table.
int watchPage(int height);

/// Seconds of the trend that are in sight.
int watchTrendSeconds(int width);

} // namespace plc::cli

#endif
