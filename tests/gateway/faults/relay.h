#ifndef PLC_TESTS_GATEWAY_FAULTS_RELAY_H
#define PLC_TESTS_GATEWAY_FAULTS_RELAY_H

#include <atomic>
#include <list>
#include <thread>

#include <QtCore/QByteArray>

namespace plc::faults {

/// The way between a gateway and its broker, which can be disturbed. Has a thread of its own.
class Relay {
public:
    enum class Mode {
        Open,
        Deaf,   ///< Nothing is read of either side; what is sent piles up.
        Closed, ///< Connections are broken, and new ones as soon as they come.
        Slow    ///< A few kilobytes a second.
    };

    Relay(int listenPort, int brokerPort);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    void set(Mode mode) { m_mode = mode; }

private:
    struct Pair {
        int ends[2];           ///< The gateway's, the broker's.
        QByteArray waiting[2]; ///< What is to go to this end.
    };

    void run();
    void turn();
    void accept();
    bool move(Pair* pair, const short (&events)[2]);

    const int m_brokerPort;
    int m_listener = -1;
    std::atomic<Mode> m_mode{Mode::Open};
    std::atomic<bool> m_isEnding{false};
    std::list<Pair> m_pairs;
    std::thread m_thread;
};

} // namespace plc::faults

#endif
