// Connections that show who is at their other end, and passwords.

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

/// Certificates, made by openssl in a folder.
class Authority {
public:
    Authority(const QString& folder, const char* name)
        : m_folder(folder), m_name(QLatin1String(name))
    {
        run({"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
             "-days", "2", "-subj", "/CN=Authority", "-keyout", file(m_name, ".key"), "-out",
             certificate()});
    }
    QString certificate() const { return file(m_name, ".crt"); }

    /// The files NAME.key and NAME.crt, for this subject with these extensions.
    void sign(const QString& name, const QString& extensions) const
    {
        const QString request = file(name, ".csr");
        const QString wanted = file(name, ".ext");
        writeFile(wanted, extensions.toUtf8());
        run({"req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj",
             "/CN=" + name, "-keyout", file(name, ".key"), "-out", request});
        run({"x509", "-req", "-days", "2", "-in", request, "-CA", certificate(), "-CAkey",
             file(m_name, ".key"), "-CAcreateserial", "-extfile", wanted, "-out",
             file(name, ".crt")});
    }
    QString file(const char* name, const char* ending) const
    {
        return file(QLatin1String(name), ending);
    }
    QString file(const QString& name, const char* ending) const
    {
        return m_folder + QLatin1Char('/') + name + QLatin1String(ending);
    }

private:
    static void run(const QStringList& arguments)
    {
        QProcess process;
        process.start(QStringLiteral("openssl"), arguments);
        if (!process.waitForFinished(kPatience) || process.exitCode() != 0)
            qFatal("openssl: %s", process.readAllStandardError().constData());
    }

    const QString m_folder;
    const QString m_name;
};

/// A broker with a certificate for "localhost", users and passwords.
class SecureBroker : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        m_authority.sign(QStringLiteral("broker"), QStringLiteral("subjectAltName=DNS:localhost"));
        m_authority.sign(QStringLiteral("gateway"), QString());
        site.addPlc("oven", kOvenProject);
        const QString passwords = path(QStringLiteral("passwords"));
        writeFile(passwords, "");
        ASSERT_EQ(0, QProcess::execute(QStringLiteral(PLC_MOSQUITTO_PASSWD),
                                       {QStringLiteral("-b"), passwords, QStringLiteral("hall"),
                                        QStringLiteral("right")}));
        m_lines = "cafile " + m_authority.certificate().toUtf8() + "\ncertfile " +
                  m_authority.file(QStringLiteral("broker"), ".crt").toUtf8() + "\nkeyfile " +
                  m_authority.file(QStringLiteral("broker"), ".key").toUtf8() + "\n";
        m_users = "allow_anonymous false\npassword_file " + passwords.toUtf8() + "\n";
    }
    void TearDown() override
    {
        if (HasFailure())
            std::fprintf(stderr, "The gateway's log:\n%s", qPrintable(site.gateway.log()));
    }

    void startBroker(const QByteArray& more)
    {
        m_broker.configure(m_lines + more);
        ASSERT_TRUE(m_broker.start());
    }
    /// Starts a gateway with a broker of this host and TLS, and this in addition.
    void startGateway(const char* host, const QJsonObject& tls, QJsonObject broker = {})
    {
        broker[QStringLiteral("host")] = QLatin1String(host);
        broker[QStringLiteral("port")] = m_broker.port();
        broker[QStringLiteral("protocol")] = QLatin1String(GetParam());
        broker[QStringLiteral("tls")] = tls;
        site.addBroker(broker);
        site.start();
    }
    QJsonObject rightTls() const
    {
        return {{QStringLiteral("authorities"), m_authority.certificate()}};
    }
    /// Whether a consumer gets a birth of the oven.
    bool isTold(const QStringList& options)
    {
        Watcher consumer(QStringList{QStringLiteral("--host"), QStringLiteral("localhost"),
                                     QStringLiteral("--port"), QString::number(m_broker.port()),
                                     QStringLiteral("--group"), QStringLiteral("works"),
                                     QStringLiteral("--ca"), m_authority.certificate()} +
                         options);
        consumer.wantRebirth();
        consumer.skipToBirth();
        return !consumer.await("DBIRTH", "oven").isEmpty();
    }
    QString path(const char* name) const { return site.path(QLatin1String(name)); }
    QString path(const QString& name) const { return site.path(name); }
    const Authority& authority() const { return m_authority; }
    const QByteArray& users() const { return m_users; }

private:
    int m_argumentCount = 1;
    char m_name[4] = "e2e";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
    MosquittoProcess m_broker;
    QByteArray m_lines;
    QByteArray m_users;

protected:
    GatewaySite site;

private:
    Authority m_authority{site.path(QStringLiteral(".")), "authority"};
};

TEST_P(SecureBroker, IsUsedWithItsAuthorityAndAPassword)
{
    startBroker(users());
    writeFile(path("password"), "right\n");
    startGateway("localhost", rightTls(),
                 {{QStringLiteral("user"), QStringLiteral("hall")},
                  {QStringLiteral("passwordFile"), path("password")}});
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("connected to the broker localhost")));
    EXPECT_TRUE(isTold({QStringLiteral("--user"), QStringLiteral("hall"),
                        QStringLiteral("--password"), QStringLiteral("right")}));
}

TEST_P(SecureBroker, TakesAGatewayByItsCertificate)
{
    startBroker("require_certificate true\nuse_identity_as_username true\n");
    const QJsonValue key = authority().file(QStringLiteral("gateway"), ".key");
    const QJsonValue certificate = authority().file(QStringLiteral("gateway"), ".crt");
    QJsonObject tls = rightTls();
    tls[QStringLiteral("key")] = key;
    tls[QStringLiteral("certificate")] = certificate;
    startGateway("localhost", tls);
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("connected to the broker localhost")));
    EXPECT_TRUE(isTold({QStringLiteral("--key"), key.toString(), QStringLiteral("--cert"),
                        certificate.toString()}));
}

TEST_P(SecureBroker, OfTheSystemsAuthoritiesTakesAGatewayByItsCertificate)
{
    startBroker("require_certificate true\nuse_identity_as_username true\n");
    // The folder of authorities, which have names that openssl gives.
    const QString folder = path("authorities");
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::copy(authority().certificate(), folder + QStringLiteral("/authority.crt")));
    ASSERT_EQ(0, QProcess::execute(QStringLiteral("openssl"), {QStringLiteral("rehash"), folder}));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SSL_CERT_DIR"), folder);
    site.gateway.setEnvironment(environment);
    startGateway("localhost",
                 {{QStringLiteral("key"), authority().file("gateway", ".key")},
                  {QStringLiteral("certificate"), authority().file("gateway", ".crt")}});
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("connected to the broker localhost")));
}

TEST_P(SecureBroker, WithACertificateTellsThatTheSystemDoesNotKnowTheAuthority)
{
    startBroker("require_certificate true\n");
    startGateway("localhost",
                 {{QStringLiteral("key"), authority().file("gateway", ".key")},
                  {QStringLiteral("certificate"), authority().file("gateway", ".crt")}});
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("certificate verify failed")));
    EXPECT_FALSE(site.gateway.log().contains(QLatin1String("connected to the broker")));
}

TEST_P(SecureBroker, OfAnotherAuthorityIsRefused)
{
    startBroker("allow_anonymous true\n");
    const Authority other(path("."), "other");
    startGateway("localhost", {{QStringLiteral("authorities"), other.certificate()}});
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("certificate verify failed")));
    EXPECT_FALSE(site.gateway.log().contains(QLatin1String("connected to the broker")));
}

TEST_P(SecureBroker, WithAnotherNameIsRefused)
{
    startBroker("allow_anonymous true\n");
    startGateway("127.0.0.1", rightTls());
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("host name verification failed")));
    EXPECT_FALSE(site.gateway.log().contains(QLatin1String("connected to the broker")));
}

TEST_P(SecureBroker, TellsThatAPasswordIsWrong)
{
    startBroker(users());
    writeFile(path("password"), "wrong\n");
    startGateway("localhost", rightTls(),
                 {{QStringLiteral("user"), QStringLiteral("hall")},
                  {QStringLiteral("passwordFile"), path("password")}});
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("the broker refuses the connection")));
    EXPECT_FALSE(site.gateway.log().contains(QLatin1String("wrong")));
    // It is read for each connection.
    writeFile(path("password"), "right\n");
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("connected to the broker localhost")));
}

TEST_P(SecureBroker, TellsWhichCertificateIsMissing)
{
    startBroker("allow_anonymous true\n");
    startGateway("localhost", {{QStringLiteral("authorities"), path("nothing")}});
    EXPECT_TRUE(site.gateway.waitForLog(path("nothing") + QStringLiteral(": No such file")));
}

TEST_P(SecureBroker, TellsWhichPasswordFileIsMissing)
{
    startBroker(users());
    startGateway("localhost", rightTls(),
                 {{QStringLiteral("user"), QStringLiteral("hall")},
                  {QStringLiteral("passwordFile"), path("nothing")}});
    EXPECT_TRUE(site.gateway.waitForLog(path("nothing")));
}

INSTANTIATE_TEST_SUITE_P(Mqtt, SecureBroker, bothVersions(), versionName);

} // namespace
} // namespace plc::test
