#ifndef PLC_HOST_CLI_TRACE_PRINTER_H
#define PLC_HOST_CLI_TRACE_PRINTER_H

#include "host/session.h"

namespace plc {

/// Prints frames on the standard error: the time, the direction (> to the PLC, < from it), the size
/// and the bytes, and on a second line what they mean.
class TracePrinter {
public:
    explicit TracePrinter(bool isOn) : m_isOn(isOn) {}

    void request(const SentRequest& request) const;
    void reply(const SentRequest& request, const Answer& answer, const QByteArray& reply) const;
    void link(LinkState state, const QString& reason) const;

private:
    const bool m_isOn;
};

} // namespace plc

#endif
