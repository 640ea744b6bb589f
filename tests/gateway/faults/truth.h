#ifndef PLC_TESTS_GATEWAY_FAULTS_TRUTH_H
#define PLC_TESTS_GATEWAY_FAULTS_TRUTH_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "gateway/faults/host_consumer.h"

namespace plc::faults {

/// A value that a label had in the PLC. Times in ms.
struct TrueValue {
    qint64 value = 0;
    qint64 setAt = 0;      ///< Not before.
    qint64 knownSince = 0; ///< The PLC had it by then.
    bool isMissable =
        true; ///< It may have been gone before the gateway saw it, or with the gateway.
};

/// What values the labels of a PLC had, and when. Each value of a label is another one.
class Truth {
public:
    /// The value before the first.
    void begin(const QByteArray& name, qint64 value, qint64 time);
    void set(const QByteArray& name, qint64 value, qint64 from, qint64 until);
    /// The last value of this label was seen by the gateway, for sure.
    void isSeen(const QByteArray& name) { m_values.at(name).back().isMissable = false; }
    /// From some moment between these two on, the clock that tells the times is ahead by so much.
    void clockIsSet(qint64 ahead, qint64 from, qint64 until);
    /// What was set from this time on may be lost.
    void excuseSince(qint64 time);

    /// The values that are missing among what was told.
    std::vector<std::string> missing(const std::vector<ToldValue>& told) const;
    /// Of those the values behind the first that was told as history.
    std::vector<std::string> missingAmongTheLast(const std::vector<ToldValue>& told) const;
    /// Whether the last value of each label was told.
    bool isLastTold(const std::vector<ToldValue>& told) const;
    /// What was told and was not so.
    std::vector<std::string> invented(const std::vector<ToldValue>& told) const;
    /// Values that must have come.
    int required() const;

private:
    struct ClockSetting {
        qint64 ahead = 0;
        qint64 from = 0;
        qint64 until = 0;
    };
    bool wasSo(qint64 time, qint64 from, std::optional<qint64> until) const;

    std::vector<ClockSetting> m_clock{{}};
    std::map<QByteArray, std::vector<TrueValue>> m_values;
};

} // namespace plc::faults

#endif
