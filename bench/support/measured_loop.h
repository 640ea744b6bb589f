#ifndef PLC_BENCH_SUPPORT_MEASURED_LOOP_H
#define PLC_BENCH_SUPPORT_MEASURED_LOOP_H

#include <QtCore/QtGlobal>

#include <functional>

namespace plc::bench {

/// Runs the event loop for a time.
void runFor(int milliseconds);

/// Runs the event loop until this is so; ends the program where it does not come within `longest`
/// ms. Returns the milliseconds that it took.
qint64 runUntil(const char* what, const std::function<bool()>& condition, int longest);

/// Prints a figure beside its bound. Returns whether it is met.
bool printFigure(const char* name, double value, double most, const char* unit);

} // namespace plc::bench

#endif
