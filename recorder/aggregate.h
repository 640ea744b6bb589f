#ifndef PLC_RECORDER_AGGREGATE_H
#define PLC_RECORDER_AGGREGATE_H

#include <QtCore/QVector>

#include <array>
#include <limits>

#include "recorder/exact_number.h"

namespace plc::recorder {

/// What is known of a number at some time.
enum class Knowledge : quint8 {
    Number,
    Stale,    ///< Too old to be relied on, or never read.
    Bad,      ///< The PLC does not give it.
    Gap,      ///< Nothing was recorded.
    NoNumber, ///< It was recorded and is infinite, NaN, or no number at all.
};

/// What a value was from `begin` to the begin of the next step. Times at which it was not good, or
/// no finite number, count neither as value nor as coverage.
struct Aggregate {
    qint64 begin = 0;
    double mean = 0; ///< Weighted by time.
    ExactNumber minimum;
    ExactNumber maximum;
    double coverage = 0; ///< Part of the step of which the value is known, 0 to 1. At 0 the other
                         ///< numbers mean nothing.
    /// What held for the most of the other time; Number: there is none.
    Knowledge rest = Knowledge::Number;
};

/// A number from one time on, or that none is known. An ExactNumber as a member would make it
/// longer by a third, and a query keeps many.
struct NumberSample {
    qint64 time = 0;
    double nearest = 0;
    qint16 rest = 0;
    Knowledge knowledge = Knowledge::Gap;

    ExactNumber number() const { return {nearest, rest}; }
};

/// What a value was in one step, in the making.
class StepSum {
public:
    /// It held for so many ms, or for none and was recorded all the same.
    void add(const NumberSample& sample, qint64 duration);
    /// Of a step that began at `begin` and lasted so many ms.
    Aggregate aggregate(qint64 begin, qint64 duration) const;

private:
    ExactNumber m_minimum{std::numeric_limits<double>::infinity()};
    ExactNumber m_maximum{-std::numeric_limits<double>::infinity()};
    long double m_sum = 0;
    std::array<qint64, 5> m_durations{}; ///< ms, by Knowledge.
};

/// Sums samples into aggregates of [from, to) in steps of `step` ms, the last of which may be
/// shorter. A sample that was held for no time counts as minimum and maximum.
class AggregateSum {
public:
    AggregateSum(qint64 from, qint64 to, qint64 step);

    /// The next sample, not earlier than the one before. Of those before the range the last one is
    /// held at its begin; those behind it count for nothing.
    void add(const NumberSample& sample);
    /// What was held last is held to the end.
    QVector<Aggregate> finish();

private:
    void hold(qint64 until);
    void endStep();

    qint64 m_to;
    qint64 m_step;
    qint64 m_begin;
    qint64 m_end;
    qint64 m_since; ///< Up to here the step is summed.
    NumberSample m_held;
    StepSum m_sum;
    QVector<Aggregate> m_aggregates;
};

} // namespace plc::recorder

#endif
