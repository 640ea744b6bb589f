#ifndef PLC_STREAMS_SYSTEM_ERROR_H
#define PLC_STREAMS_SYSTEM_ERROR_H

#include <QtCore/QString>

#include <cerrno>
#include <cstring>

namespace plc::streams {

/// What the last call of the system says, from errno.
inline QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace plc::streams

#endif
