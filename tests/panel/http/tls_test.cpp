#ifdef PLC_OPENSSL

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include "tests/panel/http/http_fixture.h"

namespace plc::panel {
namespace {

class Tls : public WebServer {
protected:
    void SetUp() override
    {
        settings.certificate = m_folder.filePath(QStringLiteral("certificate.pem"));
        settings.key = m_folder.filePath(QStringLiteral("key.pem"));
        makePair("localhost", settings.certificate, settings.key);
    }
    /// `signer`: options that name who signs it; else it does itself.
    void makePair(const char* name, const QString& certificate, const QString& key,
                  const QStringList& signer = {})
    {
        const QStringList command{QStringLiteral("req"),
                                  QStringLiteral("-x509"),
                                  QStringLiteral("-newkey"),
                                  QStringLiteral("ec"),
                                  QStringLiteral("-pkeyopt"),
                                  QStringLiteral("ec_paramgen_curve:P-256"),
                                  QStringLiteral("-nodes"),
                                  QStringLiteral("-subj"),
                                  QStringLiteral("/CN=%1").arg(QLatin1String(name)),
                                  QStringLiteral("-days"),
                                  QStringLiteral("2"),
                                  QStringLiteral("-keyout"),
                                  key,
                                  QStringLiteral("-out"),
                                  certificate};
        openssl(command + signer, {});
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
        process.waitForFinished(30000);
        return process.readAll();
    }
    QByteArray target() const { return "127.0.0.1:" + QByteArray::number(server->port()); }
    /// Whether a process writes this.
    static bool hears(QProcess* process, const QByteArray& text)
    {
        QByteArray heard;
        while (!heard.contains(text) && process->waitForReadyRead(30000))
            heard += process->readAllStandardOutput();
        return heard.contains(text);
    }
    /// What a client gets that speaks in a certain way.
    QByteArray ask(const QStringList& options)
    {
        return openssl(QStringList{QStringLiteral("s_client"), QStringLiteral("-ign_eof"),
                                   QStringLiteral("-connect"), QString::fromLatin1(target())} +
                           options,
                       "GET /greeting HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
    }
    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
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

TEST_F(Tls, EndsWhereAClientWantsANewHandshake)
{
    start({greeting()});
    const QByteArray output = openssl(
        options("s_client -tls1_2 -msg -connect") + QStringList{QString::fromLatin1(target())},
        "R\n");
    ASSERT_TRUE(output.contains("RENEGOTIATING")) << output.toStdString();
    EXPECT_EQ(1, output.count(", ServerHello\n")) << output.toStdString();
    EXPECT_TRUE(output.contains("close_notify")) << output.toStdString();
    EXPECT_TRUE(output.contains("\nclosed\n")) << output.toStdString();
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

TEST_F(Tls, HasANewCertificateForNewConnectionsWhileStreamsGoOn)
{
    auto stream = std::make_shared<EventStream>();
    start({greeting(),
           route(Method::Get, "/events", [&stream](const Request&, const Responder& answer) {
               answer(Response::events(stream));
           })});
    QProcess streaming;
    streaming.start(QStringLiteral(PLC_OPENSSL),
                    options("s_client -quiet -connect") + options(target().constData()));
    streaming.write("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_TRUE(hears(&streaming, "text/event-stream"));
    EXPECT_TRUE(ask({}).contains("subject=CN = localhost\n"));

    makePair("renewed", settings.certificate, settings.key);
    const Expected<QDateTime> end = server->readCertificate();
    ASSERT_TRUE(end) << end.error().text.toStdString();
    const qint64 left = QDateTime::currentDateTimeUtc().secsTo(*end);
    EXPECT_NEAR(double(2 * 24 * 3600), double(left), 60.0);
    for (const char* version : {"-tls1_2", "-tls1_3"}) {
        const QByteArray output = ask(options(version));
        EXPECT_TRUE(output.contains("subject=CN = renewed\n")) << output.toStdString();
        EXPECT_TRUE(output.contains("hello"));
    }
    EXPECT_TRUE(stream->push(std::make_shared<QByteArray>("data: still here\n\n")));
    EXPECT_TRUE(hears(&streaming, "data: still here"));
    streaming.closeWriteChannel();
    streaming.kill();
    streaming.waitForFinished();
}

TEST_F(Tls, KeepsItsCertificateWhereTheNewOneIsNoPair)
{
    start({greeting()});
    makePair("renewed", settings.certificate, path("another.pem"));
    const Expected<QDateTime> end = server->readCertificate();
    ASSERT_FALSE(end);
    EXPECT_EQ((settings.certificate + QStringLiteral(" and ") + settings.key +
               QStringLiteral(": no certificate that TLS can be offered with"))
                  .toStdString(),
              end.error().text.toStdString());
    EXPECT_TRUE(ask({}).contains("subject=CN = localhost\n"));
    QFile::remove(settings.key);
    EXPECT_FALSE(server->readCertificate());
    EXPECT_TRUE(ask({}).contains("hello"));
}

TEST_F(Tls, SendsTheWholeChain)
{
    makePair("authority", path("authority.pem"), path("authority_key.pem"));
    makePair("localhost", settings.certificate, settings.key,
             {QStringLiteral("-CA"), path("authority.pem"), QStringLiteral("-CAkey"),
              path("authority_key.pem")});
    QFile chain(settings.certificate);
    QFile authority(path("authority.pem"));
    ASSERT_TRUE(chain.open(QIODevice::Append) && authority.open(QIODevice::ReadOnly));
    chain.write(authority.readAll());
    chain.close();
    start({greeting()});
    EXPECT_EQ(2, int(ask(options("-showcerts")).count("BEGIN CERTIFICATE")));
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
} // namespace plc::panel

#endif
