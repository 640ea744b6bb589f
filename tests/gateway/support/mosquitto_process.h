#ifndef PLC_TESTS_GATEWAY_SUPPORT_MOSQUITTO_PROCESS_H
#define PLC_TESTS_GATEWAY_SUPPORT_MOSQUITTO_PROCESS_H

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QTcpSocket>

#include "support/free_port.h"

namespace plc::test {

/// A broker of its own for a test, which can be killed and started again on the same port.
class MosquittoProcess {
public:
    /// `lines` go into its configuration.
    explicit MosquittoProcess(const QByteArray& lines = "allow_anonymous true\n")
        : m_port(freePort())
    {
        configure(lines);
    }
    ~MosquittoProcess() { kill(); }

    /// Other lines for the next start.
    void configure(const QByteArray& lines)
    {
        QFile file(configuration());
        file.open(QIODevice::WriteOnly);
        file.write("listener " + QByteArray::number(m_port) + " 127.0.0.1\nuser root\n" + lines);
    }
    /// False when it does not come up.
    bool start()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setStandardOutputFile(m_folder.filePath(QStringLiteral("log")));
        m_process.start(program(), {QStringLiteral("-c"), configuration()});
        for (int i = 0; i < kAttempts && m_process.state() != QProcess::NotRunning; ++i) {
            QTcpSocket socket;
            socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
            if (socket.waitForConnected(kAttemptTime))
                return true;
            m_process.waitForFinished(kAttemptTime);
        }
        return false;
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    quint16 port() const { return m_port; }
    qint64 pid() const { return m_process.processId(); }
    QString folder() const { return m_folder.path(); }

    static QString program()
    {
        // Debian keeps it where the PATH of users does not lead.
        return QFile::exists(QStringLiteral("/usr/sbin/mosquitto"))
                   ? QStringLiteral("/usr/sbin/mosquitto")
                   : QStringLiteral("mosquitto");
    }

private:
    static constexpr int kAttempts = 300;
    static constexpr int kAttemptTime = 100; // ms

    QString configuration() const { return m_folder.filePath(QStringLiteral("conf")); }

    QTemporaryDir m_folder;
    const quint16 m_port;
    QProcess m_process;
};

} // namespace plc::test

#endif
