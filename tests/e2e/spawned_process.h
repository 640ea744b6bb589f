#ifndef PLC_TESTS_E2E_SPAWNED_PROCESS_H
#define PLC_TESTS_E2E_SPAWNED_PROCESS_H

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <utility>
#include <vector>

namespace plc::test {

/// What a program is started with.
struct Surroundings {
    QByteArray input;                   ///< Of its standard input, which ends behind it.
    int output = -1;                    ///< Its standard output; -1: it is kept in Ending::output.
    bool hasOutput = true;              ///< False: it is started without a standard output.
    rlim_t largestFile = RLIM_INFINITY; ///< In bytes; as a disk that is full there.
    QStringList environment;            ///< NAME=VALUE to be added.
};

/// How a program has ended.
struct Ending {
    int exitCode = -1; ///< -1: by a signal.
    QByteArray output;
    QByteArray errors;
};

/// Runs a program to its end, with streams and limits that QProcess does not give.
class SpawnedProcess {
public:
    SpawnedProcess(const QString& program, const QStringList& arguments,
                   const Surroundings& surroundings)
        : m_surroundings(surroundings)
    {
        for (const QString& text : QStringList{program} + arguments)
            m_arguments.push_back(text.toUtf8());
        for (const QString& text : surroundings.environment)
            m_environment.push_back(text.toUtf8());
        openPipe(m_input);
        openPipe(m_output);
        openPipe(m_errors);
        m_pid = ::fork();
        if (m_pid == 0)
            become();
        ::close(m_input[0]);
        ::close(m_output[1]);
        ::close(m_errors[1]);
        const ssize_t written =
            ::write(m_input[1], surroundings.input.constData(), size_t(surroundings.input.size()));
        static_cast<void>(written);
    }
    ~SpawnedProcess()
    {
        if (m_pid > 0 && !m_hasEnded) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        closeInput();
        closeOutput();
        ::close(m_errors[0]);
    }
    SpawnedProcess(const SpawnedProcess&) = delete;
    SpawnedProcess& operator=(const SpawnedProcess&) = delete;

    void send(const QByteArray& bytes)
    {
        const ssize_t written = ::write(m_input[1], bytes.constData(), size_t(bytes.size()));
        static_cast<void>(written);
    }
    /// Reads the output up to the first place where it holds `part`. False when it ends before.
    bool waitForOutput(const QByteArray& part)
    {
        while (!m_ending.output.contains(part)) {
            if (!readFrom(m_output[0], &m_ending.output))
                return false;
        }
        return true;
    }
    /// Nobody reads the output any more.
    void closeOutput() { closeOnce(&m_output[0]); }
    void closeInput() { closeOnce(&m_input[1]); }

    Ending wait()
    {
        closeInput();
        readBoth();
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_hasEnded = true;
        m_ending.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return m_ending;
    }

private:
    static void openPipe(int (&ends)[2])
    {
        if (::pipe2(ends, O_CLOEXEC) != 0)
            ::abort();
    }
    static void closeOnce(int* descriptor)
    {
        if (*descriptor >= 0)
            ::close(std::exchange(*descriptor, -1));
    }
    static bool readFrom(int descriptor, QByteArray* bytes)
    {
        char buffer[4096];
        const ssize_t count = ::read(descriptor, buffer, sizeof(buffer));
        if (count > 0)
            bytes->append(buffer, int(count));
        return count > 0;
    }
    void readBoth()
    {
        pollfd entries[2] = {{m_output[0], POLLIN, 0}, {m_errors[0], POLLIN, 0}};
        while (entries[0].fd >= 0 || entries[1].fd >= 0) {
            ::poll(entries, 2, -1);
            if (entries[0].revents != 0 && !readFrom(entries[0].fd, &m_ending.output))
                entries[0].fd = -1;
            if (entries[1].revents != 0 && !readFrom(entries[1].fd, &m_ending.errors))
                entries[1].fd = -1;
        }
    }
    [[noreturn]] void become()
    {
        const int output = m_surroundings.output >= 0 ? m_surroundings.output : m_output[1];
        ::dup2(m_input[0], STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(m_errors[1], STDERR_FILENO);
        if (!m_surroundings.hasOutput)
            ::close(STDOUT_FILENO);
        const rlimit limit = {m_surroundings.largestFile, RLIM_INFINITY};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        for (QByteArray& variable : m_environment)
            ::putenv(variable.data());
        std::vector<char*> texts;
        for (QByteArray& argument : m_arguments)
            texts.push_back(argument.data());
        texts.push_back(nullptr);
        ::execv(texts[0], texts.data());
        ::_exit(127);
    }

    const Surroundings m_surroundings;
    std::vector<QByteArray> m_arguments;
    std::vector<QByteArray> m_environment;
    int m_input[2];
    int m_output[2];
    int m_errors[2];
    pid_t m_pid = -1;
    bool m_hasEnded = false;
    Ending m_ending;
};

inline Ending runToEnd(const QString& program, const QStringList& arguments,
                       const Surroundings& surroundings)
{
    return SpawnedProcess(program, arguments, surroundings).wait();
}

} // namespace plc::test

#endif
