#ifndef PLC_PANEL_HTTP_TLS_IDENTITY_H
#define PLC_PANEL_HTTP_TLS_IDENTITY_H

#include <gnutls/abstract.h>

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <memory>
#include <mutex>
#include <vector>

#include "values/expected.h"

namespace plc::panel {

/// A certificate with its chain, and its key: how a server shows who it is.
class TlsIdentity {
public:
    /// From two PEM files. An error names them where they cannot be read, or are no pair that TLS
    /// can be offered with.
    static Expected<std::unique_ptr<TlsIdentity>> load(const QString& certificate,
                                                       const QString& key);
    ~TlsIdentity();
    TlsIdentity(const TlsIdentity&) = delete;
    TlsIdentity& operator=(const TlsIdentity&) = delete;

    bool isSame(const TlsIdentity& other) const
    {
        return m_certificate == other.m_certificate && m_keyText == other.m_keyText;
    }
    /// When the certificate ends, UTC.
    QDateTime end() const { return m_end; }
    void give(gnutls_pcert_st** chain, unsigned int* count, gnutls_privkey_t* key) const;

private:
    TlsIdentity(QByteArray certificate, QByteArray key);
    bool read();

    const QByteArray m_certificate;
    const QByteArray m_keyText;
    mutable std::vector<gnutls_pcert_st> m_chain;
    gnutls_privkey_t m_key = nullptr;
    QDateTime m_end;
};

/// The identity that new connections of a server get. Earlier ones stay as long as this, for
/// connections that are still made with them.
///
/// Thread safety: all functions may be called by any thread.
class TlsIdentities {
public:
    /// Reads certificate and key; after an error all is as it was. Returns when the certificate
    /// ends.
    Expected<QDateTime> load(const QString& certificate, const QString& key);
    /// Connections that are made in the calling thread, which outlives none of this, get these.
    void useInThisThread();
    /// For GnuTLS (gnutls_certificate_retrieve_function2), which has no place for an object.
    static int choose(gnutls_session_t session, const gnutls_datum_t* issuers, int issuerCount,
                      const gnutls_pk_algorithm_t* algorithms, int algorithmCount,
                      gnutls_pcert_st** chain, unsigned int* count, gnutls_privkey_t* key);

private:
    std::mutex m_mutex;                              ///< Guards the list.
    std::vector<std::unique_ptr<TlsIdentity>> m_all; ///< The last one counts.
};

} // namespace plc::panel

#endif
