#ifndef PLC_HOST_TRANSFERS_TAG_H
#define PLC_HOST_TRANSFERS_TAG_H

#include <QtCore/QtGlobal>

namespace plc::host {

/// Numbers the writes of a runtime, and never comes to its end.
using Tag = qint64;

} // namespace plc::host

#endif
