#include "panel/service/user_command.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>

#include "panel/access/password_hash.h"
#include "panel/access/role_name.h"
#include "panel/access/secrets.h"
#include "panel/access/users_file.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

constexpr int kLongestLine = 4096;

/// Does not show what is typed, while it lives.
class SilentTerminal {
public:
    SilentTerminal()
    {
        m_isTerminal = ::tcgetattr(STDIN_FILENO, &m_before) == 0;
        termios silent = m_before;
        silent.c_lflag &= ~tcflag_t(ECHO);
        if (m_isTerminal)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~SilentTerminal()
    {
        if (m_isTerminal)
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    bool isTerminal() const { return m_isTerminal; }

private:
    termios m_before = {};
    bool m_isTerminal = false;
};

Expected<QString> readLine(const char* prompt)
{
    const SilentTerminal silent;
    if (silent.isTerminal())
        std::fputs(prompt, stderr);
    char line[kLongestLine];
    if (!std::fgets(line, sizeof line, stdin))
        return Error{QStringLiteral("no password was given")};
    if (silent.isTerminal())
        std::fputs("\n", stderr);
    QByteArray text(line);
    if (text.endsWith('\n'))
        text.chop(1);
    return QString::fromUtf8(text);
}

Expected<QString> readPassword()
{
    Expected<QString> first = readLine("password: ");
    if (!first || ::isatty(STDIN_FILENO) == 0)
        return first;
    Expected<QString> second = readLine("once more: ");
    if (second && *second != *first)
        return Error{QStringLiteral("these are two passwords")};
    return second;
}

Expected<QString> addUser(UsersFile* users, const QString& name, const QString& roleWord)
{
    const std::optional<Role> role = findRole(roleWord);
    if (!role)
        return Error{QStringLiteral("%1 is no role; viewer, operator and engineer are")
                         .arg(values::quoted(roleWord))};
    const Expected<QString> password = readPassword();
    if (!password)
        return password.error();
    if (const Expected<void> isGood = checkPassword(*password, name); !isGood)
        return isGood.error();
    const Expected<QByteArray> hash = hashPassword(*password);
    if (!hash)
        return hash.error();
    if (const Expected<void> put = users->put({name, *role, *hash, {}}); !put)
        return put.error();
    if (const Expected<void> saved = users->save(); !saved)
        return saved.error();
    return QStringLiteral("%1 may log in as %2").arg(values::quoted(name), roleName(*role));
}

Expected<QString> removeUser(UsersFile* users, const QString& name)
{
    if (!users->remove(name))
        return Error{QStringLiteral("there is no user %1").arg(values::quoted(name))};
    if (const Expected<void> saved = users->save(); !saved)
        return saved.error();
    return QStringLiteral(
               "%1 is removed; a panel that runs is told by SIGHUP, or by a restart where "
               "the file is a credential")
        .arg(values::quoted(name));
}

/// Empty: none any more.
Expected<void> putToken(UsersFile* users, const QString& name, const QByteArray& hash)
{
    const User* const found = users->find(name);
    if (!found)
        return Error{QStringLiteral("there is no user %1").arg(values::quoted(name))};
    User user = *found;
    user.tokenHash = hash;
    if (Expected<void> put = users->put(user); !put)
        return put;
    return users->save();
}

Expected<QString> makeToken(UsersFile* users, const QString& name)
{
    const QByteArray token = randomToken();
    if (const Expected<void> put = putToken(users, name, tokenHash(token)); !put)
        return put.error();
    return QString::fromLatin1(token);
}

Expected<QString> revokeToken(UsersFile* users, const QString& name)
{
    if (const Expected<void> put = putToken(users, name, {}); !put)
        return put.error();
    return QStringLiteral(
               "%1 has no token any more; a panel that runs is told by SIGHUP, or by a "
               "restart where the file is a credential")
        .arg(values::quoted(name));
}

QString listUsers(const UsersFile& users)
{
    QStringList lines;
    for (const User& user : users.users())
        lines.append(
            QStringLiteral("%1  %2%3")
                .arg(user.name, roleName(user.role),
                     user.tokenHash.isEmpty() ? QString() : QStringLiteral("  has a token")));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

Expected<QString> changeUsers(const QString& file, const QStringList& words)
{
    Expected<UsersFile> users = UsersFile::load(file);
    if (!users)
        return users.error();
    const QString command = words.value(0);
    if (command == QLatin1String("add") && words.size() == 3)
        return addUser(&*users, words[1], words[2]);
    if (command == QLatin1String("remove") && words.size() == 2)
        return removeUser(&*users, words[1]);
    if (command == QLatin1String("token") && words.size() == 2)
        return makeToken(&*users, words[1]);
    if (command == QLatin1String("revoke") && words.size() == 2)
        return revokeToken(&*users, words[1]);
    if (command == QLatin1String("list") && words.size() == 1)
        return listUsers(*users);
    return Error{QStringLiteral(
        "expected \"add NAME ROLE\", \"remove NAME\", \"token NAME\", \"revoke NAME\" or \"list\"; "
        "--help tells more")};
}

} // namespace plc::panel
