#ifdef PLC_OPENSSL

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include "tests/panel/http/http_fixture.h"

namespace plc {
namespace panel {
namespace {

class Tls : public WebServer {
protected:
    void SetUp() override
    {
        settings.certificate = m_folder.filePath(QStringLiteral("certificate.pem"));
        settings.key = m_folder.filePath(QStringLiteral("key.pem"));
        const QStringList command{QStringLiteral("req"),
                                  QStringLiteral("-x509"),
                                  QStringLiteral("-newkey"),
                                  QStringLiteral("ec"),
                                  QStringLiteral("-pkeyopt"),
                                  QStringLiteral("ec_paramgen_curve:P-256"),
                                  QStringLiteral("-nodes"),
                                  QStringLiteral("-subj"),
                                  QStringLiteral("/CN=localhost"),
                                  QStringLiteral("-days"),
                                  QStringLiteral("2"),
                                  QStringLiteral("-keyout"),
                                  settings.key,
                                  QStringLiteral("-out"),
                                  settings.certificate};
        openssl(command, {});
    }
    QByteArray openssl(const QStringList& arguments, const QByteArray& input)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral(PLC_OPENSSL), arguments);
        process.write(input);
        process.waitForBytesWritten();
        if (input.isEmpty())
            process.closeWriteChannel();
        process.waitForFinished(20000);
        return process.readAll();
    }
    /// What a client gets that speaks in a certain way.
    QByteArray ask(const QStringList& options)
    {
        return openssl(QStringList{QStringLiteral("s_client"), QStringLiteral("-ign_eof"),
                                   QStringLiteral("-connect"),
                                   QStringLiteral("127.0.0.1:%1").arg(server->port())} +
                           options,
                       "GET /greeting HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
    }
    static QStringList options(const char* text)
    {
        return QString::fromLatin1(text).split(QLatin1Char(' '));
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(Tls, IsOfVersion12And13)
{
    start({greeting()});
    EXPECT_TRUE(ask(options("-tls1_2")).contains("hello"));
    EXPECT_TRUE(ask(options("-tls1_3")).contains("hello"));
}

TEST_F(Tls, IsOfNoOlderVersion)
{
    start({greeting()});
    for (const char* version : {"-tls1", "-tls1_1"}) {
        const QByteArray output = ask(options(version) + options("-cipher ALL:@SECLEVEL=0"));
        EXPECT_FALSE(output.contains("hello")) << version;
        EXPECT_TRUE(output.contains("New, (NONE), Cipher is (NONE)")) << output.toStdString();
    }
}

TEST_F(Tls, HasForwardSecrecyAndAuthenticatedEncryptionAlone)
{
    start({greeting()});
    for (const char* cipher : {"AES256-GCM-SHA384", "ECDHE-ECDSA-AES128-SHA256",
                               "ECDHE-ECDSA-AES256-SHA", "DES-CBC3-SHA"}) {
        const QByteArray output = ask(options("-tls1_2 -cipher") + options(cipher));
        EXPECT_FALSE(output.contains("hello")) << cipher;
    }
    EXPECT_TRUE(ask(options("-tls1_2 -cipher ECDHE-ECDSA-CHACHA20-POLY1305")).contains("hello"));
}

TEST_F(Tls, IsNeededWhereItIsOffered)
{
    start({greeting()});
    // Without it there is no answer on this port.
    test::HttpConnection plain(server->port());
    plain.send("GET /greeting HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_TRUE(plain.ends());
    EXPECT_FALSE(plain.received().contains("hello"));
}

TEST_F(Tls, SaysWhatIsWrongWithTheFiles)
{
    const QString certificate = settings.certificate;
    settings.certificate = settings.key;
    settings.port = 0;
    EXPECT_EQ((settings.key + QStringLiteral(" and ") + settings.key +
               QStringLiteral(": no certificate that TLS can be offered with"))
                  .toStdString(),
              errorOf({greeting()}));
    settings.certificate = certificate;
    settings.key += QStringLiteral(".missing");
    EXPECT_NE("", errorOf({greeting()}));
}

} // namespace
} // namespace panel
} // namespace plc

#endif
