#ifndef PLC_RECORDER_CHANGE_H
#define PLC_RECORDER_CHANGE_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

namespace plc::recorder {

/// What is known of a value. The numbers are those on the disk.
enum class Quality : quint8 {
    Good = 0,
    Stale = 1, ///< Too old to be relied on, or never read.
    Bad = 2,   ///< The PLC does not give it.
    Gap = 3,   ///< Nothing was recorded from here on.
};

/// A value from one time on.
struct Sample {
    qint64 time = 0; ///< Milliseconds since 1970-01-01T00:00:00Z.
    Quality quality = Quality::Good;
    /// As the driver gives it; of a value that is not good the last one, or none; of a gap none.
    QByteArray bytes;
};

inline bool operator==(const Sample& a, const Sample& b)
{
    return a.time == b.time && a.quality == b.quality && a.bytes == b.bytes;
}

/// A sample of one of several series.
struct Change {
    int series = 0;
    Sample sample;
};

} // namespace plc::recorder

#endif
