#ifndef PLC_STREAMS_SIGNAL_NOTIFIER_H
#define PLC_STREAMS_SIGNAL_NOTIFIER_H

#include <QtCore/QSocketNotifier>
#include <QtCore/QVector>

#include <functional>
#include <initializer_list>
#include <memory>

namespace plc::streams {

/// Brings Unix signals to the event loop, through a pair of sockets, since next to nothing may be
/// called in a signal handler.
class SignalNotifier {
public:
    /// Calls `handle` with the number of each of these signals that arrives. No other notifier may
    /// have them.
    SignalNotifier(std::initializer_list<int> signalNumbers, std::function<void(int)> handle);
    ~SignalNotifier();
    SignalNotifier(const SignalNotifier&) = delete;
    SignalNotifier& operator=(const SignalNotifier&) = delete;

private:
    QVector<int> m_signalNumbers;
    std::function<void(int)> m_handle;
    int m_sockets[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace plc::streams

#endif
