#ifndef PLC_VALUES_STEADY_TIME_H
#define PLC_VALUES_STEADY_TIME_H

#include <QtCore/QtGlobal>

#include <chrono>

namespace plc::values {

/// Milliseconds of a clock that nobody sets, from a begin that says nothing.
inline qint64 steadyTime()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

} // namespace plc::values

#endif
