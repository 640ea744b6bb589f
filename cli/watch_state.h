#ifndef PLC_CLI_WATCH_STATE_H
#define PLC_CLI_WATCH_STATE_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>
#include <optional>
#include <utility>

#include "cli/key_reader.h"

namespace plc::cli {

/// A watched value as it is now.
struct WatchRow {
    QString label;
    QString value;                ///< As text, with its unit; "?" while it was never read.
    std::optional<double> number; ///< Where it is a single number.
    std::optional<qint64> age;    ///< ms; nothing while it was never read.
    QVector<std::optional<double>> trend;
    QString lowest; ///< Empty where there is none.
    QString highest;
    std::optional<qint64> sinceChange; ///< ms; nothing while it has not changed.
    bool isStale = false;
};

/// What the user makes of the watched values by keys: which are shown and in which order, which one
/// is selected, and what is being typed. Knows nothing of terminals.
///
/// A label is selected, not a place on the screen: it stays the selected one wherever its value is
/// sorted to. While the filter hides it, nothing is selected and nothing can be written.
class WatchState {
public:
    enum class Order { AsNamed, ByLabel, ByValue, ByAge, ByChange };
    /// What the keys mean at the time.
    enum class Mode { InTable, InHelp, TypingFilter, TypingValue, Confirming };

    /// What a key asks for, beyond a change of this state.
    struct Action {
        enum Kind { None, Quit, Write, ForgetRanges };
        Kind kind = None;
        QString assignment; ///< Of a write: LABEL=VALUE.
    };

    /// What LABEL=VALUE would write.
    struct Checked {
        QString obstacle; ///< Why it cannot be written; empty if it can.
        QString value;    ///< As it would be written, in a form that is taken again.
        QString unit;     ///< With a blank before it, or empty.
    };
    using Check = std::function<Checked(const QString& assignment)>;
    /// Whether all of a question can be shown at a time.
    using Fits = std::function<bool(const QString& question)>;

    WatchState(Check check, Fits fits) : m_check(std::move(check)), m_fits(std::move(fits)) {}

    /// From now on nothing can be written, for this reason.
    void refuseWrites(const QString& reason) { m_writeRefusal = reason; }
    /// The values as they are now; while paused they are not taken.
    void update(const QVector<WatchRow>& rows);
    /// Lines that the terminal has for the table or the help.
    void setPage(int lines);
    Action press(const Key& key);

    int all() const { return int(m_rows.size()); }
    /// Those that pass the filter, in order.
    int count() const { return int(m_shown.size()); }
    const WatchRow& row(int position) const { return m_rows[m_shown[position]]; }
    /// Position of the selected value; -1 while nothing is selected.
    int selected() const { return m_selected; }
    /// Position of the first line on the screen.
    int firstLine() const { return m_firstLine; }
    int firstHelpLine() const { return m_firstHelpLine; }

    bool isPaused() const { return m_isPaused; }
    Mode mode() const { return m_mode; }
    QString orderText() const;
    const QString& filter() const { return m_filter; }
    /// What to tell the user beside the table: the filter or value being typed, or a question;
    /// empty when the keys work on the table.
    QString prompt() const;
    /// How often a label was compared with the filter.
    quint64 comparisons() const { return m_comparisons; }
    /// Why a key did nothing. Told once.
    QString takeMessage() { return std::exchange(m_message, QString()); }

private:
    Action pressInTable(const Key& key);
    Action pressCharacter(QChar character);
    void togglePause();
    void sortBy(Order order, bool isReversed);
    void pressInHelp(const Key& key);
    void pressInFilter(const Key& key);
    void pressInValue(const Key& key);
    void confirm();
    Action pressInConfirmation(const Key& key);
    void move(int lines);
    void select(int position);
    void keepInSight();
    void beginValue();
    QString lastValue() const;
    QString question() const;
    void takeRows();
    void applyFilter();
    void arrange();

    Check m_check;
    Fits m_fits;
    QString m_writeRefusal;
    QVector<WatchRow> m_latest; ///< Of the last update, also while paused.
    QVector<WatchRow> m_rows;
    QVector<int> m_passing; ///< Rows that pass the filter, as named.
    QVector<int> m_shown;   ///< These in order.
    quint64 m_comparisons = 0;
    int m_page = 1;
    QString m_selectedLabel;
    int m_selectedRow = -1; ///< Of that label.
    int m_selected = -1;    ///< Where it is shown.
    int m_firstLine = 0;
    int m_firstHelpLine = 0;
    Order m_order = Order::AsNamed;
    bool m_isReversed = false;
    bool m_isPaused = false;
    Mode m_mode = Mode::InTable;
    QString m_filter;
    QString m_label; ///< Of the value being written.
    int m_row = -1;  ///< The same.
    QString m_typed;
    Checked m_checked; ///< What m_typed means.
    QString m_message;
};

/// The lines of the help.
QStringList watchHelp();

} // namespace plc::cli

#endif
