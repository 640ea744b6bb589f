#include "panel/access/users_file.h"

#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

#include "panel/access/role_name.h"
#include "streams/file_replacement.h"
#include "streams/input_file.h"

namespace plc::panel {
namespace {

constexpr streams::InputFileKind kKind{"a file of users", qint64(1024) * 1024, ""};
constexpr int kHashLetters = 64; // of SHA-256
constexpr mode_t kOwnerAlone = S_IRUSR | S_IWUSR;

QString nameKey()
{
    return QStringLiteral("name");
}

QString roleKey()
{
    return QStringLiteral("role");
}

QString passwordKey()
{
    return QStringLiteral("password");
}

QString tokenKey()
{
    return QStringLiteral("token");
}

QString usersKey()
{
    return QStringLiteral("users");
}

Expected<void> checkName(const QString& name)
{
    const bool hasOddCharacter = std::any_of(name.begin(), name.end(), [](QChar character) {
        return !character.isPrint() || character.isSpace();
    });
    if (name.isEmpty() || int(name.size()) > UsersFile::kLongestName || hasOddCharacter)
        return Error{QStringLiteral("a user's name has 1 to %1 visible characters without blanks")
                         .arg(UsersFile::kLongestName)};
    // The audit would not tell such a user from whoever comes where there are no users.
    if (name == QLatin1String("local"))
        return Error{QStringLiteral("\"local\" is who comes where there are no users")};
    return {};
}

bool isHash(const QByteArray& text)
{
    return text.size() == kHashLetters && QByteArray::fromHex(text).toHex() == text;
}

/// Whoever can write it can give himself any role, and whoever reads it can guess in peace.
Expected<void> checkMode(const QString& path)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    if ((status.st_mode & mode_t(S_IRWXG | S_IRWXO)) == 0)
        return {};
    return Error{
        QStringLiteral("%1: others than its owner can read or change it; chmod 600 it").arg(path)};
}

} // namespace

Expected<UsersFile> UsersFile::load(const QString& path)
{
    UsersFile file(path);
    if (!QFileInfo::exists(path))
        return file;
    const Expected<void> mode = checkMode(path);
    if (!mode)
        return mode.error();
    const Expected<QByteArray> bytes = streams::readInputFile(path, kKind);
    if (!bytes)
        return bytes.error();
    const Expected<void> isRead = file.read(*bytes);
    if (!isRead)
        return Error{QStringLiteral("%1: %2").arg(path, isRead.error().text)};
    return file;
}

Expected<void> UsersFile::read(const QByteArray& bytes)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    const QJsonValue list = document.object().value(usersKey());
    if (!list.isArray())
        return Error{QStringLiteral("no file of users")};
    const QJsonArray users = list.toArray();
    for (const auto& item : users) {
        const QJsonObject fields = item.toObject();
        const std::optional<Role> role = findRole(fields.value(roleKey()).toString());
        const User user{fields.value(nameKey()).toString(), role.value_or(Role::None),
                        fields.value(passwordKey()).toString().toLatin1(),
                        fields.value(tokenKey()).toString().toLatin1()};
        if (find(user.name))
            return Error{QStringLiteral("%1 stands there twice").arg(user.name)};
        if (user.passwordHash.isEmpty())
            return Error{QStringLiteral("%1 has no password").arg(user.name)};
        if (fields.contains(tokenKey()) && !isHash(user.tokenHash))
            return Error{QStringLiteral("%1 has a token that is none").arg(user.name)};
        const Expected<void> isPut = put(user);
        if (!isPut)
            return isPut.error();
    }
    return {};
}

Expected<void> UsersFile::save() const
{
    QJsonArray list;
    for (const User& user : m_users) {
        QJsonObject fields{{nameKey(), user.name},
                           {roleKey(), roleName(user.role)},
                           {passwordKey(), QString::fromLatin1(user.passwordHash)}};
        if (!user.tokenHash.isEmpty())
            fields.insert(tokenKey(), QString::fromLatin1(user.tokenHash));
        list.append(fields);
    }
    streams::FileReplacement file(m_path);
    const Expected<void> isOpen = file.open();
    if (!isOpen)
        return isOpen.error();
    if (::fchmod(file.descriptor(), kOwnerAlone) != 0)
        return Error{QStringLiteral("%1: its rights cannot be set").arg(m_path)};
    file.write(QJsonDocument(QJsonObject{{usersKey(), list}}).toJson());
    return file.commit();
}

const User* UsersFile::find(const QString& name) const
{
    const auto found = std::find_if(m_users.begin(), m_users.end(),
                                    [&name](const User& user) { return user.name == name; });
    return found == m_users.end() ? nullptr : &*found;
}

const User* UsersFile::findByToken(const QByteArray& hash) const
{
    const auto found = std::find_if(m_users.begin(), m_users.end(), [&hash](const User& user) {
        return !hash.isEmpty() && user.tokenHash == hash;
    });
    return found == m_users.end() ? nullptr : &*found;
}

Expected<void> UsersFile::put(const User& user)
{
    const Expected<void> isName = checkName(user.name);
    if (!isName)
        return isName.error();
    if (user.role == Role::None)
        return Error{QStringLiteral("%1: a role is viewer, operator or engineer").arg(user.name)};
    remove(user.name);
    if (int(m_users.size()) >= kMostUsers)
        return Error{QStringLiteral("there are at most %1 users").arg(kMostUsers)};
    m_users.append(user);
    return {};
}

bool UsersFile::remove(const QString& name)
{
    const auto found = std::find_if(m_users.begin(), m_users.end(),
                                    [&name](const User& user) { return user.name == name; });
    if (found == m_users.end())
        return false;
    m_users.erase(found);
    return true;
}

} // namespace plc::panel
