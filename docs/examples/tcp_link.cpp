#include "tcp_link.h"

#include <QtCore/QDeadlineTimer>

namespace example {

bool receiveFrame(QTcpSocket& socket, int timeout, QByteArray* frame)
{
    const int kHeaderSize = 6;
    const QDeadlineTimer deadline(timeout); // for the whole frame
    int size = kHeaderSize;
    frame->clear();
    while (frame->size() < size) {
        if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(int(deadline.remainingTime())))
            return false;
        if (deadline.hasExpired())
            return false; // it came, but too late: this process may have been stopped
        *frame += socket.read(size - frame->size());
        if (frame->size() >= kHeaderSize)
            size = kHeaderSize + (uchar(frame->at(4)) << 8 | uchar(frame->at(5)));
    }
    return socket.bytesAvailable() == 0; // one reply, and nothing behind it
}

Exchange exchange(QTcpSocket& socket, ComInfo& settings, int timeout)
{
    const Protocol* request = ComCommunication();
    if (!request)
        return Exchange::Idle;
    if (socket.waitForReadyRead(0))
        return Exchange::LinkLost; // bytes that nobody asked for
    const bool sizeIsOpen = request->replyLength == PLC_REPLY_LENGTH_OPEN;
    socket.write(request->frame);

    QByteArray reply;
    if (!receiveFrame(socket, timeout, &reply))
        return Exchange::LinkLost;
    const RW_VAR* outcome = DataCom(&reply, int(reply.size()));
    if (sizeIsOpen && outcome->result == PLC_RESULT_ACCEPTED)
        outcome = DataCom(&reply, int(reply.size())); // the first call noted the size only

    switch (outcome->result) {
        case PLC_RESULT_ACCEPTED:
        case PLC_RESULT_REMOTE_ACCEPTED:
            settings.retryCount = 0; // failures of days ago do not count
            return Exchange::Done;
        case PLC_RESULT_NOT_FINISHED:
            return Exchange::Repeat;
        case PLC_RESULT_LOGIN_REFUSED:
            return Exchange::LoginRefused;
        default:
            return Exchange::Abandoned;
    }
}

bool giveUpTransaction(ComInfo& settings)
{
    if (!ComCommunication())
        return false;
    settings.retryCount = settings.retryLimit; // the next failure is the final one
    QByteArray nothing;
    DataCom(&nothing, 0);
    return true;
}

void giveUpEverything(ComInfo& settings)
{
    bool loginIsForgotten = false;
    int cyclicTurns = 0;
    // After five turns at most the others wait for one cyclic read, or for one null: two of these
    // in a row mean that nothing else is left.
    while (cyclicTurns < 2) {
        const Protocol* request = ComCommunication();
        const bool isCyclic = !request || request->var.aux1 == PLC_NO_HOST_REQUEST;
        cyclicTurns = isCyclic ? cyclicTurns + 1 : 0;
        loginIsForgotten = giveUpTransaction(settings) || loginIsForgotten;
    }
    if (loginIsForgotten)
        return;

    RW_VAR read; // for the purpose; never sent
    read.aux2 = PLC_REPLY_ACKNOWLEDGED;
    read.deviceNo = settings.localDeviceNo;
    read.station = PLC_ALL_STATIONS; // cannot be switched off
    read.length = 1;
    AddListOnceReadVar(&read, PLC_APPEND_ALWAYS);
    giveUpTransaction(settings);
}

} // namespace example
