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
    const bool sizeIsOpen = request->replyLength == -1;
    socket.write(request->frame);

    QByteArray reply;
    if (!receiveFrame(socket, timeout, &reply))
        return Exchange::LinkLost;
    const RW_VAR* outcome = DataCom(&reply, int(reply.size()));
    if (sizeIsOpen && outcome->result == 1)
        outcome = DataCom(&reply, int(reply.size())); // the first call noted the size only

    switch (outcome->result) {
        case 1:
        case 100:
            settings.retryCount = 0; // failures of days ago do not count
            return Exchange::Done;
        case 0:
            return Exchange::Repeat;
        case 201:
            return Exchange::LoginRefused;
        default:
            return Exchange::Abandoned;
    }
}

bool giveUpTransaction()
{
    if (!ComCommunication())
        return false;
    QByteArray nothing;
    while (DataCom(&nothing, 0)->result == 0) {
    }
    return true;
}

} // namespace example
