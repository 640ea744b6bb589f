#ifndef PLC_TESTS_SUPPORT_HANGING_DISK_H
#define PLC_TESTS_SUPPORT_HANGING_DISK_H

#include "tests/support/gate.h"

namespace plc::test {

/// Where whatever brings a file onto the disk waits.
Gate& diskGate();

} // namespace plc::test

#endif
