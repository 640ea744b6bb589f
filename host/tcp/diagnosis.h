#ifndef PLC_HOST_TCP_DIAGNOSIS_H
#define PLC_HOST_TCP_DIAGNOSIS_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtNetwork/QAbstractSocket>

#include "host/link/session.h"
#include "host/transfers/transfer_outcome.h"
#include "values/export.h"

namespace plc::host {

/// Why a step on the way to a value failed, for people.
struct Finding {
    QString happened;
    QString meaning;
    QString advice;
};

/// What came in place of a good reply.
struct ExchangeFailure {
    enum Kind {
        NoReply,
        ClosedByPeer, ///< Without a byte of a reply.
        HalfReply,
        NotAFrame,
        ShortReply, ///< A whole frame, too short for a login.
        WrongLength,
        Refused,
        LinkBroken ///< The network failed.
    };
    Kind kind = NoReply;
    int status = -1;  ///< In the reply; -1 where there was none.
    int received = 0; ///< Bytes.
    QString reason;   ///< What the session or the socket said.
};

/// The link was lost before the reply was whole; `error` is the socket's, UnknownSocketError when
/// the host closed it, and `received` what had come of the reply.
PLC_HOST_EXPORT ExchangeFailure failureOfLoss(QAbstractSocket::SocketError error,
                                              const QByteArray& received, const QString& reason);
/// The reply was whole, but not good.
PLC_HOST_EXPORT ExchangeFailure failureOfReply(const Answer& answer, const QByteArray& reply);

/// The host has no address.
PLC_HOST_EXPORT Finding findNameFailure(const QString& host, const QString& reason);
/// No connection was made.
PLC_HOST_EXPORT Finding findConnectionFailure(const QString& host, int port,
                                              QAbstractSocket::SocketError error,
                                              const QString& reason);
/// A request of the login, Identification or File, failed.
PLC_HOST_EXPORT Finding findLoginFailure(Service service, const ExchangeFailure& failure);
/// The first variable of an area could not be read; those of `readable` areas could.
PLC_HOST_EXPORT Finding findAreaFailure(int area, const ExchangeFailure& failure,
                                        const QVector<int>& readable);
/// A label could not be read although another variable of its area could.
PLC_HOST_EXPORT Finding findLabelFailure(const QString& label, int area,
                                         const ExchangeFailure& failure);
/// A label among others that were read together is refused; `place` says where it lies.
PLC_HOST_EXPORT Finding findRefusedLabel(const QString& label, const QString& place, int status);

} // namespace plc::host

#endif
