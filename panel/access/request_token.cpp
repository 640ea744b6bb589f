#include "panel/access/request_token.h"

#include <QtCore/QList>

#include <algorithm>

namespace plc::panel {
namespace {

constexpr char kCookie[] = "plc_panel";
constexpr char kScheme[] = "bearer ";
constexpr int kLongestToken = 128;

bool isTokenCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '_';
}

QByteArray checkedToken(const QByteArray& token)
{
    const bool isToken =
        token.size() <= kLongestToken && std::all_of(token.begin(), token.end(), isTokenCharacter);
    return isToken ? token : QByteArray();
}

} // namespace

QByteArray cookieName(quint16 port)
{
    return port == 0 ? QByteArray(kCookie) : kCookie + QByteArray("_") + QByteArray::number(port);
}

QByteArray requestToken(const QByteArray& name, const QByteArray& cookie,
                        const QByteArray& authorization)
{
    const int scheme = int(sizeof kScheme) - 1;
    if (authorization.left(scheme).toLower() == kScheme)
        return checkedToken(authorization.mid(scheme).trimmed());
    QByteArray token;
    for (const QByteArray& item : cookie.split(';')) {
        const QByteArray pair = item.trimmed();
        if (!pair.startsWith(name + '='))
            continue;
        if (!token.isNull())
            return {};
        token = checkedToken(pair.mid(int(name.size()) + 1));
    }
    return token;
}

QByteArray sessionCookie(const QByteArray& name, const QByteArray& token, qint64 seconds,
                         bool isEncrypted)
{
    QByteArray cookie = name + '=' + token + "; Path=/; HttpOnly; SameSite=Strict; Max-Age=" +
                        QByteArray::number(token.isEmpty() ? 0 : seconds);
    return isEncrypted ? cookie + "; Secure" : cookie;
}

} // namespace plc::panel
