#ifndef PLC_TESTS_FAULTS_HOST_PROCESS_H
#define PLC_TESTS_FAULTS_HOST_PROCESS_H

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <functional>

namespace plc::faults {

/// The program `plc`, whose output is read only when the test wants it.
class HostProcess {
public:
    explicit HostProcess(const QStringList& arguments)
    {
        const QString pipe = m_folder.filePath(QStringLiteral("output"));
        ::mkfifo(QFile::encodeName(pipe).constData(), S_IRUSR | S_IWUSR);
        m_output = ::open(QFile::encodeName(pipe).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        m_process.setStandardOutputFile(pipe);
        m_process.start(QStringLiteral(PLC_HOST), arguments);
        m_process.waitForStarted();
    }
    ~HostProcess()
    {
        m_process.kill();
        m_process.waitForFinished();
        ::close(m_output);
    }
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    int exitCode() const { return m_process.exitCode(); }
    QByteArray errors() { return m_process.readAllStandardError(); }
    void stop() { ::kill(pid_t(m_process.processId()), SIGSTOP); }
    void resume() { ::kill(pid_t(m_process.processId()), SIGCONT); }
    void interrupt() { ::kill(pid_t(m_process.processId()), SIGINT); }

    /// Hands on all whole lines that it has printed so far.
    void readLines(const std::function<void(const QByteArray&)>& take)
    {
        char bytes[65536];
        for (ssize_t count; (count = ::read(m_output, bytes, sizeof bytes)) > 0;)
            m_unread.append(bytes, int(count));
        for (int end; (end = int(m_unread.indexOf('\n'))) >= 0;) {
            take(m_unread.left(end));
            m_unread.remove(0, end + 1);
        }
    }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    int m_output = -1;
    QByteArray m_unread;
};

} // namespace plc::faults

#endif
