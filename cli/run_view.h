#ifndef PLC_CLI_RUN_VIEW_H
#define PLC_CLI_RUN_VIEW_H

#include "cli/assignment.h"
#include "host/runtime/runtime.h"

namespace plc::cli {

/// How `plc run` shows what happens.
class RunView {
public:
    virtual ~RunView() = default;

    virtual void linkChanged(host::LinkState state, const QString& reason, int retryDelay) = 0;
    virtual void writeSettled(const Assignment& assignment,
                              const host::TransferOutcome& outcome) = 0;
    /// The PLC does not give this value.
    virtual void valueRefused(const host::DataPoint& point, int status) = 0;
    /// Something for the user, such as the answer to a command.
    virtual void message(const QString& text) = 0;
    /// Some values were read; refresh() need not be called for each time.
    virtual void valuesRead(const host::Runtime& runtime, qint64 now) = 0;
    /// Shows the values as they are now.
    virtual void refresh(const host::Runtime& runtime, qint64 now) = 0;
    /// The last call: the run took `now` ms.
    virtual void end(const host::Runtime& runtime, qint64 now) = 0;
    /// Milliseconds from one refresh() to the next unless the user wants it otherwise.
    virtual int usualInterval() const = 0;
};

/// "connected to HOST:PORT" and the like.
QString linkText(host::LinkState state, const QString& peer, const QString& reason, int retryDelay);

/// "the PLC refuses Plant.x (area 1 address 10) with status 0x0031 …"
QString refusedValueText(const host::DataPoint& point, int status);

/// "1200 requests, 1199 accepted, 1 refused, link lost 0 times, in 10.0 s"
QString summaryText(const host::TrafficCounters& counters, qint64 duration);

} // namespace plc::cli

#endif
