#ifndef PLC_TESTS_GATEWAY_SUPPORT_GATEWAY_PROCESS_H
#define PLC_TESTS_GATEWAY_SUPPORT_GATEWAY_PROCESS_H

#include <signal.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <memory>

#include "e2e/line_process.h"
#include "gateway/support/mosquitto_process.h"

namespace plc {
namespace test {

/// Whether this becomes true on a machine that is busy with other tests.
template <typename Condition>
bool comesTrue(const Condition& condition)
{
    constexpr int kPause = 20; // ms
    QElapsedTimer time;
    time.start();
    while (!condition()) {
        if (time.elapsed() > kPatience)
            return false;
        QThread::msleep(kPause);
    }
    return true;
}

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// plc-simulator, which can be killed and started again at the same port.
class PlcProcess {
public:
    explicit PlcProcess(const QString& project) : m_project(project), m_port(freePort())
    {
        start();
    }

    /// False when it does not come up.
    bool start()
    {
        m_process = std::make_unique<LineProcess>(
            QStringLiteral(PLC_SIMULATOR),
            QStringList{m_project, QStringLiteral("--quiet"), QStringLiteral("--port"),
                        QString::number(m_port)});
        return m_process->nextLine().startsWith(QLatin1String("listening on"));
    }
    void kill() { m_process.reset(); }
    quint16 port() const { return m_port; }

    /// The answer to a command without its leading "ok"; what does not begin with it is kept whole.
    QString command(const QString& line)
    {
        m_process->send(line);
        const QString answer = m_process->nextLine();
        return answer == QLatin1String("ok") || answer.startsWith(QLatin1String("ok "))
                   ? answer.mid(3)
                   : answer;
    }
    void set(const char* label, const QString& value)
    {
        const QString answer =
            command(QStringLiteral("set %1 %2").arg(QLatin1String(label), value));
        if (!answer.isEmpty())
            qFatal("set %s %s: %s", label, qPrintable(value), qPrintable(answer));
    }
    /// Requests that it has had.
    qint64 requests()
    {
        return command(QStringLiteral("status"))
            .section(QLatin1String("requests="), 1)
            .section(QLatin1Char(' '), 0, 0)
            .toLongLong();
    }
    /// Waits until a gateway that reads all its values by one request has taken those of this
    /// moment: the reply to the next read has them, and is dealt with before another one goes out.
    /// Before it there may be a request that was under way and the two of a login.
    bool isSeen()
    {
        constexpr int kRequests = 5;
        const qint64 before = requests();
        return comesTrue([this, before] { return requests() >= before + kRequests; });
    }

private:
    const QString m_project;
    const quint16 m_port;
    std::unique_ptr<LineProcess> m_process;
};

/// plc-gateway with a configuration. What it logs goes into a file, over all its lives.
class GatewayProcess {
public:
    GatewayProcess(const QString& configuration, const QString& logFile)
        : m_configuration(configuration), m_logFile(logFile)
    {
    }
    ~GatewayProcess() { kill(); }
    GatewayProcess(const GatewayProcess&) = delete;
    GatewayProcess& operator=(const GatewayProcess&) = delete;

    /// Of its lives from the next one on.
    void setEnvironment(const QProcessEnvironment& environment)
    {
        m_process.setProcessEnvironment(environment);
    }
    void start()
    {
        m_process.setStandardErrorFile(m_logFile, QIODevice::Append);
        m_process.start(QStringLiteral(PLC_GATEWAY), options() << m_configuration);
        m_process.waitForStarted(kPatience);
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(kPatience);
    }
    /// Ends it as the service manager does. Its exit code, or -1.
    int stop()
    {
        m_process.terminate();
        return m_process.waitForFinished(kPatience) &&
                       m_process.exitStatus() == QProcess::NormalExit
                   ? m_process.exitCode()
                   : -1;
    }
    void signal(int number) { ::kill(pid_t(pid()), number); }
    qint64 pid() const { return m_process.processId(); }
    bool isRunning()
    {
        m_process.waitForFinished(0);
        return m_process.state() == QProcess::Running;
    }

    QString log() const { return QString::fromUtf8(readFile(m_logFile)); }
    /// Whether it logs this `times` times.
    bool waitForLog(const QString& part, int times = 1)
    {
        return comesTrue([&] { return log().count(part) >= times; });
    }

    struct Answer {
        int exitCode = -1;
        QString output;
        QString errors;
    };
    /// Runs the program once more, beside this gateway.
    Answer run(const QStringList& arguments) const
    {
        QProcess process;
        process.start(QStringLiteral(PLC_GATEWAY),
                      options() + arguments + QStringList{m_configuration});
        Answer answer;
        if (process.waitForFinished(kPatience) && process.exitStatus() == QProcess::NormalExit)
            answer.exitCode = process.exitCode();
        answer.output = QString::fromUtf8(process.readAllStandardOutput());
        answer.errors = QString::fromUtf8(process.readAllStandardError());
        return answer;
    }
    QJsonObject status() const
    {
        const Answer answer = run({QStringLiteral("status"), QStringLiteral("--json")});
        return QJsonDocument::fromJson(answer.output.toUtf8()).object();
    }

private:
    static QStringList options()
    {
        return {QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY)};
    }

    const QString m_configuration;
    const QString m_logFile;
    QProcess m_process;
};

} // namespace test
} // namespace plc

#endif
