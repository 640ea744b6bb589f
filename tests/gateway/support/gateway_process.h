#ifndef PLC_TESTS_GATEWAY_SUPPORT_GATEWAY_PROCESS_H
#define PLC_TESTS_GATEWAY_SUPPORT_GATEWAY_PROCESS_H

#include <signal.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>

#include "gateway/support/mosquitto_process.h"
#include "support/plc_process.h"

namespace plc::test {

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
        return answerTo(arguments + QStringList{m_configuration});
    }
    /// Of the program without this configuration.
    static Answer answerTo(const QStringList& arguments)
    {
        QProcess process;
        process.start(QStringLiteral(PLC_GATEWAY), options() + arguments);
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

} // namespace plc::test

#endif
