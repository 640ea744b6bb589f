#include "streams/signal_notifier.h"

#include <sys/socket.h>
#include <unistd.h>
#include <csignal>

#include <utility>

namespace plc::streams {
namespace {

/// Where the handler writes the number of each signal.
volatile sig_atomic_t handlerSockets[NSIG];

void onSignal(int number)
{
    const char byte = char(number);
    // A full socket means that signals enough are waiting.
    const ssize_t written = ::write(handlerSockets[number], &byte, 1);
    static_cast<void>(written);
}

} // namespace

SignalNotifier::SignalNotifier(std::initializer_list<int> signalNumbers,
                               std::function<void(int)> handle)
    : m_signalNumbers(signalNumbers), m_handle(std::move(handle))
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, m_sockets) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_sockets[1], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        char byte = 0;
        while (::read(m_sockets[1], &byte, 1) == 1)
            m_handle(byte);
    });
    for (int number : m_signalNumbers) {
        handlerSockets[number] = m_sockets[0];
        std::signal(number, onSignal);
    }
}

SignalNotifier::~SignalNotifier()
{
    for (int number : m_signalNumbers)
        std::signal(number, SIG_DFL);
    m_notifier.reset();
    for (int socket : m_sockets) {
        if (socket >= 0)
            ::close(socket);
    }
}

} // namespace plc::streams
