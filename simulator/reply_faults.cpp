#include "simulator/reply_faults.h"

namespace plc::simulator {

ReplyDelivery ReplyFaults::dataReply(const QByteArray& reply)
{
    ++m_replies;
    Fault fault;
    const auto planned = m_planned.find(m_replies);
    if (planned != m_planned.end()) {
        fault = planned->second;
        m_planned.erase(planned);
    }
    if (m_dropsLeft > 0) {
        --m_dropsLeft;
        return {};
    }
    ReplyDelivery delivery{reply, m_delay + fault.late, fault.half};
    if (fault.half)
        delivery.bytes.truncate(int(reply.size()) / 2);
    else if (fault.twice)
        delivery.bytes += reply;
    return delivery;
}

} // namespace plc::simulator
