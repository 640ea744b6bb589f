#include "panel/access/sessions.h"

#include "panel/access/secrets.h"

namespace plc::panel {

QByteArray Sessions::open(const QString& user, Role role, qint64 now)
{
    closeUnless([this, now](const Session& session) { return !isOver(session, now); });
    makeRoom(&user, m_limits.mostOfUser);
    makeRoom(nullptr, m_limits.most);
    QByteArray token = randomToken();
    m_sessions.insert(keyOf(token), {user, role, now, now});
    return token;
}

QByteArray Sessions::keyOf(const QByteArray& token)
{
    return tokenHash(token);
}

std::optional<Sessions::Session> Sessions::use(const QByteArray& key, qint64 now)
{
    const auto session = m_sessions.find(key);
    if (session == m_sessions.end())
        return std::nullopt;
    if (isOver(*session, now)) {
        m_sessions.erase(session);
        return std::nullopt;
    }
    session->used = now;
    return *session;
}

void Sessions::closeAllOf(const QString& user)
{
    closeUnless([&user](const Session& session) { return session.user != user; });
}

bool Sessions::isOver(const Session& session, qint64 now) const
{
    return now - session.used >= m_limits.idle || now - session.begin >= m_limits.longest;
}

/// For one more: of one user, or of any.
void Sessions::makeRoom(const QString* user, int most)
{
    int count = 0;
    auto oldest = m_sessions.end();
    for (auto session = m_sessions.begin(); session != m_sessions.end(); ++session) {
        if (user && session->user != *user)
            continue;
        ++count;
        if (oldest == m_sessions.end() || session->used < oldest->used)
            oldest = session;
    }
    if (count >= most && oldest != m_sessions.end())
        m_sessions.erase(oldest);
}

} // namespace plc::panel
