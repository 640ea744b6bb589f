#include "panel/http/tls_identity.h"

#include <gnutls/x509.h>

#include <utility>

#include "streams/input_file.h"

namespace plc::panel {
namespace {

constexpr unsigned int kLongestChain = 16;
constexpr streams::InputFileKind kPemFile{"a PEM file", qint64(1024) * 1024, ""};

thread_local TlsIdentities* t_identities = nullptr;

gnutls_datum_t datum(const QByteArray& bytes)
{
    return {reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.constData())),
            static_cast<unsigned int>(bytes.size())};
}

/// Whether GnuTLS takes them for a server, the key being that of the certificate.
bool isPair(const gnutls_datum_t& certificate, const gnutls_datum_t& key)
{
    gnutls_certificate_credentials_t credentials = nullptr;
    if (::gnutls_certificate_allocate_credentials(&credentials) < 0)
        return false;
    const int result = ::gnutls_certificate_set_x509_key_mem2(credentials, &certificate, &key,
                                                              GNUTLS_X509_FMT_PEM, nullptr, 0);
    ::gnutls_certificate_free_credentials(credentials);
    return result >= 0;
}

QDateTime endOf(const gnutls_pcert_st& certificate)
{
    gnutls_x509_crt_t parsed = nullptr;
    gnutls_pcert_st copy = certificate;
    if (::gnutls_pcert_export_x509(&copy, &parsed) < 0)
        return {};
    const time_t end = ::gnutls_x509_crt_get_expiration_time(parsed);
    ::gnutls_x509_crt_deinit(parsed);
    return QDateTime::fromMSecsSinceEpoch(qint64(end) * 1000, Qt::UTC);
}

} // namespace

TlsIdentity::TlsIdentity(QByteArray certificate, QByteArray key)
    : m_certificate(std::move(certificate)), m_keyText(std::move(key))
{
}

TlsIdentity::~TlsIdentity()
{
    for (gnutls_pcert_st& certificate : m_chain)
        ::gnutls_pcert_deinit(&certificate);
    ::gnutls_privkey_deinit(m_key);
}

Expected<std::unique_ptr<TlsIdentity>> TlsIdentity::load(const QString& certificate,
                                                         const QString& key)
{
    const Expected<QByteArray> certificateText = streams::readInputFile(certificate, kPemFile);
    if (!certificateText)
        return certificateText.error();
    const Expected<QByteArray> keyText = streams::readInputFile(key, kPemFile);
    if (!keyText)
        return keyText.error();
    std::unique_ptr<TlsIdentity> identity(new TlsIdentity(*certificateText, *keyText));
    if (!identity->read())
        return Error{QStringLiteral("%1 and %2: no certificate that TLS can be offered with")
                         .arg(certificate, key)};
    return identity;
}

bool TlsIdentity::read()
{
    const gnutls_datum_t certificate = datum(m_certificate);
    const gnutls_datum_t key = datum(m_keyText);
    if (!isPair(certificate, key))
        return false;
    m_chain.resize(kLongestChain);
    unsigned int count = kLongestChain;
    const int imported = ::gnutls_pcert_list_import_x509_raw(
        m_chain.data(), &count, &certificate, GNUTLS_X509_FMT_PEM, GNUTLS_X509_CRT_LIST_SORT);
    m_chain.resize(imported < 0 ? 0 : count);
    if (m_chain.empty() || ::gnutls_privkey_init(&m_key) < 0)
        return false;
    m_end = endOf(m_chain.front());
    return ::gnutls_privkey_import_x509_raw(m_key, &key, GNUTLS_X509_FMT_PEM, nullptr, 0) >= 0;
}

void TlsIdentity::give(gnutls_pcert_st** chain, unsigned int* count, gnutls_privkey_t* key) const
{
    *chain = m_chain.data();
    *count = static_cast<unsigned int>(m_chain.size());
    *key = m_key;
}

Expected<QDateTime> TlsIdentities::load(const QString& certificate, const QString& key)
{
    Expected<std::unique_ptr<TlsIdentity>> loaded = TlsIdentity::load(certificate, key);
    if (!loaded)
        return loaded.error();
    QDateTime end = (*loaded)->end();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_all.empty() || !m_all.back()->isSame(**loaded))
        m_all.push_back(std::move(*loaded));
    return end;
}

void TlsIdentities::useInThisThread()
{
    t_identities = this;
}

int TlsIdentities::choose(gnutls_session_t, const gnutls_datum_t*, int,
                          const gnutls_pk_algorithm_t*, int, gnutls_pcert_st** chain,
                          unsigned int* count, gnutls_privkey_t* key)
{
    if (!t_identities)
        return -1;
    const std::lock_guard<std::mutex> lock(t_identities->m_mutex);
    t_identities->m_all.back()->give(chain, count, key);
    return 0;
}

} // namespace plc::panel
