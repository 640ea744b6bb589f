#ifndef PLC_RECORDER_WRITE_LOCK_H
#define PLC_RECORDER_WRITE_LOCK_H

#include <QtCore/QString>

#include "values/expected.h"

namespace plc::recorder {

/// Keeps a second process, or another part of this one, from recording into the same file: a file
/// beside it with "-lock" behind its name, which is locked as long as this object lives. One that a
/// killed process left is not in the way.
class WriteLock {
public:
    WriteLock() = default;
    ~WriteLock();
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    /// Locks the recording `path`, unless that is locked by this already.
    Expected<void> take(const QString& path);

private:
    void release();

    QByteArray m_name;
    int m_file = -1;
};

} // namespace plc::recorder

#endif
