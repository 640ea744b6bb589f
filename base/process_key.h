#ifndef PLC_BASE_PROCESS_KEY_H
#define PLC_BASE_PROCESS_KEY_H

#include <QtCore/QtGlobal>

namespace plc {

/// A number that differs from process to process and cannot be foreseen. Reads no file, no
/// environment and no clock.
quint64 processKey();

} // namespace plc

#endif
