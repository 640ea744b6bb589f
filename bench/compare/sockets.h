#ifndef PLC_BENCH_COMPARE_SOCKETS_H
#define PLC_BENCH_COMPARE_SOCKETS_H

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace plc::bench {

/// Prints why and ends the process: a comparison that lacks a side is of no use.
[[noreturn]] void giveUp(const QString& message);
/// As above with the system's reason.
[[noreturn]] void giveUpWithErrno(const char* what);

/// Listens on a free port of the loopback and prints it the way plc-simulator does.
int listenAndTell();
/// As above for a socket that listens already.
void tellPort(quint16 port);
/// Waits for the next client, whose small messages then go out at once.
int acceptClient(int listener);
int connectTo(quint16 port);
void sendAtOnce(int socket);

/// What has gone over a connection so far, as the kernel counts it.
struct Traffic {
    quint64 bytesSent = 0;
    quint64 bytesReceived = 0;
    quint64 segments = 0; ///< In both directions.
};

/// The traffic of the one connection that this process has to the port.
Traffic trafficTo(quint16 port);

} // namespace plc::bench

#endif
