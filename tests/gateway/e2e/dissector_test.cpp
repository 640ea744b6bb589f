// Sessions as Wireshark understands them.

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

/// What goes over a port of this machine, in a file.
class Capture {
public:
    Capture(int port, const QString& file) : m_port(port), m_file(file)
    {
        m_tshark.start(QStringLiteral(PLC_TSHARK),
                       {QStringLiteral("-i"), QStringLiteral("lo"), QStringLiteral("-f"),
                        QStringLiteral("tcp port %1").arg(port), QStringLiteral("-w"), file});
        m_hasBegun = comesTrue([this] { return hasBegun() || hasEnded(); }) && !hasEnded();
    }
    /// False where nothing may be captured.
    bool hasBegun()
    {
        m_tshark.waitForReadyRead(1);
        m_errors += m_tshark.readAllStandardError();
        return m_errors.contains("Capture started") && QFile::exists(m_file);
    }
    bool isRunning() const { return m_hasBegun; }
    const QByteArray& errors() const { return m_errors; }

    /// Waits until the file has the last words of the session: packets are handed over in
    /// intervals.
    void endBehind(const char* lastWords)
    {
        EXPECT_TRUE(comesTrue([&] { return readFile(m_file).contains(lastWords); }));
        ::kill(pid_t(m_tshark.processId()), SIGINT);
        m_tshark.waitForFinished(kPatience);
    }
    /// What tshark makes of the packets that this filter lets through.
    QStringList read(const QString& filter, const QStringList& options) const
    {
        QProcess process;
        process.start(QStringLiteral(PLC_TSHARK),
                      QStringList{QStringLiteral("-r"), m_file, QStringLiteral("-d"),
                                  QStringLiteral("tcp.port==%1,mqtt").arg(m_port),
                                  QStringLiteral("-Y"), filter} +
                          options);
        EXPECT_TRUE(process.waitForFinished(kPatience));
        EXPECT_EQ(0, process.exitCode()) << process.readAllStandardError().constData();
        QStringList lines =
            QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'));
        lines.removeAll(QString());
        return lines;
    }

private:
    bool hasEnded() { return m_tshark.state() == QProcess::NotRunning; }

    const int m_port;
    const QString m_file;
    QProcess m_tshark;
    QByteArray m_errors;
    bool m_hasBegun = false;
};

class DissectedSession : public GatewayTrial {
protected:
    void SetUp() override
    {
        GatewayTrial::SetUp();
        if (IsSkipped())
            return;
        site.addPlc("oven", ovenWhoseLossIsNoticedSoon(),
                    {{QStringLiteral("writable"), QJsonArray{QStringLiteral("Oven.count")}}});
        // The messages as they are described here, under the name by which Wireshark looks for
        // them.
        QByteArray definition =
            readFile(QStringLiteral(PLC_SOURCE_DIR) +
                     QStringLiteral("/gateway/sparkplug/sparkplug_payload.proto"));
        definition.replace("package plc.gateway.wire", "package com.cirruslink.sparkplug.protobuf");
        writeFile(site.path(QStringLiteral("payload.proto")), definition);
    }
    QStringList definitions() const
    {
        return {QStringLiteral("-o"), QStringLiteral("uat:protobuf_search_paths:\"%1\",\"TRUE\"")
                                          .arg(site.path(QStringLiteral(".")))};
    }
    /// Everything that a node tells, and is told.
    void holdSession()
    {
        auto consumer = watcher();
        site.start();
        consumer->await("DBIRTH", "oven");
        for (int i = 1; i <= 20; ++i) {
            site.plc("oven").set("Oven.count", QString::number(-i));
            ASSERT_TRUE(site.plc("oven").isSeen());
        }
        consumer->command("oven", "Oven/count", "Int32", 5, "w1");
        EXPECT_EQ("done", consumer->awaitOutcome("w1")[QStringLiteral("outcome")].toString());
        consumer->wantRebirth();
        consumer->await("DBIRTH", "oven");
        site.plc("oven").kill();
        consumer->await("DDEATH", "oven");
        EXPECT_EQ(0, site.gateway.stop());
        consumer->await("NDEATH");
        // Nothing that is dissected.
        consumer->send({{QStringLiteral("publish"), QStringLiteral("end")},
                        {QStringLiteral("text"), QString::fromLatin1(kLastWords)}});
        m_consumer = std::move(consumer);
    }

    static constexpr char kLastWords[] = "last words";

private:
    std::unique_ptr<Watcher> m_consumer; ///< Until its last words have been sent.
};

TEST_P(DissectedSession, HasNothingMalformed)
{
    Capture capture(port(), site.path(QStringLiteral("session.pcapng")));
    if (!capture.isRunning())
        GTEST_SKIP() << "tshark may not capture here: " << capture.errors().constData();
    holdSession();
    capture.endBehind(kLastWords);
    const QStringList kinds =
        capture.read(QStringLiteral("sparkplugb"),
                     {QStringLiteral("-T"), QStringLiteral("fields"), QStringLiteral("-e"),
                      QStringLiteral("sparkplugb.messagetype")});
    const QString all = kinds.join(QLatin1Char(','));
    for (const char* kind : {"NBIRTH", "DBIRTH", "DDATA", "NCMD", "DCMD", "DDEATH", "NDEATH"})
        EXPECT_TRUE(all.contains(QLatin1String(kind))) << kind;
    // Each goes to the broker and from there to the consumer.
    EXPECT_GE(all.count(QStringLiteral("DDATA")), 2 * 20);
    EXPECT_EQ(QStringList(),
              capture.read(QStringLiteral("_ws.malformed || _ws.expert.severity == error"),
                           definitions()));
    const QStringList numbered = capture.read(
        QStringLiteral("protobuf.field.name == \"seq\" && protobuf.field.name == \"alias\""),
        definitions());
    EXPECT_FALSE(numbered.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Mqtt, DissectedSession, bothVersions(), versionName);

} // namespace
} // namespace plc::test
