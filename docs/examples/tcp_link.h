#ifndef PLC_DOCS_EXAMPLES_TCP_LINK_H
#define PLC_DOCS_EXAMPLES_TCP_LINK_H

#include <QtNetwork/QTcpSocket>

#include "plc_driver.h"

namespace example {

enum class Exchange { Done, Repeat, Idle, LoginRefused, Abandoned, LinkLost };

/// Waits for one whole frame. False when it has not come within `timeout` milliseconds.
bool receiveFrame(QTcpSocket& socket, int timeout, QByteArray* frame);

/// One request and its reply.
Exchange exchange(QTcpSocket& socket, ComInfo& settings, int timeout);

/// After the connection was closed: gives up the transaction under way, or the next one, so that
/// the driver logs in anew. False when there was none.
bool giveUpTransaction();

} // namespace example

#endif
