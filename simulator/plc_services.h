#ifndef PLC_SIMULATOR_PLC_SERVICES_H
#define PLC_SIMULATOR_PLC_SERVICES_H

#include <QtCore/QByteArray>

#include "simulator/plc_memory.h"
#include "simulator/wire.h"

namespace plc::simulator {

/// Entries of one request at most.
constexpr quint32 kMostEntries = 150;

/// What the PLC knows of one connection.
struct Session {
    enum class Login { None, Identified, Done };

    Login login = Login::None;
    /// Bytes 24 and 25 of the reply to the file request. Requests end in byte 25 and byte 24.
    quint8 infoByte24 = 0;
    quint8 infoByte25 = 0;
};

/// Answers requests from the memory.
class PlcServices {
public:
    /// `name` is told in the reply to the identification.
    PlcServices(PlcMemory* memory, const QByteArray& name) : m_memory(memory), m_name(name) {}

    void setLoginRefused(bool refused) { m_loginRefused = refused; }
    void setWritesRefused(bool refused) { m_writesRefused = refused; }

    /// The reply to one whole request frame.
    QByteArray reply(const QByteArray& request, Session* session);

    /// A reply that holds nothing but a status.
    static QByteArray statusReply(Status status);

private:
    QByteArray identify(const QByteArray& request, Session* session) const;
    QByteArray requestFile(const QByteArray& request, Session* session) const;
    QByteArray readVariables(const QByteArray& request, const Session& session) const;
    QByteArray writeVariables(const QByteArray& request, const Session& session);

    PlcMemory* m_memory;
    QByteArray m_name;
    bool m_loginRefused = false;
    bool m_writesRefused = false;
};

/// Status of a reply frame.
Status replyStatus(const QByteArray& reply);

} // namespace plc::simulator

#endif
