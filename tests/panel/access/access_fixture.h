#ifndef PLC_TESTS_PANEL_ACCESS_ACCESS_FIXTURE_H
#define PLC_TESTS_PANEL_ACCESS_ACCESS_FIXTURE_H

#include <future>

#include "panel/access/access.h"
#include "tests/support/file_test.h"

namespace plc::panel {

/// The least that the library allows, so that tests take no time.
inline HashCost cheapHash()
{
    return {1, std::size_t(8) * 1024};
}

/// Users vera (viewer), otto (operator) and emma (engineer), each with the password "NAME's
/// secret", and a clock that the test sets.
class AccessTest : public test::FileTest {
protected:
    AccessTest() { settings.users = path("users.json"); }

    static QString name(Role role)
    {
        return QString::fromLatin1(role == Role::Viewer     ? "vera"
                                   : role == Role::Operator ? "otto"
                                                            : "emma");
    }
    static QString password(const QString& user) { return user + QStringLiteral("'s secret"); }
    void putUser(const QString& user, Role role, const QString& secret)
    {
        Expected<UsersFile> file = UsersFile::load(settings.users);
        ASSERT_TRUE(succeeds(file)) << error.toStdString();
        ASSERT_TRUE(succeeds(file->put({user, role, *hashPassword(secret, cheapHash())})));
        ASSERT_TRUE(succeeds(file->save()));
    }
    void open()
    {
        for (const Role role : {Role::Viewer, Role::Operator, Role::Engineer})
            putUser(name(role), role, password(name(role)));
        Expected<std::unique_ptr<Access>> opened =
            Access::open(settings, [this] { return now.load(); });
        ASSERT_TRUE(succeeds(opened)) << error.toStdString();
        access = std::move(*opened);
    }
    LoginResult login(const QString& user, const QString& secret, const char* address = "127.0.0.1")
    {
        std::promise<LoginResult> result;
        access->login(user, secret, QString::fromLatin1(address),
                      [&result](const LoginResult& done) { result.set_value(done); });
        return result.get_future().get();
    }
    QByteArray token(Role role) { return login(name(role), password(name(role))).token; }
    Caller identify(const QByteArray& token)
    {
        return access->identify("plc_panel=" + token, {}, QStringLiteral("127.0.0.1"));
    }

    AccessSettings settings;
    std::atomic<qint64> now{0};
    std::unique_ptr<Access> access;
};

} // namespace plc::panel

#endif
