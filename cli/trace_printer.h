#ifndef PLC_CLI_TRACE_PRINTER_H
#define PLC_CLI_TRACE_PRINTER_H

#include "host/link/session.h"

namespace plc::cli {

/// Prints frames on the standard error: the time, the direction (> to the PLC, < from it), the size
/// and the bytes, and on a second line what they mean.
class TracePrinter {
public:
    explicit TracePrinter(bool isOn) : m_isOn(isOn) {}

    void request(const host::SentRequest& request) const;
    void reply(const host::SentRequest& request, const host::Answer& answer,
               const QByteArray& reply) const;
    void link(host::LinkState state, const QString& reason) const;

private:
    const bool m_isOn;
};

} // namespace plc::cli

#endif
