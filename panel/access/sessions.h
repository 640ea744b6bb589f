#ifndef PLC_PANEL_ACCESS_SESSIONS_H
#define PLC_PANEL_ACCESS_SESSIONS_H

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QString>

#include <optional>

#include "panel/http/caller.h"

namespace plc::panel {

/// How long sessions last (ms), and how many there are.
struct SessionLimits {
    qint64 idle = qint64(60) * 60 * 1000;         ///< Without a request.
    qint64 longest = qint64(12) * 60 * 60 * 1000; ///< With requests.
    int most = 500;
    int mostOfUser = 20;
};

/// Who is logged in. A token is 256 random bits; what is kept of it is a hash, the session's key.
/// Where there are too many, the one that was idle for longest goes.
///
/// Times are in ms, of a clock that never goes back.
class Sessions {
public:
    struct Session {
        QString user;
        Role role = Role::None;
        qint64 begin = 0;
        qint64 used = 0;
    };

    explicit Sessions(const SessionLimits& limits = {}) : m_limits(limits) {}

    /// Returns the token, as text that cookies can hold.
    QByteArray open(const QString& user, Role role, qint64 now);
    static QByteArray keyOf(const QByteArray& token);
    /// The session of a key, which counts as used; nothing when there is none or it is over.
    std::optional<Session> use(const QByteArray& key, qint64 now);
    bool close(const QByteArray& key) { return m_sessions.remove(key) > 0; }
    void closeAllOf(const QString& user);
    /// Ends those whose user is no longer as at the login: `isValid` is asked for each.
    template <typename IsValid>
    void closeUnless(const IsValid& isValid)
    {
        for (auto session = m_sessions.begin(); session != m_sessions.end();)
            session = isValid(*session) ? ++session : m_sessions.erase(session);
    }
    int size() const { return int(m_sessions.size()); }

private:
    bool isOver(const Session& session, qint64 now) const;
    void makeRoom(const QString* user, int most);

    const SessionLimits m_limits;
    QHash<QByteArray, Session> m_sessions;
};

} // namespace plc::panel

#endif
