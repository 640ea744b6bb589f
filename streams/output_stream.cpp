#include "streams/output_stream.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "streams/system_error.h"

namespace plc::streams {
namespace {

/// Others may have switched off that writes wait for the reader.
void waitForReader(int descriptor)
{
    pollfd entry = {descriptor, POLLOUT, 0};
    ::poll(&entry, 1, -1);
}

} // namespace

bool OutputStream::write(const QByteArray& bytes)
{
    qint64 done = 0;
    while (m_error.isEmpty() && done < bytes.size()) {
        const ssize_t count =
            ::write(m_descriptor, bytes.constData() + done, size_t(bytes.size() - done));
        if (count >= 0)
            done += count;
        else if (errno == EAGAIN)
            waitForReader(m_descriptor);
        else if (errno != EINTR)
            m_error = systemError();
    }
    return m_error.isEmpty();
}

bool OutputStream::close()
{
    if (::close(m_descriptor) != 0 && errno != EINTR && m_error.isEmpty())
        m_error = systemError();
    return m_error.isEmpty();
}

void secureStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) >= 0)
            continue;
        // Opened so that using it still fails: nothing comes from it, nothing is taken by it.
        const int opened = ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        static_cast<void>(opened); // the lowest free number, which is this one
    }
}

} // namespace plc::streams
