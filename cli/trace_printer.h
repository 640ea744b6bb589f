#ifndef PLC_CLI_TRACE_PRINTER_H
#define PLC_CLI_TRACE_PRINTER_H

#include "cli/link_observer.h"

namespace plc::cli {

/// Prints frames on the standard error: the time, the direction (> to the PLC, < from it), the size
/// and the bytes, and on a second line what they mean.
class TracePrinter : public host::RuntimeListener {
public:
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSent(const host::SentRequest& request) override;
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) override;
};

} // namespace plc::cli

#endif
