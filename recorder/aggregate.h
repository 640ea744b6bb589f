#ifndef PLC_RECORDER_AGGREGATE_H
#define PLC_RECORDER_AGGREGATE_H

#include <QtCore/QVector>

#include <limits>

namespace plc::recorder {

/// What a value was from `begin` to the begin of the next step. Times at which it was not good, or
/// no finite number, count neither as value nor as coverage.
struct Aggregate {
    qint64 begin = 0;
    double mean = 0; ///< Weighted by time.
    double minimum = 0;
    double maximum = 0;
    double coverage = 0; ///< Part of the step of which the value is known, 0 to 1. At 0 the other
                         ///< members mean nothing.
};

/// A number from one time on, or that none is known.
struct NumberSample {
    qint64 time = 0;
    double number = 0;
    bool isKnown = false;
};

/// What a value was in one step, in the making.
class StepSum {
public:
    /// The number held for so many ms, or none and was recorded all the same.
    void add(double number, qint64 duration);
    /// Of a step that began at `begin` and lasted so many ms.
    Aggregate aggregate(qint64 begin, qint64 duration) const;

private:
    double m_minimum = std::numeric_limits<double>::infinity();
    double m_maximum = -std::numeric_limits<double>::infinity();
    long double m_sum = 0;
    qint64 m_known = 0;
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
