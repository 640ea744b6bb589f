#include "child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <vector>

#include "sockets.h"

namespace plc::bench {
namespace {

/// In the new process: becomes the program, with its output in the pipe and without input.
[[noreturn]] void become(const std::vector<QByteArray>& words, int output)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (const QByteArray& word : words)
        arguments.push_back(const_cast<char*>(word.constData()));
    arguments.push_back(nullptr);
    ::execv(arguments.front(), arguments.data());
    ::_exit(127);
}

/// The port in the line "listening on ADDRESS:PORT"; 0 when another line or none comes.
quint16 readPort(int pipe)
{
    unsigned port = 0;
    std::FILE* lines = ::fdopen(pipe, "r");
    if (std::fscanf(lines, "listening on %*[0-9.]:%u", &port) != 1)
        port = 0;
    std::fclose(lines);
    return quint16(port);
}

} // namespace

ChildProcess::ChildProcess(const QString& program, const QStringList& arguments)
{
    std::vector<QByteArray> words = {program.toLocal8Bit()};
    for (const QString& argument : arguments)
        words.push_back(argument.toLocal8Bit());
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        giveUpWithErrno("cannot make a pipe");
    m_id = ::fork();
    if (m_id < 0)
        giveUpWithErrno("cannot start a process");
    if (m_id == 0)
        become(words, ends[1]);
    ::close(ends[1]);
    m_port = readPort(ends[0]);
    if (m_port == 0)
        giveUp(QStringLiteral("%1 %2 does not tell its port")
                   .arg(program, arguments.join(QLatin1Char(' '))));
}

ChildProcess::~ChildProcess()
{
    ::kill(m_id, SIGKILL);
    ::waitpid(m_id, nullptr, 0);
}

} // namespace plc::bench
