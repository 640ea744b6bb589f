#ifndef PLC_CLI_WATCH_VIEW_H
#define PLC_CLI_WATCH_VIEW_H

#include <QtCore/QVector>

#include <functional>

#include "cli/terminal_view.h"
#include "cli/value_history.h"
#include "cli/watch_layout.h"
#include "cli/watch_state.h"

namespace plc::cli {

/// Shows values with what became of them on a terminal.
class WatchView : public TerminalView {
public:
    WatchView(const QString& title, const QString& peer,
              const std::function<void(const QString&)>& carryOut, const WatchState::Check& check);

    /// From now on nothing can be written, for this reason.
    void refuseWrites(const QString& reason);

    void valuesRead(const host::Runtime& runtime, qint64 now) override;
    void refresh(const host::Runtime& runtime, qint64 now) override;

private:
    /// What is known of a value beside what the table holds.
    struct Course {
        ValueHistory history;
        quint64 reads = 0; ///< Those that are in the history.
        quint64 changes = 0;
        qint64 changedAt = 0;
    };

    void press(const Key& key) override;
    QStringList layOut() const override;
    void resized() override { m_state.setPage(watchPage(height())); }

    WatchRow watchRow(const host::ValueTable& values, int index, qint64 now) const;

    const QString m_title;
    QString m_link;
    WatchState m_state;
    QVector<Course> m_courses;
};

} // namespace plc::cli

#endif
