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
    const int kNoHostRequest = -1; // aux1 of cyclic reads
    bool loginIsForgotten = false;
    int cyclicTurns = 0;
    // After five turns at most the others wait for one cyclic read, or for one null: two of these
    // in a row mean that nothing else is left.
    while (cyclicTurns < 2) {
        const Protocol* request = ComCommunication();
        const bool isCyclic = !request || request->var.aux1 == kNoHostRequest;
        cyclicTurns = isCyclic ? cyclicTurns + 1 : 0;
        loginIsForgotten = giveUpTransaction(settings) || loginIsForgotten;
    }
    if (loginIsForgotten)
        return;

    RW_VAR read; // for the purpose; never sent
    read.aux2 = 1;
    read.deviceNo = settings.localDeviceNo;
    read.station = -1; // cannot be switched off
    read.length = 1;
    AddListOnceReadVar(&read, 1);
    giveUpTransaction(settings);
}

} // namespace example
