#ifndef PLC_RECORDER_AGGREGATE_H
#define PLC_RECORDER_AGGREGATE_H

#include <QtCore/QVector>

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

/// Aggregates of [from, to) in steps of `step` ms, the last of which may be shorter. `before` was
/// held before the first of `samples`, which ascend in time and lie in the range. One that was held
/// for no time counts as minimum and maximum.
QVector<Aggregate> aggregatesOf(const NumberSample& before, const QVector<NumberSample>& samples,
                                qint64 from, qint64 to, qint64 step);

} // namespace plc::recorder

#endif
