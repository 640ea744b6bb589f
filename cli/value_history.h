#ifndef PLC_CLI_VALUE_HISTORY_H
#define PLC_CLI_VALUE_HISTORY_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "values/value_text.h"

namespace plc::cli {

/// What became of a numeric value: the lowest and the highest that was read, and its course over
/// the last minute.
class ValueHistory {
public:
    static constexpr int kTrendSeconds = 60;

    ValueHistory() : m_trend(kTrendSeconds) {}

    /// The value was read; texts, infinities and NaN are left out.
    void note(const values::Value& value, qint64 now);
    /// The lowest and the highest begin anew with the next value.
    void forgetRange();

    /// Nothing before the first value.
    const std::optional<values::Value>& lowest() const { return m_lowest; }
    const std::optional<values::Value>& highest() const { return m_highest; }

    /// The value in each of the last `seconds` seconds, the newest last; nothing in those in which
    /// it was not read.
    QVector<std::optional<double>> trend(int seconds, qint64 now) const;

private:
    /// The last value of a second, counted from the clock's start.
    struct Second {
        qint64 index = -1;
        double number = 0;
    };

    QVector<Second> m_trend; ///< The second `index` is at index % kTrendSeconds.
    std::optional<values::Value> m_lowest;
    std::optional<values::Value> m_highest;
};

/// The numbers as blocks of different heights, the lowest and the highest of them at the ends of
/// the scale; blanks where there is none.
QString sparkline(const QVector<std::optional<double>>& numbers);

} // namespace plc::cli

#endif
