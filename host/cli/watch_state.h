#ifndef PLC_HOST_CLI_WATCH_STATE_H
#define PLC_HOST_CLI_WATCH_STATE_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>
#include <optional>
#include <utility>

#include "host/cli/key_reader.h"

namespace plc {

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

    /// Says why LABEL=VALUE cannot be written; nothing if it can.
    using Check = std::function<QString(const QString& assignment)>;

    explicit WatchState(Check check) : m_check(std::move(check)) {}

    /// The values as they are now; while paused they are not taken.
    void update(const QVector<WatchRow>& rows);
    /// Lines that the terminal has for the table or the help.
    void setPage(int lines);
    Action press(const Key& key);

    int all() const { return int(m_rows.size()); }
    /// Those that pass the filter, in order.
    int count() const { return int(m_shown.size()); }
    const WatchRow& row(int position) const { return m_rows[m_shown[position]]; }
    /// Positions of the selected value, and of the first line on the screen.
    int selected() const { return m_selected; }
    int firstLine() const { return m_firstLine; }
    int firstHelpLine() const { return m_firstHelpLine; }

    bool isPaused() const { return m_isPaused; }
    Mode mode() const { return m_mode; }
    QString orderText() const;
    const QString& filter() const { return m_filter; }
    /// What to tell the user beside the table: the filter or value being typed, or a question;
    /// empty when the keys work on the table.
    QString prompt() const;
    /// Why a key did nothing. Told once.
    QString takeMessage() { return std::exchange(m_message, QString()); }

private:
    Action pressInTable(const Key& key);
    Action pressCharacter(QChar character);
    void pressInHelp(const Key& key);
    void pressInFilter(const Key& key);
    void pressInValue(const Key& key);
    Action pressInConfirmation(const Key& key);
    void select(int position);
    void beginValue();
    void arrange();

    Check m_check;
    QVector<WatchRow> m_rows;
    QVector<int> m_shown;
    int m_page = 1;
    int m_selected = 0;
    int m_firstLine = 0;
    int m_firstHelpLine = 0;
    Order m_order = Order::AsNamed;
    bool m_isReversed = false;
    bool m_isPaused = false;
    Mode m_mode = Mode::InTable;
    QString m_filter;
    QString m_label; ///< Of the value being written.
    QString m_typed;
    QString m_message;
};

/// The lines of the help.
QStringList watchHelp();

} // namespace plc

#endif
