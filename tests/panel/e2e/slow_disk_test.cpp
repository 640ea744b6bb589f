#include <gmock/gmock.h>

#include <QtCore/QDir>
#include <QtCore/QUrl>

#include <csignal>

#include "panel/e2e/panel_site.h"

namespace plc::test {
namespace {

/// A panel whose disk answers when the test wants it to.
class PanelOnASlowDisk : public PanelSite {
protected:
    void SetUp() override
    {
        if (PLC_INSTRUMENTED)
            GTEST_SKIP() << "sanitizers take the same calls over";
    }
    void startPanel()
    {
        ::qputenv("LD_PRELOAD", PLC_SLOW_DISK);
        ::qputenv("PLC_SLOW_DISK", path("hangs").toLocal8Bit());
        start();
        ::qunsetenv("LD_PRELOAD");
    }
    void hang() { writeFile(path("hangs"), ""); }
    void answer() { QFile::remove(path("hangs")); }

    /// Asks; nothing is waited for.
    std::unique_ptr<HttpConnection> ask(const QByteArray& target, const QByteArray& body,
                                        const QByteArray& method = "POST")
    {
        auto connection = std::make_unique<HttpConnection>(port);
        connection->send(method + " /api/v1/" + target +
                         " HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
                         "Content-Length: " +
                         QByteArray::number(body.size()) + "\r\n\r\n" + body);
        return connection;
    }
    std::unique_ptr<HttpConnection> begin(int id, int value)
    {
        return ask("writes", R"({"plc":"tank","label":"T.set","value":)" +
                                 QByteArray::number(value) + R"(,"id":"w)" +
                                 QByteArray::number(id) + R"("})");
    }
    std::string outcome(int id)
    {
        return get("writes/w" + QByteArray::number(id))
            .value(QLatin1String("outcome"))
            .toString()
            .toStdString();
    }
    std::string valueInPlc() { return plc->command(QStringLiteral("get T.set")).toStdString(); }
    QString audit() { return QString::fromUtf8(readFile(path("audit"))); }
    /// Until it has begun to end, and writes nothing any more.
    void terminate()
    {
        ASSERT_EQ(0, ::kill(pid_t(panel().pid()), SIGTERM));
        ASSERT_TRUE(comesTrue([this] { return !HttpConnection(port).isMade(); }));
    }
};

TEST_F(PanelOnASlowDisk, GoesOnReadingAndWritesOnceItIsOnRecord)
{
    startPanel();
    hang();
    const std::unique_ptr<HttpConnection> first = begin(1, 7);
    ASSERT_TRUE(comesTrue([this] { return outcome(1) == "pending"; }));
    const std::unique_ptr<HttpConnection> second = begin(2, 8);
    ASSERT_TRUE(comesTrue([this] { return outcome(2) == "pending"; }));
    plc->set("T.level", QStringLiteral("42"));
    EXPECT_TRUE(comesToShow("T.level", "42"));
    EXPECT_EQ("0", valueInPlc());
    answer();
    EXPECT_THAT(first->answer().body.toStdString(), testing::HasSubstr(R"("outcome":"done")"));
    EXPECT_THAT(second->answer().body.toStdString(), testing::HasSubstr(R"("outcome":"done")"));
    EXPECT_EQ("8", valueInPlc());
    EXPECT_TRUE(get("audit").value(QLatin1String("intact")).toBool());
}

TEST_F(PanelOnASlowDisk, GoesOnReadingWhileAnAlarmIsAcknowledged)
{
    settings.remove(QStringLiteral("audit"));
    device[QStringLiteral("alarms")] = QJsonArray{QJsonObject{
        {QStringLiteral("label"), QStringLiteral("T.level")}, {QStringLiteral("above"), 90}}};
    startPanel();
    const auto alarm = [this] {
        return get("alarms").value(QLatin1String("alarms")).toArray().at(0).toObject();
    };
    plc->set("T.level", QStringLiteral("95"));
    ASSERT_TRUE(
        comesTrue([&] { return alarm().value(QLatin1String("state")).toString() == "active"; }));
    hang();
    const QByteArray id = alarm().value(QLatin1String("id")).toString().toUtf8();
    const QByteArray since =
        QByteArray::number(qint64(alarm().value(QLatin1String("since")).toDouble()));
    const std::unique_ptr<HttpConnection> connection =
        ask("alarms/" + QUrl::toPercentEncoding(QString::fromUtf8(id)) + "/acknowledge",
            "{\"since\":" + since + "}");
    HttpConnection past(port);
    past.send("GET /api/v1/alarms/history HTTP/1.1\r\nHost: localhost\r\n\r\n");
    plc->set("T.level", QStringLiteral("96"));
    EXPECT_TRUE(comesToShow("T.level", "96"));
    EXPECT_TRUE(alarm().value(QLatin1String("acknowledgedBy")).isNull());
    answer();
    EXPECT_THAT(connection->answer().body.toStdString(),
                testing::HasSubstr(R"("acknowledgedBy":"local")"));
    EXPECT_EQ(200, past.answer().status);
    EXPECT_EQ("local", alarm().value(QLatin1String("acknowledgedBy")).toString().toStdString());
}

TEST_F(PanelOnASlowDisk, GoesOnReadingWhileARecipeIsKept)
{
    settings.remove(QStringLiteral("audit"));
    settings[QStringLiteral("recipes")] = QStringLiteral("recipes");
    startPanel();
    hang();
    const std::unique_ptr<HttpConnection> saving =
        ask("recipes/Summer", R"({"plc":"tank","labels":["T.set"]})", "PUT");
    // Its new file is there, and is not on the disk yet.
    ASSERT_TRUE(comesTrue(
        [this] { return !QDir(path("recipes")).entryList(QDir::Files | QDir::Hidden).isEmpty(); }));
    HttpConnection showing(port);
    showing.send("GET /api/v1/recipes/Summer HTTP/1.1\r\nHost: localhost\r\n\r\n");
    const std::unique_ptr<HttpConnection> restoring =
        ask("recipes/Summer/restore", R"({"id":"r1"})");
    plc->set("T.level", QStringLiteral("42"));
    EXPECT_TRUE(comesToShow("T.level", "42"));
    const std::unique_ptr<HttpConnection> removing = ask("recipes/Summer", {}, "DELETE");
    answer();
    EXPECT_EQ(200, saving->answer().status);
    EXPECT_EQ(200, showing.answer().status);
    EXPECT_EQ(200, restoring->answer().status);
    EXPECT_EQ(204, removing->answer().status);
    EXPECT_EQ(404, HttpConnection(port).get("/api/v1/recipes/Summer").status);
}

TEST_F(PanelOnASlowDisk, SettlesAtTheEndWhatIsNotOnRecordYet)
{
    startPanel();
    hang();
    const std::unique_ptr<HttpConnection> connection = begin(1, 7);
    ASSERT_TRUE(comesTrue([this] { return outcome(1) == "pending"; }));
    terminate();
    answer();
    EXPECT_EQ(0, panel().exitCode());
    EXPECT_EQ("0", valueInPlc());
    EXPECT_EQ(1, audit().count(QLatin1String("\"phase\":\"requested\"")));
    EXPECT_EQ(
        1, audit().count(QLatin1String("\"outcome\":\"notSent\",\"reason\":\"the program ends\"")));
}

TEST_F(PanelOnASlowDisk, EndsThoughTheDiskNeverAnswers)
{
    settings.remove(QStringLiteral("record"));
    startPanel();
    hang();
    const std::unique_ptr<HttpConnection> connection = begin(1, 7);
    ASSERT_TRUE(comesTrue([this] { return outcome(1) == "pending"; }));
    terminate();
    EXPECT_EQ(0, panel().exitCode());
    EXPECT_EQ("0", valueInPlc());
    EXPECT_THAT(panel().errors().toStdString(),
                testing::HasSubstr(
                    "the audit is not kept: the disk did not answer before the program ended"));
}

TEST_F(PanelOnASlowDisk, EndsThoughTheDiskOfTheRecordingNeverAnswersAndTellsWhatIsMissing)
{
    settings.remove(QStringLiteral("audit"));
    startPanel();
    hang();
    plc->set("T.level", QStringLiteral("42"));
    ASSERT_TRUE(comesToShow("T.level", "42"));
    terminate();
    EXPECT_EQ(0, panel().exitCode());
    EXPECT_THAT(panel().errors().toStdString(),
                testing::ContainsRegex("record: [0-9]+ changes are not known to be recorded: the "
                                       "disk had not taken them when the program ended"));
}

TEST_F(PanelOnASlowDisk, HasWrittenNothingThatIsNotOnRecordWhenItIsKilled)
{
    startPanel();
    std::vector<std::unique_ptr<HttpConnection>> connections;
    for (int i = 1; i <= 20; ++i) {
        if (i == 10)
            hang();
        connections.push_back(begin(i, i));
        ASSERT_TRUE(comesTrue([this, i] { return outcome(i) == (i < 10 ? "done" : "pending"); }));
    }
    stop();
    answer();
    EXPECT_EQ("9", valueInPlc());
    QStringList asked;
    int done = 0;
    for (const QString& line : audit().split(QLatin1Char('\n'))) {
        const QString id =
            line.section(QLatin1String("\"id\":\""), 1).section(QLatin1Char('"'), 0, 0);
        if (line.contains(QLatin1String("\"phase\":\"requested\"")))
            asked.append(id);
        if (!line.contains(QLatin1String("\"outcome\":\"done\"")))
            continue;
        ++done;
        EXPECT_TRUE(asked.contains(id)) << id.toStdString();
    }
    EXPECT_EQ(9, done);
    startPanel();
    EXPECT_TRUE(get("audit").value(QLatin1String("intact")).toBool());
}

} // namespace
} // namespace plc::test
