#ifndef PLC_RECORDER_RUN_H
#define PLC_RECORDER_RUN_H

#include <QtCore/QtGlobal>

namespace plc::recorder {

/// Why a stretch of recording came to its end. The numbers are those on the disk.
enum class Ending {
    Open = 0,         ///< It goes on, or was interrupted and nobody has recorded since.
    Ended = 1,        ///< As it should.
    ClockSetBack = 2, ///< The next one goes on at once, by another clock.
    ChangesLost = 3,  ///< The disk was full or too slow.
    Interrupted = 4,  ///< The program or the computer died, or stood still.
};

/// A stretch of recording without gaps.
struct Run {
    qint64 id = 0;
    qint64 begin = 0;
    /// Least time of its samples, or the begin: values may have been asked for before.
    qint64 first = 0;
    qint64 until = 0; ///< Values are known up to here.
    Ending ending = Ending::Open;
};

} // namespace plc::recorder

#endif
