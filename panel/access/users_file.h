#ifndef PLC_PANEL_ACCESS_USERS_FILE_H
#define PLC_PANEL_ACCESS_USERS_FILE_H

#include <QtCore/QVector>

#include "panel/http/caller.h"
#include "values/expected.h"

namespace plc::panel {

struct User {
    QString name;
    Role role = Role::None;
    QByteArray passwordHash;   ///< Of hashPassword().
    QByteArray tokenHash = {}; ///< Of a program's token (tokenHash()); empty: there is none.
};

/// Who may log in: a file that its owner alone can read, and that is replaced as a whole.
class UsersFile {
public:
    static constexpr int kMostUsers = 1000;
    static constexpr int kLongestName = 64; // characters

    /// A file that is not there has no users. An error where it is malformed, or readable by others
    /// than its owner.
    static Expected<UsersFile> load(const QString& path);
    /// Writes the file; after an error it is as it was.
    Expected<void> save() const;

    const QVector<User>& users() const { return m_users; }
    /// Null: there is none of this name.
    const User* find(const QString& name) const;
    /// Whose program has the token of this hash; null: nobody's.
    const User* findByToken(const QByteArray& hash) const;
    /// In the place of one of the same name. An error when the name is none that a user may have.
    Expected<void> put(const User& user);
    /// Whether there was one.
    bool remove(const QString& name);

private:
    explicit UsersFile(QString path) : m_path(std::move(path)) {}
    Expected<void> read(const QByteArray& bytes);

    QString m_path;
    QVector<User> m_users;
};

} // namespace plc::panel

#endif
