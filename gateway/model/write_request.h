#ifndef PLC_GATEWAY_MODEL_WRITE_REQUEST_H
#define PLC_GATEWAY_MODEL_WRITE_REQUEST_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "values/value_text.h"

namespace plc::gateway {

/// A write that a consumer asks for.
struct WriteRequest {
    int device = -1; ///< Its number; -1: there is none of that name.
    int metric = -1; ///< Its place in Device::metrics; -1: there is none of that name.
    QString name;    ///< Of the metric, as the consumer named it.
    QString id;      ///< What the consumer recognises the outcome by; may be empty.
    /// As many as the metric has elements, each in its type's range; none if `error` says why.
    QVector<values::Value> values;
    QString error;
    QString topic; ///< Of the message that asked for it; set by who received that.
};

/// How a write ended: in exactly one of Done, Refused and Unknown.
struct WriteOutcome {
    enum Kind {
        Requested, ///< For the audit alone: it is about to be sent, and has not ended.
        Done,      ///< The PLC has carried it out.
        Refused,   ///< It was not carried out: not allowed, out of range, not sent, or the PLC
                   ///< refused.
        Unknown    ///< The link was lost meanwhile: it may or may not have been carried out.
    };

    Kind kind = Refused;
    int device = -1;
    int metric = -1;
    QString name;
    QString id;
    QString value;   ///< As valueText() has it; of several "[1, 2]"; empty if there was none.
    QString reason;  ///< Why it is not done.
    qint64 time = 0; ///< When that was known; milliseconds since 1970-01-01T00:00:00Z.
    // For the audit:
    QString deviceName;
    QString label; ///< As the PLC knows the value; empty if there is none.
    QString topic; ///< As WriteRequest::topic.
};

/// "requested", "done", "refused" or "unknown"
QString outcomeWord(WriteOutcome::Kind kind);

} // namespace plc::gateway

#endif
