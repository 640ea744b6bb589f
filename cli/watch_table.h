#ifndef PLC_CLI_WATCH_TABLE_H
#define PLC_CLI_WATCH_TABLE_H

#include <QtCore/QVector>

#include "cli/terminal_table.h"
#include "cli/value_history.h"
#include "cli/watch_layout.h"
#include "cli/watch_state.h"

namespace plc::cli {

/// The values with what became of them, as `plc watch` shows them, and keys that sort, filter and
/// write them.
class WatchTable : public TerminalTable {
public:
    WatchTable(const QString& title, const WatchState::Check& check);

    /// From now on nothing can be written, for this reason.
    void refuseWrites(const QString& reason);

    void valuesRead(const host::Runtime& runtime, qint64 now) override;
    void refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view) override;
    void press(const Key& key, TerminalView* view) override;
    QStringList layOut(const TerminalView& view) const override;
    void resized(int width, int height) override;

private:
    /// What is known of a value beside what the table holds.
    struct Course {
        ValueHistory history;
        quint64 reads = 0; ///< Those that are in the history.
        quint64 changes = 0;
        qint64 changedAt = 0;
    };

    WatchRow watchRow(const host::ValueTable& values, int index, qint64 now) const;

    const QString m_title;
    int m_width = 0;
    int m_height = 0;
    QString m_link;
    WatchState m_state;
    QVector<Course> m_courses;
};

} // namespace plc::cli

#endif
