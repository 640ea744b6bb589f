#include "faults/faulty_proxy.h"

#include <sys/socket.h>

#include <QtCore/QTimer>
#include <QtNetwork/QHostAddress>

#include "faults/frames.h"

namespace plc::faults {
namespace {

constexpr int kPauseBetweenBytes = 1; // ms

constexpr const char* kConnectionFaults[] = {"none", "close", "reset", "silence", "deafness"};
constexpr const char* kRequestFaults[] = {"none",       "lose",         "reset",
                                          "wrong mark", "wrong length", "slow bytes"};
constexpr const char* kReplyFaults[] = {
    "none",           "delay",         "late",        "lose",        "twice",
    "twice apart",    "half, silence", "half, close", "half, reset", "wrong mark",
    "wrong length",   "wrong status",  "wrong data",  "only status", "longer",
    "shorter",        "slow bytes",    "stall",       "close",       "reset",
    "rubbish before", "rubbish behind"};

/// Closes with a reset, as a peer does that has crashed.
void reset(QTcpSocket* socket)
{
    const linger atOnce{1, 0};
    ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    socket->abort();
}

} // namespace

/// The host's connection and the one to the PLC. Deletes itself when the host has gone.
class FaultyProxy::Connection : public QObject {
public:
    Connection(FaultyProxy* proxy, QTcpSocket* host, bool isSilent)
        : QObject(proxy), m_proxy(proxy), m_host(host), m_isStalled(isSilent)
    {
        m_host->setParent(this);
        m_host->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        connect(m_host, &QTcpSocket::readyRead, this, [this] { passRequests(); });
        connect(m_host, &QTcpSocket::disconnected, this, [this] { end(); });
        if (isSilent)
            return;
        connect(&m_plc, &QTcpSocket::connected, this, [this] {
            m_plc.setSocketOption(QAbstractSocket::LowDelayOption, 1);
            passRequests();
        });
        connect(&m_plc, &QTcpSocket::readyRead, this, [this] { passReplies(); });
        connect(&m_plc, &QTcpSocket::disconnected, this, [this] { plcHasGone(); });
        m_plc.connectToHost(QHostAddress(QHostAddress::LocalHost), m_proxy->m_plcPort);
    }

private:
    void passRequests()
    {
        if (m_isStalled) {
            m_host->readAll();
            return;
        }
        if (m_plc.state() != QAbstractSocket::ConnectedState)
            return;
        m_requests += m_host->readAll();
        for (;;) {
            const QByteArray request = takeFrame(&m_requests);
            if (request.isEmpty() || !passRequest(request))
                return;
        }
    }

    /// Returns whether the connection lives on.
    bool passRequest(const QByteArray& request)
    {
        m_service = int(quint8(request.at(kServicePosition)));
        const RequestFault fault = m_proxy->m_plan->requestFault();
        if (fault != RequestFault::None)
            note("request", kRequestFaults[int(fault)]);
        switch (fault) {
            case RequestFault::Lose:
                return true;
            case RequestFault::Reset:
                reset(m_host);
                return false;
            case RequestFault::SlowBytes:
                sendSlowly(&m_plc, request);
                return true;
            default:
                m_plc.write(m_proxy->m_plan->damaged(fault, request));
                return true;
        }
    }

    void passReplies()
    {
        m_replies += m_plc.readAll();
        for (;;) {
            const QByteArray reply = takeFrame(&m_replies);
            if (reply.isEmpty() || m_isStalled)
                return;
            passReply(reply);
        }
    }

    void passReply(const QByteArray& reply)
    {
        FaultPlan& plan = *m_proxy->m_plan;
        const ReplyFault fault = plan.replyFault(m_service == kWriteService);
        if (fault != ReplyFault::None)
            note("reply", kReplyFaults[int(fault)]);
        const QByteArray bytes = plan.damaged(fault, reply);
        switch (fault) {
            case ReplyFault::Lose:
                break;
            case ReplyFault::Stall:
                m_isStalled = true;
                break;
            case ReplyFault::Delay:
                sendLater(bytes, plan.between(1, m_proxy->m_times.inTime));
                break;
            case ReplyFault::Late:
                sendLater(bytes, m_proxy->m_times.tooLate);
                break;
            case ReplyFault::SlowBytes:
                sendSlowly(m_host, bytes);
                break;
            case ReplyFault::TwiceApart:
                send(bytes);
                sendLater(bytes, plan.between(0, m_proxy->m_times.inTime));
                break;
            case ReplyFault::HalfAndSilence:
                m_isStalled = true;
                send(bytes);
                break;
            case ReplyFault::HalfAndClose:
            case ReplyFault::Close:
                if (fault == ReplyFault::HalfAndClose)
                    send(bytes);
                m_host->disconnectFromHost();
                break;
            case ReplyFault::HalfAndReset:
            case ReplyFault::Reset:
                if (fault == ReplyFault::HalfAndReset)
                    send(bytes);
                reset(m_host);
                break;
            default:
                send(bytes);
                break;
        }
    }

    void send(const QByteArray& bytes)
    {
        m_host->write(bytes);
        m_host->flush();
    }
    void sendLater(const QByteArray& bytes, int delay)
    {
        QTimer::singleShot(delay, this, [this, bytes] { send(bytes); });
    }
    void sendSlowly(QTcpSocket* socket, const QByteArray& bytes)
    {
        socket->write(bytes.left(1));
        socket->flush();
        if (bytes.size() > 1) {
            QTimer::singleShot(kPauseBetweenBytes, this,
                               [this, socket, bytes] { sendSlowly(socket, bytes.mid(1)); });
        }
    }

    /// A half-open connection stays so: the host is not told.
    void plcHasGone()
    {
        if (!m_isStalled)
            m_host->disconnectFromHost();
    }

    void end()
    {
        m_isStalled = true;
        m_plc.abort();
        deleteLater();
    }

    void note(const char* what, const char* fault)
    {
        m_proxy->note(QStringLiteral("%1 of service %2: %3")
                          .arg(QLatin1String(what))
                          .arg(m_service, 2, 16, QLatin1Char('0'))
                          .arg(QLatin1String(fault)));
    }

    FaultyProxy* const m_proxy;
    QTcpSocket* const m_host;
    QTcpSocket m_plc;
    QByteArray m_requests;
    QByteArray m_replies;
    int m_service = 0; ///< Of the last request.
    bool m_isStalled;
};

FaultyProxy::FaultyProxy(quint16 plcPort, FaultPlan* plan, const FaultTimes& times)
    : m_plcPort(plcPort), m_plan(plan), m_times(times)
{
    connect(&m_server, &QTcpServer::newConnection, this, [this] { accept(); });
    m_server.listen(QHostAddress(QHostAddress::LocalHost));
    m_port = m_server.serverPort();
}

void FaultyProxy::accept()
{
    while (QTcpSocket* host = m_server.nextPendingConnection()) {
        const ConnectionFault fault = m_plan->connectionFault();
        if (fault != ConnectionFault::None)
            note(QStringLiteral("connection: ") + QLatin1String(kConnectionFaults[int(fault)]));
        switch (fault) {
            case ConnectionFault::None:
            case ConnectionFault::Silence:
                new Connection(this, host, fault == ConnectionFault::Silence);
                continue;
            case ConnectionFault::Close:
                host->disconnectFromHost();
                break;
            case ConnectionFault::Reset:
                reset(host);
                break;
            case ConnectionFault::Deafness:
                reset(host);
                stopListeningFor(m_times.deafness);
                break;
        }
        host->deleteLater();
    }
}

void FaultyProxy::stopListeningFor(int milliseconds)
{
    m_server.close();
    QTimer::singleShot(milliseconds, this, [this] {
        if (!m_server.listen(QHostAddress(QHostAddress::LocalHost), m_port))
            stopListeningFor(1);
    });
}

} // namespace plc::faults
