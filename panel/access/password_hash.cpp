#include "panel/access/password_hash.h"

#include <sodium.h>

#include "panel/access/secrets.h"

namespace plc::panel {

Expected<void> checkPassword(const QString& password, const QString& user)
{
    if (int(password.size()) < kShortestPassword)
        return Error{QStringLiteral("a password has %1 characters or more").arg(kShortestPassword)};
    if (int(password.toUtf8().size()) > kLongestPassword)
        return Error{QStringLiteral("a password has at most %1 bytes").arg(kLongestPassword)};
    if (password.compare(user, Qt::CaseInsensitive) == 0)
        return Error{QStringLiteral("a password is not the user's name")};
    return {};
}

Expected<QByteArray> hashPassword(const QString& password, const HashCost& cost)
{
    randomBytes(1); // starts the library, which then makes the salt
    const QByteArray bytes = password.toUtf8();
    char hash[crypto_pwhash_STRBYTES];
    if (::crypto_pwhash_str_alg(hash, bytes.constData(),
                                static_cast<unsigned long long>(bytes.size()), cost.passes,
                                cost.memory, crypto_pwhash_ALG_ARGON2ID13) != 0)
        return Error{QStringLiteral("there is not enough memory for the hash of a password")};
    return QByteArray(hash);
}

bool verifyPassword(const QByteArray& hash, const QString& password)
{
    const QByteArray bytes = password.toUtf8();
    if (hash.size() >= int(crypto_pwhash_STRBYTES) || bytes.size() > kLongestPassword)
        return false;
    return ::crypto_pwhash_str_verify(hash.constData(), bytes.constData(),
                                      static_cast<unsigned long long>(bytes.size())) == 0;
}

} // namespace plc::panel
