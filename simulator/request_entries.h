#ifndef PLC_SIMULATOR_REQUEST_ENTRIES_H
#define PLC_SIMULATOR_REQUEST_ENTRIES_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "simulator/wire.h"

namespace plc::simulator {

struct Session;

/// A range of memory that a read request asks for.
struct ReadEntry {
    int area = 0;
    quint32 address = 0;
    quint32 length = 0;
};

/// A value of a write request. A bit has one byte of data and counts its address in bits.
struct WriteEntry {
    int area = 0;
    quint32 address = 0;
    bool isBit = false;
    QByteArray data;
};

/// Takes the entries out of a read or write request and checks its whole form: the count, the
/// entries, and the end, which repeats what `session` was told at the login. `entries` is of use if
/// the result is Status::Good.
Status parseReadRequest(const QByteArray& request, const Session& session,
                        QVector<ReadEntry>* entries);
Status parseWriteRequest(const QByteArray& request, const Session& session,
                         QVector<WriteEntry>* entries);

} // namespace plc::simulator

#endif
