#include <gmock/gmock.h>

#include <QtCore/QDir>

#include <csignal>

#include "panel_site.h"

namespace plc::test {
namespace {

/// What --check says, and its exit code behind it.
class PanelCheck : public PanelSite {
protected:
    std::string check(const QStringList& environment = {})
    {
        settings[QStringLiteral("plcs")] = QJsonArray{device};
        writeFile(path("panel.json"), QJsonDocument(settings).toJson());
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setEnvironment(environment);
        process.start(QStringLiteral(PLC_PANEL),
                      {QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY),
                       QStringLiteral("--check"), QStringLiteral("--config"), path("panel.json")});
        process.waitForFinished(kPatience);
        return QString::fromUtf8(process.readAll())
            .append(QString::number(process.exitCode()))
            .replace(QLatin1Char('\n'), QLatin1Char(' '))
            .toStdString();
    }
    std::string checkWith(const char* key, const QJsonValue& value)
    {
        const QJsonObject before = settings;
        settings[QLatin1String(key)] = value;
        const std::string said = check();
        settings = before;
        return said;
    }
    std::string checkDeadband(const char* labels)
    {
        device[QStringLiteral("deadband")] = QJsonArray{QJsonObject{
            {QStringLiteral("labels"), QLatin1String(labels)}, {QStringLiteral("deadband"), 2}}};
        return check();
    }
    std::string file(const char* name) const { return path(name).toStdString(); }
    std::string complaint(const std::string& text) const { return "plc-panel: " + text + " 2"; }
};

TEST_F(PanelCheck, LooksAtDeadbands)
{
    device[QStringLiteral("record")] = QJsonArray{QStringLiteral("T.*")};
    EXPECT_EQ("1 PLCs, 7 values that are read all the time 0", checkDeadband("T.level"));
    EXPECT_EQ("1 PLCs, 7 values that are read all the time 0", checkDeadband("T.*"))
        << "numbers are among them";
    EXPECT_THAT(checkDeadband("T.nope"), testing::StartsWith("plc-panel: PLC tank: deadband: "));
    EXPECT_EQ(complaint("PLC tank: deadband: \"T.name\" is no number"), checkDeadband("T.name"));
    device[QStringLiteral("record")] = QJsonArray{QStringLiteral("T.level")};
    EXPECT_THAT(checkDeadband("T.set"), testing::EndsWith(" 2")) << "it is not recorded";
}

TEST_F(PanelCheck, LooksForTheFoldersOfTheService)
{
    settings[QStringLiteral("audit")] = QStringLiteral("$STATE_DIRECTORY/audit");
    EXPECT_EQ(complaint("\"$STATE_DIRECTORY/audit\" lies in a folder of the service: "
                        "STATE_DIRECTORY is not set. The service manager sets it; by hand, call "
                        "with STATE_DIRECTORY=…"),
              check());
    EXPECT_EQ("1 PLCs, 4 values that are read all the time 0",
              check({QStringLiteral("STATE_DIRECTORY=") + path(".")}));
}

TEST_F(PanelCheck, LooksAtWhatTheStartWouldMakeOrGoOnWith)
{
    writeFile(path("text"), "some text\n");
    const QString missing = path("missing") + QStringLiteral("/audit");
    EXPECT_EQ(complaint(missing.toStdString() + ": the folder for it does not exist"),
              checkWith("audit", missing));
    EXPECT_EQ(complaint(file("text") + ": is no audit"), checkWith("audit", path("text")));
    EXPECT_EQ(complaint(file(".") + ": is no file"), checkWith("audit", path(".")));
    const QJsonObject record{{QStringLiteral("file"), path("text")}};
    EXPECT_EQ(complaint(file("text") + ": is no recording"), checkWith("record", record));
    EXPECT_EQ(complaint(file("text") + ": is no folder"), checkWith("recipes", path("text")));
    EXPECT_EQ(complaint(file("text") + ": exists and is no socket; name another path"),
              checkWith("socket", path("text")));
    const QJsonObject tls{{QStringLiteral("certificate"), path("text")},
                          {QStringLiteral("key"), path("text")}};
    EXPECT_EQ(complaint(file("text") + " and " + file("text") +
                        ": no certificate that TLS can be offered with"),
              checkWith("tls", tls));
    EXPECT_THAT(checkWith("listen", QStringLiteral("127.0.0.1.1:0")), testing::EndsWith(" 2"));
}

TEST_F(PanelCheck, ChangesNothingAndLetsAPanelRun)
{
    check();
    EXPECT_FALSE(QFile::exists(path("audit")));
    EXPECT_FALSE(QFile::exists(path("record")));
    start();
    settings[QStringLiteral("listen")] = QStringLiteral("127.0.0.1:%1").arg(port);
    const QByteArray audit = readFile(path("audit"));
    EXPECT_EQ("1 PLCs, 4 values that are read all the time 0", check());
    EXPECT_EQ(audit, readFile(path("audit")));
    EXPECT_EQ("good", quality("T.level"));
}

using PanelOperation = PanelSite;

TEST_F(PanelOperation, TellsWhatIsReadAgainAndWhatIsNot)
{
    start();
    const auto signal = [this](int number) { return ::kill(pid_t(panel().pid()), number); };
    ASSERT_TRUE(QFile::rename(path("audit"), path("audit.1")));
    ASSERT_EQ(0, signal(SIGHUP));
    ASSERT_TRUE(comesTrue([&] { return QFile::exists(path("audit")); }));
    ASSERT_TRUE(QFile::remove(path("audit")));
    ASSERT_TRUE(QDir().mkdir(path("audit")));
    ASSERT_EQ(0, signal(SIGHUP));
    ASSERT_EQ(0, signal(SIGTERM));
    EXPECT_EQ(0, panel().exitCode());
    const std::string told = panel().errors().toStdString();
    const std::string audit = path("audit").toStdString();
    EXPECT_THAT(told, testing::HasSubstr("the audit goes on in " + audit +
                                         "\nconfiguration and projects are not read again: "
                                         "changed ones take a restart\n"));
    EXPECT_THAT(told,
                testing::HasSubstr("the audit stays in the file that it was in, for " + audit));
    EXPECT_THAT(told, testing::Not(testing::HasSubstr("users"))) << "there are none";
}

} // namespace
} // namespace plc::test
