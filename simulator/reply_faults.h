#ifndef PLC_SIMULATOR_REPLY_FAULTS_H
#define PLC_SIMULATOR_REPLY_FAULTS_H

#include <QtCore/QByteArray>

#include <map>

namespace plc::simulator {

constexpr int kLongestDelay = 24 * 60 * 60 * 1000; ///< ms
/// Of replies and bytes, as options and commands give them.
constexpr int kHighestNumber = 1000000000;

/// What happens to one reply on its way out.
struct ReplyDelivery {
    QByteArray bytes;     ///< Empty: the reply is lost.
    int delay = 0;        ///< ms before the first byte.
    bool silence = false; ///< Nothing more is ever sent on this connection.
};

/// Plans what goes wrong with replies. Replies to reads and writes are counted, over all
/// connections; login replies are only delayed.
class ReplyFaults {
public:
    void setDelay(int milliseconds) { m_delay = milliseconds; }

    /// Loses the next `count` replies.
    void dropNext(int count) { m_dropsLeft = count; }
    /// Sends the `number`-th reply from now, counted from 1, later than the others.
    void delayReply(int number, int milliseconds)
    {
        m_planned[m_replies + number].late = milliseconds;
    }
    /// Sends the first half of that reply, and then nothing on its connection any more.
    void halveReply(int number) { m_planned[m_replies + number].half = true; }
    /// Sends that reply twice, in one piece.
    void duplicateReply(int number) { m_planned[m_replies + number].twice = true; }

    ReplyDelivery loginReply(const QByteArray& reply) const { return {reply, m_delay, false}; }
    ReplyDelivery dataReply(const QByteArray& reply);

private:
    struct Fault {
        int late = 0;
        bool half = false;
        bool twice = false;
    };

    int m_delay = 0;
    int m_dropsLeft = 0;
    qint64 m_replies = 0;
    std::map<qint64, Fault> m_planned; ///< By the number of the reply.
};

} // namespace plc::simulator

#endif
