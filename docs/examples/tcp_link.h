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

/// Gives up the transaction under way, or the next one. False when there was none.
bool giveUpTransaction(ComInfo& settings);

/// After the connection was closed: gives up all writes and one-shot reads, so that none is carried
/// out when the PLC is back, and makes the driver forget the login.
void giveUpEverything(ComInfo& settings);

} // namespace example

#endif
