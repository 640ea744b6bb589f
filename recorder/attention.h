#ifndef PLC_RECORDER_ATTENTION_H
#define PLC_RECORDER_ATTENTION_H

#include <QtCore/QtGlobal>

#include <optional>
#include <utility>

namespace plc::recorder {

/// Tells when nobody looked at the values for too long to say that they were held: the program or
/// the computer stood still, or its clock was set forward.
class Attention {
public:
    static constexpr qint64 kLongestPause = 5000; // ms

    /// Whether it was too long ago that this was called last. To be called when values are looked
    /// at, about once a second.
    bool wasLost(qint64 now)
    {
        const std::optional<qint64> last = std::exchange(m_last, now);
        return last && now - *last > kLongestPause;
    }

private:
    std::optional<qint64> m_last;
};

} // namespace plc::recorder

#endif
