#include "panel/access/access.h"

#include <algorithm>
#include <utility>

#include "panel/access/request_token.h"
#include "panel/access/secrets.h"
#include "panel/http/loopback.h"

namespace plc::panel {
namespace {

constexpr qint64 kBusyWait = 1000; // ms

QByteArray hashOfNobody()
{
    return hashPassword(QString::fromLatin1(randomBytes(32).toHex())).valueOr(QByteArray());
}

} // namespace

Expected<std::unique_ptr<Access>> Access::open(const AccessSettings& settings, Clock clock)
{
    const Expected<UsersFile> users = UsersFile::load(settings.users);
    if (!users)
        return users.error();
    return std::unique_ptr<Access>(new Access(settings, std::move(clock), *users));
}

Access::Access(const AccessSettings& settings, Clock clock, UsersFile users)
    : m_settings(settings),
      m_clock(std::move(clock)),
      m_nobody(settings.users.isEmpty() ? QByteArray() : hashOfNobody()),
      m_users(std::move(users)),
      m_sessions(settings.sessions),
      m_loginsOfAddress(settings.loginsOfAddress),
      m_loginsOfUser(settings.loginsOfUser),
      m_changes(settings.changesOfAddress)
{
}

void Access::login(const QString& user, const QString& password, const QString& address,
                   std::function<void(const LoginResult&)> done)
{
    LoginResult refused;
    refused.kind = LoginResult::TooOften;
    refused.wait = waitToLogin(user, address);
    if (refused.wait > 0) {
        done(refused);
        return;
    }
    User found{user, Role::None, m_nobody};
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (const User* known = m_users.find(user))
            found = *known;
    }
    const auto work = [this, found, password, address, done] {
        const bool isRight = verifyPassword(found.passwordHash, password);
        finishLogin(found, address, isRight, done);
    };
    if (m_queue.submit(work))
        return;
    refused.wait = kBusyWait;
    done(refused);
}

/// Counts the attempt if it may be made.
qint64 Access::waitToLogin(const QString& user, const QString& address)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 now = m_clock();
    const QString name = user.left(UsersFile::kLongestName);
    const qint64 wait =
        std::max(m_loginsOfAddress.wait(address, now), m_loginsOfUser.wait(name, now));
    if (wait > 0)
        return wait;
    m_loginsOfAddress.fill(address, now);
    m_loginsOfUser.fill(name, now);
    return 0;
}

void Access::finishLogin(const User& user, const QString& address, bool isRight,
                         const std::function<void(const LoginResult&)>& done)
{
    LoginResult result;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (isRight && isUnchanged(user)) {
            m_loginsOfUser.empty(user.name);
            result.kind = LoginResult::Done;
            result.token = m_sessions.open(user.name, user.role, m_clock());
            result.caller = {user.name, user.role, address, Sessions::keyOf(result.token)};
        }
    }
    done(result);
}

bool Access::isUnchanged(const User& user) const
{
    const User* now = m_users.find(user.name);
    return now && now->passwordHash == user.passwordHash && now->role == user.role;
}

bool Access::logout(const Caller& caller)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_sessions.close(caller.session);
}

bool Access::isValid(const Caller& caller)
{
    if (!isLoginRequired())
        return true;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_sessions.use(caller.session, m_clock()))
        return true;
    const User* user = m_users.findByToken(caller.session);
    return user && user->name == caller.user && user->role == caller.role;
}

Expected<void> Access::reload()
{
    if (!isLoginRequired())
        return {};
    const Expected<UsersFile> users = UsersFile::load(m_settings.users);
    if (!users)
        return users.error();
    const std::lock_guard<std::mutex> lock(m_mutex);
    const UsersFile before = std::exchange(m_users, *users);
    for (const User& user : before.users()) {
        if (!isUnchanged(user))
            m_sessions.closeAllOf(user.name);
    }
    return {};
}

int Access::sessions() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_sessions.size();
}

Caller Access::identify(const QByteArray& cookie, const QByteArray& authorization,
                        const QString& address)
{
    Caller caller;
    caller.address = address;
    if (!isLoginRequired()) {
        caller.user = QStringLiteral("local");
        caller.role = Role::Engineer;
        return caller;
    }
    const QByteArray token = requestToken(m_settings.cookie, cookie, authorization);
    if (token.isEmpty())
        return caller;
    const QByteArray key = Sessions::keyOf(token);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const std::optional<Sessions::Session> session = m_sessions.use(key, m_clock()))
        caller = {session->user, session->role, address, key};
    else if (const User* user = m_users.findByToken(key))
        caller = {user->name, user->role, address, key};
    return caller;
}

qint64 Access::waitToChange(const QString& address)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 now = m_clock();
    const qint64 wait = m_changes.wait(address, now);
    if (wait == 0)
        m_changes.fill(address, now);
    return wait;
}

QByteArray Access::cookie(const QByteArray& token) const
{
    return sessionCookie(m_settings.cookie, token, m_settings.sessions.longest / 1000,
                         m_settings.isEncrypted);
}

QByteArray Access::clearedCookie() const
{
    return sessionCookie(m_settings.cookie, {}, 0, m_settings.isEncrypted);
}

Expected<void> checkListening(const QString& address, bool hasCertificate, bool hasUsers)
{
    if (isLoopbackAddress(address) || (hasCertificate && hasUsers))
        return {};
    return Error{QStringLiteral("%1: listening on other addresses than this machine's own "
                                "(127.0.0.1, ::1) needs %2")
                     .arg(address, hasCertificate ? QStringLiteral("users")
                                   : hasUsers
                                       ? QStringLiteral("a certificate and its key")
                                       : QStringLiteral("a certificate, its key and users"))};
}

} // namespace plc::panel
