#ifndef PLC_PANEL_ACCESS_ACCESS_H
#define PLC_PANEL_ACCESS_ACCESS_H

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "panel/access/leaky_buckets.h"
#include "panel/access/login_queue.h"
#include "panel/access/password_hash.h"
#include "panel/access/request_token.h"
#include "panel/access/sessions.h"
#include "panel/access/users_file.h"
#include "values/steady_time.h"

namespace plc::panel {

struct AccessSettings {
    QString users; ///< File; empty: nobody logs in, and whoever is on this machine may all.
    bool isEncrypted = false;          ///< Cookies go over TLS alone.
    QByteArray cookie = cookieName(0); ///< Its name.
    SessionLimits sessions;
    RateLimit loginsOfAddress{10, 6000};
    RateLimit loginsOfUser{10, 10000};
    RateLimit changesOfAddress{500, 10};
};

struct LoginResult {
    enum Kind { Done, Wrong, TooOften };

    Kind kind = Wrong;
    QByteArray token; ///< If Done.
    Caller caller;    ///< If Done.
    qint64 wait = 0;  ///< If TooOften: until it makes sense again (ms).
};

/// Who the callers are: users, logins, sessions. A program of a user may have a token of its own,
/// with which it is who its user is until the file of users has another one or none.
///
/// Thread safety: all functions may be called by any thread.
class Access {
public:
    using Clock = std::function<qint64()>; ///< ms; never goes back.

    /// An error when the file of users cannot be read.
    static Expected<std::unique_ptr<Access>> open(const AccessSettings& settings,
                                                  Clock clock = &values::steadyTime);
    Access(const Access&) = delete;
    Access& operator=(const Access&) = delete;

    bool isLoginRequired() const { return !m_settings.users.isEmpty(); }
    /// `done` is called once, perhaps on another thread; when this goes before, never.
    void login(const QString& user, const QString& password, const QString& address,
               std::function<void(const LoginResult&)> done);
    /// Whether there was a session; its streams end when isValid() is asked.
    bool logout(const Caller& caller);
    /// Whether a caller is still who he was: to be asked for what goes on for long, such as
    /// streams. Counts as use of the session.
    bool isValid(const Caller& caller);
    /// Reads the file of users again. Sessions end of those who are no longer there, or have
    /// another role or password. After an error all is as it was.
    Expected<void> reload();
    int sessions() const;

    /// Who sends these headers; None: nobody who is known.
    Caller identify(const QByteArray& cookie, const QByteArray& authorization,
                    const QString& address);
    /// Time until this address may change something again (ms); 0, and it is counted: now.
    qint64 waitToChange(const QString& address);

    /// Value of Set-Cookie.
    QByteArray cookie(const QByteArray& token) const;
    QByteArray clearedCookie() const;

private:
    Access(const AccessSettings& settings, Clock clock, UsersFile users);

    qint64 waitToLogin(const QString& user, const QString& address);
    void finishLogin(const User& user, const QString& address, bool isRight,
                     const std::function<void(const LoginResult&)>& done);
    bool isUnchanged(const User& user) const;

    const AccessSettings m_settings;
    const Clock m_clock;
    const QByteArray m_nobody;  ///< A hash that takes as long as a user's, and fits no password.
    mutable std::mutex m_mutex; ///< Guards those below but the queue.
    UsersFile m_users;
    Sessions m_sessions;
    LeakyBuckets m_loginsOfAddress;
    LeakyBuckets m_loginsOfUser;
    LeakyBuckets m_changes;
    LoginQueue m_queue; ///< The last: its work uses the others.
};

/// Whether a server may listen there: on other addresses than this machine's own only with TLS and
/// with users, for what comes over a network comes from anybody. An error says what is missing.
Expected<void> checkListening(const QString& address, bool hasCertificate, bool hasUsers);

} // namespace plc::panel

#endif
