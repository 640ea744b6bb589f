#ifndef PLC_BENCH_SUPPORT_PROCESS_FIGURES_H
#define PLC_BENCH_SUPPORT_PROCESS_FIGURES_H

#include <QtCore/QtGlobal>

namespace plc::bench {

/// Processor time that a process has used, in milliseconds.
double processorMs(qint64 process);

/// Memory of a process that no other shares, in KiB.
double privateKib(qint64 process);

} // namespace plc::bench

#endif
