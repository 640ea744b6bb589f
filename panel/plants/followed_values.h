#ifndef PLC_PANEL_PLANTS_FOLLOWED_VALUES_H
#define PLC_PANEL_PLANTS_FOLLOWED_VALUES_H

#include <QtCore/QVector>

#include <functional>

#include "panel/model/live_value.h"
#include "recorder/change.h"

namespace plc::panel {

/// The quality as recordings have it.
recorder::Quality recordedQuality(Quality quality);

/// What a recording is told of the values of one PLC. Times are milliseconds since
/// 1970-01-01T00:00:00Z.
class FollowedValues {
public:
    using ValueOf = std::function<const LiveValue&(int slot)>;

    void follow(int slot, int series);
    /// From this time on nothing is known, until values are asked for again.
    QVector<recorder::Change> forget(qint64 time);
    /// All values were looked at; `changed` are the slots with another value or quality.
    QVector<recorder::Change> sampled(const ValueOf& value, const QVector<int>& changed,
                                      qint64 time);

private:
    struct Followed {
        int series = -1; ///< -1: not recorded.
        qint64 told = 0; ///< Time of the last sample.
        bool isForgotten = false;
    };

    static recorder::Change tell(const LiveValue& value, qint64 time, Followed* followed);

    QVector<Followed> m_followed; ///< By slots.
    QVector<int> m_forgotten;     ///< Slots.
};

} // namespace plc::panel

#endif
