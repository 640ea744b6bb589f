#ifndef PLC_TESTS_GATEWAY_CONSUMER_BROKER_PROCESS_H
#define PLC_TESTS_GATEWAY_CONSUMER_BROKER_PROCESS_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QThread>

#include <memory>

#include "e2e/line_process.h"

namespace plc::test {

inline sockaddr_in localAddress(int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A port of this machine that nobody listens on.
inline int freePort()
{
    sockaddr_in address = localAddress(0);
    socklen_t size = sizeof(address);
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ::bind(listener, reinterpret_cast<const sockaddr*>(&address), size);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(listener);
    return ntohs(address.sin_port);
}

inline bool isListeningOn(int port)
{
    const sockaddr_in address = localAddress(port);
    const int caller = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int result =
        ::connect(caller, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    ::close(caller);
    return result == 0;
}

/// A mosquitto that takes everyone on this machine.
class BrokerProcess {
public:
    BrokerProcess()
    {
        QFile file(m_folder.filePath(QStringLiteral("mosquitto.conf")));
        file.open(QIODevice::WriteOnly);
        file.write("listener " + QByteArray::number(m_port) +
                   " 127.0.0.1\nallow_anonymous true\npersistence false\nlog_dest none\n");
        file.close();
        m_process = std::make_unique<LineProcess>(
            QStringLiteral(PLC_MOSQUITTO), QStringList{QStringLiteral("-c"), file.fileName()});
        for (int waited = 0; waited < kPatience && !isListeningOn(m_port); waited += 10)
            QThread::msleep(10);
    }

    QString port() const { return QString::number(m_port); }

private:
    const int m_port = freePort();
    QTemporaryDir m_folder;
    std::unique_ptr<LineProcess> m_process;
};

} // namespace plc::test

#endif
