#include "panel/access/secrets.h"

#include <sodium.h>

#include <cstdlib>

namespace plc::panel {
namespace {

constexpr int kTokenBytes = 32;

/// Fails only where the system has no source of random numbers; nothing is safe there.
void startLibrary()
{
    static const bool kIsStarted = ::sodium_init() >= 0;
    if (!kIsStarted)
        std::abort();
}

} // namespace

QByteArray randomBytes(int count)
{
    startLibrary();
    QByteArray bytes(count, '\0');
    ::randombytes_buf(bytes.data(), std::size_t(count));
    return bytes;
}

QByteArray randomToken()
{
    return randomBytes(kTokenBytes)
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

QByteArray tokenHash(const QByteArray& token)
{
    return sha256(token);
}

QByteArray sha256(const QByteArray& bytes)
{
    unsigned char digest[crypto_hash_sha256_BYTES];
    ::crypto_hash_sha256(digest, reinterpret_cast<const unsigned char*>(bytes.constData()),
                         static_cast<unsigned long long>(bytes.size()));
    return QByteArray(reinterpret_cast<const char*>(digest), int(sizeof digest)).toHex();
}

} // namespace plc::panel
