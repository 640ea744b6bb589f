#ifndef PLC_TESTS_E2E_SCRIPTED_PLC_H
#define PLC_TESTS_E2E_SCRIPTED_PLC_H

#include <QtCore/QVector>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <memory>

#include "tests/e2e/line_process.h"

namespace plc::test {

/// A PLC that answers each request with bytes that the test gives, and those behind them not at
/// all.
class ScriptedPlc {
public:
    /// A reply of no bytes closes the connection in place of an answer.
    explicit ScriptedPlc(const QVector<QByteArray>& replies) : m_replies(replies)
    {
        m_server.listen(QHostAddress::LocalHost);
    }
    quint16 port() const { return m_server.serverPort(); }

    /// Serves connections until `process` ends.
    void serve(LineProcess& process)
    {
        while (process.isRunning()) {
            if (!m_client && m_server.waitForNewConnection(10))
                m_client.reset(m_server.nextPendingConnection());
            if (m_client && m_client->waitForReadyRead(10))
                answer();
        }
    }

private:
    void answer()
    {
        m_client->readAll();
        if (m_answered == m_replies.size())
            return;
        const QByteArray reply = m_replies.at(m_answered++);
        if (reply.isEmpty()) {
            m_client->close();
            m_client.reset();
        } else {
            m_client->write(reply);
            m_client->flush();
        }
    }

    QTcpServer m_server;
    std::unique_ptr<QTcpSocket> m_client;
    QVector<QByteArray> m_replies;
    int m_answered = 0;
};

/// A good reply to a request of the login; the first one wants 200 bytes of payload, the second 30.
inline QByteArray loginReply(int payload)
{
    QByteArray reply = QByteArray::fromHex("BBBB0000") + char(payload >> 8) + char(payload & 0xFF);
    return reply + QByteArray(payload, '\0');
}

} // namespace plc::test

#endif
