#ifndef PLC_GATEWAY_SPARKPLUG_PRIMARY_HOST_H
#define PLC_GATEWAY_SPARKPLUG_PRIMARY_HOST_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace plc::gateway {

/// Whether the host for whose sake values are published is at the same broker. It tells so by
/// messages that the broker keeps: {"online":true,"timestamp":…}. The time is that at which the
/// host connected: the death of a former connection may arrive after the birth of the next, and is
/// known by its lower time.
class PrimaryHost {
public:
    /// Nothing is known of it at another connection: a host has a time of its own at each broker.
    void forget();

    /// A message of this host. Returns what is wrong with it, then nothing is changed; or an empty
    /// text.
    QString received(const QByteArray& payload);

    bool isOnline() const { return m_isOnline; }
    /// It has gone offline, or was when we came; once true until forget(): what was published
    /// meanwhile it may not have seen.
    bool hasLeft() const { return m_hasLeft; }

private:
    void tell(bool isOnline, quint64 time);

    std::optional<quint64> m_lastTime;   ///< Of the last message that counted.
    std::optional<quint64> m_onlineTime; ///< Of the last one that told of a birth.
    bool m_isOnline = false;
    bool m_hasLeft = false;
};

} // namespace plc::gateway

#endif
