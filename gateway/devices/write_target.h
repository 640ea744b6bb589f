#ifndef PLC_GATEWAY_DEVICES_WRITE_TARGET_H
#define PLC_GATEWAY_DEVICES_WRITE_TARGET_H

#include <QtCore/QVector>

#include "gateway/model/metric.h"
#include "host/transfers/write_tracker.h"
#include "values/value_text.h"

namespace plc::gateway {

/// A PLC as writes see it.
class WriteTarget {
public:
    virtual ~WriteTarget() = default;

    virtual const Device& description() const = 0;
    virtual int openWrites() const = 0;
    /// Settled exactly once, possibly at once.
    virtual void write(int metric, const QVector<values::Value>& values,
                       host::WriteSettled settled) = 0;
};

} // namespace plc::gateway

#endif
